#!/bin/sh
# Installs the build into a temporary prefix, then builds and runs a consumer against
# it twice: through the CMake package and through pkg-config.
# usage: check_install.sh <build folder> <source root>
set -eu
build=$1
root=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >/dev/null
cmake -S "$root/tests/install/consumer" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/cmake" >/dev/null
"$work/cmake/consumer"

if command -v pkg-config >/dev/null 2>&1; then
    export PKG_CONFIG_PATH="$work/prefix/lib/pkgconfig:$work/prefix/lib/x86_64-linux-gnu/pkgconfig"
    c++ "$root/tests/install/consumer/main.cpp" -o "$work/consumer-pc" $(pkg-config --cflags --libs utils)
    "$work/consumer-pc"
fi
