#!/usr/bin/python3
"""Compares orx-fleet with a loop in one process that reads the same files and inserts the same rows,
and measures how many empty tasks the scheduler can handle per second.

    PYTHONPATH=build/release/python benchmarks/fleet.py GENERATE_STEP [FILES [ROUNDS]]

GENERATE_STEP is the generator of the benchmarks, build/release/bin/generate-step. Loop and runs
alternate, and the ratios compare measurements of the same round; the median counts. The processor
time per file predicts the speed where more processors are free.
"""

import contextlib
import os
import shutil
import sqlite3
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import orxexutilities as orx
from orxexutilities import fleet

KINDS = 8  # of files, each copied as often as needed
OCCURRENCES = 200

RULES = '''
import orxexutilities as orx

def rows(model):
    """An occurrence with its parts and its place."""
    for link in model["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]:
        place = orx.GetAbsPlacement(link)
        component = link.RELATED_PRODUCT_DEFINITION
        yield {
            "id": link.ID,
            "parent": link.RELATING_PRODUCT_DEFINITION.FORMATION.OF_PRODUCT.ID,
            "part": component.FORMATION.OF_PRODUCT.ID,
            "assembly": orx.IsAnAssembly(component),
            "x": place[9],
            "y": place[10],
            "z": place[11],
        }
'''


def make_files(generate, folder, count):
    patterns = []
    for kind in range(KINDS):
        path = folder / f"pattern{kind}"
        with open(path, "wb") as file:
            subprocess.run([generate, str(OCCURRENCES + kind), "1.0"], stdout=file, check=True)
        patterns.append(path)
    files = folder / "files"
    files.mkdir()
    for number in range(count):
        shutil.copyfile(patterns[number % KINDS], files / f"f{number}.stp")
    return sorted(map(str, files.iterdir()))


def plain_loop(files, database):
    """The same by hand: a transaction for each file, its rows and its mark."""
    space = {}
    exec(RULES, space)
    rows = space["rows"]
    connection = sqlite3.connect(database)
    connection.execute("PRAGMA journal_mode = WAL")
    connection.execute("PRAGMA synchronous = NORMAL")
    connection.execute("CREATE TABLE done (file TEXT PRIMARY KEY, rows BIGINT)")
    connection.execute("CREATE TABLE rows (file TEXT NOT NULL, id, parent, part, assembly, x, y, z)")
    connection.execute("CREATE INDEX rows_file ON rows (file)")
    for file in files:
        model = orx.read(file)
        found = [(file, *row.values()) for row in rows(model)]
        connection.execute("INSERT INTO done VALUES (?, ?)", (file, len(found)))
        connection.executemany("INSERT INTO rows VALUES (?, ?, ?, ?, ?, ?, ?, ?)", found)
        connection.commit()
        orx.RemoveValueVersion()
    connection.close()


def content(database):
    with contextlib.closing(sqlite3.connect(database)) as connection:
        return connection.execute(
            "SELECT count(*), count(DISTINCT file), total(x), total(y), total(z), total(assembly) FROM rows"
        ).fetchone()


def measure(files, rules, folder):
    """Seconds of the loop; with one and two workers, seconds of the processing and of the whole run."""
    loop = folder / "loop.db"
    start = time.perf_counter()
    plain_loop(files, loop)
    found = {"loop": (time.perf_counter() - start,) * 2}
    for workers in (1, 2):
        result = folder / f"fleet{workers}.db"
        start = time.perf_counter()
        outcome = fleet.run(rules, files, f"sqlite:{result}", workers=workers)
        found[workers] = (outcome.seconds, time.perf_counter() - start)
        if content(result)[:2] != content(loop)[:2] or not close(content(result), content(loop)):
            sys.exit(f"the rows differ: {content(result)} with {workers} workers, {content(loop)} in the loop")
    for database in folder.glob("*.db*"):
        database.unlink()
    return found


def costs(files, rules, folder):
    """Processor time per file: of the process that writes rows, and of the workers once started."""
    from orxexutilities.fleet import _cluster, _results, _units

    result = folder / "costs.db"
    start = time.process_time()
    plain_loop(files, result)
    tell_costs("loop", files, time.process_time() - start)
    result.unlink()
    the_rules, reading = _units.Rules.of(rules), _units.Reading()
    for workers in (1, 2):
        store = _results.store_for(f"sqlite:{result}", "rows", 60)
        store.open()
        with _cluster.Cluster(None, workers, None, 60) as cluster:

            def on_workers():
                return sum(cluster._client.run(time.process_time).values())

            units = _units.units_of(files, the_rules, reading)
            here, there = time.process_time(), on_workers()
            for answer in _cluster.Dispatch(cluster, units, the_rules, reading, 60, print).answers():
                store.write(*answer)
            here, there = time.process_time() - here, on_workers() - there
        store.close()
        tell_costs(f"{workers} worker{'s' * (workers > 1)}", files, here, there)
        result.unlink()


def tell_costs(name, files, here, there=0.0):
    each = 1e3 / len(files)
    print(f"{name:12}{here * each:8.2f} ms of a processor a file here{there * each:8.2f} ms on workers")


def close(left, right):
    return all(abs(a - b) <= 1e-6 * max(1.0, abs(a)) for a, b in zip(left, right))


def tasks_a_second(workers, count=4000):
    """Tasks per second, if they are empty and sent as orx-fleet sends batches: a few for each worker
    at a time."""
    from orxexutilities.fleet import _cluster

    with _cluster.Cluster(None, workers, None, 60) as cluster:
        cluster.send(int).result()
        start = time.perf_counter()
        waiting, sent = [], 0
        while sent < count or waiting:
            while sent < count and len(waiting) < 8 * workers:
                waiting.append(cluster.send(int))
                sent += 1
            waiting.pop(0).result()
        few = count / (time.perf_counter() - start)
        start = time.perf_counter()
        cluster._client.gather([cluster.send(int) for _ in range(count)])
        return few, count / (time.perf_counter() - start)


def main():
    generate = sys.argv[1]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 400
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 3
    with tempfile.TemporaryDirectory(prefix="orx-bench-") as name:
        folder = Path(name)
        files = make_files(generate, folder, count)
        rules = folder / "rules.py"
        rules.write_text(RULES)
        size = sum(map(os.path.getsize, files)) / 1e6
        print(f"{count} files, {size:.0f} MB, {os.cpu_count()} processors, load {os.getloadavg()[0]:.1f}")
        measured = [measure(files, rules, folder) for _ in range(rounds)]
        costs(files, rules, folder)
    print(f"{'':12}{'asking':>10}{'times':>8}{'whole':>10}{'times':>8}")
    for what in ("loop", 1, 2):
        name = "loop" if what == "loop" else f"{what} worker{'s' * (what > 1)}"
        line = f"{name:12}"
        for part in (0, 1):
            seconds = statistics.median(m[what][part] for m in measured)
            ratio = statistics.median(m["loop"][0] / m[what][part] for m in measured)
            line += f"{seconds:9.2f}s{ratio:8.2f}"
        print(line)
    few, many = tasks_a_second(2)
    print(f"empty tasks a second: {few:.0f} a few at a time, {many:.0f} all at once")


if __name__ == "__main__":
    main()
