"""The stores for rows: SQLite, PostgreSQL, or a folder of CSV files. One process writes.

Each has the table `orx_fleet` with a row for each file, which marks the file as done, or says why it
is not:

    file      its absolute path, the key
    unit      the unit that it was part of
    state     'done'; 'failed'; 'left' when another file of its unit failed
    size, modified    of the file then: bytes, nanoseconds since 1970
    rows, warnings    how many
    line, place_column, message    of a failure
    finished  when, in UTC

The marks and the rows of a unit are written in one transaction. Transactions may return before they
are on the disk: a power failure can undo the last of them, completely; these units are then repeated.
"""

from __future__ import annotations

import csv
import datetime
import os
import re
import sqlite3
import time
from collections.abc import Callable, Iterator, Sequence
from pathlib import Path
from typing import Any, NamedTuple

from orxexutilities.fleet._units import Failure, Stamp, Table, Unit, UsageError

MARKS = "orx_fleet"
_MARK_COLUMNS = {
    "file": "TEXT NOT NULL PRIMARY KEY",
    "unit": "TEXT NOT NULL",
    "state": "TEXT NOT NULL",
    "size": "BIGINT NOT NULL",
    "modified": "BIGINT NOT NULL",
    "rows": "BIGINT",
    "warnings": "BIGINT",
    "line": "BIGINT",
    "place_column": "BIGINT",
    "message": "TEXT",
    "finished": "TEXT NOT NULL",
}


class Mark(NamedTuple):
    unit: str
    state: str
    stamp: Stamp


class Refused(Exception):
    """The store cannot hold the rows of a unit, because of the rows."""


class Unavailable(Exception):
    """The store is temporarily unavailable or full."""


def quoted(name: str) -> str:
    return '"' + name.replace('"', '""') + '"'


class Store:
    """The base of all three. A subclass opens `self._connection` and knows its database."""

    placeholder = "?"

    def __init__(self, name: str, table: str, patience: float) -> None:
        self.name = _without_password(name)
        self._table = table.lower()
        self._patience = patience
        self._connection: Any = None
        self._columns: dict[str, str] = {}  # of the table of rows, with their types
        self.marks: dict[str, Mark] = {}
        self._file_written = ""

    # Specific to the database.

    def _is_there(self) -> bool:
        return True

    def _connect(self) -> None:
        raise NotImplementedError

    def _columns_of(self, table: str) -> dict[str, str]:
        raise NotImplementedError

    def _sorted(self, error: Exception) -> Exception:
        """The meaning of an error here: Refused, Unavailable, or the error itself."""
        raise NotImplementedError

    def _insert(self, table: str, columns: Sequence[str], rows: Sequence[Sequence[Any]]) -> None:
        raise NotImplementedError

    def _fit(self, table: Table) -> tuple[list[str], Sequence[Sequence[Any]]]:
        """Adds missing columns; returns the columns' names in the database, and rows that fit them."""
        raise NotImplementedError

    # Common to all.

    def peek(self) -> None:
        """The existing marks, without writing or creating anything."""
        try:
            if self._is_there():
                self._connect()
                if self._columns_of(MARKS):
                    self._look()
        except UsageError:
            raise
        except Exception as error:
            raise UsageError(f"{self.name}: {_said(error)}") from None

    def open(self) -> None:
        try:
            self._connect()
            columns = ", ".join(f"{quoted(name)} {kind}" for name, kind in _MARK_COLUMNS.items())
            self._execute(f"CREATE TABLE IF NOT EXISTS {MARKS} ({columns})")
            self._create_table()
            self._commit()
            self._look()
        except UsageError:
            raise
        except Exception as error:
            raise UsageError(f"{self.name}: {_said(error)}") from None

    def _create_table(self) -> None:
        table = quoted(self._table)
        self._execute(f"CREATE TABLE IF NOT EXISTS {table} (file TEXT NOT NULL)")
        self._columns = self._columns_of(self._table)
        if "file" not in self._columns:
            raise UsageError(f"{self.name}: its table {self._table} has no column file, it is not of such rows")
        index = quoted(f"{self._table}_file")
        self._execute(f"CREATE INDEX IF NOT EXISTS {index} ON {table} (file)")

    def _look(self) -> None:
        """The existing marks."""
        found = self._execute(f"SELECT file, unit, state, size, modified FROM {MARKS}")
        self.marks = {
            file: Mark(unit, state, Stamp(size, modified))
            for file, unit, state, size, modified in found
        }
        self._commit()

    def failures(self) -> Iterator[Failure]:
        """The units that are recorded."""
        left: dict[str, list[str]] = {}
        for unit, file in self._execute(f"SELECT unit, file FROM {MARKS} WHERE state = 'left'").fetchall():
            left.setdefault(unit, []).append(file)
        found = self._execute(
            f"SELECT unit, file, message, line, place_column FROM {MARKS} WHERE state = 'failed' ORDER BY file"
        ).fetchall()
        self._commit()
        for unit, file, message, line, column in found:
            yield Failure(file, message, line, column, tuple(left.get(unit, ())))

    def write(self, unit: Unit, answer: Sequence[Table] | Failure) -> Failure | None:
        """Writes and marks the results of a unit. Returns the failure, if the unit or this failed."""
        while True:
            try:
                self._insist(lambda: self._write(unit, answer), lambda: self._is_written(unit))
                return answer if isinstance(answer, Failure) else None
            except Refused as error:
                file = self._file_written
                others = tuple(other for other in unit.files if other != file)
                answer = Failure(file, f"its rows cannot be written: {error}", others=others)

    def finish(self) -> None:
        """Waits until everything written is on the disk."""

    def _insist(self, action: Callable[[], None], is_done: Callable[[], bool]) -> None:
        """Runs a function in one transaction, and retries while the store is unavailable. If the
        connection was lost, `is_done` tells whether the transaction had been committed."""
        deadline = None
        pause = 0.1
        while True:
            try:
                if deadline is not None:
                    self._reconnect()
                if deadline is None or not is_done():
                    action()
                return
            except Exception as error:
                sorted_error = self._sorted(error)
                self._roll_back()
                if isinstance(sorted_error, Refused):
                    raise sorted_error from error
                now = time.monotonic()
                deadline = deadline or now + self._patience
                if not isinstance(sorted_error, Unavailable) or now > deadline:
                    raise UsageError(f"{self.name}: {_said(error)}") from error
            time.sleep(pause)
            pause = min(2 * pause, 2.0)

    def _is_written(self, unit: Unit) -> bool:
        self._look_at(unit)
        return self.is_done(unit)

    def _write(self, unit: Unit, answer: Sequence[Table] | Failure) -> None:
        known = [file for file in unit.files if file in self.marks]
        if known:
            wanted = [(file,) for file in known]
            self._execute_many(f"DELETE FROM {MARKS} WHERE file = {self.placeholder}", wanted)
            self._remove(known)
        marks = self._marks_of(unit, answer)
        self._insert(MARKS, list(_MARK_COLUMNS), marks)
        if not isinstance(answer, Failure):
            for table in answer:
                self._file_written = table.file
                self._write_table(table)
        self._commit()
        for mark in marks:
            self.marks[mark[0]] = Mark(mark[1], mark[2], Stamp(mark[3], mark[4]))

    def _marks_of(self, unit: Unit, answer: Sequence[Table] | Failure) -> list[tuple[Any, ...]]:
        now = datetime.datetime.now(datetime.timezone.utc).isoformat(timespec="seconds")
        tables = {} if isinstance(answer, Failure) else {table.file: table for table in answer}
        marks: list[tuple[Any, ...]] = []
        for file, stamp in zip(unit.files, unit.stamps):
            if isinstance(answer, Failure):
                blamed = file == answer.file
                state = "failed" if blamed else "left"
                message = _writable(answer.message) if blamed else f"not done for {answer.file}"
                place = (answer.line, answer.column) if blamed else (None, None)
                marks.append((file, unit.name, state, *stamp, None, None, *place, message, now))
            else:
                table = tables[file]
                counts = (len(table.rows), table.warnings)
                marks.append((file, unit.name, "done", *stamp, *counts, None, None, None, now))
        return marks

    def is_done(self, unit: Unit) -> bool:
        return self._all(unit, ("done",))

    def is_failed(self, unit: Unit) -> bool:
        return self._all(unit, ("failed", "left"))

    def _all(self, unit: Unit, states: tuple[str, ...]) -> bool:
        """Whether the unit consisted of the same files, unchanged, and ended in one of
        these states."""
        for file, stamp in zip(unit.files, unit.stamps):
            mark = self.marks.get(file)
            if mark is None or mark.state not in states or mark.stamp != stamp or mark.unit != unit.name:
                return False
        return True

    def _look_at(self, unit: Unit) -> None:
        for file in unit.files:
            found = self._execute(
                f"SELECT unit, state, size, modified FROM {MARKS} WHERE file = {self.placeholder}", (file,)
            ).fetchone()
            if found is None:
                self.marks.pop(file, None)
            else:
                self.marks[file] = Mark(found[0], found[1], Stamp(*found[2:]))
        self._commit()

    def _remove(self, files: Sequence[str]) -> None:
        """Removes the rows of files."""
        statement = f"DELETE FROM {quoted(self._table)} WHERE file = {self.placeholder}"
        self._execute_many(statement, [(file,) for file in files])

    def _write_table(self, table: Table) -> None:
        if not table.rows:
            return
        columns, rows = self._fit(table)
        file = table.file
        self._insert(self._table, ["file", *columns], [(file, *row) for row in rows])

    def _execute(self, statement: str, values: Sequence[Any] = ()) -> Any:
        cursor = self._connection.cursor()
        cursor.execute(statement, *([values] if values else []))
        return cursor

    def _execute_many(self, statement: str, values: Sequence[Sequence[Any]]) -> None:
        self._connection.cursor().executemany(statement, values)

    def _commit(self) -> None:
        self._connection.commit()

    def _roll_back(self) -> None:
        if self._connection is not None:
            try:
                self._connection.rollback()
                self._columns = self._columns_of(self._table)
                self._connection.rollback()
            except Exception:
                self._connection = None

    def _reconnect(self) -> None:
        self.close()
        self._connect()
        self._columns = self._columns_of(self._table)

    def close(self) -> None:
        if self._connection is not None:
            try:
                self._connection.close()
            except Exception:
                pass
            self._connection = None


def _said(error: Exception) -> str:
    return str(error).strip() or type(error).__name__


def _writable(text: str) -> str:
    """A text without characters that a database rejects."""
    return text.encode("utf-8", "backslashreplace").decode().replace("\0", "\\0")


def _without_password(name: str) -> str:
    return re.sub(r"(postgres(?:ql)?://[^:/@]*):[^@]*@", r"\1@", name)


class SqliteStore(Store):
    def __init__(self, name: str, table: str, patience: float, file: str) -> None:
        super().__init__(name, table, patience)
        self._file = file

    # A database that is locked, full, failing or missing may be available again later; so may one
    # whose folder is not mounted.
    _FOR_NOW = {
        sqlite3.SQLITE_BUSY,
        sqlite3.SQLITE_LOCKED,
        sqlite3.SQLITE_FULL,
        sqlite3.SQLITE_IOERR,
        sqlite3.SQLITE_CANTOPEN,
    }

    def _is_there(self) -> bool:
        return os.path.exists(self._file)

    def _connect(self) -> None:
        self._connection = sqlite3.connect(self._file, timeout=5)
        self._connection.execute("PRAGMA journal_mode = WAL")
        self._connection.execute("PRAGMA synchronous = NORMAL")

    def _columns_of(self, table: str) -> dict[str, str]:
        found = self._execute(f"PRAGMA table_info({quoted(table)})")
        return {line[1].lower(): line[2] for line in found}

    def _sorted(self, error: Exception) -> Exception:
        if isinstance(error, sqlite3.IntegrityError):
            return Unavailable(error)  # another run has just written the same unit: see its marks
        if isinstance(error, sqlite3.OperationalError):
            code = getattr(error, "sqlite_errorcode", 0) & 0xFF
            return Unavailable(error) if code in self._FOR_NOW else error
        if isinstance(error, (sqlite3.DatabaseError, OverflowError, ValueError)):
            return Refused(error)
        return error

    def _insert(self, table: str, columns: Sequence[str], rows: Sequence[Sequence[Any]]) -> None:
        names = ", ".join(map(quoted, columns))
        places = ", ".join("?" * len(columns))
        self._execute_many(f"INSERT INTO {quoted(table)} ({names}) VALUES ({places})", rows)

    def _fit(self, table: Table) -> tuple[list[str], Sequence[Sequence[Any]]]:
        names = [name.lower() for name in table.columns]
        for name in names:
            if name not in self._columns:
                self._execute(f"ALTER TABLE {quoted(self._table)} ADD COLUMN {quoted(name)}")
                self._columns[name] = ""
        return names, table.rows


class CsvStore(SqliteStore):
    """A folder with a CSV file for each processed file, renamed when it is complete. The marks,
    and the CSV file of each, are in the file orx-fleet.sqlite of the folder."""

    NAMES = "orx_fleet_csv"

    def __init__(self, name: str, table: str, patience: float) -> None:
        self._folder = Path(name)
        super().__init__(name, table, patience, str(self._folder / "orx-fleet.sqlite"))

    def _connect(self) -> None:
        if not self._folder.is_dir():
            if self._folder.exists():
                raise UsageError(
                    f"{self.name} is a file: a folder for CSV files, sqlite:FILE or postgresql://… is expected"
                )
            self._folder.mkdir(parents=True)
        super()._connect()

    def _create_table(self) -> None:
        self._execute(
            f"CREATE TABLE IF NOT EXISTS {self.NAMES} (csv TEXT PRIMARY KEY, file TEXT UNIQUE NOT NULL)"
        )

    def _csv_of(self, file: str) -> Path:
        found: tuple[str] | None = self._execute(f"SELECT csv FROM {self.NAMES} WHERE file = ?", (file,)).fetchone()
        if found is None:
            found = next(
                (name,)
                for name in _names(Path(file).stem)
                if not self._execute(f"SELECT 1 FROM {self.NAMES} WHERE csv = ?", (name,)).fetchone()
            )
            self._execute(f"INSERT INTO {self.NAMES} VALUES (?, ?)", (*found, file))
        (name,) = found
        return self._folder / name

    def _remove(self, files: Sequence[str]) -> None:
        for file in files:
            self._csv_of(file).unlink(missing_ok=True)

    def _write_table(self, table: Table) -> None:
        path = self._csv_of(table.file)
        unfinished = path.with_name(f".{path.name}.part")
        try:
            with open(unfinished, "w", encoding="utf-8", newline="") as file:
                writer = csv.writer(file, lineterminator="\n")
                writer.writerow(["file", *table.columns])
                writer.writerows((table.file, *map(_text, row)) for row in table.rows)
                file.flush()
                os.fsync(file.fileno())
            unfinished.rename(path)
        except BaseException:
            unfinished.unlink(missing_ok=True)
            raise

    def _sorted(self, error: Exception) -> Exception:
        return Unavailable(error) if isinstance(error, OSError) else super()._sorted(error)


def _names(stem: str) -> Iterator[str]:
    yield f"{stem}.csv"
    number = 2
    while True:
        yield f"{stem}-{number}.csv"
        number += 1


class PostgresqlStore(Store):
    placeholder = "%s"
    # How long rows are kept that a crash of the server might lose.
    _CONFIRM_SECONDS = 1.0
    # A column has the type of its values; it is widened when a value of another type arrives.
    _TYPES = {bool: "boolean", int: "bigint", float: "double precision", bytes: "bytea"}

    def __init__(self, name: str, table: str, patience: float, uri: str) -> None:
        super().__init__(name, table, patience)
        self._uri = uri
        # Rows that a crash of the server may lose: written since the last confirmation.
        self._unconfirmed: list[tuple[Unit, Sequence[Table] | Failure]] = []
        self._confirmed = time.monotonic()

    def _connect(self) -> None:
        import psycopg2

        self._connection = psycopg2.connect(self._uri, application_name="orx-fleet", connect_timeout=10)
        self._execute("SET synchronous_commit = off")
        self._execute("SET client_min_messages = warning")
        self._commit()

    def _columns_of(self, table: str) -> dict[str, str]:
        found = self._execute(
            "SELECT attname, format_type(atttypid, atttypmod) FROM pg_attribute"
            " WHERE attrelid = to_regclass(%s) AND attnum > 0 AND NOT attisdropped",
            (quoted(table),),
        )
        return dict(found)

    def _write(self, unit: Unit, answer: Sequence[Table] | Failure) -> None:
        confirm = time.monotonic() - self._confirmed > self._CONFIRM_SECONDS
        if confirm:
            self._execute("SET LOCAL synchronous_commit = on")
        super()._write(unit, answer)
        self._unconfirmed.append((unit, answer))
        if confirm:
            self._forget()

    def finish(self) -> None:
        self._insist(self._confirm, lambda: False)

    def _confirm(self) -> None:
        """A transaction that waits for the disk waits for all previous ones."""
        self._execute("SET LOCAL synchronous_commit = on")
        self._execute("SELECT txid_current()")
        self._commit()
        self._forget()

    def _forget(self) -> None:
        self._unconfirmed.clear()
        self._confirmed = time.monotonic()

    def _reconnect(self) -> None:
        super()._reconnect()
        for unit, answer in self._unconfirmed:
            self._look_at(unit)
            if not (self.is_done(unit) or self.is_failed(unit)):
                super()._write(unit, answer)

    def _sorted(self, error: Exception) -> Exception:
        import psycopg2

        # A plain DatabaseError, not a subclass, comes from a broken connection.
        broken = type(error) is psycopg2.DatabaseError
        if broken or self._connection is None or self._connection.closed:
            return Unavailable(error)
        if isinstance(error, (psycopg2.OperationalError, psycopg2.InterfaceError)):
            return Unavailable(error)
        if isinstance(error, psycopg2.IntegrityError):
            return Unavailable(error)  # another run has just written the same unit: see its marks
        if isinstance(error, (psycopg2.DataError, ValueError, OverflowError)):
            return Refused(error)
        return error

    def _insert(self, table: str, columns: Sequence[str], rows: Sequence[Sequence[Any]]) -> None:
        from psycopg2.extras import execute_values

        names = ", ".join(quoted(name).replace("%", "%%") for name in columns)
        statement = f"INSERT INTO {quoted(table).replace('%', '%%')} ({names}) VALUES %s"
        execute_values(self._connection.cursor(), statement, rows, page_size=500)

    def _fit(self, table: Table) -> tuple[list[str], Sequence[Sequence[Any]]]:
        names = [name.lower() for name in table.columns]
        rows: Sequence[Sequence[Any]] = table.rows
        as_text: list[int] = []
        for position, name in enumerate(names):
            needed = self._type_of(row[position] for row in rows)
            present = self._columns.get(name)
            if present is None:
                kind = needed or "text"
                self._execute(f"ALTER TABLE {quoted(self._table)} ADD COLUMN {quoted(name)} {kind}")
                self._columns[name] = kind
            elif needed and needed != present and (present, needed) != ("double precision", "bigint"):
                kind = "double precision" if (present, needed) == ("bigint", "double precision") else "text"
                if kind != present:
                    self._widen(name, present, kind)
            if self._columns[name] == "text" and needed != "text":
                as_text.append(position)
        if as_text:
            rows = [
                [_text(value) if i in as_text else value for i, value in enumerate(row)] for row in rows
            ]
        return names, rows

    def _type_of(self, values: Iterator[Any]) -> str | None:
        kinds = {self._TYPES.get(type(value), "text") for value in values if value is not None}
        if kinds == {"bigint", "double precision"}:
            return "double precision"
        return kinds.pop() if len(kinds) == 1 else "text" if kinds else None

    def _widen(self, name: str, present: str, kind: str) -> None:
        column = quoted(name)
        value = f"encode({column}, 'hex')" if present == "bytea" else f"{column}::{kind}"
        self._execute(
            f"ALTER TABLE {quoted(self._table)} ALTER COLUMN {column} TYPE {kind} USING {value}"
        )
        self._columns[name] = kind


def _text(value: Any) -> Any:
    if value is None or isinstance(value, str):
        return value
    if isinstance(value, bool):
        return "true" if value else "false"
    return value.hex() if isinstance(value, bytes) else str(value)


def store_for(name: str, table: str, patience: float) -> Store:
    if not re.fullmatch(r"[A-Za-z_]\w*", table, re.ASCII) or table.lower().startswith(MARKS):
        raise UsageError(f"{table!r} cannot be the name of the table of rows")
    if name.startswith("sqlite:"):
        file = name.removeprefix("sqlite:")
        if not file:
            raise UsageError("sqlite: names no file")
        return SqliteStore(name, table, patience, file)
    if name.startswith(("postgresql://", "postgres://")):
        try:
            import psycopg2  # noqa: F401
        except ImportError:
            raise UsageError(f"{name}: python3-psycopg2 is needed") from None
        return PostgresqlStore(name, table, patience, name)
    return CsvStore(name, table, patience)

