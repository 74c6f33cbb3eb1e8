"""Columns, tables and the type stubs."""

import importlib.util
import subprocess
import sys
import textwrap
from pathlib import Path

import orxexutilities as orx
import pytest


def test_a_column_of_numbers_is_an_array(triangles):
    numpy = pytest.importorskip("numpy")
    for i in range(4):
        triangles.create("corner", x=i / 2, number=i)
    x = triangles.column("corner", "X")
    assert x.dtype == numpy.float64 and x.tolist() == [0.0, 0.5, 1.0, 1.5]
    number = triangles.column("CORNER", "number")
    assert number.dtype == numpy.int64 and number.tolist() == [0, 1, 2, 3]
    triangles.create("corner")
    assert numpy.isnan(triangles.column("corner", "x")[4])
    assert triangles.column("corner", "number") == [0, 1, 2, 3, None]
    assert triangles.column("triangle", "size") == []


def test_a_column_of_anything_else_is_a_list(lamp):
    assert lamp.column("PRODUCT", "NAME") == [product.NAME for product in lamp["PRODUCT"]]
    assert lamp.column("PRODUCT", "FRAME_OF_REFERENCE") == [
        product.FRAME_OF_REFERENCE for product in lamp["PRODUCT"]
    ]
    links = lamp["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]
    assert lamp.column(links.entity, "related_product_definition") == [
        link.RELATED_PRODUCT_DEFINITION for link in links
    ]
    with pytest.raises(AttributeError, match="did you mean 'NAME'"):
        lamp.column("PRODUCT", "NAMES")
    with pytest.raises(orx.NotFound):
        lamp.column("PRODUCTS", "NAME")


def test_a_column_reads_instances_of_subtypes_too(triangles):
    corner = triangles.create("corner", x=1, number=1)
    triangles.create("triangle", corners=[corner] * 3, tint="red")
    triangles.create("named_triangle", corners=[corner] * 3, tint="green", id="n")
    assert triangles.column("triangle", "tint") == [orx.Enum("RED"), orx.Enum("GREEN")]


def test_a_table_has_a_row_for_each_instance(lamp):
    pytest.importorskip("pandas")
    table = lamp.table("product")
    assert list(table.columns) == ["ID", "NAME", "DESCRIPTION", "FRAME_OF_REFERENCE"]
    assert table.index.name == "number"
    assert table.index.tolist() == [product.number for product in lamp["PRODUCT"]]
    assert table.loc[120, "NAME"] == "Base"
    assert len(lamp.table("DOCUMENT")) == 0


PROGRAM = """
import orxexutilities as orx

model: orx.Model = orx.read("assembly.stp", schemas=["a.exp"], lenient=True)
count: int = len(model)
links: orx.Extent = model["NEXT_ASSEMBLY_USAGE_OCCURRENCE"]
link: orx.Instance = model[202]
names: list[str] = [each.entity for each in links if each in model]
link.ID = "x"
link["ID"] = orx.Enum("MILLI")
text: str = orx.ORXTrunc(link.ID, 4)
truth: bool = orx.IsFree(link, attribute="ID")
maybe: orx.Instance | None = orx.BuildDatedEff("", model)
reals: list[float] = orx.ComputeABSPlacement(link, link, [])
users: list[orx.Instance] = link.users("PRODUCT.NAME")
created: orx.Instance = model.create("PRODUCT", ID="p", NAME=None)
with orx.trace(print), orx.trace("file"):
    rows = model.table("PRODUCT")
try:
    model.write("x.stp")
except orx.Error as error:
    line: int | None = error.line
"""


@pytest.mark.skipif(importlib.util.find_spec("mypy") is None, reason="mypy is not installed")
def test_the_stubs_are_accepted_and_find_mistakes(tmp_path):
    def check(text):
        (tmp_path / "program.py").write_text(text)
        return subprocess.run(
            [sys.executable, "-m", "mypy", "--strict", "--no-error-summary",
             "--cache-dir", str(tmp_path / "cache"), "program.py"],
            cwd=tmp_path,
            env={"MYPYPATH": str(Path(orx.__file__).parents[1]), "PATH": "/usr/bin:/bin"},
            capture_output=True,
            text=True,
        ).stdout

    assert check(textwrap.dedent(PROGRAM)) == ""
    for mistake in ("orx.ORXTrunc(5, 4)", "orx.GetInst()", "orx.NoSuch", "links.append(link)"):
        assert "program.py" in check(PROGRAM + mistake + "\n"), mistake
