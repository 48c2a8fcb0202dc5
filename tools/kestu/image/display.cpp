// What the terminal can show, by its variables and its own answers.
#include "image/thumbnail.hpp"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace program {
namespace {

constexpr int patience = 300; // milliseconds until a terminal has answered

std::string_view variable(const char *name) {
    const char *value = std::getenv(name);
    return value ? value : "";
}

int number(const char *name, int otherwise) {
    const int value = std::atoi(std::string(variable(name)).c_str());
    return value > 0 ? value : otherwise;
}

// The terminal itself, without echo and lines while it is asked.
class Conversation {
  public:
    Conversation() : fd_(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY)) {
        if (fd_ < 0 || tcgetattr(fd_, &before_) != 0)
            return;
        termios raw = before_;
        raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        raw.c_cc[VMIN] = 0;
        raw.c_cc[VTIME] = 0;
        changed_ = tcsetattr(fd_, TCSANOW, &raw) == 0;
    }
    ~Conversation() {
        if (changed_)
            tcsetattr(fd_, TCSANOW, &before_);
        if (fd_ >= 0)
            close(fd_);
    }
    Conversation(const Conversation &) = delete;
    Conversation &operator=(const Conversation &) = delete;

    // What it says until the answer to the question that all know: "\033[?...c".
    std::string ask(std::string_view question) {
        std::string answer;
        if (!changed_ || write(fd_, question.data(), question.size()) < 0)
            return answer;
        pollfd ready = {fd_, POLLIN, 0};
        while (!answer.ends_with('c') && poll(&ready, 1, patience) > 0) {
            char some[256];
            const ssize_t got = read(fd_, some, sizeof some);
            if (got <= 0)
                break;
            answer.append(some, static_cast<size_t>(got));
        }
        return answer;
    }

  private:
    int fd_;
    termios before_{};
    bool changed_ = false;
};

// Whether 4 is among the numbers of "\033[?62;4;22c".
bool has_sixel(const std::string &answer) {
    const size_t at = answer.rfind("\033[?");
    if (at == answer.npos)
        return false;
    std::string numbers = answer.substr(at + 2);
    numbers.front() = ';';
    numbers.back() = ';';
    return numbers.find(";4;") != numbers.npos;
}

} // namespace

Display display_of_output(bool unicode) {
    const std::string_view term = variable("TERM");
    if (!isatty(STDOUT_FILENO) || term == "dumb" || !variable("NO_COLOR").empty())
        return Display::ascii;
    const std::string answer =
        Conversation().ask("\033_Gi=31,s=1,v=1,a=q,t=d,f=24;AAAA\033\\\033[c");
    if (answer.find("\033_Gi=31;OK") != answer.npos)
        return Display::kitty;
    if (has_sixel(answer))
        return Display::sixel;
    if (!unicode)
        return Display::ascii;
    if (variable("COLORTERM") == "truecolor" || variable("COLORTERM") == "24bit")
        return Display::true_colour;
    return term.find("256color") != term.npos ? Display::colours : Display::gray;
}

Screen screen_of_output() {
    Screen screen{.columns = number("COLUMNS", 80), .rows = number("LINES", 24)};
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return screen;
    screen.columns = size.ws_col;
    screen.rows = size.ws_row;
    if (size.ws_xpixel > 0 && size.ws_ypixel > 0) {
        screen.cell_width = std::max(size.ws_xpixel / size.ws_col, 1);
        screen.cell_height = std::max(size.ws_ypixel / size.ws_row, 1);
    }
    return screen;
}

} // namespace program
