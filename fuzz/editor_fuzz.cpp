// The line editor without a terminal beside a plain one, on any keys.
#include "console/editor.hpp"
#include "console/key.hpp"
#include "kestu_lib.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

using namespace kestu;
using Next = Effect::Next;

namespace {

void require(bool condition) {
    if (!condition)
        std::abort();
}

// Entry 0 of the history is the new line, as it was when it was left for the first time.
class PlainEditor {
  public:
    void begin() {
        line.clear();
        cursor = entry_ = 0;
        left_new_line_ = false;
    }

    Next press(int key) {
        switch (key) {
        case KESTU_KEY_UNREADABLE:
            return Next::fail;
        case 3:
            line.clear();
            cursor = 0;
            return Next::finish;
        case 4:
            return line.empty() ? Next::stop : Next::keep;
        case 13:
            if (!line.empty())
                history_.insert(history_.begin() + 1, line);
            [[fallthrough]];
        case 10:
            line.insert(cursor++, 1, '\n');
            return Next::finish;
        default:
            edit(key);
            return Next::redraw;
        }
    }

    std::string line;
    size_t cursor = 0;

  private:
    void edit(int key) {
        if (key == 1 || key == KESTU_KEY_HOME)
            cursor = 0;
        else if (key == 5 || key == KESTU_KEY_END)
            cursor = line.size();
        else if (key == KESTU_KEY_LEFT)
            cursor -= cursor > 0;
        else if (key == 12 || key == KESTU_KEY_RIGHT)
            cursor = std::min(cursor + 1, line.size());
        else if ((key == 8 || key == 127) && cursor > 0)
            line.erase(--cursor, 1);
        else if (key == KESTU_KEY_DELETE && cursor < line.size())
            line.erase(cursor, 1);
        else if (key == KESTU_KEY_UP && entry_ + 1 < history_.size())
            recall(entry_ + 1);
        else if (key == KESTU_KEY_DOWN && entry_ > 0)
            recall(entry_ - 1);
        else if (key < 256 && !std::strchr("\x08\x0b\x0e\x10\x7f", key))
            line.insert(cursor++, 1, static_cast<char>(key));
    }

    void recall(size_t wanted) {
        if (!left_new_line_)
            history_[0] = line;
        left_new_line_ = true;
        entry_ = wanted;
        line = history_[entry_];
        cursor = line.size();
    }

    std::vector<std::string> history_{""};
    size_t entry_ = 0;
    bool left_new_line_ = false;
};

void press(const kestu_ri_t &ctx, Editor &editor, PlainEditor &plain, int key) {
    const Effect effect = editor.feed(key);
    require(effect.next == plain.press(key));
    require(ctx.line == plain.line && editor.line().cursor() == plain.cursor);
    require(plain.line.size() < ctx.size);
    require((effect.next == Next::stop || effect.next == Next::fail) == (effect.error != nullptr));
    kestu_error_clear(effect.error);
    if (effect.next == Next::redraw || effect.next == Next::keep)
        return;
    require(!editor.begin());
    plain.begin();
}

} // namespace

// Each key is a number of bytes, at most as many as one read takes, and then the bytes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const bool started = kestu_initialize() == KESTU_INIT_OK;
    require(started);
    kestu_ri_t *ctx = nullptr;
    require(!kestu_ri_readline_init(&ctx, "> ", 1, kestu_pool));
    Editor editor(*ctx);
    PlainEditor plain;
    require(!editor.begin());
    std::string_view input(reinterpret_cast<const char *>(data), size);
    while (!input.empty()) {
        const size_t length = static_cast<unsigned char>(input[0]) % (max_key_bytes + 1);
        input.remove_prefix(1);
        press(*ctx, editor, plain, decode_key(input.substr(0, length)));
        input.remove_prefix(std::min(length, input.size()));
    }
    kestu_ri_readline_terminate(ctx);
    return 0;
}
