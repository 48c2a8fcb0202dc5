// Any bytes typed on a screen of any size: what is shown is what is shown when all is drawn anew.
#include "components/edit/tests/paper.hpp"
#include "fuzz/check.hpp"
#include "kestu_edit.h"

using namespace kestu::fuzz;
using kestu::test::Paper;

namespace {

std::string drawn(kestu_edit_t *edit) {
    size_t length;
    const char *bytes = kestu_edit_output(edit, &length);
    return {bytes, length};
}

void require_same_as_anew(kestu_edit_t *edit, Paper &paper, size_t columns, size_t rows) {
    const Paper before = paper;
    Paper anew(columns, rows);
    require(!kestu_edit_hide(edit));
    paper.write(drawn(edit));
    const size_t top = paper.row();
    require(paper.shown(top) == "|");
    require(!kestu_edit_show(edit));
    const std::string bytes = drawn(edit);
    paper.write(bytes);
    anew.write(bytes);
    require(before.shown(top, true) == anew.shown(0, true) && anew.unknown.empty());
}

} // namespace

// The first bytes are the size, the flags and how many bytes come at once; the rest is typed.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    start_library();
    if (size < 4)
        return 0;
    const size_t columns = 2 + data[0] % 90, rows = 1 + data[1] % 30, step = 1 + data[3] % 16;
    kestu_edit_t *edit = nullptr;
    require(!kestu_edit_create(&edit, -1, -1, nullptr));
    require(!kestu_edit_resize(edit, static_cast<unsigned>(columns), static_cast<unsigned>(rows)));
    for (const std::string line : {"one", "two\nrows", "\xe6\xbc\xa2\xe5\xad\x97 three"})
        require(!kestu_edit_history_add(edit, line.data(), line.size()));
    require(!kestu_edit_begin(edit, "\x1b[1m>\x1b[m ", data[2] % 4));
    Paper paper(columns, rows);
    paper.write(drawn(edit));
    int state = KESTU_EDIT_MORE;
    for (size_t at = 4; at < size && state == KESTU_EDIT_MORE; at += step) {
        const size_t count = std::min(step, size - at);
        require(!kestu_edit_feed(edit, data + at, count, nullptr, &state));
        paper.write(drawn(edit));
        if (state == KESTU_EDIT_MORE)
            require_same_as_anew(edit, paper, columns, rows);
    }
    kestu_edit_destroy(&edit);
    return 0;
}
