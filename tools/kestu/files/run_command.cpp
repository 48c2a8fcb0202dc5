#include "files/run_command.hpp"

#include <cerrno>
#include <cstdio>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace program {
namespace {

constexpr std::string_view place = "{}";

std::string filled_in(const std::string &word, const std::string &path) {
    std::string result;
    size_t at = 0;
    for (size_t next; (next = word.find(place, at)) != word.npos; at = next + place.size())
        result += word.substr(at, next - at) + path;
    return result + word.substr(at);
}

int wait_for(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

int run_for_path(const std::vector<std::string> &command, const std::string &path) {
    std::vector<std::string> words;
    bool has_place = false;
    for (const std::string &word : command) {
        words.push_back(filled_in(word, path));
        has_place = has_place || word.find(place) != word.npos;
    }
    if (!has_place)
        words.push_back(path);
    std::vector<char *> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    std::fflush(stdout);
    pid_t child = -1;
    errno = posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ);
    return errno == 0 ? wait_for(child) : -1;
}

} // namespace program
