#!/bin/bash
# The change history after two real changes made through the program: the
# server's title changed in the Options dialog (the service restarted, the
# previous settings backed up), then a branch added in the editor and
# saved to the server (both address spaces kept as versions). The history
# is opened from the editor's View menu with the save selected; closing it
# leaves the editor as it was. Sourced by scripts/screenshots.sh.
set -e

# Waits for a top-level window of the title other than the one given.
wait_other_window() {
    local hwnd=""
    for _ in $(seq 1 150); do
        hwnd=$(mvwin wait "#32770" "$1" 1) || true
        [ -n "$hwnd" ] && [ "$hwnd" != "$2" ] && { echo "$hwnd"; return 0; }
        sleep 0.2
    done
    echo "screenshots: no second window \"$1\"" >&2
    return 1
}

tray_command 205                                   # "Options..."
options=$(wait_window "#32770" "Options")
mvwin settext "$options" 2222 "Varnel North"       # the title
mvwin command "$options" 1                         # OK
question=$(wait_window "#32770" "Ok")              # the restart question
mvwin command "$question" 6                        # Yes
applied=$(wait_other_window "Ok" "$question")      # "The new settings were successfully applied..."
mvwin command "$applied" 1
settle

tray_command 213                                   # "OPC Address Space..."
frame=$(wait_window MorvaneAddressSpaceEditor " OPC Address Space")
mvwin command "$frame" 33110                       # Edit, "New Branch..."
branch=$(wait_window "#32770" "Add Branch")
mvwin settext "$branch" 1140 "Line4"
mvwin command "$branch" 1                          # Save
settle
mvwin command "$frame" 33102                       # File, "Save"
save=$(wait_window "#32770" "Save")
mvwin command "$save" 6                            # Yes
settle 2

mvwin command "$frame" 34200                       # View, "Change History..."
history=$(wait_window "#32770" "Change History")
mvwin size "$history" "$(px 900)" "$(px 520)"
list=$(mvwin child "$history" SysListView32)
mvwin listselect "$list" 0
settle
shot change-history "$history"
mvwin command "$history" 2                         # Close
settle
mvwin close "$frame"                               # saved: closes at once
