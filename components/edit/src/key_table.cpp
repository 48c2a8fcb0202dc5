// The names of keys, and what they do where the program has not changed it.
#include "keys.hpp"

#include "kestu_edit.h"

namespace kestu::edit {
namespace {

constexpr Key control(char letter) {
    return with_control | static_cast<Key>(letter);
}

constexpr Key alt(Key key) {
    return with_alt | key;
}

constexpr struct {
    std::string_view name;
    Key key;
} names[] = {
    {"Up", key_up},
    {"Down", key_down},
    {"Left", key_left},
    {"Right", key_right},
    {"Home", key_home},
    {"End", key_end},
    {"PageUp", key_page_up},
    {"PageDown", key_page_down},
    {"Insert", key_insert},
    {"Delete", key_delete},
    {"Backspace", key_backspace},
    {"Tab", '\t'},
    {"Enter", '\r'},
    {"Escape", 0x1B},
    {"Space", ' '},
    {"F1", key_f1},
    {"F2", key_f1 + 1},
    {"F3", key_f1 + 2},
    {"F4", key_f1 + 3},
    {"F5", key_f1 + 4},
    {"F6", key_f1 + 5},
    {"F7", key_f1 + 6},
    {"F8", key_f1 + 7},
    {"F9", key_f1 + 8},
    {"F10", key_f1 + 9},
    {"F11", key_f1 + 10},
    {"F12", key_f1 + 11},
};

bool take_off(std::string_view &name, std::string_view front) {
    if (!name.starts_with(front))
        return false;
    name.remove_prefix(front.size());
    return true;
}

Key parse(std::string_view name) {
    Key with = 0;
    if (take_off(name, "Shift-"))
        with |= with_shift;
    if (take_off(name, "Ctrl-"))
        with |= with_control;
    if (take_off(name, "Alt-"))
        with |= with_alt;
    for (const auto &entry : names)
        if (entry.name == name)
            return entry.key == ' ' && (with & with_control) ? control('@') : entry.key | with;
    const char c = name.size() == 1 ? name[0] : '\0';
    if (c <= ' ' || c > '~' || with == 0)
        return key_none; // text is no key
    return with | static_cast<Key>(c >= 'a' && c <= 'z' ? c - 0x20 : c);
}

} // namespace

constexpr KeyTable::Binding KeyTable::usual[] = {
    {key_none, '\r', KESTU_EDIT_ACCEPT},
    {key_none, alt('\r'), KESTU_EDIT_NEW_ROW},
    {key_none, control('A'), KESTU_EDIT_HOME},
    {key_none, control('B'), KESTU_EDIT_LEFT},
    {key_none, control('C'), KESTU_EDIT_INTERRUPT},
    {key_none, control('D'), KESTU_EDIT_DELETE_OR_END},
    {key_none, control('E'), KESTU_EDIT_LAST},
    {key_none, control('F'), KESTU_EDIT_RIGHT},
    {key_none, control('G'), KESTU_EDIT_CANCEL},
    {key_none, control('H'), KESTU_EDIT_DELETE_LEFT},
    {key_none, control('K'), KESTU_EDIT_KILL_RIGHT},
    {key_none, control('L'), KESTU_EDIT_CLEAR},
    {key_none, control('N'), KESTU_EDIT_NEWER},
    {key_none, control('P'), KESTU_EDIT_OLDER},
    {key_none, control('Q'), KESTU_EDIT_QUOTE},
    {key_none, control('R'), KESTU_EDIT_SEARCH},
    {key_none, control('T'), KESTU_EDIT_TRANSPOSE},
    {key_none, control('U'), KESTU_EDIT_KILL_LEFT},
    {key_none, control('V'), KESTU_EDIT_QUOTE},
    {key_none, control('W'), KESTU_EDIT_KILL_BLANK_LEFT},
    {key_none, control('X'), KESTU_EDIT_PREFIX},
    {key_none, control('Y'), KESTU_EDIT_YANK},
    {key_none, control('Z'), KESTU_EDIT_SUSPEND},
    {key_none, control('_'), KESTU_EDIT_UNDO},
    {key_none, alt('B'), KESTU_EDIT_WORD_LEFT},
    {key_none, alt('D'), KESTU_EDIT_KILL_WORD_RIGHT},
    {key_none, alt('F'), KESTU_EDIT_WORD_RIGHT},
    {key_none, alt('Y'), KESTU_EDIT_YANK_OLDER},
    {key_none, alt('<'), KESTU_EDIT_OLDEST},
    {key_none, alt('>'), KESTU_EDIT_NEWEST},
    {key_none, alt(key_backspace), KESTU_EDIT_KILL_WORD_LEFT},
    {key_none, alt(control('H')), KESTU_EDIT_KILL_WORD_LEFT},
    {key_none, key_backspace, KESTU_EDIT_DELETE_LEFT},
    {key_none, key_delete, KESTU_EDIT_DELETE_RIGHT},
    {key_none, with_control | key_delete, KESTU_EDIT_KILL_WORD_RIGHT},
    {key_none, alt(key_delete), KESTU_EDIT_KILL_WORD_RIGHT},
    {key_none, key_left, KESTU_EDIT_LEFT},
    {key_none, key_right, KESTU_EDIT_RIGHT},
    {key_none, key_up, KESTU_EDIT_UP},
    {key_none, key_down, KESTU_EDIT_DOWN},
    {key_none, with_control | key_left, KESTU_EDIT_WORD_LEFT},
    {key_none, with_control | key_right, KESTU_EDIT_WORD_RIGHT},
    {key_none, alt(key_left), KESTU_EDIT_WORD_LEFT},
    {key_none, alt(key_right), KESTU_EDIT_WORD_RIGHT},
    {key_none, with_control | key_up, KESTU_EDIT_OLDER},
    {key_none, with_control | key_down, KESTU_EDIT_NEWER},
    {key_none, key_home, KESTU_EDIT_HOME},
    {key_none, key_end, KESTU_EDIT_LAST},
    {key_none, key_page_up, KESTU_EDIT_OLDEST},
    {key_none, key_page_down, KESTU_EDIT_NEWEST},
    {key_none, '\t', KESTU_EDIT_COMPLETE},
    {control('X'), control('U'), KESTU_EDIT_UNDO},
    {key_none, key_none, 0},
};

bool KeyTable::bind(std::string_view keys, int action, bool &no_memory) {
    no_memory = false;
    Binding binding = {key_none, key_none, action};
    if (const size_t blank = keys.find(' '); blank != keys.npos) {
        binding.prefix = parse(part(keys, 0, blank));
        if (binding.prefix != control('X'))
            return false;
        keys.remove_prefix(blank + 1);
    }
    binding.key = parse(keys);
    if (binding.key == key_none)
        return false;
    for (Binding &known : changed_)
        if (known.prefix == binding.prefix && known.key == binding.key) {
            known.action = action;
            return true;
        }
    no_memory = !changed_.push(binding);
    return !no_memory;
}

} // namespace kestu::edit
