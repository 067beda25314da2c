#!/bin/bash
# The review of changes with a conflict and a historian impact: the editor
# deletes the branch Plant/Line1 (Speed and Running have archived values);
# meanwhile the server was restarted on a file in which someone else gave
# Speed another scan rate and removed Heartbeat. File, "Review Changes..."
# then "The server now": Speed is a conflict, Heartbeat the server's own
# change. Then the editor closes without saving. Sourced by scripts/screenshots.sh.
set -e
tray_command 213                                   # "OPC Address Space..."
frame=$(wait_window MorvaneAddressSpaceEditor " OPC Address Space")
tree=$(mvwin child "$frame" SysTreeView32)
mvwin treeselect "$tree" 0/0                       # Plant/Line1, the tree has the focus
mvwin command "$frame" 33112                       # Edit, "Delete": the branch goes
settle

# Someone else's change, taken by the server at its restart.
wine sc stop MorvaneDemo </dev/null >>"$DEMO_LOG" 2>&1 || true
sleep 2
file="$DEMO/DefaultAddressSpace.xml"
sed -i -e 's/\(<Item Name="Speed"[^>]*ScanRate="\)1000"/\1250"/' \
       -e 's#<Item Name="Heartbeat"[^>]*><Value>7</Value></Item>##' "$file"
wine sc start MorvaneDemo </dev/null >>"$DEMO_LOG" 2>&1 || true
sleep 2

mvwin command "$frame" 34100                       # File, "Review Changes..."
review=$(wait_window "#32770" "Review Changes")
mvwin size "$review" "$(px 980)" "$(px 440)"
combo=$(mvwin child "$review" ComboBox)
mvwin post "$combo" 0x14E 1 0                      # CB_SETCURSEL: "The server now"
mvwin post "$review" 0x111 $(( (1 << 16) | 3102 )) 0   # CBN_SELCHANGE of the source
settle 4
shot review-changes "$review"
mvwin command "$review" 2                          # Close
settle
mvwin close "$frame"
box=$(wait_window "#32770" "Save")                 # "Do you want to save your changes?"
mvwin command "$box" 7                             # No
