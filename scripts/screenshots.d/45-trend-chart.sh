#!/bin/bash
# The historical data window of one of the demo's live items with its trend
# chart: the values shown and the bar between list and chart dragged up to
# give the chart more room; then the chart zoomed into the latest values by
# the mouse wheel, with the value under the pointer hovered. Sourced by
# scripts/screenshots.sh.
set -e
tray_command 32813                                 # "OPC HDA Database Explorer..."
frame=$(wait_window MorvaneDBExplorer "Varnel OPC HDA Database Explorer")
list=$(mvwin child "$frame" SysListView32)
mvwin command "$frame" 32810                       # Refresh: the values archived meanwhile
mvwin listselect "$list" 1
mvwin command "$frame" 32811                       # "Show selected item values..."
dialog=$(wait_window "#32770" "Historical data")
mvwin size "$dialog" "$(px 820)" "$(px 640)"
point() { echo $(( (($2 & 0xFFFF) << 16) | ($1 & 0xFFFF) )); }   # MAKELPARAM(x, y)
bar=$(mvwin child "$dialog" MorvaneSplitBar)
mvwin post "$bar" 0x201 1 "$(point 20 2)"          # WM_LBUTTONDOWN on the bar
mvwin post "$bar" 0x200 1 "$(point 20 "$(px -150)")" # WM_MOUSEMOVE: 152 pixels (at 96 dpi) up
mvwin post "$bar" 0x202 0 "$(point 20 "$(px -150)")" # WM_LBUTTONUP
mvwin command "$dialog" 1039                       # "Show data"
settle
shot historical-data-chart "$dialog"

# The wheel turned with the pointer near the chart's right end zooms into
# the latest values (15 notches: 3.5 % of the range); then the pointer
# rests on the line.
chart=$(mvwin child "$dialog" MorvaneTrendChart)
read -r x0 y0 w h < <(mvwin rect "$chart")
y=$((h / 2))
mvwin post "$chart" 0x20A $((15 * 120 << 16)) "$(point $((x0 + w - 80)) $((y0 + y)))"   # WM_MOUSEWHEEL, screen point
mvwin post "$chart" 0x200 0 "$(point $((w * 60 / 100)) $y)"                           # WM_MOUSEMOVE: hover
settle
shot historical-data-chart-zoomed "$dialog"
mvwin command "$dialog" 2                          # closes it
settle
mvwin close "$frame"
