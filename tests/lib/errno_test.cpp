// errno belongs to the caller: no function changes it, whether it succeeds, fails or lacks memory.
#include "support/test.hpp"

using namespace kestu::test;

namespace {

constexpr int callers = 4321;

constexpr auto *drop = kestu_error_clear;

kestu_error_t *pass_over(const char *, void *, apr_pool_t *) {
    return nullptr;
}

// Whether the call is made with an allocation failing.
bool is_scarce = false;

// A stream that takes nothing.
FILE *const full = [] {
    FILE *stream = fopen("/dev/full", "w");
    setvbuf(stream, nullptr, _IONBF, 0);
    return stream;
}();

struct Call {
    const char *name;
    std::function<void(apr_pool_t *)> make;
};
void PrintTo(const Call &call, std::ostream *out) {
    *out << call.name;
}

const Call calls[] = {
    {"making errors",
     [](apr_pool_t *) {
         kestu_error_t *err = kestu_error_createf(0, 1, nullptr, "%f %s", 1e20, "cut");
         err = kestu_error_quick_wrap(err, "wrapped");
         drop(kestu_error_compose_create(err, kestu_error_aprwrap(APR_ENOENT)));
     }},
    {"printing errors",
     [](apr_pool_t *) {
         drop(kestu_error_handle(kestu_error_create(0, 1, nullptr, "m"), kestu_error_stdhandler,
                                 full));
     }},
    {"images of chains",
     [](apr_pool_t *) {
         if (is_scarce) // tpl ends the program when its own allocations fail
             return;
         kestu_error_t *err = kestu_error_create(0, 1, nullptr, "m");
         void *image = nullptr;
         size_t size = 0;
         kestu_error_serialize(err, &image, &size);
         drop(err);
         kestu_error_deserialize(&err, image, size);
         drop(err);
         free(image);
     }},
    {"logs",
     [](apr_pool_t *pool) {
         kestu_log_t *log = nullptr;
         drop(kestu_log_create(&log, "/no/such/folder/log", pool));
     }},
    {"conversions",
     [](apr_pool_t *) {
         double number = 0;
         int64_t integer = 0;
         drop(kestu_str_to_double("1e999", &number));
         drop(kestu_str_to_double("1.5", &number));
         drop(kestu_str_to_int64("99999999999999999999", &integer));
         drop(kestu_str_base62_to_int64("zzzzzzzzzzzzzzzz", nullptr, 62, &integer));
     }},
    {"memory",
     [](apr_pool_t *) {
         int *block = nullptr;
         double **matrix = nullptr;
         drop(kestu_mem_malloc(100, &block));
         int *larger = block; // null after the failure, with the block still there
         drop(kestu_mem_realloc(SIZE_MAX / 2, &larger));
         kestu_mem_free(block);
         if (is_scarce) // a matrix that is built in part stays with nobody
             return;
         drop(kestu_mem_matrix_alloc(&matrix, sizeof(double), 0, 9, 0, 9));
         kestu_mem_matrix_free(matrix, sizeof(double), 0, 9, 0, 9);
     }},
    {"containers",
     [](apr_pool_t *) {
         kestu_dl_t *list = nullptr;
         kestu_trie_t *trie = nullptr;
         kestu_bitarr_t *bits = nullptr;
         drop(kestu_dlm_append(&list, 1, nullptr, nullptr));
         kestu_dlm_destroy(&list);
         drop(kestu_triem_create(&trie));
         if (trie) {
             drop(kestu_triem_insert(trie, "key", 3, nullptr));
             kestu_triem_destroy(&trie);
         }
         drop(kestu_bitarr_create(&bits, 1000));
         if (bits)
             kestu_bitarr_free(bits);
     }},
    {"walking folders",
     [](apr_pool_t *pool) {
         kestu_dir_traverse_t options = {};
         options.callback = pass_over;
         drop(kestu_dir_traverse("/proc/self/fdinfo", nullptr, nullptr, &options, pool));
         drop(kestu_dir_traverse("/no/such/folder", nullptr, nullptr, &options, pool));
     }},
    {"parameters",
     [](apr_pool_t *pool) {
         kestu_prsd_t parsed = {};
         drop(kestu_prsd_parse_p(&parsed, "1 99999999999999999999 1e999 'x y'", " ", pool));
     }},
    {"images",
     [](apr_pool_t *) {
         kestu_img_t img = {};
         drop(kestu_img_read("/no/such/file.tif", &img));
         drop(kestu_img_read("/proc/self/status", &img));
         double row[1] = {1};
         double *rows[] = {row};
         drop(kestu_img_darr_to_tiff("/no/such/folder/out.tif", rows, 1, 1));
     }},
    {"objects",
     [](apr_pool_t *pool) {
         if (is_scarce) // so do the tables of uthash
             return;
         kestu_obj_t *obj = nullptr;
         drop(kestu_obj_create(&obj, "name", pool));
         if (obj)
             kestu_obj_destroy(obj);
     }},
    {"the machine",
     [](apr_pool_t *pool) {
         static kestu_cpu_t cpu;
         char name[256];
         cpu = {};
         drop(kestu_cpu_detect(&cpu, pool));
         drop(kestu_cpu_bind_context_to_logcpu(1000000));
         kestu_mach_os_name(name, sizeof name);
         kestu_mach_os_cpu_num();
         kestu_mach_physmem();
         kestu_time_real();
         kestu_time_cpu();
         kestu_time_sleep(1);
     }},
    {"the line editor",
     [](apr_pool_t *pool) {
         kestu_ri_t *editor = nullptr;
         char *line = nullptr;
         drop(kestu_ri_readline_init(&editor, "> ", 1, pool));
         if (editor) {
             drop(kestu_ri_readline_addhist("line", editor));
             drop(kestu_ri_readline(&line, editor));
             kestu_ri_readline_terminate(editor);
         }
     }},
};

class Errno : public testing::TestWithParam<Call> {};

} // namespace

TEST_P(Errno, StaysTheCallers) {
    const Pool pool;
    errno = callers;
    GetParam().make(pool);
    EXPECT_EQ(errno, callers) << GetParam().name;
    is_scarce = true;
    fail_each_allocation([&](size_t n) {
        errno = callers;
        GetParam().make(pool);
        EXPECT_EQ(errno, callers) << GetParam().name << ", allocation " << n;
    });
    is_scarce = false;
}

INSTANTIATE_TEST_SUITE_P(Library, Errno, testing::ValuesIn(calls), [](const auto &call) {
    std::string name = call.param.name;
    std::erase_if(name, [](char c) { return c == ' '; });
    return name;
});
