"""What the tests of orx-fleet share: files, runs, a cluster and a database server, all on this
machine's own addresses. What a test starts it ends, by its process id."""

import contextlib
import os
import shutil
import socket
import sqlite3
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import pytest

distributed = pytest.importorskip("distributed")
psutil = pytest.importorskip("psutil")

# Sizes and counts are smaller than those of scripts/test-large.
LARGE = bool(os.environ.get("ORX_FLEET_LARGE"))
SANITIZED = "libasan" in os.environ.get("LD_PRELOAD", "")
SOURCES = Path(__file__).resolve().parents[2]
SECONDS = 240

HEADER = """ISO-10303-21;
HEADER;
FILE_DESCRIPTION((''),'2;1');
FILE_NAME('','',(''),(''),'','','');
FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));
ENDSEC;
DATA;
"""
TRAILER = "ENDSEC;\nEND-ISO-10303-21;\n"

# Each file has two products; the second tells what becomes of whoever asks.
RULES = """
import os, signal, time

def rows(model):
    first, second = model["PRODUCT"]
    what = second.NAME
    if what == "abort":
        os.abort()
    if what == "memory":
        taken = []
        while True:
            taken.append(bytearray(1 << 24))
    if what == "raise":
        raise ValueError("no such part")
    if what.startswith("sleep"):
        time.sleep(float(what[5:]))
    yield {"id": first.ID, "number": first.number}
    yield {"id": second.ID, "number": second.number}
"""


def write_file(path, name, what=""):
    path.parent.mkdir(parents=True, exist_ok=True)
    instances = f"#1=PRODUCT('{name}','',$,());\n#2=PRODUCT('{name}b','{what}',$,());\n"
    path.write_text(HEADER + instances + TRAILER)
    return path


def write_damaged(path):
    """A file with an error at line 9, column 13."""
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(HEADER + "#1=PRODUCT('x','',$,());\n#2=PRODUCT(;\n" + TRAILER)
    return path


@pytest.fixture
def rules(tmp_path):
    path = tmp_path / "rules.py"
    path.write_text(RULES)
    return path


class Run:
    """A run of the command in a session of its own, by which what it leaves behind is found."""

    def __init__(self, *arguments, **options):
        self.process = subprocess.Popen(
            [sys.executable, "-m", "orxexutilities.fleet", *map(str, arguments)],
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
            start_new_session=True,
            **options,
        )
        self.pid = self.process.pid

    def workers(self):
        """The processes that ask: those of the cluster, and those that they ask in with care."""
        with contextlib.suppress(psutil.NoSuchProcess):
            return [
                child
                for child in psutil.Process(self.pid).children(recursive=True)
                if _is_worker(child)
            ]
        return []

    def wait(self):
        self.out, self.err = self.process.communicate(timeout=SECONDS)
        self.status = self.process.returncode
        return self

    def left_behind(self):
        """The processes of its session that are still there a little later."""
        deadline = time.monotonic() + 20
        while (left := _session(self.pid)) and time.monotonic() < deadline:
            time.sleep(0.1)
        return left


def _is_worker(process):
    with contextlib.suppress(psutil.Error):
        command = " ".join(process.cmdline())
        return "spawn_main" in command or "fleet._work" in command
    return False


def _session(leader):
    found = []
    for process in psutil.process_iter():
        with contextlib.suppress(psutil.Error, ProcessLookupError):
            if os.getsid(process.pid) == leader and process.status() != psutil.STATUS_ZOMBIE:
                found.append(process)
    return found


@pytest.fixture
def start():
    """Starts runs. None of their processes is there afterwards."""
    runs = []

    def begin(*arguments, **options):
        runs.append(Run(*arguments, **options))
        return runs[-1]

    yield begin
    for run in runs:
        if run.process.poll() is None:
            run.process.kill()
            run.process.wait()
        for process in _session(run.pid):
            with contextlib.suppress(psutil.Error):
                process.kill()


@pytest.fixture
def fleet(start):
    """Runs the command to its end."""

    def whole(*arguments, **options):
        run = start(*arguments, **options).wait()
        assert not run.left_behind()
        return run

    return whole


def wait_until(condition, seconds=SECONDS):
    deadline = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < deadline, "what was waited for did not come"
        time.sleep(0.02)


def done_in(database):
    """How many files are marked as done, while a run writes."""
    with contextlib.suppress(sqlite3.OperationalError), contextlib.closing(
        sqlite3.connect(f"file:{database}?mode=ro", uri=True)
    ) as connection:
        found = connection.execute("SELECT count(*) FROM orx_fleet WHERE state = 'done'")
        return found.fetchone()[0]
    return 0


def rows_in(database):
    """Each row as file and id, sorted."""
    with contextlib.closing(sqlite3.connect(database)) as connection:
        return sorted(connection.execute("SELECT file, id FROM rows"))


def rows_of(files):
    """What the rules find in files that are as they should be: their stems name the parts."""
    return sorted((str(file), file.stem + end) for file in files for end in ("", "b"))


def marks_in(database):
    with contextlib.closing(sqlite3.connect(database)) as connection:
        return dict(connection.execute("SELECT file, state FROM orx_fleet"))


def failures_in(database):
    with contextlib.closing(sqlite3.connect(database)) as connection:
        return dict(connection.execute("SELECT file, message FROM orx_fleet WHERE state = 'failed'"))


# ---- A cluster of its own

MEMORY = "auto" if SANITIZED else "600MiB"  # of a worker


def _dask(command, *arguments, log):
    return subprocess.Popen(
        [sys.executable, "-m", f"distributed.cli.dask_{command}", *map(str, arguments)],
        stdout=log,
        stderr=log,
        start_new_session=True,
        env=os.environ | ADVISED,
    )


# As docs/fleet.md advises.
ADVISED = {
    "DASK_DISTRIBUTED__SCHEDULER__ALLOWED_FAILURES": "0",
    "DASK_DISTRIBUTED__WORKER__MEMORY__TARGET": "False",
    "DASK_DISTRIBUTED__WORKER__MEMORY__SPILL": "False",
    "DASK_DISTRIBUTED__WORKER__MEMORY__PAUSE": "False",
}


class ClusterElsewhere:
    """A scheduler and workers as they are started by hand, on the loopback address."""

    def __init__(self, folder, port):
        self._folder = folder
        self._port = port
        self._log = open(folder / "cluster.log", "ab")
        self.address = f"tcp://127.0.0.1:{port}"
        self.scheduler = None
        self.workers = []

    def start(self, workers=2):
        self.scheduler = _dask("scheduler", "--host", "127.0.0.1", "--port", self._port,
                               "--no-dashboard", "--dashboard-address", "127.0.0.1:0", log=self._log)  # fmt: skip
        self.workers = [
            _dask("worker", self.address, "--host", "127.0.0.1", "--nthreads", 1, "--no-dashboard",
                  "--local-directory", self._folder, "--memory-limit", MEMORY, log=self._log)  # fmt: skip
            for _ in range(workers)
        ]

    def asking(self):
        """The processes that ask, each started by one that watches it."""
        return [p for worker in self.workers for p in _session(worker.pid) if _is_worker(p)]

    def stop(self):
        """Ends all of it, the workers with their nannies."""
        started = [self.scheduler, *self.workers]
        for process in started:
            for member in _session(process.pid):
                with contextlib.suppress(psutil.Error):
                    member.kill()
        for process in started:
            process.wait()

    def close(self):
        self.stop()
        self._log.close()


@pytest.fixture
def own_cluster(tmp_path):
    """One that a test may stop."""
    with contextlib.closing(ClusterElsewhere(tmp_path, free_port())) as elsewhere:
        elsewhere.start()
        yield elsewhere


@pytest.fixture(scope="session")
def cluster(tmp_path_factory):
    folder = tmp_path_factory.mktemp("cluster")
    with contextlib.closing(ClusterElsewhere(folder, free_port())) as elsewhere:
        elsewhere.start()
        yield elsewhere


def free_port():
    with socket.socket() as bound:
        bound.bind(("127.0.0.1", 0))
        return bound.getsockname()[1]


# ---- A database server of its own


class Server:
    """PostgreSQL on a socket in a folder."""

    def __init__(self, programs, folder):
        self._programs = programs
        self._folder = folder
        self._as = ["setpriv", "--reuid=postgres", "--regid=postgres", "--clear-groups"] if os.getuid() == 0 else []
        if self._as:
            shutil.chown(folder, "postgres", "postgres")
        self._call("initdb", "--auth=trust", "--username=postgres", "--no-sync", "-D", folder / "data")
        self.use("postgres")

    def use(self, database):
        self.uri = f"postgresql://postgres@/{database}?host={self._folder}"

    def _call(self, program, *arguments):
        subprocess.run(
            [*self._as, self._programs / program, *map(str, arguments)],
            check=True,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
            cwd="/",
            env={name: value for name, value in os.environ.items() if name != "LD_PRELOAD"},
            timeout=SECONDS,
        )

    def start(self):
        options = f"-c listen_addresses= -c unix_socket_directories={self._folder} -c fsync=off"
        self._call("pg_ctl", "start", "-w", "-D", self._folder / "data", "-l", self._folder / "log", "-o", options)

    def stop(self):
        """At once, as in a power cut of the server."""
        self._call("pg_ctl", "stop", "-w", "-m", "immediate", "-D", self._folder / "data")

    def ask(self, query):
        import psycopg2

        with contextlib.closing(psycopg2.connect(self.uri)) as connection:
            connection.autocommit = True
            cursor = connection.cursor()
            cursor.execute(query)
            return cursor.fetchall() if cursor.description else []


@pytest.fixture(scope="session")
def server_of_session():
    pytest.importorskip("psycopg2")
    programs = sorted(Path("/usr/lib/postgresql").glob("*/bin/initdb"))
    if not programs:
        pytest.skip("there is no PostgreSQL server here")
    # A socket's path has 107 characters at most.
    folder = Path(tempfile.mkdtemp(prefix="orx-pg-", dir="/tmp"))
    try:
        running = Server(programs[-1].parent, folder)
        running.start()
        yield running
        with contextlib.suppress(subprocess.CalledProcessError):
            running.stop()
    finally:
        shutil.rmtree(folder, ignore_errors=True)


@pytest.fixture
def server(server_of_session):
    """The server, with an empty database."""
    database = f"d{time.monotonic_ns()}"
    server_of_session.use("postgres")
    server_of_session.ask(f"CREATE DATABASE {database}")
    server_of_session.use(database)
    return server_of_session
