// The parameter parser beside a plain one, on any lines.
#include "fuzz/prsd_model.hpp"

using namespace kestu::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    start_library();
    std::vector<std::string> lines(1);
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == '\n')
            lines.emplace_back();
        else if (data[i] != '\0')
            lines.back() += static_cast<char>(data[i]);
    }
    compare_parsers(lines);
    return 0;
}
