"""The code that runs on the workers: reads units and applies the rules."""

from __future__ import annotations

import ctypes
import json
import math
import os
import pickle
import resource
import signal
import subprocess
import sys
import threading
import time
import warnings
from collections.abc import Iterable, Mapping, Sequence
from dataclasses import dataclass
from typing import Any

import orxexutilities as orx
from orxexutilities.fleet._units import Failure, Reading, Rules, Table, Unit

# The tables of a unit's files, or why there are none.
Answer = list[Table] | Failure


@dataclass(frozen=True, slots=True)
class Suspect:
    """A unit that ran out of memory: processed alone, it may have enough."""

    unit: Unit


# The functions serve one call at a time, and the memory is calculated for one unit at a time.
_turn = threading.Lock()


def ask_all(
    units: Sequence[Unit], rules: Rules, reading: Reading
) -> tuple[float, list[Answer | Suspect]]:
    """The task for a batch of units: returns its duration and the results."""
    with _turn:
        start = time.monotonic()
        answers = [ask(unit, rules, reading) for unit in units]
        return time.monotonic() - start, answers


# The data set of the last pieces.
_cut: dict[tuple[str, Any, Reading], orx.Model] = {}


def ask(unit: Unit, rules: Rules, reading: Reading) -> Answer | Suspect:
    loaded = rules.load()
    models: dict[str, orx.Model] = {}
    counts: dict[str, int] = {}
    file = unit.files[0]
    if unit.source is None:
        _cut.clear()
    try:
        for file in unit.files:
            models[file], counts[file] = _read(unit, file, reading)
    except MemoryError:
        return Suspect(unit)
    except orx.Error as error:
        return failure(unit, file, _without_place(error), error.line, error.column)
    except Exception as error:
        return failure(unit, file, f"{type(error).__name__}: {error}")

    try:
        if loaded.pieces is not None and unit.source is None:
            loaded.pieces(models[file])
            raise ValueError("it could not be cut into pieces when the run began")
        tables = []
        for file, model in models.items():
            second = models if unit.source is None else unit.piece
            found = loaded.rows(model, second) if loaded.takes_two else loaded.rows(model)
            tables.append(_table(file, found, counts[file]))
        return tables
    except MemoryError:
        return Suspect(unit)
    except (Exception, SystemExit) as error:
        return failure(unit, file, rules.place_of(error))
    finally:
        orx.RemoveValueVersion()


def _read(unit: Unit, file: str, reading: Reading) -> tuple[orx.Model, int]:
    """A model, and the number of warnings. The model of a piece is kept for the next one."""
    if unit.source is not None:
        key = (unit.source, unit.stamps, reading)
        if key not in _cut:
            _cut.clear()
            _cut[key], _ = _counted(unit.source, reading)
        return _cut[key], 0
    return _counted(file, reading)


def _counted(file: str, reading: Reading) -> tuple[orx.Model, int]:
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always", orx.DataWarning)
        model = reading.read(file)
    return model, sum(issubclass(warning.category, orx.DataWarning) for warning in caught)


def failure(unit: Unit, file: str, message: str, line: int | None = None, column: int | None = None) -> Failure:
    return Failure(file, message, line, column, tuple(f for f in unit.files if f != file))


def _without_place(error: orx.Error) -> str:
    """All messages about a file; the first one without its place, which is reported separately."""
    place = ":".join(str(part) for part in (error.file, error.line, error.column) if part is not None)
    first, *more = error.messages
    return "\n".join([first.removeprefix(f"{place}: "), *more])


# ---- Rows


# Types that are written as they are.
_FLAT = frozenset({type(None), bool, int, float, str, bytes})


def _table(file: str, found: Iterable[Mapping[str, Any]] | None, count: int) -> Table:
    columns: list[str] = []
    rows: list[tuple[Any, ...]] = []
    for row in () if found is None else found:
        if type(row) is dict and list(row) == columns:
            values = tuple(row.values())
        else:
            values = _in_columns(columns, row)
        if not _FLAT.issuperset(map(type, values)):
            values = tuple(map(_plain, columns, values))
        rows.append(values)
    width = len(columns)
    if rows and len(rows[0]) < width:
        rows = [(*row, *[None] * (width - len(row))) for row in rows]
    for position, values in enumerate(zip(*rows)):
        if int in set(map(type, values)) and any(map(_is_wide, values)):
            rows = [(*r[:position], _narrow(r[position]), *r[position + 1 :]) for r in rows]
    return Table(file, tuple(columns), rows, count)


def _in_columns(columns: list[str], row: Any) -> tuple[Any, ...]:
    """The values of a row in the order of the columns, to which it adds those of the row."""
    if not isinstance(row, Mapping):
        raise TypeError(f"rows() gave {_a(row)}, a dict is expected")
    for name in row:
        if name not in columns:
            _add(columns, name)
    return tuple(row[name] if name in row else None for name in columns)


def _add(columns: list[str], name: Any) -> None:
    if not isinstance(name, str) or not name:
        raise TypeError(f"{name!r} cannot be the name of a column")
    folded = name.lower()
    if folded == "file":
        raise ValueError("the column 'file' is the name of the file, a row may not have its own")
    if any(folded == other.lower() for other in columns):
        raise ValueError(f"{name!r} is the name of two columns: capitals do not count")
    columns.append(name)


def _a(value: object) -> str:
    return f"a value of type {type(value).__name__}"


def _plain(column: str, value: Any) -> Any:
    """A value as a database holds it: unset and unknown as NULL, an instance as its number, a list as
    JSON, an integer of more than 64 bits as text."""
    if type(value) in _FLAT:
        return value
    if value is orx.UNKNOWN:
        return None
    if isinstance(value, orx.Typed):
        return _plain(column, value.value)
    if isinstance(value, (orx.Enum, orx.Binary)):
        return str(value)
    if isinstance(value, orx.Instance):
        return value.number
    if hasattr(value, "tolist"):  # numpy
        return _plain(column, value.tolist())
    if hasattr(value, "isoformat"):
        return value.isoformat()
    if isinstance(value, (list, tuple, dict)):
        return json.dumps(_members(column, value), ensure_ascii=False)
    for base in (int, float, str, bytes):
        if isinstance(value, base):
            return _plain(column, base(value))
    raise TypeError(f"column {column!r}: {_a(value)} cannot be written")


def _is_wide(value: Any) -> bool:
    return isinstance(value, int) and not -(2**63) <= value < 2**63


def _narrow(value: Any) -> Any:
    return str(value) if _is_wide(value) else value


def _members(column: str, value: Any) -> Any:
    if isinstance(value, (list, tuple)):
        return [_members(column, member) for member in value]
    if isinstance(value, dict):
        return {str(key): _members(column, member) for key, member in value.items()}
    if isinstance(value, int):
        return value
    if isinstance(value, float) and not math.isfinite(value):
        return str(value)
    return _plain(column, value)


# ---- Units on which a worker died, each in isolation


def ask_carefully(
    units: Sequence[Unit], rules: Rules, reading: Reading, memory: int | None = None
) -> tuple[float, list[Answer]]:
    """The task for units that were on a worker when it died, or that are too large for one. They are
    processed in a separate process; if that dies, the unit is retried alone before it is blamed.
    `memory` limits the process, by default to the memory of its worker."""
    with _turn:
        start = time.monotonic()
        memory = memory or _memory_of_worker()
        answers: list[Answer] = []
        child: _Child | None = None
        try:
            for unit in units:
                answer: Answer | None = None
                if child is not None:
                    answer = child.ask(unit)
                if answer is None:
                    if child is not None:
                        child.close()
                    child, answer = _ask_alone(unit, rules, reading, memory)
                answers.append(answer)
        finally:
            if child is not None:
                child.close()
        return time.monotonic() - start, answers


# Killed this often, a process was not killed by accident: by a person, or for memory used elsewhere.
KILLS = 3


def _ask_alone(
    unit: Unit, rules: Rules, reading: Reading, memory: int | None
) -> tuple[_Child | None, Answer]:
    for attempt in range(KILLS):
        child = _Child(rules, reading, memory)
        answer = child.ask(unit)
        if answer is not None:
            return child, answer
        child.close()
        if child.status != -signal.SIGKILL:
            break
    return None, failure(unit, unit.files[0], f"the process that asked it {_death(child.status)}")


def _death(status: int) -> str:
    if status >= 0:
        return f"ended with status {status}"
    number = -status
    try:
        said = f"{signal.strsignal(number)}, {signal.Signals(number).name}"
    except ValueError:
        said = f"signal {number}"
    times = f", {KILLS} times" if number == signal.SIGKILL else ""
    return f"died ({said}{times})"


def _memory_of_worker() -> int | None:
    from distributed import get_worker

    try:
        return get_worker().memory_manager.memory_limit or None
    except ValueError:
        return None


class _Child:
    """A process that processes units. It dies with its parent."""

    def __init__(self, rules: Rules, reading: Reading, memory: int | None) -> None:
        beside = os.path.dirname(os.path.dirname(orx.__file__))
        paths = [beside, *filter(None, [os.environ.get("PYTHONPATH")])]
        self._process = subprocess.Popen(
            [sys.executable, "-m", "orxexutilities.fleet._work"],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            env=os.environ | {"PYTHONPATH": os.pathsep.join(paths)},
        )
        assert self._process.stdin is not None and self._process.stdout is not None
        self._questions, self._answers = self._process.stdin, self._process.stdout
        self.status = 0
        self._send((os.getpid(), rules, reading, memory))

    def _send(self, what: Any) -> None:
        try:
            pickle.dump(what, self._questions)
            self._questions.flush()
        except BrokenPipeError:
            pass

    def ask(self, unit: Unit) -> Answer | None:
        """None if the process died instead of answering."""
        self._send(unit)
        try:
            answer: Answer = pickle.load(self._answers)
            return answer
        except (EOFError, pickle.UnpicklingError):
            return None

    def close(self) -> None:
        try:
            self._questions.close()
        except BrokenPipeError:
            pass
        self._answers.close()
        self.status = self._process.wait()


def _answer_questions() -> None:
    """The process of a _Child: reads requests from standard input and writes answers to the original
    standard output; the output of the rules goes to standard error."""
    answers = os.fdopen(os.dup(1), "wb")
    os.dup2(2, 1)
    questions = sys.stdin.buffer
    parent, rules, reading, memory = pickle.load(questions)
    PR_SET_PDEATHSIG = 1
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGKILL)
    if os.getppid() != parent:
        sys.exit(1)
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    if memory:
        resource.setrlimit(resource.RLIMIT_DATA, (memory, memory))
    while True:
        try:
            unit = pickle.load(questions)
        except EOFError:
            return
        answer = ask(unit, rules, reading)
        if isinstance(answer, Suspect):
            allowed = f" than the {memory / 2**20:,.0f} MiB of a worker" if memory else " than there is"
            answer = failure(unit, unit.files[0], f"takes more memory{allowed}")
        pickle.dump(answer, answers)
        answers.flush()


if __name__ == "__main__":
    # Under its own name, by which pickled objects refer to it.
    from orxexutilities.fleet import _work

    _work._answer_questions()
