#!/bin/bash
# Headless demo: waits for the control panel's tray icon, opens its menu with
# a real right-click, saves a screenshot of the whole display to $1, then ends
# the program through its own menu: a click on Exit, the question answered Yes.
set -u
SHOT=$1
tray=""
for _ in $(seq 1 100); do
    tray=$(xdotool search --name "Wine System Tray" 2>/dev/null | head -1)
    [ -n "$tray" ] && break
    sleep 0.2
done
if [ -z "$tray" ]; then
    echo "demo-screenshot.sh: no tray icon appeared" >&2
    import -window root "$SHOT"
    exit 1
fi
sleep 1
eval "$(xdotool getwindowgeometry --shell "$tray")"
# The first icon sits in the bottom-left corner, below the title bar.
clickX=$((X + 13)) clickY=$((Y + HEIGHT - 13))
xdotool mousemove "$clickX" "$clickY" click 3
sleep 1.5
import -window root "$SHOT"

# The menu opens at the click; Exit is its last entry.
menu=$(xwininfo -root -tree | grep -i 'morvanegui.exe' | grep -E "\+$clickX\+$clickY +\+" | head -1)
if [ -z "$menu" ]; then
    echo "demo-screenshot.sh: the tray menu did not open" >&2
    exit 1
fi
size=$(echo "$menu" | grep -oE '[0-9]+x[0-9]+\+' | head -1)
height=${size#*x}; height=${height%+}
xdotool mousemove $((clickX + 20)) $((clickY + height - 12)) click 1
sleep 1.5
# "Have you closed all the windows of this application?": Yes is the default button.
xdotool key Return
