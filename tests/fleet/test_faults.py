"""What may go wrong in a run over many files: afterwards every good file is there once, every bad one
is named, no other is blamed, and no process is left."""

import os
import random
import signal
import sqlite3
import time

import pytest
from conftest import (
    LARGE,
    SANITIZED,
    done_in,
    failures_in,
    marks_in,
    rows_in,
    rows_of,
    wait_until,
    write_damaged,
    write_file,
)


@pytest.fixture
def plant(tmp_path):
    """Writes files and says where: `bad` are those that something is to happen with."""

    def make(count, what="", bad=()):
        good = [write_file(tmp_path / "plant" / f"p{i}.stp", f"p{i}", what) for i in range(count)]
        worse = [write_file(tmp_path / "plant" / f"{name}.stp", name, name) for name in bad]
        return good, worse

    return make


unsanitized = pytest.mark.skipif(
    SANITIZED, reason="slow and about the cluster alone, not about what is sanitized"
)


def holds_all(database, good, bad=()):
    assert rows_in(database) == rows_of(good)
    expected = {str(file): "done" for file in good} | {str(file): "failed" for file in bad}
    assert marks_in(database) == expected


def test_a_thousand_small_files_with_twenty_damaged_ones(tmp_path, plant, rules, fleet, cluster):
    good, _ = plant(1000)
    damaged = [write_damaged(tmp_path / "plant" / "more" / f"d{i}.stp") for i in range(20)]
    result = tmp_path / "result.db"
    run = fleet(rules, tmp_path / "plant", "-o", f"sqlite:{result}", "--scheduler", cluster.address)
    assert run.status == 1
    holds_all(result, good, damaged)
    told = [line for line in run.err.splitlines() if ":9:" in line]
    assert sorted(told) == sorted(f"orx-fleet: {file}:9:12: a value expected, found ';'" for file in damaged)
    assert "1000 files done, 20 not done, 2000 rows" in run.err


@unsanitized
def test_a_worker_that_is_killed(tmp_path, plant, rules, start, cluster):
    good, _ = plant(60, "sleep0.05")
    result = tmp_path / "result.db"
    run = start(rules, tmp_path / "plant", "-o", f"sqlite:{result}", "--scheduler", cluster.address)
    wait_until(lambda: done_in(result) > 3)
    os.kill(cluster.asking()[0].pid, signal.SIGKILL)
    run.wait()
    assert (run.status, run.left_behind()) == (0, []), run.err
    holds_all(result, good)


@unsanitized
def test_workers_that_are_killed_at_random(tmp_path, plant, rules, start):
    kills = 50 if LARGE else 5
    good, _ = plant(16 * kills, "sleep0.1")
    result = tmp_path / "result.db"
    seed = int(os.environ.get("ORX_FLEET_SEED", "1"))
    choices = random.Random(seed)
    run = start(rules, tmp_path / "plant", "-o", f"sqlite:{result}", "--workers", 2)
    wait_until(lambda: done_in(result) > 0)
    for _ in range(kills):
        wait_until(lambda: run.workers() or run.process.poll() is not None)
        assert run.process.poll() is None, f"it ended before all kills: {run.wait().err}"
        os.kill(choices.choice(run.workers()).pid, signal.SIGKILL)
        time.sleep(choices.uniform(0.1, 1.5))
    run.wait()
    assert (run.status, run.left_behind()) == (0, []), run.err
    holds_all(result, good)


@unsanitized
def test_a_worker_that_is_stopped_and_goes_on(tmp_path, plant, rules, start, cluster):
    good, _ = plant(60, "sleep0.05")
    result = tmp_path / "result.db"
    run = start(rules, tmp_path / "plant", "-o", f"sqlite:{result}", "--scheduler", cluster.address)
    wait_until(lambda: done_in(result) > 3)
    stopped = cluster.asking()[0].pid
    os.kill(stopped, signal.SIGSTOP)
    time.sleep(3)
    os.kill(stopped, signal.SIGCONT)
    run.wait()
    assert (run.status, run.left_behind()) == (0, []), run.err
    holds_all(result, good)


@unsanitized
def test_a_scheduler_that_is_restarted(tmp_path, plant, rules, start, own_cluster):
    good, bad = plant(100, "sleep0.05", ["raise"])
    result = tmp_path / "result.db"
    run = start(rules, tmp_path / "plant", "-o", f"sqlite:{result}", "--scheduler", own_cluster.address)
    wait_until(lambda: done_in(result) > 3)
    own_cluster.stop()
    time.sleep(1)
    before = done_in(result)
    assert before < 100
    own_cluster.start()
    run.wait()
    assert (run.status, run.left_behind()) == (1, []), run.err
    holds_all(result, good, bad)
    assert "the scheduler is lost" in run.err


@unsanitized
def test_a_database_that_is_down(tmp_path, plant, rules, start, cluster, server):
    good, bad = plant(100, "sleep0.03", ["raise"])
    run = start(rules, tmp_path / "plant", "-o", server.uri, "--scheduler", cluster.address)

    def done():
        exists = server.ask("SELECT to_regclass('orx_fleet') IS NOT NULL")[0][0]
        return server.ask("SELECT count(*) FROM orx_fleet")[0][0] if exists else 0

    wait_until(lambda: done() > 5)
    server.stop()
    time.sleep(10 if LARGE else 3)
    assert run.process.poll() is None, run.wait().err
    server.start()
    run.wait()
    assert (run.status, run.left_behind()) == (1, []), run.err
    assert sorted(server.ask("SELECT file, id FROM rows")) == rows_of(good)
    states = dict(server.ask("SELECT file, state FROM orx_fleet"))
    assert states == {str(f): "done" for f in good} | {str(f): "failed" for f in bad}


@unsanitized
def test_a_file_that_crashes_its_reader(tmp_path, plant, rules, fleet, cluster):
    good, bad = plant(40, bad=["abort"])
    result = tmp_path / "result.db"
    run = fleet(rules, tmp_path / "plant", "-o", f"sqlite:{result}", "--scheduler", cluster.address)
    assert run.status == 1
    holds_all(result, good, bad)
    assert failures_in(result) == {str(bad[0]): "the process that asked it died (Aborted, SIGABRT)"}


@unsanitized
def test_a_file_that_takes_all_memory(tmp_path, plant, rules, fleet, cluster):
    good, bad = plant(40, bad=["memory"])
    result = tmp_path / "result.db"
    run = fleet(rules, tmp_path / "plant", "-o", f"sqlite:{result}", "--scheduler", cluster.address)
    assert run.status == 1
    holds_all(result, good, bad)
    assert failures_in(result) == {str(bad[0]): "takes more memory than the 600 MiB of a worker"}


@unsanitized
def test_a_run_that_is_cut_off_goes_on_where_it_stopped(tmp_path, plant, rules, start, fleet):
    good, bad = plant(60, "sleep0.05", ["raise"])
    result = tmp_path / "result.db"
    command = (rules, tmp_path / "plant", "-o", f"sqlite:{result}", "--workers", 2)
    cut = start(*command)
    wait_until(lambda: done_in(result) > 10)
    cut.process.kill()
    cut.process.wait()
    assert cut.left_behind() == []
    before = done_in(result)
    assert 10 < before < 60
    run = fleet(*command)
    assert run.status == 1
    holds_all(result, good, bad)
    assert f"{60 - before} files done, {before} were done before, 1 not done" in run.err


@unsanitized
def test_an_interrupted_run_ends_its_workers(tmp_path, plant, rules, start):
    plant(200, "sleep0.1")
    result = tmp_path / "result.db"
    run = start(rules, tmp_path / "plant", "-o", f"sqlite:{result}", "--workers", 2)
    wait_until(lambda: done_in(result) > 3)
    os.killpg(run.pid, signal.SIGINT)
    run.wait()
    assert (run.status, run.left_behind()) == (130, [])
    assert run.err.splitlines() == ["orx-fleet: stopped; the same command goes on from here"]
    with sqlite3.connect(result) as connection:
        (doubled,) = connection.execute("SELECT count(*) FROM rows GROUP BY file HAVING count(*) <> 2").fetchall() or [()]
    assert doubled == ()


@unsanitized
def test_large_files_have_the_memory_of_the_machine_one_at_a_time(tmp_path, plant, rules, fleet):
    size = 100_000_000 if LARGE else 40_000_000
    good, _ = plant(20)
    point = "#%d=CARTESIAN_POINT('',(%d.25,0.,1.));\n"
    points = "".join(point % (number, number) for number in range(3, size // 43))
    large = []
    for i in range(3):
        file = write_file(tmp_path / "plant" / f"large{i}.stp", f"large{i}")
        file.write_text(file.read_text().replace("ENDSEC;\nEND-", points + "ENDSEC;\nEND-"))
        large.append(file)
    result = tmp_path / "result.db"
    memory = max(256 << 20, 4 * size)  # of which such a model might take more
    run = fleet(rules, tmp_path / "plant", "-o", f"sqlite:{result}", "--workers", 2, "--memory", memory)
    assert run.status == 0, run.err
    holds_all(result, good + large)
    with sqlite3.connect(result) as connection:
        order = [file for (file,) in connection.execute("SELECT file FROM orx_fleet ORDER BY rowid")]
    assert sorted(order[-3:]) == sorted(map(str, large))
