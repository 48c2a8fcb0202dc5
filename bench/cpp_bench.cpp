// The C++ layer beside the C functions that it stands on, as one would call them by hand.
#include "kestu.hpp"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <random>

namespace {

using benchmark::DoNotOptimize;

// Registers a case: `cpp` through the layer, `c` by hand. Each is made once and called for each
// iteration.
template <typename Cpp, typename C>
void compare(const std::string &name, Cpp cpp, C c) {
    const auto add = [&](const std::string &who, auto run) {
        benchmark::RegisterBenchmark((name + who).c_str(), [run](benchmark::State &state) {
            for (auto _ : state)
                run();
        });
    };
    add("/ours", cpp);
    add("/C", c);
}

std::vector<std::string> &keys() {
    static std::vector<std::string> made = [] {
        std::mt19937 random(1);
        std::vector<std::string> texts(10000);
        for (size_t i = 0; i < texts.size(); ++i)
            texts[i] = std::to_string(i) + "/" + std::string(random() % 12, 'x');
        return texts;
    }();
    return made;
}
int one = 1;

void errors() {
    compare(
        "C++ error, returned and cleared",
        [] { DoNotOptimize(kestu::to_number<int64_t>(std::nothrow, "x").has_value()); },
        [] {
            int64_t value = 0;
            kestu_error_t *err = kestu_str_to_int64("x", &value);
            DoNotOptimize(err == nullptr);
            kestu_error_clear(err);
        });
}

void memory() {
    static kestu::Pool pool;
    compare(
        "C++ pool, 100 blocks and a clear",
        [] {
            for (int i = 0; i < 100; ++i)
                DoNotOptimize(pool.allocate(40));
            pool.clear();
        },
        [] {
            for (int i = 0; i < 100; ++i)
                DoNotOptimize(apr_palloc(pool, 40));
            apr_pool_clear(pool);
        });
    static kestu::Matrix<double> matrix(1, 100, 1, 100);
    compare(
        "C++ matrix, sum of 100 x 100",
        [] {
            double sum = 0;
            for (int row = 1; row <= 100; ++row)
                for (double value : matrix.row(row))
                    sum += value;
            DoNotOptimize(sum);
        },
        [] {
            double sum = 0;
            double **rows = matrix.get();
            for (int row = 1; row <= 100; ++row)
                for (int column = 1; column <= 100; ++column)
                    sum += rows[row][column];
            DoNotOptimize(sum);
        });
    static kestu::Array<int, 3> array({20, 20, 20});
    compare(
        "C++ array, sum of 20 x 20 x 20",
        [] {
            int sum = 0;
            for (uint32_t i = 0; i < array.dim(0); ++i)
                for (uint32_t j = 0; j < array.dim(1); ++j)
                    for (int value : array.row(i, j))
                        sum += value;
            DoNotOptimize(sum);
        },
        [] {
            int sum = 0;
            const kestu_mem_array_t *a = array.get();
            auto *blocks = static_cast<int ***>(a->data);
            for (uint32_t i = 0; i < a->dims[0]; ++i)
                for (uint32_t j = 0; j < a->dims[1]; ++j)
                    for (uint32_t k = 0; k < a->dims[2]; ++k)
                        sum += blocks[i][j][k];
            DoNotOptimize(sum);
        });
}

void lists() {
    compare(
        "C++ list, 1000 appended and deleted",
        [] {
            kestu::List<int> list;
            for (int i = 0; i < 1000; ++i)
                list.push_back(one);
        },
        [] {
            kestu_dl_t *first = nullptr, *last = nullptr;
            for (int i = 0; i < 1000; ++i) {
                if (kestu_error_t *err = kestu_dlm_append(&last, 0, &one, &last))
                    return kestu_error_clear(err);
                if (!first)
                    first = last;
            }
            kestu_dlm_destroy(&first);
        });
    static std::vector<int> values(1000);
    static kestu::List<int> list;
    std::mt19937 random(1);
    for (int &value : values) {
        value = static_cast<int>(random() % 1000);
        list.push_back(value);
    }
    compare(
        "C++ list, walk of 1000",
        [] {
            int sum = 0;
            for (int value : list)
                sum += value;
            DoNotOptimize(sum);
        },
        [] {
            int sum = 0;
            kestu_dl_walk(
                list.get(),
                [](uint32_t, void *data, void *baton) {
                    *static_cast<int *>(baton) += *static_cast<int *>(data);
                },
                &sum);
            DoNotOptimize(sum);
        });
    static const auto shuffle = [] {
        for (int &value : values)
            value = static_cast<int>((static_cast<unsigned>(value) * 7919U + 13U) % 1000U);
    };
    static kestu_dl_t *by_hand = nullptr;
    for (int &value : values)
        kestu_error_clear(kestu_dl_append(&by_hand, 0, &value, &by_hand, kestu_pool));
    compare(
        "C++ list, sorting of 1000", [] { shuffle(), list.sort(); },
        [] {
            shuffle();
            kestu_dl_sort(
                &by_hand,
                [](uint32_t, void *a, uint32_t, void *b, void *) {
                    return static_cast<int>(*static_cast<int *>(b) < *static_cast<int *>(a));
                },
                nullptr);
        });
    static kestu::Pool pool;
    static kestu::Stack<int> stack(pool);
    compare(
        "C++ stack, 100 pushed and popped",
        [] {
            for (int i = 0; i < 100; ++i)
                stack.push(one);
            while (int *top = stack.pop())
                DoNotOptimize(top);
            pool.clear();
        },
        [] {
            for (int i = 0; i < 100; ++i)
                kestu_error_clear(kestu_stk_push(stack.get(), 0, &one, pool));
            while (void *top = kestu_stk_pop(stack.get()))
                DoNotOptimize(top);
            apr_pool_clear(pool);
        });
    static kestu::Pool ring_pool;
    static kestu::Ring<int> ring(ring_pool);
    for (int i = 0; i < 100; ++i)
        ring.add(one);
    compare(
        "C++ ring, one out of 100 again and a walk",
        [] {
            ring.erase(ring.begin());
            ring.add(one);
            int sum = 0;
            for (int value : ring)
                sum += value;
            DoNotOptimize(sum);
        },
        [] {
            kestu_cdl_set_free(kestu_cdl_get_n(ring.get(), 0));
            kestu_cdl_set_data_tag(kestu_cdl_get_ready(ring.get()), &one, 0);
            int sum = 0;
            kestu_cdl_flwalk(
                ring.get(),
                [](uint32_t, void *data, void *baton) {
                    *static_cast<int *>(baton) += *static_cast<int *>(data);
                },
                &sum);
            DoNotOptimize(sum);
        });
}

void trees() {
    static kestu::Tree<int> tree;
    std::mt19937 random(1);
    std::vector<kestu::Tree<int>::iterator> nodes = {tree.append(one)};
    while (nodes.size() < 10000)
        nodes.push_back(tree.append(nodes[random() % nodes.size()], one));
    compare(
        "C++ tree, walk of 10000",
        [] {
            int sum = 0;
            for (int value : tree)
                sum += value;
            DoNotOptimize(sum);
        },
        [] {
            int sum = 0;
            kestu_tree_walk(
                tree.get(),
                [](uint32_t, void *data, void *baton) {
                    *static_cast<int *>(baton) += *static_cast<int *>(data);
                },
                nullptr, &sum);
            DoNotOptimize(sum);
        });
    static kestu::Trie<int> trie;
    static kestu::Map<int> map;
    for (const std::string &key : keys()) {
        trie.insert(key, one);
        map.insert(key, one);
    }
    compare(
        "C++ trie, 10000 found",
        [] {
            for (const std::string &key : keys())
                DoNotOptimize(trie.find(key));
        },
        [] {
            for (const std::string &key : keys())
                DoNotOptimize(kestu_trie_search(trie.get(), key.data(), key.size()));
        });
    const auto walk_c = [] {
        size_t bytes = 0;
        kestu_trie_walk(
            trie.get(),
            [](uint64_t length, const uint8_t *, void *, void *sum) {
                *static_cast<size_t *>(sum) += length;
            },
            &bytes);
        DoNotOptimize(bytes);
    };
    compare(
        "C++ trie, each of 10000",
        [] {
            size_t bytes = 0;
            trie.each([&](std::string_view key, int &) noexcept { bytes += key.size(); });
            DoNotOptimize(bytes);
        },
        walk_c);
    compare(
        "C++ trie, range of 10000",
        [] {
            size_t bytes = 0;
            for (auto [key, value] : trie)
                bytes += key.size();
            DoNotOptimize(bytes);
        },
        walk_c);
    compare(
        "C++ map, 10000 found",
        [] {
            for (const std::string &key : keys())
                DoNotOptimize(map.find(key));
        },
        [] {
            for (const std::string &key : keys()) {
                void *value = nullptr;
                kestu_map_find(map.get(), key.data(), key.size(), &value);
                DoNotOptimize(value);
            }
        });
    compare(
        "C++ map, range of 10000",
        [] {
            size_t bytes = 0;
            for (auto [key, value] : map)
                bytes += key.size();
            DoNotOptimize(bytes);
        },
        [] {
            size_t bytes = 0;
            kestu_map_cursor_t at;
            for (int more = kestu_map_first(map.get(), &at); more; more = kestu_map_next(&at))
                bytes += at.length;
            DoNotOptimize(bytes);
        });
    compare(
        "C++ map, each of 10000",
        [] {
            size_t bytes = 0;
            map.each([&](std::string_view key, int &) noexcept { bytes += key.size(); });
            DoNotOptimize(bytes);
        },
        [] {
            size_t bytes = 0;
            kestu_map_walk(
                map.get(),
                [](const void *, size_t length, void *, void *sum) {
                    *static_cast<size_t *>(sum) += length;
                    return 0;
                },
                &bytes);
            DoNotOptimize(bytes);
        });
    static kestu::BitArray bits(10000);
    for (size_t bit = 0; bit < bits.size(); bit += 7)
        bits.set(bit);
    compare(
        "C++ bit array, ones of 10000",
        [] {
            size_t sum = 0;
            for (size_t bit : bits.ones())
                sum += bit;
            DoNotOptimize(sum);
        },
        [] {
            size_t sum = 0;
            const kestu_bitarr_t *ba = bits.get();
            for (size_t bit = kestu_bitarr_next_set(ba, 0); bit < ba->nbits;
                 bit = kestu_bitarr_next_set(ba, bit + 1))
                sum += bit;
            DoNotOptimize(sum);
        });
}

void signals() {
    static int sum = 0;
    static const kestu::Signal<void(int)> cpp(kestu::UniqueObject("cpp").release(), "C++ bench");
    static const kestu::Signal<void(int)> c(kestu::UniqueObject("c").release(), "C bench");
    for (int i = 0; i < 10; ++i) {
        cpp.connect([](int x) noexcept { sum += x; });
        kestu_error_clear(kestu_obj_link(
            c.object().get(), c.code(), c.object().get(),
            [](kestu_obj_t *, uint32_t, kestu_obj_t *, void *user, void *argument) {
                *static_cast<int *>(user) += *static_cast<int *>(argument);
                return static_cast<kestu_error_t *>(nullptr);
            },
            &sum, 0, nullptr));
    }
    compare(
        "C++ signal, emitted to 10", [] { cpp(1); },
        [] {
            int x = 1;
            kestu_error_clear(kestu_obj_emit_until_error(c.object().get(), c.code(), &x));
        });
}

void texts() {
    compare(
        "C++ format into a buffer",
        [] {
            char out[80];
            DoNotOptimize(kestu::format_to(out, "%d %s %.2f", 12345, "some text", 7.25));
            DoNotOptimize(out);
        },
        [] {
            char out[80];
            DoNotOptimize(rpl_snprintf(out, sizeof out, "%d %s %.2f", 12345, "some text", 7.25));
            DoNotOptimize(out);
        });
    compare(
        "C++ format, a new text",
        [] { DoNotOptimize(kestu::format("%d %s %.2f", 12345, "some text", 7.25)); },
        [] {
            char *text = nullptr;
            DoNotOptimize(rpl_asprintf(&text, "%d %s %.2f", 12345, "some text", 7.25));
            std::free(text);
        });
    compare(
        "C++ text to int64", [] { DoNotOptimize(kestu::to_number<int64_t>("1234567890")); },
        [] {
            int64_t value = 0;
            kestu_error_clear(kestu_str_to_int64("1234567890", &value));
            DoNotOptimize(value);
        });
    compare(
        "C++ unescape", [] { DoNotOptimize(kestu::unescape("some\\ttext\\n")); },
        [] {
            const char *text = "some\\ttext\\n";
            size_t size = std::strlen(text) + 1;
            auto *out = static_cast<char *>(std::malloc(size));
            kestu_error_clear(kestu_str_escape_parse(out, &size, text, size - 1, 0, 0));
            DoNotOptimize(out);
            std::free(out);
        });
    compare(
        "C++ to base 62", [] { DoNotOptimize(kestu::to_base(1234567, 62)); },
        [] {
            char out[66];
            DoNotOptimize(kestu_str_int64_to_base62(1234567, 62, out, sizeof out));
            DoNotOptimize(out);
        });
    static kestu::Pool pool;
    compare(
        "C++ parameters of a line",
        [] {
            kestu::Parameters line(pool);
            line.parse("scale 2.5 7 'a b'");
            DoNotOptimize(line.size());
            pool.clear();
        },
        [] {
            kestu_prsd_t line;
            kestu_prsd_clear_p(&line);
            kestu_error_clear(kestu_prsd_parse_p(&line, "scale 2.5 7 'a b'", " \t\n", pool));
            DoNotOptimize(line.n);
            apr_pool_clear(pool);
        });
    static kestu::Log log("/dev/null");
    compare(
        "C++ log, a line", [] { log.print("%d images of %s\n", 3, "today"); },
        [] { kestu_log_printf(log.get(), "%d images of %s\n", 3, "today"); });
}

void files_and_images() {
    compare(
        "C++ files of /usr/include",
        [] {
            size_t bytes = 0;
            kestu::each_file("/usr/include", {.flags = 0},
                             [&](std::string_view path) { bytes += path.size(); });
            DoNotOptimize(bytes);
        },
        [] {
            size_t bytes = 0;
            kestu_dir_traverse_t options{};
            options.flags = KESTU_DIR_STOP;
            options.user_data = &bytes;
            options.callback = [](const char *path, void *sum, apr_pool_t *) {
                *static_cast<size_t *>(sum) += std::strlen(path);
                return static_cast<kestu_error_t *>(nullptr);
            };
            apr_pool_t *pool = nullptr;
            if (apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr) != APR_SUCCESS)
                return;
            kestu_error_clear(kestu_dir_traverse("/usr/include", nullptr, nullptr, &options, pool));
            apr_pool_destroy(pool);
            DoNotOptimize(bytes);
        });
    static kestu::Image image(200, 200, 8);
    compare(
        "C++ image, histogram of 200 x 200", [] { DoNotOptimize(image.histogram()[0]); },
        [] {
            int levels = 0;
            uint64_t *counts = nullptr;
            kestu_error_clear(kestu_img_histogram(image.get(), &levels, &counts));
            DoNotOptimize(counts[0]);
            kestu_mem_free(counts);
        });
    compare(
        "C++ image, circle of 80",
        [] {
            kestu::draw_circle(100, 100, 80, [](int x, int y, double) noexcept {
                image.row<uint8_t>(y)[static_cast<size_t>(x)] = 1;
            });
        },
        [] {
            const auto set = [](int x, int y, void *rows, double) {
                static_cast<uint8_t **>(rows)[y][x] = 1;
                return static_cast<kestu_error_t *>(nullptr);
            };
            kestu_error_clear(kestu_img_circle(100, 100, 80, set, image.get()->data8));
        });
    static const std::vector<unsigned char> bytes(64);
    compare(
        "C++ crc32 of 64 B", [] { DoNotOptimize(kestu::crc32(bytes)); },
        [] { DoNotOptimize(kestu_util_crc32(0, bytes.data(), bytes.size())); });
    compare(
        "C++ sha1 of 64 B", [] { DoNotOptimize(kestu::sha1(bytes)); },
        [] {
            unsigned char digest[20];
            kestu_sha1_t context;
            kestu_sha1_init(&context);
            kestu_sha1_update64(bytes.data(), bytes.size(), &context);
            kestu_sha1_final(digest, &context);
            DoNotOptimize(digest);
        });
    compare(
        "C++ wall clock", [] { DoNotOptimize(kestu::wall_clock()); },
        [] { DoNotOptimize(kestu_time_real()); });
}

} // namespace

int main(int argc, char **argv) {
    // What is static here stays until the process ends, and with it the library.
    kestu_initialize();
    kestu_error_clear(kestu_obj_engine_init(kestu_pool));
    errors();
    memory();
    lists();
    trees();
    signals();
    texts();
    files_and_images();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
