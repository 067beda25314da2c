#!/bin/bash
# A drag in the editor: the first row of Plant/Line1 dragged from the list
# and held over the branch Line2 of the tree, which is highlighted as the
# place it would move to; Esc then cancels it, so nothing moves. Sourced by
# scripts/screenshots.sh.
set -e
tray_command 213                                   # "OPC Address Space..."
frame=$(wait_window MorvaneAddressSpaceEditor " OPC Address Space")
tree=$(mvwin child "$frame" SysTreeView32)
list=$(mvwin child "$frame" SysListView32)
mvwin size "$frame" "$(px 820)" "$(px 480)"
mvwin treeselect "$tree" 0/0                       # Plant/Line1
settle
row=$(mvwin listpoint "$list" 0)
x=$((row & 0xFFFF)); y=$((row >> 16))
mvwin click "$list" "$x" "$y"                      # a click selects that row alone
settle
mvwin post "$list" 0x201 1 "$row"                  # WM_LBUTTONDOWN on the row
mvwin post "$list" 0x200 1 $((row + (40 << 16) + 40))  # WM_MOUSEMOVE off it: the list starts the drag
settle
target=$(mvwin treepoint "$tree" 0/1 "$frame")     # Plant/Line2, in the frame's client coordinates
mvwin post "$frame" 0x200 1 "$target"              # WM_MOUSEMOVE over it
settle
shot editor-drag "$frame"
mvwin post "$list" 0x100 0x1B 0                    # WM_KEYDOWN Esc: the drag ends, nothing moves
settle
mvwin close "$frame"                               # unchanged: closes at once
