#include <kestu.h>

#include <stdio.h>

int main(void) {
    if (kestu_initialize() != KESTU_INIT_OK)
        return 1;
    int *numbers = NULL;
    kestu_error_t *err = kestu_mem_vector_alloc(&numbers, sizeof *numbers, 1, 3);
    if (!err)
        kestu_mem_vector_free(numbers, sizeof *numbers, 1);
    kestu_error_clear(kestu_error_handle(err, kestu_error_stdhandler, stderr));
    printf("C: libkestu %s\n", kestu_version_string());
    kestu_terminate();
    return err != NULL;
}
