// An editor without a terminal and the screen that it draws.
#pragma once

#include "kestu_edit.h"
#include "paper.hpp"
#include "support/test.hpp"

#include <string>

namespace kestu::test {

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

inline const std::string left = "\x1b[D", up = "\x1b[A", down = "\x1b[B", undo = "\x1f";

} // namespace kestu::test
