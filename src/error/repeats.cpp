#include "error/repeats.hpp"

#include <cstdlib>
#include <utility>

namespace kestu {
namespace {

// Looking back among so few elements costs less than sorting.
constexpr size_t few = 32;

size_t count_without_message(const kestu_error_t *err) {
    size_t count = 0;
    for (; err; err = err->child)
        count += !err->message;
    return count;
}

// Sorts by one byte of the codes; entries that are alike in it keep their order.
template <typename Entry>
void sort_by_byte(const Entry *from, Entry *to, size_t count, int shift) {
    const auto byte = [shift](const Entry &entry) { return entry.code >> shift & 0xFF; };
    size_t begins[257] = {};
    for (size_t i = 0; i < count; ++i)
        ++begins[byte(from[i]) + 1];
    for (size_t value = 0; value < 256; ++value)
        begins[value + 1] += begins[value];
    for (size_t i = 0; i < count; ++i)
        to[begins[byte(from[i])]++] = from[i];
}

} // namespace

Repeats::Repeats(const kestu_error_t *head) : head_(head) {
    const size_t count = count_without_message(head);
    if (count <= few || count > UINT32_MAX)
        return;
    auto *entries = static_cast<Entry *>(std::malloc(2 * count * sizeof(Entry)));
    marks_ = static_cast<bool *>(std::calloc(count, sizeof(bool)));
    if (entries && marks_) {
        list(entries);
        Entry *sorted = entries;
        Entry *spare = entries + count;
        for (int shift = 0; shift < 32; shift += 8) {
            sort_by_byte(sorted, spare, count, shift);
            std::swap(sorted, spare);
        }
        mark(sorted, count);
    } else {
        std::free(std::exchange(marks_, nullptr));
    }
    std::free(entries);
}

Repeats::~Repeats() {
    std::free(marks_);
}

void Repeats::list(Entry *entries) const {
    uint32_t place = 0;
    for (const kestu_error_t *err = head_; err; err = err->child) {
        if (!err->message) {
            entries[place] = {static_cast<uint32_t>(err->code), place};
            ++place;
        }
    }
}

void Repeats::mark(const Entry *sorted, size_t count) {
    for (size_t i = 1; i < count; ++i)
        marks_[sorted[i].place] = sorted[i].code == sorted[i - 1].code;
}

bool Repeats::stands_before(const kestu_error_t &err) const {
    for (const kestu_error_t *before = head_; before != &err; before = before->child)
        if (!before->message && before->code == err.code)
            return true;
    return false;
}

bool Repeats::next_is_repeat(const kestu_error_t &err) {
    return marks_ ? marks_[next_++] : stands_before(err);
}

} // namespace kestu
