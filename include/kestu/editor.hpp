// The line editor.
//
//     kestu::Editor editor("> ");
//     while (auto line = editor.read())            // until Ctrl-D
//         printf("%s", line->c_str());
#pragma once

#include "../kestu_lib.h"
#include "../kestu_readline.h"
#include "error.hpp"

#include <optional>

#include <unistd.h>

namespace kestu {
inline namespace KESTU_CPP {

// Reads lines from the terminal while the user edits them, with a history (kestu_readline.h).
class Editor {
  public:
    // Without `echo` lines are read silently.
    explicit Editor(CString prompt, bool echo = true, apr_pool_t *pool = kestu_pool) {
        detail::check(kestu_ri_readline_init(&ctx_, prompt, echo, pool));
    }

    // As the constructor, but returns the error.
    static Expected<Editor> make(std::nothrow_t, CString prompt, bool echo = true,
                                 apr_pool_t *pool = kestu_pool) {
        Editor editor;
        if (kestu_error_t *err = kestu_ri_readline_init(&editor.ctx_, prompt, echo, pool))
            return detail::failed(err);
        return editor;
    }

    Editor(Editor &&other) noexcept : ctx_(std::exchange(other.ctx_, nullptr)) {}
    Editor &operator=(Editor &&other) noexcept {
        std::swap(ctx_, other.ctx_);
        return *this;
    }
    ~Editor() { kestu_ri_readline_terminate(ctx_); }

    // The next line with its line feed, empty after Ctrl-C; nothing at Ctrl-D. A failure leaves the
    // terminal as it was before the line.
    std::optional<std::string> read() { return take(read(std::nothrow)); }

    // As `read` above, but returns the error.
    Expected<std::optional<std::string>> read(std::nothrow_t) {
        char *line = nullptr;
        kestu_error_t *err = kestu_ri_readline(&line, ctx_);
        if (!err)
            return std::optional<std::string>(line);
        if (kestu_error_is(err, KESTU_ERR_HALTED_BY_USER)) {
            kestu_error_clear(err);
            return std::optional<std::string>();
        }
        if (ctx_->saved_termios.c_cflag != 0) // it has been saved
            tcsetattr(STDIN_FILENO, TCSANOW, &ctx_->saved_termios);
        return detail::failed(err);
    }

    // Makes a line the newest entry of the history.
    void remember(CString line) { detail::check(kestu_ri_readline_addhist(line, ctx_)); }

    // As `remember` above, but returns the error.
    Expected<void> remember(std::nothrow_t, CString line) {
        return detail::outcome(kestu_ri_readline_addhist(line, ctx_));
    }

    // The editor's context, which stays its own.
    kestu_ri_t *get() const noexcept { return ctx_; }

  private:
    Editor() noexcept = default;

    kestu_ri_t *ctx_ = nullptr;
};

} // namespace KESTU_CPP
} // namespace kestu
