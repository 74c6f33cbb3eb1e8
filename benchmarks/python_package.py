#!/usr/bin/python3
"""Measures the Python package: the cost of a call, of reading a million attributes, and of the
placements of many occurrences compared with the same in C++, alternately.

    PYTHONPATH=build/release/python benchmarks/python_package.py build/release/bin [COUNT]

`scripts/bench --python` runs it; `scripts/bench` measures the functions without Python. The exit status
is 1 if a figure misses what docs/performance.md promises.
"""

import subprocess
import sys
import tempfile
import time

import orxexutilities as orx

PROGRAMS = sys.argv[1]
COUNT = int(sys.argv[2]) if len(sys.argv) > 2 else 1_000_000
OCCURRENCES = 100_000
ROUNDS = 7
MILLION = 1_000_000

missed = []


def best(work):
    """The shortest of several runs, in seconds of processor time."""
    return min(seconds(work) for _ in range(ROUNDS))


def seconds(work):
    start = time.process_time()
    work()
    return time.process_time() - start


def tell(what, figure, unit="s", most=None):
    print(f"{what:<50}{figure:10.3f} {unit}", end="")
    if most is not None:
        missed.extend([what] if figure > most else [])
        print(f"   {'MISSES' if figure > most else 'at most'} {most}", end="")
    print()


def attributes_and_calls():
    model = orx.new("AUTOMOTIVE_DESIGN")
    products = [model.create("PRODUCT", ID=f"part {i}", NAME=f"n{i}") for i in range(COUNT)]
    extent = model["PRODUCT"]

    def loop():
        for product in extent:
            product.NAME

    def calls():
        minus = orx.Minus
        for _ in products:
            minus(1.0)

    def nothing():
        for _ in products:
            pass

    def gets():
        get = orx.GetInst
        for product in products:
            get(product, "NAME")

    tell(f"one attribute of {COUNT} instances, by a loop", best(loop), most=1.3 * COUNT / MILLION)
    column = best(lambda: model.column("PRODUCT", "NAME"))
    tell("the same by column()", column, most=0.2 * COUNT / MILLION)
    empty = best(nothing)
    tell("Minus(1.0)", (best(calls) - empty) / COUNT * 1e9, "ns each")
    tell("GetInst(product, 'NAME')", (best(gets) - empty) / COUNT * 1e9, "ns each")


def placements():
    """Placements of an extent and of a list, compared with a loop in C++ for the same numbers."""
    with tempfile.NamedTemporaryFile(suffix=".stp") as file:
        generator = [f"{PROGRAMS}/generate-step", str(OCCURRENCES), "1"]
        subprocess.run(generator, stdout=file, check=True)
        extent = orx.read(file.name)["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]
        links = list(extent)
        other = subprocess.Popen(
            [f"{PROGRAMS}/measure-placements", file.name],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
        )  # fmt: skip
        times = []
        for _ in range(ROUNDS):
            other.stdin.write("\n")
            other.stdin.flush()
            plain, total = map(float, other.stdout.readline().split())
            if sum(orx.placements(extent).ravel().tolist()) != total:
                sys.exit("benchmarks/python_package.py: the placements differ")
            times.append(
                (plain, seconds(lambda: orx.placements(extent)), seconds(lambda: orx.placements(links)))
            )
        other.communicate()
    plain, of_extent, of_list = map(min, zip(*times))
    tell(f"placements of {OCCURRENCES} occurrences in C++", plain)
    tell("placements(extent)", of_extent)
    tell("  against C++", of_extent / plain, "times", most=1.5)
    tell("placements(list)", of_list)
    tell("  against C++", of_list / plain, "times", most=1.5)


def main():
    attributes_and_calls()
    placements()
    sys.exit(1 if missed else 0)


if __name__ == "__main__":
    main()
