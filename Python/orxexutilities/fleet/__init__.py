"""The same question to many files: rules run on the workers of Dask distributed, rows come together in
a database or in a folder.

    from orxexutilities import fleet

    if __name__ == "__main__":      # the workers of a local cluster import the program once more
        outcome = fleet.run("rules.py", ["plant/"], "sqlite:parts.db")
        for failure in outcome.failures:
            print(failure)

`rules.py` defines `rows(model)`, which yields a dict for each row. It may define `group(path)`: files
with an equal result other than None are one unit. The models of a unit live until all of them have
been asked; a `rows(model, unit)` with two parameters gets all of them, a dict by path. Rows of a unit
are written in one transaction with the mark that it is done, so that an interrupted run continues
where it stopped. What the functions remember of versions is forgotten after each unit.

A large data set can be cut into pieces instead: `pieces(model)` returns a dict of their names, each
with whatever the rules know the piece by, and `rows(model, piece)` is called for each piece. A worker
reads the data set once for all its pieces. Marks and messages name a piece FILE#NAME.

`orx-fleet` is the same as a command.
"""

from orxexutilities.fleet._run import Outcome, run
from orxexutilities.fleet._units import Failure, UsageError

__all__ = ["Failure", "Outcome", "UsageError", "run"]
