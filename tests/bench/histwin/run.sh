#!/bin/bash
# Historian windows benchmark: the historical data window over an item with
# 100,000 archived values and the explorer over 10,001 items, in one run
# under Wine, each figure beside the historian's read time of the same data.
# The SQLite database is built once and kept in the build directory.
# Called by scripts/run-benchmarks.sh inside the Wine environment with
# BUILD_DIR and the benchmark program.
set -u
BUILD_DIR=$1
EXE=$2
DIR="$BUILD_DIR/bench/histwin"
DB="$DIR/Historian.db"
mkdir -p "$DIR"
if [ ! -f "$DB.complete" ]; then
    rm -f "$DB" "$DB.complete"
    echo "building $DB (once) ..."
    wine "$EXE" build "$DB" </dev/null || { echo "build failed" >&2; exit 1; }
    touch "$DB.complete"
fi
wine "$EXE" measure "$DB" </dev/null
