// Going through the history, and the rows of a text.
#include "editor.hpp"

#include "clusters.hpp"

namespace kestu::edit {

bool Editor::browse(int action) {
    switch (action) {
    case KESTU_EDIT_UP:
    case KESTU_EDIT_DOWN:
        if (!move_row(action == KESTU_EDIT_UP))
            step(action == KESTU_EDIT_UP, true);
        return true;
    case KESTU_EDIT_OLDER:
    case KESTU_EDIT_NEWER:
        step(action == KESTU_EDIT_OLDER, false);
        return true;
    case KESTU_EDIT_OLDEST:
        if (history.count() > 0)
            recall(0);
        return true;
    case KESTU_EDIT_NEWEST:
        recall(history.count());
        return true;
    case KESTU_EDIT_SEARCH:
        begin_search();
        return true;
    case KESTU_EDIT_COMPLETE:
        propose();
        return true;
    default:
        return false;
    }
}

// To as many clusters behind the beginning of the row above or below; false when there is none.
bool Editor::move_row(bool up) {
    const size_t begin = line.row_begin(line.cursor());
    const size_t end = line.row_end(line.cursor());
    if (up ? begin == 0 : end == line.text().size())
        return false;
    size_t clusters = 0;
    for (size_t at = begin; at < line.cursor(); at = line.right(at))
        ++clusters;
    size_t to = up ? line.row_begin(begin - 1) : end + 1;
    for (const size_t last = line.row_end(to); clusters > 0 && to < last; --clusters)
        to = line.right(to);
    line.move_to(to);
    return true;
}

// The line that is new is kept while others are shown.
void Editor::recall(size_t index) {
    const bool was_new = at_ >= history.count();
    if (was_new && index < history.count() && !draft_.assign(line.text())) {
        no_memory_ = true;
        return;
    }
    if (was_new && index >= history.count())
        return;
    const std::string_view text = index < history.count() ? history.line(index) : draft_.view();
    if (!line.replace(0, line.text().size(), text, Line::Kind::other)) {
        no_memory_ = true;
        return;
    }
    at_ = index;
}

// The beginning that lines have to have is what stood before the cursor at the first step.
void Editor::step(bool older, bool by_prefix) {
    if (did_ != Did::browsed)
        begins_ = line.cursor();
    now_ = Did::browsed;
    const std::string_view now = line.text();
    const std::string_view front = part(now, 0, by_prefix ? std::min(begins_, now.size()) : 0);
    const auto fits = [&](std::string_view text) { return text.starts_with(front) && text != now; };
    const size_t at = std::min(at_, history.count());
    const size_t index = older ? history.before(at, fits) : history.behind(at, fits);
    if (!older || index < history.count())
        recall(index);
}

void Editor::begin_search() {
    searching_ = true;
    pattern_.clear();
    found_ = history.count();
}

// True when the key belongs to the search; all others take its line over and then do what they do.
bool Editor::search(int action) {
    switch (action) {
    case KESTU_EDIT_SEARCH:
        search_on(true);
        return true;
    case KESTU_EDIT_DELETE_LEFT:
        pattern_.cut(cluster_before(pattern_.view(), pattern_.size()));
        found_ = history.count();
        search_on(false);
        return true;
    case KESTU_EDIT_CANCEL:
        end_search(false);
        return true;
    case KESTU_EDIT_NOTHING:
    case KESTU_EDIT_CLEAR:
        return action == KESTU_EDIT_NOTHING;
    default:
        end_search(action != KESTU_EDIT_INTERRUPT);
        return false;
    }
}

// To the nearest line with the pattern, beyond the one that is shown or with it.
void Editor::search_on(bool further) {
    const bool shown = found_ < history.count();
    const size_t from = shown ? found_ + (further ? 0 : 1) : history.count();
    if (pattern_.empty())
        return;
    const auto fits = [&](std::string_view text) {
        return text.find(pattern_.view()) != text.npos;
    };
    const size_t index = history.before(from, fits);
    if (index < history.count() || !further)
        found_ = index;
}

void Editor::end_search(bool take_over) {
    searching_ = false;
    if (!take_over || found_ >= history.count())
        return;
    const size_t match = history.line(found_).find(pattern_.view());
    recall(found_);
    line.move_to(match == std::string_view::npos ? line.text().size() : match);
}

} // namespace kestu::edit
