#!/bin/bash
# 'make screenshots': pictures of the program's windows for the README,
# taken headless on a private Xvfb (scripts/with-wine.sh) from the real
# MorvaneGui.exe in the demo installation (scripts/demo-prepare.sh), with the
# server simulator running as its service. Every script in
# scripts/screenshots.d/ (in name order) opens its windows, captures them
# with the functions of scripts/screenshots-lib.sh and closes them again;
# the PNGs go to docs/screenshots/. The program is ended through its own
# Exit command. A second session at 144 dpi takes the main windows again
# into docs/screenshots/hidpi/.
#
# usage: scripts/screenshots.sh BUILD_DIR
set -u
BUILD_DIR=$(realpath "$1")
SRC_DIR=$(cd "$(dirname "$0")/.." && pwd)
SHOTS_DIR="$SRC_DIR/docs/screenshots"
mkdir -p "$SHOTS_DIR"

source "$SRC_DIR/scripts/demo-prepare.sh"
prepare_demo "$BUILD_DIR"
# The demo's own address space, not what an earlier session left.
cp "$SRC_DIR/scripts/demo/DefaultAddressSpace.xml" "$DEMO/"

screenshot_session() {
    source "$SRC_DIR/scripts/demo-prepare.sh"
    source "$SRC_DIR/scripts/screenshots-lib.sh"
    local panel status=0 pid box
    demo_start_server || return 1
    panel=$(winepath -w "$DEMO/MorvaneGui.exe" 2>/dev/null)
    wine "$panel" </dev/null >>"$DEMO_LOG" 2>&1 &
    pid=$!
    mvwin find MorvaneGuiTrayWindow - 30 >/dev/null || { echo "screenshots: the control panel did not start" >&2; status=1; }
    if [ $status = 0 ]; then
        for script in "$SRC_DIR"/scripts/screenshots.d/*.sh; do
            [ -f "$script" ] || continue
            if [ -n "${SHOT_SCRIPTS:-}" ] && [[ " $SHOT_SCRIPTS " != *" $(basename "$script" .sh) "* ]]; then continue; fi
            echo "screenshots: $(basename "$script")"
            ( source "$script" ) || { echo "screenshots: $(basename "$script") failed" >&2; status=1; }
        done
    fi
    # Exit, and Yes to "Have you closed all the windows of this application?".
    tray_command 206
    box=$(mvwin wait "#32770" Exit 10) && mvwin command "$box" 6
    for _ in $(seq 1 50); do
        kill -0 "$pid" 2>/dev/null || break
        sleep 0.2
    done
    kill "$pid" 2>/dev/null
    demo_delete_server
    return $status
}
export -f screenshot_session
export BUILD_DIR SRC_DIR SHOTS_DIR DEMO DEMO_LOG

: >"$DEMO_LOG"
"$SRC_DIR/scripts/with-wine.sh" "$BUILD_DIR" bash -c screenshot_session || exit 1

# The main windows once more at 150 % (144 dpi), in a session started at
# that scale, into docs/screenshots/hidpi/.
mkdir -p "$SHOTS_DIR/hidpi"
SHOTS_DIR="$SHOTS_DIR/hidpi" SHOT_DPI=144 MORVANE_DPI=144 \
    SHOT_SCRIPTS="10-editor 30-options 40-historian 45-trend-chart" \
    SHOT_ONLY="editor options-dialog db-explorer historical-data-chart" \
    "$SRC_DIR/scripts/with-wine.sh" "$BUILD_DIR" bash -c screenshot_session
