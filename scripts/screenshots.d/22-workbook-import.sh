#!/bin/bash
# The report of a workbook import over the editor: a workbook saved by
# LibreOffice Calc from a sheet with good rows, rows that cannot be taken
# and a formula, chosen through File, "Import Workbook..."; then Cancel.
# Sourced by scripts/screenshots.sh.
set -e
csv="$DEMO/bulk-items-sheet.csv"
sed 's/$/\r/' >"$csv" <<'CSV'
Path,Data type,Value,Readable,Writable,Archive,Scan rate
Plant.Line3.Flow,VT_R8,12.5,1,0,1,500
Plant.Line3.Valve,VT_BOOL,TRUE,1,1,0,1000
Plant.Line3.Level,VT_R4,high,1,1,0,1000
Plant.Line3.Mode,VT_ENUM,2,1,1,0,1000
Plant.Line3.Batches,VT_I4,=6*7,1,1,0,1000
Plant.Line3.Count,VT_UI1,300,1,1,0,1000
Plant.Line1.Speed,VT_R8,20,1,1,1,1000
CSV
profile="$DEMO/soffice-profile"
mkdir -p "$profile"
HOME="$profile" soffice -env:UserInstallation="file://$profile" --headless --norestore \
    --convert-to xlsx:"Calc MS Excel 2007 XML" --outdir "$DEMO" "$csv" >/dev/null 2>&1
book="$DEMO/bulk-items-sheet.xlsx"
[ -s "$book" ]

tray_command 213                                   # "OPC Address Space..."
frame=$(wait_window MorvaneAddressSpaceEditor " OPC Address Space")
mvwin command "$frame" 34001                       # File, "Import Workbook..."
open=$(wait_window "#32770" "Import Workbook")
mvwin settext "$open" 0x47C "$(winepath -w "$book")"
mvwin command "$open" 1
report=""
for _ in $(seq 1 50); do                           # the report: the next "Import Workbook" window
    report=$(mvwin wait "#32770" "Import Workbook" 1) || true
    [ -n "$report" ] && [ "$report" != "$open" ] && break
    sleep 0.2
done
settle
shot workbook-import "$report"
mvwin command "$report" 2                          # Cancel: nothing changes
mvwin close "$frame"
