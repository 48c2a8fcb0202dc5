// Log files that only grow.
#include "kestu_log.h"

#include "base/kept_errno.hpp"
#include "mem/memory.hpp"

#include <apr_strings.h>
#include <apr_time.h>

#include <cstdarg>
#include <cstring>
#include <string_view>

using namespace kestu;

namespace {

// Room for a text, terminator included; what is longer is cut.
constexpr size_t text_size = 1000;

// Room for the date and ": ".
constexpr size_t date_size = APR_CTIME_LEN + 2;

constexpr const char *write_failed = "Cannot write to log.";

void report_write(apr_status_t status) {
    if (status != APR_SUCCESS)
        report(wrap(fail_apr(status), write_failed));
}

// One write, which the file's append mode puts behind what others wrote.
void write_text(const kestu_log_t *log, const char *text) {
    report_write(log->file ? apr_file_puts(text, log->file) : APR_EBADF);
}

// The same with a newline behind.
void write_line(const kestu_log_t *log, char *text) {
    char newline[] = "\n";
    const iovec line[] = {{text, std::strlen(text)}, {newline, 1}};
    apr_size_t written = 0;
    report_write(log->file ? apr_file_writev(log->file, line, 2, &written) : APR_EBADF);
}

// APR ends a text early at some values, and loses the newline behind it: a line is a line even so.
void end_line(char *text, int length, const char *format) {
    const std::string_view made(text);
    const bool is_cut = length >= static_cast<int>(text_size) - 1;
    if (!is_cut && std::string_view(format).ends_with('\n') && !made.ends_with('\n'))
        std::memcpy(text + made.size(), "\n", 2);
}

kestu_error_t *fill_log(kestu_log_t &log, const char *name) {
    if (kestu_error_t *err = pool_make_text(log.pool, &log.name, name))
        return err;
    constexpr apr_int32_t flags = APR_FOPEN_WRITE | APR_FOPEN_CREATE | APR_FOPEN_APPEND;
    const apr_status_t status =
        apr_file_open(&log.file, name, flags, APR_FPROT_OS_DEFAULT, log.pool);
    if (status == APR_SUCCESS)
        return nullptr;
    log.file = nullptr;
    return wrap_plain(fail_apr(status), "Can't open file '%s'", name);
}

kestu_error_t *make_log(kestu_log_t **out, const char *name, apr_pool_t *parent) {
    apr_pool_t *pool = nullptr;
    if (kestu_error_t *err = new_pool(&pool, parent))
        return err;
    kestu_log_t *log = nullptr;
    if (kestu_error_t *err = pool_make(pool, &log))
        return err;
    *log = {.pool = pool, .file = nullptr, .name = nullptr};
    *out = log;
    return fill_log(*log, name);
}

} // namespace

kestu_error_t *kestu_log_create(kestu_log_t **log, const char *name, apr_pool_t *parent) {
    const KeptErrno kept;
    return wrap(make_log(log, name, parent), "Cannot create log.");
}

void kestu_log_terminate(kestu_log_t *log) {
    const KeptErrno kept;
    if (apr_status_t status = log->file ? apr_file_close(log->file) : APR_SUCCESS)
        report(fail_apr(status));
}

void kestu_log_printf(kestu_log_t *log, const char *format, ...) {
    const KeptErrno kept;
    char text[text_size];
    va_list args;
    va_start(args, format);
    const int length = apr_vsnprintf(text, sizeof text, format, args);
    va_end(args);
    if (length <= 0)
        return;
    end_line(text, length, format);
    write_text(log, text);
}

void kestu_log_dtprintf(kestu_log_t *log, const char *format, ...) {
    const KeptErrno kept;
    char date[APR_CTIME_LEN] = "";
    report_write(apr_ctime(date, apr_time_now()));
    char line[date_size + text_size];
    const int length = apr_snprintf(line, sizeof line, "%s: ", date);
    va_list args;
    va_start(args, format);
    char *text = line + length;
    end_line(text, apr_vsnprintf(text, text_size, format, args), format);
    va_end(args);
    write_text(log, line);
}

void kestu_log_json(kestu_log_t *log, kestu_error_t *err) {
    const KeptErrno kept;
    apr_pool_t *pool = nullptr;
    if (!err)
        return;
    if (kestu_error_t *failure = new_pool(&pool, log->pool))
        return report(wrap(failure, write_failed));
    if (char *text = kestu_error_to_json(err, pool))
        write_line(log, text);
    else
        report(wrap(no_memory(1), write_failed));
    apr_pool_destroy(pool);
}

// The cut keeps the newline, so that a long line does not swallow the next one.
int kestu_log_errhandler(const char *line, void *log) {
    kestu_log_printf(static_cast<kestu_log_t *>(log), "%.998s\n", line);
    return 0;
}
