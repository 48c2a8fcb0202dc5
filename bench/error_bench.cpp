// Errors: create, wrap three deep, release; beside GError with three prefixes and an exception that
// is rethrown through three levels.
#include "kestu_error.h"
#include "kestu_lib.h"

#include <benchmark/benchmark.h>
#include <glib.h>

#include <exception>
#include <stdexcept>

namespace {

constexpr int code = 120030;

void ours(benchmark::State &state) {
    for (auto _ : state) {
        kestu_error_t *err =
            kestu_error_createf(0, code, nullptr, "Cannot open file '%s'", "a.tif");
        err = kestu_error_quick_wrap(err, "Cannot read TIFF image.");
        err = kestu_error_quick_wrap(err, "Cannot read image.");
        err = kestu_error_quick_wrap(err, "Cannot start.");
        benchmark::DoNotOptimize(err);
        kestu_error_clear(err);
    }
}

void glib(benchmark::State &state) {
    const GQuark domain = g_quark_from_static_string("bench");
    for (auto _ : state) {
        GError *err = g_error_new(domain, code, "Cannot open file '%s'", "a.tif");
        g_prefix_error(&err, "Cannot read TIFF image.: ");
        g_prefix_error(&err, "Cannot read image.: ");
        g_prefix_error(&err, "Cannot start.: ");
        benchmark::DoNotOptimize(err);
        g_error_free(err);
    }
}

template <int Level>
[[gnu::noinline]] void throw_nested() {
    if constexpr (Level == 0) {
        throw std::runtime_error("Cannot open file 'a.tif'");
    } else {
        try {
            throw_nested<Level - 1>();
        } catch (...) {
            std::throw_with_nested(std::runtime_error("Cannot read image."));
        }
    }
}

void exception(benchmark::State &state) {
    for (auto _ : state) {
        try {
            throw_nested<3>();
        } catch (const std::exception &e) {
            benchmark::DoNotOptimize(e.what());
        }
    }
}

// With and without the place where it was made, which the macros add.
void with_location(benchmark::State &state) {
    for (auto _ : state) {
        kestu_error_t *err = kestu_error_create(0, code, nullptr, "Cannot read image.");
        benchmark::DoNotOptimize(err);
        kestu_error_clear(err);
    }
}

void without_location(benchmark::State &state) {
    for (auto _ : state) {
        kestu_error_t *err =
            kestu_error_create_i(0, code, 0, nullptr, nullptr, nullptr, "Cannot read image.");
        benchmark::DoNotOptimize(err);
        kestu_error_clear(err);
    }
}

void glib_literal(benchmark::State &state) {
    const GQuark domain = g_quark_from_static_string("bench");
    for (auto _ : state) {
        GError *err = g_error_new_literal(domain, code, "Cannot read image.");
        benchmark::DoNotOptimize(err);
        g_error_free(err);
    }
}

// What the pool of a chain costs by itself.
void limit(benchmark::State &state) {
    for (auto _ : state) {
        apr_pool_t *pool = nullptr;
        apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr);
        benchmark::DoNotOptimize(pool);
        apr_pool_destroy(pool);
    }
}

BENCHMARK(ours)->Name("error three deep/ours");
BENCHMARK(glib)->Name("error three deep/GError");
BENCHMARK(exception)->Name("error three deep/C++ exception");
BENCHMARK(limit)->Name("error three deep/limit (its pool)");
BENCHMARK(with_location)->Name("error with location/ours");
BENCHMARK(without_location)->Name("error with location/limit (without)");
BENCHMARK(without_location)->Name("error/ours");
BENCHMARK(glib_literal)->Name("error/GError");
BENCHMARK(limit)->Name("error/limit (its pool)");

} // namespace
