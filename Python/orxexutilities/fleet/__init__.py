"""One query for many files: rules run on the workers of Dask distributed, and their rows are collected
in a database or in a folder.

    from orxexutilities import fleet

    if __name__ == "__main__":      # the workers of a local cluster import the program again
        outcome = fleet.run("rules.py", ["plant/"], "sqlite:parts.db")
        for failure in outcome.failures:
            print(failure)

`rules.py` defines `rows(model)`, which yields a dict for each row. It may define `group(path)`: files
with an equal result other than None are one unit. The models of a unit exist until all of them have
been processed; a `rows(model, unit)` with two parameters gets all of them, a dict by path. The rows of
a unit are written in one transaction with the mark that it is done, so that an interrupted run
continues where it stopped. The versions that the functions have seen are cleared after each unit.

A large data set can be cut into pieces instead: `pieces(model)` returns a dict of their
names, with values that identify the pieces to the rules, and `rows(model, piece)` is called for each
piece. A worker reads the data set once for all its pieces. Marks and messages name a piece FILE#NAME.

`orx-fleet` is the same as a command.
"""

from orxexutilities.fleet._run import Outcome, run
from orxexutilities.fleet._units import Failure, UsageError

__all__ = ["Failure", "Outcome", "UsageError", "run"]
