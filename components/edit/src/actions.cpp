// What keys do to the line.
#include "editor.hpp"

namespace kestu::edit {

int Editor::accept() {
    if (whole.function && !is_hidden() &&
        whole.function(line.c_text(), line.text().size(), whole.baton) == 0) {
        put("\n");
        return KESTU_EDIT_MORE;
    }
    return KESTU_EDIT_LINE;
}

int Editor::act(int action) {
    if (searching_ && search(action))
        return KESTU_EDIT_MORE;
    const bool was_listed = listed_;
    listed_ = false;
    now_ = Did::other;
    if (action != KESTU_EDIT_NOTHING)
        line.end_typing();
    switch (action) {
    case KESTU_EDIT_ACCEPT:
        return accept();
    case KESTU_EDIT_INTERRUPT:
        return KESTU_EDIT_INTERRUPTED;
    case KESTU_EDIT_SUSPEND:
        return KESTU_EDIT_SUSPENDED;
    case KESTU_EDIT_DELETE_OR_END:
        if (line.text().empty())
            return KESTU_EDIT_END;
        action = KESTU_EDIT_DELETE_RIGHT;
        break;
    case KESTU_EDIT_CANCEL:
        listed_ = false;
        break;
    case KESTU_EDIT_CLEAR:
        if (!out_.append("\x1b[H\x1b[2J"))
            no_memory_ = true;
        screen_.forget();
        listed_ = was_listed;
        break;
    case KESTU_EDIT_QUOTE:
        quoting_ = true;
        break;
    default:
        break;
    }
    static_cast<void>(move(action) || change(action) || (!is_hidden() && browse(action)));
    did_ = now_;
    return KESTU_EDIT_MORE;
}

bool Editor::move(int action) {
    const size_t at = line.cursor();
    switch (action) {
    case KESTU_EDIT_LEFT:
        line.move_to(line.left(at));
        return true;
    case KESTU_EDIT_RIGHT:
        line.move_to(line.right(at));
        return true;
    case KESTU_EDIT_WORD_LEFT:
        line.move_to(line.word_left(at));
        return true;
    case KESTU_EDIT_WORD_RIGHT:
        line.move_to(line.word_right(at));
        return true;
    case KESTU_EDIT_HOME:
        line.move_to(line.row_begin(at));
        return true;
    case KESTU_EDIT_LAST:
        line.move_to(line.row_end(at));
        return true;
    default:
        return false;
    }
}

bool Editor::change(int action) {
    const size_t at = line.cursor();
    switch (action) {
    case KESTU_EDIT_NEW_ROW:
        put("\n");
        return true;
    case KESTU_EDIT_DELETE_LEFT:
        erase(line.left(at), at);
        return true;
    case KESTU_EDIT_DELETE_RIGHT:
        erase(at, line.right(at));
        return true;
    case KESTU_EDIT_KILL_LEFT:
        kill(line.row_begin(at), at, true);
        return true;
    case KESTU_EDIT_KILL_RIGHT: // at the end of a row, the next one joins it
        kill(at, line.row_end(at) == at ? line.right(at) : line.row_end(at), false);
        return true;
    case KESTU_EDIT_KILL_WORD_LEFT:
        kill(line.word_left(at), at, true);
        return true;
    case KESTU_EDIT_KILL_WORD_RIGHT:
        kill(at, line.word_right(at), false);
        return true;
    case KESTU_EDIT_KILL_BLANK_LEFT:
        kill(line.blank_left(at), at, true);
        return true;
    case KESTU_EDIT_YANK:
        yank();
        return true;
    case KESTU_EDIT_YANK_OLDER:
        yank_older();
        return true;
    case KESTU_EDIT_TRANSPOSE:
        transpose();
        return true;
    case KESTU_EDIT_UNDO:
        line.undo();
        return true;
    default:
        return false;
    }
}

void Editor::erase(size_t from, size_t to) {
    if (from < to && !line.replace(from, to - from, {}, Line::Kind::other))
        no_memory_ = true;
}

// Kills that follow each other make one text.
void Editor::kill(size_t from, size_t to, bool in_front) {
    now_ = Did::killed;
    if (from == to) {
        now_ = did_;
        return;
    }
    using How = KillRing::How;
    const How how = did_ != Did::killed ? How::alone : in_front ? How::in_front : How::behind;
    if (!is_hidden() && !kills_.add(part(line.text(), from, to - from), how)) {
        no_memory_ = true;
        return;
    }
    erase(from, to);
}

void Editor::yank() {
    if (kills_.empty())
        return;
    now_ = Did::yanked;
    yanked_at_ = line.cursor();
    yanked_age_ = 0;
    if (!line.insert(kills_.get(0), Line::Kind::other))
        no_memory_ = true;
}

void Editor::yank_older() {
    if (did_ != Did::yanked)
        return;
    now_ = Did::yanked;
    ++yanked_age_;
    const size_t from = yanked_at_;
    if (!line.replace(from, line.cursor() - from, kills_.get(yanked_age_), Line::Kind::other))
        no_memory_ = true;
}

// The characters around the cursor change places; at the end, the last two.
void Editor::transpose() {
    const std::string_view text = line.text();
    size_t middle = line.cursor();
    if (middle == text.size())
        middle = line.left(middle);
    const size_t from = line.left(middle);
    const size_t to = line.right(middle);
    if (from == middle || middle == to)
        return;
    Bytes swapped;
    if (!swapped.append(part(text, middle, to - middle)) ||
        !swapped.append(part(text, from, middle - from)) ||
        !line.replace(from, to - from, swapped.view(), Line::Kind::other))
        no_memory_ = true;
}

} // namespace kestu::edit
