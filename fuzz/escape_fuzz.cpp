// Any bytes are taken for escape text: what they parse to must be measured rightly, stay within any
// buffer, and come back unchanged from unparsing and parsing again.
#include "fuzz/check.hpp"
#include "kestu_escape.h"

#include <memory>
#include <string_view>

using namespace kestu::fuzz;

namespace {

// Runs `convert` for its size, then into just as many bytes, then into too few. Returns the text.
template <typename Convert>
std::string convert(std::string_view in, bool cut_fails, Convert convert_into) {
    size_t needed = 0;
    require(succeeded(convert_into(nullptr, &needed, in)));
    std::unique_ptr<char[]> out(new char[needed]);
    size_t size = needed;
    require(succeeded(convert_into(out.get(), &size, in)));
    require(size == needed && out[needed - 1] == '\0');
    const std::string whole(out.get(), needed - 1);
    size = needed / 2;
    out.reset(new char[size]);
    const size_t capacity = size;
    if (succeeded(convert_into(out.get(), &size, in)))
        require((!cut_fails || in.empty()) && size == needed);
    require(capacity == 0 || std::string_view(out.get(), capacity).find('\0') != std::string::npos);
    return whole;
}

std::string parse(std::string_view in, int mode) {
    return convert(in, false, [mode](char *out, size_t *size, std::string_view text) {
        return kestu_str_escape_parse(out, size, text.data(), text.size(), mode & 1, mode & 2);
    });
}

std::string unparse(std::string_view in) {
    return convert(in, true, [](char *out, size_t *size, std::string_view bytes) {
        return kestu_str_escape_unparse(out, size, bytes.data(), bytes.size());
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    start_library();
    const std::string_view in(reinterpret_cast<const char *>(data), size);
    require(parse(unparse(in), 0) == in);
    size_t needed = 0;
    if (!succeeded(kestu_str_escape_parse(nullptr, &needed, in.data(), in.size(), 0, 0)))
        return 0;
    for (int mode = 0; mode < 4; ++mode) {
        const std::string bytes = parse(in, mode);
        require(parse(unparse(bytes), 0) == bytes);
    }
    return 0;
}
