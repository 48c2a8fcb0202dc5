// Reading keys.
#include "console/key.hpp"

#include "kestu_readline.h"

#include <unistd.h>

namespace kestu {
namespace {

constexpr struct {
    std::string_view bytes;
    int key;
} sequences[] = {
    {"\x1b[A", KESTU_KEY_UP},   {"\x1b[B", KESTU_KEY_DOWN}, {"\x1b[C", KESTU_KEY_RIGHT},
    {"\x1b[D", KESTU_KEY_LEFT}, {"\x1bOF", KESTU_KEY_END},  {"\x1bOH", KESTU_KEY_HOME},
};

} // namespace

int decode_key(std::string_view bytes) {
    if (bytes.size() == 1)
        return static_cast<unsigned char>(bytes[0]);
    for (const auto &sequence : sequences)
        if (bytes == sequence.bytes)
            return sequence.key;
    // Terminals do not agree on the last byte of the delete key.
    if (bytes.size() == 4 && bytes.starts_with("\x1b[3"))
        return KESTU_KEY_DELETE;
    return KESTU_KEY_UNREADABLE;
}

} // namespace kestu

int dl_readchar(kestu_ri_t *) {
    char bytes[kestu::max_key_bytes];
    const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
    return count < 0 ? KESTU_KEY_FAILED : kestu::decode_key({bytes, static_cast<size_t>(count)});
}
