// The editor: bytes in, a line and a screen out. The terminal is only a place to bring them from
// and to.
#pragma once

#include "history.hpp"
#include "keys.hpp"
#include "line.hpp"
#include "screen.hpp"
#include "terminal.hpp"

#include "kestu_edit.h"

struct kestu_edit_proposals_t {
    struct Text {
        size_t at, size;
    };
    struct Proposal {
        Text text, shown, behind;
    };
    kestu::edit::Bytes bytes;
    kestu::edit::Array<Proposal> all;
    size_t place = 0;

    std::string_view view(const Text &text) const {
        return kestu::edit::part(bytes.view(), text.at, text.size);
    }
};

namespace kestu::edit {

// A function of the program and its baton.
template <typename Function>
struct Asked {
    Function function = nullptr;
    void *baton = nullptr;
};

class Editor {
  public:
    kestu_error_t *begin(std::string_view prompt, int flags);
    kestu_error_t *feed(std::string_view bytes, size_t &taken, int &state);
    kestu_error_t *read(int &state);
    kestu_error_t *hide();
    kestu_error_t *show();
    kestu_error_t *resize(size_t columns, size_t rows);
    kestu_error_t *follow_terminal(); // when its size or its settings have changed
    kestu_error_t *set_line(std::string_view text);
    const char *take_output(size_t &length);
    void end();
    void wipe();

    Terminal terminal;
    Line line;
    History history;
    KeyTable keys;
    Asked<kestu_edit_whole_func> whole;
    Asked<kestu_edit_hint_func> hint;
    Asked<kestu_edit_style_func> style;
    Asked<kestu_edit_complete_func> complete;

  private:
    // What the last key did, as far as the next one asks.
    enum class Did { other, killed, yanked, browsed };

    int take(unsigned char byte);
    int take_key(Key key);
    int take_paste(unsigned char byte);
    int act(int action);
    bool move(int action);
    bool change(int action);
    bool browse(int action);
    int accept();
    void type(char byte);
    void put(std::string_view text);

    void kill(size_t from, size_t to, bool in_front);
    void yank();
    void yank_older();
    void transpose();
    void erase(size_t from, size_t to);

    bool move_row(bool up);
    void recall(size_t index);
    void step(bool older, bool by_prefix);
    void begin_search();
    bool search(int action);
    void search_on(bool further);
    void end_search(bool take_over);

    void propose();
    void insert_common(size_t from, std::string_view common);
    void add_list(Frame &frame) const;

    bool is_plain() const { return terminal.is_there() && !terminal.is_interactive(); }
    bool is_hidden() const { return (flags_ & KESTU_EDIT_HIDDEN) != 0; }
    void lay_out(bool last, std::string_view mark);
    void lay_out_text(std::string_view text, size_t cursor);
    kestu_error_t *paint();
    kestu_error_t *finish(int state);
    kestu_error_t *write();
    kestu_error_t *settle();

    bool active_ = false;
    bool no_memory_ = false;
    int flags_ = 0;
    Bytes prompt_;
    Screen screen_;
    Frame frame_;
    Bytes out_;       // drawn, and not yet written
    Bytes handed_;    // to the program
    size_t left_ = 0; // the first column that is seen, where there is one row
    Array<uint8_t> styles_;

    KeyDecoder decoder_;
    Key prefix_ = key_none;
    bool quoting_ = false;
    bool pasting_ = false;
    size_t paste_end_ = 0; // bytes of its end that have come
    Bytes pasted_;
    Did did_ = Did::other;
    Did now_ = Did::other;

    KillRing kills_;
    size_t yanked_at_ = 0;
    size_t yanked_age_ = 0;

    size_t at_ = 0;     // in the history; its end for the line that is new
    Bytes draft_;       // that line
    size_t begins_ = 0; // bytes that a line has to begin with
    bool searching_ = false;
    Bytes pattern_;
    size_t found_ = 0;

    kestu_edit_proposals_t proposals_;
    bool listed_ = false;
};

} // namespace kestu::edit
