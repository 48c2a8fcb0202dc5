#!/usr/bin/env bash
# consumers.sh BUILD CC CXX SANITIZE: installs BUILD into an empty folder and builds and runs programs
# against it from nothing but what was installed.
set -euo pipefail
build=$1 cc=$2 cxx=$3 sanitize=$4
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/usr" >/dev/null
"$work/usr/bin/kestu" --version | grep -qx 'kestu 1.0.0' # finds the library by itself
library=$(dirname "$(find "$work/usr" -name libkestu.so)")
test -f "$library/libkestu.so.1.0.0"
test "$(readlink "$library/libkestu.so")" = libkestu.so.1
export PKG_CONFIG_PATH=$library/pkgconfig LD_LIBRARY_PATH=$library

flags=${sanitize:+-fsanitize=$sanitize}
# shellcheck disable=SC2046,SC2086
{
    "$cc" -std=c11 -Wall -Wextra -Werror $flags "$here/project/consumer.c" -o "$work/c" \
        $(pkg-config --cflags --libs kestu)
    "$cxx" -std=c++17 -Wall -Wextra -Werror $flags "$here/project/consumer.cpp" -o "$work/cpp" \
        $(pkg-config --cflags --libs kestu)
    "$cxx" -std=c++20 -Wall -Wextra -Werror $flags "$here/../../examples/objects.cpp" -o "$work/cpp20" \
        $(pkg-config --cflags --libs kestu)
}
"$work/c"
"$work/cpp"
"$work/cpp20" | diff "$here/../../examples/objects.cpp.out" -
test "$(pkg-config --modversion kestu)" = 1.0.0

cmake -S "$here/project" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/usr" \
    -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$work/build" >/dev/null
"$work/build/consumer_c"
"$work/build/consumer_cpp"
"$work/build/consumer_tiff"
# shellcheck disable=SC2046,SC2086
"$cc" $flags "$work/build/tiff.c" -o "$work/tiff" $(pkg-config --cflags --libs kestu-tiff)
"$work/tiff"

# Nothing is left when all that was installed is removed.
cp "$build/install_manifest.txt" "$work"
(cd "$work" && cmake -P "$here/../../cmake/Uninstall.cmake")
test -z "$(find "$work/usr" -path '*kestu*' -o ! -type d)"
