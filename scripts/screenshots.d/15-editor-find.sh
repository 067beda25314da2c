#!/bin/bash
# The editor's Find dialog listing the matches of a part of a path while the
# user types. Sourced by scripts/screenshots.sh.
set -e
tray_command 213                                   # "OPC Address Space..."
frame=$(wait_window MorvaneAddressSpaceEditor " OPC Address Space")
mvwin size "$frame" 820 480
mvwin command "$frame" 33117                       # Edit, "Find..."
dialog=$(wait_window "#32770" "Find")
mvwin settext "$dialog" 1160 "line"                # matches appear while typing
settle
shot editor-find "$dialog"
mvwin command "$dialog" 2                          # Close
mvwin close "$frame"                               # unchanged: closes at once
