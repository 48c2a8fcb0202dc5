// Tests that run on every path that this processor has, where one result has several.
#pragma once

#include "base/dispatch.hpp"

#include <gtest/gtest.h>

#include <ostream>

namespace kestu {

template <typename Path>
requires requires(const Path &path) {
    path.needs;
}
void PrintTo(const Path &path, std::ostream *out) {
    *out << path.name;
}

namespace test {

// The library takes the path of the parameter while a test runs.
template <typename Path, Dispatch<Path> &dispatch>
class OnPath : public testing::TestWithParam<Path> {
  protected:
    void SetUp() override {
        const Path &path = this->GetParam();
        if (path.needs && !(cpu_features().*path.needs))
            GTEST_SKIP() << "this processor has no path " << path.name;
        dispatch.force(path);
    }
    void TearDown() override { dispatch.forget(); }
};

constexpr auto name_of_path = [](const auto &test) { return test.param.name; };

} // namespace test
} // namespace kestu
