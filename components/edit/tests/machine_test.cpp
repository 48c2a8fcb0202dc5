// The editor without a terminal: bytes in, a screen out.
#include "kestu_edit.h"
#include "paper.hpp"
#include "support/alloc_failure.hpp"
#include "support/process.hpp"
#include "support/test.hpp"

#include <random>

#include <sys/stat.h>

using namespace kestu::test;

namespace {

class Machine {
  public:
    Machine(unsigned columns = 40, unsigned rows = 8)
        : paper(columns, rows), columns_(columns), rows_(rows) {
        EXPECT_EQ(kestu_edit_create(&edit, -1, -1, nullptr), nullptr);
        EXPECT_EQ(kestu_edit_resize(edit, columns, rows), nullptr);
    }
    ~Machine() { kestu_edit_destroy(&edit); }
    Machine(const Machine &) = delete;
    Machine &operator=(const Machine &) = delete;

    void begin(const char *prompt = "> ", int flags = 0) {
        kestu_edit_end(edit);
        drawn();
        ASSERT_OK(kestu_edit_begin(edit, prompt, flags));
        draw();
    }
    int type(std::string_view keys) {
        int state = -1;
        EXPECT_EQ(kestu_edit_feed(edit, keys.data(), keys.size(), &taken, &state), nullptr);
        draw();
        return state;
    }
    void remember(std::initializer_list<std::string> lines) {
        for (const std::string &line : lines)
            ASSERT_OK(kestu_edit_history_add(edit, line.data(), line.size()));
    }
    std::string text() const {
        size_t length;
        const char *line = kestu_edit_line(edit, &length);
        return {line, length};
    }
    std::string history() const {
        std::string all;
        for (size_t i = 0; i < kestu_edit_history_count(edit); ++i)
            all += std::string(i ? "," : "") + kestu_edit_history_line(edit, i, nullptr);
        return all;
    }
    std::string shown(bool styles = false) const { return paper.shown(0, styles); }
    std::string drawn() {
        size_t length;
        const char *bytes = kestu_edit_output(edit, &length);
        return {bytes, length};
    }
    void draw() {
        const std::string bytes = drawn();
        paper.write(bytes);
        last_drawn = bytes.size();
    }

    // What is shown is what is shown when all is drawn anew, and can be taken away whole.
    void expect_same_as_anew(const std::string &context) {
        Paper before = paper, anew(columns_, rows_);
        ASSERT_OK(kestu_edit_hide(edit));
        draw();
        const size_t top = paper.row();
        ASSERT_EQ(paper.shown(top), "|") << context;
        ASSERT_OK(kestu_edit_show(edit));
        const std::string bytes = drawn();
        paper.write(bytes);
        anew.write(bytes);
        ASSERT_EQ(before.shown(top, true), anew.shown(0, true)) << context;
        ASSERT_EQ(paper.shown(top, true), anew.shown(0, true)) << context;
        ASSERT_EQ(paper.unknown, "") << context;
    }

    kestu_edit_t *edit = nullptr;
    Paper paper;
    size_t taken = 0, last_drawn = 0;

  private:
    unsigned columns_, rows_;
};

struct Typed {
    std::string keys, shown;
};

void expect_all(std::initializer_list<Typed> cases,
                std::initializer_list<std::string> history = {}) {
    for (const auto &[keys, shown] : cases) {
        Machine machine;
        machine.remember(history);
        machine.begin();
        EXPECT_EQ(machine.type(keys), KESTU_EDIT_MORE) << keys;
        EXPECT_EQ(machine.shown(), shown) << keys;
        machine.expect_same_as_anew(keys);
    }
}

const std::string left = "\x1b[D", up = "\x1b[A", down = "\x1b[B", undo = "\x1f";

} // namespace

TEST(Edit, KeysMoveAndChange) {
    expect_all({{"abc", "> abc|"},
                {"abc\x01x", "> x|abc"},
                {"abc\x02\x02-", "> a-|bc"},
                {"abc\x01\x06\x06-\x05!", "> ab-c!|"},
                {"abc\x7f\x08", "> a|"},
                {"abc\x01\x04\x1b[3~", "> |c"},
                {"one two\x1b"
                 "bX",
                 "> one X|two"},
                {"one two\x01\x1b"
                 "f.",
                 "> one.| two"},
                {"one two\x1b[1;5D\x1bOd,", "> ,|one two"},
                {"one two\x1b[1~\x1b[1;3C\x1b[4~.\x1b[7~,\x1bOF;\x1b[8~\x1bOH:", "> :|,one two.;"},
                {"ab\x14", "> ba|"},
                {"abc\x02\x14", "> acb|"},
                {"one two\x17\x19\x19", "> one twotwo|"},
                {"one two.\x1b\x7f\x17", "> |"},
                {"one two three\x01\x1b"
                 "d\x1b"
                 "d\x05\x19",
                 ">  threeone two|"},
                {"one two\x1b"
                 "b\x0b\x01\x19 ",
                 "> two |one"},
                {"one two\x1b"
                 "b\x15\x05\x19",
                 "> twoone |"},
                {"a\x15"
                 "b\x15"
                 "c\x15\x19\x1by\x1by",
                 "> a|"},
                {"abc" + left + "\x0b\x15" + undo, "> ab|"},
                {"abc" + undo, "> |"},
                {"abc\x17" + undo + "d\x18\x15", "> abc|"},
                {"a\x16\x01\x11\x1b"
                 "b",
                 "> a^A^[b|"},
                {"a\x1b[99;5~\x1b[1;2;3;4x\x1b[[A\x1b[15~\x1bOP\x1b\x1b[D-\x1b[27;5;9~", "> -|a"},
                {"a\x1b[200~b\r\nc\x03\x1b[20~\x1b[201~d", "> ab\nc^C^[[20~d|"},
                {"a\x1b\rb" + up + "-" + down + "+", "> a-\nb+|"},
                {"ab\x1b\r\x1b\rc\x10x", "> ab\n\ncx|"}});
}

TEST(Edit, TextIsShownByClusters) {
    expect_all(
        {{"na\xc3\xafve\x02\x02\x7f", "> na|ve"},
         {"e\xcc\x81"
          "x\x02\x7f",
          "> |x"},
         {"\xe6\xbc\xa2\xe5\xad\x97" + left + "-", "> 漢-|字"},
         {"\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x92\xbb!" + left + left + "a", "> a|👩‍💻!"},
         {"\xf0\x9f\x87\xaa\xf0\x9f\x87\xba\xf0\x9f\x87\xaa\xf0\x9f\x87\xba\x7f", "> 🇪🇺|"},
         {"a\xff\xc3(\xcc\x81", "> a\\xff\\xc3(́|"},
         {"\xcc\x81\xe2\x80\x8b\xc2\x85", "> <301><200b><85>|"},
         {std::string(37, 'x') + "\xe6\xbc\xa2", "> " + std::string(37, 'x') + "\n漢|"},
         {std::string(38, 'x'), "> " + std::string(38, 'x') + "\n|"},
         {"\t.", ">       .|"}});
}

TEST(Edit, LinesEnd) {
    const struct {
        std::string keys, text, shown;
        int state;
        size_t left;
    } cases[] = {{"ab\x02\rnext", "ab", "> ab\n|", KESTU_EDIT_LINE, 4},
                 {"ab\x03", "ab", "> ab^C\n|", KESTU_EDIT_INTERRUPTED, 0},
                 {"\x04", "", ">\n|", KESTU_EDIT_END, 0},
                 {"a\x04\n", "a", "> a\n|", KESTU_EDIT_LINE, 0},
                 {"ab\x1a", "ab", "|", KESTU_EDIT_SUSPENDED, 0}};
    for (const auto &[keys, text, shown, state, rest] : cases) {
        Machine machine;
        machine.begin();
        EXPECT_EQ(machine.type(keys), state) << keys;
        EXPECT_EQ(keys.size() - machine.taken, rest);
        EXPECT_EQ(machine.text(), text);
        EXPECT_EQ(machine.shown(), shown);
    }
    Machine machine;
    EXPECT_EQ(machine.type("x"), KESTU_EDIT_END);
    machine.begin();
    machine.type("ab\x1a");
    ASSERT_OK(kestu_edit_show(machine.edit));
    machine.draw();
    EXPECT_EQ(machine.shown(), "> ab|");
    ASSERT_OK(kestu_edit_set_line(machine.edit, "set", 3));
    machine.draw();
    EXPECT_EQ(machine.shown(), "> set|");
    kestu_edit_on_whole(
        machine.edit,
        [](const char *line, size_t length, void *) { return int(line[length - 1] == ';'); },
        nullptr);
    EXPECT_EQ(machine.type("\r;"), KESTU_EDIT_MORE);
    EXPECT_EQ(machine.type("\r"), KESTU_EDIT_LINE);
    EXPECT_EQ(machine.text(), "set\n;");
}

TEST(Edit, HistoryIsGoneThroughAndSearched) {
    expect_all({{up, "> make all|"},
                {up + up + up + up, "> ls -l|"},
                {up + down + "x", "> x|"},
                {"new" + up, "> new|"},
                {"m" + up + up, "> make|"},
                {"m" + up + up + down + down, "> m|"},
                {"new\x10\x10\x0e\x0e", "> new|"},
                {"\x1b<\x1b>\x1b[5~", "> ls -l|"},
                {"\x12ma", "(search: ma) |make all"},
                {"\x12ma\x12", "(search: ma) |make"},
                {"\x12make\x12\x12\x12", "(search: make) |make"},
                {"\x12lx", "(not found: lx) |"},
                {"\x12lx\x7f", "(search: l) make a|ll"},
                {"ab\x12ma\x07", "> ab|"},
                {"ab\x12ma\x05!", "> make all!|"},
                {"ab\x12ma" + left + undo, "> ab|"}},
               {"ls -l", "make", "cd", "make all"});
    Machine machine;
    machine.remember({"one", "two", "one", "three"});
    EXPECT_EQ(machine.history(), "two,one,three");
    kestu_edit_history_limit(machine.edit, 2);
    machine.remember({"four"});
    EXPECT_EQ(machine.history(), "three,four");
    EXPECT_EQ(kestu_edit_history_line(machine.edit, 2, nullptr), nullptr);
}

TEST(Edit, HistoriesOfTwoProgramsAreKept) {
    const TemporaryFolder folder;
    const std::string file = folder / "history";
    Machine one, two;
    ASSERT_OK(kestu_edit_history_load(one.edit, file.c_str()));
    one.remember({"a", "several\nrows"});
    ASSERT_OK(kestu_edit_history_save(one.edit, file.c_str()));
    ASSERT_OK(kestu_edit_history_load(two.edit, file.c_str()));
    EXPECT_EQ(two.history(), "a,several\nrows");
    one.remember({"b"});
    two.remember({"c"});
    for (const Machine *machine : {&two, &one, &two})
        ASSERT_OK(kestu_edit_history_save(machine->edit, file.c_str()));
    EXPECT_EQ(read_file(file), "a\nseveral\rrows\nc\nb\n");
    struct stat status = {};
    stat(file.c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    folder.write("history", "1\n2\n\n3\n4\n5\nno end");
    kestu_edit_history_limit(one.edit, 3);
    one.remember({"6"});
    ASSERT_OK(kestu_edit_history_save(one.edit, file.c_str()));
    EXPECT_EQ(read_file(file), "5\nno end\n6\n");
    EXPECT_EQ(take_chain(kestu_edit_history_load(one.edit, folder.path.c_str()))[1].first, 120031);
    EXPECT_EQ(take_chain(kestu_edit_history_save(one.edit, "/dev/full"))[1].first, 120030);
}

TEST(Edit, CompletionHintsAndColours) {
    Machine machine(24, 6);
    kestu_edit_on_complete(
        machine.edit,
        [](kestu_edit_proposals_t *proposals, const char *line, size_t, size_t cursor, void *) {
            const std::string word(line, cursor);
            kestu_edit_propose_from(proposals, 0);
            for (const char *name : {"image", "info", "insert", "inside", "\xc3\xa9toile"})
                if (std::string_view(name).starts_with(word))
                    kestu_error_clear(kestu_edit_propose(proposals, name, nullptr, " "));
        },
        nullptr);
    const std::initializer_list<Typed> cases = {{"im\t", "> image |"},
                                                {"x\t", "> x|"},
                                                {"in\t", "> in|\ninfo    insert  inside"},
                                                {"in\t\x07", "> in|"},
                                                {"ins\t", "> ins|\ninsert  inside"},
                                                {"ins\ti\t", "> inside |"},
                                                {"i\t" + undo, "> |"}};
    for (const auto &[keys, shown] : cases) {
        machine.paper = Paper(24, 6);
        machine.begin();
        machine.type(keys);
        EXPECT_EQ(machine.shown(), shown) << keys;
        machine.expect_same_as_anew(keys);
    }
    kestu_edit_on_hint(
        machine.edit,
        [](const char *, size_t length, void *) { return length == 2 ? "fo" : nullptr; }, nullptr);
    kestu_edit_on_style(
        machine.edit,
        [](const char *line, size_t length, uint8_t *styles, void *) {
            for (size_t i = 0; i < length; ++i)
                styles[i] = line[i] == 'n' ? KESTU_EDIT_RED | KESTU_EDIT_BOLD : 0;
        },
        nullptr);
    machine.paper = Paper(24, 6);
    machine.begin("\x1b]0;title\a\x1b[38;5;9m\xe2\x9e\x9c\x1b[0m ");
    machine.type("in");
    EXPECT_EQ(machine.shown(true),
              "\x1b[0;38;5;9m\xe2\x9e\x9c i\x1b[0;1;31mn|\x1b[0;2mf\x1b[0;2mo");
    EXPECT_EQ(machine.type("\r"), KESTU_EDIT_LINE);
    EXPECT_EQ(machine.shown(), "\xe2\x9e\x9c in\n|");
}

TEST(Edit, PasswordsAndSingleRows) {
    Machine machine(12, 4);
    machine.remember({"old"});
    machine.begin("password: ", KESTU_EDIT_HIDDEN);
    EXPECT_EQ(machine.type("secret\x17\x19" + up + "\x12t\r"), KESTU_EDIT_LINE);
    EXPECT_EQ(machine.text(), "t");
    EXPECT_EQ(machine.shown(), "password:\n|");
    machine.paper = Paper(12, 4);
    machine.begin("> ", KESTU_EDIT_ONE_ROW);
    machine.type("a line that is long");
    EXPECT_EQ(machine.shown(), " long|");
    machine.type("\x01");
    EXPECT_EQ(machine.shown(), "> |a line th");
    machine.expect_same_as_anew("one row");
}

TEST(Edit, KeysAreTheProgramsOwn) {
    Machine machine;
    ASSERT_OK(kestu_edit_bind(machine.edit, "Ctrl-O", KESTU_EDIT_KILL_LEFT));
    ASSERT_OK(kestu_edit_bind(machine.edit, "Ctrl-X Ctrl-Space", KESTU_EDIT_HOME));
    ASSERT_OK(kestu_edit_bind(machine.edit, "Shift-Ctrl-Alt-F12", KESTU_EDIT_LAST));
    ASSERT_OK(kestu_edit_bind(machine.edit, "Ctrl-A", KESTU_EDIT_NOTHING));
    for (const char *wrong : {"", "a", "Ctrl-", "Ctrl-Y Ctrl-X", "Alt-Ctrl-A", "Hyper-A", "F13"})
        EXPECT_EQ(take_chain(kestu_edit_bind(machine.edit, wrong, 1))[1].first, 120086) << wrong;
    machine.begin();
    machine.type("abc\x01!\x0f"
                 "de\x18");
    machine.type(std::string_view("\0-\x1b[24;8~+", 10));
    EXPECT_EQ(machine.shown(), "> -de+|");
}

// One key into a long line draws what has changed, and no more.
TEST(Edit, LittleIsDrawnForAKey) {
    Machine machine(80, 24);
    machine.begin();
    machine.type(std::string(1000, 'x'));
    machine.type("y");
    EXPECT_EQ(machine.last_drawn, 1u);
    machine.type(left);
    EXPECT_LE(machine.last_drawn, 8u);
    machine.type(std::string(200, '\x02') + "z");
    EXPECT_LT(machine.last_drawn, 60u) << "a character in front of equal ones";
}

TEST(Edit, ScreensMayChangeTheirSize) {
    Machine machine(20, 6);
    machine.begin();
    machine.type(std::string(30, 'a') + "b");
    // A terminal that folds its rows: 20 and 13 characters in rows of 10.
    machine.paper = Paper(10, 6);
    machine.paper.write("> aaaaaaaaaaaaaaaaaa\r\naaaaaaaaaaaab");
    ASSERT_OK(kestu_edit_resize(machine.edit, 10, 6));
    machine.draw();
    EXPECT_EQ(machine.shown(), "> aaaaaaaa\naaaaaaaaaa\naaaaaaaaaa\naab|");
    for (const unsigned columns : {1, 2, 3})
        ASSERT_OK(kestu_edit_resize(machine.edit, columns, 1));
    EXPECT_EQ(machine.type("\r"), KESTU_EDIT_LINE);
}

TEST(Edit, RandomKeysLeaveTheScreenAsDrawnAnew) {
    const std::vector<std::string> keys = {"a",
                                           "b ",
                                           "\xc3\xa9",
                                           "e\xcc\x81",
                                           "\xe6\xbc\xa2",
                                           "\xf0\x9f\x87\xaa",
                                           "\xe2\x80\x8d",
                                           "\xff",
                                           "\xcc\x81",
                                           "\xc3",
                                           "\t",
                                           "\x16\x01",
                                           "\x1b\r",
                                           left,
                                           left,
                                           "\x1b[C",
                                           up,
                                           down,
                                           "\x01",
                                           "\x05",
                                           "\x1b"
                                           "b",
                                           "\x1b"
                                           "f",
                                           "\x7f",
                                           "\x7f",
                                           "\x04",
                                           "\x0b",
                                           "\x15",
                                           "\x17",
                                           "\x19",
                                           "\x1by",
                                           "\x14",
                                           undo,
                                           undo,
                                           "\x12",
                                           "\x07",
                                           "\x0c",
                                           "\x10",
                                           "\x0e",
                                           "\x1b<",
                                           "\x1b[200~x\ny\x1b[201~",
                                           "word word word",
                                           "\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x92\xbb",
                                           "\x1b[99~",
                                           "\x1b"};
    for (unsigned seed = 0; seed < 3000; ++seed) {
        std::mt19937 random(seed);
        const unsigned columns = 2 + random() % (seed % 2 ? 8 : 40), rows = 1 + random() % 7;
        Machine machine(columns, rows);
        machine.remember({"word", "\xe6\xbc\xa2\nsecond row", "a long line of the history"});
        machine.begin(seed % 3 ? "\x1b[31m>\x1b[m " : "", seed % 5 ? 0 : KESTU_EDIT_ONE_ROW);
        std::string typed;
        for (unsigned i = 0; i < 25; ++i) {
            const std::string key = keys[random() % keys.size()];
            typed += key;
            const int state = machine.type(key);
            if (state != KESTU_EDIT_MORE)
                break;
            ASSERT_NO_FATAL_FAILURE(machine.expect_same_as_anew(
                "seed " + std::to_string(seed) + ", " + std::to_string(columns) + " x " +
                std::to_string(rows) + ": " + testing::PrintToString(typed)));
        }
        machine.type("\x07\x1b[D");
        for (int i = 0; i < 60; ++i)
            machine.type(undo);
        ASSERT_EQ(machine.text(), "") << seed << testing::PrintToString(typed);
    }
}

// The line stays as it was, and goes on.
TEST(Edit, MissingMemoryIsToldAndNothingIsLost) {
    const size_t failures = fail_each_allocation([](size_t) {
        kestu_edit_t *edit = nullptr;
        int state = KESTU_EDIT_MORE;
        kestu_error_clear(kestu_edit_create(&edit, -1, -1, nullptr));
        if (!edit)
            return;
        kestu_error_clear(kestu_edit_history_add(edit, "old", 3));
        if (kestu_error_t *err = kestu_edit_begin(edit, "> ", 0)) {
            kestu_error_clear(err);
        } else {
            for (const char *key = "one two\x17\x19\x1b[A\x12o\r"; *key; ++key)
                kestu_error_clear(kestu_edit_feed(edit, key, 1, nullptr, &state));
            EXPECT_EQ(state, KESTU_EDIT_LINE);
        }
        kestu_edit_destroy(&edit);
    });
    EXPECT_GT(failures, 10u);
}
