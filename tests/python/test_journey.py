"""examples/export.py and examples/import.py: what goes out of a database comes back."""

import importlib
import importlib.util
import json
import os
import re
import subprocess
import sys

import orxexutilities as orx
import pytest
from conftest import EXAMPLES, SOURCES

sys.path.insert(0, str(EXAMPLES))
mapping = importlib.import_module("mapping")
export_module = importlib.import_module("export")
import_module = importlib.import_module("import")
export = export_module.export

SHARED = SOURCES.parent / "shared"
ORX = os.environ.get("ORX_PROGRAM")
SCHEMAS = ["AP203", "AP203E2", "AP214", "AP242", "PDM"]
needs_orx = pytest.mark.skipif(ORX is None, reason="ORX_PROGRAM does not name the program")


def back(step):
    """The database that a STEP model gives, and the instance of each number before."""
    journey = import_module.Import(step)
    database, protocol = journey.run()
    return database, protocol, journey.by_number


def values(model, number=lambda instance: instance.number):
    """The attributes of every instance, as texts; references by what `number` gives."""
    return {
        number(instance): (
            instance.entity,
            {n: mapping.to_json(instance[n], number) for n in mapping.attributes_of(instance)},
        )
        for instance in model
    }


def after_the_journey(database, schema="AUTOMOTIVE_DESIGN"):
    step, _ = export(database, schema)
    returned, _, by_number = back(step)
    numbers = {instance: number for number, instance in by_number.items()}
    assert len(returned) == len(by_number)
    return values(returned, numbers.get)


def run(script, *arguments):
    return subprocess.run(
        [sys.executable, EXAMPLES / script, *map(str, arguments)],
        capture_output=True,
        text=True,
        timeout=120,
    )


# ---- The example


@pytest.mark.parametrize("schema", SCHEMAS)
def test_every_attribute_of_the_example_comes_back(database, schema, tmp_path):
    step, protocol = export(database, schema)
    step.write(tmp_path / "out.stp")
    returned, read_protocol, by_number = back(orx.read(tmp_path / "out.stp"))
    numbers = {instance: number for number, instance in by_number.items()}
    assert values(returned, numbers.get) == values(database)
    assert protocol.count("left out") == 0
    assert read_protocol.count("left out") == 0


def declared_attributes():
    """The attributes of the database's schema: (entity type, name, whether optional, kind)."""
    text = (SOURCES / "Exchange/schemas/cdma.exp").read_text()
    for entity, body in re.findall(r"^ENTITY (\w+)(.*?)END_ENTITY", text, re.M | re.S):
        for name, optional, kind in re.findall(r"(\w+) : (OPTIONAL )?(\w+)", body):
            yield entity, name, bool(optional), kind


def test_the_example_has_every_kind_of_every_entity(database):
    assert len(database["part_object"]) >= 60
    attributes = list(declared_attributes())
    assert len(attributes) == 50
    for entity, name, optional, kind in attributes:
        found = [instance[name] for instance in database[entity]]
        assert any(value not in (None, "", []) for value in found), (entity, name)
        if optional:
            assert None in found, (entity, name)
        if kind == "STRING" and name != "option_type":
            assert "" in found or not optional, (entity, name)
        if kind == "LIST" and optional and name not in ("origin", "axis", "ref_direction"):
            assert [] in found, (entity, name)
    texts = {len(part.S_DESC or "") for part in database["part_object"]}
    assert {80, 81} <= texts


def levels(part):
    return 1 + max((levels(link.ref) for link in part.KORASS or []), default=0)


def test_the_example_has_four_levels(database):
    assert max(levels(part) for part in database["part_object"]) == 4


def another(value, instance, name, database):
    """Another value for an attribute, of the kind that it takes."""
    if name in ("origin", "axis", "ref_direction"):
        return [0.125, -2.5, 1e-07]
    if isinstance(value, orx.Instance):
        extent = database[value.entity]
        return extent[(extent.index(value) + 1) % len(extent)]
    if isinstance(value, str):
        return value + "é'\\ Ω"
    if isinstance(value, int):
        return value - 1
    if isinstance(value, list) and value:
        return value[::-1] + value[:1]
    return {"exchanged": [1.5, "belt", [instance]]}.get(name)


def changes(database):
    """One change for each attribute of each entity type, of an instance that has a value."""
    entities = dict.fromkeys(instance.entity for instance in database)
    for entity in entities:
        instances = [i for i in database if i.entity == entity]
        for name in mapping.attributes_of(instances[0]):
            full = [i for i in instances if i[name] not in (None, "", [])] or instances
            yield full[0], name, another(full[0][name], full[0], name, database)


def test_every_attribute_that_is_changed_arrives_changed(database):
    """Every attribute of every entity type, one at a time."""
    before = values(database)
    changed = set()
    for instance, name, value in changes(database):
        old = instance[name]
        instance[name] = value
        expected = values(database)
        assert expected != before, (instance, name)
        assert after_the_journey(database) == expected, (instance, name, value)
        instance[name] = old
        changed.add((instance.entity, name))
    assert len(changed) == 60


def test_every_attribute_that_is_taken_away_stays_away():
    database = orx.read(SOURCES / "tests/host/trolley.stp")
    for instance in list(database):
        for name in mapping.attributes_of(instance):
            old = instance[name]
            if old is None or instance.number % 10 != 1:
                continue
            instance[name] = None
            assert after_the_journey(database) == values(database), (instance, name)
            instance[name] = old


@pytest.mark.parametrize("schema", ["AP203", "AP242", "PDM"])
def test_changes_arrive_through_other_schemas(database, schema):
    for instance, name, value in changes(database):
        instance[name] = value  # all of them
    assert after_the_journey(database, schema) == values(database)


AWKWARD = ["", " ", "'", "\\", "\\X2\\00", "EMPTY VALUE", "S0001x", "_ORX_", "a" * 9999, "b" * 12345,
           "\n\t\x7f", "±", "x.model", "Łódź 荷 😀", "null", '{"#": 1}']  # fmt: skip


@pytest.mark.parametrize("text", AWKWARD, ids=range(len(AWKWARD)))
def test_texts_of_every_sort_come_back(text):
    database = orx.read(SOURCES / "tests/host/trolley.stp")
    for number, name in ((2, "S_DESC"), (31, "S_NAME"), (43, "NOTES"), (41, "S_NAME"), (52, "name"),
                         (63, "end_date"), (65, "option_type"), (71, "Coid"), (22, "exchanged"),
                         (51, "id"), (21, "id"), (61, "id"), (53, "id")):  # fmt: skip
        if len(text) <= 9999 or name in ("S_DESC", "exchanged", "end_date", "Coid"):
            database[number][name] = text
    assert after_the_journey(database) == values(database)


def test_instances_without_a_place_in_step_come_back():
    database = orx.read(SOURCES / "tests/host/trolley.stp")
    lost = database.create("part_link", id="nowhere", ref=database[1])
    loop = database.create("part_link", id="itself", parent=database[2], ref=database[2])
    database[2].KORASS = [loop, database[21]]
    database.create("part_link", id="half", parent=database[2])
    database.create("cdma_id", Coid="1")
    database[61].usage = [lost, loop, lost]
    for schema in SCHEMAS:
        assert after_the_journey(database, schema) == values(database)


def test_a_key_that_cannot_be_read_back_is_told():
    database = orx.new("cdma")
    database.create("part_object", S_PART_NUMBER="n" * 10_000)
    _, protocol = export(database)
    assert protocol.count("left out") == 1


def test_a_schema_of_the_sites_own_is_carried(tmp_path):
    schema = tmp_path / "site.exp"
    text = (SOURCES / "Exchange/schemas/cdma.exp").read_text()
    text = text.replace("  S_DESC : OPTIONAL STRING;", "  S_DESC : OPTIONAL STRING;\n  MASS : OPTIONAL REAL;")
    text = text.replace("  docs2 : OPTIONAL LIST OF document_object;",
                        "  docs2 : OPTIONAL LIST OF document_object;\n"
                        "  docs3 : OPTIONAL LIST OF document_object;")  # fmt: skip
    text += "ENTITY supplier; name : STRING; parts : LIST OF part_object; END_ENTITY;"
    schema.write_text(f"SCHEMA cdma; {text} END_SCHEMA;")
    database = orx.new("cdma", schemas=[schema])
    note = database.create("CDM_DOCNOTE", S_NAME="n")
    part = database.create("part_object", S_PART_NUMBER="1", MASS=0.1, docs3=[note])
    database.create("supplier", name="Łódź", parts=[part])
    step, _ = export(database)
    journey = import_module.Import(step, schemas=[schema])
    returned, protocol = journey.run()
    assert values(returned, journey.numbers.get) == values(database)
    # Without that schema what cannot be kept is told.
    _, protocol, _ = back(step)
    assert {what for what, _ in protocol.notes["left out"]} == {"supplier", "part_object.MASS"}
    assert ("APPLIED_DOCUMENT_REFERENCE.SOURCE", "'docs3' is no list of a part: docs1") in (
        protocol.notes["replaced"]
    )


# ---- What STEP gets


@pytest.fixture
def step(database):
    return export(database)[0]


def test_revisions_are_formations_of_one_product(step):
    (wheel,) = [p for p in step["PRODUCT"] if p.ID == "TR-122"]
    formations = wheel.users("PRODUCT_DEFINITION_FORMATION.OF_PRODUCT")
    assert [f.ID for f in formations] == ["00", "01", "02"]
    follows = [
        (r.RELATING_PRODUCT_DEFINITION_FORMATION.ID, r.RELATED_PRODUCT_DEFINITION_FORMATION.ID)
        for r in step["PRODUCT_DEFINITION_FORMATION_RELATIONSHIP"]
        if r.RELATING_PRODUCT_DEFINITION_FORMATION in formations
    ]
    assert follows == [("00", "01"), ("01", "02")]


def test_units_are_millimetres_radians_and_steradians(step):
    (context,) = step["GLOBAL_UNIT_ASSIGNED_CONTEXT"]
    assert [(str(u.PREFIX), str(u.NAME)) for u in context.UNITS] == [
        ("MILLI", "METRE"),
        ("None", "RADIAN"),
        ("None", "STERADIAN"),
    ]
    assert {shape.CONTEXT_OF_ITEMS for shape in step["SHAPE_REPRESENTATION"]} == {context}


def test_open_ends_are_left_out(step, database):
    ends = {
        orx.DecodeEFF(e.ID, 1): e.EFFECTIVITY_END_ID for e in step["SERIAL_NUMBERED_EFFECTIVITY"]
    }
    assert ends["R12"] == "100" and ends["R13"] is None and ends["R21"] is None
    ends = {orx.DecodeEFF(e.ID, 1): e.EFFECTIVITY_END_DATE for e in step["DATED_EFFECTIVITY"]}
    assert ends["D02"] is None and ends["D11"] is None
    assert orx.GetDate(ends["D01"]) == "12312029235959"


def test_effectivities_govern_their_occurrences_in_the_configuration(step):
    found = [e for e in step["CONFIGURATION_EFFECTIVITY"] if orx.DecodeEFF(e.ID, 1) == "R12"]
    assert [e.USAGE.ID for e in found] == ["L2", "L3"]
    assert {orx.DecodeKey(e.CONFIGURATION.CONFIGURATION.DESCRIPTION, 2) for e in found} == {"CFG1"}
    names = [e.users("NAME_ATTRIBUTE.NAMED_ITEM")[0].ATTRIBUTE_VALUE for e in found]
    assert names == ["S0003ORXS0004CFG1S0017range_effectivity"] * 2


def test_configuration_items_have_designs_and_handlers(step):
    (item,) = [i for i in step["CONFIGURATION_ITEM"] if i.ID == "CFG1"]
    assert item.DESCRIPTION == "S0003ORXS0004CFG1S0002H7"
    assert orx.HasAORXValue(item)
    assert item.ITEM_CONCEPT.ID == "H7"
    (design,) = item.users("CONFIGURATION_DESIGN.CONFIGURATION")
    assert design.DESIGN.OF_PRODUCT.ID == "TR-100"


def test_files_are_associated_with_their_parts(step):
    found = [
        (r.ITEMS[0].FORMATION.OF_PRODUCT.ID, r.SOURCE, r.ASSIGNED_DOCUMENT.ID)
        for r in step["APPLIED_DOCUMENT_REFERENCE"]
    ]
    assert ("TR-110", "models", "Trolley±frame.model") in found
    assert ("TR-100", "docs1", "Assembly±notes.KORProcess") in found
    assert ("TL-200", "docs1", "Safety±rules.KORText") in found
    assert ("TP-300", "docs1", "Safety±rules.KORText") in found


def test_parts_alone_go_out_with_what_belongs_to_them(database):
    step, protocol = export(database, parts=[database[3]])
    assert [p.ID for p in step["PRODUCT"]] == ["TR-120", "TR-121", "TR-122"]
    assert [o.ID for o in step["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]] == ["L4", "L5", "L6"]
    assert {orx.DecodeEFF(e.ID, 1) for e in step["EFFECTIVITY"]} == {"E08"}
    assert {f.ID for f in step["DOCUMENT_FILE"]} == {
        "Axle.model", "Wheel±sealed.model", "Wheel±drawing.KORDrawing"}  # fmt: skip
    returned, protocol, _ = back(step)
    assert [part.S_PART_NUMBER for part in returned["part_object"]] == ["TR-120", "TR-121", "TR-122"]
    # The history of the wheel names revisions that stayed behind.
    assert [what for what, _ in protocol.notes["left out"]] == ["cdma_revision_history.Revisions"]


# ---- What others change, and what others write


def test_what_another_program_changes_stays_changed(step, database):
    (frame,) = [d for d in step["PRODUCT_DEFINITION"] if d.DESCRIPTION == "Frame"]
    frame.DESCRIPTION = "Frame, welded"
    tilted = next(o for o in step["NEXT_ASSEMBLY_USAGE_OCCURRENCE"] if o.ID == "L37")
    place = mapping.context_of(tilted).REPRESENTATION_RELATION.TRANSFORMATION_OPERATOR.TRANSFORM_ITEM_2
    place.LOCATION.COORDINATES = [7.0, 8.0, 9.0]
    place.AXIS.DIRECTION_RATIOS = [0.0, 0.0, 1.0]
    returned, protocol, by_number = back(step)
    assert by_number[2].S_DESC == "Frame, welded"
    link = by_number[231]
    assert (link.origin, link.axis) == ([7.0, 8.0, 9.0], [0.0, 0.0, 1.0])
    assert link.ref_direction == [1.0, 0.0, 0.0]
    assert ("part_link.axis", "changed since the export: what STEP states") in protocol.notes["remark"]


def table_of_placements():
    rows = []
    for line in (SHARED / "data/as1-oc-214.placements.txt").read_text().splitlines():
        if not line.startswith("#"):
            parent, component, *numbers = re.findall(r"[^\s|:]+", line.replace("<-", " "))
            rows.append((parent, component, [float(number) for number in numbers]))
    return rows


def structure(model):
    return sorted(
        (
            link.RELATING_PRODUCT_DEFINITION.FORMATION.OF_PRODUCT.NAME,
            link.RELATED_PRODUCT_DEFINITION.FORMATION.OF_PRODUCT.NAME,
            link.NAME,
        )
        for link in model["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]
    )


@pytest.mark.skipif(not SHARED.exists(), reason="../shared is absent")
@pytest.mark.parametrize("schema", SCHEMAS)
def test_an_assembly_of_another_origin_goes_through_the_database(schema, tmp_path):
    foreign = orx.read(SHARED / "data/as1-oc-214.stp")
    database, protocol = import_module.to_database(foreign)
    assert (len(database["part_object"]), len(database["part_link"])) == (9, 13)
    assert protocol.count("replaced") == 9  # the versions, which are empty
    database.write(tmp_path / "as1.stp")
    step, _ = export(orx.read(tmp_path / "as1.stp"), schema)
    step.write(tmp_path / "again.stp")
    step = orx.read(tmp_path / "again.stp")
    expected = table_of_placements()
    assert len(expected) == 13
    for link in step["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]:
        names = [
            definition.FORMATION.OF_PRODUCT.NAME
            for definition in (link.RELATING_PRODUCT_DEFINITION, link.RELATED_PRODUCT_DEFINITION)
        ]
        placement = orx.GetAbsPlacement(link)
        rows = [
            row
            for row in expected
            if [*row[:2]] == names and row[2] == pytest.approx(placement, abs=1e-6)
        ]
        assert len(rows) == 1, (names, placement)
        expected.remove(rows[0])
    assert expected == []
    assert structure(step) == structure(foreign)


@pytest.mark.skipif(not SHARED.exists(), reason="../shared is absent")
@pytest.mark.skipif(ORX is None, reason="ORX_PROGRAM does not name the program")
@pytest.mark.parametrize(
    "schema, express", [("AP203", "ap203"), ("AP214", "AP214E3_2010"), ("PDM", "pdm_schema_12")]
)
def test_exported_files_are_as_the_full_schemas_want_them(database, schema, express, tmp_path):
    export(database, schema)[0].write(tmp_path / "out.stp")
    checked = subprocess.run(
        [ORX, "check", "-s", SHARED / f"schemas/{express}.exp", tmp_path / "out.stp"],
        capture_output=True,
        text=True,
        timeout=120,
    )
    assert (checked.returncode, checked.stdout, checked.stderr) == (0, "", "")


# ---- As others read it

TOOLKIT = "/usr/include/opencascade"
TOOLKIT_LIBRARIES = "TKXDESTEP TKSTEP TKXCAF TKXSBase TKLCAF TKCAF TKCDF TKBRep TKMath TKernel"


@pytest.fixture(scope="session")
def toolkit(tmp_path_factory):
    """A program that reads a file by an independent STEP toolkit, libocct-data-exchange-dev."""
    if not os.path.isdir(TOOLKIT):
        pytest.skip("libocct-data-exchange-dev is not installed")
    program = tmp_path_factory.mktemp("toolkit") / "assembly"
    environment = {name: value for name, value in os.environ.items() if name != "LD_PRELOAD"}
    subprocess.run(
        ["g++", "-std=c++17", f"-isystem{TOOLKIT}", "-Wno-deprecated-declarations",
         SOURCES / "tests/occt/Assembly.cpp", "-o", program,
         *(f"-l{name}" for name in TOOLKIT_LIBRARIES.split())],
        check=True, env=environment, timeout=300,
    )  # fmt: skip

    def read(file):
        done = subprocess.run(
            [program, file], capture_output=True, env=environment, check=True, timeout=120
        )
        lines = [line.split("\t") for line in done.stdout.decode("utf-8", "replace").splitlines()]
        occurrences = [
            (parent, component, name, [float(number) for number in numbers.split()])
            for parent, component, name, numbers in (line for line in lines if len(line) == 4)
        ]
        return [line[1] for line in lines if line[0] == "unit"], occurrences

    return read


@pytest.mark.parametrize("schema", SCHEMAS)
def test_an_independent_toolkit_reads_the_same_structure(schema, toolkit, tmp_path):
    database = orx.read(SOURCES / "tests/host/trolley.stp")
    export(database, schema)[0].write(tmp_path / "out.stp")
    units, occurrences = toolkit(tmp_path / "out.stp")
    assert units == ["millimetre"]
    # Parts are known there by the names of their products, which their first revisions have.
    expected = [
        ("Hand trolley", "Frame", [1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0]),
        ("Hand trolley", "Axle with wheels", [1, 0, 0, 0, 0, -1, 0, 1, 0, 0, 120, -40]),
        ("Axle with wheels", "Axle", [1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0]),
        ("Axle with wheels", "Wheel", [0, 0, 1, 0, 1, 0, -1, 0, 0, -250, 0, 0]),
        ("Axle with wheels", "Wheel", [0, 0, 1, 0, -1, 0, 1, 0, 0, 250, 0, 0]),
        ("Hand trolley", "Handle", [1, 0, 0, 0, 0.8, -0.6, 0, 0.6, 0.8, 0, 0, 900]),
    ]
    assert [(parent, component) for parent, component, _, _ in occurrences] == [
        (parent, component) for parent, component, _ in expected
    ]
    for (*_, found), (*_, placement) in zip(occurrences, expected):
        assert found == pytest.approx(placement, abs=1e-12)
    assert [name for _, _, name, _ in occurrences] == [
        "Frame", "Axle with wheels", "Axle", "Wheel, sealed bearing", "Wheel, sealed bearing",
        "Handle"]  # fmt: skip


def test_an_independent_toolkit_places_each_occurrence_of_the_example(database, toolkit, tmp_path):
    step, _ = export(database)
    step.write(tmp_path / "out.stp")
    _, occurrences = toolkit(tmp_path / "out.stp")
    places = {}
    for parent, _, name, place in occurrences:
        places.setdefault((parent, name), []).append(place)
    assert len(occurrences) == len(database["part_link"])
    for link in step["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]:
        parent = link.RELATING_PRODUCT_DEFINITION.FORMATION.OF_PRODUCT.NAME
        name = re.sub(r"\s", " ", link.NAME)
        # A name without a Latin letter is nothing to the toolkit, which takes the identifier then.
        found = places.get((parent, name)) or places[parent, link.ID]
        place = pytest.approx(orx.GetAbsPlacement(link), abs=1e-9)
        assert any(place == other for other in found), (parent, name)


@pytest.mark.skipif(not SHARED.exists(), reason="../shared is absent")
def test_an_independent_toolkit_finds_an_assembly_of_another_origin_as_it_was(toolkit, tmp_path):
    original = SHARED / "data/as1-oc-214.stp"
    export(import_module.to_database(orx.read(original))[0])[0].write(tmp_path / "again.stp")
    (_, before), (_, after) = toolkit(original), toolkit(tmp_path / "again.stp")
    assert len(before) == 13

    def rounded(occurrences):
        return sorted((*names, *(round(x, 6) + 0.0 for x in place)) for *names, place in occurrences)

    assert rounded(after) == rounded(before)


# ---- Files of other origins

FOREIGN = """
#1=APPLICATION_CONTEXT('');
#2=PRODUCT_CONTEXT('',#1,'mechanical');
#3=PRODUCT_DEFINITION_CONTEXT('part definition',#1,'design');
#10=PRODUCT('P1','Pump','with a text',(#2));
#11=PRODUCT_DEFINITION_FORMATION('A','',#10);
#12=PRODUCT_DEFINITION('design','',#11,#3);
#13=PRODUCT_DEFINITION_FORMATION('revision B','',#10);
#20=PRODUCT('P2','Bolt','',(#2));
#21=PRODUCT_DEFINITION_FORMATION('','',#20);
#22=PRODUCT_DEFINITION('design','',#21,#3);
#30=PRODUCT('','','',(#2));
#31=PRODUCT_DEFINITION_FORMATION('1','',#30);
"""


def shapes(unit_of_parent, unit_of_component, start=100):
    """Shapes of #12 and #22 with their units, and an own origin of #22 that is not at zero."""
    return f"""
#{start}=({unit_of_parent});
#{start + 1}=({unit_of_component});
#{start + 2}=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#{start}))REPRESENTATION_CONTEXT('',''));
#{start + 3}=(GEOMETRIC_REPRESENTATION_CONTEXT(3)GLOBAL_UNIT_ASSIGNED_CONTEXT((#{start + 1}))REPRESENTATION_CONTEXT('',''));
#110=CARTESIAN_POINT('',(1.,2.,3.));
#111=DIRECTION('',(0.,0.,1.));
#112=DIRECTION('',(0.,1.,0.));
#113=AXIS2_PLACEMENT_3D('',#110,#111,#112);
#114=CARTESIAN_POINT('',(1.,0.,0.));
#115=AXIS2_PLACEMENT_3D('',#114,$,$);
#116=SHAPE_REPRESENTATION('',(#113),#{start + 2});
#117=SHAPE_REPRESENTATION('',(#115),#{start + 3});
#118=PRODUCT_DEFINITION_SHAPE('','',#12);
#119=SHAPE_DEFINITION_REPRESENTATION(#118,#116);
#120=PRODUCT_DEFINITION_SHAPE('','',#22);
#121=SHAPE_DEFINITION_REPRESENTATION(#120,#117);
#122=ITEM_DEFINED_TRANSFORMATION('','',#115,#113);
#123=(REPRESENTATION_RELATIONSHIP('','',#117,#116)REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#122)SHAPE_REPRESENTATION_RELATIONSHIP());
#124=PRODUCT_DEFINITION_SHAPE('','',#40);
#125=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#123,#124);
#40=NEXT_ASSEMBLY_USAGE_OCCURRENCE('1','bolt_1','',#12,#22,$);
"""


METRE = "LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.)"
MILLIMETRE = "LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.)"
INCH = "CONVERSION_BASED_UNIT('INCH',#90)LENGTH_UNIT()NAMED_UNIT(#91)"
INCH_OF_MILLIMETRES = f"""
#90=LENGTH_MEASURE_WITH_UNIT(LENGTH_MEASURE(25.4),#92);
#91=DIMENSIONAL_EXPONENTS(1.,0.,0.,0.,0.,0.,0.);
#92=({MILLIMETRE});
"""


# The own origin of the component, (1,0,0), comes to lie at (1,2,3), turned by 90 degrees about z: so
# the component's zero lies at (1,2,3) - (0,1,0).
@pytest.mark.parametrize(
    "unit, factor", [(MILLIMETRE, 1.0), (METRE, 1000.0), (INCH, 25.4)], ids=["mm", "m", "inch"]
)
def test_placements_are_read_in_millimetres_from_any_unit(read_text, unit, factor):
    step = read_text(FOREIGN + INCH_OF_MILLIMETRES + shapes(unit, unit))
    database, _ = import_module.to_database(step)
    (link,) = database["part_link"]
    assert link.origin == pytest.approx([1 * factor, 1 * factor, 3 * factor])
    assert link.axis == [0, 0, 1]
    assert link.ref_direction == [0, 1, 0]


def test_places_that_mapped_items_state_are_read(read_text):
    step = read_text(
        FOREIGN
        + shapes(MILLIMETRE, MILLIMETRE).replace("(#113),", "(#113,#130,#131),").replace("#125=", "#126=")
        .replace("CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#123,#124)", "PRODUCT_CONTEXT('',#1,'')")
        + "#130=MAPPED_ITEM('',#132,#113);#131=MAPPED_ITEM('',#132,#115);\n"
        + "#132=REPRESENTATION_MAP(#115,#117);\n"
        + "#41=NEXT_ASSEMBLY_USAGE_OCCURRENCE('2','bolt_2','',#12,#22,$);\n"
        + "#42=NEXT_ASSEMBLY_USAGE_OCCURRENCE('3','bolt_3','',#12,#22,$);\n"
    )  # fmt: skip
    database, protocol = import_module.to_database(step)
    # As in the test before; the second lies where its own origin is; for the third there is no item.
    places = [(link.origin, link.axis, link.ref_direction) for link in database["part_link"]]
    found = {link.id: place for link, place in zip(database["part_link"], places)}
    assert found == {
        "1": ([1, 1, 3], [0, 0, 1], [0, 1, 0]),
        "2": ([0, 0, 0], [0, 0, 1], [1, 0, 0]),
        "3": (None, None, None),
    }
    assert {why for what, why in protocol.notes["remark"] if what == "placement of an occurrence"} == {
        "from a mapped item",
        "STEP states none: it stays unset",
    }


def test_parts_without_keys_come_from_their_own_attributes(read_text):
    database, protocol = import_module.to_database(read_text(FOREIGN))
    parts = [
        (p.S_PART_NUMBER, p.S_CHG_NUM, p.C_VERSION, p.S_TYPE, p.S_DESC)
        for p in database["part_object"]
    ]
    assert parts == [
        ("P1", "A", 1, "PART", "Pump"),
        ("P1", "A", 2, "PART", "Pump"),  # 'revision B' is too long for the database
        ("P2", "A", 1, "PART", "Bolt"),
        ("ORX", "1", 1, "PART", ""),
    ]
    assert {what for what, _ in protocol.notes["replaced"]} == {
        "PRODUCT.ID",
        "PRODUCT_DEFINITION_FORMATION.ID",
    }
    assert {what for what, _ in protocol.notes["left out"]} == {"PRODUCT.DESCRIPTION"}


def test_quantities_become_links(read_text):
    step = read_text(
        FOREIGN
        + "#50=MEASURE_WITH_UNIT(COUNT_MEASURE(3.),#51);\n"
        + f"#51=({MILLIMETRE});\n"
        + "#52=MEASURE_WITH_UNIT(MASS_MEASURE(0.5),#51);\n"
        + "#53=(ASSEMBLY_COMPONENT_USAGE($)NEXT_ASSEMBLY_USAGE_OCCURRENCE()PRODUCT_DEFINITION_RELATIONSHIP"
        "('b','','',#12,#22)PRODUCT_DEFINITION_USAGE()QUANTIFIED_ASSEMBLY_COMPONENT_USAGE(#50));\n"
        + "#54=QUANTIFIED_ASSEMBLY_COMPONENT_USAGE('o','','',#12,#22,$,#52);\n"
    )
    database, protocol = import_module.to_database(step)
    assert [link.id for link in database["part_link"]] == ["b", "b/2", "b/3", "o"]
    (pump, *_) = database["part_object"]
    assert pump.S_TYPE == "ASSEMBLY" and len(pump.KORASS) == 4
    assert [why for what, why in protocol.notes["replaced"] if what == "quantity"] == [
        "0.5 is no number of links: one link"
    ]


def test_files_and_effectivities_of_another_origin(read_text):
    step = read_text(
        FOREIGN
        + """
#60=DOCUMENT_TYPE('geometry');
#61=DOCUMENT_FILE('f1','','the shape',#60,'',$);
#62=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('pump\\X\\B1body.model',#63,#64,(#61));
#63=IDENTIFICATION_ROLE('external document id and location',$);
#64=EXTERNAL_SOURCE(IDENTIFIER('disk'));
#65=OBJECT_ROLE('mandatory',$);
#66=APPLIED_DOCUMENT_REFERENCE(#61,'',(#12));
#67=DOCUMENT_FILE('manual\\X\\B11.KORText','','notes',#60,'',$);
#68=APPLIED_DOCUMENT_REFERENCE(#67,'',(#12));
#70=SERIAL_NUMBERED_EFFECTIVITY('s','10','SN-20');
#71=(EFFECTIVITY('d')DATED_EFFECTIVITY($,#72)PRODUCT_DEFINITION_EFFECTIVITY(#76));
#72=DATE_AND_TIME(#73,#74);
#73=CALENDAR_DATE(2026,2,1);
#74=LOCAL_TIME(8,30,$,#75);
#75=COORDINATED_UNIVERSAL_TIME_OFFSET(0,$,.EXACT.);
#76=NEXT_ASSEMBLY_USAGE_OCCURRENCE('1','','',#12,#22,$);
#77=LOT_EFFECTIVITY('lot','17',#78);
#78=MEASURE_WITH_UNIT(COUNT_MEASURE(3.),#79);
#79=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));
"""
    )
    database, protocol = import_module.to_database(step)
    (model,) = database["model_object"]
    assert (model.S_NAME, model.S_TYPE_REP) == ("pump body", "geometry")
    (document,) = database["CDM_DOCUMENT"]
    assert (document.S_NAME, document.NOTES, document.S_FORMAT) == (
        "manual 1.KORText",
        "notes",
        "KORText",
    )
    pump = database["part_object"][0]
    assert (pump.models, pump.docs1) == ([model], [document])
    (serial,) = database["range_effectivity"]
    assert (serial.id, serial.start_range, serial.end_range) == ("s", 10, 0)
    assert ("SERIAL_NUMBERED_EFFECTIVITY.EFFECTIVITY_END_ID", "the database takes whole numbers") in (
        protocol.notes["replaced"]
    )
    (dated,) = database["date_effectivity"]
    # Day 2 of month 1: a calendar date gives the day before the month. A second that is missing is 01.
    assert (dated.start_date, dated.end_date) == ("01022026083001", None)
    assert dated.usage == list(database["part_link"])
    assert "LOT_EFFECTIVITY" in {what for what, _ in protocol.notes["left out"]}


def test_a_place_that_cannot_be_understood_is_told(read_text):
    text = FOREIGN + shapes(MILLIMETRE, MILLIMETRE).replace("(#113),", "(),").replace("(#115),", "(),")
    database, protocol = import_module.to_database(read_text(text))
    (link,) = database["part_link"]
    assert link.origin == [0, 0, 0]
    assert "placement of an occurrence" in {what for what, _ in protocol.notes["replaced"]}


def test_keys_without_remainders_are_read(read_text):
    """As other mappings write them, in the description of the product."""
    step = read_text(
        FOREIGN.replace("'with a text'", "'S0002P9S000200I00012S0004PART'").replace("#13", "#19")
    )
    database, _ = import_module.to_database(step)
    part = database["part_object"][0]
    assert (part.S_PART_NUMBER, part.S_CHG_NUM, part.C_VERSION, part.S_DESC) == ("P9", "00", 2, "Pump")


@pytest.mark.parametrize("count", [300])
def test_a_generated_database_comes_back(count):
    """The one by which scripts/bench measures how time grows."""
    path = SOURCES / "benchmarks/journey.py"
    specification = importlib.util.spec_from_file_location("journey", path)
    journey = importlib.util.module_from_spec(specification)
    specification.loader.exec_module(journey)
    database = journey.database_of(count)
    assert len(database["part_link"]) == count - 1
    assert after_the_journey(database) == values(database)


# ---- The command line


@needs_orx
@pytest.mark.parametrize("schema", ["AUTOMOTIVE_DESIGN", "AP203"])
def test_the_scripts_bring_a_database_out_and_back(schema, tmp_path):
    database = EXAMPLES / "database.stp"
    out, returned = tmp_path / "out.stp", tmp_path / "back.stp"
    done = run("export.py", database, out, "--schema", schema, "--protocol", tmp_path / "p.json")
    assert done.returncode == 0, done.stderr
    assert "Left out: nothing" in done.stdout
    protocol = json.loads((tmp_path / "p.json").read_text(encoding="utf-8"))
    assert protocol["read"]["part_object"] == 71
    assert protocol["left out"] == []
    assert {"what": "part_object.S_CHG_NUM", "count": 3}.items() <= protocol["replaced"][0].items()
    done = run("import.py", out, returned)
    assert done.returncode == 0, done.stderr
    diff = subprocess.run([ORX, "diff", database, returned], capture_output=True, timeout=120)
    assert (diff.returncode, diff.stdout) == (0, b"")
    check = subprocess.run([ORX, "check", out], capture_output=True, timeout=120)
    assert (check.returncode, check.stdout, check.stderr) == (0, b"", b"")


def test_an_assembly_of_any_schema_can_be_imported(tmp_path):
    out = tmp_path / "out.stp"
    assert run("export.py", EXAMPLES / "database.stp", out, "--schema", "AP242").returncode == 0
    other = tmp_path / "other.stp"
    text = out.read_text(encoding="utf-8")
    name = "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF"
    other.write_text(text.replace(name, "AP209_MULTIDISCIPLINARY_ANALYSIS_AND_DESIGN_MIM_LF"))
    done = run("import.py", other, tmp_path / "back.stp")
    assert done.returncode == 0, done.stderr
    assert "is not built in: read with what it shares with" in done.stdout  # in the protocol
    other.write_text(text.replace(name, "NOBODYS_SCHEMA"))
    assert run("import.py", other, tmp_path / "back.stp").returncode == 2
    assert run("import.py", other, tmp_path / "back.stp", "--as", "PDM_SCHEMA").returncode == 0


def test_what_cannot_be_read_or_written_is_told(tmp_path):
    broken = tmp_path / "broken.stp"
    broken.write_text("ISO-10303-21;HEADER;")
    done = run("import.py", broken, tmp_path / "out.stp")
    assert done.returncode == 2
    assert done.stderr.startswith(f"import.py: {broken}:1:")
    done = run("export.py", EXAMPLES / "database.stp", tmp_path / "out.stp", "--schema", "AP999")
    assert done.returncode == 2
    assert "no mapping into 'AP999'" in done.stderr
    assert not (tmp_path / "out.stp").exists()
    done = run("export.py", EXAMPLES / "database.stp", tmp_path / "none/out.stp")
    assert done.returncode == 2
