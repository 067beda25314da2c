#!/usr/bin/env python3
"""Writes the plant-scale historian of the histscale benchmark in bulk.

1,000 items with runs of 100 VT_R8 values one second apart, in the stored
record format of the runs (per value: the OLE date as a little-endian double,
the 16-bit quality, then the 16-byte variant image: vt 5, three reserved
words, the double). Item 0 ("Plant.Area00.Item0000") has 1/100 of all runs
(1,000,000 values at full scale), the others share the rest evenly.

    generate.py sqlite   <file.db>                  [--values N]
    generate.py postgres <host> <port> <user> <db>  [--values N]

SQLite rows go in through Python's sqlite3 module in large transactions; the
PostgreSQL rows through one COPY ... FROM STDIN fed to psql (bytea in hex).
Both get the table and index the program's writer creates.
"""
import argparse
import struct
import subprocess
import sys

VALUES_PER_RUN = 100
ITEMS = 1000
BASE = 45000.0            # 15 March 2023, UTC
SECOND = 1.0 / 86400.0
RUN = struct.Struct("<" + "dHH6xd" * VALUES_PER_RUN)


def item_name(i):
    return "Plant.Area%02d.Item%04d" % (i // 10 % 100, i)


def runs_per_item(total_runs):
    big = total_runs // 100
    rest = total_runs - big
    share, extra = divmod(rest, ITEMS - 1)
    return [big] + [share + (1 if i <= extra else 0) for i in range(1, ITEMS)]


def rows(total_values):
    for item, count in enumerate(runs_per_item(total_values // VALUES_PER_RUN)):
        name = item_name(item)
        for run in range(count):
            first = run * VALUES_PER_RUN
            args = []
            for k in range(VALUES_PER_RUN):
                args += (BASE + (first + k) * SECOND, 192, 5, float(first + k))
            blob = RUN.pack(*args)
            yield (name, BASE + first * SECOND, BASE + (first + VALUES_PER_RUN - 1) * SECOND,
                   VALUES_PER_RUN, blob, len(blob))


def write_sqlite(path, total):
    import sqlite3
    db = sqlite3.connect(path)
    db.execute("PRAGMA journal_mode=OFF")
    db.execute("PRAGMA synchronous=OFF")
    db.execute("CREATE TABLE HistoricData (ItemID VARCHAR(255) NOT NULL, TimeFrom DOUBLE NOT NULL, "
               "TimeTo DOUBLE NOT NULL, ValCount INTEGER NOT NULL, ItemValues BLOB, CacheUsedSize INTEGER NOT NULL)")
    batch = []
    for row in rows(total):
        batch.append(row)
        if len(batch) == 20000:
            db.executemany("INSERT INTO HistoricData VALUES (?,?,?,?,?,?)", batch)
            db.commit()
            batch.clear()
    db.executemany("INSERT INTO HistoricData VALUES (?,?,?,?,?,?)", batch)
    db.commit()
    db.execute("CREATE INDEX HistoricData_ItemTime ON HistoricData (ItemID, TimeFrom)")
    db.commit()
    db.close()


def write_postgres(host, port, user, database, total):
    psql = ["psql", "-h", host, "-p", port, "-U", user, "-d", database, "-v", "ON_ERROR_STOP=1", "-q"]
    subprocess.run(psql + ["-c", "DROP TABLE IF EXISTS HistoricData; CREATE TABLE HistoricData (ItemID VARCHAR(255) "
                           "NOT NULL, TimeFrom DOUBLE PRECISION NOT NULL, TimeTo DOUBLE PRECISION NOT NULL, ValCount "
                           "INTEGER NOT NULL, ItemValues BYTEA, CacheUsedSize INTEGER NOT NULL)"], check=True)
    copy = subprocess.Popen(psql + ["-c", "COPY HistoricData FROM STDIN"], stdin=subprocess.PIPE)
    out = copy.stdin
    lines = []
    for name, t0, t1, count, blob, size in rows(total):
        lines.append("%s\t%r\t%r\t%d\t\\\\x%s\t%d\n" % (name, t0, t1, count, blob.hex(), size))
        if len(lines) == 5000:
            out.write("".join(lines).encode())
            lines.clear()
    out.write("".join(lines).encode())
    out.close()
    if copy.wait() != 0:
        sys.exit("COPY failed")
    subprocess.run(psql + ["-c", "CREATE INDEX HistoricData_ItemTime ON HistoricData (ItemID, TimeFrom); "
                           "ANALYZE HistoricData"], check=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("kind", choices=["sqlite", "postgres"])
    parser.add_argument("target", nargs="+")
    parser.add_argument("--values", type=int, default=100_000_000)
    a = parser.parse_args()
    if a.values % (VALUES_PER_RUN * 100):
        sys.exit("--values must be a multiple of 10,000")
    if a.kind == "sqlite":
        write_sqlite(a.target[0], a.values)
    else:
        write_postgres(*a.target[:4], a.values)


if __name__ == "__main__":
    main()
