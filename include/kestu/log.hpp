// Log files.
//
//     kestu::Log log("daemon.log");
//     log.print_dated("%d images read\n", 3);
//     log.write(kestu::Error(KESTU_ERR_OPEN, "no such file"));
#pragma once

#include "../kestu_lib.h"
#include "../kestu_log.h"
#include "format.hpp"

namespace kestu {
inline namespace KESTU_CPP {

// A file to which lines are appended; writing never fails (kestu_log.h).
class Log {
  public:
    // Opens the file for appending, and makes it when there is none.
    explicit Log(CString path, apr_pool_t *pool = kestu_pool) {
        if (kestu_error_t *err = open(path, pool))
            detail::raise(err);
    }

    // As the constructor, but returns the error.
    static Expected<Log> make(std::nothrow_t, CString path, apr_pool_t *pool = kestu_pool) {
        Log log;
        if (kestu_error_t *err = log.open(path, pool))
            return detail::failed(err);
        return log;
    }

    Log(Log &&other) noexcept : log_(std::exchange(other.log_, nullptr)) {}
    Log &operator=(Log &&other) noexcept {
        std::swap(log_, other.log_);
        return *this;
    }
    ~Log() {
        if (!log_)
            return;
        kestu_log_terminate(log_);
        apr_pool_destroy(log_->pool);
    }

    // Appends a text. It is formatted as by kestu::format, with which all conversions are checked,
    // and cut to 999 characters, or before a value that has no text.
    template <typename... Arguments>
    void print(Format<std::type_identity_t<Arguments>...> format, const Arguments &...arguments) {
        char text[1000];
        detail::print_into(text, sizeof text, format.text(), arguments...);
        kestu_log_printf(log_, "%s", text);
    }

    // As `print`, behind the date.
    template <typename... Arguments>
    void print_dated(Format<std::type_identity_t<Arguments>...> format,
                     const Arguments &...arguments) {
        char text[1000];
        detail::print_into(text, sizeof text, format.text(), arguments...);
        kestu_log_dtprintf(log_, "%s", text);
    }

    // Appends an error, a line an element.
    void write(const Error &error) {
        error.each_line([this](const char *line) { kestu_log_errhandler(line, log_); });
    }

    // Appends an error as one line of JSON.
    void write_json(const Error &error) {
        kestu_log_json(log_, const_cast<kestu_error_t *>(error.get()));
    }

    // The record, which stays the log's.
    kestu_log_t *get() const noexcept { return log_; }

  private:
    Log() noexcept = default;

    // A log whose file cannot be opened is no log.
    kestu_error_t *open(const char *path, apr_pool_t *pool) {
        kestu_error_t *err = kestu_log_create(&log_, path, pool);
        if (err && log_)
            apr_pool_destroy(std::exchange(log_, nullptr)->pool);
        return err;
    }

    kestu_log_t *log_ = nullptr;
};

} // namespace KESTU_CPP
} // namespace kestu
