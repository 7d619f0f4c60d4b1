#!/usr/bin/env bash
# soak.sh [MINUTES [nofuzz]] - the long runs, 10 minutes by default: storms of processes and comparisons with models, in
# release and under the sanitizers, each round with other random numbers, and then each fuzz target for at least ten
# minutes. Prints what was done in lines that begin with COUNT; the last line is "N passed, N failed". A round that
# fails shows the command that repeats it, and leaves what it said in build/logs/.
set -uo pipefail
cd "$(dirname "$0")" || exit 1

minutes=${1:-10} fuzz=${2:-fuzz} logs=$PWD/build/logs passed=0 failed=0
export ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1 UBSAN_OPTIONS=print_stacktrace=1
programs=(ipc/storm_test log/log_storm_test config/ini_model_test text/print_test)
mkdir -p "$logs"

# Sums the numbers of equal COUNT lines.
sum() { # sum HEAD
    awk -v head="$1" '/^COUNT / {
            line = substr($0, 7); gsub(/[0-9]+/, "#", line)
            if (!(line in rounds)) order[++lines] = line
            ++rounds[line]; count = split($0, numbers, /[^0-9]+/); at = 0
            for (i = 1; i <= count; ++i) if (numbers[i] != "") total[line, ++at] += numbers[i]
        }
        END {
            for (l = 1; l <= lines; ++l) {
                text = order[l]
                for (at = 1; sub(/#/, total[order[l], at], text); ++at) {}
                print "COUNT soak, " head ", " rounds[order[l]] " rounds: " text
            }
        }'
}

soak() { # soak PRESET PROGRAM SECONDS FACTOR
    local preset=$1 program=$2 end=$((SECONDS + $3)) log=$logs/soak-$1-${2##*/}.log command seed
    : >"$log"
    while
        seed=$((RANDOM * 32768 + RANDOM + 1))
        command="QZVEST_SOAK=$4 QZVEST_SEED=$seed build/$preset/tests/support/sandbox build/$preset/tests/$program"
        # shellcheck disable=SC2086 # several words
        if ! env $command --gtest_filter='*Storm*:Soak*:IniModel*:PrintDouble.Agrees*' >>"$log" 2>&1 </dev/null; then
            failed=$((failed + 1))
            echo "FAILED  $command"
            tail -n 40 "$log"
            return 1
        fi
        [ $SECONDS -lt "$end" ]
    do :; done
    passed=$((passed + 1))
    sum "$preset" <"$log"
}

scripts/need cmake:cmake ninja:ninja-build g++:g++ /usr/include/gtest/gtest.h:libgtest-dev \
    /usr/include/libxml2/libxml/parser.h:libxml2-dev /usr/include/zlib.h:zlib1g-dev || exit 1
share=$((minutes * 60 / 8))
for preset in release asan; do
    if ! { cmake --preset $preset -DQZVEST_BENCH=OFF && cmake --build --preset $preset --target sandbox \
        "${programs[@]##*/}" -- --quiet; } >"$logs/soak-build-$preset.log" 2>&1; then
        failed=$((failed + 1))
        tail -n 40 "$logs/soak-build-$preset.log"
        continue
    fi
    for program in "${programs[@]}"; do
        soak $preset "$program" $share 4
    done
done
if [ "$fuzz" != nofuzz ]; then
    if scripts/fuzz 600 >"$logs/soak-fuzz.log" 2>&1; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
    grep '^COUNT ' "$logs/soak-fuzz.log" || tail -n 60 "$logs/soak-fuzz.log"
fi
echo "$passed passed, $failed failed"
exit $((failed > 0))
