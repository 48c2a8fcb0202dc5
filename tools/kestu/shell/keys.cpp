#include "shell/keys.hpp"

namespace program {
namespace {

constexpr char escape_byte = '\x1b';
constexpr char delete_byte = '\x7f';

bool is_control(char byte) {
    return static_cast<unsigned char>(byte) < ' ' || byte == delete_byte;
}

// The last byte of a cursor key's sequence. Shift and Control stand before it and do not matter.
std::string_view cursor_key(char last) {
    switch (last) {
    case 'A':
        return key::up;
    case 'B':
        return key::down;
    case 'C':
        return key::right;
    case 'D':
        return key::left;
    case 'F':
        return key::end;
    case 'H':
        return key::home;
    default:
        return {};
    }
}

std::string_view numbered_key(int number) {
    switch (number) {
    case 1:
    case 7:
        return key::home;
    case 4:
    case 8:
        return key::end;
    case 3:
        return key::remove;
    default:
        return {};
    }
}

} // namespace

// A control character ends a sequence that was cut off, so that nothing typed later is lost in it.
std::string_view KeyDecoder::take(char byte) {
    if (is_control(byte))
        return control(byte);
    switch (state_) {
    case State::plain:
        return plain(byte);
    case State::escape:
        state_ = byte == '[' ? State::sequence : byte == 'O' ? State::single_shift : State::plain;
        number_ = 0;
        first_ = true;
        return {};
    case State::sequence:
        return sequence(byte);
    case State::single_shift:
        state_ = State::plain;
        return cursor_key(byte);
    }
    return {};
}

std::string_view KeyDecoder::plain(char byte) {
    single_ = byte;
    return {&single_, 1};
}

// Home and end and the like have control characters too. A line feed is the Enter of pasted text.
std::string_view KeyDecoder::control(char byte) {
    state_ = byte == escape_byte ? State::escape : State::plain;
    constexpr std::string_view known = "\x01\x03\x04\x05\x08\t\x0c\x7f";
    if (byte == '\r' || byte == '\n')
        return key::enter;
    return known.find(byte) == known.npos ? std::string_view() : plain(byte);
}

std::string_view KeyDecoder::sequence(char byte) {
    if (byte >= '0' && byte <= '9') {
        if (first_ && number_ < 1000)
            number_ = 10 * number_ + (byte - '0');
        return {};
    }
    first_ = false;
    // Bytes from '@' on are the last of a sequence.
    if (byte >= ' ' && byte < '@')
        return {};
    state_ = State::plain;
    return byte == '~' ? numbered_key(number_) : cursor_key(byte);
}

} // namespace program
