#!/bin/bash
# The historical data window of one of the demo's live items with its trend
# chart: the values shown and the bar between list and chart dragged up to
# give the chart more room; then the chart zoomed into a part of the values
# by a drag across it, with the value under the pointer hovered. Sourced by
# scripts/screenshots.sh.
set -e
tray_command 32813                                 # "OPC HDA Database Explorer..."
frame=$(wait_window MorvaneDBExplorer "Varnel OPC HDA Database Explorer")
list=$(mvwin child "$frame" SysListView32)
mvwin command "$frame" 32810                       # Refresh: the values archived meanwhile
mvwin listselect "$list" 1
mvwin command "$frame" 32811                       # "Show selected item values..."
dialog=$(wait_window "#32770" "Historical data")
mvwin size "$dialog" 820 640
point() { echo $(( (($2 & 0xFFFF) << 16) | ($1 & 0xFFFF) )); }   # MAKELPARAM(x, y)
bar=$(mvwin child "$dialog" MorvaneSplitBar)
mvwin post "$bar" 0x201 1 "$(point 20 2)"          # WM_LBUTTONDOWN on the bar
mvwin post "$bar" 0x200 1 "$(point 20 -150)"       # WM_MOUSEMOVE: 152 pixels up
mvwin post "$bar" 0x202 0 "$(point 20 -150)"       # WM_LBUTTONUP
mvwin command "$dialog" 1039                       # "Show data"
settle
shot historical-data-chart "$dialog"

# A drag with the left button across the middle third of the chart zooms
# into that time range; then the pointer rests on the line.
chart=$(mvwin child "$dialog" MorvaneTrendChart)
read -r _ _ w h < <(mvwin rect "$chart")
y=$((h / 2))
mvwin post "$chart" 0x201 1 "$(point $((w * 40 / 100)) $y)"   # WM_LBUTTONDOWN
mvwin post "$chart" 0x200 1 "$(point $((w * 55 / 100)) $y)"   # WM_MOUSEMOVE
mvwin post "$chart" 0x200 1 "$(point $((w * 70 / 100)) $y)"
mvwin post "$chart" 0x202 0 "$(point $((w * 70 / 100)) $y)"   # WM_LBUTTONUP
mvwin post "$chart" 0x200 0 "$(point $((w * 50 / 100)) $y)"   # hover
settle
shot historical-data-chart-zoomed "$dialog"
mvwin command "$dialog" 2                          # closes it
settle
mvwin close "$frame"
