#include "common/text.hpp"

#include "kestu_str.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace program {
namespace {

int failure = 0;

} // namespace

std::string text(const char *format, ...) {
    va_list args;
    va_start(args, format);
    char *formatted = nullptr;
    const int length = kestu_str_vasprintf(&formatted, format, args);
    va_end(args);
    std::string result = length < 0 ? "" : std::string(formatted, static_cast<size_t>(length));
    std::free(length < 0 ? nullptr : formatted);
    return result;
}

std::string counted(unsigned long long count, const char *thing) {
    return text("%'llu %s%s", count, thing, count == 1 ? "" : "s");
}

void add_field(std::string &page, const char *field, const std::string &value) {
    page += text("  %-*s %s\n", static_cast<int>(page_margin) - 3, field, value.c_str());
}

void print(const std::string &what) {
    if (std::fwrite(what.data(), 1, what.size(), stdout) != what.size() && failure == 0)
        failure = errno;
}

int print_failure() {
    return failure;
}

std::string printable(const char *what) {
    std::string result;
    for (; *what; ++what) {
        const auto c = static_cast<unsigned char>(*what);
        result += c < 0x20 || c == 0x7F ? text("\\x%02x", c) : std::string(1, *what);
    }
    return result;
}

} // namespace program
