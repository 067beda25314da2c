#!/bin/bash
# Shared by the second passes of 'make test' (scripts/test-other-dpi.sh,
# scripts/test-other-zone.sh): runs a GoogleTest program under Wine and
# judges the run by what the program reports, not by its exit code or its
# failure lines alone. A program that crashes, or ends without its closing
# summary, prints no "[  FAILED  ]" line for the test it was in and may even
# end with exit code 0; such a run is a crash, never a pass.
#
# Source it; it needs RUN (cmake/wine-run.sh) set.

# gtest_run LOG PROGRAM ARGS...: runs the program, its output in LOG, and
# returns 0 when every test ran and passed, 1 when tests failed (the run
# ended with its summary), 2 when the run crashed or ended early.
gtest_run() {
    local log=$1
    shift
    "$RUN" "$@" --gtest_brief=1 >"$log" 2>&1
    local rc=$?
    tr -d '\r' <"$log" >"$log.tmp" && mv "$log.tmp" "$log"
    # The closing summary: "[==========] N tests from M test suites ran."
    if ! grep -q '^\[==========\] [0-9]* tests\? from .* ran\.' "$log"; then
        return 2
    fi
    if [ "$rc" -eq 0 ] && grep -q '^\[  PASSED  \] [0-9]* tests\?\.' "$log" && ! grep -q '^\[  FAILED  \]' "$log"; then
        return 0
    fi
    # A run that ended with its summary but a failing exit code and no
    # failed test did not end as GoogleTest ends it (a crash at exit).
    if ! grep -q '^\[  FAILED  \] [^ ]*\.' "$log"; then
        return 2
    fi
    return 1
}

# The tests that failed in a run's log, one a line.
gtest_failed_tests() {
    sed -n 's/^\[  FAILED  \] \([^ ,]*\.[^ ,]*\).*/\1/p' "$1" | sort -u
}

# What a crashed run's log says (its end, where the crash was).
gtest_report_crash() {
    local log=$1 rc_text=$2
    echo "$rc_text: the program crashed or ended without its summary; the end of its output:"
    tail -n 30 "$log"
}

# Notes a test that passed only when run again (on its own) in the list of
# flaky tests that 'make test' shows at its end (MORVANE_FLAKY_LIST).
gtest_note_flaky() {
    local what=$1
    echo "$what: failed, then passed on its own (flaky)"
    if [ -n "${MORVANE_FLAKY_LIST:-}" ]; then
        echo "$what" >>"$MORVANE_FLAKY_LIST"
    fi
}
