#!/bin/bash
# The local-time pass of 'make test': the tests of the historian windows and
# of the local-time conversions once more, in a Wine session started in
# another time zone (run through scripts/with-wine.sh with MORVANE_TZ set,
# e.g. Europe/Berlin, which has daylight saving). Those tests state what
# local time must be from the zone record, so that in this pass they check
# that list times, presets and the UTC bounds of reads and deletes follow
# the zone's offset of now.
#
# A run that crashes or ends without its summary fails the pass, also when
# its exit code says 0; no test is run again here.
#
# usage: MORVANE_TZ=Europe/Berlin scripts/with-wine.sh BUILD_DIR scripts/test-other-zone.sh BUILD_DIR
set -u
BUILD_DIR=$(realpath "$1")
RUN="$(cd "$(dirname "$0")/.." && pwd)/cmake/wine-run.sh"
. "$(dirname "$0")/gtest-pass.sh"
if [ -z "${MORVANE_TZ:-}" ]; then
    echo "test-other-zone.sh: MORVANE_TZ is not set" >&2
    exit 2
fi
echo "Local-time tests in the zone $MORVANE_TZ"
status=0
log="$BUILD_DIR/zone-pass.log"
run() {
    local name=$1
    shift
    gtest_run "$log" "$@"
    case $? in
    0) printf '%s: %s\n' "$name" "$(grep -h '^\[  PASSED  \]' "$log")" ;;
    2) status=1; gtest_report_crash "$log" "$name in $MORVANE_TZ" ;;
    *) status=1; cat "$log" ;;
    esac
}
run unit_tests "$BUILD_DIR/bin/unit_tests.exe" \
    --gtest_filter='LocalTime.*:ParseTimeText.*:HistDataRows.*:DBExplorerRows.*:TrendSeries.*:ItemFilter.*:HistoryExporter.*:TimeFieldsCache.*'
run ui_tests "$BUILD_DIR/bin/ui_tests.exe" \
    --gtest_filter='TimePeriodDialog.*:Db/HistDataDialog.*:Db/DBExplorer.*:DBExplorerFromTray.*:ShowHistoricalData.*:Db/TrendChartTest.*:Db/HistDataPaging.*:Db/HistDataCsv.*:Db/HistDataCopy.*:Db/HistDataProgress.*:Db/DBExplorerFilter.*:Db/DBExplorerExport.*'
exit $status
