#!/bin/bash
# Runs one command inside a private Wine environment:
#   - WINEPREFIX inside the build directory (created once, then reused),
#     64-bit, or as MORVANE_WINEARCH says (win32 for the 32-bit build's
#     smoke test, scripts/smoke-i686.sh),
#   - an Xvfb display on a free display number (unless KEEP_DISPLAY=1 and
#     DISPLAY is already set),
#   - one persistent wineserver for the whole run, so services and processes
#     survive between test programs,
#   - the locale pinned so that number formats are the same everywhere,
#   - the display scale pinned to 96 dpi, or to MORVANE_DPI when it is set
#     (the window tests run once more at 144 dpi this way),
#   - the time zone pinned to UTC, or to MORVANE_TZ when it is set (Wine
#     takes the zone from TZ when its session starts; the local-time tests
#     run once more in another zone this way),
#   - the historian's test databases: a user ODBC data source file
#     (ODBCINI, inside the build directory) with the data source
#     "MorvaneTestDsn" (SQLite, for the ADO tests), and a private PostgreSQL
#     server (scripts/test-postgres.sh) whose ODBC connection string is
#     passed on in MORVANE_TEST_POSTGRES (Wine hands Unix environment
#     variables to Windows programs). MORVANE_POSTGRES=0 skips the server.
# Everything it started is stopped again when the command ends, also on
# failure or interruption. The command's exit code is returned.
#
# usage: scripts/with-wine.sh BUILD_DIR COMMAND [ARGS...]
set -u
BUILD_DIR=$(realpath "$1"); shift

export LANG=C.UTF-8 LC_ALL=C.UTF-8 TZ="${MORVANE_TZ:-UTC}"
[ -n "${MORVANE_TZ:-}" ] && export MORVANE_TZ
export WINEARCH=${MORVANE_WINEARCH:-win64} WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=,winemenubuilder.exe=d"
export WINEPREFIX="$BUILD_DIR/wineprefix"
export MORVANE_BUILD_DIR="$BUILD_DIR"

XVFB_PID=""
POSTGRES_STARTED=0
SCRIPT_DIR=$(cd "$(dirname "$0")" && pwd)
cleanup() {
    wineserver -k >/dev/null 2>&1
    if [ "$POSTGRES_STARTED" = 1 ]; then
        "$SCRIPT_DIR/test-postgres.sh" stop "$BUILD_DIR"
    fi
    if [ -n "$XVFB_PID" ]; then
        kill "$XVFB_PID" >/dev/null 2>&1
        wait "$XVFB_PID" 2>/dev/null
    fi
}
trap cleanup EXIT
trap 'exit 130' INT TERM HUP

# Xvfb picks a free display number itself (-displayfd) and writes it out once
# it accepts connections. Probing lock files from here instead would race with
# another run starting at the same moment: both would pick the same number and
# the loser would end up on the winner's display.
start_xvfb() {
    local numberFile="$BUILD_DIR/xvfb.display" n
    rm -f "$numberFile"
    Xvfb -displayfd 3 -screen 0 "${MORVANE_SCREEN:-2560x1600x24}" -nolisten tcp 3>"$numberFile" >"$BUILD_DIR/xvfb.log" 2>&1 &
    XVFB_PID=$!
    for _ in $(seq 1 100); do
        n=$(head -n 1 "$numberFile" 2>/dev/null)
        if [ -n "$n" ] && xdpyinfo -display ":$n" >/dev/null 2>&1; then
            export DISPLAY=":$n"
            return 0
        fi
        if ! kill -0 "$XVFB_PID" 2>/dev/null; then break; fi
        sleep 0.1
    done
    kill "$XVFB_PID" 2>/dev/null; XVFB_PID=""
    echo "with-wine.sh: could not start Xvfb (see $BUILD_DIR/xvfb.log)" >&2
    return 1
}

prepare_prefix() {
    if [ -f "$WINEPREFIX/.morvane-ready" ]; then return 0; fi
    echo "with-wine.sh: creating the Wine prefix in $WINEPREFIX"
    rm -rf "$WINEPREFIX"
    wineboot -i >"$BUILD_DIR/wineboot.log" 2>&1 || return 1
    wineserver -w
    # No window manager on Xvfb: unmanaged windows close without a 2 s wait.
    wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /t REG_SZ /d N /f >/dev/null 2>&1 || return 1
    # A crashing program must end its test, not wait for a click on a dialog.
    wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f >/dev/null 2>&1 || return 1
    wineserver -w
    touch "$WINEPREFIX/.morvane-ready"
}

# The test data source, registered where each driver manager looks: Wine 8
# hands DSN= strings to the host's unixODBC, which reads the user data
# source file ODBCINI; Wine 10 copies that file's sources into the registry
# but finds a source's driver through the value
# HKCU\Software\ODBC\ODBC.INI\ODBC Data Sources\<name>, which it leaves empty.
# The registry value is written on every run, so that prefixes made before
# it was needed get it too.
prepare_odbc() {
    mkdir -p "$BUILD_DIR/odbc" || return 1
    export ODBCINI="$BUILD_DIR/odbc/odbc.ini"
    printf '[MorvaneTestDsn]\nDriver=SQLite3\nDatabase=%s\n' "$BUILD_DIR/odbc/MorvaneTestDsn.db" >"$ODBCINI"
}

register_odbc() {
    wine reg add 'HKCU\Software\ODBC\ODBC.INI\ODBC Data Sources' /v MorvaneTestDsn /t REG_SZ /d SQLite3 /f \
        </dev/null >/dev/null 2>&1
}

start_postgres() {
    [ "${MORVANE_POSTGRES:-1}" = 0 ] && return 0
    local connection
    if connection=$("$SCRIPT_DIR/test-postgres.sh" start "$BUILD_DIR"); then
        POSTGRES_STARTED=1
        export MORVANE_TEST_POSTGRES="$connection"
    else
        echo "with-wine.sh: no PostgreSQL server for the tests; its tests will fail" >&2
    fi
}

if [ "${KEEP_DISPLAY:-0}" = 1 ] && [ -n "${DISPLAY:-}" ]; then
    :
else
    # Xvfb has been seen to end at once, with nothing in its log, right after
    # another session's server went away; a second start then works.
    start_xvfb || start_xvfb || start_xvfb || exit 1
fi
prepare_prefix || { echo "with-wine.sh: could not prepare the Wine prefix" >&2; exit 1; }
prepare_odbc || { echo "with-wine.sh: could not write the ODBC data source file" >&2; exit 1; }
start_postgres
wineserver -p
register_odbc || { echo "with-wine.sh: could not register the test data source in the Wine registry" >&2; exit 1; }
# The display scale. The session's first Wine process (here, the one that
# writes the value) starts the desktop process, which keeps the scale it
# read then: Wine maps window rectangles between processes with it. The
# wineserver starts again so that the desktop starts at the new scale.
"$SCRIPT_DIR/set-dpi.sh" "${MORVANE_DPI:-96}"
wineserver -k
wineserver -w
wineserver -p
# Start the prefix's background processes now, detached from any caller's pipes.
wine cmd /c exit </dev/null >/dev/null 2>&1
"$@"
