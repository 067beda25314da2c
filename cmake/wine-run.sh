#!/bin/sh
# CTest's cross-compiling emulator: runs one Windows program under Wine in the
# environment prepared by scripts/with-wine.sh (prefix, display, wineserver).
#
# The program's output goes through a file, not straight into CTest's pipe:
# Wine's background processes (services, the desktop) can inherit the
# descriptors of the process that started them and would hold the pipe open
# long after the test ended.
if [ -z "$WINEPREFIX" ] || [ -z "$DISPLAY" ]; then
    echo "wine-run.sh: no Wine environment; run the tests with 'make test'" >&2
    exit 2
fi
out=$(mktemp "${TMPDIR:-/tmp}/wine-run.XXXXXX") || exit 2
wine "$@" </dev/null >"$out" 2>&1
rc=$?
cat "$out"
rm -f "$out"
exit $rc
