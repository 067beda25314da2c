#!/bin/bash
# Runs every benchmark of tests/bench inside the Wine environment (called by
# 'make bench' through scripts/with-wine.sh). A benchmark folder with a run.sh
# runs that script (for host-side baselines measured in the same run) with the
# build directory and the benchmark program as arguments; otherwise the program
# runs alone. Each prints its own figures.
#
# The run fails (exit status 1) when a benchmark fails or when a figure
# misses its target by more than half again (scripts/bench-far-off.awk); a
# smaller miss is marked by the benchmark and taken as a shared machine's
# noise.
#
# BENCHES="editor review" runs only the named benchmarks (folder names).
set -u
BUILD_DIR=$1
SRC_DIR=$(cd "$(dirname "$0")/.." && pwd)
status=0
far_off=0
OUT=$(mktemp)
trap 'rm -f "$OUT"' EXIT
for dir in "$SRC_DIR"/tests/bench/*/; do
    name=$(basename "$dir")
    exe="$BUILD_DIR/bin/bench_$name.exe"
    [ -f "$exe" ] || continue
    if [ -n "${BENCHES:-}" ] && [[ " $BENCHES " != *" $name "* ]]; then continue; fi
    echo "=== benchmark: $name"
    # To a file, then shown: wine piped into a reader holds the pipe open.
    if [ -x "$dir/run.sh" ]; then
        "$dir/run.sh" "$BUILD_DIR" "$exe" >"$OUT" 2>&1 || status=1
    else
        wine "$exe" </dev/null >"$OUT" 2>&1 || status=1
    fi
    tr -d '\r' <"$OUT"
    tr -d '\r' <"$OUT" | awk -f "$SRC_DIR/scripts/bench-far-off.awk" >"$OUT.far" || far_off=1
    cat "$OUT.far"
    rm -f "$OUT.far"
done
if [ $far_off = 1 ]; then
    echo "=== some figures missed their targets by more than half again (FAR OFF TARGET above)"
    status=1
fi
exit $status
