// The C edge.
#include "kestu_edit.h"

#include "base/kept_errno.hpp"
#include "editor.hpp"
#include "failure.hpp"

using kestu::KeptErrno;
using namespace kestu::edit;

struct kestu_edit_t {
    Editor editor;
    apr_pool_t *pool = nullptr;
};

namespace {

apr_status_t destroy(void *data) {
    auto *edit = static_cast<kestu_edit_t *>(data);
    edit->editor.end();
    edit->editor.wipe();
    edit->~kestu_edit_t();
    std::free(edit);
    return APR_SUCCESS;
}

kestu_error_t *wrapped(kestu_error_t *err, const char *message = "Cannot edit the line.") {
    return err ? kestu_error_quick_wrap_i(0, nullptr, nullptr, err, message) : nullptr;
}

// Stops the process, as the terminal would have done at Ctrl-Z.
kestu_error_t *suspend(Editor &editor, int &state) {
    raise(SIGTSTP);
    state = KESTU_EDIT_MORE;
    return editor.show();
}

} // namespace

kestu_error_t *kestu_edit_create(kestu_edit_t **made, int in, int out, apr_pool_t *pool) {
    const KeptErrno kept;
    *made = nullptr;
    void *memory = std::malloc(sizeof(kestu_edit_t));
    if (!memory)
        return wrapped(no_memory());
    auto *edit = new (memory) kestu_edit_t;
    edit->editor.terminal.attach(in, out);
    edit->pool = pool;
    if (pool)
        apr_pool_cleanup_register(pool, edit, destroy, apr_pool_cleanup_null);
    *made = edit;
    return nullptr;
}

void kestu_edit_destroy(kestu_edit_t **edit) {
    const KeptErrno kept;
    if (!*edit)
        return;
    if ((*edit)->pool)
        apr_pool_cleanup_kill((*edit)->pool, *edit, destroy);
    destroy(*edit);
    *edit = nullptr;
}

kestu_error_t *kestu_edit_begin(kestu_edit_t *edit, const char *prompt, int flags) {
    const KeptErrno kept;
    return wrapped(edit->editor.begin(prompt, flags));
}

kestu_error_t *kestu_edit_feed(kestu_edit_t *edit, const void *bytes, size_t size, size_t *taken,
                               int *state) {
    const KeptErrno kept;
    size_t count;
    kestu_error_t *err = edit->editor.feed({static_cast<const char *>(bytes), size}, count, *state);
    if (taken)
        *taken = count;
    return wrapped(err);
}

kestu_error_t *kestu_edit_read(kestu_edit_t *edit, int *state) {
    const KeptErrno kept;
    return wrapped(edit->editor.read(*state));
}

kestu_error_t *kestu_edit_readline(kestu_edit_t *edit, const char *prompt, int flags, int *state) {
    const KeptErrno kept;
    Editor &editor = edit->editor;
    kestu_error_t *err = editor.begin(prompt, flags);
    *state = KESTU_EDIT_MORE;
    while (!err && *state == KESTU_EDIT_MORE) {
        const bool ready = editor.terminal.wait();
        err = editor.follow_terminal();
        if (!err && ready)
            err = editor.read(*state);
        if (!err && *state == KESTU_EDIT_SUSPENDED)
            err = suspend(editor, *state);
    }
    if (err)
        editor.end();
    return wrapped(err);
}

const char *kestu_edit_line(const kestu_edit_t *edit, size_t *length) {
    if (length)
        *length = edit->editor.line.text().size();
    return edit->editor.line.c_text();
}

kestu_error_t *kestu_edit_set_line(kestu_edit_t *edit, const char *text, size_t length) {
    const KeptErrno kept;
    return wrapped(edit->editor.set_line({text, length}));
}

void kestu_edit_end(kestu_edit_t *edit) {
    const KeptErrno kept;
    edit->editor.end();
}

void kestu_edit_restore(const kestu_edit_t *edit) {
    if (edit)
        edit->editor.terminal.leave();
}

kestu_error_t *kestu_edit_hide(kestu_edit_t *edit) {
    const KeptErrno kept;
    return wrapped(edit->editor.hide());
}

kestu_error_t *kestu_edit_show(kestu_edit_t *edit) {
    const KeptErrno kept;
    return wrapped(edit->editor.show());
}

kestu_error_t *kestu_edit_resize(kestu_edit_t *edit, unsigned columns, unsigned rows) {
    const KeptErrno kept;
    return wrapped(edit->editor.resize(columns, rows));
}

const char *kestu_edit_output(kestu_edit_t *edit, size_t *length) {
    size_t unused;
    return edit->editor.take_output(length ? *length : unused);
}

kestu_error_t *kestu_edit_bind(kestu_edit_t *edit, const char *keys, int action) {
    bool no_room;
    if (edit->editor.keys.bind(keys, action, no_room))
        return nullptr;
    return wrapped(no_room ? no_memory()
                           : KESTU_EDIT_FAIL(KESTU_ERR_WRONG_KEY, "There is no key '%s'.", keys));
}

void kestu_edit_on_whole(kestu_edit_t *edit, kestu_edit_whole_func func, void *baton) {
    edit->editor.whole = {func, baton};
}

void kestu_edit_on_hint(kestu_edit_t *edit, kestu_edit_hint_func func, void *baton) {
    edit->editor.hint = {func, baton};
}

void kestu_edit_on_style(kestu_edit_t *edit, kestu_edit_style_func func, void *baton) {
    edit->editor.style = {func, baton};
}

void kestu_edit_on_complete(kestu_edit_t *edit, kestu_edit_complete_func func, void *baton) {
    edit->editor.complete = {func, baton};
}

kestu_error_t *kestu_edit_history_add(kestu_edit_t *edit, const char *line, size_t length) {
    return wrapped(edit->editor.history.add({line, length}) ? nullptr : no_memory());
}

void kestu_edit_history_limit(kestu_edit_t *edit, size_t lines) {
    edit->editor.history.limit(lines);
}

size_t kestu_edit_history_count(const kestu_edit_t *edit) {
    return edit->editor.history.count();
}

const char *kestu_edit_history_line(const kestu_edit_t *edit, size_t index, size_t *length) {
    const History &history = edit->editor.history;
    if (index >= history.count())
        return nullptr;
    if (length)
        *length = history.line(index).size();
    return history.line(index).data();
}

kestu_error_t *kestu_edit_history_load(kestu_edit_t *edit, const char *path) {
    const KeptErrno kept;
    return wrapped(edit->editor.history.load(path), "Cannot load the history.");
}

kestu_error_t *kestu_edit_history_save(kestu_edit_t *edit, const char *path) {
    const KeptErrno kept;
    return wrapped(edit->editor.history.save(path), "Cannot save the history.");
}
