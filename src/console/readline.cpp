// Reading a line: a loop that hands keys from the terminal to the editor.
#include "kestu_readline.h"

#include "base/kept_errno.hpp"
#include "console/editor.hpp"
#include "console/terminal.hpp"
#include "error/error.hpp"
#include "mem/memory.hpp"

#include <cerrno>
#include <cstring>

using namespace kestu;

namespace {

using Next = Effect::Next;

kestu_error_t *fill_context(kestu_ri_t &ctx, const char *prompt) {
    if (prompt)
        if (kestu_error_t *err = pool_make_text(ctx.pool, &ctx.prompt, prompt))
            return err;
    if (kestu_error_t *err = kestu_strlist_create(&ctx.history, ctx.pool))
        return err;
    if (!ctx.history)
        return no_memory(sizeof *ctx.history);
    return new_pool(&ctx.line_pool, ctx.pool);
}

kestu_error_t *make_context(kestu_ri_t **out, const char *prompt, int echo, apr_pool_t *pool) {
    kestu_ri_t *ctx = nullptr;
    kestu_error_t *err = pool_make(pool, &ctx);
    if (err)
        return err;
    *ctx = {};
    ctx->pool = pool;
    ctx->echo = echo;
    err = fill_context(*ctx, prompt);
    if (!err)
        *out = ctx;
    return err;
}

// A change of the window interrupts the read, which is then taken up again.
kestu_error_t *read_key(kestu_ri_t &ctx, int &key) {
    bool changed = false;
    do {
        key = dl_readchar(&ctx);
        if (kestu_error_t *err = follow_window(ctx, changed))
            return err;
    } while (changed && key == KESTU_KEY_FAILED);
    kestu_error_t *err = key == KESTU_KEY_FAILED
                             ? fail(KESTU_ERR_CHARACTER_READ, "%s", std::strerror(errno))
                             : nullptr;
    erase_row(ctx);
    return err;
}

bool goes_on(const Effect &effect) {
    return effect.next == Next::redraw || effect.next == Next::keep;
}

kestu_error_t *begin(kestu_ri_t &ctx, Editor &editor) {
    kestu_error_t *err = editor.begin();
    if (!err)
        err = measure_terminal(ctx);
    if (err)
        return err;
    enter_raw_mode(ctx);
    show_prompt(ctx);
    return nullptr;
}

// Reads a key, lets it act and shows what comes of it.
kestu_error_t *feed(kestu_ri_t &ctx, Editor &editor, Effect &effect) {
    int key = KESTU_KEY_FAILED;
    if (kestu_error_t *err = read_key(ctx, key))
        return err;
    effect = editor.feed(key);
    print(ctx, effect.print);
    if (effect.next == Next::redraw)
        show_line_and_cursor(ctx, editor.line().cursor());
    return nullptr;
}

kestu_error_t *end(kestu_ri_t &ctx, const Effect &effect, char **line) {
    if (effect.next != Next::fail)
        leave_raw_mode(ctx);
    if (effect.next == Next::finish) {
        show_line(ctx);
        *line = ctx.line;
    }
    return effect.error;
}

} // namespace

kestu_error_t *kestu_ri_readline_init(kestu_ri_t **ctx, const char *prompt, int echo,
                                      apr_pool_t *pool) {
    const KeptErrno kept;
    apr_pool_t *own = nullptr;
    kestu_error_t *err = new_pool(&own, pool);
    if (!err) {
        err = make_context(ctx, prompt, echo, own);
        if (err)
            apr_pool_destroy(own);
        else
            watch_window();
    }
    return wrap(err, "Can't initialize readline.");
}

// Kept: a failure in the middle of a line leaves the terminal raw. Relied on by: programs, which
// restore it themselves.
kestu_error_t *kestu_ri_readline(char **line, kestu_ri_t *ctx) {
    const KeptErrno kept;
    Editor editor(*ctx);
    Effect effect;
    kestu_error_t *err = begin(*ctx, editor);
    while (!err && goes_on(effect))
        err = feed(*ctx, editor, effect);
    return err ? err : end(*ctx, effect, line);
}

void kestu_ri_readline_terminate(kestu_ri_t *ctx) {
    if (ctx)
        apr_pool_destroy(ctx->pool);
}
