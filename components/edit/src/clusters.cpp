#include "clusters.hpp"

#include <algorithm>
#include <cstdio>

#include <utf8proc.h>

namespace kestu::edit {
namespace {

// Nobody writes longer ones, and what is longer falls into several.
constexpr size_t max_length = 256;

constexpr utf8proc_int32_t emoji_style = 0xFE0F;

bool is_ascii(char c) {
    return static_cast<unsigned char>(c) < 0x80;
}

bool is_control(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

bool is_flag_letter(utf8proc_int32_t c) {
    return c >= 0x1F1E6 && c <= 0x1F1FF;
}

struct Point {
    utf8proc_int32_t code; // negative for a byte that is no UTF-8
    size_t length;
};

Point point_at(std::string_view text, size_t at) {
    utf8proc_int32_t code = -1;
    const auto length = utf8proc_iterate(
        reinterpret_cast<const utf8proc_uint8_t *>(text.data() + at),
        static_cast<utf8proc_ssize_t>(std::min<size_t>(text.size() - at, 4)), &code);
    return length > 0 ? Point{code, static_cast<size_t>(length)} : Point{-1, 1};
}

uint32_t width_of(utf8proc_int32_t code) {
    return static_cast<uint32_t>(std::max(utf8proc_charwidth(code), 0));
}

Cluster control_at(char c) {
    if (c == '\n')
        return {1, 0, Cluster::row_end};
    return {1, 2, c == '\t' ? Cluster::tab : Cluster::in_words};
}

// Whether a character neither joins the one before it nor lets one of its kind join it. Letters and
// ideographs are so, and Hangul syllables.
bool stands_alone(std::string_view text, size_t at) {
    if (is_ascii(text[at]))
        return true;
    const Point point = point_at(text, at);
    if (point.code < 0)
        return false;
    const auto kind = utf8proc_get_property(point.code)->boundclass;
    return kind == UTF8PROC_BOUNDCLASS_OTHER || kind == UTF8PROC_BOUNDCLASS_LV ||
           kind == UTF8PROC_BOUNDCLASS_LVT;
}

bool begins_point(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

// Goes back from `at` to a place that surely is a boundary: between two characters that stand
// alone; or as far as no text goes without one.
size_t safe_place(std::string_view text, size_t at) {
    constexpr size_t farthest = 4096;
    const size_t last = at > farthest ? at - farthest : 0;
    bool alone = false;
    size_t behind = at;
    while (at > last) {
        if (at < text.size() && begins_point(text[at])) {
            const bool now = stands_alone(text, at);
            if (now && alone)
                return behind;
            alone = now;
            behind = at;
        }
        --at;
    }
    return at;
}

} // namespace

Cluster cluster_at(std::string_view text, size_t at) {
    const bool last = at + 1 >= text.size();
    if (is_ascii(text[at]) && (last || is_ascii(text[at + 1])))
        return is_control(text[at]) ? control_at(text[at]) : Cluster{1, 1, Cluster::shown};
    const Point first = point_at(text, at);
    if (is_ascii(text[at]) && is_control(text[at]))
        return control_at(text[at]);
    uint32_t width = first.code < 0 ? 0 : width_of(first.code);
    if (width == 0)
        return {first.length, 0, Cluster::in_words};
    size_t length = first.length;
    utf8proc_int32_t before = first.code;
    utf8proc_int32_t state = 0;
    while (at + length < text.size() && length < max_length) {
        const Point next = point_at(text, at + length);
        if (next.code < 0 || utf8proc_grapheme_break_stateful(before, next.code, &state))
            break;
        if (next.code == emoji_style || (is_flag_letter(before) && is_flag_letter(next.code)))
            width = 2;
        width = std::max(width, width_of(next.code));
        length += next.length;
        before = next.code;
    }
    return {length, std::min(width, uint32_t{2}), Cluster::shown};
}

size_t cluster_before(std::string_view text, size_t at) {
    if (at == 0)
        return 0;
    size_t place = safe_place(text, at - 1);
    for (;;) {
        const size_t next = place + cluster_at(text, place).length;
        if (next >= at)
            return place;
        place = next;
    }
}

size_t boundary_from(std::string_view text, size_t at) {
    size_t place = safe_place(text, std::min(at, text.size()));
    while (place < at && place < text.size())
        place += cluster_at(text, place).length;
    return place;
}

size_t words(std::string_view cluster, char (&out)[16]) {
    const auto byte = static_cast<unsigned char>(cluster[0]);
    int length;
    if (byte < 0x80)
        length = std::snprintf(out, sizeof out, "^%c", byte ^ 0x40);
    else if (const Point point = point_at(cluster, 0); point.code < 0)
        length = std::snprintf(out, sizeof out, "\\x%02x", byte);
    else
        length = std::snprintf(out, sizeof out, "<%x>", static_cast<unsigned>(point.code));
    return static_cast<size_t>(length);
}

bool is_word(std::string_view text, size_t at) {
    const Point point = point_at(text, at);
    if (point.code < 0)
        return false;
    switch (utf8proc_category(point.code)) {
    case UTF8PROC_CATEGORY_LU:
    case UTF8PROC_CATEGORY_LL:
    case UTF8PROC_CATEGORY_LT:
    case UTF8PROC_CATEGORY_LM:
    case UTF8PROC_CATEGORY_LO:
    case UTF8PROC_CATEGORY_MN:
    case UTF8PROC_CATEGORY_MC:
    case UTF8PROC_CATEGORY_ND:
    case UTF8PROC_CATEGORY_NL:
    case UTF8PROC_CATEGORY_NO:
        return true;
    default:
        return false;
    }
}

} // namespace kestu::edit
