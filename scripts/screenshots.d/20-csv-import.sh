#!/bin/bash
# The CSV import report over the editor: a file with good lines and lines
# that cannot be taken, chosen through File, "Import CSV..."; then Cancel.
# Sourced by scripts/screenshots.sh.
set -e
csv="$DEMO/bulk-items.csv"
{
    printf '\xEF\xBB\xBF'
    sed 's/$/\r/' <<'CSV'
Path,Data type,Value,Readable,Writable,Archive,Scan rate
Plant.Line3.Flow,VT_R8,12.5,1,0,1,500
Plant.Line3.Valve,VT_BOOL,True,1,1,0,1000
Plant.Line3.Level,VT_R4,high,1,1,0,1000
Plant.Line3.Mode,VT_ENUM,2,1,1,0,1000
Plant..Pump,VT_I4,1,1,1,0,1000
Plant.Line3.Setpoints,VT_R8 | VT_ARRAY,"1.5
2.5",1,1,0,250
Plant.Line1.Speed,VT_R8,20,1,1,1,1000
CSV
} >"$csv"

tray_command 213                                   # "OPC Address Space..."
frame=$(wait_window MorvaneAddressSpaceEditor " OPC Address Space")
mvwin command "$frame" 33106                       # File, "Import CSV..."
open=$(wait_window "#32770" "Import CSV")
mvwin settext "$open" 0x47C "$(winepath -w "$csv")"
mvwin command "$open" 1
report=""
for _ in $(seq 1 50); do                           # the report: the next "Import CSV" window
    report=$(mvwin wait "#32770" "Import CSV" 1) || true
    [ -n "$report" ] && [ "$report" != "$open" ] && break
    sleep 0.2
done
settle
shot csv-import "$report"
mvwin command "$report" 2                          # Cancel: nothing changes
mvwin close "$frame"
