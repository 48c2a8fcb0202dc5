// The line editor without a terminal beside a plain one, on any keys.
#include "console/key.hpp"
#include "fuzz/editor_model.hpp"

#include <string_view>

using namespace kestu;
using namespace kestu::fuzz;

// Each key is a number of bytes, at most as many as one read takes, and then the bytes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    start_library();
    TwoEditors editors;
    std::string_view input(reinterpret_cast<const char *>(data), size);
    while (!input.empty()) {
        const size_t length = static_cast<unsigned char>(input[0]) % (max_key_bytes + 1);
        input.remove_prefix(1);
        editors.press(decode_key(input.substr(0, length)));
        input.remove_prefix(std::min(length, input.size()));
    }
    return 0;
}
