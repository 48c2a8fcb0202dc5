/* Makes one of each that the debugger shows. */
#include <kestu.h>

#include <string.h>

void look(void);
void look(void) {}

#define DO(call)                                                                                   \
    if ((call) != NULL)                                                                            \
    return 1

int main(void) {
    if (kestu_initialize() != KESTU_INIT_OK)
        return 1;
    apr_pool_t *pool = kestu_pool;
    kestu_error_t *err = kestu_error_create(KESTU_ERROR_WARNING, KESTU_ERR_NO_MEMORY, NULL, NULL);
    err = kestu_error_quick_wrap(err, "Cannot read image.");

    kestu_dl_t *list = NULL;
    kestu_dl_t *none = NULL;
    kestu_dl_t *unset = (kestu_dl_t *)8;
    kestu_cdl_t *ring = NULL;
    kestu_cdl_t *free_node = NULL;
    kestu_stk_t *stack = NULL;
    kestu_tree_t *tree = NULL;
    kestu_tree_t *node = NULL;
    for (uint32_t i = 1; i <= 3; ++i) {
        DO(kestu_dl_append(&list, i, (void *)(uintptr_t)(i * 16), NULL, pool));
        DO(kestu_cdl_append(&ring, i, (void *)(uintptr_t)(i * 16), &free_node, pool));
        DO(kestu_tree_append(&tree, i, (void *)(uintptr_t)(i * 16), &node, pool));
    }
    kestu_cdl_set_free(free_node);
    DO(kestu_tree_append_child(node, 4, (void *)64, &node, pool));
    DO(kestu_stk_create(&stack, pool));
    DO(kestu_stk_push(stack, 7, (void *)112, pool));

    kestu_trie_t *trie = NULL;
    DO(kestu_trie_create(&trie, pool));
    DO(kestu_trie_insert(trie, "Ann", 3, (void *)1, pool));
    DO(kestu_trie_insert(trie, "Anna\0", 5, (void *)2, pool));
    DO(kestu_trie_insert(trie, "", 0, (void *)3, pool));

    kestu_map_t *map = NULL;
    DO(kestu_map_create(&map, pool));
    DO(kestu_map_insert(map, "Bert", 4, (void *)2));
    DO(kestu_map_insert(map, "Anna", 4, (void *)1));
    DO(kestu_map_insert(map, "", 0, NULL));
    kestu_map_t *wide[2] = {NULL, NULL};
    for (int i = 0; i < 2; ++i) {
        DO(kestu_map_create(&wide[i], pool));
        for (unsigned char c = i ? 250 : 60; c > 0; --c)
            DO(kestu_map_insert(wide[i], &c, 1, (void *)(uintptr_t)c));
    }

    kestu_strlist_t *strings = NULL;
    DO(kestu_strlist_create(&strings, pool));
    DO(kestu_strlist_addlast(strings, "one", pool));
    DO(kestu_strlist_addlast(strings, "two", pool));

    kestu_bitarr_t *bits = NULL;
    DO(kestu_bitarr_create(&bits, 100));
    bits->words[0] = 0xE2;
    bits->words[1] = 1;

    kestu_obj_t *window = NULL;
    kestu_obj_t *button = NULL;
    DO(kestu_obj_create(&window, "window", pool));
    DO(kestu_obj_create(&button, "ok", kestu_obj_get_pool(window)));
    DO(kestu_obj_addc(window, button));
    DO(kestu_obj_add_signal(window, 100));

    kestu_img_t image;
    memset(&image, 0, sizeof image);
    image.width = 512;
    image.height = 600;
    image.xres = 300;
    (void)none, (void)unset;
    look();
    return 0;
}
