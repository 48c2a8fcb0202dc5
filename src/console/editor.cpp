// What each key does to the line. A key costs at most time in proportion to the line.
#include "console/editor.hpp"

#include "error/error.hpp"
#include "mem/memory.hpp"

namespace kestu {
namespace {

using Next = Effect::Next;

// A key that is typed together with Ctrl.
constexpr int ctrl(char letter) {
    return letter & 0x1F;
}

constexpr int line_feed = ctrl('J');
constexpr int carriage_return = ctrl('M');
constexpr int backspace = 127;

} // namespace

// Every other key is inserted.
const Editor::Binding Editor::bindings[] = {
    {ctrl('A'), &Editor::go_to_begin},
    {KESTU_KEY_HOME, &Editor::go_to_begin},
    {ctrl('C'), &Editor::finish_empty},
    {ctrl('D'), &Editor::stop_when_empty},
    {ctrl('E'), &Editor::go_to_end},
    {KESTU_KEY_END, &Editor::go_to_end},
    {ctrl('H'), &Editor::remove_before_cursor},
    {backspace, &Editor::remove_before_cursor},
    {KESTU_KEY_DELETE, &Editor::remove_at_cursor},
    {ctrl('K'), &Editor::nothing},
    {ctrl('N'), &Editor::nothing},
    {ctrl('P'), &Editor::nothing},
    {ctrl('L'), &Editor::clear_screen},
    {KESTU_KEY_UP, &Editor::recall_older},
    {KESTU_KEY_DOWN, &Editor::recall_newer},
    {KESTU_KEY_RIGHT, &Editor::go_right},
    {KESTU_KEY_LEFT, &Editor::go_left},
    {carriage_return, &Editor::enter_into_history},
    {line_feed, &Editor::enter},
    {KESTU_KEY_UNREADABLE, &Editor::fail_unreadable},
};

kestu_error_t *Editor::begin() {
    ctx_.hist_index = -1;
    ctx_.fresh = 1;
    return line_.begin() ? nullptr : no_memory(Line::first_size);
}

Effect Editor::feed(int key) {
    for (const Binding &binding : bindings)
        if (binding.key == key)
            return (this->*binding.act)();
    return insert(static_cast<char>(key));
}

Effect Editor::go_to_begin() {
    line_.go_to_begin();
    return {};
}

Effect Editor::go_to_end() {
    line_.go_to_end();
    return {};
}

Effect Editor::go_left() {
    line_.go_left();
    return {};
}

Effect Editor::go_right() {
    line_.go_right();
    return {};
}

Effect Editor::remove_before_cursor() {
    line_.remove_before_cursor();
    return {};
}

Effect Editor::remove_at_cursor() {
    line_.remove_at_cursor();
    return {};
}

// Kept: the cursor moves along. Relied on by: users, who know the key so.
Effect Editor::clear_screen() {
    line_.go_right();
    return {.print = "\x1b[2J\x1b[0;0H"};
}

Effect Editor::recall_older() {
    return recall(KESTU_RI_OLDER);
}

Effect Editor::recall_newer() {
    return recall(KESTU_RI_NEWER);
}

Effect Editor::recall(int direction) {
    if (kestu_ri_readline_hist(&ctx_, direction))
        line_.measure();
    return {};
}

Effect Editor::finish_empty() {
    line_.clear();
    return {.next = Next::finish, .print = "\n^C\n"};
}

// Kept: a line that is not empty stays out of sight until the next key. Relied on by: users, who
// know the key so.
Effect Editor::stop_when_empty() {
    constexpr const char *shown = "^D\n";
    if (line_.length() > 0)
        return {.next = Next::keep, .print = shown};
    return {.next = Next::stop, .print = shown, .error = fail(KESTU_ERR_HALTED_BY_USER)};
}

Effect Editor::fail_unreadable() {
    return {.next = Next::fail, .error = fail(KESTU_ERR_NO_CHARACTER)};
}

Effect Editor::insert(char character) {
    if (line_.insert(character))
        return {};
    return {.next = Next::stop, .error = no_memory(2 * ctx_.size)};
}

// Kept: the line feed stands where the cursor stood, with the rest of the line behind it. Relied on
// by: programs that want the text in the order in which it was typed.
Effect Editor::enter() {
    Effect effect = insert('\n');
    if (!effect.error)
        effect.next = Next::finish;
    return effect;
}

Effect Editor::enter_into_history() {
    if (line_.length() > 0)
        if (kestu_error_t *err = kestu_ri_readline_addhist(line_.text(), &ctx_))
            return {.next = Next::fail, .error = err};
    return enter();
}

} // namespace kestu
