"""Rules for orx-fleet: a whole database is exported to STEP, in pieces of whole assemblies.

    orx-fleet examples/export_fleet.py DATABASE -o sqlite:export.db -D FOLDER=out

Each piece becomes an exchange file in FOLDER, which is for one database only, by the mapping of
export.py; export.db gets a row for each piece. A piece contains whole assemblies, and with each
part all of its revisions; a part that is used in several pieces is exported with each.
"""

import re
from collections import defaultdict
from pathlib import Path

import orxexutilities as orx
from export import belonging_to, export

FOLDER = "out"
SCHEMA = "AUTOMOTIVE_DESIGN"
# The minimum number of parts in a piece, except the last. The mapping visits the whole database for
# each piece: few large pieces are faster than many small ones.
PARTS = "1000"


def pieces(database):
    """The numbers of the parts of each piece; its name is that of its first part."""
    cut = {}
    parts = {}
    for group in groups(database):
        parts |= dict.fromkeys(group)
        if len(parts) >= int(PARTS):
            add(cut, parts)
            parts = {}
    if parts:
        add(cut, parts)
    return cut


def add(cut, parts):
    first = next(iter(parts))
    name = re.sub(r"[^\w.-]", "_", first.S_PART_NUMBER or "") or "part"
    if name in cut:
        name = f"{name}-{first.number}"
    cut[name] = [part.number for part in parts]


def groups(database):
    """The parts of each top-level assembly, together with those of its revisions: the components on
    all levels, each with all of its revisions."""
    family = families(database)
    used = {link.ref for link in database["part_link"]}
    taken = set()
    # Parts that are only used in cycles have no top: they come last, in the order of the database.
    tops = [part for part in database["part_object"] if part not in used]
    for top in [*tops, *database["part_object"]]:
        if top in taken:
            continue
        group = {}
        waiting = [top]
        while waiting:
            part = waiting.pop()
            if part not in group:
                group[part] = None
                waiting += family[part]
                waiting += components(part)
        taken.update(group)
        yield list(group)


def families(database):
    """All revisions of each part."""
    orx.RemoveValueVersion()
    revisions = defaultdict(list)
    for part in database["part_object"]:
        first = orx.IsVersion(part, 1) or part
        revisions[first.S_PART_NUMBER].append(part)
    orx.RemoveValueVersion()
    return {part: family for family in revisions.values() for part in family}


def components(part):
    links = [*(part.KORASS or []), *part.users("part_link.parent")]
    return [link.ref for link in links if link.ref is not None]


def rows(database, piece):
    parts = [database[number] for number in piece]
    step, protocol = export(database, SCHEMA, parts)
    name = re.sub(r"[^\w.-]", "_", parts[0].S_PART_NUMBER or "part")
    file = Path(FOLDER, f"{name}-{parts[0].number}.stp")
    file.parent.mkdir(parents=True, exist_ok=True)
    step.write(file)
    yield {
        "exchange_file": str(file),
        "parts": len([i for i in belonging_to(parts) if i.entity == "part_object"]),
        "occurrences": len(step["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]),
        "instances": len(step),
        "replaced": protocol.count("replaced"),
        "left_out": protocol.count("left out"),
    }
