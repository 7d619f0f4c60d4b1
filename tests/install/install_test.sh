#!/bin/sh
# install_test.sh BUILT WORK - the library as its users get it: it is configured without any option where neither
# GoogleTest nor Google Benchmark is to be found, and what lies in BUILT is installed below WORK/prefix, to be used from
# there by pkg-config and by CMake.
set -eu
source=$(cd "$(dirname "$0")/../.." && pwd)
built=$1
mkdir -p "$2"
build=$(cd "$2" && pwd)
prefix=$build/prefix
rm -rf "$prefix" "$build/consumer" "$build/plain"

cmake -S "$source" -B "$build/plain" -G Ninja \
    -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON
cmake --install "$built" --prefix "$prefix"

PKG_CONFIG_LIBDIR=$(dirname "$(find "$prefix" -name qzvest.pc)")
export PKG_CONFIG_LIBDIR
libdir=$(realpath "$(pkg-config --variable=libdir qzvest)")
expected="$libdir/libqzvest.so.1: 1.1.1, 2 entries in 35 bytes, host fileserver"

same() { # same WHAT ACTUAL EXPECTED
    echo "$1: $2"
    [ "$2" = "$3" ] || { echo "expected: $3"; exit 1; }
}

mkdir "$build/consumer"
# shellcheck disable=SC2046 # flags are several words
${CC:-cc} -Wall -Werror "$source/tests/install/consumer/consumer.c" $(pkg-config --cflags --libs qzvest) \
    -o "$build/consumer/by-pkg-config"
same "pkg-config's version" "$(pkg-config --modversion qzvest)" 1.1.1
same "by pkg-config" "$(LD_LIBRARY_PATH=$libdir "$build/consumer/by-pkg-config")" "$expected"

cmake -S "$source/tests/install/consumer" -B "$build/consumer/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix"
cmake --build "$build/consumer/cmake"
same "by find_package" "$("$build/consumer/cmake/consumer")" "$expected"

same "libqzvest.so" "$(readlink "$libdir/libqzvest.so")" libqzvest.so.1
same "libqzvest.so.1" "$(readlink "$libdir/libqzvest.so.1")" libqzvest.so.1.1.1
same "run-time directory" "$(awk '$1 == "d" { print $2 }' "$prefix/lib/tmpfiles.d/qzvest.conf" | tail -n 1)" /run/qz/.ipc
