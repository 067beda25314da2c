#!/bin/bash
# Historian benchmark: CHistorian over ODBC on a SQLite database of 100 items
# x 1,000 runs x 100 VT_R8 values (10 million values, about 260 MB), against
# the sqlite3 command-line tool running the same statements as the baseline.
# The database is built once and kept in the build directory; the bounded
# delete runs on a copy of it. Called by scripts/run-benchmarks.sh inside the
# Wine environment with BUILD_DIR and the benchmark program.
set -u
BUILD_DIR=$1
EXE=$2
DIR="$BUILD_DIR/bench/historian"
DB="$DIR/Historian.db"
COPY="$DIR/Historian.delete.db"
ITEM="Plant.Area05.Item050"
mkdir -p "$DIR"

now() { date +%s.%N; }
elapsed() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.4f", b - a }'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }
field() { sed -n "s/.*$1=\([0-9.]*\).*/\1/p" <<<"$2" | tail -n 1; }

if [ ! -f "$DB.complete" ]; then
    rm -f "$DB" "$DB.complete"
    echo "building $DB (once) ..."
    start=$(now)
    wine "$EXE" build "$DB" </dev/null || { echo "build failed" >&2; exit 1; }
    echo "built in $(printf '%.1f' "$(elapsed "$start" "$(now)")") s, $(du -m "$DB" | cut -f1) MB"
    touch "$DB.complete"
fi

read -r LOWER UPPER < <(wine "$EXE" bounds </dev/null | tr -d '\r')
ITEM_SQL="SELECT ItemID, TimeFrom, TimeTo, ValCount, writefile('/dev/null', ItemValues), CacheUsedSize FROM HistoricData"
SUMMARY_SQL="SELECT ItemID as a, min(TimeFrom) as b, max(TimeTo) as c, sum(ValCount) as d FROM HistoricData GROUP BY ItemID ORDER BY ItemID"

sqlite_time() {   # db sql
    local start
    start=$(now)
    sqlite3 "$1" "$2" >/dev/null || return 1
    elapsed "$start" "$(now)"
}

# The best of three runs of each side (the machine is shared).
best_ours() {   # args of the benchmark program
    local best="" out s
    for _ in 1 2 3; do
        out=$(wine "$EXE" "$@" </dev/null | tr -d '\r')
        s=$(field seconds "$out")
        if [ -z "$best" ] || awk -v a="$s" -v b="$(field seconds "$best")" 'BEGIN { exit !(a < b) }'; then
            best=$out
        fi
    done
    echo "$best"
}
best_sqlite() {   # db sql
    local best="" s
    for _ in 1 2 3; do
        s=$(sqlite_time "$1" "$2")
        if [ -z "$best" ] || awk -v a="$s" -v b="$best" 'BEGIN { exit !(a < b) }'; then best=$s; fi
    done
    echo "$best"
}

report() {   # name ours-output baseline-seconds
    local ours count
    ours=$(field seconds "$2")
    count=$(field count "$2")
    printf '%-34s %10.4f s  %10.4f s  %7s x  (%s)\n' "$1" "$ours" "$3" "$(ratio "$ours" "$3")" "$count"
}

# The baseline reads every column and writes each blob to /dev/null.
# Both sides read from the page cache (the file is read once first); reads
# and the summary take the best of three runs, the delete runs once on a
# fresh copy for each side. CHistorian's seconds are measured inside the
# program (Wine's start-up left out), sqlite3's around the whole command.
cat "$DB" >/dev/null
printf '%-34s %12s  %12s  %9s\n' "operation" "CHistorian" "sqlite3" "ratio"

out=$(best_ours summary "$DB")
base=$(best_sqlite "$DB" "$SUMMARY_SQL")
report "summary (100 items)" "$out" "$base"

out=$(best_ours read "$DB" "$ITEM")
base=$(best_sqlite "$DB" "$ITEM_SQL WHERE [ItemID]='$ITEM' ORDER BY [TimeFrom]")
report "read one item, no bounds" "$out" "$base"
unbounded_base=$base

out=$(best_ours read "$DB" "$ITEM" bounded)
base=$(best_sqlite "$DB" "$ITEM_SQL WHERE [ItemID]='$ITEM' and ([TimeFrom] <= $UPPER) and ([TimeTo] >= $LOWER) ORDER BY [TimeFrom]")
report "read one item, middle half" "$out" "$base"

# Where the time of the item's read goes (connect, the driver, the
# program's copies, the decode).
parts=$(wine "$EXE" parts "$DB" "$ITEM" </dev/null | tr -d '\r')
echo "$parts"
# The same read with bare ODBC calls and nothing of the program: what the
# driver manager and the SQLite driver under Wine take at the least.
bare=$(sed -n 's/.*bare ODBC \([0-9.]*\) s.*/\1/p' <<<"$parts")
report "read one item, bare ODBC alone" "seconds=$bare count=100000" "$unbounded_base"

IDS=""
for i in $(seq 0 99); do
    id=$(printf "Plant.Area%02d.Item%03d" $((i / 10)) "$i")
    IDS="$IDS${IDS:+ or }[ItemID] = '$id'"
done
cp "$DB" "$COPY"
out=$(wine "$EXE" delete "$COPY" </dev/null | tr -d '\r')
cp "$DB" "$COPY"
base=$(sqlite_time "$COPY" "DELETE FROM HistoricData WHERE ($IDS) AND ([TimeFrom] >= $LOWER) AND ([TimeTo] < $UPPER)")
report "delete middle half of all items" "$out" "$base"
rm -f "$COPY"
