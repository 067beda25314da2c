#!/bin/bash
# Times the address space editor on the 100,000-item address space with a
# 10,000-item branch, under Wine on the run's display (called by
# scripts/run-benchmarks.sh).
#
# usage: run.sh BUILD_DIR EXE
set -eu
BUILD_DIR=$1
EXE=$2
FILE="$BUILD_DIR/bench-editor.xml"
WIN_FILE="Z:$(echo "$FILE" | tr / '\\')"
OUT="$BUILD_DIR/bench-editor.out"
rm -f "$FILE"
wine "$EXE" "$WIN_FILE" </dev/null >"$OUT" 2>&1 || { tr -d '\r' <"$OUT"; exit 1; }
tr -d '\r' <"$OUT"
