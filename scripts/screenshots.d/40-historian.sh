#!/bin/bash
# The database explorer over the demo historian (the simulator's live
# items), the historical data window of one item with its values shown, and
# the time period dialog of "Delete selected item values"; the dialogs are
# cancelled, so nothing is deleted. Sourced by scripts/screenshots.sh.
set -e
tray_command 32813                                 # "OPC HDA Database Explorer..."
frame=$(wait_window MorvaneDBExplorer "Varnel OPC HDA Database Explorer")
list=$(mvwin child "$frame" SysListView32)
mvwin size "$frame" "$(px 760)" "$(px 420)"
mvwin command "$frame" 32810                       # Refresh: the values archived meanwhile
mvwin listselect "$list" 1
settle
shot db-explorer "$frame"

mvwin command "$frame" 32811                       # "Show selected item values..."
dialog=$(wait_window "#32770" "Historical data")
mvwin command "$dialog" 1039                       # "Show data"
settle
shot historical-data "$dialog"
mvwin command "$dialog" 2                          # closes it
settle

mvwin listselect "$list" 1
mvwin command "$frame" 32809                       # "Delete selected item values from database..."
dialog=$(wait_window "#32770" "Delete selected items values from database")
settle
shot time-period-dialog "$dialog"
mvwin command "$dialog" 2                          # Cancel: nothing is deleted
settle
mvwin close "$frame"
