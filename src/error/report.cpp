// Turning a chain into lines.
#include "error/report.hpp"

#include "base/format.hpp"
#include "base/kept_errno.hpp"
#include "error/repeats.hpp"

#include <algorithm>
#include <cstdarg>
#include <cstring>

namespace kestu {
namespace {

// A line, cut where it is full; so is each of the pieces it is put together from.
class Line {
  public:
    void add(const char *format, ...) KESTU_PRINTF(2, 3) {
        char piece[max_piece];
        va_list args;
        va_start(args, format);
        format_text(piece, sizeof piece, format, args);
        va_end(args);
        const size_t added = std::min(std::strlen(piece), sizeof text_ - 1 - length_);
        std::memcpy(text_ + length_, piece, added);
        length_ += added;
        text_[length_] = '\0';
    }

    const char *text() const { return text_; }

  private:
    static constexpr size_t max_piece = 4106;
    char text_[5096] = "";
    size_t length_ = 0;
};

const char *type_name(int type) {
    switch (type) {
    case KESTU_ERROR_ERROR:
        return "Error";
    case KESTU_ERROR_WARNING:
        return "Warning";
    case KESTU_ERROR_MALFUNCTION:
        return "Malfunction";
    case KESTU_ERROR_ASSERT:
        return "Assert";
    default:
        return "";
    }
}

void add_text(Line &line, const kestu_error_t &err) {
    const char *text = err.message ? err.message : kestu_error_text(err.code);
    if (!text && err.code >= KESTU_ERROR_FIRST_REGISTERED)
        text = "Unregistered error";
    if (text)
        line.add("%s ", text);
    else
        line.add("Unknown KesTU error (code=%d) ", err.code);
}

void compose_line(Line &line, const kestu_error_t &err) {
    if (err.type != KESTU_ERROR_PLAIN) {
        line.add("%s", type_name(err.type));
        if (err.code != 0)
            line.add("(%d)", err.code);
        line.add(": ");
    }
    add_text(line, err);
    if (err.file && err.function)
        line.add("[%s(%d), %s]", err.file, err.line, err.function);
}

} // namespace

void report(kestu_error_t *err) {
    kestu_error_clear(kestu_error_handle(err, kestu_error_stdhandler, nullptr));
}

} // namespace kestu

using namespace kestu;

kestu_error_t *kestu_error_handle(kestu_error_t *err, kestu_error_line_func handler, void *baton) {
    const KeptErrno kept;
    Repeats repeats(err);
    for (const kestu_error_t *e = err; e; e = e->child) {
        if (!e->message && repeats.next_is_repeat(*e))
            continue;
        Line line;
        compose_line(line, *e);
        handler(line.text(), baton);
    }
    return err;
}

int kestu_error_stdhandler(const char *line, void *stream) {
    const KeptErrno kept;
    return fprintf(stream ? static_cast<FILE *>(stream) : stderr, "%s\n", line);
}
