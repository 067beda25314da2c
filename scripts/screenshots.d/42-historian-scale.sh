#!/bin/bash
# The database explorer narrowed by its filter box, and the time period
# dialog of "Export values..." for the items shown; the dialog is cancelled,
# so nothing is written. Sourced by scripts/screenshots.sh.
set -e
tray_command 32813                                 # "OPC HDA Database Explorer..."
frame=$(wait_window MorvaneDBExplorer "Varnel OPC HDA Database Explorer")
mvwin size "$frame" 760 420
bar=$(mvwin child "$frame" "#32770")               # the filter bar
mvwin settext "$bar" 1602 "line1"                  # items whose ID contains "line1"
mvwin command "$frame" 32832                       # Select all (the rows shown)
settle
shot db-explorer-filtered "$frame"

mvwin command "$frame" 32830                       # "Export values..."
dialog=$(wait_window "#32770" "Export values of the selected items")
settle
shot export-period-dialog "$dialog"
mvwin command "$dialog" 2                          # Cancel: nothing is written
settle
mvwin close "$frame"
