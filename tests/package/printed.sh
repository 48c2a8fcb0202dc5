#!/usr/bin/env bash
# printed.sh BUILD CC: installs BUILD and lets gdb print one of each record that it has printers for. Skipped
# (77) where gdb is missing or may not run programs.
set -euo pipefail
build=$1 cc=$2
here=$(cd "$(dirname "$0")" && pwd)
gdb -nx -batch -ex run true 2>&1 | grep -q 'exited normally' || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for component in runtime development; do
    cmake --install "$build" --component $component --prefix "$work/usr" >/dev/null
done
library=$(dirname "$(find "$work/usr" -name libkestu.so)")
export PKG_CONFIG_PATH=$library/pkgconfig LD_LIBRARY_PATH=$library
# shellcheck disable=SC2046
"$cc" -std=c11 -Wall -Wextra -Werror -g "$here/printed.c" -o "$work/printed" $(pkg-config --cflags --libs kestu)
gdb -nx -batch -iex "add-auto-load-safe-path $work" -x "$here/printed.gdb" "$work/printed" 2>/dev/null |
    sed -n '/^\$1 =/,$p' | diff "$here/printed.out" -
