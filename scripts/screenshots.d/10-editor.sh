#!/bin/bash
# The address space editor on the demo address space, with Plant/Line1
# selected and its list sorted by name; then the item and branch dialogs
# over it. Sourced by scripts/screenshots.sh.
set -e
tray_command 213                                   # "OPC Address Space..."
frame=$(wait_window MorvaneAddressSpaceEditor " OPC Address Space")
tree=$(mvwin child "$frame" SysTreeView32)
list=$(mvwin child "$frame" SysListView32)
mvwin size "$frame" "$(px 820)" "$(px 480)"
mvwin treeselect "$tree" 0/0                       # Plant/Line1
mvwin headerclick "$list" 0                        # sorted by "Name"
mvwin listselect "$list" 2
settle
shot editor "$frame"

mvwin command "$frame" 33111                       # Edit, "New Item..."
dialog=$(wait_window "#32770" "Add Item")
settle
shot item-dialog "$dialog"
mvwin command "$dialog" 2                          # Cancel

mvwin command "$frame" 33110                       # Edit, "New Branch..."
dialog=$(wait_window "#32770" "Add Branch")
settle
shot branch-dialog "$dialog"
mvwin command "$dialog" 2

mvwin close "$frame"                               # unchanged: closes at once
