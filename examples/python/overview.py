#!/usr/bin/python3
"""What a database holds, in columns: its parts, configurations and effectivities.

    overview.py DATABASE
"""

import sys
import unicodedata
from collections.abc import Iterable, Sequence

import orxexutilities as orx

WIDEST = 44


def shown(value: object) -> str:
    text = "-" if value is None else "".join(c if c.isprintable() else "·" for c in str(value))
    return text if len(text) <= WIDEST else text[: WIDEST - 1] + "…"


def width(text: str) -> int:
    """The width of a text on a terminal, in columns."""
    wide = sum(unicodedata.east_asian_width(c) in "WF" for c in text)
    return len(text) + wide - sum(bool(unicodedata.combining(c)) for c in text)


def print_columns(headers: Sequence[str], rows: Iterable[Sequence[object]]) -> None:
    cells = [list(headers)] + [[shown(value) for value in row] for row in rows]
    widths = [max(width(row[i]) for row in cells) for i in range(len(headers))]
    for row in cells:
        padded = (cell + " " * (most - width(cell)) for cell, most in zip(row, widths))
        print("  " + "  ".join(padded).rstrip())
    print()


def part_rows(database: orx.Model) -> Iterable[Sequence[object]]:
    for part in database["part_object"]:
        files = [file for name in ("models", "docs1", "docs2") for file in part[name] or []]
        yield (
            part.S_PART_NUMBER,
            part.S_CHG_NUM,
            part.S_TYPE,
            part.S_DESC,
            len(part.KORASS or []),
            ", ".join(file.S_NAME or "-" for file in files) or None,
        )


def item_rows(database: orx.Model) -> Iterable[Sequence[object]]:
    for item in database["configuration_item"]:
        handler = orx.DecodeKey(orx.ORXIdCfg(item), 3)
        part = item.design.S_PART_NUMBER if item.design else None
        yield item.id, item.name, part, None if handler == "EMPTY VALUE" else handler


def date(text: str | None) -> str:
    """A date string of the database as YYYY-MM-DD hh:mm:ss."""
    if text is None or len(text) != 14 or not text.isdigit():
        return shown(text)
    month, day, year, hour, minute, second = (
        text[a:b] for a, b in ((0, 2), (2, 4), (4, 8), (8, 10), (10, 12), (12, 14))
    )
    return f"{year}-{month}-{day} {hour}:{minute}:{second}"


def effectivity_rows(database: orx.Model) -> Iterable[Sequence[object]]:
    for effectivity in database["effectivity_object"]:
        option = "option_" if effectivity.entity == "option_effectivity" else ""
        start = end = None
        if orx.IsRangeType(effectivity):
            start = orx.GetRangeValue(effectivity, 1) or None
            end = "open" if orx.IsInfiniteRank(effectivity) else orx.GetRangeValue(effectivity, 2)
        elif orx.IsDateType(effectivity):
            start = date(effectivity[f"{option}start_date"])
            end = effectivity[f"{option}end_date"]
            end = "open" if orx.IsInfiniteDate(effectivity) else date(end)
        kind = effectivity.option_type if option else effectivity.entity.partition("_")[0]
        links = ", ".join(link.id or "-" for link in effectivity.usage or [])
        on = effectivity.option_id if option else None
        yield effectivity.id, kind, on, start, end, links or None


def main() -> None:
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    database = orx.read(sys.argv[1])
    print_columns(
        ("number", "change", "type", "description", "links", "models and documents"),
        part_rows(database),
    )
    print_columns(("item", "name", "part", "handler"), item_rows(database))
    print_columns(
        ("effectivity", "kind", "option", "from", "to", "links"), effectivity_rows(database)
    )


if __name__ == "__main__":
    main()
