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
# program's global settings: when it passes then, it is listed as flaky
# (MORVANE_FLAKY_LIST, shown at the end of 'make test'), and the pass still
# passes. A suite whose run crashes or ends without its summary fails the
# pass: the tests after the crash never ran.
#
# usage: MORVANE_DPI=144 scripts/with-wine.sh BUILD_DIR scripts/test-other-dpi.sh BUILD_DIR
set -u
BUILD_DIR=$(realpath "$1")
RUN="$(cd "$(dirname "$0")/.." && pwd)/cmake/wine-run.sh"
EXE="$BUILD_DIR/bin/ui_tests.exe"
. "$(dirname "$0")/gtest-pass.sh"
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
    gtest_run "$log" "$EXE" --gtest_filter="$suite.*"
    case $? in
    0)
        printf '%s: %s\n' "$suite" "$(grep -h '^\[  PASSED  \]' "$log")"
        continue
        ;;
    2)
        status=1
        gtest_report_crash "$log" "$suite at $MORVANE_DPI dpi"
        continue
        ;;
    esac
    # A test that failed beside the others of its suite runs once more on
    # its own: only its own failure counts, and a pass then is flaky.
    for test in $(gtest_failed_tests "$log"); do
        gtest_run "$log.one" "$EXE" --gtest_filter="$test"
        case $? in
        0) gtest_note_flaky "$test at $MORVANE_DPI dpi" ;;
        2) status=1; gtest_report_crash "$log.one" "$test at $MORVANE_DPI dpi" ;;
        *) status=1; cat "$log.one" ;;
        esac
    done
done
exit $status
