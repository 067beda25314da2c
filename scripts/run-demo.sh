#!/bin/bash
# 'make run': prepares a demo installation folder in the build directory and
# starts the control panel from it under Wine, with the server simulator
# installed beside it as "Morvane.exe" and registered as the service
# "MorvaneDemo", archiving into an SQLite historian database.
#   - With DISPLAY set, the control panel runs on that display until the user
#     chooses Exit from its tray menu.
#   - Without a display, it runs on a private Xvfb; the tray menu is opened
#     with a real right-click, a screenshot is saved in the build directory,
#     and the program is ended through its own Exit command.
set -u
BUILD_DIR=$(realpath "$1")
SRC_DIR=$(cd "$(dirname "$0")/.." && pwd)
SHOT="$BUILD_DIR/demo-screenshot.png"

source "$SRC_DIR/scripts/demo-prepare.sh"
prepare_demo "$BUILD_DIR"
echo "Demo installation folder: $DEMO"

# Runs inside scripts/with-wine.sh.
demo_session() {
    local panel
    source "$SRC_DIR/scripts/demo-prepare.sh"
    panel=$(winepath -w "$DEMO/MorvaneGui.exe" 2>/dev/null)
    demo_start_server || { echo "run-demo.sh: could not start the server simulator" >&2; return 1; }
    if [ "${HEADLESS:-0}" = 0 ]; then
        echo "The control panel runs on $DISPLAY: right-click its tray icon; Exit ends it."
        local status=0
        wine "$panel" </dev/null >>"$BUILD_DIR/demo-wine.log" 2>&1 || status=$?
        # The service leaves with the demo, as in the headless run; a test
        # run in this build folder registers its own.
        demo_delete_server
        return $status
    fi
    wine "$panel" </dev/null >>"$BUILD_DIR/demo-wine.log" 2>&1 &
    local pid=$! shot=0
    "$SRC_DIR/scripts/demo-screenshot.sh" "$SHOT" || shot=1
    # The script ended the program through its menu; do not wait forever if
    # that did not work.
    for _ in $(seq 1 50); do
        kill -0 "$pid" 2>/dev/null || break
        sleep 0.2
    done
    if kill -0 "$pid" 2>/dev/null; then
        echo "run-demo.sh: the control panel did not end through its Exit command" >&2
        kill "$pid" 2>/dev/null
        shot=1
    fi
    demo_delete_server
    return $shot
}
export -f demo_session
export BUILD_DIR DEMO SHOT SRC_DIR

: >"$BUILD_DIR/demo-wine.log"
if [ -n "${DISPLAY:-}" ]; then
    KEEP_DISPLAY=1 HEADLESS=0 "$SRC_DIR/scripts/with-wine.sh" "$BUILD_DIR" bash -c demo_session
else
    HEADLESS=1 "$SRC_DIR/scripts/with-wine.sh" "$BUILD_DIR" bash -c demo_session || exit 1
    echo "Screenshot of the screen with the tray menu open: $SHOT"
    echo "Diagnostic log: $(ls "$DEMO"/MorvaneGui.*.log 2>/dev/null | tail -1)"
fi
