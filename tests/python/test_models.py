"""Models, extents and instances."""

import collections.abc
import copy
import gc
import os
import pickle
import threading
import time
import warnings
import weakref

import orxexutilities as orx
import pytest
from conftest import EXAMPLES


def test_a_model_knows_its_schema_and_its_instances(lamp):
    assert lamp.schema == "AUTOMOTIVE_DESIGN"
    numbers = [instance.number for instance in lamp]
    assert len(numbers) == len(lamp) == len(set(numbers))
    assert lamp[202].number == 202
    assert lamp[202].entity == "NEXT_ASSEMBLY_USAGE_OCCURRENCE"
    assert lamp[202].model is lamp
    assert lamp[202] in lamp and 202 in lamp and 999999 not in lamp
    assert orx.new("cdma") is not None and len(orx.new("cdma")) == 0 and bool(orx.new("cdma"))


def test_an_extent_is_a_sequence(lamp):
    links = lamp["next_assembly_usage_occurrence"]
    assert isinstance(links, collections.abc.Sequence)
    assert [link.number for link in links] == [202, 212, 222, 232, 242]
    assert len(links) == 5 and links.entity == "NEXT_ASSEMBLY_USAGE_OCCURRENCE"
    assert links[0] == lamp[202] and links[-1] == lamp[242]
    assert [link.number for link in links[1:4:2]] == [212, 232]
    assert [link.number for link in reversed(links)] == [242, 232, 222, 212, 202]
    assert lamp[222] in links and lamp[101] not in links and "x" not in links
    assert links.index(lamp[222]) == 2 and links.count(lamp[222]) == 1
    for position in (5, -6, 2**80):
        with pytest.raises(IndexError):
            links[position]
    with pytest.raises(ValueError, match="is not in the extent"):
        links.index(lamp[222], 3)


def test_an_extent_lists_instances_of_subtypes_and_grows(triangles):
    extent = triangles["triangle"]
    assert len(extent) == 0
    corners = [triangles.create("corner", x=0, number=i) for i in range(3)]
    named = triangles.create("NAMED_TRIANGLE", corners=corners, id="t")
    assert list(extent) == [named] and named.entity == "NAMED_TRIANGLE"
    seen = []
    for triangle in extent:  # visits what was there when the loop began
        seen.append(triangle)
        triangles.create("triangle", corners=corners)
    assert seen == [named] and len(extent) == 2


def test_attributes_are_found_without_regard_to_case(lamp):
    link = lamp[202]
    assert link.ID == link.id == link["Id"] == "base"
    assert link.RELATED_PRODUCT_DEFINITION.formation.of_product.name == "Base"
    assert "ID" in dir(link) and "users" in dir(link)
    assert getattr(link, "NO_SUCH", 7) == 7
    with pytest.raises(AttributeError, match="has no attribute 'IDD'; did you mean 'ID'?"):
        link.IDD
    with pytest.raises(AttributeError):
        link["nothing"]
    with pytest.raises(AttributeError):
        link.nothing = 1


def test_the_packages_own_names_come_before_attributes_of_that_spelling(triangles):
    corner = triangles.create("corner", x=1, NUMBER=17)
    assert corner.number == 1  # of the instance
    assert corner["number"] == corner.NUMBER == 17
    corner["number"] = 18
    assert corner.NUMBER == 18
    with pytest.raises(AttributeError):
        corner.number = 3


def test_instances_are_equal_when_they_are_one(lamp):
    again = orx.read(EXAMPLES / "assembly.stp")
    assert lamp[202] == lamp[202] and hash(lamp[202]) == hash(lamp[202])
    assert lamp[202] != lamp[212] and lamp[202] != again[202] and lamp[202] != 202
    assert len({lamp[202], lamp[202], lamp[212]}) == 2
    with pytest.raises(TypeError):
        lamp[202] < lamp[212]


def test_instances_and_extents_come_from_models_alone(lamp):
    for make in (
        orx.Instance,
        orx.Extent,
        lambda: object.__new__(orx.Instance),
        lambda: object.__new__(orx.Extent),
        lambda: copy.copy(lamp[202]),
        lambda: type("Own", (orx.Instance,), {}),
    ):
        with pytest.raises(TypeError):
            make()


def test_values_of_every_kind_are_read_as_they_were_written(triangles):
    corners = [triangles.create("corner", x=x, number=1) for x in (0, 1.5, -2.0)]
    triangle = triangles.create("triangle", corners=corners)
    assert triangle.corners == corners
    assert triangle.tint is None and triangle.size is None
    for attribute, value in [
        ("tint", orx.Enum("RED")),
        ("closed", True),
        ("closed", False),
        ("sure", orx.UNKNOWN),
        ("sure", True),
        ("bits", orx.Binary("0A")),
        ("size", orx.Typed("LENGTH", 2.5)),
        ("size", orx.Typed("NAME", "wide")),
        ("size", corners[0]),
        ("counts", [1, 2, 3]),
        ("counts", []),
        ("grid", [[1.0, 2.0], [], [0.5]]),
        ("tint", None),
    ]:
        setattr(triangle, attribute, value)
        read = getattr(triangle, attribute)
        assert read == value and type(read) is type(value), attribute
    triangle.tint = "green"
    assert triangle.tint in (orx.Enum("GREEN"), orx.Enum("green"))
    corners[0].x = 7
    assert corners[0].x == 7.0 and isinstance(corners[0].x, float)


def test_numbers_of_numpy_are_values(triangles):
    numpy = pytest.importorskip("numpy")
    corner = triangles.create("corner", x=numpy.float32(0.5), number=numpy.int64(3))
    assert corner.x == 0.5 and corner.NUMBER == 3
    triangle = triangles.create("triangle", corners=[corner] * 3, closed=numpy.bool_(True))
    triangle.counts = numpy.array([4, 5])
    assert triangle.counts == [4, 5] and triangle.closed is True


@pytest.mark.parametrize(
    ("attribute", "value", "message"),
    [
        ("x", "long", "CORNER: X: a real expected, found 'long'"),
        ("x", True, "a real expected"),
        ("number", 1.5, "an integer expected"),
        ("label", 5, "a text expected"),
        ("label", b"text", "expected, found bytes"),
        ("label", {}, "expected, found dict"),
    ],
)
def test_a_value_of_another_kind_is_refused(triangles, attribute, value, message):
    corner = triangles.create("corner", x=1, number=2, label="c")
    with pytest.raises(TypeError, match=message):
        corner[attribute] = value
    assert (corner.x, corner["number"], corner.label) == (1.0, 2, "c")


def test_a_reference_is_to_an_instance_of_the_type_and_of_the_model(triangles, triangle_schema):
    other = orx.new("triangle", schemas=[triangle_schema])
    corner = triangles.create("corner", x=1, number=1)
    triangle = triangles.create("triangle", corners=[corner] * 3)
    with pytest.raises(TypeError, match="a list of an instance of CORNER expected"):
        triangle.corners = [triangle]
    with pytest.raises(ValueError, match="an instance of the same model expected"):
        triangle.corners = [other.create("corner", x=1, number=1)]
    with pytest.raises(TypeError, match="one of LENGTH, NAME, CORNER expected"):
        triangle.size = orx.Typed("NUMBER", 1)
    with pytest.raises(TypeError, match="an item of an enumeration expected"):
        triangle.tint = "not a name"
    assert triangle.corners == [corner] * 3


def test_texts_hold_every_character_but_nul_and_lone_surrogates(triangles, tmp_path, triangle_schema):
    corner = triangles.create("corner", x=1, number=1)
    texts = ["", "plain", "Säge", "łódź", "漢字 and more of them", "😀", "it's \\X2\\", "a\nb"]
    for text in texts[:-2]:
        corner.label = text
        assert corner.label == text
        triangles.write(tmp_path / "t.stp")
        assert orx.read(tmp_path / "t.stp", schemas=[triangle_schema])[1].label == text
    for text, place in [("ab\0c", 2), ("łab\0", 3)]:
        with pytest.raises(ValueError, match=rf"CORNER: LABEL holds a NUL \(U\+0000\) at position {place}"):
            corner.label = text
    with pytest.raises(ValueError, match=r"holds a lone surrogate \(U\+D800\) at position 1"):
        corner.label = "a\ud800"
    with pytest.raises(ValueError, match=r"argument 'key' holds a NUL"):
        orx.IsEncodedKey("\0")


def test_an_instance_is_made_whole_or_not_at_all(triangles):
    for wrong in ({"x": "long"}, {"y": 1}, {"x": 1, "label": "\0"}):
        with pytest.raises((TypeError, AttributeError, ValueError)):
            triangles.create("corner", **wrong)
    with pytest.raises(orx.NotFound, match="unknown entity type 'CORNERS'; did you mean 'CORNER'?"):
        triangles.create("CORNERS")
    assert len(triangles) == 0
    assert triangles.create("corner").number == 1 and triangles.create("corner").number == 2


def test_an_instance_can_be_of_several_types(lamp):
    both = lamp.create("REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION+SHAPE_REPRESENTATION_RELATIONSHIP")
    assert both.entity == (
        "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION+SHAPE_REPRESENTATION_RELATIONSHIP"
    )
    assert both in lamp["SHAPE_REPRESENTATION_RELATIONSHIP"]


def test_instances_of_undeclared_types_have_values_by_position(read_text):
    model = read_text("#1=STRANGE('a',#2,(1,2));\n#2=STRANGE('b',$,());\n")
    strange = model[1]
    assert strange.entity == "STRANGE" and len(model["STRANGE"]) == 2
    assert (strange[1], strange[2], strange[3]) == ("a", model[2], [1, 2])
    strange[1] = "c"
    assert strange[1] == "c"
    for position in (0, 4, -1, 2**70):
        with pytest.raises(AttributeError):
            strange[position]


def test_users_are_those_that_refer_to_an_instance(lamp):
    base = lamp[202].RELATED_PRODUCT_DEFINITION
    assert base.users("NEXT_ASSEMBLY_USAGE_OCCURRENCE.related_product_definition") == [lamp[202]]
    root = lamp[202].RELATING_PRODUCT_DEFINITION
    used = root.users("NEXT_ASSEMBLY_USAGE_OCCURRENCE.RELATING_PRODUCT_DEFINITION")
    expected = [
        link
        for link in lamp["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]
        if link.RELATING_PRODUCT_DEFINITION == root
    ]
    assert used == expected and len(used) > 1
    context = lamp["PRODUCT_CONTEXT"][0]
    assert context.users("PRODUCT.FRAME_OF_REFERENCE") == list(lamp["PRODUCT"])  # by an aggregate
    assert context.users("PRODUCT.NAME") == []
    for name, error in [("PRODUCTS.NAME", orx.NotFound), ("PRODUCT.NAMES", AttributeError)]:
        with pytest.raises(error):
            context.users(name)
    for name in ("PRODUCT", 5):
        with pytest.raises(TypeError, match="'ENTITY_TYPE.ATTRIBUTE' expected"):
            context.users(name)


def test_users_of_every_instance_cost_no_walk_each():
    model = orx.new("AUTOMOTIVE_DESIGN")
    versions = []
    for number in range(20_000):
        part = model.create("PRODUCT", ID=str(number))
        versions.append(model.create("PRODUCT_DEFINITION_FORMATION", OF_PRODUCT=part))
    start = time.perf_counter()
    for version in versions:
        assert version.OF_PRODUCT.users("PRODUCT_DEFINITION_FORMATION.OF_PRODUCT") == [version]
    assert time.perf_counter() - start < 5  # 400 million visits take longer
    first, second = versions[:2]
    part = first.OF_PRODUCT
    second.OF_PRODUCT = part
    assert part.users("PRODUCT_DEFINITION_FORMATION.OF_PRODUCT") == [first, second]
    first.OF_PRODUCT = None
    assert part.users("PRODUCT_DEFINITION_FORMATION.OF_PRODUCT") == [second]


def test_what_is_not_there_is_told_with_what_is_near(lamp):
    with pytest.raises(orx.NotFound, match="there is no instance #9999"):
        lamp[9999]
    with pytest.raises(KeyError, match="unknown entity type 'PRODUCTS'; did you mean 'PRODUCT'?"):
        lamp["PRODUCTS"]
    with pytest.raises(orx.Error, match="unknown schema 'AUTO'"):
        orx.new("AUTO")
    for key in (1.5, None, True):
        with pytest.raises(TypeError, match="the number of an instance or the name of an entity"):
            lamp[key]
    for number in (-1, 0, 2**70):
        with pytest.raises(orx.NotFound):
            lamp[number]


def test_a_file_with_errors_is_refused_with_every_place(read_text):
    with pytest.raises(orx.Error) as caught:
        read_text("#1=PRODUCT('a','b','c',(#7));\n#2=PRODUCT('a';\n")
    error = caught.value
    assert os.path.basename(error.file) == "data.stp" and error.line == 9
    assert len(error.messages) == 2 and str(error) == "\n".join(error.messages)
    assert all("data.stp:" in message for message in error.messages)
    copy = pickle.loads(pickle.dumps(error))
    assert (copy.file, copy.line, copy.column) == (error.file, error.line, error.column)
    with pytest.raises(orx.Error) as caught:
        orx.read("no such file.stp")
    assert caught.value.file == "no such file.stp" and caught.value.line is None
    assert isinstance(caught.value, ValueError)


def test_a_lenient_reading_warns_of_what_was_wrong(read_text):
    with pytest.warns(orx.DataWarning, match="there is no instance #7"):
        model = read_text("#1=PRODUCT('a','b','c',(#7));\n", lenient=True)
    assert model[1].NAME == "b"
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        with pytest.raises(orx.DataWarning):
            read_text("#1=PRODUCT('a','b','c',(#7));\n", lenient=True)


def test_a_model_is_written_as_it_is_read(lamp, tmp_path):
    file = tmp_path / "lamp é.stp"
    lamp[202].ID = "foot"
    assert lamp.write(file) is None
    again = orx.read(str(file))
    assert again[202].ID == "foot" and len(again) == len(lamp)
    with pytest.raises(orx.Error):
        lamp.write(tmp_path / "no such folder" / "x.stp")
    assert sorted(os.listdir(tmp_path)) == ["lamp é.stp"]


def test_a_model_goes_to_a_database_and_back(lamp, tmp_path):
    name = f"sqlite:{tmp_path}/lamp é.db"
    lamp.write(name)
    again = orx.read(name)
    assert len(again) == len(lamp) and again[202].ID == "base"
    again[202].ID = "foot"
    again.write(name)
    assert orx.read(name)[202].ID == "foot"
    lamp[202].ID = "other"
    with pytest.raises(orx.Error, match="another has changed meanwhile: #202") as error:
        lamp.write(name)
    assert error.value.file == name
    with pytest.raises(orx.Error, match="no.db: "):
        orx.read(f"sqlite:{tmp_path}/no.db")


def test_arguments_of_another_type_are_told(lamp):
    for call in (lambda: orx.read(5), lambda: lamp.write(None), lambda: orx.read("x", schemas="y")):
        with pytest.raises(TypeError, match="argument '(path|schemas)'"):
            call()


def test_a_handle_outlives_the_name_of_its_model():
    model = orx.read(EXAMPLES / "assembly.stp")
    gone = weakref.ref(model)
    link, extent = model[202], model["PRODUCT"]
    walk = iter(extent)
    del model, extent
    gc.collect()
    assert link.ID == "base" and gone() is link.model
    del link
    assert next(walk).entity == "PRODUCT"
    rest = list(walk)
    del walk
    assert gone() is not None
    del rest
    gc.collect()
    assert gone() is None


def test_what_is_remembered_of_names_goes_with_a_model(triangle_schema):
    for i in range(50):
        model = orx.new("triangle", schemas=[triangle_schema])
        corner = model.create("corner", x=i, number=i)
        assert (corner.x, corner.NUMBER) == (float(i), i)
        corner.x = i + 1
        assert corner.x == i + 1.0


def test_a_model_that_is_version_has_met_lives_until_values_are_removed():
    model = orx.read(EXAMPLES / "database.stp")
    gone = weakref.ref(model)
    orx.IsVersion(model["part_object"][0], 1)
    del model
    gc.collect()
    assert gone() is not None
    assert orx.RemoveValueVersion() is True
    gc.collect()
    assert gone() is None


def test_a_model_can_be_read_by_several_threads(lamp, tmp_path):
    expected = [orx.GetAbsPlacement(link) for link in lamp["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]]
    failures = []

    def work(number):
        try:
            for _ in range(20):
                links = lamp["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]
                assert [orx.GetAbsPlacement(link) for link in links] == expected
                assert [list(row) for row in orx.placements(links)] == expected
                lamp.write(tmp_path / f"{number}.stp")
                orx.read(tmp_path / f"{number}.stp")
        except BaseException as error:
            failures.append(error)

    threads = [threading.Thread(target=work, args=(number,)) for number in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert failures == []


def test_a_model_is_not_changed_while_a_thread_writes_it(triangles, tmp_path):
    for i in range(30000):
        triangles.create("corner", x=i, number=i)
    outcomes = set()
    done = threading.Event()

    def write():
        triangles.write(tmp_path / "t.stp")
        done.set()

    thread = threading.Thread(target=write)
    thread.start()
    while not done.is_set():
        try:
            triangles[1].x = 2.0
            outcomes.add("written")
        except orx.Error as error:
            outcomes.add(str(error).split(" while")[0])
    thread.join()
    assert outcomes <= {"written", "the model cannot be written"}
    triangles[1].x = 3.0
    assert triangles[1].x == 3.0


def test_a_file_can_be_read_with_another_schema_than_it_names(read_text):
    text = "#1=PRODUCT('p','Bolt',$,());\n"
    with pytest.raises(orx.Error, match="unknown schema 'IFC4'"):
        read_text(text, schema="IFC4")
    assert read_text(text, schema="AUTOMOTIVE_DESIGN_CC2").schema == "AUTOMOTIVE_DESIGN"
    with pytest.warns(orx.DataWarning, match="schema 'AP239_X' is not built in"):
        assert read_text(text, schema="AP239_X")[1].NAME == "Bolt"


def test_the_schema_to_read_with_can_be_named(tmp_path):
    file = tmp_path / "data.stp"
    file.write_text(
        "ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;#1=PRODUCT('p','Bolt',$,());ENDSEC;"
        "END-ISO-10303-21;"
    )
    assert orx.read(file, schema="pdm_schema").schema == "PDM_SCHEMA"
    with pytest.raises(orx.NotFound, match="unknown schema 'NOBODY'"):
        orx.read(file, schema="NOBODY")


def test_an_attribute_can_be_named_with_the_type_that_declares_it(read_text):
    """A document file has two names: the document's and that of the characterized object."""
    model = read_text("#1=DOCUMENT_TYPE('');\n#2=DOCUMENT_FILE('i','n','d',#1,'o',$);\n")
    file = model[2]
    assert file["CHARACTERIZED_OBJECT.NAME"] == "o"
    assert file["document.name"] == file.NAME == "n"
    assert file["DOCUMENT_FILE.ID"] == "i"
    file["CHARACTERIZED_OBJECT.NAME"] = ""
    assert (file.NAME, file["CHARACTERIZED_OBJECT.NAME"]) == ("n", "")
    for name in ("PRODUCT.NAME", "CHARACTERIZED_OBJECT.KIND", ".NAME", "NAME."):
        with pytest.raises(AttributeError):
            file[name]
