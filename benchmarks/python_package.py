#!/usr/bin/python3
"""Measures the Python package: what a call costs, what reading a million attributes costs.

    PYTHONPATH=build/release/python benchmarks/python_package.py [COUNT]

For comparison with C++, `scripts/bench` measures the same functions without Python.
"""

import sys
import time

import orxexutilities as orx

COUNT = int(sys.argv[1]) if len(sys.argv) > 1 else 1_000_000
ROUNDS = 5


def best(work):
    """The shortest of some runs, in seconds."""
    times = []
    for _ in range(ROUNDS):
        start = time.perf_counter()
        work()
        times.append(time.perf_counter() - start)
    return min(times)


def tell(what, seconds, each=None):
    per = f"{seconds / each * 1e9:10.0f} ns each" if each else ""
    print(f"{what:<50}{seconds:8.3f} s{per}")


def main():
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

    tell(f"one attribute of {COUNT} instances, by a loop", best(loop), COUNT)
    tell("the same by column()", best(lambda: model.column("PRODUCT", "NAME")), COUNT)
    empty = best(nothing)
    tell("Minus(1.0)", best(calls) - empty, COUNT)
    tell("GetInst(product, 'NAME')", best(gets) - empty, COUNT)

    lamp = orx.read(sys.path[0] + "/../examples/assembly.stp")
    links = list(lamp["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]) * (COUNT // 50)
    tell(f"placements() of {len(links)} occurrences", best(lambda: orx.placements(links)), len(links))


if __name__ == "__main__":
    main()
