#!/bin/bash
# The options dialog filled from the demo settings, then the database
# maintenance options dialog that it opens; both are cancelled, so nothing
# is applied. Sourced by scripts/screenshots.sh.
set -e
tray_command 205                                   # "Options..."
dialog=$(wait_window "#32770" "Options")
settle
shot options-dialog "$dialog"

mvwin command "$dialog" 2214                       # "Database Maintenance Options ..."
db=$(wait_window "#32770" "Database Maintenance Options")
settle
shot db-options-dialog "$db"
mvwin command "$db" 2                              # Cancel
settle
mvwin command "$dialog" 2                          # Cancel
