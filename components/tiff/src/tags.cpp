// The tags of a page as texts.
#include "directory.hpp"
#include "reader.hpp"

#include "kestu_format.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>

namespace kestu::tiff {
namespace {

constexpr uint64_t most_values = 16;
constexpr uint64_t most_characters = 2000;

// A text that stops growing when it is full.
class Text {
  public:
    void add(const char *format, ...) KESTU_PRINTF(2, 3) {
        va_list args;
        va_start(args, format);
        const size_t room = sizeof text_ - used_;
        const int length = rpl_vsnprintf(text_ + used_, room, format, args);
        va_end(args);
        if (length > 0)
            used_ += std::min(static_cast<size_t>(length), room - 1);
    }
    const char *c_str() const { return text_; }

  private:
    char text_[4 * most_characters + 8] = "";
    size_t used_ = 0;
};

template <typename Number>
Number at(const void *values, uint64_t index) {
    Number number;
    std::memcpy(&number, static_cast<const char *>(values) + index * sizeof number, sizeof number);
    return number;
}

void add_ratio(Text &text, double numerator, double denominator) {
    text.add("%.9g", denominator != 0 ? numerator / denominator : 0.0);
}

void add_value(Text &text, uint16_t type, const void *values, uint64_t i) {
    switch (type) {
    case TIFF_BYTE:
    case TIFF_UNDEFINED:
        return text.add("%u", unsigned{at<uint8_t>(values, i)});
    case TIFF_SBYTE:
        return text.add("%d", int{at<int8_t>(values, i)});
    case TIFF_SHORT:
        return text.add("%u", unsigned{at<uint16_t>(values, i)});
    case TIFF_SSHORT:
        return text.add("%d", int{at<int16_t>(values, i)});
    case TIFF_SLONG:
        return text.add("%d", at<int32_t>(values, i));
    case TIFF_LONG:
    case TIFF_IFD:
        return text.add("%u", at<uint32_t>(values, i));
    case TIFF_FLOAT:
        return text.add("%.9g", double{at<float>(values, i)});
    case TIFF_DOUBLE:
        return text.add("%.17g", at<double>(values, i));
    case TIFF_RATIONAL:
        return add_ratio(text, at<uint32_t>(values, 2 * i), at<uint32_t>(values, 2 * i + 1));
    case TIFF_SRATIONAL:
        return add_ratio(text, at<int32_t>(values, 2 * i), at<int32_t>(values, 2 * i + 1));
    case TIFF_SLONG8:
        return text.add("%lld", static_cast<long long>(at<int64_t>(values, i)));
    default:
        return text.add("%llu", static_cast<unsigned long long>(at<uint64_t>(values, i)));
    }
}

void add_characters(Text &text, const char *values, uint64_t count) {
    for (uint64_t i = 0; i < count && values[i]; ++i) {
        const auto c = static_cast<unsigned char>(values[i]);
        if (c < 0x20 || c == 0x7F)
            text.add("\\x%02x", c);
        else
            text.add("%c", c);
    }
}

void add_values(Text &text, const Directory &directory, const Entry &entry) {
    const bool characters = entry.type == TIFF_ASCII;
    const uint64_t most = characters ? most_characters : most_values;
    const uint64_t count = std::min(entry.count, most);
    char values[std::max(most_characters, most_values * 8)];
    if (Directory::size_of(entry.type) == 0 || !directory.read_values(entry, values, count))
        return text.add("?");
    if (characters)
        add_characters(text, values, count);
    for (uint64_t i = 0; !characters && i < count; ++i) {
        text.add("%s", i > 0 ? " " : "");
        add_value(text, entry.type, values, i);
    }
    if (entry.count > count)
        text.add("%s...", characters ? "" : " ");
}

} // namespace

int each_tag(Handle &handle, kestu_tiff_tag_func func, void *baton) {
    const Directory directory(handle);
    Entry entry{};
    int result = 0;
    for (uint64_t i = 0; result == 0 && directory.entry(i, entry); ++i) {
        const TIFFField *known = TIFFFindField(handle.tiff(), entry.tag, TIFF_ANY);
        const bool anonymous = !known || TIFFFieldIsAnonymous(known);
        Text text;
        add_values(text, directory, entry);
        result = func(entry.tag, anonymous ? "" : TIFFFieldName(known), text.c_str(), baton);
    }
    return result;
}

} // namespace kestu::tiff
