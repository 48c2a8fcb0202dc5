// The editor without a terminal: bytes in, a screen out.
#include "machine.hpp"

using namespace kestu::test;

namespace {

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
                {"one two three\x17\x17" + undo + undo, "> one two three|"},
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
