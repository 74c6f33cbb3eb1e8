#!/usr/bin/env python3
"""Types the terminal sessions of the documents into a terminal, and compares what it shows.

    terminal.py --orx PROGRAM [--python FOLDER]

A session is a block marked as ```console. It is typed into a shell in a tmux of its own, line by line:
what follows the prompt "$ ", or the prompt of the shell "orx> ". Then the terminal must show the block, in
which "..." stands for lines that are left out.
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
DOCUMENTS = ["docs/first-hour.md", "docs/engine-guide.md"]
PROMPT = re.compile(r"(\$|orx>)( |$)")
SKIPPED = 77


class Terminal:
    """A shell in a terminal of 200 columns."""

    def __init__(self, folder, environment):
        self.tmux = ["tmux", "-S", str(folder / "tmux")]
        self.environment = environment
        shell = "exec env PS1='$ ' bash --norc --noprofile --noediting"
        self.run("-f", "/dev/null", "new-session", "-d", "-x", "200", "-y", "400", "-c", str(folder), shell)

    def run(self, *arguments):
        return subprocess.run(
            self.tmux + list(arguments), env=self.environment, check=True, text=True, stdout=subprocess.PIPE
        ).stdout

    def screen(self):
        return self.run("capture-pane", "-p").rstrip("\n").split("\n")

    def wait(self, shown):
        """Until there is a prompt again, behind what was typed."""
        for _ in range(600):
            screen = [line.rstrip() for line in self.screen()]
            if len(screen) > shown and screen[-1] in ("$", "orx>"):
                return screen
            time.sleep(0.1)
        sys.exit("the terminal shows no prompt:\n" + "\n".join(self.screen()))

    def type(self, line):
        shown = len(self.screen())
        self.run("send-keys", "-l", line)
        self.run("send-keys", "Enter")
        return self.wait(shown)

    def end(self):
        self.run("kill-server")


def matches(expected, output):
    pattern = "".join(r"(?:.*\n)*?" if line == "..." else re.escape(line) + r"\n" for line in expected)
    return re.fullmatch(pattern, "".join(line + "\n" for line in output)) is not None


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--orx", required=True, type=Path)
    parser.add_argument("--python", type=Path)
    arguments = parser.parse_args()
    if shutil.which("tmux") is None:
        print("there is no tmux")
        sys.exit(SKIPPED)
    environment = dict(
        os.environ, TERM="screen", PS1="$ ", LC_ALL="C.UTF-8", HOME="/nonexistent", NO_COLOR="1",
        PATH=f"{arguments.orx.resolve().parent}:{os.environ['PATH']}", PYTHONDONTWRITEBYTECODE="1",
    )  # fmt: skip
    environment.pop("TMUX", None)
    if arguments.python:
        environment["PYTHONPATH"] = str(arguments.python.resolve())
    failures = ran = 0
    for document in DOCUMENTS:
        text = (ROOT / document).read_text()
        for block in re.findall(r"^```console\n(.*?)^```$", text, re.DOTALL | re.MULTILINE):
            lines = block.splitlines()
            if "examples/export.py" in block and not arguments.python:
                print(f"left out, there is no Python package: {lines[0]}")
                continue
            ran += 1
            with tempfile.TemporaryDirectory() as name:
                shutil.copytree(ROOT / "examples", Path(name) / "examples")
                terminal = Terminal(Path(name), environment)
                try:
                    shown = terminal.wait(0)
                    for line in lines:
                        if PROMPT.match(line):
                            shown = terminal.type(PROMPT.sub("", line, count=1))
                finally:
                    terminal.end()
            if not matches(lines, shown[:-1]):
                failures += 1
                print(f"{document} shows:\n{block}\nthe terminal shows:\n" + "\n".join(shown[:-1]) + "\n")
    if ran < 2:
        sys.exit(f"the documents show {ran} terminal sessions alone")
    sys.exit(1 if failures else 0)


main()
