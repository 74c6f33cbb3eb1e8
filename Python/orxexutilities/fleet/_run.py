"""A run: finds the files, has them processed and reports the outcome."""

from __future__ import annotations

import os
import time
from collections.abc import Callable, Hashable, Iterable, Mapping
from dataclasses import dataclass, field
from typing import Any

from orxexutilities.fleet._results import store_for
from orxexutilities.fleet._units import Failure, Reading, Rules, Unit, UsageError, files_of, units_of


@dataclass
class Outcome:
    """The outcome of a run. `done`, `before` and `to_do` count files; a file done in an earlier run is
    not processed again unless it has changed."""

    done: int = 0
    before: int = 0
    rows: int = 0
    warnings: int = 0
    failures: list[Failure] = field(default_factory=list)
    seconds: float = 0.0  # of processing, without starting the cluster

    # Of a dry run: the units that would be processed.
    to_do: list[Unit] = field(default_factory=list)

    @property
    def failed(self) -> int:
        """The number of files without rows because of failures."""
        return sum(1 + len(failure.others) for failure in self.failures)


class Progress:
    """Receives the progress of a run; this one ignores it."""

    def begin(self, files: int) -> None: ...

    def advance(self, files: int, failures: int) -> None: ...

    def tell(self, message: str) -> None: ...

    def end(self) -> None: ...


def run(
    rules: str | os.PathLike[str] | Callable[..., Iterable[Mapping[str, Any]] | None],
    files: Iterable[str | os.PathLike[str]],
    result: str | os.PathLike[str],
    *,
    group: Callable[[str], Hashable] | None = None,
    scheduler: str | None = None,
    workers: int | None = None,
    memory: int | None = None,
    schemas: Iterable[str | os.PathLike[str]] = (),
    lenient: bool = False,
    variables: Mapping[str, str] | None = None,
    table: str = "rows",
    retry_failed: bool = False,
    dry_run: bool = False,
    patience: float = 600.0,
    progress: Progress | None = None,
) -> Outcome:
    """Applies rules to files, and writes the rows.

    rules         a file that defines rows(model), and group(path) if files belong together; or the
                  function rows itself, with `group` as a separate argument
    files         files, folders to search for exchange files, or databases
    result        "sqlite:FILE", "postgresql://…", or a folder for one CSV file per file
    scheduler     the address of a Dask scheduler; without one, workers are started on this machine
    workers       their number, by default one for each processor; each uses at most `memory` bytes
    variables     texts that a file of rules gets as global variables, by name
    table         the table that the rows are written to
    retry_failed  retries what failed in an earlier run; changed files are always processed
    dry_run       only reports what would be done; reads and writes nothing
    patience      seconds to wait for a scheduler or database that is down

    Files that fail are part of the outcome. Anything that stops the whole run is a UsageError; the same
    call continues from there.
    """
    progress = progress or Progress()
    the_rules = Rules.of(rules, group, variables)
    reading = Reading(tuple(os.path.abspath(schema) for schema in schemas), lenient)
    units = units_of(files_of(files), the_rules, reading)
    store = store_for(os.fspath(result), table, patience)
    try:
        store.peek() if dry_run else store.open()
        outcome = _outcome_before(units, store, retry_failed)
        if not dry_run:
            _ask(outcome, store, the_rules, reading, (scheduler, workers, memory, patience), progress)
    finally:
        store.close()
    return outcome


def _outcome_before(units: Iterable[Unit], store: Any, retry_failed: bool) -> Outcome:
    """What earlier runs have left to do, and what fails without being processed."""
    outcome = Outcome()
    failed_before: set[str] = set()
    for unit in units:
        unreadable = [file for file in unit.files if not _is_text(file)]
        if unreadable:
            others = tuple(file for file in unit.files if file != unreadable[0])
            outcome.failures.append(Failure(unreadable[0], "its name is not UTF-8", others=others))
        elif store.is_done(unit):
            outcome.before += len(unit.files)
        elif not retry_failed and store.is_failed(unit):
            failed_before.update(unit.files)
        else:
            outcome.to_do.append(unit)
    if failed_before:
        outcome.failures += [f for f in store.failures() if f.file in failed_before]
    return outcome


def _is_text(name: str) -> bool:
    try:
        name.encode()
    except UnicodeEncodeError:
        return False
    return True


def _ask(outcome: Outcome, store: Any, rules: Rules, reading: Reading, where: Any, progress: Progress) -> None:
    if not outcome.to_do:
        return
    from orxexutilities.fleet._cluster import Cluster, Dispatch

    units, outcome.to_do = outcome.to_do, []
    progress.begin(sum(len(unit.files) for unit in units))
    try:
        with Cluster(*where) as cluster:
            start = time.monotonic()
            for unit, answer in Dispatch(cluster, units, rules, reading, where[-1], progress.tell).answers():
                failure = store.write(unit, answer)
                if failure is not None:
                    outcome.failures.append(failure)
                elif not isinstance(answer, Failure):
                    outcome.done += len(unit.files)
                    outcome.rows += sum(len(table.rows) for table in answer)
                    outcome.warnings += sum(table.warnings for table in answer)
                progress.advance(len(unit.files), len(outcome.failures))
            store.finish()
            outcome.seconds = time.monotonic() - start
    finally:
        progress.end()
    outcome.failures.sort(key=lambda failure: failure.file)
