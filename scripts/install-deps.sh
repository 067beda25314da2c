#!/bin/bash
# Installs the Debian packages the build, the tests and the demo need, but only
# those that are missing. A mirror may fail one index during 'apt-get update';
# what counts is whether the packages themselves install.
set -u
PACKAGES="cmake make g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix mingw-w64-tools
 wine wine64 libwine xvfb xauth x11-utils imagemagick xdotool googletest
 unixodbc libsqliteodbc odbc-postgresql postgresql sqlite3 libxml2-utils nsis
 libz-mingw-w64-dev libreoffice-calc-nogui python3-openpyxl"

SUDO=""
if [ "$(id -u)" != 0 ]; then SUDO="sudo"; fi

missing=""
for p in $PACKAGES; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing="$missing $p"
    fi
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
