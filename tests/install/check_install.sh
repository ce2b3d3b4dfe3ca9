#!/bin/sh
# Installs the build into a temporary prefix, then builds and runs a consumer against
# it twice: through the CMake package and through pkg-config.
# usage: check_install.sh <build folder> <source root>
# For another target (the 32-bit lane), CMAKE_TOOLCHAIN_FILE names the toolchain file,
# KIV_CONSUMER_CXXFLAGS the compiler's and linker's flags, KIV_CONSUMER_RUN what runs
# the consumer (an emulator), and PKG_CONFIG_LIBDIR where that target's packages are.
set -eu
build=$1
root=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >/dev/null
run=${KIV_CONSUMER_RUN:-}
# Another target's toolchain finds packages only inside its sysroot; the prefix is then
# named as the staging prefix, which such a toolchain searches as it stands.
staging=
[ -n "${CMAKE_TOOLCHAIN_FILE:-}" ] && staging="-DCMAKE_STAGING_PREFIX=$work/prefix"
cmake -S "$root/tests/install/consumer" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" $staging >/dev/null
cmake --build "$work/cmake" >/dev/null
$run "$work/cmake/consumer"

if command -v pkg-config >/dev/null 2>&1; then
    export PKG_CONFIG_PATH="$work/prefix/lib/pkgconfig:$work/prefix/lib/x86_64-linux-gnu/pkgconfig"
    c++ ${KIV_CONSUMER_CXXFLAGS:-} "$root/tests/install/consumer/main.cpp" -o "$work/consumer-pc" \
        $(pkg-config --cflags --libs utils)
    $run "$work/consumer-pc"
fi
