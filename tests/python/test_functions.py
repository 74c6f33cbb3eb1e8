"""The mapping functions as Python has them."""

import inspect
import math
import os
import subprocess
import sys
import json
import re

import orxexutilities as orx
import pytest
from conftest import EXAMPLES, SOURCES


def names_of_the_table():
    text = (SOURCES / "DatabaseAccess/ORXExUtilities.m/ORXExportTable.h").read_text()
    return re.findall(r'Export\{"(\w+)"', text)


def test_every_function_of_the_table_is_there_and_tells_what_it_does():
    names = names_of_the_table()
    assert len(names) == 73
    for name in names:
        function = getattr(orx, name)
        assert name in orx.__all__ and function.__module__ == "orxexutilities"
        parameters = inspect.signature(function).parameters
        for parameter in parameters:
            assert f"{parameter}: " in function.__doc__
        assert "default: " in function.__doc__ and "reads: " in function.__doc__
    assert str(inspect.signature(orx.GetInst)) == "(instance, attribute)"
    assert str(inspect.signature(orx.RemoveValueVersion)) == "()"


def test_results_have_the_types_of_python(lamp):
    assert orx.ORXTrunc("trolley", 4) == "trol"
    assert orx.GetMemberCount([1, 2, 3]) == 3
    assert orx.GetMemberCount(lamp["PRODUCT"]) == 6
    assert orx.Minus(2) == -2.0 and isinstance(orx.Minus(2), float)
    assert orx.IsEncodedKey("S0001a") is True and orx.IsEncodedKey("X") is False
    assert orx.GetInst(lamp[202], "RELATED_PRODUCT_DEFINITION") == lamp[202].RELATED_PRODUCT_DEFINITION
    assert orx.GetInst(lamp[202], "REFERENCE_DESIGNATOR") is None
    assert [orx.DecodeKey("S0002abI00017R00031.5", place) for place in (1, 2, 3, 4, 0)] == [
        "ab", 7, 1.5, "EMPTY VALUE", None,
    ]
    placement = orx.GetAbsPlacement(lamp[222])
    assert placement == [1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, -1.0, 0.0, 0.0, 12.5, -3.0]
    assert all(isinstance(real, float) for real in placement)
    assert re.fullmatch(r".+-[0-9a-f-]{36}", orx.GetUniqId(None))


def test_arguments_go_by_position_or_by_name(lamp):
    assert orx.ORXTrunc("trolley", count=2) == orx.ORXTrunc(count=2, text="trolley") == "tr"
    for call in (
        lambda: orx.ORXTrunc("a"),
        lambda: orx.ORXTrunc("a", 1, 2),
        lambda: orx.ORXTrunc("a", text="b"),
        lambda: orx.ORXTrunc("a", length=1),
        lambda: orx.RemoveValueVersion(1),
    ):
        with pytest.raises(TypeError, match=r"takes \d arguments? \(.*\), found"):
            call()


def test_an_unset_argument_is_none():
    assert orx.GetInst(None, None) == 0
    assert orx.ORXTrunc(None, 3) == "NO VALUE"
    assert orx.IsFree(None, "ID") is True
    assert orx.GetAbsPlacement(None) == [1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0]


@pytest.mark.parametrize(
    ("call", "message"),
    [
        (lambda m: orx.GetAbsPlacement("x"), "GetAbsPlacement: argument 'link': an Instance or None"),
        (lambda m: orx.GetInst(m[202], 5), "GetInst: argument 'attribute': a str or None expected, found int"),
        (lambda m: orx.ORXTrunc("a", 1.5), "ORXTrunc: argument 'count': an int or None expected, found float"),
        (lambda m: orx.ORXTrunc("a", True), "an int or None expected, found bool"),
        (lambda m: orx.Minus("1"), "Minus: argument 'value': a float or None expected, found str"),
        (lambda m: orx.GetMemberCount("abc"), "a list or None expected, found str"),
        (lambda m: orx.GetMemberCount({1}), "expected, found set"),
        (lambda m: orx.BuildDatedEff("", m[202]), "argument 'model': a Model expected"),
        (lambda m: orx.ComputeABSPlacement(None, None, None), "a list of floats expected, found None"),
        (lambda m: orx.ComputeABSPlacement(None, None, ("a",)), "a list of floats expected, found tuple"),
        (lambda m: orx.ComputeABSPlacement(None, None, ["a"]), "a list of floats expected, found list"),
        (lambda m: orx.GetPlacement0(None, None, (1.0,)), "a list or None expected, found tuple"),
        (lambda m: orx.placements([m[202], 5]), "instances expected, found int at position 1"),
        (lambda m: orx.trace(5), "a str, os.PathLike or callable expected, found int"),
    ],
)
def test_an_argument_of_another_type_is_told_with_its_name(lamp, call, message):
    with pytest.raises(TypeError, match=re.escape(message)):
        call(lamp)


def test_a_number_that_is_too_large_is_told(lamp):
    with pytest.raises(ValueError, match="'count': an integer of 64 bits expected"):
        orx.ORXTrunc("a", 2**63)
    assert orx.ORXTrunc("a", 2**63 - 1) == "a"


def test_a_list_that_holds_itself_ends():
    endless = []
    endless.append(endless)
    with pytest.raises(RecursionError):
        orx.GetMemberCount(endless)


def test_a_list_that_is_given_to_be_filled_is_filled(lamp):
    first, second = lamp["AXIS2_PLACEMENT_3D"][:2]
    filled = [5.0]
    assert orx.ComputeABSPlacement(first, second, filled) is filled
    assert len(filled) == 13 and filled[0] == 5.0
    filled = [1.0, 2.0]
    assert orx.GetPlacement0(lamp[222], "", filled) is filled


def test_functions_that_create_instances_create_them_in_their_model():
    model = orx.new("AUTOMOTIVE_DESIGN")
    dated = orx.BuildDatedEff("12312099235959", model)
    assert dated in model and dated.model is model and len(model) == 4


def test_placements_of_many_occurrences_are_those_of_each(lamp):
    numpy = pytest.importorskip("numpy")
    links = lamp["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]
    placements = orx.placements(links)
    assert placements.shape == (5, 12) and placements.dtype == numpy.float64
    expected = numpy.array([orx.GetAbsPlacement(link) for link in links])
    assert numpy.array_equal(placements, expected)
    assert numpy.array_equal(orx.placements(list(reversed(links))), expected[::-1])
    assert orx.placements([]).shape == (0, 12)


def test_the_trace_goes_into_a_file_or_to_a_callable(lamp, tmp_path):
    file = tmp_path / "calls.trace"
    lines = []
    with orx.trace(file) as trace:
        orx.GetMemberCount([1])
        with orx.trace(lines.append):
            orx.GetMemberCount([1, 2])
        orx.GetMemberCount([1])
    orx.GetMemberCount([1])
    assert lines[0] == "SdaiPrimitiveH GetMemberCount -> {"
    assert lines[-1] == "SdaiPrimitiveH GetMemberCount -> }" and len(lines) > 2
    text = file.read_text("latin-1")
    assert text.count("-> {") == 2 and text.endswith("-> }\n")
    assert text.splitlines()[0] == lines[0]
    with trace:
        pass
    assert file.read_text() == ""
    with pytest.raises(orx.Error, match="the trace cannot be written"):
        with orx.trace(tmp_path / "no" / "trace"):
            pass


TRACE_OF_ONE_MEMBER = """SdaiPrimitiveH GetMemberCount -> {
   SdaiPrimitiveH GetMemberCount -> Taille1
SdaiPrimitiveH GetMemberCount -> }
"""


def test_the_file_of_a_trace_is_started_anew(tmp_path):
    file = tmp_path / "calls.trace"
    file.write_text("an older trace, longer than the new one\n" * 10)
    with orx.trace(file) as trace:
        assert file.read_text() == ""
        orx.GetMemberCount([1])
        assert file.read_text() == TRACE_OF_ONE_MEMBER
        with pytest.raises(orx.Error, match="the trace cannot be written"):
            trace.__enter__()
        with file.open("a") as other:
            other.write("of another\n")
        orx.GetMemberCount([1])
    assert file.read_text() == TRACE_OF_ONE_MEMBER + "of another\n" + TRACE_OF_ONE_MEMBER
    with pytest.raises(orx.Error, match="the trace cannot be written"):
        with orx.trace(""):
            pass


@pytest.mark.parametrize(("mode", "kept"), [("a", "first\n"), ("w", "")])
def test_a_trace_into_the_standard_output_follows_what_that_has(tmp_path, mode, kept):
    program = """
import orxexutilities as orx
print("before", flush=True)
with orx.trace("/dev/stdout"):
    orx.GetMemberCount([1])
print("after")
"""
    file = tmp_path / "output"
    file.write_text("first\n")
    with file.open(mode) as output:
        subprocess.run([sys.executable, "-c", program], stdout=output, check=True, timeout=60)
    assert file.read_text() == f"{kept}before\n{TRACE_OF_ONE_MEMBER}after\n"


def test_a_trace_into_a_pipe_waits_for_its_reader_with_its_first_line_only(tmp_path):
    pipe = tmp_path / "pipe"
    os.mkfifo(pipe)
    program = """
import sys
import orxexutilities as orx
with orx.trace(sys.argv[1]):
    pass
"""
    subprocess.run([sys.executable, "-c", program, pipe], check=True, timeout=10)
    program = program.replace("pass", "orx.GetMemberCount([1])")
    with subprocess.Popen([sys.executable, "-c", program, pipe]) as writer:
        try:
            read = subprocess.run(["cat", pipe], capture_output=True, text=True, timeout=10)
            assert writer.wait(10) == 0
        finally:
            writer.kill()
    assert read.stdout == TRACE_OF_ONE_MEMBER


def test_a_trace_that_is_entered_and_dropped_ends():
    lines = []
    orx.trace(lines.append).__enter__()
    orx.GetMemberCount([1])
    assert lines == []


def test_an_exception_of_a_trace_callable_ends_the_call(lamp):
    calls = []

    def fail(line):
        calls.append(line)
        raise ZeroDivisionError(line)

    with orx.trace(fail):
        with pytest.raises(ZeroDivisionError, match="GetMemberCount"):
            orx.GetMemberCount([1])
        assert len(calls) == 1  # the other lines of the call are dropped
        with pytest.raises(ZeroDivisionError):
            orx.placements(lamp["NEXT_ASSEMBLY_USAGE_OCCURRENCE"])
    assert orx.GetMemberCount([1]) == 1


def test_a_trace_callable_may_call_functions_and_delete_models():
    model = orx.read(EXAMPLES / "assembly.stp")
    link = model[202]
    seen = []

    def look(line):
        nonlocal model
        model = None
        seen.append(orx.GetMemberCount([1, 2]))

    with orx.trace(look):
        assert orx.GetAbsPlacement(link) == [1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0]
    assert set(seen) == {2}


def test_a_trace_callable_cannot_change_what_a_function_walks_over(database):
    refused = []

    def change(line):
        for work in (
            lambda: database.create("cdma_id"),
            lambda: setattr(database["part_object"][0], "S_PART_NUMBER", "x"),
            lambda: orx.BuildDatedEff("12312099235959", database),
            orx.RemoveValueVersion,
        ):
            with pytest.raises(orx.Error, match="while a callable takes a line of the trace"):
                work()
        refused.append(line)

    count = len(database)
    with orx.trace(change):
        assert orx.IsVersion(database["part_object"][0], 1) is not False
    assert refused and len(database) == count
    database.create("cdma_id")


def test_results_are_equal_with_and_without_a_trace(lamp, database):
    def results():
        return [
            [orx.GetAbsPlacement(link) for link in lamp["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]],
            [orx.ConcatPartAtb(part) for part in database["part_object"]],
            [orx.IsAnAssembly(part) for part in database["part_object"]],
        ]

    expected = results()
    with orx.trace(lambda line: None):
        assert results() == expected


# ---- The same results as orx

ORX = os.environ.get("ORX_PROGRAM")


def as_text(value, models):
    """A value as `orx call` prints it."""
    if value is None:
        return "$"
    if isinstance(value, bool):
        return ".T." if value else ".F."
    if value is orx.UNKNOWN:
        return ".U."
    if isinstance(value, int):
        return str(value)
    if isinstance(value, float):
        if not math.isfinite(value):
            return str(value)
        mantissa, _, exponent = repr(value).removesuffix(".0").partition("e")
        mantissa += "" if "." in mantissa else "."
        return mantissa + (f"E{int(exponent):+03d}" if exponent else "")
    if isinstance(value, str):
        text = value.replace("\\", "\\\\").replace("'", "''")
        return "'" + "".join(c if " " <= c <= "~" else f"\\X\\{ord(c):02X}" for c in text) + "'"
    if isinstance(value, orx.Enum):
        return f".{value.name}."
    if isinstance(value, orx.Binary):
        return f'"{value.digits}"'
    if isinstance(value, orx.Typed):
        return as_text(value.value, models)
    if isinstance(value, orx.Instance):
        name = models[value.model]
        return f"{name}#{value.number}"
    return "(" + ",".join(as_text(member, models) for member in value) + ")"


TYPES = {
    "part": ["part_object"],
    "model": ["model_object"],
    "document": ["document_object"],
    "effectivity": ["range_effectivity", "date_effectivity", "option_effectivity"],
    "item": ["configuration_item"],
    "root": ["part_object"],
    "leaf": ["part_object"],
}
TEXTS = ["S0002abI00017", "", "plate.model", "x.KORPART", "12312099235959", "_ORX_S0002ab", "A", "1 blank"]


def cases(lamp, database):
    """Arguments of each function: values that it reads, and unset ones."""
    from_model = {
        parameter: [None, *(instance for name in names for instance in database[name])][:4]
        for parameter, names in TYPES.items()
    }
    anything = [None, *list(lamp)[::9]]
    for name in names_of_the_table():
        if name in ("GetUniqId", "IsVersion", "IsNewer", "BuildDatedEff", "GetStartDate", "GetEndDate"):
            continue  # differ from call to call, or change the model or what later calls see
        parameters = list(inspect.signature(getattr(orx, name)).parameters)
        kinds = KINDS[name]
        choices = []
        for parameter, kind in zip(parameters, kinds, strict=True):
            if kind == "Instance":
                choices.append(from_model.get(parameter, anything))
            elif kind == "String":
                choices.append([None, "ID", *TEXTS])
            elif kind == "Integer":
                choices.append([None, 0, 1, 2])
            elif kind == "Real":
                choices.append([None, 0.0, -1.5, 1e300, 7])
            elif kind in ("Aggregate", "RealList"):
                choices.append([[], [1.0, 2.5], [0.0, 0.0, 1.0]])
            else:
                choices.append([None, "12", 3, True, 0.5, *anything[1:4]])
        rows = max(map(len, choices), default=1)
        for row in range(rows):
            yield name, [values[(row + i) % len(values)] for i, values in enumerate(choices)]


def kinds_of_the_table():
    text = (SOURCES / "DatabaseAccess/ORXExUtilities.m/ORXExportTable.h").read_text()
    rows = re.findall(r'Export\{"(\w+)",\s*\{([^}]*)\}', text)
    return {name: re.findall(r"\w+", kinds) for name, kinds in rows}


KINDS = kinds_of_the_table()


@pytest.mark.skipif(ORX is None, reason="ORX_PROGRAM does not name the program")
def test_results_are_those_of_orx(lamp, database):
    models = {lamp: "", database: "@database"}
    calls, results = [], []
    for name, arguments in cases(lamp, database):
        calls.append(f"{name}({', '.join(as_text(value, models) for value in arguments)})")
        results.append(as_text(getattr(orx, name)(*arguments), models))
    assert len({call.split("(")[0] for call in calls}) == 67
    assert len(set(results)) > 50
    files = [EXAMPLES / "assembly.stp", EXAMPLES / "database.stp"]
    options = [option for file in files for option in ("-m", str(file))]
    run = subprocess.run(
        [ORX, "run", *options, "-"],
        input="\n".join(calls) + "\n",
        capture_output=True,
        text=True,
        timeout=60,
    )
    printed = run.stdout.splitlines()
    assert run.returncode == 0, run.stderr
    wrong = [
        (call, found, expected)
        for call, found, expected in zip(calls, results, printed, strict=True)
        if found != expected
    ]
    assert wrong == []


@pytest.mark.skipif(ORX is None, reason="ORX_PROGRAM does not name the program")
def test_versions_in_one_order_are_those_of_orx(database):
    parts = list(database["part_object"])
    calls = ["RemoveValueVersion()"]
    values = [orx.RemoveValueVersion()]
    for flag in (1, 0):
        for part in parts:
            calls.append(f"IsVersion(#{part.number}, {flag})")
            values.append(orx.IsVersion(part, flag))
    for part in parts:
        for other in parts[:3]:
            calls.append(f"IsNewer(#{part.number}, #{other.number})")
            values.append(orx.IsNewer(part, other))
    results = [as_text(value, {database: ""}) for value in values]
    run = subprocess.run(
        [ORX, "call", "-m", str(EXAMPLES / "database.stp"), *calls],
        capture_output=True,
        text=True,
        timeout=60,
    )
    assert run.returncode == 0, run.stderr
    assert run.stdout.splitlines() == results


@pytest.mark.skipif(ORX is None, reason="ORX_PROGRAM does not name the program")
def test_dates_are_built_as_orx_builds_them(tmp_path):
    model = orx.new("AUTOMOTIVE_DESIGN")
    orx.BuildDatedEff("12312099235959", model)
    model.write(tmp_path / "python.stp")
    subprocess.run(
        [ORX, "call", "-n", "step=AUTOMOTIVE_DESIGN", "BuildDatedEff('12312099235959', @step)",
         "-o", f"step={tmp_path / 'orx.stp'}"],
        check=True,
        capture_output=True,
    )
    instances = [
        re.findall(r"^#.*", (tmp_path / name).read_text(), re.MULTILINE)
        for name in ("python.stp", "orx.stp")
    ]
    assert len(instances[0]) == 4 and instances[0] == instances[1]
