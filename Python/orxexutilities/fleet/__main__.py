"""The command orx-fleet."""

from __future__ import annotations

import argparse
import contextlib
import logging
import os
import signal
import sys
from collections.abc import Iterator
from typing import Any

from orxexutilities.fleet._run import Outcome, Progress, run
from orxexutilities.fleet._units import Failure, UsageError

DESCRIPTION = """Asks many exchange files with the rules of a Python file, on all processors of this
machine or on the workers of a Dask scheduler, and writes the rows to a database or a folder."""

EPILOG = """RULES.py defines rows(model), which yields a dict for each row, and may define group(path):
files for which it gives the same are read together. If a run is interrupted, the same command resumes it.
Exit status: 0 every file is done, 1 some failed, 2 the run could not start or continue, 130 it was
interrupted."""

# How many failures are reported individually.
FAILURES_TOLD = 100


def say(message: str) -> None:
    for line in printable(message).splitlines():
        print(f"orx-fleet: {line}", file=sys.stderr)


def printable(text: str) -> str:
    """A text from a file, without control characters for terminals."""
    return "".join(c if c.isprintable() or c in "\n\t" else repr(c)[1:-1] for c in text)


class Watch(Progress):
    """Ends a run on request. The exception of a signal may be lost where it cannot be caught."""

    stopped = False

    def advance(self, files: int, failures: int) -> None:
        if self.stopped:
            raise KeyboardInterrupt

    def stop(self, *_: object) -> None:
        self.stopped = True
        raise KeyboardInterrupt


class Bar(Watch):
    """A progress bar, on a terminal."""

    def __init__(self) -> None:
        self._bar: Any = None

    def begin(self, files: int) -> None:
        if not sys.stderr.isatty():
            return
        with contextlib.suppress(ImportError):
            from tqdm import tqdm

            self._bar = tqdm(total=files, unit="file", dynamic_ncols=True, smoothing=0.05)

    def advance(self, files: int, failures: int) -> None:
        if self._bar is not None:
            if failures:
                self._bar.set_postfix(failed=failures, refresh=False)
            self._bar.update(files)
        super().advance(files, failures)

    def tell(self, message: str) -> None:
        if self._bar is None:
            say(message)
        else:
            self._bar.clear()
            say(message)

    def end(self) -> None:
        if self._bar is not None:
            self._bar.close()


def bytes_of(text: str) -> int:
    from dask.utils import parse_bytes

    try:
        value = parse_bytes(text)
    except ValueError:
        value = 0
    if value <= 0:
        raise argparse.ArgumentTypeError(f"{text!r} is no size: 4GB, 512MiB")
    return int(value)


def definition(text: str) -> tuple[str, str]:
    name, equals, value = text.partition("=")
    if not equals or not name.isidentifier():
        raise argparse.ArgumentTypeError(f"{text!r} is not of the form NAME=TEXT")
    return name, value


def positive(text: str) -> int:
    value = int(text) if text.isascii() and text.isdigit() else 0
    if value <= 0:
        raise argparse.ArgumentTypeError(f"{text!r} is no number above 0")
    return value


def parser() -> argparse.ArgumentParser:
    arguments = argparse.ArgumentParser(
        "orx-fleet", description=DESCRIPTION, epilog=EPILOG, allow_abbrev=False
    )
    add = arguments.add_argument
    add("rules", metavar="RULES.py", help="the rules")
    add("files", metavar="FILE", nargs="*", help="an exchange file, or a folder that is searched for them")
    add("-o", "--output", metavar="RESULT", required=True,
        help="sqlite:FILE, postgresql://…, or a folder for a CSV file per file")  # fmt: skip
    add("--files-from", metavar="LIST", action="append", default=[],
        help='files and folders, one in a line of LIST ("-": standard input)')  # fmt: skip
    add("--scheduler", metavar="ADDRESS", help="a Dask scheduler, tcp://HOST:PORT")
    add("--workers", metavar="N", type=positive,
        help="how many workers are started here; as many as processors unless given")  # fmt: skip
    add("--memory", metavar="SIZE", type=bytes_of, help="what each of them may take: 4GB")
    add("-s", "--schema", metavar="FILE", action="append", default=[], help="an EXPRESS schema")
    add("--lenient", action="store_true", help="read damaged files as far as they go")
    add("-D", "--define", metavar="NAME=TEXT", type=definition, action="append", default=[],
        help="a global variable of the rules")  # fmt: skip
    add("--table", metavar="NAME", default="rows", help="the table of the rows; rows unless given")
    add("--retry-failed", action="store_true", help="ask again what failed in an earlier run")
    add("--dry-run", action="store_true", help="print the units that would be asked, one in a line")
    add("--patience", metavar="SECONDS", type=float, default=600.0,
        help="how long to wait for a scheduler or database that is down; 600 unless given")  # fmt: skip
    add("-q", "--quiet", action="store_true", help="no progress bar, and nothing when all went well")
    return arguments


def listed(lists: list[str]) -> Iterator[str]:
    for name in lists:
        try:
            with open(0 if name == "-" else name, encoding="utf-8", errors="surrogateescape") as file:
                yield from filter(None, (line.rstrip("\r\n") for line in file))
        except OSError as error:
            raise UsageError(f"{name}: {error.strerror}") from None


def report(outcome: Outcome, result: str, quiet: bool) -> None:
    for failure in outcome.failures[:FAILURES_TOLD]:
        say(str(failure))
    more = len(outcome.failures) - FAILURES_TOLD
    if more > 0:
        say(f"{more} more failures are in the table orx_fleet of the result")
    if quiet and not outcome.failures:
        return
    parts = [f"{outcome.done} files done"]
    if outcome.before:
        parts.append(f"{outcome.before} were done before")
    if outcome.failures:
        parts.append(f"{outcome.failed} not done")
    if outcome.warnings:
        parts.append(f"{outcome.warnings} warnings")
    parts.append(f"{outcome.rows} rows in {outcome.seconds:.1f} s")
    say(", ".join(parts))


def report_dry(outcome: Outcome) -> None:
    for unit in outcome.to_do:
        print(printable("\t".join(unit.files)))
    files = sum(len(unit.files) for unit in outcome.to_do)
    size = sum(unit.size for unit in outcome.to_do) / 1e6
    say(
        f"{files} files ({size:,.1f} MB) in {len(outcome.to_do)} units would be asked, "
        f"{outcome.before} are done, {outcome.failed} failed before"
    )


def main(arguments: list[str] | None = None) -> int:
    options = parser().parse_intermixed_args(arguments)
    bar = Watch() if options.quiet else Bar()
    # Parts of the cluster log their own end even after the run, when its futures are released.
    logging.getLogger("asyncio").setLevel(logging.CRITICAL)
    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, bar.stop)
    try:
        files = [*options.files, *listed(options.files_from)]
        if not files:
            raise UsageError("no files are given")
        outcome = run(
            options.rules,
            files,
            options.output,
            scheduler=options.scheduler,
            workers=options.workers,
            memory=options.memory,
            schemas=options.schema,
            lenient=options.lenient,
            variables=dict(options.define),
            table=options.table,
            retry_failed=options.retry_failed,
            dry_run=options.dry_run,
            patience=options.patience,
            progress=bar,
        )
    except UsageError as error:
        say(str(error))
        return 2
    except KeyboardInterrupt:
        say("stopped; the same command goes on from here")
        return 130
    if options.dry_run:
        report_dry(outcome)
    else:
        report(outcome, options.output, options.quiet)
    return 1 if outcome.failures else 0


if __name__ == "__main__":
    sys.exit(main())
