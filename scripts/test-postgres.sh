#!/bin/bash
# A PostgreSQL server for the historian tests, private to one build directory.
#
#   scripts/test-postgres.sh start BUILD_DIR   starts it; prints the ODBC
#                                              connection string on stdout
#   scripts/test-postgres.sh stop BUILD_DIR    stops it
#
# The cluster is created once (initdb) in BUILD_DIR/postgres/data and kept, so
# a test run only pays for starting the server. It listens on 127.0.0.1 only,
# on the first free port from 54320 up, without a Unix socket, with trust
# authentication for its one role "morvane" and durability switched off
# (test data only). PostgreSQL refuses to run as root: when this script runs
# as root the server runs as the system user "postgres" (made by the
# postgresql package), or "nobody" when there is none. If that user cannot
# reach the build directory, the cluster goes into a fresh temporary folder
# for this run instead.
set -u
cmd=${1:-}
BUILD_DIR=$(realpath "${2:-.}")
STATE_DIR="$BUILD_DIR/postgres"
STATE="$STATE_DIR/server.state"
LOG="$STATE_DIR/server.log"
ROLE=morvane

PGBIN=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
if [ -z "$PGBIN" ]; then
    echo "test-postgres.sh: no PostgreSQL server binaries under /usr/lib/postgresql" >&2
    exit 1
fi

RUN_AS=""
if [ "$(id -u)" = 0 ]; then
    if getent passwd postgres >/dev/null; then RUN_AS=postgres; else RUN_AS=nobody; fi
fi
as_server_user() {
    if [ -n "$RUN_AS" ]; then runuser -u "$RUN_AS" -- "$@"; else "$@"; fi
}

port_is_free() {
    ! (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null
}

stop_server() {   # data folder
    as_server_user "$PGBIN/pg_ctl" -D "$1" -m fast -w -t 30 stop >>"$LOG" 2>&1
}

start() {
    mkdir -p "$STATE_DIR" || return 1
    : >"$LOG"
    [ -n "$RUN_AS" ] && chown "$RUN_AS" "$LOG"
    # A server left over by an interrupted run is stopped first.
    if [ -f "$STATE" ]; then
        # shellcheck disable=SC1090
        . "$STATE"
        [ -n "${DATA:-}" ] && [ -f "$DATA/postmaster.pid" ] && stop_server "$DATA"
        [ "${TEMPORARY:-0}" = 1 ] && rm -rf "$(dirname "$DATA")"
        rm -f "$STATE"
    fi

    local data="$STATE_DIR/data" temporary=0
    if [ -n "$RUN_AS" ]; then
        mkdir -p "$data" && chown "$RUN_AS" "$data" && chmod 700 "$data"
        if ! runuser -u "$RUN_AS" -- test -w "$data"; then
            data=$(mktemp -d /tmp/morvane-postgres.XXXXXX)/data
            mkdir -p "$data" && chown -R "$RUN_AS" "$(dirname "$data")"
            temporary=1
        fi
    fi
    if [ ! -f "$data/PG_VERSION" ]; then
        rm -rf "${data:?}"/* 2>/dev/null
        as_server_user "$PGBIN/initdb" -D "$data" -U "$ROLE" --auth=trust -E UTF8 --no-locale --no-sync \
            >>"$LOG" 2>&1 || { echo "test-postgres.sh: initdb failed, see $LOG" >&2; return 1; }
    fi

    local port
    for port in $(seq 54320 54400); do
        port_is_free "$port" || continue
        if as_server_user "$PGBIN/pg_ctl" -D "$data" -l "$LOG" -w -t 30 \
            -o "-p $port -c listen_addresses=127.0.0.1 -c unix_socket_directories= -c fsync=off -c synchronous_commit=off -c full_page_writes=off" \
            start >>"$LOG" 2>&1; then
            printf 'DATA=%q\nPORT=%q\nTEMPORARY=%q\n' "$data" "$port" "$temporary" >"$STATE"
            echo "Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=$port;Database=postgres;Uid=$ROLE;Pwd=$ROLE;"
            return 0
        fi
    done
    echo "test-postgres.sh: the server did not start, see $LOG" >&2
    [ "$temporary" = 1 ] && rm -rf "$(dirname "$data")"
    return 1
}

stop() {
    [ -f "$STATE" ] || return 0
    # shellcheck disable=SC1090
    . "$STATE"
    stop_server "$DATA"
    [ "${TEMPORARY:-0}" = 1 ] && rm -rf "$(dirname "$DATA")"
    rm -f "$STATE"
}

case "$cmd" in
    start) start ;;
    stop) stop ;;
    *) echo "usage: $0 start|stop BUILD_DIR" >&2; exit 2 ;;
esac
