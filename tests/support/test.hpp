// What nearly every test is written with.
#pragma once

#include "support/alloc_failure.hpp"
#include "support/chain.hpp"
#include "support/pool.hpp"

#include <kestu.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

namespace kestu::test {

using namespace std::string_literals;
using testing::_;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::StartsWith;
using testing::UnorderedElementsAre;

} // namespace kestu::test
