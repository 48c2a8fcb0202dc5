// What is seen of a line.
#include "editor.hpp"

namespace kestu::edit {

void Editor::lay_out_text(std::string_view text, size_t cursor) {
    const uint8_t *styles = nullptr;
    if (style.function && !searching_ && !text.empty()) {
        styles_.clear();
        constexpr uint8_t none[256] = {};
        while (styles_.size() < text.size())
            if (!styles_.append(none, std::min(sizeof none, text.size() - styles_.size())))
                break;
        if (styles_.size() == text.size()) {
            style.function(line.c_text(), text.size(), styles_.data(), style.baton);
            styles = styles_.data();
        }
    }
    frame_.add(part(text, 0, cursor), {}, styles);
    // Behind a full row the cursor goes to the next one, unless the text ends the row there.
    frame_.mark_cursor(cursor < text.size() && text[cursor] == '\n');
    frame_.add(part(text, cursor), {}, styles ? styles + cursor : nullptr);
}

// `last` leaves out what helps with editing, and `mark` stands behind the text.
void Editor::lay_out(bool last, std::string_view mark) {
    const bool one_row = (flags_ & KESTU_EDIT_ONE_ROW) != 0;
    frame_.begin(one_row ? 0 : screen_.columns());
    std::string_view text = is_hidden() ? std::string_view() : line.text();
    size_t cursor = is_hidden() || last ? text.size() : line.cursor();
    if (searching_ && !is_hidden()) {
        const bool found = found_ < history.count();
        frame_.add(found || pattern_.empty() ? "(search: " : "(not found: ", {});
        frame_.add(pattern_.view(), {});
        frame_.add(") ", {});
        text = found ? history.line(found_) : text;
        cursor = found ? text.find(pattern_.view()) : cursor;
        cursor = cursor == text.npos ? 0 : cursor;
    } else {
        frame_.add_prompt(prompt_.view());
    }
    lay_out_text(text, cursor);
    if (!last && !searching_ && hint.function && !is_hidden() && cursor == text.size())
        if (const char *shown = hint.function(line.c_text(), text.size(), hint.baton))
            frame_.add(shown, style_of(KESTU_EDIT_DIM));
    frame_.add(mark, {});
    if (listed_ && !one_row)
        add_list(frame_);
    if (!one_row)
        return;
    const size_t room = screen_.columns() - 1;
    const size_t at = frame_.cursor_column();
    if (at < left_ || at > left_ + room - 1)
        left_ = at > room / 2 ? at - room / 2 : 0;
    frame_.cut(left_, room);
}

kestu_error_t *Editor::paint() {
    if (is_plain() || !active_)
        return settle();
    lay_out(false, {});
    if (!frame_.whole() || !screen_.paint(frame_, out_))
        no_memory_ = true;
    if (kestu_error_t *err = write()) {
        end();
        return err;
    }
    return settle();
}

kestu_error_t *Editor::write() {
    return terminal.is_there() ? terminal.write(out_) : nullptr;
}

} // namespace kestu::edit
