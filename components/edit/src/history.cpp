#include "history.hpp"

namespace kestu::edit {

bool History::add(std::string_view line) {
    if (!lines_.empty() && this->line(count() - 1) == line)
        return true;
    auto *text = static_cast<char *>(std::malloc(line.size() + 1));
    if (!text || !lines_.reserve(lines_.size() + 1)) {
        std::free(text);
        return false;
    }
    if (!line.empty())
        std::memcpy(text, line.data(), line.size());
    text[line.size()] = '\0';
    for (size_t i = count(); i-- > 0;)
        if (this->line(i) == std::string_view(text, line.size())) {
            remove(i);
            break;
        }
    const bool pushed = lines_.push({text, line.size(), false});
    limit(limit_);
    return pushed;
}

void History::limit(size_t lines) {
    limit_ = lines;
    size_t surplus = count() > limit_ ? count() - limit_ : 0;
    for (size_t i = 0; i < surplus; ++i)
        std::free(lines_[i].text);
    lines_.erase(0, surplus);
}

void History::remove(size_t index) {
    std::free(lines_[index].text);
    lines_.erase(index, 1);
}

void History::clear() {
    for (Entry &entry : lines_)
        std::free(entry.text);
    lines_.clear();
}

} // namespace kestu::edit
