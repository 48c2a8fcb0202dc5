// Earlier lines, and copying them into the buffer of the one that is edited.
#include "kestu_readline.h"

#include "base/pool_text.hpp"
#include "error/error.hpp"

#include <cstring>

using namespace kestu;

namespace {

bool show(kestu_ri_t &ctx, const char *text) {
    const size_t size = std::strlen(text) + 1;
    if (size > ctx.size)
        kestu_ri_readline_growbuffer(&ctx, size);
    if (size > ctx.size)
        return false;
    std::memcpy(ctx.line, text, size);
    return true;
}

bool save_new_line(kestu_ri_t &ctx) {
    char *copy = pool_copy(ctx.line_pool, ctx.line ? ctx.line : "");
    if (!copy)
        return false;
    ctx.saved_line = copy;
    ctx.fresh = 0;
    return true;
}

// The text with the number `index`, null when the history does not reach so far.
const char *entry(kestu_ri_t &ctx, int index) {
    if (index >= 0)
        return index < ctx.hist_count ? kestu_strlist_getn(ctx.history, index) : nullptr;
    return ctx.saved_line ? ctx.saved_line : "";
}

} // namespace

kestu_error_t *kestu_ri_readline_addhist(const char *str, kestu_ri_t *ctx) {
    kestu_error_t *err = kestu_strlist_addfirst(ctx->history, str, ctx->pool);
    if (!err)
        ++ctx->hist_count;
    return wrap(err, "Readline: can't add string to history.");
}

int kestu_ri_readline_hist(kestu_ri_t *ctx, int dir) {
    if (dir == KESTU_RI_NEWER && (ctx->fresh || ctx->hist_index < 0))
        return 0;
    const int index = dir == KESTU_RI_NEWER ? ctx->hist_index - 1 : ctx->hist_index + 1;
    const char *text = entry(*ctx, index);
    if (!text || (ctx->fresh && !save_new_line(*ctx)) || !show(*ctx, text))
        return 0;
    ctx->hist_index = index;
    return 1;
}
