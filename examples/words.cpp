// A word counter, in C++: files, maps that own their values, formatted text and errors.
//
//     words FOLDER        the ten words that the files of FOLDER have most often
#include <kestu.hpp>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <utility>
#include <vector>

namespace {

using Counts = kestu::Map<std::unique_ptr<int>>;

void count_word(Counts &counts, const std::string &word) {
    if (int *count = counts.find(word))
        ++*count;
    else if (!word.empty())
        counts.insert(word, std::make_unique<int>(1));
}

void count_words(Counts &counts, const std::string &path) {
    std::ifstream file(path);
    if (!file)
        kestu::fail(KESTU_ERR_OPEN, kestu::format("Cannot open file '%s'", path).c_str());
    std::string word;
    for (char c = 0; file.get(c);) {
        if (std::isalpha(static_cast<unsigned char>(c))) {
            word += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            continue;
        }
        count_word(counts, word);
        word.clear();
    }
    count_word(counts, word);
}

void print_most_frequent(const Counts &counts, size_t most) {
    std::vector<std::pair<int, std::string_view>> words;
    for (auto [word, count] : counts)
        words.emplace_back(-count, word);
    std::sort(words.begin(), words.end());
    words.resize(std::min(most, words.size()));
    for (auto [count, word] : words)
        std::puts(kestu::format("%6d %.*s", -count, word).c_str());
}

} // namespace

int main(int argc, char **argv) {
    try {
        const kestu::Library library;
        Counts counts;
        kestu::each_file(argc > 1 ? argv[1] : ".", {},
                         [&](std::string_view path) { count_words(counts, std::string(path)); });
        print_most_frequent(counts, 10);
        return EXIT_SUCCESS;
    } catch (const kestu::Error &error) {
        error.print();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    return EXIT_FAILURE;
}
