// Making errors. Everything that makes one ends in `build`, which fills a record once.
#include "error/error.hpp"

#include "base/draft.hpp"
#include "base/kept_errno.hpp"
#include "base/path_view.hpp"
#include "base/short_copy.hpp"
#include "error/elements.hpp"
#include "error/state.hpp"

#include <cstdarg>
#include <optional>
#include <string_view>

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

// A text to be kept with an error, if there is one.
using Kept = std::optional<std::string_view>;

Kept kept_text(const char *text) {
    return text ? Kept(text) : std::nullopt;
}

Kept kept_name(const char *file) {
    return file ? Kept(last_component(file).substr(0, max_file_name)) : std::nullopt;
}

size_t size_of(const Kept &text) {
    return text ? text->size() + 1 : 0;
}

// Puts a text at `at`, from where it moves on.
const char *put(char *&at, const Kept &text) {
    if (!text)
        return nullptr;
    const char *const begin = at;
    copy_bytes(at, text->data(), text->size());
    at += text->size();
    *at++ = '\0';
    return begin;
}

// An element with its texts, all in one block. Null without memory.
kestu_error_t *make(apr_pool_t *pool, const Location &location, const Kept &message, Draft *draft,
                    std::string_view suffix) {
    const Kept file = kept_name(location.file);
    const Kept function = kept_text(location.function);
    const size_t drafted = draft ? draft->length() + suffix.size() + 1 : 0;
    const size_t size =
        sizeof(kestu_error_t) + size_of(file) + size_of(function) + size_of(message) + drafted;
    auto *err = static_cast<kestu_error_t *>(apr_palloc(pool, size));
    if (!err)
        return nullptr;
    auto *at = reinterpret_cast<char *>(err + 1);
    err->line = location.line;
    err->file = put(at, file);
    err->function = put(at, function);
    err->message = draft ? at : put(at, message);
    if (draft) {
        draft->write(at);
        put(at += draft->length(), suffix);
    }
    return err;
}

kestu_error_t *make(apr_pool_t *pool, const Location &location, const Message &message) {
    if (!message.format)
        return make(pool, location, kept_text(message.text), nullptr, {});
    Draft draft(message.format, *message.args);
    return make(pool, location, {}, &draft, message.suffix);
}

kestu_error_t *build(int type, int code, const Location &location, kestu_error_t *child,
                     const Message &message) {
    const KeptErrno kept;
    const bool shares_pool = child && !is_shared(*child);
    apr_pool_t *pool = shares_pool ? child->pool : nullptr;
    apr_status_t status = pool ? APR_SUCCESS : new_error_pool(&pool);
    if (status == APR_SUCCESS) {
        if (kestu_error_t *err = make(pool, location, message)) {
            err->type = type;
            err->code = code;
            err->data = nullptr;
            err->pool = pool;
            err->child = child;
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
