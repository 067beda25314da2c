#!/bin/bash
# Shell functions for the screenshot scripts (scripts/screenshots.d/*.sh),
# sourced by scripts/screenshots.sh inside the Wine session where the demo
# control panel runs. Windows are found and driven with the test tool mvwin
# (tools/wintool) and captured from the X display with ImageMagick.
#   mvwin ARGS...             runs the tool, prints its answer (see mvwin.cpp)
#   tray_command ID           posts a tray menu command (213 = "OPC Address Space...")
#   wait_window CLASS TITLE   the handle of a visible top-level window, waiting up to 30 s
#   settle                    lets the program paint
#   shot NAME HWND            writes docs/screenshots/NAME.png of the window's rectangle
#                             (only the names in SHOT_ONLY when it is set)
#   px N                      N pixels at 96 dpi at the session's DPI (SHOT_DPI)
# Variables: BUILD_DIR, SRC_DIR, SHOTS_DIR, SHOT_DPI, SHOT_ONLY.

mvwin() {
    wine "$BUILD_DIR/bin/mvwin.exe" "$@" </dev/null 2>/dev/null | tr -d '\r'
    return "${PIPESTATUS[0]}"
}

tray_command() {
    local tray
    tray=$(mvwin find MorvaneGuiTrayWindow - 30) || { echo "screenshots: no tray window" >&2; return 1; }
    mvwin command "$tray" "$1"
}

wait_window() {
    local hwnd
    hwnd=$(mvwin wait "$1" "$2" 30) || { echo "screenshots: no window \"$2\"" >&2; return 1; }
    echo "$hwnd"
}

settle() {
    sleep "${1:-1}"
}

px() {
    echo $(( $1 * ${SHOT_DPI:-96} / 96 ))
}

shot() {
    local name=$1 hwnd=$2 x y w h
    if [ -n "${SHOT_ONLY:-}" ] && [[ " $SHOT_ONLY " != *" $name "* ]]; then return 0; fi
    read -r x y w h < <(mvwin rect "$hwnd") || { echo "screenshots: no rectangle for $name" >&2; return 1; }
    import -window root -crop "${w}x${h}+${x}+${y}" +repage "$SHOTS_DIR/$name.png" &&
        echo "screenshots: $SHOTS_DIR/$name.png (${w}x${h})"
}
