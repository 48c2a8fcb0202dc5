#include "console/line.hpp"

#include "base/kept_errno.hpp"
#include "kestu_str.h"

#include <algorithm>
#include <cstring>

namespace kestu {
namespace {

// The buffer is doubled when the line comes this near to its end.
constexpr size_t spare_bytes = 10;

} // namespace

bool Line::begin() {
    apr_pool_clear(ctx_.line_pool);
    ctx_.line = ctx_.saved_line = nullptr;
    ctx_.size = 0;
    length_ = cursor_ = 0;
    kestu_ri_readline_growbuffer(&ctx_, first_size);
    return ctx_.line;
}

bool Line::insert(char character) {
    if (length_ + spare_bytes >= ctx_.size)
        kestu_ri_readline_growbuffer(&ctx_, 2 * ctx_.size);
    if (length_ + 2 > ctx_.size)
        return false;
    char *place = ctx_.line + cursor_;
    std::memmove(place + 1, place, length_ - cursor_ + 1);
    *place = character;
    ++cursor_;
    ++length_;
    return true;
}

void Line::remove_before_cursor() {
    if (cursor_ == 0)
        return;
    --cursor_;
    remove_at_cursor();
}

void Line::remove_at_cursor() {
    if (cursor_ == length_)
        return;
    char *place = ctx_.line + cursor_;
    std::memmove(place, place + 1, length_ - cursor_);
    --length_;
}

void Line::clear() {
    length_ = cursor_ = 0;
    ctx_.line[0] = '\0';
}

void Line::measure() {
    length_ = cursor_ = std::strlen(ctx_.line);
}

} // namespace kestu

void kestu_ri_readline_growbuffer(kestu_ri_t *ctx, size_t size) {
    const kestu::KeptErrno kept_errno;
    size = std::max<size_t>(size, 1);
    auto *line = static_cast<char *>(apr_palloc(ctx->line_pool, size));
    if (!line)
        return;
    const size_t kept = ctx->line ? kestu_str_strlcpy(line, ctx->line, size) : 0;
    if (kept < size)
        std::memset(line + kept, 0, size - kept);
    ctx->line = line;
    ctx->size = size;
}
