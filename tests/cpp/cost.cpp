// Five wrappers, whose optimised code scripts/check-cost holds to that of cost.c.
#include <kestu.hpp>

extern "C" {

int *find(const kestu::Map<int> &map, const char *key, size_t length);
int sum(const kestu::List<int> &list);
uint32_t checksum(const unsigned char *bytes, size_t size);
size_t count_ones(const kestu::BitArray &bits);
void push(kestu::Stack<int> &stack, int &value);

int *find(const kestu::Map<int> &map, const char *key, size_t length) {
    return map.find({key, length});
}

int sum(const kestu::List<int> &list) {
    int sum = 0;
    for (int value : list)
        sum += value;
    return sum;
}

uint32_t checksum(const unsigned char *bytes, size_t size) {
    return kestu::crc32(std::span(bytes, size));
}

size_t count_ones(const kestu::BitArray &bits) {
    size_t count = 0;
    for ([[maybe_unused]] size_t bit : bits.ones())
        ++count;
    return count;
}

void push(kestu::Stack<int> &stack, int &value) {
    stack.push(value);
}
}
