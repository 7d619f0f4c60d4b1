#!/bin/sh
# Measures the library beside what could be used instead, and prints one table. Installs the Debian packages
# that are missing; a peer whose package cannot be had is left out.
set -eu
cd "$(dirname "$0")"

needed="g++ cmake ninja-build libgtest-dev libgmock-dev libbenchmark-dev"
peers="libflatbuffers-dev flatbuffers-compiler libprotobuf-dev protobuf-compiler libglib2.0-dev pkg-config libbsd-dev"

missing=
for package in $needed $peers; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
done
if [ -n "$missing" ]; then
    sudo=
    [ "$(id -u)" -eq 0 ] || sudo=sudo
    # shellcheck disable=SC2086 # a list of words
    { $sudo apt-get update && $sudo apt-get install -y --no-install-recommends $missing; } >&2 ||
        echo "not installed:$missing" >&2
fi

build=build/release
cmake --preset release >&2
cmake --build --preset release --target benchmarks >&2

# The median of five runs in random order, so that what else the machine does meets all alike.
results=$build/bench/results.csv
: >"$results"
for program in sdo_bench containers_bench frame_bench; do
    echo "running $program" >&2
    "$build/bench/$program" --benchmark_format=csv --benchmark_min_time=0.05 --benchmark_repetitions=5 \
        --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true \
        >>"$results" 2>"$build/bench/$program.log" || { cat "$build/bench/$program.log" >&2; exit 1; }
done

sed -n 's/^model name[^:]*: *//p' /proc/cpuinfo | head -n 1 | tr '\n' ','
echo " $(nproc) cores, $(c++ --version | head -n 1)"
echo
awk -f bench/table.awk "$results"
