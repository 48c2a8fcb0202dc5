#include "shell/input.hpp"

#include "common/text.hpp"
#include "program.hpp"
#include "shell/completion.hpp"
#include "shell/shell.hpp"
#include "shell/signals.hpp"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>
#include <utility>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace program {
namespace {

constexpr const char *prompt = "kestu> ";
constexpr const char *prompt_to_go_on = "  ...> ";

int copy_of_standard_input() {
    return fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

// Output may have ended in the middle of a row, which the editor would draw over. A row of blanks
// leads to the beginning of the next one, or back to that of the same one.
void begin_row() {
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0)
        std::printf("%*s\r", size.ws_col, "");
    std::fflush(stdout);
}

const kestu_edit_t *at_prompt = nullptr;

// The terminal is put back before the signal does what it does without a handler. One that stops
// comes back here, and the editor takes the terminal up again.
void end_or_stop_by(int signal) {
    const int kept = errno;
    kestu_edit_restore(at_prompt);
    struct sigaction usual = {}, ours = {};
    usual.sa_handler = SIG_DFL;
    sigaction(signal, &usual, &ours);
    raise(signal);
    sigaction(signal, &ours, nullptr);
    errno = kept;
}

// What stopped without a word may find the terminal in other hands.
void take_up(int) {
    kestu_edit_restore(at_prompt);
}

constexpr struct {
    int signal;
    void (*handler)(int);
} at_the_prompt[] = {
    {SIGTERM, end_or_stop_by}, {SIGHUP, end_or_stop_by},  {SIGINT, end_or_stop_by},
    {SIGQUIT, end_or_stop_by}, {SIGTSTP, end_or_stop_by}, {SIGCONT, take_up},
    {SIGWINCH, [](int) {}}, // wakes the editor
};

// While it lives, signals that end or stop the program find the terminal as it was. What is ignored
// stays so.
class Guarded {
  public:
    explicit Guarded(const kestu_edit_t *editor) {
        at_prompt = editor;
        for (size_t i = 0; i < std::size(at_the_prompt); ++i) {
            struct sigaction action = {};
            action.sa_handler = at_the_prompt[i].handler;
            action.sa_flags = SA_NODEFER;
            sigaction(at_the_prompt[i].signal, nullptr, &before_[i]);
            if (before_[i].sa_handler != SIG_IGN)
                sigaction(at_the_prompt[i].signal, &action, nullptr);
        }
    }
    ~Guarded() {
        for (size_t i = 0; i < std::size(at_the_prompt); ++i)
            sigaction(at_the_prompt[i].signal, &before_[i], nullptr);
    }
    Guarded(const Guarded &) = delete;
    Guarded &operator=(const Guarded &) = delete;

  private:
    struct sigaction before_[std::size(at_the_prompt)];
};

kestu_edit_t *new_editor() {
    kestu_edit_t *editor = nullptr;
    if (kestu_error_t *err = kestu_edit_create(&editor, STDIN_FILENO, STDOUT_FILENO, nullptr)) {
        kestu_error_clear(err);
        throw std::bad_alloc();
    }
    return editor;
}

} // namespace

Typed::Typed(Shell &shell) : editor_(new_editor()), history_(editor_) {
    const auto propose = [](kestu_edit_proposals_t *proposals, const char *line, size_t,
                            size_t cursor, void *baton) {
        complete(proposals, {line, cursor}, *static_cast<const Shell *>(baton));
    };
    kestu_edit_on_complete(editor_, propose, &shell);
}

Typed::~Typed() {
    kestu_edit_destroy(&editor_);
}

Read Typed::read(std::string &text, bool goes_on) {
    begin_row();
    int state = KESTU_EDIT_END;
    kestu_error_t *err;
    {
        const Guarded guarded(editor_);
        err = kestu_edit_readline(editor_, goes_on ? prompt_to_go_on : prompt, 0, &state);
    }
    if (!Outcome().ok(err))
        return Read::failed;
    if (state != KESTU_EDIT_LINE)
        return state == KESTU_EDIT_END ? Read::end : Read::interrupted;
    size_t length;
    const char *line = kestu_edit_line(editor_, &length);
    text.assign(line, length);
    if (text.find_first_not_of(" \t\n") != text.npos)
        history_.add(text);
    return Read::line;
}

std::unique_ptr<Script> Script::of_file(const std::string &path) {
    struct stat state = {};
    FILE *file = std::fopen(path.c_str(), "re");
    if (file && fstat(fileno(file), &state) == 0 && S_ISDIR(state.st_mode)) {
        std::fclose(file);
        file = nullptr;
        errno = EISDIR;
    }
    if (file)
        return std::unique_ptr<Script>(new Script(path, file));
    Outcome().fail(printable(path.c_str()) + ": cannot be read: " + std::strerror(errno));
    return nullptr;
}

std::unique_ptr<Script> Script::of_text(const std::string &text) {
    std::unique_ptr<Script> script(new Script("-c", nullptr));
    script->text_ = text;
    if (!text.empty())
        script->file_ = fmemopen(script->text_.data(), text.size(), "r");
    return script;
}

std::unique_ptr<Script> Script::of_standard_input() {
    return std::unique_ptr<Script>(new Script("", fdopen(copy_of_standard_input(), "r")));
}

Script::~Script() {
    std::free(buffer_);
    if (file_)
        std::fclose(file_);
}

std::string Script::place() const {
    return name_.empty() ? "" : printable(name_.c_str()) + ":" + std::to_string(number_) + ": ";
}

Read Script::read(std::string &line) {
    errno = 0;
    const ssize_t length = file_ ? getline(&buffer_, &size_, file_) : -1;
    if (length < 0 && errno == 0)
        return Read::end;
    if (length < 0) {
        const std::string name = name_.empty() ? "standard input" : printable(name_.c_str());
        Outcome().fail(name + " cannot be read: " + std::strerror(errno));
        return Read::failed;
    }
    ++number_;
    line.assign(buffer_, static_cast<size_t>(length));
    for (const char end : {'\n', '\r'})
        if (line.ends_with(end))
            line.pop_back();
    return Read::line;
}

} // namespace program
