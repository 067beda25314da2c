#!/bin/bash
# 'make run': prepares a demo installation folder in the build directory and
# starts the control panel from it under Wine.
#   - With DISPLAY set, the control panel runs on that display until the user
#     chooses Exit from its tray menu.
#   - Without a display, it runs on a private Xvfb for a few seconds; a
#     screenshot of the screen is saved in the build directory.
set -u
BUILD_DIR=$(realpath "$1")
SRC_DIR=$(cd "$(dirname "$0")/.." && pwd)
DEMO="$BUILD_DIR/demo"
SHOT="$BUILD_DIR/demo-screenshot.png"

mkdir -p "$DEMO"
cp "$BUILD_DIR/bin/MorvaneGui.exe" "$DEMO/"
if [ ! -f "$DEMO/Morvane.ini.xml" ]; then
    cp "$SRC_DIR/scripts/demo/Morvane.ini.xml" "$DEMO/"
fi
echo "Demo installation folder: $DEMO"

# Runs inside scripts/with-wine.sh.
demo_session() {
    local winpath
    winpath=$(winepath -w "$DEMO/MorvaneGui.exe" 2>/dev/null)
    if [ "${HEADLESS:-0}" = 0 ]; then
        echo "Starting the control panel on $DISPLAY; use its tray icon, Exit ends it."
        wine "$winpath" </dev/null >"$BUILD_DIR/demo-wine.log" 2>&1
        return $?
    fi
    wine "$winpath" </dev/null >"$BUILD_DIR/demo-wine.log" 2>&1 &
    sleep "${DEMO_SECONDS:-6}"
    "$SRC_DIR/scripts/demo-screenshot.sh" "$SHOT"
}
export -f demo_session
export BUILD_DIR DEMO SHOT SRC_DIR

if [ -n "${DISPLAY:-}" ]; then
    KEEP_DISPLAY=1 HEADLESS=0 "$SRC_DIR/scripts/with-wine.sh" "$BUILD_DIR" bash -c demo_session
else
    HEADLESS=1 "$SRC_DIR/scripts/with-wine.sh" "$BUILD_DIR" bash -c demo_session || exit 1
    echo "Screenshot of the screen saved to $SHOT"
    echo "Diagnostic log: $(ls "$DEMO"/MorvaneGui.*.log 2>/dev/null | tail -1)"
fi
