#!/bin/bash
# Sets the display scale of the Wine prefix in WINEPREFIX: the LogPixels
# value under HKCU\Control Panel\Desktop, which Wine 8 reads when a process
# starts (the system DPI, the fonts and the system metrics follow it).
# Programs started afterwards run at it; the desktop process keeps the scale
# it started with until the wineserver starts again, and Wine maps window
# rectangles between processes with it (scripts/with-wine.sh restarts it).
#
# usage: scripts/set-dpi.sh DPI     (96 = 100 %, 120, 144, 192 = 200 %)
set -u
dpi=${1:?usage: set-dpi.sh DPI}
wine reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "$dpi" /f </dev/null >/dev/null 2>&1
