#include "keys.hpp"

#include <algorithm>
#include <iterator>

namespace kestu::edit {
namespace {

constexpr uint32_t largest_number = 9999; // of a parameter, those above are all alike

// By the last byte of a sequence that begins with "\x1b[" or "\x1bO".
constexpr struct {
    char last;
    Key key;
} by_letter[] = {
    {'A', key_up},
    {'B', key_down},
    {'C', key_right},
    {'D', key_left},
    {'F', key_end},
    {'H', key_home},
    {'P', key_f1},
    {'Q', key_f1 + 1},
    {'R', key_f1 + 2},
    {'S', key_f1 + 3},
    {'Z', '\t' | with_shift},
    {'a', key_up | with_shift},
    {'b', key_down | with_shift},
    {'c', key_right | with_shift},
    {'d', key_left | with_shift},
    {'M', '\r'},
};

// By the number in front of a tilde.
constexpr Key by_number[] = {
    key_none,   key_home,   key_insert,  key_delete,  key_end,    key_page_up, key_page_down,
    key_home,   key_end,    key_none,    key_none,    key_f1,     key_f1 + 1,  key_f1 + 2,
    key_f1 + 3, key_f1 + 4, key_none,    key_f1 + 5,  key_f1 + 6, key_f1 + 7,  key_f1 + 8,
    key_f1 + 9, key_none,   key_f1 + 10, key_f1 + 11,
};

constexpr uint32_t paste_begins = 200;

Key of_letter(char last) {
    for (const auto &entry : by_letter)
        if (entry.last == last)
            return entry.key;
    return key_unknown;
}

Key of_number(uint32_t number) {
    if (number == paste_begins)
        return key_paste;
    const Key key = number < std::size(by_number) ? by_number[number] : key_none;
    return key == key_none ? key_unknown : key;
}

// Terminals tell what is held as a bit set, and one more.
Key held(uint32_t number) {
    const uint32_t bits = number > 0 ? number - 1 : 0;
    return (bits & 1 ? Key{with_shift} : 0) | (bits & 2 ? Key{with_alt} : 0) |
           (bits & 4 ? Key{with_control} : 0);
}

Key of_byte(unsigned char byte) {
    switch (byte) {
    case '\t':
    case '\r':
    case '\n':
    case 0x1B:
        return byte == '\n' ? Key{'\r'} : byte;
    case 0x7F:
        return key_backspace;
    default:
        break;
    }
    if (byte < 0x20)
        return with_control | (byte + 0x40U);
    return byte >= 'a' && byte <= 'z' ? byte - 0x20U : byte;
}

} // namespace

Key KeyDecoder::end(Key key) {
    if (alt_ && key != key_unknown && key != key_paste)
        key |= with_alt;
    forget();
    return key;
}

Key KeyDecoder::take(unsigned char byte, bool &is_text) {
    is_text = false;
    switch (state_) {
    case State::ground:
        return take_ground(byte, is_text);
    case State::escape:
        return take_escape(byte);
    case State::csi:
        return take_csi(byte);
    case State::ss3:
        if (byte < 0x20) { // no sequence: the keys O and this one
            forget();
            return take_ground(byte, is_text);
        }
        // Here the small letters are those of keys with Ctrl.
        if (byte >= 'a' && byte <= 'd')
            return end((of_letter(static_cast<char>(byte)) & ~Key{with_shift}) | with_control);
        return end(of_letter(static_cast<char>(byte)));
    case State::console:
        return end(byte >= 'A' && byte <= 'E' ? key_f1 + byte - 'A' : Key{key_unknown});
    }
    return key_none;
}

Key KeyDecoder::take_ground(unsigned char byte, bool &is_text) {
    if (byte == 0x1B) {
        state_ = State::escape;
        return key_none;
    }
    is_text = byte >= 0x20 && byte != 0x7F;
    return is_text ? Key{byte} : of_byte(byte);
}

Key KeyDecoder::take_escape(unsigned char byte) {
    switch (byte) {
    case '[':
        state_ = State::csi;
        numbers_[0] = numbers_[1] = 0;
        count_ = 0;
        return key_none;
    case 'O':
        state_ = State::ss3;
        return key_none;
    case 0x1B: // Alt with a key that sends a sequence
        alt_ = true;
        return key_none;
    default:
        alt_ = true;
        return byte < 0x80 ? end(of_byte(byte)) : end(key_unknown);
    }
}

// Parameters are bytes from 0x30 to 0x3F, then come those from 0x20 to 0x2F, and one more ends it.
Key KeyDecoder::take_csi(unsigned char byte) {
    if (byte < 0x20) {
        bool is_text;
        forget();
        return take_ground(byte, is_text);
    }
    if (byte >= '0' && byte <= '9') {
        uint32_t &number = numbers_[std::min<size_t>(count_, 1)];
        if (count_ < 2)
            number = std::min(number * 10 + byte - '0', largest_number);
        return key_none;
    }
    if (byte == ';') {
        ++count_;
        return key_none;
    }
    if (byte == '[' && count_ == 0 && numbers_[0] == 0) {
        state_ = State::console;
        return key_none;
    }
    if (byte < 0x40)
        return byte == '$' ? end(of_number(numbers_[0]) | with_shift) : Key{key_none};
    if (byte == '~')
        return end(of_number(numbers_[0]) | held(numbers_[1]));
    if (byte == '^')
        return end(of_number(numbers_[0]) | with_control);
    const Key key = of_letter(static_cast<char>(byte));
    return end(key == key_unknown || byte == 'M' ? Key{key_unknown} : key | held(numbers_[1]));
}

int KeyTable::find(Key prefix, Key key) const {
    for (size_t i = changed_.size(); i-- > 0;)
        if (changed_[i].prefix == prefix && changed_[i].key == key)
            return changed_[i].action;
    for (const Binding *at = usual; at->key != key_none; ++at)
        if (at->prefix == prefix && at->key == key)
            return at->action;
    // What nothing is bound to with Shift does as without.
    return key & with_shift ? find(prefix, key & ~Key{with_shift}) : 0;
}

} // namespace kestu::edit
