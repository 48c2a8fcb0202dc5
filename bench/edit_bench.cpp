// A key and its taking back in a line of 10 KB on a screen of 80 x 24; beside readline.
#include "kestu_edit.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include <readline/readline.h>

namespace {

constexpr size_t length = 10000;

std::string text() {
    std::string words;
    for (size_t i = 0; words.size() < length; ++i)
        words += "word" + std::to_string(i) + " ";
    words.resize(length);
    return words;
}

// As many keys to the left as there are characters behind the place.
std::string way_to(size_t place) {
    return std::string(length - place, '\x02');
}

class Ours {
  public:
    explicit Ours(size_t place) {
        kestu_error_clear(kestu_edit_create(&edit_, -1, -1, nullptr));
        kestu_error_clear(kestu_edit_begin(edit_, "> ", 0));
        type(text() + way_to(place));
    }
    ~Ours() { kestu_edit_destroy(&edit_); }
    Ours(const Ours &) = delete;
    Ours &operator=(const Ours &) = delete;

    void type(const std::string &keys) {
        int state;
        kestu_error_clear(kestu_edit_feed(edit_, keys.data(), keys.size(), nullptr, &state));
        size_t drawn;
        std::fwrite(kestu_edit_output(edit_, &drawn), 1, drawn, nothing_);
        bytes += drawn;
    }
    size_t bytes = 0;

  private:
    kestu_edit_t *edit_ = nullptr;
    FILE *nothing_ = std::fopen("/dev/null", "w");
};

std::string waiting;

int next_key(FILE *) {
    const int key = static_cast<unsigned char>(waiting[0]);
    waiting.erase(0, 1);
    return key;
}

class Readline {
  public:
    explicit Readline(size_t place) {
        setenv("TERM", "xterm", 1);
        rl_outstream = std::fopen("/dev/null", "w");
        rl_getc_function = next_key;
        rl_callback_handler_install("> ", [](char *) {});
        rl_set_screen_size(24, 80);
        rl_insert_text(text().c_str());
        rl_point = static_cast<int>(place);
        rl_redisplay();
    }
    ~Readline() { rl_callback_handler_remove(); }
    Readline(const Readline &) = delete;
    Readline &operator=(const Readline &) = delete;

    void type(const std::string &keys) {
        waiting = keys;
        while (!waiting.empty())
            rl_callback_read_char();
    }
};

template <typename Editor>
void press(benchmark::State &state) {
    Editor editor(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        editor.type("x");
        editor.type("\x7f");
    }
}

#define CASES(editor, who)                                                                         \
    BENCHMARK(press<editor>)                                                                       \
        ->Name("key and backspace/" who)                                                           \
        ->ArgName("place")                                                                         \
        ->Arg(0)                                                                                   \
        ->Arg(5000)                                                                                \
        ->Arg(10000)

CASES(Ours, "ours");
CASES(Readline, "readline");

} // namespace
