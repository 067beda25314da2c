#!/bin/bash
# The layout tests of every window and dialog at 96, 120, 144 and 192 dpi:
# the test program runs once per display scale, each run started after the
# prefix's DPI was set (scripts/set-dpi.sh) and told which DPI to expect.
# The prefix's DPI is put back (MORVANE_DPI, or 96) at the end. Run inside
# scripts/with-wine.sh (CTest runs it as ui.WindowLayout.EveryDpi).
#
# usage: scripts/test-every-dpi.sh UI_TESTS_EXE
set -u
EXE=$1
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
trap '"$ROOT/scripts/set-dpi.sh" "${MORVANE_DPI:-96}"' EXIT
status=0
for dpi in 96 120 144 192; do
    echo "Window layout at $dpi dpi"
    "$ROOT/scripts/set-dpi.sh" "$dpi"
    MORVANE_EXPECT_DPI=$dpi "$ROOT/cmake/wine-run.sh" "$EXE" --gtest_brief=1 \
        --gtest_filter='WindowLayoutDpi.*:EveryWindow/WindowLayout.*' || status=1
done
exit $status
