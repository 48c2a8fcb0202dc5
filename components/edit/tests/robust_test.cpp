// What holds for the editor whatever is typed, and on screens, files and memory that change.
#include "machine.hpp"
#include "support/alloc_failure.hpp"
#include "support/process.hpp"

#include <random>

#include <sys/stat.h>

using namespace kestu::test;

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
    for (unsigned seed = 0; seed < 2000; ++seed) {
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
