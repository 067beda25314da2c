#!/bin/bash
# Runs every benchmark of tests/bench inside the Wine environment (called by
# 'make bench' through scripts/with-wine.sh). A benchmark folder with a run.sh
# runs that script (for host-side baselines measured in the same run) with the
# build directory and the benchmark program as arguments; otherwise the program
# runs alone. Each prints its own figures.
set -u
BUILD_DIR=$1
SRC_DIR=$(cd "$(dirname "$0")/.." && pwd)
status=0
for dir in "$SRC_DIR"/tests/bench/*/; do
    name=$(basename "$dir")
    exe="$BUILD_DIR/bin/bench_$name.exe"
    [ -f "$exe" ] || continue
    echo "=== benchmark: $name"
    if [ -x "$dir/run.sh" ]; then
        "$dir/run.sh" "$BUILD_DIR" "$exe" || status=1
    else
        wine "$exe" </dev/null || status=1
    fi
done
exit $status
