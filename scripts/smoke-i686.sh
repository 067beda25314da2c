#!/bin/bash
# Smoke test of the 32-bit release build (the build users install) under a
# 32-bit Wine: the control panel starts from an installation folder of its
# own, shows its notification icon, opens its tray menu, and ends through the
# menu's Exit with exit code 0.
#
# It needs a Wine that runs 32-bit programs (WINEARCH=win32): Debian 13's
# wine with wine32:i386. Debian 12's wine64-only installation cannot (see
# the README), so this is not part of 'make test'; 'make smoke-i686' runs it.
#
# The program runs in a Wine virtual desktop with the shell's taskbar, so
# that its icon is on the screen (Wine 10 shows no tray window of its own on
# a bare X display): screenshots of the icon and of the open menu are saved
# as BUILD_DIR/smoke-tray.png and BUILD_DIR/smoke-menu.png. The tray menu is
# opened as the shell does on a right-click (the icon's callback message),
# Exit is clicked with the real mouse, and the closing question is answered
# Yes. mvwin (tools/wintool, built in the 32-bit build too) finds the windows.
#
# usage: scripts/smoke-i686.sh [BUILD_DIR]      (default build/i686)
set -u
SRC_DIR=$(cd "$(dirname "$0")/.." && pwd)
BUILD_DIR=$(realpath "${1:-$SRC_DIR/build/i686}")

if [ -z "${MORVANE_SMOKE_SESSION:-}" ]; then
    for f in MorvaneGui.exe mvwin.exe; do
        [ -f "$BUILD_DIR/bin/$f" ] || { echo "smoke-i686.sh: no $BUILD_DIR/bin/$f; run 'make build-i686' first" >&2; exit 2; }
    done
    if ! command -v xdotool >/dev/null; then
        echo "smoke-i686.sh: needs xdotool" >&2; exit 2
    fi
    MORVANE_SMOKE_SESSION=1 MORVANE_WINEARCH=win32 MORVANE_POSTGRES=0 \
        exec "$SRC_DIR/scripts/with-wine.sh" "$BUILD_DIR" "$0" "$BUILD_DIR"
fi

# ---- inside the 32-bit Wine session ------------------------------------------
INSTALL="$BUILD_DIR/smoke"
LOG="$BUILD_DIR/smoke-wine.log"
: >"$LOG"
fail() {
    echo "smoke-i686.sh: $*" >&2
    import -window root "$BUILD_DIR/smoke-failure.png" 2>/dev/null && echo "the screen: $BUILD_DIR/smoke-failure.png" >&2
    exit 1
}
mvwin() {
    wine "$BUILD_DIR/bin/mvwin.exe" "$@" </dev/null 2>>"$LOG" | tr -d '\r'
    return "${PIPESTATUS[0]}"
}

if [ "$(wine cmd /c 'echo %PROCESSOR_ARCHITECTURE%' </dev/null 2>/dev/null | tr -d '\r')" != x86 ]; then
    fail "the Wine prefix $WINEPREFIX is not a 32-bit one (WINEARCH=win32 needs wine32)"
fi

mkdir -p "$INSTALL/Historian"
cp "$BUILD_DIR/bin/MorvaneGui.exe" "$INSTALL/"
sed "s|@HISTORIAN_DB@|$INSTALL/Historian/Historian.db|" "$SRC_DIR/scripts/demo/Morvane.ini.xml" >"$INSTALL/Morvane.ini.xml"

# Every program of this prefix runs in the virtual desktop "shell", which
# has the taskbar with the notification area.
wine reg add 'HKCU\Software\Wine\Explorer' /v Desktop /t REG_SZ /d shell /f </dev/null >>"$LOG" 2>&1
wine reg add 'HKCU\Software\Wine\Explorer\Desktops' /v shell /t REG_SZ /d 1024x768 /f </dev/null >>"$LOG" 2>&1

echo "32-bit control panel under $(wine --version 2>/dev/null) ($WINEARCH prefix $WINEPREFIX)"
wine "$INSTALL/MorvaneGui.exe" </dev/null >>"$LOG" 2>&1 &
panel=$!

tray=$(mvwin find MorvaneGuiTrayWindow - 30) || fail "the control panel did not start (no tray window within 30 s)"
echo "started: tray window $tray"
# CDummyWnd::kTrayIconId
for _ in $(seq 1 50); do
    mvwin trayicon "$tray" 1234 && break
    sleep 0.2
done
mvwin trayicon "$tray" 1234 || fail "the shell holds no notification icon of the control panel"
sleep 1
import -window root "$BUILD_DIR/smoke-tray.png"
echo "notification icon shown: $BUILD_DIR/smoke-tray.png"

# The icon's callback message (CDummyWnd::kShellNoteMessage = WM_USER + 1)
# with WM_RBUTTONDOWN, as the shell sends it on a right-click.
mvwin post "$tray" 0x401 1234 0x204 || fail "could not post to the tray window"
menu=$(mvwin wait '#32768' - 10) || fail "the tray menu did not open"
read -r x y w h < <(mvwin rect "$menu") || fail "no rectangle for the tray menu"
sleep 0.5
import -window root "$BUILD_DIR/smoke-menu.png"
echo "tray menu open at $x,$y (${w}x$h): $BUILD_DIR/smoke-menu.png"

# Exit is the menu's last entry. The virtual desktop's window may sit
# anywhere on the X screen: its origin is added.
desktop=$(xdotool search --name 'Wine desktop' 2>/dev/null | head -1)
X=0 Y=0
[ -n "$desktop" ] && eval "$(xdotool getwindowgeometry --shell "$desktop" | grep -E '^[XY]=')"
xdotool mousemove $((X + x + 20)) $((Y + y + h - 10)) click 1
# "Have you closed all the windows of this application?"
box=$(mvwin wait '#32770' - 10) || fail "Exit asked no question (was Exit clicked?)"
mvwin command "$box" 6 || fail "could not answer the question"   # IDYES
status=""
for _ in $(seq 1 100); do
    if ! kill -0 "$panel" 2>/dev/null; then
        wait "$panel"; status=$?
        break
    fi
    sleep 0.2
done
[ -n "$status" ] || { kill "$panel" 2>/dev/null; fail "the control panel did not end after Exit"; }
[ "$status" = 0 ] || fail "the control panel ended with exit code $status"
echo "ended through Exit with exit code 0: the 32-bit smoke test passed"
