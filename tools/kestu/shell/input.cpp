#include "shell/input.hpp"

#include "program.hpp"
#include "shell/keyboard.hpp"
#include "shell/terminal.hpp"

#include "kestu_lib.h"
#include "kestu_str.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace program {
namespace {

// Of one length, so that each covers what the other left.
char prompt[] = "kestu> ";
char prompt_to_go_on[] = "  ...> ";

// What the end of reading, told by `err`, means.
Read stop(kestu_error_t *err, bool at_end) {
    if (err->code == KESTU_ERR_HALTED_BY_USER || (err->code == KESTU_ERR_NO_CHARACTER && at_end)) {
        kestu_error_clear(err);
        return Read::end;
    }
    Outcome().ok(err);
    return Read::failed;
}

int copy_of_standard_input() {
    return fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

// Output may have ended in the middle of a row, which the editor would clear. A row of blanks
// leads to the beginning of the next one, or back to that of the same one.
void begin_row() {
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0)
        std::printf("%*s\r", size.ws_col, "");
}

// A line that was too wide to be seen whole, once more where the terminal folds it.
void show_whole(const kestu_ri_t &editor) {
    const size_t width = kestu_str_utf8_len(editor.prompt) + kestu_str_utf8_len(editor.line) - 1;
    if (width > static_cast<size_t>(editor.cols))
        std::printf("\x1b[A\r%s%s", editor.prompt, editor.line);
}

} // namespace

Typed::Typed() : terminal_(copy_of_standard_input()) {
    if (kestu_error_t *err = kestu_ri_readline_init(&editor_, prompt, 1, kestu_pool)) {
        kestu_error_clear(err);
        throw std::bad_alloc();
    }
    for (const std::string &line : history_.load())
        remember(line);
}

Typed::~Typed() {
    kestu_ri_readline_terminate(editor_);
    close(terminal_);
}

Read Typed::read(std::string &line, bool goes_on) {
    // An interrupted line leaves its prompt behind.
    if (interrupted_)
        std::putchar('\r');
    else
        begin_row();
    editor_->prompt = goes_on ? prompt_to_go_on : prompt;
    char *text = nullptr;
    bool at_end = false;
    if (kestu_error_t *err = edit(&text, at_end))
        return stop(err, at_end);
    show_whole(*editor_);
    line = text;
    interrupted_ = line.empty();
    if (interrupted_)
        return Read::interrupted;
    line.pop_back();
    if (line != last_ && line.find_first_not_of(" \t") != line.npos) {
        remember(line);
        history_.add(line);
    }
    return Read::line;
}

kestu_error_t *Typed::edit(char **line, bool &at_end) {
    const Keyboard keyboard(terminal_);
    const RawTerminal raw(terminal_, keyboard.entrance());
    kestu_error_t *err = kestu_ri_readline(line, editor_);
    at_end = keyboard.at_end();
    return err;
}

// A line that finds no room in the history is only not there to be recalled.
void Typed::remember(const std::string &line) {
    kestu_error_clear(kestu_ri_readline_addhist(line.c_str(), editor_));
    last_ = line;
}

Script::Script() : file_(fdopen(copy_of_standard_input(), "r")) {}

Script::~Script() {
    std::free(buffer_);
    if (file_)
        std::fclose(file_);
}

Read Script::read(std::string &line) {
    errno = 0;
    const ssize_t length = file_ ? getline(&buffer_, &size_, file_) : -1;
    if (length < 0 && errno == 0)
        return Read::end;
    if (length < 0) {
        Outcome().fail(std::string("standard input cannot be read: ") + std::strerror(errno));
        return Read::failed;
    }
    line.assign(buffer_, static_cast<size_t>(length));
    for (const char end : {'\n', '\r'})
        if (line.ends_with(end))
            line.pop_back();
    return Read::line;
}

} // namespace program
