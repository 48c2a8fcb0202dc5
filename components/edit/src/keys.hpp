// Keys: the bytes that terminals send for them, their names, and what they do.
#pragma once

#include "array.hpp"

#include <cstdint>

namespace kestu::edit {

// A key is a character of ASCII in upper case or one of those below, and what is held with it.
using Key = uint32_t;

enum : Key {
    key_none = 0,
    key_up = 0x100,
    key_down,
    key_left,
    key_right,
    key_home,
    key_end,
    key_page_up,
    key_page_down,
    key_insert,
    key_delete,
    key_backspace,
    key_f1, // to F12
    key_paste = key_f1 + 12,
    key_unknown,
    with_shift = 0x1000,
    with_control = 0x2000,
    with_alt = 0x4000,
};

// Makes keys of bytes that come one by one. Sequences are swallowed whole, known or not.
class KeyDecoder {
  public:
    // Takes a byte. Returns a key, key_none amid a sequence, or the byte itself, setting `is_text`.
    Key take(unsigned char byte, bool &is_text);
    void forget() { state_ = State::ground, alt_ = false; }

  private:
    enum class State { ground, escape, csi, ss3, console };
    Key take_ground(unsigned char byte, bool &is_text);
    Key take_escape(unsigned char byte);
    Key take_csi(unsigned char byte);
    Key end(Key key);

    State state_ = State::ground;
    bool alt_ = false; // an escape stood in front
    uint32_t numbers_[2] = {};
    size_t count_ = 0;
};

// What keys do: the usual, and above it what the program has changed.
class KeyTable {
  public:
    // The action of `key` behind `prefix`, which is key_none for a single one.
    int find(Key prefix, Key key) const;

    // False for names that are not known; `no_memory` tells why otherwise.
    bool bind(std::string_view names, int action, bool &no_memory);

  private:
    struct Binding {
        Key prefix, key;
        int action;
    };
    static const Binding usual[];
    Array<Binding> changed_;
};

} // namespace kestu::edit
