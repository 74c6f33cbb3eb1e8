#!/usr/bin/python3
"""Runs what docs/first-hour.md shows of orx, on a terminal as its reader does, and compares.

    first_hour.py --orx PROGRAM

A command begins with "$ "; what follows is its output, in which "..." stands for lines that are left out.
A line of a shell begins with "> ". Commands other than orx and head are for the reader alone.
"""

import argparse
import os
import pty
import re
import shutil
import struct
import subprocess
import sys
import tempfile
from fcntl import ioctl
from pathlib import Path
from termios import TIOCSWINSZ

ROOT = Path(__file__).resolve().parents[2]


def sessions():
    """Each command with the lines that are typed into it and its output."""
    text = (ROOT / "docs/first-hour.md").read_text()
    for kind, block in re.findall(r"^```(\w*)\n(.*?)^```$", text, re.DOTALL | re.MULTILINE):
        if kind:  # of another test: terminal.py
            continue
        session = None
        for line in block.splitlines():
            if line.startswith("$ "):
                if session:
                    yield session
                session = (line[2:], [], [])
            elif session and line.startswith("> "):
                session[1].append(line[2:])
            elif session:
                session[2].append(line)
        if session:
            yield session


def on_terminal(command, folder, environment):
    """The output of a command on a terminal of 200 columns."""
    ours, theirs = pty.openpty()
    ioctl(theirs, TIOCSWINSZ, struct.pack("HHHH", 50, 200, 0, 0))
    process = subprocess.Popen(
        command, shell=True, cwd=folder, env=environment, stdout=theirs, stderr=theirs
    )
    os.close(theirs)
    output = b""
    while True:
        try:
            piece = os.read(ours, 65536)
        except OSError:  # the end
            break
        if not piece:
            break
        output += piece
    process.wait()
    os.close(ours)
    return output.decode().replace("\r\n", "\n")


def in_pipe(command, lines, folder, environment):
    return subprocess.run(
        command + " 2>&1", shell=True, cwd=folder, env=environment, text=True,
        input="".join(f"{line}\n" for line in lines), stdout=subprocess.PIPE,
    ).stdout  # fmt: skip


def matches(expected, output):
    pattern = "".join(r"(?:.*\n)*?" if line == "..." else re.escape(line) + r"\n" for line in expected)
    return re.fullmatch(pattern, output) is not None


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--orx", required=True, type=Path)
    program = parser.parse_args().orx.resolve()
    environment = dict(os.environ, TERM="dumb", PATH=f"{program.parent}:{os.environ['PATH']}")
    failures = ran = 0
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        shutil.copytree(ROOT / "examples", folder / "examples")
        for command, lines, expected in sessions():
            if command.split()[0] not in ("orx", "head"):
                continue
            ran += 1
            if lines:
                output = in_pipe(command, lines, folder, environment)
            else:
                output = on_terminal(command, folder, environment)
            if not matches(expected, output):
                failures += 1
                print(f"$ {command}\nexpected:\n" + "\n".join(expected) + f"\nfound:\n{output}")
    if ran < 8:
        sys.exit(f"docs/first-hour.md shows {ran} commands alone")
    sys.exit(1 if failures else 0)


main()
