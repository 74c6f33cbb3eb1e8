"""Batches of units on the workers of a Dask cluster, and their results in the order of arrival."""

from __future__ import annotations

import asyncio
import contextlib
import logging
import multiprocessing
import os
import queue
import signal
import tempfile
import time
from collections import deque
from collections.abc import Callable, Iterator, Sequence
from dataclasses import dataclass, field
from multiprocessing import resource_tracker
from typing import Any

from distributed import Client, KilledWorker, LocalCluster
from distributed.comm.addressing import parse_address, parse_host_port
from distributed.comm.registry import get_backend

import dask
from orxexutilities.fleet import _work
from orxexutilities.fleet._units import Reading, Rules, Unit, UsageError

# The intended time for a batch. With it, the rate of tasks depends on the number of workers only, not
# on the size of the files; see docs/fleet.md.
BATCH_SECONDS = 1.0
# Towards the end batches are smaller, with this minimum.
LEAST_SECONDS = 0.1
# Batches sent to each worker: one is processed while the next waits.
BATCHES_PER_WORKER = 2
# The cost of a file besides its size, as a number of bytes that take as long.
FILE_COST = 64 * 1024
# Memory for each byte of a file: up to 3 for the model, and some for the data of the rules.
MODEL_EXPANSION = 4
# The memory of an idle worker, and the minimum that a worker needs.
IDLE_MEMORY = 128 << 20
LEAST_MEMORY = 2 * IDLE_MEMORY
# The environment of the workers. Models need about the same memory one after the other, so a process
# keeps some of it instead of returning it to the system and asking for it again.
ENVIRONMENT = {
    "DASK_LOGGING__DISTRIBUTED": "critical",
    "OMP_NUM_THREADS": "1",
    "OPENBLAS_NUM_THREADS": "1",
    "MALLOC_ARENA_MAX": "1",
    "MALLOC_MMAP_THRESHOLD_": str(32 << 20),
    "MALLOC_TRIM_THRESHOLD_": str(64 << 20),
}
# Units on which worker after worker died, although each processed them in a separate process.
DEATHS = 10
# How long workers of this machine may be missing; a third of that if there is none at all.
MISSING_SECONDS = 60
CLOSE_SECONDS = 15
# How long the transfer of a result may take, as the worker may have died; doubled with each attempt.
RESULT_SECONDS = 10


@dataclass(eq=False, slots=True)
class Batch:
    units: Sequence[Unit]
    careful: bool = False
    deaths: int = 0
    memory: int | None = None
    patience: float = RESULT_SECONDS
    future: Any = field(default=None, repr=False)

    @property
    def cost(self) -> int:
        return sum(map(_cost, self.units))


def _cost(unit: Unit) -> int:
    return unit.share + FILE_COST * len(unit.files)


class Cluster:
    """The workers: those of a scheduler elsewhere, or those on this machine."""

    def __init__(self, scheduler: str | None, workers: int | None, memory: int | None, patience: float) -> None:
        if scheduler is not None:
            _check_address(scheduler)
        self._elsewhere = self._scheduler = scheduler
        self._whole = time.monotonic()
        self._local: LocalCluster | None = None
        self._count = workers or len(os.sched_getaffinity(0))
        if memory is not None and memory < LEAST_MEMORY:
            raise UsageError(f"a worker needs {LEAST_MEMORY >> 20} MiB, {memory >> 20} MiB are too little")
        self._memory = memory
        self._patience = patience
        self._open = contextlib.ExitStack()
        self._client: Client | None = None
        self._seen = 0.0
        self._workers: dict[str, Any] = {}

    def __enter__(self) -> Cluster:
        try:
            self._open.enter_context(_quiet())
            if self._elsewhere is None:
                self._scheduler = self._start()
            self.connect()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_: Any) -> None:
        self.disconnect()
        self._open.close()

    def _start(self) -> str:
        settings = {
            # Tasks of a worker that died come back immediately, to be retried with care.
            "distributed.scheduler.allowed-failures": 0,
            # Memory is limited by processing one unit at a time; a worker that waits until there is
            # more would wait for ever.
            "distributed.worker.memory.target": False,
            "distributed.worker.memory.spill": False,
            "distributed.worker.memory.pause": False,
            "distributed.nanny.pre-spawn-environ": ENVIRONMENT,
            # A worker on this machine that does not respond is dead.
            "distributed.comm.timeouts.connect": "5s",
            # Nobody uses the profile.
            "distributed.worker.profile.enabled": False,
            "distributed.admin.tick.interval": "200ms",
        }
        self._open.enter_context(dask.config.set(settings))
        folder = self._open.enter_context(tempfile.TemporaryDirectory(prefix="orx-fleet-"))
        with _without_interrupts():
            cluster = LocalCluster(
                n_workers=self._count,
                threads_per_worker=1,
                processes=True,
                host="127.0.0.1",
                dashboard_address=None,
                scheduler_kwargs={"dashboard_address": "127.0.0.1:0"},
                local_directory=folder,
                silence_logs=logging.CRITICAL,
                **({"memory_limit": self._memory} if self._memory else {}),
            )
        self._open.callback(_end, cluster)
        self._local = cluster
        self._whole = time.monotonic()
        return str(cluster.scheduler_address)

    @property
    def ails(self) -> bool:
        """Whether workers of this machine have been missing for too long: a worker that is killed while
        it starts may not be restarted."""
        now = time.monotonic()
        present = len(self.workers)
        if self._local is None or present >= self._count:
            self._whole = now
        return now - self._whole > (MISSING_SECONDS if present else MISSING_SECONDS / 3)

    def start_again(self) -> None:
        self.disconnect()
        self._open.pop_all().close()
        self.__enter__()

    def connect(self) -> None:
        """Connects to the scheduler, which may become available again."""
        deadline = time.monotonic() + self._patience
        while True:
            try:
                # Results from other machines come through the scheduler, which is reachable.
                direct = None if self._local is None else True
                self._client = Client(
                    self._scheduler, timeout=5, set_as_default=False, direct_to_workers=direct
                )
                self._seen = 0.0
                return
            except (OSError, TimeoutError) as error:
                if time.monotonic() > deadline:
                    raise UsageError(f"{self._scheduler}: no scheduler answers") from error
                time.sleep(0.5)

    def disconnect(self) -> None:
        client, self._client = self._client, None
        if client is not None:
            with contextlib.suppress(Exception):
                client.close(timeout=5)

    @property
    def connected(self) -> bool:
        return self._client is not None and self._client.status == "running"

    @property
    def workers(self) -> dict[str, Any]:
        """The available workers by address, as of a second ago."""
        now = time.monotonic()
        if now - self._seen > 1 and self._client is not None:
            with contextlib.suppress(Exception):
                identity = self._client.scheduler.identity
                self._workers = self._client.sync(identity, callback_timeout=5)["workers"]
                self._seen = now
        return self._workers

    def memory(self) -> tuple[int, int] | None:
        """The smallest memory limits of a worker and of a machine; None if workers have no limit."""
        machines: dict[str, int] = {}
        limits: list[int] = []
        for worker in self.workers.values():
            limits.append(worker.get("memory_limit") or 0)
            machines[worker["host"]] = machines.get(worker["host"], 0) + limits[-1]
        return (min(limits), min(machines.values())) if limits and min(limits) else None

    def send(self, task: Callable[..., Any], *values: Any) -> Any:
        assert self._client is not None
        return self._client.submit(task, *values, pure=False)


def _end(cluster: LocalCluster) -> None:
    """Ends a cluster with its processes, including those that it has lost track of."""
    with contextlib.suppress(Exception):
        cluster.close(timeout=CLOSE_SECONDS)
    for process in multiprocessing.active_children():
        if process.name.startswith("Dask Worker process"):
            process.kill()
            process.join()


def _check_address(address: str) -> None:
    try:
        scheme, place = parse_address(address, strict=True)
        get_backend(scheme)
        parse_host_port(place)
    except ValueError as error:
        raise UsageError(f"{address}: no address of a scheduler, such as tcp://host:8786: {error}") from None


@contextlib.contextmanager
def _quiet() -> Iterator[None]:
    """Keeps the parts of the cluster quiet: this module reports dead workers and lost connections."""
    loggers = [logging.getLogger(name) for name in ("distributed", "tornado", "asyncio")]
    levels = [logger.level for logger in loggers]
    for logger in loggers:
        logger.setLevel(logging.CRITICAL)
    try:
        yield
    finally:
        for logger, level in zip(loggers, levels):
            logger.setLevel(level)


@contextlib.contextmanager
def _without_interrupts() -> Iterator[None]:
    """Threads started in this context, and the processes that they start, are not interrupted from the
    keyboard: only the run is, and ends them."""
    resource_tracker.ensure_running()  # which would let interrupts in again
    before = signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGINT})
    try:
        yield
    finally:
        signal.pthread_sigmask(signal.SIG_SETMASK, before)


class Dispatch:
    """Sends units to the workers and returns each with its result."""

    def __init__(
        self,
        cluster: Cluster,
        units: Sequence[Unit],
        rules: Rules,
        reading: Reading,
        patience: float,
        tell: Callable[[str], None],
    ) -> None:
        self._cluster = cluster
        self._rules = rules
        self._reading = reading
        self._patience = patience
        self._tell = tell
        # The largest first: the last ones should not keep a worker busy for long.
        self._units = deque(sorted(units, key=_cost, reverse=True))
        self._cost = sum(map(_cost, units))  # of the waiting units
        self._rate = 2e6  # cost in a second on one worker; a low guess until it is measured
        self._again: deque[Batch] = deque()
        self._large: deque[Batch] = deque()
        self._flying: set[Batch] = set()
        self._arrivals: queue.SimpleQueue[tuple[Batch, Any]] = queue.SimpleQueue()
        self._faults = 0
        self._without_workers: float | None = None
        self._set_large_aside()

    def _set_large_aside(self) -> None:
        """Units whose models may need more memory than a worker has are processed last and one at a
        time, with the memory of all workers of a machine."""
        limits = self._cluster.memory() if self._units else None
        if limits is None:
            return
        one, machine = limits
        fits = (one - IDLE_MEMORY) // MODEL_EXPANSION
        large = [unit for unit in self._units if unit.size > fits]
        self._units = deque(unit for unit in self._units if unit.size <= fits)
        self._cost = sum(map(_cost, self._units))
        self._large.extend(Batch([unit], careful=True, memory=machine) for unit in large)

    def answers(self) -> Iterator[tuple[Unit, _work.Answer]]:
        while self._units or self._again or self._large or self._flying:
            self._fill()
            try:
                batch, future = self._arrivals.get(timeout=0.5)
            except queue.Empty:
                self._look_after()
                continue
            if batch in self._flying and batch.future is future:
                self._flying.remove(batch)
                batch.future = None
                yield from self._take(batch, future)

    # ---- Sending

    def _fill(self) -> None:
        if not self._cluster.connected:
            return
        if self._cluster.ails:
            self._take_back()
            self._cluster.start_again()
        places = BATCHES_PER_WORKER * len(self._cluster.workers)
        while len(self._flying) < places:
            batch = self._next()
            if batch is None:
                return
            self._send(batch)

    def _next(self) -> Batch | None:
        if self._again:
            return self._again.popleft()
        if self._units:
            return self._cut()
        if self._large and not self._flying:
            return self._large.popleft()
        return None

    def _cut(self) -> Batch:
        """Enough units for about the time of a batch; towards the end fewer, so that all workers end at
        about the same time."""
        shares = BATCHES_PER_WORKER * max(1, len(self._cluster.workers))
        most = min(BATCH_SECONDS * self._rate, self._cost / shares)
        most = max(most, LEAST_SECONDS * self._rate)
        units = [self._units.popleft()]
        cost = _cost(units[0])
        while self._units and cost + _cost(self._units[0]) <= most:
            units.append(self._units.popleft())
            cost += _cost(units[-1])
        self._cost -= cost
        return Batch(units)

    def _send(self, batch: Batch) -> None:
        values = (batch.units, self._rules, self._reading)
        if batch.careful:
            future = self._cluster.send(_work.ask_carefully, *values, batch.memory)
        else:
            future = self._cluster.send(_work.ask_all, *values)
        batch.future = future
        self._flying.add(batch)
        future.add_done_callback(lambda done: self._arrivals.put((batch, done)))

    def _take_back(self) -> None:
        """All units that have been sent, to be sent again."""
        for batch in self._flying:
            batch.future = None
            self._again.append(batch)
        self._flying.clear()

    # ---- Receiving

    def _take(self, batch: Batch, future: Any) -> Iterator[tuple[Unit, _work.Answer]]:
        try:
            seconds, answers = future.result(timeout=batch.patience)
        except KilledWorker:
            yield from self._died(batch)
            return
        except Exception as error:
            self._failed(batch, future, error)
            return
        self._faults = 0
        if not batch.careful and seconds > 0:
            self._rate += 0.5 * (batch.cost / seconds - self._rate)
        suspects = []
        for unit, answer in zip(batch.units, answers):
            if isinstance(answer, _work.Suspect):
                suspects.append(unit)
            else:
                yield unit, answer
        if suspects:
            self._again.append(Batch(suspects, careful=True))

    def _died(self, batch: Batch) -> Iterator[tuple[Unit, _work.Answer]]:
        """Units on a worker when it died are not blamed for it until they have been processed alone."""
        half = len(batch.units) // 2
        deaths = batch.deaths + batch.careful
        if half:
            for units in (batch.units[:half], batch.units[half:]):
                self._again.append(Batch(units, careful=True, memory=batch.memory))
        elif deaths < DEATHS:
            self._again.append(Batch(batch.units, True, deaths, batch.memory))
        else:
            (unit,) = batch.units
            message = f"{DEATHS} workers died that asked it in a process of its own"
            yield unit, _work.failure(unit, unit.files[0], message)

    def _failed(self, batch: Batch, future: Any, error: Exception) -> None:
        """The cluster failed, not a unit. Cancelled batches have lost their scheduler."""
        self._again.append(batch)
        if future.cancelled() or not self._cluster.connected:
            return
        if isinstance(error, (TimeoutError, asyncio.TimeoutError)):
            batch.patience *= 2
            return
        self._faults += 1
        if self._faults > 3:
            said = f"{type(error).__name__}: {error}"
            raise UsageError(f"the workers cannot ask: {said}") from error

    def _look_after(self) -> None:
        """No result has arrived for a while."""
        if not self._cluster.connected:
            self._tell("the scheduler is lost, waiting for it")
            self._take_back()
            self._cluster.disconnect()
            self._cluster.connect()
            self._tell("the scheduler is there")
            return
        if self._cluster.workers:
            self._without_workers = None
            return
        now = time.monotonic()
        if self._without_workers is None:
            self._without_workers = now
        elif now - self._without_workers > self._patience:
            raise UsageError("the scheduler has no workers")
