"""Extents as pandas tables."""

from typing import Any


def table(model: Any, entity: str) -> Any:
    """table(entity)

    The extent of an entity type as a pandas DataFrame: a row for each instance, by its number, and a
    column for each attribute of the type.
    """
    import pandas

    columns = {name: model.column(entity, name) for name in model._attributes(entity)}
    numbers = [instance.number for instance in model[entity]]
    return pandas.DataFrame(columns, index=pandas.Index(numbers, name="number", dtype="int64"))
