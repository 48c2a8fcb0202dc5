// The texts of codes, the library's own and registered ones.
#include "error/texts.hpp"

#include "error/state.hpp"
#include "kestu_error_codes.h"

#include <algorithm>
#include <iterator>

namespace kestu {
namespace {

struct CodeText {
    int code;
    const char *text;
};

#define CODE_TEXT(name, code, text) {code, text},
constexpr CodeText code_texts[] = {KESTU_ERROR_CODES(CODE_TEXT)};
#undef CODE_TEXT

constexpr bool ascending() {
    for (size_t i = 1; i < std::size(code_texts); ++i)
        if (code_texts[i - 1].code >= code_texts[i].code)
            return false;
    return true;
}
static_assert(ascending(), "codes are unique and in ascending order");

const char *built_in_text(int code) {
    const CodeText *entry =
        std::lower_bound(std::begin(code_texts), std::end(code_texts), code,
                         [](const CodeText &e, int wanted) { return e.code < wanted; });
    return entry != std::end(code_texts) && entry->code == code ? entry->text : nullptr;
}

} // namespace

const char **registered_slot(int code) {
    const RegisteredTexts &texts = error_state.texts;
    const int index = code - KESTU_ERROR_FIRST_REGISTERED;
    return code >= KESTU_ERROR_FIRST_REGISTERED && index < texts.count ? texts.begin + index
                                                                       : nullptr;
}

} // namespace kestu

using namespace kestu;

const char *kestu_error_text(int code) {
    if (code < KESTU_ERROR_FIRST_REGISTERED)
        return built_in_text(code);
    const char **slot = registered_slot(code);
    return slot ? *slot : nullptr;
}
