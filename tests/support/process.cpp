#include "support/process.hpp"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestu::test {
namespace {

[[noreturn]] void become(const std::vector<std::string> &command,
                         const std::vector<std::string> &environment, const std::string &folder) {
    const int in = open((folder + "/in").c_str(), O_RDONLY);
    const int out = open((folder + "/out").c_str(), O_WRONLY | O_CREAT, 0600);
    const int err = open((folder + "/err").c_str(), O_WRONLY | O_CREAT, 0600);
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    for (const std::string &setting : environment)
        putenv(const_cast<char *>(setting.c_str()));
    std::vector<char *> arguments;
    for (const std::string &argument : command)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

} // namespace

TemporaryFolder::TemporaryFolder() : path(std::filesystem::temp_directory_path() / "kestu-XXXXXX") {
    if (!mkdtemp(path.data()))
        throw std::system_error(errno, std::generic_category(), path);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::string TemporaryFolder::write(const std::string &name, const std::string &content) const {
    std::ofstream(*this / name, std::ios::binary) << content;
    return *this / name;
}

std::string read_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

Ran run(const std::vector<std::string> &command, const std::string &input,
        const std::vector<std::string> &environment) {
    const TemporaryFolder folder;
    folder.write("in", input);
    const pid_t child = fork();
    if (child == 0)
        become(command, environment, folder.path);
    int status = 0;
    waitpid(child, &status, 0);
    return {.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
            .out = read_file(folder / "out"),
            .err = read_file(folder / "err")};
}

Ran run_kestu(std::vector<std::string> arguments, const std::string &input,
              const std::vector<std::string> &environment) {
    arguments.insert(arguments.begin(), KESTU_PROGRAM);
    return run(arguments, input, environment);
}

} // namespace kestu::test
