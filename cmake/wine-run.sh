#!/bin/sh
# CTest's cross-compiling emulator: runs one Windows program under Wine in the
# environment prepared by scripts/with-wine.sh (prefix, display, wineserver).
#
# The program's output goes through a file, not straight into CTest's pipe:
# Wine's background processes (services, the desktop) can inherit the
# descriptors of the process that started them and would hold the pipe open
# long after the test ended.
#
# Rarely, under parallel load, Wine fails to start the process at all: it
# exits at once with an error and without a single byte of output (with
# WINEDEBUG=-all its own message is silenced too). Every test program prints
# its first line as soon as it runs, so an empty failed run means the program
# never ran; that case alone is tried once more, and said so (and noted in
# the list of MORVANE_FLAKY_LIST when that is set).
if [ -z "$WINEPREFIX" ] || [ -z "$DISPLAY" ]; then
    echo "wine-run.sh: no Wine environment; run the tests with 'make test'" >&2
    exit 2
fi
out=$(mktemp "${TMPDIR:-/tmp}/wine-run.XXXXXX") || exit 2
for attempt in 1 2; do
    wine "$@" </dev/null >"$out" 2>&1
    rc=$?
    if [ "$rc" -eq 0 ] || [ -s "$out" ] || [ "$attempt" -eq 2 ]; then
        break
    fi
    echo "wine-run.sh: Wine did not start the program (exit code $rc, no output); starting it again" >&2
    # 'make test' lists every run that needed a second start at its end.
    if [ -n "${MORVANE_FLAKY_LIST:-}" ]; then
        echo "$* (Wine did not start it at first)" >>"$MORVANE_FLAKY_LIST"
    fi
    sleep 1
done
cat "$out"
rm -f "$out"
exit $rc
