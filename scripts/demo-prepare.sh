#!/bin/bash
# The demo installation folder, shared by 'make run' (scripts/run-demo.sh)
# and 'make screenshots' (scripts/screenshots.sh): sourced, it defines
#   prepare_demo BUILD_DIR   fills BUILD_DIR/demo: the control panel, the
#                            server simulator as Morvane.exe, a settings file
#                            whose historian is demo/Historian/Historian.db,
#                            and the demo address space (kept when present)
#   demo_start_server        registers and starts the simulator's service
#                            "MorvaneDemo" (inside scripts/with-wine.sh)
#   demo_delete_server       stops and deletes it again
# and exports DEMO (the folder) and DEMO_LOG (Wine's output, beside it).
prepare_demo() {
    local build_dir=$1 src_dir
    src_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
    DEMO="$build_dir/demo"
    DEMO_LOG="$build_dir/demo-wine.log"
    export DEMO DEMO_LOG
    mkdir -p "$DEMO/Historian"
    cp "$build_dir/bin/MorvaneGui.exe" "$DEMO/"
    cp "$build_dir/bin/server_sim.exe" "$DEMO/Morvane.exe"
    sed "s|@HISTORIAN_DB@|$DEMO/Historian/Historian.db|" "$src_dir/scripts/demo/Morvane.ini.xml" >"$DEMO/Morvane.ini.xml"
    [ -f "$DEMO/DefaultAddressSpace.xml" ] || cp "$src_dir/scripts/demo/DefaultAddressSpace.xml" "$DEMO/"
}

demo_start_server() {
    local server
    server=$(winepath -w "$DEMO/Morvane.exe" 2>/dev/null)
    wine "$server" --register-service </dev/null >>"$DEMO_LOG" 2>&1 ||
        { echo "could not register the server simulator" >&2; return 1; }
    wine sc start MorvaneDemo </dev/null >>"$DEMO_LOG" 2>&1
}

demo_delete_server() {
    local server
    server=$(winepath -w "$DEMO/Morvane.exe" 2>/dev/null)
    wine "$server" --delete-service </dev/null >>"$DEMO_LOG" 2>&1
}
