// What is done with all strings of a list.
#include "kestu_strlist.h"
#include "mem/memory.hpp"

#include <algorithm>
#include <cstring>
#include <string_view>

using namespace kestu;

namespace {

const char *string_of(const void *data) {
    return static_cast<const char *>(data);
}

size_t length_of(const char *str) {
    return str ? std::strlen(str) : 0;
}

// Calls `use` with the strings in their order until it returns something other than 0.
template <typename Use>
int each_string(const kestu_strlist_t *list, Use use) {
    int result = 0;
    kestu_dl_t *node = list ? kestu_dl_get_first(list->head) : nullptr;
    for (; node && result == 0; node = node->next)
        result = use(string_of(node->data));
    return result;
}

int compare_strings(uint32_t, void *a, uint32_t, void *b, void *) {
    if (!a || !b)
        return (a != nullptr) - (b != nullptr);
    return std::strcmp(string_of(a), string_of(b));
}

} // namespace

int kestu_strlist_walk(kestu_strlist_t *list, kestu_strlist_func fn, void *baton) {
    return each_string(list, [=](const char *str) { return fn(str, baton); });
}

void kestu_strlist_sort(kestu_strlist_t *list) {
    if (list)
        kestu_dl_sort(&list->head, compare_strings, nullptr);
}

kestu_error_t *kestu_strlist_join(kestu_strlist_t *list, const char *separator, char **text,
                                  apr_pool_t *pool) {
    const std::string_view between(separator);
    size_t bytes = 1;
    each_string(list, [&](const char *str) {
        bytes += length_of(str) + between.size();
        return 0;
    });
    if (kestu_error_t *err = pool_make(pool, text, bytes))
        return wrap(err, "Cannot join strings.");
    char *end = *text, *behind_last = end; // but for the separator
    each_string(list, [&](const char *str) {
        behind_last = std::copy_n(str, length_of(str), end);
        end = std::copy(between.begin(), between.end(), behind_last);
        return 0;
    });
    *behind_last = '\0';
    return nullptr;
}

kestu_error_t *kestu_strlist_to_array(kestu_strlist_t *list, const char ***strings, size_t *count,
                                      apr_pool_t *pool) {
    const auto n = static_cast<size_t>(kestu_strlist_nelts(list));
    if (kestu_error_t *err = pool_make(pool, strings, n + 1))
        return wrap(err, "Cannot make array of strings.");
    const char **end = *strings;
    each_string(list, [&](const char *str) {
        *end++ = str;
        return 0;
    });
    *end = nullptr;
    if (count)
        *count = n;
    return nullptr;
}
