// Making errors. Everything that makes one ends in `build`, which fills a record once.
#include "error/error.hpp"

#include "base/kept_errno.hpp"
#include "base/path_view.hpp"
#include "base/pool_text.hpp"
#include "error/elements.hpp"
#include "error/state.hpp"

#include <algorithm>
#include <cstdarg>

namespace kestu {
namespace {

// Longest base name that an error keeps of its source file.
constexpr size_t max_file_name = 4095;

// Room for the text that APR has for a status, terminator included.
constexpr size_t apr_text_size = 255;

struct Location {
    int line = 0;
    const char *file = nullptr;
    const char *function = nullptr;
};

// What the message is made of; with neither text nor format there is none.
struct Message {
    const char *text = nullptr;
    const char *format = nullptr;
    va_list *args = nullptr;
    std::string_view suffix = "";
};

bool copy_into(apr_pool_t *pool, std::string_view text, const char *&field) {
    field = pool_copy(pool, text);
    return field != nullptr;
}

bool set_message(kestu_error_t *err, const Message &message) {
    if (message.format) {
        Draft draft(message.format, *message.args);
        err->message = pool_draft(err->pool, draft, message.suffix);
        return err->message;
    }
    return !message.text || copy_into(err->pool, message.text, err->message);
}

bool set_location(kestu_error_t *err, const Location &location) {
    err->line = location.line;
    if (location.file) {
        std::string_view name = last_component(location.file);
        name = {name.data(), std::min(name.size(), max_file_name)};
        if (!copy_into(err->pool, name, err->file))
            return false;
    }
    return !location.function || copy_into(err->pool, location.function, err->function);
}

kestu_error_t *build(int type, int code, const Location &location, kestu_error_t *child,
                     const Message &message) {
    const KeptErrno kept;
    const bool shares_pool = child && !is_shared(*child);
    apr_pool_t *pool = shares_pool ? child->pool : nullptr;
    apr_status_t status = pool ? APR_SUCCESS : new_error_pool(&pool);
    if (status == APR_SUCCESS) {
        auto *err = static_cast<kestu_error_t *>(apr_palloc(pool, sizeof(kestu_error_t)));
        if (err) {
            *err = {.type = type,
                    .code = code,
                    .message = nullptr,
                    .file = nullptr,
                    .line = 0,
                    .function = nullptr,
                    .data = nullptr,
                    .pool = pool,
                    .child = child};
            if (set_location(err, location) && set_message(err, message))
                return err;
        }
        if (!shares_pool)
            apr_pool_destroy(pool);
        status = APR_ENOMEM;
    }
    return give_up_without_memory(status, "Cannot create error.");
}

} // namespace

void give_up(apr_status_t status, const char *failed_action) {
    kestu_error_t *cause = wrap(fail_apr(status), failed_action);
    kestu_error_malfunction(build(KESTU_ERROR_MALFUNCTION, 0, {}, cause, {.text = final_message}));
}

apr_status_t new_error_pool(apr_pool_t **pool) {
    return apr_pool_create_ex(pool, error_state.pool, nullptr, nullptr);
}

kestu_error_t *fail(int code) {
    return build(KESTU_ERROR_ERROR, code, {}, nullptr, {});
}

kestu_error_t *fail(int code, const char *format, ...) {
    va_list args;
    va_start(args, format);
    kestu_error_t *err =
        build(KESTU_ERROR_ERROR, code, {}, nullptr, {.format = format, .args = &args});
    va_end(args);
    return err;
}

kestu_error_t *fail_apr(apr_status_t status) {
    return kestu_error_aprwrap_i(status, 0, nullptr, nullptr);
}

kestu_error_t *wrap(kestu_error_t *cause, const char *message) {
    return cause ? kestu_error_quick_wrap_i(0, nullptr, nullptr, cause, message) : nullptr;
}

kestu_error_t *wrap_plain(kestu_error_t *cause, const char *format, ...) {
    if (!cause)
        return nullptr;
    va_list args;
    va_start(args, format);
    kestu_error_t *err = build(KESTU_ERROR_ERROR, 0, {}, cause, {.format = format, .args = &args});
    va_end(args);
    return err;
}

} // namespace kestu

using namespace kestu;

kestu_error_t *kestu_error_create_i(int type, int code, int line, const char *file,
                                    const char *function, kestu_error_t *child,
                                    const char *message) {
    return build(type, code, {line, file, function}, child, {.text = message});
}

kestu_error_t *kestu_error_createf_i(int type, int code, int line, const char *file,
                                     const char *function, kestu_error_t *child, const char *format,
                                     ...) {
    va_list args;
    va_start(args, format);
    kestu_error_t *err =
        build(type, code, {line, file, function}, child, {.format = format, .args = &args});
    va_end(args);
    return err;
}

kestu_error_t *kestu_error_aprwrap_i(apr_status_t status, int line, const char *file,
                                     const char *function) {
    char text[apr_text_size];
    apr_strerror(status, text, sizeof text);
    return build(KESTU_ERROR_ERROR, 0, {line, file, function}, nullptr, {.text = text});
}

kestu_error_t *kestu_error_aprwrapf_i(apr_status_t status, int line, const char *file,
                                      const char *function, const char *format, ...) {
    char suffix[2 + apr_text_size] = ": ";
    apr_strerror(status, suffix + 2, apr_text_size);
    va_list args;
    va_start(args, format);
    kestu_error_t *err = build(KESTU_ERROR_ERROR, 0, {line, file, function}, nullptr,
                               {.format = format, .args = &args, .suffix = suffix});
    va_end(args);
    return err;
}

kestu_error_t *kestu_error_quick_wrap_i(int line, const char *file, const char *function,
                                        kestu_error_t *child, const char *message) {
    return build(child->type, child->code, {line, file, function}, child, {.text = message});
}
