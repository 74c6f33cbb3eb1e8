#!/usr/bin/python3
"""The parts list of an assembly as a table: how many of each part, over all levels.

    parts_list.py FILE [CSV]
"""

import sys
from collections import Counter

import orxexutilities as orx
import pandas

LINK = "NEXT_ASSEMBLY_USAGE_OCCURRENCE"


def quantities(model: orx.Model) -> Counter:
    """How often each product definition occurs in all top-level assemblies."""
    links = model[LINK]
    components: dict[orx.Instance, Counter] = {}
    for link in links:
        used = components.setdefault(link.RELATING_PRODUCT_DEFINITION, Counter())
        used[link.RELATED_PRODUCT_DEFINITION] += 1
    placed = {link.RELATED_PRODUCT_DEFINITION for link in links}

    total: Counter = Counter()
    # Each entry: a definition, its quantity, and the assemblies that contain it.
    open_ = [(root, 1, frozenset({root})) for root in components if root not in placed]
    while open_:
        definition, count, path = open_.pop()
        total[definition] += count
        for component, number in components.get(definition, {}).items():
            if component in path:
                sys.exit(f"{component} is a component of itself")
            open_.append((component, count * number, path | {component}))
    return total


def parts_list(model: orx.Model) -> pandas.DataFrame:
    rows = [
        {
            "part": definition.FORMATION.OF_PRODUCT.ID,
            "name": definition.FORMATION.OF_PRODUCT.NAME,
            "quantity": quantity,
            "assembly": bool(definition.users(f"{LINK}.RELATING_PRODUCT_DEFINITION")),
        }
        for definition, quantity in quantities(model).items()
    ]
    table = pandas.DataFrame(rows, columns=["part", "name", "quantity", "assembly"])
    return table.sort_values("part", ignore_index=True)


def main() -> None:
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    table = parts_list(orx.read(sys.argv[1]))
    print(table.to_string(index=False))
    if len(sys.argv) == 3:
        table.to_csv(sys.argv[2], index=False)


if __name__ == "__main__":
    main()
