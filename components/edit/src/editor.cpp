// Lines from their beginning to their end.
#include "editor.hpp"

#include "failure.hpp"

namespace kestu::edit {
namespace {

constexpr std::string_view paste_end = "\x1b[201~";

} // namespace

// A failure is told once, and the line goes on.
kestu_error_t *Editor::settle() {
    const bool failed = no_memory_;
    no_memory_ = false;
    return failed ? no_memory() : nullptr;
}

kestu_error_t *Editor::begin(std::string_view prompt, int flags) {
    end();
    if (is_hidden())
        wipe();
    flags_ = flags;
    line.clear();
    pasted_.clear();
    decoder_.forget();
    prefix_ = key_none;
    quoting_ = pasting_ = searching_ = listed_ = false;
    did_ = Did::other;
    left_ = 0;
    at_ = history.count();
    if (!prompt_.assign(prompt))
        return no_memory();
    active_ = true;
    if (is_plain())
        return nullptr;
    kestu_error_t *err = show();
    if (err)
        end();
    return err;
}

void Editor::type(char byte) {
    put({&byte, 1});
}

void Editor::put(std::string_view text) {
    if (!line.insert(text, Line::Kind::typed))
        no_memory_ = true;
}

int Editor::take(unsigned char byte) {
    if (is_plain()) {
        if (byte == '\n')
            return KESTU_EDIT_LINE;
        if (!pasted_.push(static_cast<char>(byte)))
            no_memory_ = true;
        return KESTU_EDIT_MORE;
    }
    if (pasting_)
        return take_paste(byte);
    if (quoting_) {
        quoting_ = false;
        type(byte == '\r' ? '\n' : static_cast<char>(byte));
        return KESTU_EDIT_MORE;
    }
    bool is_text;
    const Key key = decoder_.take(byte, is_text);
    if (!is_text)
        return key == key_none ? int{KESTU_EDIT_MORE} : take_key(key);
    if (prefix_ != key_none) // the second of two keys
        return take_key(byte >= 'a' && byte <= 'z' ? byte - 0x20u : byte);
    did_ = Did::other;
    listed_ = false;
    if (!searching_) {
        type(static_cast<char>(byte));
        return KESTU_EDIT_MORE;
    }
    if (!pattern_.push(static_cast<char>(byte)))
        no_memory_ = true;
    search_on(false);
    return KESTU_EDIT_MORE;
}

// The end of a paste is told by a sequence, of which no beginning belongs to the text.
int Editor::take_paste(unsigned char byte) {
    if (byte == static_cast<unsigned char>(paste_end[paste_end_])) {
        if (++paste_end_ < paste_end.size())
            return KESTU_EDIT_MORE;
        pasting_ = false;
        if (searching_)
            end_search(true);
        if (!line.insert(pasted_.view(), Line::Kind::other))
            no_memory_ = true;
        line.end_typing();
        pasted_.clear();
        return KESTU_EDIT_MORE;
    }
    const std::string_view text = part(paste_end, 0, paste_end_);
    paste_end_ = byte == 0x1B ? 1 : 0;
    bool done = pasted_.append(text);
    const bool ends_row = !pasted_.empty() && pasted_.back() == '\r';
    if (ends_row)
        pasted_.back() = '\n';
    if (paste_end_ == 0 && !(ends_row && byte == '\n'))
        done = pasted_.push(static_cast<char>(byte)) && done;
    if (!done)
        no_memory_ = true;
    return KESTU_EDIT_MORE;
}

int Editor::take_key(Key key) {
    if (key == key_paste) {
        pasting_ = true;
        paste_end_ = 0;
        pasted_.clear();
        return KESTU_EDIT_MORE;
    }
    const int action = keys.find(prefix_, key);
    if (action == KESTU_EDIT_PREFIX && prefix_ == key_none) {
        prefix_ = key;
        return KESTU_EDIT_MORE;
    }
    prefix_ = key_none;
    return act(action);
}

kestu_error_t *Editor::feed(std::string_view bytes, size_t &taken, int &state) {
    taken = 0;
    state = active_ ? KESTU_EDIT_MORE : KESTU_EDIT_END;
    while (active_ && taken < bytes.size() && state == KESTU_EDIT_MORE)
        state = take(static_cast<unsigned char>(bytes[taken++]));
    if (state == KESTU_EDIT_MORE)
        return paint();
    return active_ ? finish(state) : nullptr;
}

// Byte by byte, since what stands behind the line is not ours; drawing waits for the last.
kestu_error_t *Editor::read(int &state) {
    state = active_ ? KESTU_EDIT_MORE : KESTU_EDIT_END;
    while (active_ && state == KESTU_EDIT_MORE) {
        char byte = 0;
        bool got;
        bool at_end;
        if (kestu_error_t *err = terminal.read(byte, got, at_end)) {
            end();
            return err;
        }
        if (at_end && !is_plain()) { // nobody is there to draw for
            end();
            state = KESTU_EDIT_END;
            return nullptr;
        }
        if (at_end)
            state = pasted_.empty() ? KESTU_EDIT_END : KESTU_EDIT_LINE;
        else if (got)
            state = take(static_cast<unsigned char>(byte));
        if (!got || (state == KESTU_EDIT_MORE && !terminal.has_more()))
            break;
    }
    if (state == KESTU_EDIT_MORE)
        return paint();
    return active_ ? finish(state) : nullptr;
}

kestu_error_t *Editor::finish(int state) {
    if (state == KESTU_EDIT_SUSPENDED)
        return hide();
    if (searching_)
        end_search(true);
    active_ = false;
    if (is_plain()) {
        if (!line.insert(pasted_.view(), Line::Kind::other))
            no_memory_ = true;
        return settle();
    }
    listed_ = false;
    lay_out(true, state == KESTU_EDIT_INTERRUPTED ? "^C" : "");
    if (!screen_.paint(frame_, out_) || !screen_.leave(out_))
        no_memory_ = true;
    kestu_error_t *err = write();
    terminal.leave();
    return err ? err : settle();
}

void Editor::end() {
    if (active_ && !is_plain()) {
        static_cast<void>(screen_.leave(out_));
        kestu_error_clear(write());
    }
    active_ = false;
    screen_.forget();
    terminal.leave();
}

void Editor::wipe() {
    line.wipe();
    draft_.wipe();
    pasted_.wipe();
    pattern_.wipe();
}

kestu_error_t *Editor::hide() {
    if (!active_ || is_plain())
        return nullptr;
    if (!screen_.erase(out_))
        no_memory_ = true;
    kestu_error_t *err = write();
    terminal.leave();
    return err ? err : settle();
}

kestu_error_t *Editor::show() {
    if (!active_ || is_plain())
        return nullptr;
    size_t columns;
    size_t rows;
    if (terminal.measure(columns, rows))
        screen_.resize(columns, rows);
    if (kestu_error_t *err = terminal.enter())
        return err;
    screen_.forget();
    return paint();
}

// How a terminal folds what it shows anew differs; most fold each row.
kestu_error_t *Editor::resize(size_t columns, size_t rows) {
    if ((columns == 0 || rows == 0) && !terminal.measure(columns, rows))
        return nullptr;
    if (active_ && !is_plain() && !screen_.fold(columns, out_))
        no_memory_ = true;
    screen_.resize(columns, rows);
    return active_ ? paint() : nullptr;
}

// A handler that stops the process has put the terminal back, and others have written to it since.
kestu_error_t *Editor::follow_terminal() {
    if (terminal.is_interactive() && !terminal.is_entered()) {
        if (!out_.append("\r\x1b[J"))
            no_memory_ = true;
        return show();
    }
    size_t columns;
    size_t rows;
    if (is_plain() || !terminal.measure(columns, rows) ||
        (columns == screen_.columns() && rows == screen_.rows()))
        return nullptr;
    return resize(columns, rows);
}

const char *Editor::take_output(size_t &length) {
    handed_.swap(out_);
    out_.clear();
    length = handed_.size();
    return handed_.data() ? handed_.data() : "";
}

kestu_error_t *Editor::set_line(std::string_view text) {
    if (!line.replace(0, line.text().size(), text, Line::Kind::other))
        no_memory_ = true;
    return active_ ? paint() : settle();
}

} // namespace kestu::edit
