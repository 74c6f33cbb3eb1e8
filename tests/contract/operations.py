"""Whether the contract tests call every operation of the platform that the module calls.

    operations.py MODULE OBJECT...

The operations are the platform's symbols that the module leaves undefined; those that the tests call
are the undefined symbols of their object files.
"""

import os
import re
import subprocess
import sys

PLATFORM = re.compile(r"\b(Sdai|KOR)\w+(::|\()|operator\S+\(.*\b(Sdai|KOR)")


def operations(file: str, *options: str) -> set[str]:
    command = [os.environ.get("NM", "nm"), "--demangle", "--undefined-only", *options, file]
    listing = subprocess.run(command, capture_output=True, check=True, text=True).stdout
    symbols = (line.strip().removeprefix("U ") for line in listing.splitlines())
    return {symbol for symbol in symbols if PLATFORM.search(symbol)}


def main(module: str, objects: list[str]) -> int:
    called = operations(module, "--dynamic")
    if not called:
        sys.exit(f"{module} calls nothing of a platform")
    missing = called.difference(*map(operations, objects))
    for operation in sorted(missing):
        print(f"no contract test calls {operation}", file=sys.stderr)
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2:]))
