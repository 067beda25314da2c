#!/bin/bash
# The review of changes: the compare and the review window on the
# 100,000-item address space, then the historian impact on the plant-scale
# historian that the histscale benchmark builds (100,000,000 values on SQLite
# and on the test PostgreSQL server; HISTSCALE_VALUES picks another scale).
# A historian that is not built yet is said so and left out: the histscale
# benchmark builds it (it runs after this one in 'make bench'; run that again).
# Called by scripts/run-benchmarks.sh inside the Wine environment with
# BUILD_DIR and the benchmark program.
set -u
BUILD_DIR=$1
EXE=$2
VALUES=${HISTSCALE_VALUES:-100000000}
DB="$BUILD_DIR/bench/histscale/Historian.db"
[ "$VALUES" = 100000000 ] || DB="$BUILD_DIR/bench/histscale/Historian-$VALUES.db"

wine "$EXE" compare </dev/null | tr -d '\r'

if [ -f "$DB.complete" ]; then
    wine "$EXE" impact "Driver={SQLite3};Database=$DB;" "SQLite, $VALUES values" </dev/null | tr -d '\r'
else
    echo "no SQLite historian of $VALUES values at $DB yet (the histscale benchmark builds it): impact left out"
fi
if [ -z "${MORVANE_TEST_POSTGRES:-}" ]; then
    echo "no PostgreSQL server: its impact figure is left out"
    exit 0
fi
field() { sed -n "s/.*$1=\([^;]*\).*/\1/p" <<<"$MORVANE_TEST_POSTGRES"; }
PGDB=histscale_$VALUES
export PGPASSWORD=$(field Pwd)
if psql -h "$(field Server)" -p "$(field Port)" -U "$(field Uid)" -d "$PGDB" -tAc "SELECT 1 FROM histscale_complete" >/dev/null 2>&1; then
    CONNECTION=$(sed "s/Database=[^;]*/Database=$PGDB/" <<<"$MORVANE_TEST_POSTGRES")
    wine "$EXE" impact "$CONNECTION" "PostgreSQL, $VALUES values" </dev/null | tr -d '\r'
else
    echo "no PostgreSQL historian $PGDB yet (the histscale benchmark builds it): impact left out"
fi
