#include "kestu.h"
int main() { return kestu_initialize(); }
