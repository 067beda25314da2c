#!/bin/sh
# Builds one setup program of the control panel with NSIS (makensis).
#
# usage: installer/make-setup.sh ARCH VERSION PRODUCT PUBLISHER PANEL_EXE OUTFILE
#   ARCH       x86 (the 32-bit release) or amd64
#   VERSION    the product version, four numbers separated by dots
#   PRODUCT    the product's name, PUBLISHER its publisher
#   PANEL_EXE  the MorvaneGui.exe to install
#   OUTFILE    the setup program to write (its folder is created)
set -eu
if [ $# -ne 6 ]; then
    echo "usage: $0 ARCH VERSION PRODUCT PUBLISHER PANEL_EXE OUTFILE" >&2
    exit 2
fi
here=$(cd "$(dirname "$0")" && pwd)
if ! command -v makensis >/dev/null 2>&1; then
    echo "make-setup.sh: makensis not found; install the package nsis (scripts/install-deps.sh)" >&2
    exit 1
fi
exe=$(realpath "$5")
mkdir -p "$(dirname "$6")"
out=$(realpath "$6")
# makensis reads the script from its own folder; paths handed in are absolute.
makensis -V2 -WX \
    "-DARCH=$1" "-DVERSION=$2" "-DPRODUCT=$3" "-DPUBLISHER=$4" \
    "-DPANEL_EXE=$exe" "-DICON=$here/../res/MorvaneGui.ico" "-DOUTFILE=$out" \
    "$here/MorvaneGui.nsi"
