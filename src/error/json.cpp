// Chains as JSON.
#include "kestu_error.h"

#include "base/format.hpp"
#include "base/kept_errno.hpp"
#include "base/utf8_valid.hpp"

#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

namespace kestu {
namespace {

// Counts what is written, and keeps it where there is room.
class Json {
  public:
    explicit Json(char *room) : at_(room) {}

    size_t size() const { return size_; }

    void raw(std::string_view text) {
        if (at_)
            at_ = static_cast<char *>(std::memcpy(at_, text.data(), text.size())) + text.size();
        size_ += text.size();
    }

    void formatted(const char *format, ...) KESTU_PRINTF(2, 3) {
        char text[64];
        va_list args;
        va_start(args, format);
        format_text(text, sizeof text, format, args);
        va_end(args);
        raw(text);
    }

    // What is not UTF-8 stands as the replacement character.
    void string(const char *text) {
        size_t left = std::strlen(text);
        raw("\"");
        while (left > 0) {
            const auto *bytes = reinterpret_cast<const unsigned char *>(text);
            const size_t character = utf8_size(bytes, left);
            if (character == 0)
                raw("\\ufffd");
            else if (character == 1)
                ascii(*text);
            else
                raw({text, character});
            const size_t taken = character > 0 ? character : 1;
            text += taken;
            left -= taken;
        }
        raw("\"");
    }

    void member(const char *name, const char *text) {
        if (!text)
            return;
        formatted(",\"%s\":", name);
        string(text);
    }

  private:
    void ascii(char c) {
        if (static_cast<unsigned char>(c) < 0x20)
            return formatted("\\u%04x", static_cast<unsigned>(c));
        if (c == '"' || c == '\\')
            raw("\\");
        raw({&c, 1});
    }

    char *at_;
    size_t size_ = 0;
};

const char *kind_of(const kestu_error_t &err) {
    constexpr const char *kinds[] = {"error", "warning", "malfunction", "assert", "plain"};
    const bool is_known = err.type >= 0 && static_cast<size_t>(err.type) < std::size(kinds);
    return is_known ? kinds[err.type] : "other";
}

void write_element(Json &json, const kestu_error_t &err) {
    json.formatted("{\"kind\":\"%s\",\"code\":%d", kind_of(err), err.code);
    json.member("text", kestu_error_text(err.code));
    json.member("message", err.message);
    json.member("file", err.file);
    if (err.file)
        json.formatted(",\"line\":%d", err.line);
    json.member("function", err.function);
    json.raw("}");
}

// Returns the size without a terminator, which is written as well.
size_t write_chain(char *room, const kestu_error_t *err) {
    Json json(room);
    json.raw("{\"errors\":[");
    for (const kestu_error_t *at = err; at; at = at->child) {
        if (at != err)
            json.raw(",");
        write_element(json, *at);
    }
    json.raw("]}");
    if (room)
        room[json.size()] = '\0';
    return json.size();
}

} // namespace
} // namespace kestu

using namespace kestu;

char *kestu_error_to_json(const kestu_error_t *err, apr_pool_t *pool) {
    const KeptErrno kept;
    auto *text = static_cast<char *>(apr_palloc(pool, write_chain(nullptr, err) + 1));
    if (text)
        write_chain(text, err);
    return text;
}

kestu_error_t *kestu_error_handle_json(kestu_error_t *err, kestu_error_line_func handler,
                                       void *baton) {
    const KeptErrno kept;
    auto *line = err ? static_cast<char *>(std::malloc(write_chain(nullptr, err) + 1)) : nullptr;
    if (!line) // the lines for people need no memory
        return kestu_error_handle(err, handler, baton);
    write_chain(line, err);
    handler(line, baton);
    std::free(line);
    return err;
}
