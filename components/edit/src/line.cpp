#include "line.hpp"

#include "clusters.hpp"

#include <algorithm>

namespace kestu::edit {

bool KillRing::add(std::string_view text, How how) {
    if (how != How::alone && count_ > 0) {
        Bytes &newest = texts_[newest_];
        const size_t at = how == How::in_front ? 0 : newest.size();
        return newest.insert(at, text.data(), text.size());
    }
    const size_t next = (newest_ + 1) % size;
    if (!texts_[next].assign(text))
        return false;
    newest_ = next;
    count_ = std::min<size_t>(count_ + 1, size);
    return true;
}

std::string_view KillRing::get(size_t age) const {
    if (empty())
        return {};
    return texts_[(newest_ + size - age % count_) % size].view();
}

void KillRing::wipe() {
    for (Bytes &text : texts_)
        text.wipe();
    count_ = 0;
}

void Line::move_to(size_t place) {
    cursor_ = boundary_from(text(), std::min(place, text_.size()));
    typing_ = false;
}

bool Line::remember(size_t at, size_t length, size_t inserted) {
    if (typing_ && length == 0 && !changes_.empty() &&
        changes_.back().at + changes_.back().inserted == at) {
        changes_.back().inserted += inserted;
        return true;
    }
    if (!changes_.reserve(changes_.size() + 1) || !removed_.append(part(text(), at, length)))
        return false;
    return changes_.push({.at = at, .removed = length, .inserted = inserted, .cursor = cursor_});
}

// Room for the text and its ending zero comes first, so that what follows cannot fail half-way.
bool Line::replace(size_t at, size_t length, std::string_view with, Kind kind) {
    if (!text_.reserve(text_.size() - length + with.size() + 1))
        return false;
    if (kind == Kind::other)
        typing_ = false;
    if (!remember(at, length, with.size()))
        return false;
    typing_ = kind == Kind::typed;
    text_.erase(at, length);
    if (!text_.insert(at, with.data(), with.size()))
        return false;
    end_text();
    cursor_ = boundary_from(text(), at + with.size());
    return true;
}

void Line::undo() {
    typing_ = false;
    if (changes_.empty())
        return;
    const Change change = changes_.back();
    const size_t kept = removed_.size() - change.removed;
    // What is put back stood here before, and so finds room.
    text_.erase(change.at, change.inserted);
    if (!text_.insert(change.at, removed_.data() + kept, change.removed))
        return;
    end_text();
    removed_.cut(kept);
    changes_.cut(changes_.size() - 1);
    cursor_ = boundary_from(text(), change.cursor);
}

void Line::clear() {
    text_.clear();
    end_text();
    changes_.clear();
    removed_.clear();
    cursor_ = 0;
    typing_ = false;
}

void Line::wipe() {
    text_.wipe();
    removed_.wipe();
    clear();
}

size_t Line::left(size_t from) const {
    return cluster_before(text(), from);
}

size_t Line::right(size_t from) const {
    return from < text_.size() ? from + cluster_at(text(), from).length : from;
}

// One pass from the beginning: going back cluster by cluster would look at each many times.
template <typename Is>
size_t Line::last_begin(size_t from, Is is) const {
    size_t begin = 0;
    bool inside = false;
    for (size_t at = 0; at < from; at = right(at)) {
        const bool now = is(at);
        if (now && !inside)
            begin = at;
        inside = now;
    }
    return begin;
}

size_t Line::word_left(size_t from) const {
    return last_begin(from, [&](size_t at) { return is_word(text(), at); });
}

size_t Line::word_right(size_t from) const {
    while (from < text_.size() && !is_word(text(), from))
        from = right(from);
    while (from < text_.size() && is_word(text(), from))
        from = right(from);
    return from;
}

size_t Line::blank_left(size_t from) const {
    return last_begin(from, [&](size_t at) { return text_[at] != ' ' && text_[at] != '\n'; });
}

size_t Line::row_begin(size_t from) const {
    const size_t end = from > 0 ? text().rfind('\n', from - 1) : text().npos;
    return end == text().npos ? 0 : end + 1;
}

size_t Line::row_end(size_t from) const {
    return std::min(text().find('\n', from), text_.size());
}

} // namespace kestu::edit
