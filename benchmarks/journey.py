"""Exports databases of 10,000 and 100,000 parts, with as many links, to STEP and imports them again, by
examples/export.py and examples/import.py: the larger may take ten and a half times as long.

    journey.py FOLDER
"""

import gc
import importlib
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "examples"))
import orxexutilities as orx  # noqa: E402

SMALL, LARGE, MOST = 10_000, 100_000, 10.5
COMPONENTS = 10  # of each assembly
export = importlib.import_module("export").export
to_database = importlib.import_module("import").to_database


def database_of(count):
    """Parts in assemblies of assemblies, each with an identity, some with a model."""
    database = orx.new("cdma")
    parts = [
        database.create(
            "part_object", S_PART_NUMBER=f"P{i}", S_CHG_NUM="00", C_VERSION=1, S_TYPE="PART",
            S_DESC=f"part {i}",
        )
        for i in range(count)
    ]  # fmt: skip
    links = {}
    for i in range(1, count):
        parent = (i - 1) // COMPONENTS
        links.setdefault(parent, []).append(
            database.create(
                "part_link", id=f"L{i}", parent=parts[parent], ref=parts[i],
                origin=[float(i), 0.5, -1.0], axis=[0.0, 0.6, 0.8], ref_direction=[1.0, 0.0, 0.0],
            )
        )  # fmt: skip
    for parent, components in links.items():
        parts[parent].KORASS = components
    for i, part in enumerate(parts):
        database.create("cdma_id", CdmaObject=part, Coid=f"{i:X}", Compid="1", Caenv="C", Catab="P")
        if i % 10 == 0:
            part.models = [database.create("model_object", S_NAME=f"model {i}", S_NEXT=i)]
    return database


def seconds_of_journey(count, folder):
    """Processor time for the export to a file and the import from it."""
    database = database_of(count)
    gc.collect()
    start = time.process_time()
    export(database)[0].write(folder / "out.stp")
    returned, _ = to_database(orx.read(folder / "out.stp"))
    seconds = time.process_time() - start
    for entity, name in (("part_object", "S_DESC"), ("part_link", "id"), ("cdma_id", "Coid")):
        before, after = (list(model.column(entity, name)) for model in (database, returned))
        if sorted(before) != sorted(after):
            sys.exit(f"{entity}.{name} does not come back")
    return seconds


def main():
    folder = Path(sys.argv[1])
    small = min(seconds_of_journey(SMALL, folder) for _ in range(3))
    large = min(seconds_of_journey(LARGE, folder) for _ in range(2))
    print(f"{SMALL:,} parts: {small:.2f} s   {LARGE:,} parts: {large:.2f} s   "
          f"{large / small:.1f} times")  # fmt: skip
    sys.exit(large > MOST * small)


if __name__ == "__main__":
    main()
