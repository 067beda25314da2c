#!/bin/bash
# Times saving and loading an address space of 100,000 items under Wine and,
# in the same run, parsing the very same file with xmllint on the host as the
# baseline; prints the seconds and the ratios to the baseline. The CSV export
# and import of the same address space are printed with their ratios to the
# XML save and load.
#
# usage: run.sh BUILD_DIR EXE   (called by scripts/run-benchmarks.sh)
set -eu
BUILD_DIR=$1
EXE=$2
FILE="$BUILD_DIR/bench-addressspace.xml"
WIN_FILE="Z:$(echo "$FILE" | tr / '\\')"
OUT="$BUILD_DIR/bench-addressspace.out"

rm -f "$FILE"
wine "$EXE" "$WIN_FILE" </dev/null >"$OUT" 2>&1 || { cat "$OUT"; exit 1; }
tr -d '\r' <"$OUT" >"$OUT.txt"
cat "$OUT.txt"
save=$(awk '/^save_seconds/ {print $2}' "$OUT.txt")
load=$(awk '/^load_seconds/ {print $2}' "$OUT.txt")

# The baseline: the best of three host parses of the same file.
best=""
for _ in 1 2 3; do
    start=$(date +%s.%N)
    xmllint --noout "$FILE"
    end=$(date +%s.%N)
    best=$(awk -v s="$start" -v e="$end" -v b="$best" 'BEGIN { t = e - s; if (b == "" || t < b) b = t; print b }')
done

printf 'file %s (%s bytes)\n' "$FILE" "$(stat -c %s "$FILE")"
printf 'xmllint_seconds %.3f\n' "$best"
parse=$(awk '/^dom_parse_seconds/ {print $2}' "$OUT.txt")
awk -v s="$save" -v l="$load" -v p="$parse" -v b="$best" \
    'BEGIN { printf "save_to_xmllint_ratio %.1f\nload_to_xmllint_ratio %.1f\ndom_parse_to_xmllint_ratio %.1f\n", s / b, l / b, p / b }'
csv_export=$(awk '/^csv_export_seconds/ {print $2}' "$OUT.txt")
csv_import=$(awk '/^csv_import_seconds/ {print $2}' "$OUT.txt")
awk -v e="$csv_export" -v i="$csv_import" -v s="$save" -v l="$load" \
    'BEGIN { printf "csv_export_to_xml_save_ratio %.2f\ncsv_import_to_xml_load_ratio %.2f\n", e / s, i / l }'
workbook_export=$(awk '/^workbook_export_seconds/ {print $2}' "$OUT.txt")
workbook_import=$(awk '/^workbook_import_seconds/ {print $2}' "$OUT.txt")
awk -v we="$workbook_export" -v wi="$workbook_import" -v e="$csv_export" -v i="$csv_import" \
    'BEGIN { printf "workbook_export_to_csv_export_ratio %.2f (target <= 1.5)\nworkbook_import_to_csv_import_ratio %.2f (target <= 1.5)\n", we / e, wi / i }'
