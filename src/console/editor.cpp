// What each key does to the line. A key costs at most time in proportion to the line.
#include "console/editor.hpp"

#include "error/error.hpp"
#include "mem/nodes.hpp"

#include <cstring>

namespace kestu {
namespace {

using Next = Effect::Next;

enum ControlKey {
    ctrl_a = 1,
    ctrl_c = 3,
    ctrl_d = 4,
    ctrl_e = 5,
    ctrl_h = 8,
    line_feed = 10,
    ctrl_k = 11,
    ctrl_l = 12,
    carriage_return = 13,
    ctrl_n = 14,
    ctrl_p = 16,
    backspace = 127,
};

constexpr size_t first_size = 20;

// The buffer is doubled when the line comes this near to its end.
constexpr size_t spare_bytes = 10;

} // namespace

kestu_error_t *Editor::begin() {
    apr_pool_clear(context.line_pool);
    context.line = context.saved_line = nullptr;
    context.size = 0;
    context.hist_index = -1;
    context.fresh = 1;
    length = cursor = 0;
    kestu_ri_readline_growbuffer(&context, first_size);
    return context.line ? nullptr : fail_memory(first_size);
}

Effect Editor::press(int key) {
    switch (key) {
    case KESTU_KEY_UNREADABLE:
        return {.next = Next::fail, .error = fail(120131)};
    case ctrl_a:
    case KESTU_KEY_HOME:
        cursor = 0;
        return {};
    case ctrl_c:
        return finish_empty();
    case ctrl_d:
        return stop_when_empty();
    case ctrl_e:
    case KESTU_KEY_END:
        cursor = length;
        return {};
    case ctrl_h:
    case backspace:
        if (cursor > 0)
            remove(--cursor);
        return {};
    case KESTU_KEY_DELETE:
        if (cursor < length)
            remove(cursor);
        return {};
    case ctrl_k:
    case ctrl_n:
    case ctrl_p:
        return {};
    // Moving the cursor along is kept: users know the key so.
    case ctrl_l:
        cursor += cursor < length;
        return {.print = "\x1b[2J\x1b[0;0H"};
    case KESTU_KEY_UP:
        recall(KESTU_RI_OLDER);
        return {};
    case KESTU_KEY_DOWN:
        recall(KESTU_RI_NEWER);
        return {};
    case KESTU_KEY_RIGHT:
        cursor += cursor < length;
        return {};
    case KESTU_KEY_LEFT:
        cursor -= cursor > 0;
        return {};
    case carriage_return:
        return enter_into_history();
    case line_feed:
        return enter();
    default:
        return insert(static_cast<char>(key));
    }
}

Effect Editor::insert(char character) {
    if (length + spare_bytes >= context.size)
        kestu_ri_readline_growbuffer(&context, 2 * context.size);
    if (length + 2 > context.size)
        return {.next = Next::stop, .error = fail_memory(2 * context.size)};
    char *place = context.line + cursor;
    std::memmove(place + 1, place, length - cursor + 1);
    *place = character;
    ++cursor;
    ++length;
    return {};
}

void Editor::remove(size_t index) {
    char *place = context.line + index;
    std::memmove(place, place + 1, length - index);
    --length;
}

Effect Editor::finish_empty() {
    length = cursor = 0;
    context.line[0] = '\0';
    return {.next = Next::finish, .print = "\n^C\n"};
}

// A line that is not empty stays out of sight until the next key: kept, users know the key so.
Effect Editor::stop_when_empty() const {
    constexpr const char *shown = "^D\n";
    if (length > 0)
        return {.next = Next::keep, .print = shown};
    return {.next = Next::stop, .print = shown, .error = fail(120133)};
}

// The line feed stands where the cursor stood, with the rest of the line behind it: kept, programs
// rely on getting the text in the order in which it was typed.
Effect Editor::enter() {
    Effect effect = insert('\n');
    if (!effect.error)
        effect.next = Next::finish;
    return effect;
}

Effect Editor::enter_into_history() {
    if (length > 0)
        if (kestu_error_t *err = kestu_ri_readline_addhist(context.line, &context))
            return {.next = Next::fail, .error = err};
    return enter();
}

void Editor::recall(int direction) {
    if (kestu_ri_readline_hist(&context, direction))
        length = cursor = std::strlen(context.line);
}

} // namespace kestu
