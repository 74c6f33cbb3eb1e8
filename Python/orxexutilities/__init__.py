"""Mapping functions between PDM databases and STEP exchange data (ISO 10303), and the data that they
work on.

    import orxexutilities as orx

    model = orx.read("assembly.stp")
    for link in model["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]:
        print(link.ID, orx.GetAbsPlacement(link))

Unset values are None; a logical is True, False or UNKNOWN; an aggregate is a list. One model may be
read by several threads at once while none writes it.
"""

from collections.abc import Sequence as _Sequence

from orxexutilities import _core
from orxexutilities._core import *  # noqa: F403 (the functions)
from orxexutilities._core import Extent, Instance, Model, new, placements, read, trace
from orxexutilities._table import table as _table
from orxexutilities._values import UNKNOWN, Binary, DataWarning, Enum, Error, NotFound, Typed

_Sequence.register(Extent)
Model.table = _table

__all__ = [name for name in dir(_core) if not name.startswith("_")] + [
    "Binary",
    "DataWarning",
    "Enum",
    "Error",
    "NotFound",
    "Typed",
    "UNKNOWN",
]

# Everything public appears to be defined here, wherever it is implemented.
for _name in dir(_core):
    _object = getattr(_core, _name)
    if getattr(_object, "__module__", None) == "orxexutilities._core":
        _object.__module__ = __name__
for _name in ("Binary", "DataWarning", "Enum", "Error", "NotFound", "Typed"):
    globals()[_name].__module__ = __name__
del _name, _object
