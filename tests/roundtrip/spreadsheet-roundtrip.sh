#!/bin/bash
# The address space workbook through two spreadsheet programs that are not
# this one: LibreOffice Calc opens the exported workbook and saves it again
# as .xlsx (headless, once in an English and once in a German locale), and
# openpyxl writes a workbook of its own; each result is imported by the
# program's code (workbook_tool.exe under Wine) and compared with what went
# in. A missing LibreOffice or openpyxl fails the test: it never skips.
#
#   spreadsheet-roundtrip.sh <workbook_tool.exe> <work folder>
set -u
tool="$1"
work="$2"
here="$(cd "$(dirname "$0")" && pwd)"
run="$here/../../cmake/wine-run.sh"
failures=0

fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

command -v soffice >/dev/null || { echo "FAIL: soffice (Debian package libreoffice-calc-nogui) is not installed"; exit 1; }
/usr/bin/python3 -c "import openpyxl" 2>/dev/null \
    || { echo "FAIL: openpyxl (Debian package python3-openpyxl) is not installed for /usr/bin/python3"; exit 1; }

rm -rf "$work"
mkdir -p "$work"
winpath() { echo "Z:$(echo "$1" | tr '/' '\\')"; }

"$run" "$tool" export-corpus "$(winpath "$work/corpus.xlsx")" || { echo "FAIL: export"; exit 1; }
[ -s "$work/corpus.xlsx" ] || { echo "FAIL: no workbook exported"; exit 1; }

# LibreOffice in a profile of its own (parallel runs do not share one), its
# locale set in that profile: the machine need not have the locale generated.
calc_round_trip() {   # locale (en-US, de-DE)
    local locale="$1" profile="$work/profile-$1" out="$work/calc-$1"
    mkdir -p "$profile/user" "$out"
    cat >"$profile/user/registrymodifications.xcu" <<XCU
<?xml version="1.0" encoding="UTF-8"?>
<oor:items xmlns:oor="http://openoffice.org/2001/registry" xmlns:xs="http://www.w3.org/2001/XMLSchema" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">
<item oor:path="/org.openoffice.Setup/L10N"><prop oor:name="ooSetupSystemLocale" oor:op="fuse"><value>$locale</value></prop></item>
<item oor:path="/org.openoffice.Setup/L10N"><prop oor:name="ooLocale" oor:op="fuse"><value>$locale</value></prop></item>
<item oor:path="/org.openoffice.Office.Linguistic/General"><prop oor:name="DefaultLocale" oor:op="fuse"><value>$locale</value></prop></item>
</oor:items>
XCU
    HOME="$profile" timeout 180 soffice -env:UserInstallation="file://$profile" --headless --norestore \
        --convert-to xlsx:"Calc MS Excel 2007 XML" --outdir "$out" "$work/corpus.xlsx" >"$out/soffice.log" 2>&1
    if [ ! -s "$out/corpus.xlsx" ]; then
        fail "LibreOffice ($locale) did not save the workbook"; cat "$out/soffice.log"; return
    fi
    if cmp -s "$out/corpus.xlsx" "$work/corpus.xlsx"; then
        fail "LibreOffice ($locale) handed the file back unchanged"; return
    fi
    echo "== LibreOffice Calc, $locale"
    "$run" "$tool" check-corpus "$(winpath "$out/corpus.xlsx")" "$(winpath "$out")" || fail "LibreOffice ($locale) round trip"
}
calc_round_trip en-US
calc_round_trip de-DE

echo "== openpyxl"
/usr/bin/python3 "$here/openpyxl_workbook.py" write "$work/openpyxl.xlsx" || fail "openpyxl could not write its workbook"
"$run" "$tool" dump "$(winpath "$work/openpyxl.xlsx")" >"$work/openpyxl.dump" 2>&1
/usr/bin/python3 "$here/openpyxl_workbook.py" check "$work/openpyxl.dump" || fail "openpyxl workbook"

echo "== history workbook read by openpyxl"
"$run" "$tool" history-sample "$(winpath "$work/history.xlsx")" || fail "history workbook not written"
/usr/bin/python3 "$here/openpyxl_workbook.py" history "$work/history.xlsx" || fail "history workbook"

[ "$failures" -eq 0 ] && echo "all spreadsheet round trips gave the same address space"
exit $((failures > 0))
