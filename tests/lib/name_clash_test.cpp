// A program whose functions have the names of the library's: each of them ends the program, and the
// library is seen to call none.
#include "kestu.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include <dlfcn.h>
#include <unistd.h>

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

int count_line(const char *, void *lines) {
    ++*static_cast<int *>(lines);
    return 0;
}

kestu_error_t *count_file(const char *, void *files, apr_pool_t *) {
    ++*static_cast<int *>(files);
    return nullptr;
}

void count_key(uint64_t, const uint8_t *, void *, void *keys) {
    ++*static_cast<int *>(keys);
}

void note_slot(kestu_obj_t *, uint32_t, kestu_obj_t *, void *user, void *) {
    ++*static_cast<int *>(user);
}

} // namespace

class NameClash : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_NE(library(), nullptr) << dlerror();
        ASSERT_EQ(LIBRARY(kestu_initialize)(), KESTU_INIT_OK);
        pool = *static_cast<apr_pool_t **>(dlsym(library(), "kestu_pool"));
    }
    void TearDown() override { LIBRARY(kestu_terminate)(); }

    apr_pool_t *pool = nullptr;
};

TEST_F(NameClash, ErrorsAreMadePrintedAndStored) {
    kestu_error_t *err = LIBRARY(kestu_error_aprwrapf_i)(2, 1, "a/b.c", "f", "%s %d", "x", 1);
    err = LIBRARY(kestu_error_compose_create)(err, LIBRARY(kestu_error_dup)(err));
    int lines = 0;
    LIBRARY(kestu_error_handle)(err, count_line, &lines);
    EXPECT_EQ(lines, 2);
    void *image = nullptr;
    size_t size = 0;
    kestu_error_t *again = nullptr;
    LIBRARY(kestu_error_serialize)(err, &image, &size);
    LIBRARY(kestu_error_deserialize)(&again, image, size);
    EXPECT_EQ(LIBRARY(kestu_error_crc16)(again), LIBRARY(kestu_error_crc16)(err));
    std::free(image);
    LIBRARY(kestu_error_clear)(err);
    LIBRARY(kestu_error_clear)(again);
}

TEST_F(NameClash, TextsAreReadAndWritten) {
    char text[64];
    size_t size = sizeof text;
    EXPECT_EQ(LIBRARY(kestu_str_escape_parse)(text, &size, "\\x41\\t\\u0100", 12, 0, 0), nullptr);
    EXPECT_STREQ(text, "A\t\u0100");
    EXPECT_STREQ(LIBRARY(kestu_str_psprintf)(pool, "%5.2f|%s", 1.5, "b"), " 1.50|b");
    kestu_strlist_t *text_list = nullptr, *tokens = nullptr;
    LIBRARY(kestu_strlist_create)(&text_list, pool);
    LIBRARY(kestu_strlist_create)(&tokens, pool);
    EXPECT_EQ(LIBRARY(kestu_strlist_addlast)(text_list, "a \"b c\"", pool), nullptr);
    EXPECT_EQ(LIBRARY(kestu_strlist_tokenize)(text_list, tokens, " ", pool), nullptr);
    EXPECT_STREQ(LIBRARY(kestu_strlist_getn)(tokens, 1), "b c");
}

TEST_F(NameClash, ContainersAndFilesAreWalked) {
    kestu_trie_t *trie = nullptr;
    EXPECT_EQ(LIBRARY(kestu_triem_create)(&trie), nullptr);
    for (const char *key : {"a", "ab", "b"})
        EXPECT_EQ(LIBRARY(kestu_triem_insert)(trie, key, std::string(key).size(), trie), nullptr);
    int keys = 0;
    LIBRARY(kestu_trie_walk)(trie, count_key, &keys);
    EXPECT_EQ(keys, 3);
    LIBRARY(kestu_triem_destroy)(&trie);
    int files = 0;
    kestu_dir_traverse_t options = {};
    options.callback = count_file;
    options.user_data = &files;
    EXPECT_EQ(LIBRARY(kestu_dir_traverse)("/proc/self/fdinfo", "*", nullptr, &options, pool),
              nullptr);
    EXPECT_GT(files, 0);
}

TEST_F(NameClash, ObjectsAndSignalsWork) {
    EXPECT_EQ(LIBRARY(kestu_obj_engine_init)(pool), nullptr);
    kestu_obj_t *parent = nullptr, *child = nullptr;
    uint32_t code = 0;
    int emitted = 0;
    EXPECT_EQ(LIBRARY(kestu_obj_create)(&parent, "parent", pool), nullptr);
    EXPECT_EQ(LIBRARY(kestu_obj_create)(&child, "child", pool), nullptr);
    EXPECT_EQ(LIBRARY(kestu_obj_addc)(parent, child), nullptr);
    EXPECT_EQ(LIBRARY(kestu_objsig_register)(&code, "signal"), nullptr);
    EXPECT_EQ(LIBRARY(kestu_obj_add_signal)(parent, code), nullptr);
    EXPECT_EQ(LIBRARY(kestu_obj_connect)(parent, code, child, note_slot, &emitted), nullptr);
    EXPECT_EQ(LIBRARY(kestu_obj_emit_signal)(parent, code, nullptr), nullptr);
    EXPECT_EQ(emitted, 1);
    LIBRARY(kestu_obj_destroy)(parent);
    EXPECT_EQ(LIBRARY(kestu_obj_engine_terminate)(), nullptr);
}

TEST_F(NameClash, ImagesAndProcessorsAreRead) {
    std::string path = testing::TempDir() + "kestu-clash-XXXXXX";
    close(mkstemp(path.data()));
    double row[2] = {1, 2};
    double *rows[] = {row};
    EXPECT_EQ(LIBRARY(kestu_img_darr_to_tiff)(path.c_str(), rows, 1, 2), nullptr);
    kestu_img_t img = {};
    EXPECT_EQ(LIBRARY(kestu_img_read)(path.c_str(), &img), nullptr);
    EXPECT_EQ(img.width, 2);
    LIBRARY(kestu_img_free)(&img);
    unlink(path.c_str());
    static kestu_cpu_t cpu;
    LIBRARY(kestu_error_clear)(LIBRARY(kestu_cpu_detect)(&cpu, pool));
    EXPECT_STRNE(cpu.vendor_id, "");
}
