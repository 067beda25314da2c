#!/bin/bash
# The order pass of 'make test': the unit and the window test programs once
# more, each in one process with its tests in a shuffled order. Under CTest
# every test runs in a process of its own, which hides a test that depends
# on what an earlier one left behind; here such a test fails. Each test
# program also compares the process-wide state before and after every test
# (tests/support/ProcessState.h) and fails a test that leaves it changed;
# with MORVANE_CHECK_SHARED_STATE=1, as here, where the program runs alone,
# that includes the clipboard and the registry keys the tests write.
#
# The seed is printed; SHUFFLE_SEED=N repeats an order (gtest's own
# --gtest_random_seed), e.g. to find which earlier test misled a failing one.
# A failure is not retried.
#
# usage: scripts/with-wine.sh BUILD_DIR scripts/test-shuffled.sh BUILD_DIR
set -u
BUILD_DIR=$(realpath "$1")
RUN="$(cd "$(dirname "$0")/.." && pwd)/cmake/wine-run.sh"
seed=${SHUFFLE_SEED:-$(( (RANDOM << 15 | RANDOM) % 99999 + 1 ))}
export MORVANE_CHECK_SHARED_STATE=1
echo "Unit and window tests, each program in one process, shuffled with the seed $seed (SHUFFLE_SEED=$seed repeats it)"
status=0
for program in unit ui; do
    log="$BUILD_DIR/shuffled-$program.log"
    start=$(date +%s)
    if "$RUN" "$BUILD_DIR/bin/${program}_tests.exe" --gtest_shuffle --gtest_random_seed="$seed" --gtest_brief=1 \
        >"$log" 2>&1; then
        printf '%s_tests: %s (%d s)\n' "$program" "$(grep -h '^\[  PASSED  \]' "$log" | tr -d '\r')" \
            "$(( $(date +%s) - start ))"
    else
        status=1
        tr -d '\r' <"$log" | grep -v '^\[ *\(OK\|RUN\) *\]'
        printf '%s_tests failed with the seed %s (%d s); the whole output is in %s\n' "$program" "$seed" \
            "$(( $(date +%s) - start ))" "$log"
    fi
done
exit $status
