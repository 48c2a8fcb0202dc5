// Lists of strings.
#include "containers/strlist.hpp"

#include "mem/nodes.hpp"

#include <cstring>

using namespace kestu;

namespace {

kestu_dl_t *nodes_of(const kestu_strlist_t *list) {
    return list ? list->head : nullptr;
}

// A null string is a view without data, and stays null in a list.
std::string_view view_of(const void *text) {
    return text ? std::string_view(static_cast<const char *>(text)) : std::string_view();
}

kestu_error_t *copy_text(std::string_view text, apr_pool_t *pool, char **copy) {
    if (text.data())
        return pool_make_text(pool, copy, text);
    *copy = nullptr;
    return nullptr;
}

kestu_error_t *copy_all(kestu_strlist_t *dst, const kestu_dl_t *node, apr_pool_t *pool) {
    Appender appender(dst, pool);
    for (; node; node = node->next)
        if (kestu_error_t *err = appender.append(view_of(node->data)))
            return err;
    return nullptr;
}

} // namespace

namespace kestu {

kestu_error_t *Appender::append(std::string_view text) {
    char *copy = nullptr;
    if (!list_)
        return fail(KESTU_ERR_LIST_INSERTION);
    if (kestu_error_t *err = copy_text(text, pool_, &copy))
        return err;
    return kestu_dl_append(last_ ? &last_ : &list_->head, 0, copy, &last_, pool_);
}

} // namespace kestu

kestu_error_t *kestu_strlist_create(kestu_strlist_t **list, apr_pool_t *pool) {
    *list = pool_node<kestu_strlist_t>(pool);
    if (*list)
        (*list)->head = nullptr;
    return nullptr;
}

void kestu_strlist_destroy(kestu_strlist_t *list) {
    if (list)
        kestu_dl_destroy(&list->head);
}

void kestu_strlist_clear(kestu_strlist_t *list) {
    kestu_strlist_destroy(list);
}

// The head moves to the new first node, so that adding many strings does not walk over them.
kestu_error_t *kestu_strlist_addfirst(kestu_strlist_t *list, const char *str, apr_pool_t *pool) {
    char *copy = nullptr;
    if (!list)
        return fail(KESTU_ERR_LIST_INSERTION);
    if (kestu_error_t *err = copy_text(view_of(str), pool, &copy))
        return err;
    return kestu_dl_prepend(&list->head, 0, copy, &list->head, pool);
}

kestu_error_t *kestu_strlist_addlast(kestu_strlist_t *list, const char *str, apr_pool_t *pool) {
    return Appender(list, pool).append(view_of(str));
}

kestu_error_t *kestu_strlist_append(kestu_strlist_t *list, kestu_dl_t **last, const char *str,
                                    apr_pool_t *pool) {
    Appender appender(list, pool, *last);
    kestu_error_t *err = appender.append(view_of(str));
    *last = appender.last();
    return err;
}

const char *kestu_strlist_getn(kestu_strlist_t *list, int n) {
    if (n < 0)
        return nullptr;
    return static_cast<const char *>(
        kestu_dl_get_data(kestu_dl_get_n(nodes_of(list), static_cast<size_t>(n))));
}

int kestu_strlist_is_exists(kestu_strlist_t *list, const char *str) {
    const auto is_equal = [](uint32_t, void *own, void *wanted) -> int {
        return own && wanted &&
               std::strcmp(static_cast<const char *>(own), static_cast<const char *>(wanted)) == 0;
    };
    return kestu_dl_walk_int_first(nodes_of(list), is_equal, const_cast<char *>(str));
}

int kestu_strlist_nelts(kestu_strlist_t *list) {
    return static_cast<int>(kestu_dl_count(nodes_of(list)));
}

// An empty source leaves the destination as it was: callers use that to give lists a default.
kestu_error_t *kestu_strlist_copy(kestu_strlist_t *dst, kestu_strlist_t *src, apr_pool_t *pool) {
    const kestu_dl_t *first = kestu_dl_get_first(nodes_of(src));
    if (!first)
        return nullptr;
    kestu_strlist_clear(dst);
    kestu_error_t *err = copy_all(dst, first, pool);
    if (err)
        kestu_strlist_clear(dst);
    return wrap(err, "Cannot copy list of strings.");
}
