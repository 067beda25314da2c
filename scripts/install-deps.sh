#!/bin/bash
# Installs the Debian packages the build, the tests and the demo need, but only
# those that are missing. A mirror may fail one index during 'apt-get update';
# what counts is whether the packages themselves install.
#
# The same package names serve Debian 12 (Wine 8.0, PostgreSQL 15) and
# Debian 13 (Wine 10.0, PostgreSQL 17): scripts/test-postgres.sh takes the
# newest server under /usr/lib/postgresql/<version>/bin, and the ODBC
# drivers' templates below have the same paths in both.
#
# "install-deps.sh wine32" adds instead the 32-bit Wine that the smoke test
# of the 32-bit build needs (scripts/smoke-i686.sh): wine32:i386, after the
# i386 architecture, on Debian 13 or later. Debian 12 cannot install it (the
# i386 index of its security suite does not download, so i386 and amd64
# library versions cannot match): there the script stops and says so.
set -u
PACKAGES="cmake make g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix mingw-w64-tools
 wine wine64 libwine xvfb xauth x11-utils imagemagick xdotool googletest
 unixodbc libsqliteodbc odbc-postgresql postgresql sqlite3 libxml2-utils nsis
 libz-mingw-w64-dev libreoffice-calc-nogui python3-openpyxl"

SUDO=""
if [ "$(id -u)" != 0 ]; then SUDO="sudo"; fi

installed() {
    dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q "install ok installed"
}

if [ "${1:-}" = wine32 ]; then
    installed wine32:i386 && exit 0
    release=$(. /etc/os-release 2>/dev/null && echo "${VERSION_ID:-0}")
    if [ "${release%%.*}" -lt 13 ] 2>/dev/null || [ -z "$release" ]; then
        echo "install-deps.sh: a 32-bit Wine (wine32:i386) needs Debian 13 or later; this is Debian ${release:-?}" >&2
        exit 1
    fi
    echo "install-deps.sh: installing wine32:i386"
    $SUDO dpkg --add-architecture i386 &&
        { $SUDO apt-get update >/dev/null 2>&1 || echo "install-deps.sh: apt-get update reported a problem; trying the install anyway" >&2; } &&
        DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends wine32:i386 ||
        { echo "install-deps.sh: could not install wine32:i386" >&2; exit 1; }
    exit 0
fi

missing=""
for p in $PACKAGES; do
    installed "$p" || missing="$missing $p"
done
if [ -n "$missing" ]; then
    echo "install-deps.sh: installing$missing"
    $SUDO apt-get update >/dev/null 2>&1 || echo "install-deps.sh: apt-get update reported a problem; trying the install anyway" >&2
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends $missing || {
        echo "install-deps.sh: could not install:$missing" >&2
        exit 1
    }
fi

# The historian tests reach SQLite and PostgreSQL through the ODBC drivers
# "SQLite3" and "PostgreSQL Unicode". Their packages register them in
# /etc/odbcinst.ini; register them from the packages' own templates if that
# did not happen.
register_driver() {   # name template
    if ! odbcinst -q -d -n "$1" >/dev/null 2>&1; then
        echo "install-deps.sh: registering the ODBC driver $1"
        $SUDO odbcinst -i -d -f "$2" >/dev/null || { echo "install-deps.sh: could not register the ODBC driver $1" >&2; exit 1; }
    fi
}
register_driver "SQLite3" /usr/share/sqliteodbc/unixodbc.ini
register_driver "PostgreSQL Unicode" /usr/share/psqlodbc/odbcinst.ini.template
exit 0
