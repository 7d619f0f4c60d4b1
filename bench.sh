#!/bin/sh
# Measures the library beside what could be used instead, and prints one table. Installs the Debian packages
# that are missing; a peer whose package cannot be had is left out.
set -eu
cd "$(dirname "$0")"

needed="g++ cmake ninja-build libgtest-dev libgmock-dev libbenchmark-dev"
peers="libflatbuffers-dev flatbuffers-compiler libprotobuf-dev protobuf-compiler libglib2.0-dev pkg-config libbsd-dev
libicu-dev zlib1g-dev libdeflate-dev libssl-dev libb64-dev libfmt-dev
libxml2-dev libiniparser-dev libinih-dev libboost-dev libspdlog-dev"

sudo=
[ "$(id -u)" -eq 0 ] || sudo=sudo
updated=
install() { # install PACKAGE, unless it is there
    dpkg-query -W -f '${Status}' "$1" 2>/dev/null | grep -q 'ok installed' && return
    [ -n "$updated" ] || $sudo apt-get update >&2
    updated=yes
    $sudo apt-get install -y --no-install-recommends "$1" >&2
}
for package in $needed; do
    install "$package"
done
for package in $peers; do
    install "$package" || echo "left out: $package" >&2
done

build=build/release
cmake --preset release >&2
cmake --build --preset release --target benchmarks sandbox >&2

# The median of five runs in random order, so that what else the machine does meets all alike.
results=$build/bench/results.csv
: >"$results"
programs="frame_bench sdo_bench containers_bench list_bench lock_bench digest_bench text_bench print_bench values_bench
xml_bench config_bench ipc_bench log_bench"
for program in $programs; do
    echo "running $program" >&2
    sandbox=
    case $program in
    config_bench | ipc_bench | log_bench) # they have the library's files at their fixed places
        sandbox=$build/tests/support/sandbox
        "$sandbox" true || { echo "left out: $program" >&2; continue; }
        ;;
    esac
    $sandbox "$build/bench/$program" --benchmark_format=csv --benchmark_min_time=0.05 --benchmark_repetitions=5 \
        --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true \
        >>"$results" 2>"$build/bench/$program.log" || { cat "$build/bench/$program.log" >&2; exit 1; }
done

sed -n 's/^model name[^:]*: *//p' /proc/cpuinfo | head -n 1 | tr '\n' ','
echo " $(nproc) cores, $(c++ --version | head -n 1)"
echo
awk -f bench/table.awk "$results"
