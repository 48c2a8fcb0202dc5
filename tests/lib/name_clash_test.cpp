// A program whose functions have the names of the library's: each of them ends the program, and the
// library is seen to call none.
#include "kestu.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include <dlfcn.h>

namespace {

void *library() {
    static void *const handle = dlopen(KESTU_LIBRARY, RTLD_NOW);
    return handle;
}

template <typename Function>
Function *of_library(Function *, const char *name) {
    return reinterpret_cast<Function *>(dlsym(library(), name));
}
#define LIBRARY(name) of_library(static_cast<decltype(&name)>(nullptr), #name)

} // namespace

// That no call goes through the table of exported symbols, a gate finds; this one runs some.
TEST(NameClash, TheLibraryCallsItsOwnFunctions) {
    ASSERT_NE(library(), nullptr) << dlerror();
    ASSERT_EQ(LIBRARY(kestu_initialize)(), KESTU_INIT_OK);
    apr_pool_t *pool = *static_cast<apr_pool_t **>(dlsym(library(), "kestu_pool"));
    kestu_error_t *err = LIBRARY(kestu_error_aprwrapf_i)(2, 1, "a/b.c", "f", "%s %d", "x", 1),
                  *copy;
    void *image = nullptr;
    size_t size = 0;
    LIBRARY(kestu_error_serialize)(err, &image, &size);
    LIBRARY(kestu_error_deserialize)(&copy, image, size);
    EXPECT_EQ(LIBRARY(kestu_error_crc16)(copy), LIBRARY(kestu_error_crc16)(err));
    std::free(image);
    LIBRARY(kestu_error_clear)(LIBRARY(kestu_error_compose_create)(err, copy));
    kestu_strlist_t *text = nullptr, *tokens = nullptr;
    LIBRARY(kestu_strlist_create)(&text, pool);
    LIBRARY(kestu_strlist_create)(&tokens, pool);
    EXPECT_EQ(LIBRARY(kestu_strlist_addlast)(text, "a \"b c\"", pool), nullptr);
    EXPECT_EQ(LIBRARY(kestu_strlist_tokenize)(text, tokens, " ", pool), nullptr);
    EXPECT_STREQ(LIBRARY(kestu_strlist_getn)(tokens, 1), "b c");
    EXPECT_EQ(LIBRARY(kestu_obj_engine_init)(pool), nullptr);
    kestu_obj_t *parent = nullptr, *child = nullptr;
    EXPECT_EQ(LIBRARY(kestu_obj_create)(&parent, "parent", pool), nullptr);
    EXPECT_EQ(LIBRARY(kestu_obj_create)(&child, "child", pool), nullptr);
    EXPECT_EQ(LIBRARY(kestu_obj_addc)(parent, child), nullptr);
    LIBRARY(kestu_obj_destroy)(parent);
    EXPECT_EQ(LIBRARY(kestu_obj_engine_terminate)(), nullptr);
    kestu_img_t img = {};
    LIBRARY(kestu_error_clear)(LIBRARY(kestu_img_read)("/dev/null", &img));
    static kestu_cpu_t cpu;
    LIBRARY(kestu_error_clear)(LIBRARY(kestu_cpu_detect)(&cpu, pool));
    EXPECT_STRNE(cpu.vendor_id, "");
    LIBRARY(kestu_terminate)();
}
