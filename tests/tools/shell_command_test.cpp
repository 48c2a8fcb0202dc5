// `kestu shell` as a person uses it at a terminal.
#include "support/process.hpp"
#include "support/pty.hpp"
#include "support/test.hpp"

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

using namespace kestu::test;

namespace {

const std::string enter = "\r", up = "\x1b[A", control_c = "\x03", control_d = "\x04";

class ShellSession : public testing::Test {
  protected:
    void start(Terminal &at) const {
        at.run({KESTU_PROGRAM, "shell"}, {"XDG_STATE_HOME=" + state.path});
        at.wait_for_text("kestu> |");
    }
    void start() { start(terminal); }

    // Types all at once and waits until the screen ends so.
    void expect(const std::string &keys, const std::string &shown) {
        terminal.type(keys);
        terminal.wait_for_text(shown);
    }

    std::string history_file() const { return state / "kestu/history"; }
    const TemporaryFolder state;
    Terminal terminal{60, 20};
};

unsigned mode_of(const std::string &path) {
    struct stat status = {};
    stat(path.c_str(), &status);
    return status.st_mode & 07777;
}

size_t occurrences(const std::string &text, const std::string &part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

} // namespace

TEST_F(ShellSession, EditsLinesAndRunsThem) {
    start();
    EXPECT_THAT(terminal.shown(), testing::StartsWith("kestu 1.0.0. Type help"));
    expect("base 16 255" + enter, "kestu> base 16 255\nFF\nkestu> |");
    // The keys as different terminals send them, among keys that mean nothing.
    expect("x\x1b[99~ase\x1b[15;2~ 16 254\x1b[1~\x1b[3~b\x1bOF\x7f\x1b[1;2R", "kestu> base 16 25|");
    expect("\xc3\xa4\x1b[D-\x1b[C\x7f\x7f", "kestu> base 16 25|");
    expect("\x15" + up +
               "\x15"
               "ba\t16 25",
           "kestu> base 16 25|");
    // What Tab completes, words in quotes and behind backslashes too.
    mkdir((state / "a folder").c_str(), 0700);
    state.write("a 'file'", "");
    expect("\x15" + ("cd " + state.path) + enter, "\nkestu> |");
    constexpr std::pair<const char *, const char *> completed[] = {
        {"--ver", "--ver|\n--version  --verbose"},
        {"kestu --version --verb", "kestu --version --verbose |"},
        {"image in", "image info |"},
        {"image draw cir", "image draw circle |"},
        {"help image in", "help image info |"},
        {"image info --tag", "image info --tags |"},
        {"sum --col", "sum --color |"},
        {"find --color a", "find --color a|\nauto    always"},
        {"find --color=ne", "find --color=never |"},
        {"cd a", "cd a\\ folder/|"},
        {"sum a\\ ", "sum a\\ |\na 'file'   a folder/"},
        {"sum a\\ \\'", "sum a\\ \\'file\\' |"},
        {"sum \"a '", "sum \"a 'file'\" |"},
        {"sum 'a f", "sum 'a folder/|"},
        {"image compare x 'a f", "image compare x 'a folder/|"},
        {"base 2 5 > a", "base 2 5 > a\\ |"},
        {"she", "she|"},
    };
    for (const auto &[typed, line] : completed) {
        expect(std::string(typed) + "\t", std::string("kestu> ") + line);
        terminal.type("\x15");
    }
    expect("base 16 25", "kestu> base 16 25|");
    expect("3\x1b[D" + enter, "kestu> base 16 253\nFD\nkestu> |");
    expect("image info /missing" + enter,
           "/missing: cannot open: No such file or directory\nkestu> |");
    expect("imgae" + enter, "kestu: no command 'imgae'; did you mean 'image'?\nkestu> |");
    expect("unescape no-line-end" + enter, "\nno-line-end\nkestu> |");
    expect("exit" + enter, "kestu> exit\n|");
    EXPECT_EQ(terminal.wait_for_end(), 0);
}

TEST_F(ShellSession, PastedTextIsTyped) {
    start();
    expect("base 2 5\nescape \"gr\xc3\xb6\xc3\x9f"
           "er\"\r\rbase 2 6",
           "kestu> base 2 6|");
    EXPECT_THAT(terminal.shown(), HasSubstr("\n101\nkestu> escape"));
    EXPECT_THAT(terminal.shown(), HasSubstr("\ngr\\xC3\\xB6\\xC3\\x9Fer\nkestu>\nkestu> base"));
    // What a terminal tells to be pasted runs nothing until Enter.
    expect("\x15\x1b[200~base 2 5\nbase 2 7\x1b[201~", "kestu> base 2 5\nbase 2 7|");
    expect(enter, "101\n111\nkestu> |");
    const std::string word(200, 'w');
    expect("escape " + word + "!" + enter, "w!\nkestu> |");
    EXPECT_THAT(read_file(history_file()), EndsWith("\nescape " + word + "!\n"));
}

TEST_F(ShellSession, CommandsGoOnInFurtherLines) {
    start();
    expect("base 2 5 \\" + enter, "kestu> base 2 5 \\\n  ...> |");
    expect("7 \\" + enter + "1" + enter, "  ...> 1\n101\n111\n1\nkestu> |");
    expect("escape \"a" + enter + "b\"" + enter, "kestu> escape \"a\n  ...> b\"\na\\nb\nkestu> |");
    expect("escape \"never" + enter, "  ...> |");
    expect(control_c, "^C\nkestu> |");
}

TEST_F(ShellSession, InterruptEndsTheLineOrTheCommandButNotTheShell) {
    start();
    expect("base 2 5" + control_c, "kestu> base 2 5^C\nkestu> |");
    // The command answers the line, and so runs by the time of the key.
    expect("sum --check" + enter + std::string(40, '0') + "  missing\n",
           "missing: FAILED open or read\n|");
    EXPECT_TRUE(terminal.settings().c_lflag & ICANON);
    expect(control_c, "^C\nkestu> |");
    // What a command reads ends for this command only.
    for (int i = 0; i < 2; ++i) {
        expect("sum --check" + enter + std::string(40, '0') + "  gone\n", "open or read\n|");
        expect(control_d, "could not be read\nkestu> |");
    }
    terminal.type("ab" + control_d + "\x7f\x7f" + control_d);
    EXPECT_EQ(terminal.wait_for_end(), 0);
    EXPECT_THAT(terminal.shown(), EndsWith("kestu>\n|"));
}

TEST_F(ShellSession, KeepsItsHistoryForTheNext) {
    start();
    expect("base 2 5" + enter, "101\nkestu> |");
    expect("base 2 5" + enter, "101\nkestu> |");
    expect("  " + enter + "nonsense" + enter, "lists the commands\nkestu> |");
    terminal.type(control_d);
    terminal.wait_for_end();
    EXPECT_EQ(read_file(history_file()), "base 2 5\nnonsense\n");
    EXPECT_EQ(mode_of(history_file()), 0600u);
    EXPECT_EQ(mode_of(state / "kestu"), 0700u);
    Terminal next(60, 20);
    start(next);
    next.type(up);
    next.wait_for_text("kestu> nonsense|");
    next.type(up + up + enter);
    next.wait_for_text("kestu> base 2 5\n101\nkestu> |");
    EXPECT_EQ(read_file(history_file()), "base 2 5\nnonsense\nbase 2 5\n");
}

TEST_F(ShellSession, ShortensALongHistory) {
    std::string content = "\x1b[2J\n\n", kept;
    for (int i = 0; i < 2500; ++i) {
        const std::string line = "line " + std::to_string(i) + "\n";
        content += line;
        kept += i > 1500 ? line : "";
    }
    mkdir((state / "kestu").c_str(), 0700);
    state.write("kestu/history", content + "cut off");
    start();
    expect(up, "kestu> cut off|");
    expect("\x15"
           "base 2 5" +
               enter,
           "101\nkestu> |");
    EXPECT_EQ(read_file(history_file()), kept.substr(10) + "cut off\nbase 2 5\n");
}

TEST_F(ShellSession, GoesOnWithoutAHistoryThatCannotBeKept) {
    mkdir((state / "kestu").c_str(), 0700);
    mkfifo(history_file().c_str(), 0600);
    start();
    expect("base 2 5" + enter, "101\nkestu> |");
    expect("base 2 6" + enter + up + up, "110\nkestu> base 2 5|");
    EXPECT_EQ(occurrences(terminal.shown(), "is not kept"), 1u) << terminal.shown();
    Terminal other(100, 20);
    other.run({KESTU_PROGRAM, "shell"}, {"XDG_STATE_HOME=" + state.write("file", "")});
    other.wait_for_text("kestu> |");
    other.type("base 2 5" + enter + "base 2 6" + enter);
    other.wait_for_text("110\nkestu> |");
    EXPECT_EQ(occurrences(other.shown(), "Not a directory; the history"), 1u) << other.shown();
}

namespace {

// A shell in a group of its own in the foreground of the terminal, as another shell starts it. The
// settings of the terminal last as long as its first process, which is this other shell.
class Job {
  public:
    explicit Job(const std::string &state) {
        const rlimit no_core = {0, 0};
        setrlimit(RLIMIT_CORE, &no_core);
        setenv("XDG_STATE_HOME", state.c_str(), 1);
        ::signal(SIGTTOU, SIG_IGN);
        pid = fork();
        setpgid(pid, pid);
        give_terminal(pid == 0 ? getpid() : pid);
        if (pid != 0)
            return;
        ::signal(SIGTTOU, SIG_DFL);
        execl(KESTU_PROGRAM, "kestu", "shell", nullptr);
        _exit(127);
    }

    static void give_terminal(pid_t group) { tcsetpgrp(STDIN_FILENO, group); }

    // Tells the signal that stopped or ended the shell, and whether it left the terminal as it was,
    // which then is the other shell's, with the settings from before.
    void report_change() const {
        int status = 0;
        waitpid(pid, &status, WUNTRACED);
        const int signal = WIFSTOPPED(status) ? WSTOPSIG(status) : WTERMSIG(status);
        const bool restored = is_restored();
        give_terminal(getpid());
        tcsetattr(STDIN_FILENO, TCSANOW, &before_);
        Terminal::report(std::to_string(signal) + (restored ? "" : ", not restored"));
    }

    pid_t pid = -1;

  private:
    static termios current_settings() {
        termios found = {};
        tcgetattr(STDIN_FILENO, &found);
        return found;
    }

    bool is_restored() const {
        const termios now = current_settings();
        return std::memcmp(&now, &before_, sizeof now) == 0;
    }

    const termios before_ = current_settings();
};

} // namespace

TEST_F(ShellSession, SignalsAtThePromptFindTheTerminalRestored) {
    for (const int signal : {SIGTERM, SIGHUP, SIGINT, SIGQUIT}) {
        Terminal other(60, 20);
        other.run([&] {
            const Job job(state.path);
            Terminal::report(std::to_string(job.pid));
            job.report_change();
        });
        const pid_t shell = std::stoi(other.wait_for_report());
        other.wait_for_text("kestu> |");
        other.type("base 2 " + std::to_string(signal) + enter + "half");
        other.wait_for_text("kestu> half|");
        EXPECT_FALSE(other.settings().c_lflag & ICANON);
        kill(shell, signal);
        EXPECT_EQ(other.wait_for_report(), std::to_string(signal));
        EXPECT_THAT(read_file(history_file()), EndsWith("base 2 " + std::to_string(signal) + "\n"));
    }
}

TEST_F(ShellSession, CanBeStoppedAndTakenUpAgain) {
    terminal.run([&] {
        const Job job(state.path);
        Terminal::report(std::to_string(job.pid));
        for (int i = 0; i < 3; ++i) {
            job.report_change();
            Job::give_terminal(job.pid);
            kill(job.pid, SIGCONT);
        }
        job.report_change();
        // Ended in the background it leaves the terminal alone.
        kill(job.pid, SIGTERM);
        kill(job.pid, SIGCONT);
        job.report_change();
    });
    const std::string control_z = "\x1a", stopped = std::to_string(SIGTSTP);
    const pid_t shell = std::stoi(terminal.wait_for_report());
    terminal.wait_for_text("kestu> |");
    expect("half", "kestu> half|");
    terminal.type(control_z); // a key that takes with it what is not yet read
    EXPECT_EQ(terminal.wait_for_report(), stopped);
    terminal.wait_for_text("\nkestu> half|");
    for (const int signal : {SIGTSTP, SIGSTOP}) {
        kill(shell, signal);
        EXPECT_EQ(terminal.wait_for_report(),
                  signal == SIGTSTP ? stopped : std::to_string(signal) + ", not restored");
        terminal.wait_for_keys();
        expect("\x7f", "kestu> hal|");
        expect("f", "kestu> half|");
    }
    terminal.type("\x7f\x7f\x7f\x7f"
                  "base 2 5" +
                  enter);
    terminal.wait_for_text("101\nkestu> |");
    kill(shell, SIGSTOP);
    EXPECT_EQ(terminal.wait_for_report(), std::to_string(SIGSTOP) + ", not restored");
    EXPECT_EQ(terminal.wait_for_report(), std::to_string(SIGTERM));
}
