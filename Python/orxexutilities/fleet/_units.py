"""Files, the units that they form, and the rules applied to them. Nothing here needs Dask."""

from __future__ import annotations

import inspect
import os
import sys
import traceback
import types
from collections.abc import Callable, Hashable, Iterable, Iterator, Mapping
from dataclasses import dataclass, field
from typing import Any, NamedTuple

import orxexutilities as orx

# The files to search for in a folder.
SUFFIXES = (".stp", ".step", ".p21", ".stpx21")
# Prefixes of data sets in databases.
DATABASES = ("sqlite:", "postgresql://", "postgres://")


class UsageError(ValueError):
    """A run cannot begin or cannot continue: bad rules, a missing file list, a result that cannot be
    written, no scheduler."""


class Stamp(NamedTuple):
    """Shows whether a file has changed."""

    size: int
    modified: int  # nanoseconds


@dataclass(frozen=True, slots=True)
class Unit:
    """Files that are processed together: all of them, or none."""

    name: str
    files: tuple[str, ...]
    stamps: tuple[Stamp, ...]
    # Of a piece of a data set: the data set, the number of its pieces, and the value for the rules.
    source: str | None = None
    pieces: int = 1
    piece: Any = field(default=None, compare=False)

    @property
    def size(self) -> int:
        """The number of bytes that are read for it."""
        return sum(stamp.size for stamp in self.stamps)

    @property
    def share(self) -> int:
        """Its share of these bytes."""
        return self.size // self.pieces


@dataclass(frozen=True, slots=True)
class Failure:
    """Why a unit is not done. `file` is the cause, and `line` and `column` the place in it, if known;
    `others` are the remaining files of the unit, which are not done either."""

    file: str
    message: str
    line: int | None = None
    column: int | None = None
    others: tuple[str, ...] = ()

    def __str__(self) -> str:
        place = ":".join(str(part) for part in (self.file, self.line, self.column) if part is not None)
        left_out = f" (and {len(self.others)} more of its unit)" if self.others else ""
        return f"{place}: {self.message}{left_out}"


class Table(NamedTuple):
    """The rows of a file. A row has a value for each column."""

    file: str
    columns: tuple[str, ...]
    rows: list[tuple[Any, ...]]
    warnings: int  # the number of problems in the file that did not prevent reading


@dataclass(frozen=True, slots=True)
class Reading:
    """How files are read."""

    schemas: tuple[str, ...] = ()
    lenient: bool = False

    def read(self, file: str) -> Any:
        return orx.read(file, schemas=self.schemas, lenient=self.lenient)


@dataclass(frozen=True, slots=True)
class Rules:
    """Rules in the form sent to workers: the text of a file, or pickled functions."""

    path: str
    text: str = ""
    pickled: bytes = b""
    variables: tuple[tuple[str, str], ...] = ()

    @classmethod
    def of(
        cls,
        rules: Any,
        group: Callable[[str], Hashable] | None = None,
        variables: Mapping[str, str] | None = None,
    ) -> Rules:
        if callable(rules):
            import cloudpickle

            code = getattr(rules, "__code__", None)
            path = code.co_filename if code else repr(rules)
            return cls(path, pickled=cloudpickle.dumps((rules, group)))
        path = os.path.abspath(rules)
        try:
            with open(path, encoding="utf-8") as file:
                return cls(path, file.read(), variables=tuple((variables or {}).items()))
        except (OSError, UnicodeDecodeError) as error:
            raise UsageError(f"{rules}: {getattr(error, 'strerror', None) or error}") from None

    def load(self) -> Loaded:
        """The functions. Each process creates them once."""
        if self not in _loaded:
            _loaded.clear()
            _loaded[self] = self._make()
        return _loaded[self]

    def _make(self) -> Loaded:
        if self.pickled:
            import cloudpickle

            return Loaded(*cloudpickle.loads(self.pickled))
        module = types.ModuleType("orx_fleet_rules")
        module.__file__ = self.path
        sys.modules[module.__name__] = module
        folder = os.path.dirname(self.path)
        if folder not in sys.path:
            sys.path.insert(0, folder)
        exec(compile(self.text, self.path, "exec"), module.__dict__)
        module.__dict__.update(self.variables)
        rows = getattr(module, "rows", None)
        if not callable(rows):
            raise UsageError(f"{self.path}: there is no function rows(model)")
        return Loaded(rows, getattr(module, "group", None), getattr(module, "pieces", None))

    def place_of(self, error: BaseException) -> str:
        """An error, with the line of the rules where it occurred."""
        if isinstance(error, SyntaxError) and error.filename == self.path:
            return f"{self.path}:{error.lineno}: {error.msg}"
        said = str(error)
        text = f"{type(error).__name__}: {said}" if said else type(error).__name__
        lines = [
            frame.lineno
            for frame in traceback.extract_tb(error.__traceback__)
            if frame.filename == self.path
        ]
        return f"{self.path}:{lines[-1]}: {text}" if lines else text


class Loaded(NamedTuple):
    rows: Callable[..., Any]
    group: Callable[[str], Hashable] | None
    pieces: Callable[[Any], Mapping[str, Any]] | None = None

    @property
    def takes_two(self) -> bool:
        """Whether rows() also takes the models of the whole unit, or the piece."""
        kinds = (inspect.Parameter.POSITIONAL_ONLY, inspect.Parameter.POSITIONAL_OR_KEYWORD)
        try:
            parameters = inspect.signature(self.rows).parameters.values()
        except (TypeError, ValueError):
            return False
        return sum(p.kind in kinds and p.default is p.empty for p in parameters) > 1


_loaded: dict[Rules, Loaded] = {}


def files_of(names: Iterable[str | os.PathLike[str]]) -> Iterator[str]:
    """The absolute paths of the named files, and of the files in the named folders."""
    for name in map(os.fspath, names):
        if name.startswith(DATABASES):
            scheme, rest = name.split(":", 1)
            yield f"sqlite:{os.path.abspath(rest)}" if scheme == "sqlite" else name
        elif os.path.isdir(name):
            for folder, folders, files in os.walk(os.path.abspath(name)):
                folders.sort()
                for file in sorted(files):
                    if file.lower().endswith(SUFFIXES):
                        yield os.path.join(folder, file)
        else:
            yield os.path.abspath(name)


def stamp_of(file: str) -> Stamp:
    """The present size and time of a file; zero if it is missing or on a database server."""
    path = file.removeprefix("sqlite:")
    try:
        status = os.stat(path)
    except OSError:
        return Stamp(0, 0)
    return Stamp(status.st_size, status.st_mtime_ns)


def units_of(files: Iterable[str], rules: Rules, reading: Reading) -> list[Unit]:
    """Each file once, in units as formed by group(), or in pieces."""
    try:
        loaded = rules.load()
    except UsageError:
        raise
    except BaseException as error:
        raise UsageError(rules.place_of(error)) from None
    files = dict.fromkeys(files)
    if loaded.pieces is None:
        return _groups(files, loaded, rules)
    if loaded.group is not None:
        raise UsageError(f"{rules.path}: there is group() or pieces(), not both")
    return [unit for file in files for unit in _pieces(file, loaded, reading)]


def _groups(files: Iterable[str], loaded: Loaded, rules: Rules) -> list[Unit]:
    members: dict[str, list[str]] = {}
    for file in files:
        try:
            key = loaded.group(file) if loaded.group else None
        except Exception as error:
            raise UsageError(f"group({file!r}): {rules.place_of(error)}") from None
        members.setdefault(file if key is None else str(key), []).append(file)
    return [
        Unit(name, tuple(sorted(together)), tuple(map(stamp_of, sorted(together))))
        for name, together in members.items()
    ]


def _pieces(file: str, loaded: Loaded, reading: Reading) -> list[Unit]:
    """The pieces of a data set. If cutting fails, the whole is a unit, which will then fail, too."""
    assert loaded.pieces is not None
    stamp = stamp_of(file)
    try:
        pieces = dict(loaded.pieces(reading.read(file)))
    except Exception:
        return [Unit(file, (file,), (stamp,))]
    return [
        Unit(f"{file}#{name}", (f"{file}#{name}",), (stamp,), file, len(pieces), piece)
        for name, piece in pieces.items()
    ]
