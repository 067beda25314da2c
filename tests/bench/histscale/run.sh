#!/bin/bash
# Plant-scale benchmark of the historian windows: 100,000,000 values (1,000
# items, 1,000,000 runs of 100 values) on SQLite and on the test PostgreSQL
# server, each built once in bulk by generate.py and kept (SQLite file in the
# build directory, PostgreSQL database "histscale" in the build directory's
# test cluster); the sqlite3 command-line tool's time for the same range read
# is the baseline of the read path. HISTSCALE_VALUES sets a smaller scale
# (a multiple of 10,000) for a quick run; each scale is built and kept apart.
# Called by scripts/run-benchmarks.sh inside the Wine environment with
# BUILD_DIR and the benchmark program.
set -u
BUILD_DIR=$1
EXE=$2
HERE=$(cd "$(dirname "$0")" && pwd)
VALUES=${HISTSCALE_VALUES:-100000000}
DIR="$BUILD_DIR/bench/histscale"
DB="$DIR/Historian.db"
[ "$VALUES" = 100000000 ] || DB="$DIR/Historian-$VALUES.db"
mkdir -p "$DIR"

now() { date +%s.%N; }
elapsed() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.1f", b - a }'; }

if [ ! -f "$DB.complete" ]; then
    rm -f "$DB"
    echo "building $DB, $VALUES values (once) ..."
    start=$(now)
    python3 "$HERE/generate.py" sqlite "$DB" --values "$VALUES" || { echo "build failed" >&2; exit 1; }
    echo "built in $(elapsed "$start" "$(now)") s, $(du -m "$DB" | cut -f1) MB"
    touch "$DB.complete"
fi
# The figures are the program's, not the disk's: the file is read once so
# that it is in the page cache, as PostgreSQL's tables are in its buffers
# after their first read. (A cold first open of the 4 GB file takes seconds
# more; the explorer shows its progress and Esc cancels it.)
cat "$DB" >/dev/null
wine "$EXE" measure "Driver={SQLite3};Database=$DB;" "SQLite, $VALUES values" </dev/null | tr -d '\r'

# The read path against the sqlite3 tool: the same query, every column, the
# blobs written to /dev/null (best of three).
read -r LOWER UPPER < <(wine "$EXE" bounds </dev/null | tr -d '\r')
ITEM=Plant.Area00.Item0000
SQL="SELECT ItemID, TimeFrom, TimeTo, ValCount, writefile('/dev/null', ItemValues), CacheUsedSize FROM HistoricData WHERE [ItemID]='$ITEM' and ([TimeFrom] <= $UPPER) and ([TimeTo] >= $LOWER) ORDER BY [TimeFrom]"
best=""
for _ in 1 2 3; do
    start=$(now)
    sqlite3 "$DB" "$SQL" >/dev/null
    s=$(awk -v a="$start" -v b="$(now)" 'BEGIN { printf "%.4f", b - a }')
    if [ -z "$best" ] || awk -v a="$s" -v b="$best" 'BEGIN { exit !(a < b) }'; then best=$s; fi
done
printf '%-40s seconds=%s (the baseline of the range read above)\n' "sqlite3 tool, the same range read" "$best"

# PostgreSQL: the database "histscale" of the test cluster (with-wine.sh
# started it and put its connection string into MORVANE_TEST_POSTGRES).
if [ -z "${MORVANE_TEST_POSTGRES:-}" ]; then
    echo "no PostgreSQL server: its figures are left out"
    exit 0
fi
field() { sed -n "s/.*$1=\([^;]*\).*/\1/p" <<<"$MORVANE_TEST_POSTGRES"; }
HOST=$(field Server)
PORT=$(field Port)
ROLE=$(field Uid)
PGDB=histscale_$VALUES
export PGPASSWORD=$(field Pwd)
if ! psql -h "$HOST" -p "$PORT" -U "$ROLE" -d "$PGDB" -tAc "SELECT 1 FROM histscale_complete" >/dev/null 2>&1; then
    echo "building PostgreSQL database $PGDB, $VALUES values (once) ..."
    start=$(now)
    psql -h "$HOST" -p "$PORT" -U "$ROLE" -d postgres -qc "DROP DATABASE IF EXISTS $PGDB" &&
        psql -h "$HOST" -p "$PORT" -U "$ROLE" -d postgres -qc "CREATE DATABASE $PGDB" &&
        python3 "$HERE/generate.py" postgres "$HOST" "$PORT" "$ROLE" "$PGDB" --values "$VALUES" &&
        psql -h "$HOST" -p "$PORT" -U "$ROLE" -d "$PGDB" -qc "CREATE TABLE histscale_complete (done int)" ||
        { echo "PostgreSQL build failed" >&2; exit 1; }
    echo "built in $(elapsed "$start" "$(now)") s"
fi
CONNECTION=$(sed "s/Database=[^;]*/Database=$PGDB/" <<<"$MORVANE_TEST_POSTGRES")
wine "$EXE" measure "$CONNECTION" "PostgreSQL, $VALUES values" </dev/null | tr -d '\r'
