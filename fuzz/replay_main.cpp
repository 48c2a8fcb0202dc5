// Runs a fuzz target over the files of the folders and files named on the command line.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

void replay(const std::filesystem::path &file) {
    std::ifstream in(file, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char **argv) {
    size_t files = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path path = argv[i];
        if (!std::filesystem::is_directory(path)) {
            replay(path);
            ++files;
            continue;
        }
        for (const auto &entry : std::filesystem::directory_iterator(path)) {
            replay(entry.path());
            ++files;
        }
    }
    std::printf("%zu inputs replayed\n", files);
    return files > 0 ? 0 : 1;
}
