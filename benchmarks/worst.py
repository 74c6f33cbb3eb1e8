#!/usr/bin/python3
"""Measures the cost of artificial worst-case data: scripts/bench --worst

Each row is an input of one shape, generated in two sizes, the second four times the first, and read,
shown or run by a separate process. Time must grow about in proportion to the input, and memory is
limited to 30 bytes per byte (45 if an instance is of several types that no schema declares) in
addition to what any run needs. Shapes that do not occur in real data are limited instead: up to the
limit they may take that much memory, beyond it they are rejected with a message. The table shows
both; the exit status is 1 if a row exceeds its limits.
"""

import os
import resource
import subprocess
import sys
import tempfile
import time

MOST_BYTES = 30  # of memory, for each byte of the input
MOST_BYTES_OF_COMPLEX = 45  # if each value is in the types of the parts and of the whole
MOST_GROWTH = 8  # of the time, if the input is four times as large
BASE = 32e6  # bytes of memory that any run needs
LIMITED = 300e6  # bytes of memory for a shape that is limited
SHORT = 0.3  # seconds; shorter times are not significant

HEADER = "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n"
END = "ENDSEC;\nEND-ISO-10303-21;\n"


def data(text):
    return "-m", HEADER + text + END


def schema(text):
    return "-s", "SCHEMA s;\n" + text + "END_SCHEMA;\n"


def tree(n):
    """A part in n levels, each of which contains the next one twice: 2 ** n paths."""
    parts = "".join(f"#{i}=PART_OBJECT('P{i}',$,$,$,$,(#{n + 2 * i},#{n + 2 * i + 1}),$,$,$,$);\n"
                    f"#{n + 2 * i}=PART_LINK('a',#{i},#{i + 1},$,$,$,$);\n"
                    f"#{n + 2 * i + 1}=PART_LINK('b',#{i},#{i + 1},$,$,$,$);\n"
                    for i in range(1, n))
    last = f"#{n}=PART_OBJECT('P{n}',$,$,$,$,$,$,$,$,$);\n"
    return "tree", HEADER.replace("AUTOMOTIVE_DESIGN", "cdma") + parts + last + END


def script(text):
    return "run", text


def chain(n):
    entities = "".join(
        f"ENTITY e{i} SUBTYPE OF (e{i - 1}); a{i} : INTEGER; END_ENTITY;\n" for i in range(1, n))
    return schema("ENTITY e0; END_ENTITY;\n" + entities)


def shared_supertypes(n):
    supertypes = ",".join(f"s{i}" for i in range(n))
    return schema("".join(f"ENTITY s{i}; a{i} : INTEGER; END_ENTITY;\n" for i in range(n)) +
                  f"ENTITY all SUBTYPE OF ({supertypes}); END_ENTITY;\n" +
                  "".join(f"ENTITY t{i} SUBTYPE OF (all); END_ENTITY;\n" for i in range(n)))


def selects(n):
    return schema("TYPE s0 = SELECT (t); END_TYPE;\nTYPE t = REAL; END_TYPE;\n" + "".join(
        f"TYPE t{i} = REAL; END_TYPE;\nTYPE s{i} = SELECT (s{i - 1}, t{i}); END_TYPE;\n"
        for i in range(1, n)))


def redeclared(n):
    attributes = "".join(f"a{i} : NUMBER;\n" for i in range(n))
    narrowed = "".join(f"SELF\\a.a{i} RENAMED b{i} : REAL;\n" for i in range(n))
    return schema(f"ENTITY a;\n{attributes}END_ENTITY;\n"
                  f"ENTITY b SUBTYPE OF (a);\n{narrowed}END_ENTITY;\n")


# For each shape: name, function for an input of a size, size, whether it is limited.
SHAPES = [
    ("one instance of many values", lambda n: data("#1=A(" + "$," * n + "$);\n"), 2_000_000, False),
    ("one list of many members", lambda n: data("#1=A((" + "$," * n + "$));\n"), 2_000_000, False),
    ("many empty lists", lambda n: data("#1=A((" + "()," * n + "()));\n"), 500_000, False),
    ("a complex instance of many values",
     lambda n: data("#1=(A(" + "$," * n + "$)B(" + "$," * n + "$));\n"), 100_000, False),
    ("a complex instance of many parts",
     lambda n: data("#1=(" + "".join(f"P{i}()" for i in range(n)) + ");\n"), 2_000, True),
    ("undeclared types",
     lambda n: data("".join(f"#{i}=T{i}($);\n" for i in range(1, n))), 2_500, True),
    ("references to nothing",
     lambda n: data("#1=A((" + ",".join(f"#{i}" for i in range(2, n)) + "));\n"), 100_000, True),
    ("instance names far apart",
     lambda n: data("".join(f"#{i * 1_000_003}=A();\n" for i in range(1, n))), 100_000, False),
    ("comments", lambda n: data("/* */" * n), 1_000_000, False),
    ("supertypes in a chain", chain, 1_000, True),
    ("supertypes that many share", shared_supertypes, 500, True),
    ("redeclared attributes", redeclared, 5_000, False),
    ("selects in selects", selects, 500, True),
    ("aliases in a chain",
     lambda n: schema("TYPE t0 = REAL; END_TYPE;\n" + "".join(
         f"TYPE t{i} = t{i - 1}; END_TYPE;\n" for i in range(1, n))), 10_000, False),
    ("aliases in a chain, last first",
     lambda n: schema("".join(
         f"TYPE t{i} = t{i - 1}; END_TYPE;\n" for i in range(n, 0, -1)) +
         "TYPE t0 = REAL; END_TYPE;\n"), 10_000, False),
    ("unknown names",
     lambda n: schema("".join(
         f"ENTITY e{i}; a : unknown_name_{i}; END_ENTITY;\n" for i in range(n))), 5_000, True),
    ("a tree of as many paths", tree, 100, True),
    ("lists in lists", lambda n: script("LET a = (1)\n" + "LET a = (a)\n" * n), 10_000, True),
    ("unknown functions", lambda n: script(
        "".join(f"GetMembrCount{i}((1.))\n" for i in range(n))), 2_500, True),
    ("unknown names in a script", lambda n: script(
        "".join(f"LET name{i} = {i}\n" for i in range(n)) + "nama1\n" * n), 100_000, True),
]


def write(path, make, n):
    """Writes an input, in a separate process: the memory of this one would count as orx's."""
    process = os.fork()
    if process == 0:
        with open(path, "w", encoding="latin-1") as file:
            file.write("\n".join(make(n)))
        os._exit(0)
    os.waitpid(process, 0)


def measure(orx, folder, make, n):
    """Bytes of the input, processor time, bytes of peak memory, exit status, first message."""
    path = os.path.join(folder, "input")
    write(path, make, n)
    empty = os.path.join(folder, "empty.stp")
    with open(empty, "w", encoding="latin-1") as file:
        file.write(HEADER + END)
    with open(path, encoding="latin-1") as file:
        option = file.readline().strip()
        text = os.path.join(folder, "text")
        with open(text, "w", encoding="latin-1") as rest:
            while piece := file.read(1 << 20):
                rest.write(piece)
    arguments = {
        "-m": ["describe", "--json", "-m", text],
        "-s": ["describe", "--json", "-s", text, "-m", empty],
        "tree": ["tree", "-m", text],
        "run": ["run", "--keep-going", text],
    }[option]
    process = subprocess.Popen([orx, *arguments], stdout=subprocess.DEVNULL,
                               stderr=subprocess.PIPE, text=True, errors="replace")
    message = process.stderr.readline()
    process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    seconds = usage.ru_utime + usage.ru_stime
    return (os.path.getsize(text), seconds, usage.ru_maxrss * 1024, process.returncode, message)


def main():
    orx = sys.argv[1]
    wanted = sys.argv[2] if len(sys.argv) > 2 else ""
    # A row that exceeds all limits must fail without taking the machine down.
    resource.setrlimit(resource.RLIMIT_AS, (8 << 30, 8 << 30))
    resource.setrlimit(resource.RLIMIT_CPU, (120, 120))
    failed = 0
    print(f"{'':36}{'bytes':>12}{'seconds':>9}{'MB':>8}{'growth':>8}")
    with tempfile.TemporaryDirectory() as folder:
        for name, make, size, limited in SHAPES:
            if wanted not in name:
                continue
            times = []
            for n in (size, 4 * size):
                length, seconds, memory, status, message = measure(orx, folder, make, n)
                times.append(seconds)
                growth = times[-1] / max(times[0], SHORT) if n != size else 1
                refused = status in (1, 2) and message != ""
                per_byte = MOST_BYTES_OF_COMPLEX if "complex" in name else MOST_BYTES
                most = LIMITED if limited else BASE + per_byte * length
                good = (status == 0 or (refused and limited)) and growth <= MOST_GROWTH
                good = good and memory <= most
                failed += not good
                told = message.strip().split(": ", 2)[-1] if refused else ""
                print(f"{name:36}{length:12,}{seconds:9.2f}{memory / 1e6:8.1f}{growth:8.1f}"
                      f"  {told[:80]}{'' if good else '  FAILED'}", flush=True)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
