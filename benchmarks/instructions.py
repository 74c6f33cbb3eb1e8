#!/usr/bin/python3
"""Counts the instructions of a call of each function, and of the operations of texts.

    instructions.py PROGRAM MODULE RESULT [BEFORE]

Runs PROGRAM (orx-instructions) with MODULE under callgrind, prints a table, and writes the counts to
RESULT as JSON. BEFORE is such a result of another build, for comparison in the table.
"""

import json
import pathlib
import re
import subprocess
import sys
import tempfile

CALLS = 100  # as in Instructions.cpp


def counts(program, module):
    """Instructions of one call, by the name of the function or operation."""
    result = {}
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(
            ["valgrind", "--tool=callgrind", "-q", f"--callgrind-out-file={folder}/counts",
             program, module],
            check=True)
        for file in sorted(pathlib.Path(folder).iterdir(), key=lambda f: f.stat().st_mtime_ns):
            text = file.read_text()
            name = re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.M)
            if name:
                total = re.search(r"^(?:totals|summary): (\d+)", text, re.M)
                result[name[1]] = int(total[1]) / CALLS
    return result


def main(program, module, result, before=None):
    now = counts(program, module)
    pathlib.Path(result).write_text(json.dumps(now, indent=1))
    earlier = json.loads(pathlib.Path(before).read_text()) if before else {}
    print(f"| {'Instructions of a call':26} | {'now':>7} |" +
          (f" {'before':>7} | {'ratio':>5} |" if earlier else ""))
    print(f"|{'-' * 28}|{'-' * 8}:|" + (f"{'-' * 8}:|{'-' * 6}:|" if earlier else ""))
    for name, count in now.items():
        line = f"| {name:26} | {count:7.0f} |"
        if earlier:
            line += (f" {earlier[name]:7.0f} | {count / earlier[name]:5.2f} |"
                     if name in earlier else f" {'':7} | {'':5} |")
        print(line)


if __name__ == "__main__":
    main(*sys.argv[1:])
