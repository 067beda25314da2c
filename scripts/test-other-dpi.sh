#!/bin/bash
# The display-scale pass of 'make test': every window test once more in a
# Wine session at another DPI (run through scripts/with-wine.sh with
# MORVANE_DPI set, e.g. 144 = 150 %). The window tests state sizes at 96
# dpi scaled by the window's DPI, so in this pass they check that every
# window works and lays itself out at the larger scale. The layout tests of
# every DPI (ui.WindowLayout.EveryDpi) already ran in the main pass.
#
# One test program run per test suite (a run per test, as CTest does in
# the main pass, would take several times as long); a test that fails
# there runs again on its own, since the tests of a process share the
# program's global settings.
#
# usage: MORVANE_DPI=144 scripts/with-wine.sh BUILD_DIR scripts/test-other-dpi.sh BUILD_DIR
set -u
BUILD_DIR=$(realpath "$1")
RUN="$(cd "$(dirname "$0")/.." && pwd)/cmake/wine-run.sh"
EXE="$BUILD_DIR/bin/ui_tests.exe"
if [ -z "${MORVANE_DPI:-}" ]; then
    echo "test-other-dpi.sh: MORVANE_DPI is not set" >&2
    exit 2
fi
echo "Window tests at $MORVANE_DPI dpi"
export MORVANE_EXPECT_DPI=$MORVANE_DPI
suites=$("$RUN" "$EXE" --gtest_list_tests | tr -d '\r' | sed -n 's/^\([^ ].*\)\.$/\1/p')
[ -n "$suites" ] || { echo "test-other-dpi.sh: no test suites listed" >&2; exit 1; }
status=0
log="$BUILD_DIR/dpi-pass.log"
for suite in $suites; do
    if "$RUN" "$EXE" --gtest_brief=1 --gtest_filter="$suite.*" >"$log" 2>&1; then
        printf '%s: %s\n' "$suite" "$(grep -h 'PASSED' "$log" | tr -d '\r')"
        continue
    fi
    # A test that failed beside the others of its suite runs once more on
    # its own, as in the main pass: only its own failure counts.
    for test in $(sed -n 's/^\[  FAILED  \] \([^ ,]*\).*/\1/p' "$log" | tr -d '\r' | sort -u); do
        if "$RUN" "$EXE" --gtest_brief=1 --gtest_filter="$test" >"$log.one" 2>&1; then
            printf '%s: passed on its own\n' "$test"
        else
            status=1
            cat "$log.one"
        fi
    done
done
exit $status
