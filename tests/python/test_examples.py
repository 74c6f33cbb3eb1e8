"""The programs of examples/python."""

import importlib.util
import subprocess
import sys

import orxexutilities as orx
import pytest
from conftest import EXAMPLES

ASSEMBLY = EXAMPLES / "assembly.stp"


def load(name):
    specification = importlib.util.spec_from_file_location(name, EXAMPLES / "python" / f"{name}.py")
    module = importlib.util.module_from_spec(specification)
    specification.loader.exec_module(module)
    return module


def run(name, *arguments):
    return subprocess.run(
        [sys.executable, EXAMPLES / "python" / f"{name}.py", *arguments],
        capture_output=True,
        text=True,
        timeout=120,
    )


@pytest.fixture(autouse=True)
def folder_for_fonts(tmp_path, monkeypatch):
    monkeypatch.setenv("MPLCONFIGDIR", str(tmp_path))


def test_the_parts_list_counts_each_part_over_all_levels(tmp_path):
    pytest.importorskip("pandas")
    done = run("parts_list", ASSEMBLY, tmp_path / "parts.csv")
    assert done.returncode == 0, done.stderr
    assert (tmp_path / "parts.csv").read_text().splitlines() == [
        "part,name,quantity,assembly",
        "LA-1,Desk lamp,1,True",
        "LA-2,Arm with head,1,True",
        "LA-3,Base,1,False",
        "LA-4,Arm,1,False",
        "LA-5,Head,1,False",
        "LA-6,Screw,1,False",
    ]
    assert "Arm with head" in done.stdout


def test_the_parts_list_multiplies_quantities_of_levels():
    pytest.importorskip("pandas")
    model = orx.new("AUTOMOTIVE_DESIGN")

    def part(name):
        product = model.create("PRODUCT", ID=name, NAME=name)
        formation = model.create("PRODUCT_DEFINITION_FORMATION", OF_PRODUCT=product)
        return model.create("PRODUCT_DEFINITION", FORMATION=formation)

    car, axle, wheel = part("car"), part("axle"), part("wheel")
    for parent, component, count in [(car, axle, 2), (axle, wheel, 2), (car, wheel, 1)]:
        for _ in range(count):
            model.create(
                "NEXT_ASSEMBLY_USAGE_OCCURRENCE",
                RELATING_PRODUCT_DEFINITION=parent,
                RELATED_PRODUCT_DEFINITION=component,
            )
    table = load("parts_list").parts_list(model)
    assert dict(zip(table["part"], table["quantity"])) == {"axle": 2, "car": 1, "wheel": 5}


def test_absolute_placements_are_products_of_those_along_the_path(tmp_path):
    numpy = pytest.importorskip("numpy")
    pytest.importorskip("matplotlib")
    done = run("placements", ASSEMBLY, tmp_path / "lamp.png")
    assert done.returncode == 0, done.stderr
    assert (tmp_path / "lamp.png").read_bytes().startswith(b"\x89PNG")
    # The arm stands 25 above the base, turned by 90 degrees about z.
    model = orx.read(ASSEMBLY)
    places = dict(load("placements").absolute_placements(model))
    assert list(places) == ["base", "arm", "arm/tube", "arm/head", "screw"]
    arm = orx.GetAbsPlacement(model[212])
    assert arm == [0, 1, 0, -1, 0, 0, 0, 0, 1, 0, 0, 25]
    x, y, z = orx.GetAbsPlacement(model[242])[9:]
    assert numpy.allclose(places["arm/head"][:3, 3], [-y, x, z + 25])
    assert numpy.allclose(places["arm/head"][3], [0, 0, 0, 1])
