// Drawing the row in which a line is edited.
#include "console/terminal.hpp"

#include <cstdio>

namespace kestu {
namespace {

void put_prompt(const kestu_ri_t &ctx) {
    if (ctx.prompt)
        std::fputs(ctx.prompt, stdout);
}

void put_line(const kestu_ri_t &ctx) {
    std::putchar('\r');
    put_prompt(ctx);
    std::fputs(ctx.line, stdout);
}

} // namespace

void print(const kestu_ri_t &ctx, const char *text) {
    if (!ctx.echo || !*text)
        return;
    std::fputs(text, stdout);
    std::fflush(stdout);
}

// One blank at least, for terminals that do not tell their width. The last column stays untouched,
// so that no terminal goes to the next row.
void erase_row(const kestu_ri_t &ctx) {
    if (!ctx.echo)
        return;
    std::putchar('\r');
    int blanks = ctx.cols - 1;
    do
        std::putchar(' ');
    while (--blanks > 0);
    std::putchar('\r');
}

void show_prompt(const kestu_ri_t &ctx) {
    if (!ctx.echo)
        return;
    put_prompt(ctx);
    std::fflush(stdout);
}

void show_line(const kestu_ri_t &ctx) {
    if (!ctx.echo)
        return;
    put_line(ctx);
    std::fflush(stdout);
}

// The cursor comes to its place by writing what stands before it once more.
void show_line_and_cursor(const kestu_ri_t &ctx, size_t cursor) {
    if (!ctx.echo)
        return;
    put_line(ctx);
    std::putchar('\r');
    put_prompt(ctx);
    std::fwrite(ctx.line, 1, cursor, stdout);
    std::fflush(stdout);
}

} // namespace kestu
