// The tokenizer.
#include "containers/strlist.hpp"

#include "error/error.hpp"
#include "kestu_mem.h"

#include <algorithm>
#include <array>
#include <cstring>

using namespace kestu;

namespace {

// The token so far, of any length.
class Token {
  public:
    Token() = default;
    ~Token() { kestu_mem_free(text_); }
    Token(const Token &) = delete;
    Token &operator=(const Token &) = delete;

    std::string_view view() const { return {text_ ? text_ : "", length_}; }
    void clear() { length_ = 0; }

    kestu_error_t *add(std::string_view more) {
        if (more.empty())
            return nullptr;
        if (kestu_error_t *err = reserve(length_ + more.size()))
            return err;
        std::memcpy(text_ + length_, more.data(), more.size());
        length_ += more.size();
        return nullptr;
    }

  private:
    kestu_error_t *reserve(size_t wanted) {
        if (wanted <= capacity_)
            return nullptr;
        const size_t larger = std::max(wanted, 2 * capacity_);
        char *moved = text_;
        if (kestu_error_t *err = kestu_mem_realloc(larger, &moved))
            return err;
        text_ = moved;
        capacity_ = larger;
        return nullptr;
    }

    char *text_ = nullptr;
    size_t length_ = 0;
    size_t capacity_ = 0;
};

// Splits strings that follow each other into tokens.
class Tokenizer {
  public:
    Tokenizer(const char *separators, kestu_strlist_t *tokens, apr_pool_t *pool)
        : found_(tokens, pool) {
        for (; *separators; ++separators)
            separates_[static_cast<unsigned char>(*separators)] = true;
    }

    [[nodiscard]] kestu_error_t *read(std::string_view text);
    [[nodiscard]] kestu_error_t *end_token();

  private:
    enum class State { between, in_token, quoted };

    // The length of what belongs to the present state at the beginning of `text`.
    size_t run_length(std::string_view text) const {
        if (state_ == State::quoted)
            return std::min(text.find('"'), text.size());
        const bool wanted = state_ == State::between;
        const auto *end = std::find_if(text.begin(), text.end(), [&](char c) {
            return separates_[static_cast<unsigned char>(c)] != wanted;
        });
        return static_cast<size_t>(end - text.begin());
    }

    std::array<bool, 256> separates_{};
    State state_ = State::between;
    Token token_;
    Appender found_;
};

kestu_error_t *Tokenizer::read(std::string_view text) {
    while (!text.empty()) {
        const size_t run = run_length(text);
        if (state_ != State::between)
            if (kestu_error_t *err = token_.add({text.data(), run}))
                return err;
        text.remove_prefix(run);
        if (text.empty())
            break;
        if (state_ == State::between) {
            state_ = text.front() == '"' ? State::quoted : State::in_token;
            text.remove_prefix(state_ == State::quoted ? 1 : 0);
        } else {
            if (kestu_error_t *err = end_token())
                return err;
            state_ = State::between;
            text.remove_prefix(1);
        }
    }
    return nullptr;
}

kestu_error_t *Tokenizer::end_token() {
    kestu_error_t *err = token_.view().empty() ? nullptr : found_.append(token_.view());
    token_.clear();
    return err;
}

kestu_error_t *tokenize(const kestu_dl_t *node, Tokenizer &tokenizer) {
    for (; node; node = node->next)
        if (const auto *text = static_cast<const char *>(node->data))
            if (kestu_error_t *err = tokenizer.read(text))
                return err;
    return tokenizer.end_token();
}

} // namespace

kestu_error_t *kestu_strlist_tokenize(kestu_strlist_t *src, kestu_strlist_t *dst,
                                      const char *separators, apr_pool_t *pool) {
    if (!separators || !*separators)
        return fail(KESTU_ERR_SEPARATOR_COUNT,
                    "Cannot tokenize string: incorrect number of tokens [%d].", 0);
    const kestu_dl_t *first = src ? kestu_dl_get_first(src->head) : nullptr;
    if (!first)
        return fail(KESTU_ERR_NO_TOKEN_DATA);
    kestu_strlist_clear(dst);
    Tokenizer tokenizer(separators, dst, pool);
    return wrap(tokenize(first, tokenizer), "Failed to tokenize strings.");
}
