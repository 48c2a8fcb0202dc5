// Log files that only grow.
#include "kestu_log.h"

#include "base/kept_errno.hpp"
#include "mem/memory.hpp"

#include <apr_strings.h>
#include <apr_time.h>

#include <cstdarg>

using namespace kestu;

namespace {

// Room for a text, terminator included; what is longer is cut.
constexpr size_t text_size = 1000;

// Room for the date and ": ".
constexpr size_t date_size = APR_CTIME_LEN + 2;

void report_write(apr_status_t status) {
    if (status != APR_SUCCESS)
        report(wrap(fail_apr(status), "Cannot write to log."));
}

// One write, which the file's append mode puts behind what others wrote.
void write_text(const kestu_log_t *log, const char *text) {
    report_write(log->file ? apr_file_puts(text, log->file) : APR_EBADF);
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
    if (length > 0)
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
    apr_vsnprintf(line + length, text_size, format, args);
    va_end(args);
    write_text(log, line);
}

// The cut keeps the newline, so that a long line does not swallow the next one.
int kestu_log_errhandler(const char *line, void *log) {
    kestu_log_printf(static_cast<kestu_log_t *>(log), "%.998s\n", line);
    return 0;
}
