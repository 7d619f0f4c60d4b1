#!/usr/bin/env bash
# test.sh [full] - installs what is missing, builds the library in release and with sanitizers, runs all tests in each,
# and the static checks; in full, it also installs the Debian packages in a bare system, which is downloaded. The last
# line is "N passed, N failed", with ", N skipped" where the machine forbids something. What each step says stands in
# build/logs/. Lines that begin with COUNT say how much the tests did.
# shellcheck disable=SC2317 # functions are called by check
set -uo pipefail
cd "$(dirname "$0")" || exit 1

library_folders='compat containers digest text values sdo os ipc config log frame'
logs=$PWD/build/logs
jobs=$(nproc)
passed=0 failed=0 skipped=0
export CC=gcc CXX=g++
export ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1 UBSAN_OPTIONS=print_stacktrace=1
mkdir -p "$logs"

needs=(cmake:cmake ninja:ninja-build gcc:gcc g++:g++ nm:binutils /usr/include/stdio.h:libc6-dev
    clang-tidy:clang-tidy clang-format:clang-format pkg-config:pkg-config valgrind:valgrind doxygen:doxygen ip:iproute2
    /usr/include/gtest/gtest.h:libgtest-dev /usr/include/zlib.h:zlib1g-dev
    /usr/include/libxml2/libxml/parser.h:libxml2-dev abidiff:abigail-tools
    dh:debhelper /usr/share/doc/build-essential:build-essential)
[ "${1-}" != full ] || needs+=(/usr/sbin/debootstrap:debootstrap)

finish() {
    local line="$passed passed, $failed failed"
    [ $skipped = 0 ] || line+=", $skipped skipped"
    echo "$line"
    exit $((failed > 0))
}

check() { # check NAME COMMAND...: one passed, one failed, or one skipped if the command's status is 77
    local name=$1 log=$logs/${1// /-}.log start=$SECONDS status=0 said
    shift
    "$@" >"$log" 2>&1 </dev/null || status=$?
    if [ $status = 0 ]; then
        passed=$((passed + 1))
        echo "ok      $name ($((SECONDS - start)) s)"
    elif [ $status = 77 ]; then
        skipped=$((skipped + 1))
        said=$(tail -n 1 "$log")
        echo "skipped $name: ${said#skipped: }"
    else
        failed=$((failed + 1))
        echo "FAILED  $name ($((SECONDS - start)) s)"
        tail -n 80 "$log"
        return 1
    fi
}

count_of() { # count_of WHAT: an attribute of the suite in ctest's report
    grep -m 1 -o "$1=\"[0-9]*\"" "$report" | tr -dc 0-9
}

# The name of each skipped test, and the last thing that it said.
skipped_tests() {
    awk -F '"' '/<testcase/ { name = $2; skip = 0 }
         /<skipped/ { skip = 1 }
         /<system-out>/ { inside = 1 }
         { ends = /<\/system-out>/; gsub(/<[^>]*>|^[ \t]+/, "") }
         inside && NF { said = $0 }
         ends { inside = 0; if (skip) print "skipped " name ": " said }' "$report"
}

build() { # build PRESET
    "${launcher[@]}" cmake --preset "$1" -DQZVEST_BENCH=OFF &&
        "${launcher[@]}" cmake --build --preset "$1" -j "$jobs" -- --quiet
}

build_and_test() { # build_and_test PRESET
    check "build $1" build "$1" || return
    local log=$logs/test-$1.log start=$SECONDS status all bad left summary
    report=$logs/test-$1.xml
    rm -f "$report"
    "${launcher[@]}" ctest --preset "$1" -j "$jobs" --timeout 300 --no-tests=error --output-junit "$report" \
        >"$log" 2>&1 </dev/null
    status=$?
    if ! [ -s "$report" ]; then
        failed=$((failed + 1))
        echo "FAILED  tests $1"
        tail -n 20 "$log"
        return
    fi
    all=$(count_of tests) bad=$(count_of failures) left=$(($(count_of skipped) + $(count_of disabled)))
    [ $status = 0 ] || [ "$bad" -gt 0 ] || bad=1 all=$((all + 1)) # ctest itself went wrong
    passed=$((passed + all - bad - left)) failed=$((failed + bad)) skipped=$((skipped + left))
    summary="tests $1: $((all - bad - left)) of $all passed ($((SECONDS - start)) s)"
    if [ "$bad" = 0 ]; then
        echo "ok      $summary"
    else
        echo "FAILED  $summary"
        grep -vE '^ +Start +[0-9]+:| Passed +[0-9.]+ sec *$' "$log"
    fi
    skipped_tests
    [ "$1" != release ] || grep '^COUNT ' build/release/Testing/Temporary/LastTest.log
}

sources() { # sources FOLDER...: the C and C++ files below those that exist
    local folder
    for folder in "$@"; do
        [ ! -d "$folder" ] || find "$folder" -name '*.c' -o -name '*.cpp' -o -name '*.h'
    done
}

format() {
    # shellcheck disable=SC2086 # several folders
    sources $library_folders include tests bench examples | xargs clang-format --dry-run -Werror
}

docs() {
    cmake --build --preset release --target docs && scripts/check-docs build/release/docs
}

tidy() {
    # shellcheck disable=SC2086
    sources $library_folders | grep 'cpp$' | xargs -P "$jobs" -n 1 clang-tidy --quiet -p build/release
}

# The demo's service starts its client, so that both leave valgrind's verdict, each in a file.
demo_in_valgrind() {
    rm -f "$logs"/valgrind-*.log
    valgrind --trace-children=yes --error-exitcode=1 --leak-check=full --log-file="$logs/valgrind-%p.log" \
        build/release/examples/service || return
    grep -h -A 1 'Command:\|ERROR SUMMARY' "$logs"/valgrind-*.log
    [ "$(cat "$logs"/valgrind-*.log | grep -c 'ERROR SUMMARY: 0 errors')" = 2 ] &&
        ! grep -q 'ERROR SUMMARY: [1-9]' "$logs"/valgrind-*.log
}

check "packages" scripts/need "${needs[@]}" || finish

launcher=()
build_and_test release
check "exports" scripts/check-exports build/release/libqzvest.so
check "shared object" scripts/check-elf build/release/libqzvest.so
check "headers" scripts/check-headers
check "includes" scripts/check-includes
check "docs" docs
check "formats" scripts/check-formats build/release
check "interface" scripts/check-abi build/release/libqzvest.so
check "install" tests/install/install_test.sh build/release build/installed
check "Debian packages" scripts/check-package contents
check "format" format
check "clang-tidy" tidy
[ ! -x build/release/examples/service ] || check "demo in valgrind" demo_in_valgrind

build_and_test asan

# gcc's thread sanitizer finds no place for its shadow where the kernel scatters mappings widely; the same program
# runs with the scattering off.
if [ "$(cat /proc/sys/vm/mmap_rnd_bits 2>/dev/null || echo 0)" -gt 28 ] && setarch -R true 2>/dev/null; then
    launcher=(setarch -R)
fi
build_and_test tsan

[ "${1-}" != full ] || check "bare Debian" scripts/check-package
finish
