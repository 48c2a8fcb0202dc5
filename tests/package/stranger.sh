#!/usr/bin/env bash
# stranger.sh CC CXX: builds a project that includes this one, and links programs with the archive that it
# has installed.
set -euo pipefail
cc=$1 cxx=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake -S "$here/stranger" -B "$work/build" -DKESTU_SOURCE="$here/../.." -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" >/dev/null
cmake --build "$work/build" --parallel 2 >/dev/null
"$work/build/error_test"

cmake --install "$work/build" --prefix "$work/usr" >/dev/null
library=$(dirname "$(find "$work/usr" -name libkestu.a)")
test ! -e "$library/libkestu.so"
export PKG_CONFIG_PATH=$library/pkgconfig
for static in "" --static; do
    # shellcheck disable=SC2046,SC2086
    "$cc" "$here/project/consumer.c" -o "$work/c" $(pkg-config $static --cflags --libs kestu)
    "$work/c"
done

cmake -S "$here/project" -B "$work/installed" -DCMAKE_PREFIX_PATH="$work/usr" -DCMAKE_C_COMPILER="$cc" \
    -DCMAKE_CXX_COMPILER="$cxx" >/dev/null
cmake --build "$work/installed" >/dev/null
"$work/installed/consumer_c"
"$work/installed/consumer_cpp"
