/* What one would write in C for cost.cpp. */
#include <kestu.h>

struct list {
    kestu_dl_t *first;
};
struct stack {
    apr_pool_t *pool;
    kestu_stk_t stack;
};

int *find(kestu_map_t *const *map, const char *key, size_t length);
int sum(const struct list *list);
uint32_t checksum(const unsigned char *bytes, size_t size);
size_t count_ones(kestu_bitarr_t *const *bits);
void push(struct stack *stack, int *value);
__attribute__((noreturn, cold)) void fail(kestu_error_t *err);

int *find(kestu_map_t *const *map, const char *key, size_t length) {
    void *value = NULL;
    kestu_map_find(*map, key, length, &value);
    return value;
}

int sum(const struct list *list) {
    int sum = 0;
    for (const kestu_dl_t *node = list->first; node; node = node->next)
        sum += *(const int *)node->data;
    return sum;
}

uint32_t checksum(const unsigned char *bytes, size_t size) {
    return kestu_util_crc32(0, bytes, size);
}

size_t count_ones(kestu_bitarr_t *const *bits) {
    size_t count = 0;
    const kestu_bitarr_t *ba = *bits;
    const size_t end = ba ? ba->nbits : 0;
    for (size_t bit = kestu_bitarr_next_set(ba, 0); bit != end;
         bit = kestu_bitarr_next_set(ba, bit + 1))
        ++count;
    return count;
}

void push(struct stack *stack, int *value) {
    kestu_error_t *err = kestu_stk_push(&stack->stack, 0, value, stack->pool);
    if (err)
        fail(err);
}
