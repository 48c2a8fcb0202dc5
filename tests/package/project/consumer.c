#include <kestu.h>

#if defined(UTHASH_H) || defined(UTARRAY_H) || defined(HASH_ADD) || defined(utarray_new)
#error "the headers bring the macros of another library along"
#endif
#include <stdio.h>

static void slot(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination, void *user,
                 void *argument) {
    (void)source, (void)code, (void)destination, (void)user, (void)argument;
}

/* Whether the library lays its arrays and tables out as the headers say. */
static int agrees(void) {
    kestu_obj_t *a = NULL;
    kestu_obj_t *b = NULL;
    if (kestu_obj_create(&a, "a", kestu_pool) || kestu_obj_create(&b, "b", kestu_pool) ||
        kestu_obj_connect(a, KESTU_OBJ_SIGNAL_DESTROY, b, slot, NULL))
        return 0;
    const kestu_osig_t *signal = (const kestu_osig_t *)(void *)a->signals->d;
    const kestu_odest_t *first = signal->destinations;
    const kestu_odest_t *entry = first->destination == b ? first : first->hh.next;
    return osig_icd.sz == sizeof *signal && osig_icd.dtor == osig_dtor && a->signals->i == 1 &&
           a->signals->n >= 1 && a->signals->icd.sz == sizeof *signal && entry->destination == b &&
           entry->hh.key == &entry->destination && entry->hh.keylen == sizeof b &&
           ((const kestu_oslot_t *)(void *)entry->slots->d)->callback == slot;
}

int main(void) {
    if (kestu_initialize() != KESTU_INIT_OK)
        return 1;
    int *numbers = NULL;
    kestu_error_t *err = kestu_mem_vector_alloc(&numbers, sizeof *numbers, 1, 3);
    if (!err)
        kestu_mem_vector_free(numbers, sizeof *numbers, 1);
    kestu_error_clear(kestu_error_handle(err, kestu_error_stdhandler, stderr));
    const int good = !err && agrees();
    printf("C: libkestu %s\n", kestu_version_string());
    kestu_terminate();
    return !good;
}
