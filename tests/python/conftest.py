"""What the tests of the Python package share."""

import contextlib
import ctypes
import gc
import importlib
import sys
from pathlib import Path

import orxexutilities as orx
import pytest

SOURCES = Path(__file__).resolve().parents[2]
EXAMPLES = SOURCES / "examples"


@pytest.fixture
def lamp():
    """The shipped assembly."""
    return orx.read(EXAMPLES / "assembly.stp")


@pytest.fixture
def database():
    """The shipped database. What the functions remember of it is forgotten afterwards."""
    yield orx.read(EXAMPLES / "database.stp")
    orx.RemoveValueVersion()


@pytest.fixture(autouse=True)
def collect():
    """What a test leaves behind goes while it is its turn."""
    yield
    gc.collect()


# Under AddressSanitizer: leaks are looked for while the interpreter still holds what is its own. What
# the libraries of others lose when they are imported does not count.
SANITIZER = ctypes.CDLL(None)
LOOKS_FOR_LEAKS = hasattr(SANITIZER, "__lsan_do_recoverable_leak_check")
# The frames of what runs meanwhile. Otherwise only the stack of the interpreter refers to them, which the
# sanitizer does not know; a test that was skipped leaves some.
FRAMES = []


def pytest_sessionstart():
    if LOOKS_FOR_LEAKS:
        SANITIZER.__lsan_disable()
        for library in ("numpy", "pandas", "matplotlib.pyplot"):
            with contextlib.suppress(ImportError):
                importlib.import_module(library)
        SANITIZER.__lsan_enable()


def pytest_sessionfinish(session):
    if LOOKS_FOR_LEAKS:
        gc.collect()
        frame = sys._getframe()
        while frame is not None:
            FRAMES.append(frame)
            frame = frame.f_back
        if SANITIZER.__lsan_do_recoverable_leak_check():
            session.exitstatus = pytest.ExitCode.TESTS_FAILED


HEADER = """ISO-10303-21;
HEADER;
FILE_DESCRIPTION((''),'2;1');
FILE_NAME('','',(''),(''),'','','');
FILE_SCHEMA(('{schema}'));
ENDSEC;
DATA;
"""
TRAILER = "ENDSEC;\nEND-ISO-10303-21;\n"


@pytest.fixture
def read_text(tmp_path):
    """Reads the instances of a text, as an exchange file of a schema."""

    def read(instances, schema="AUTOMOTIVE_DESIGN", **options):
        file = tmp_path / "data.stp"
        file.write_text(HEADER.format(schema=schema) + instances + TRAILER, encoding="utf-8")
        return orx.read(file, **options)

    return read


TRIANGLE = """SCHEMA triangle;
TYPE colour = ENUMERATION OF (red, green); END_TYPE;
TYPE length = REAL; END_TYPE;
TYPE name = STRING; END_TYPE;
TYPE measure = SELECT (length, name, corner); END_TYPE;
ENTITY corner; x : REAL; number : INTEGER; label : OPTIONAL STRING; END_ENTITY;
ENTITY triangle; corners : LIST [3:3] OF corner; tint : OPTIONAL colour; closed : OPTIONAL BOOLEAN;
  sure : OPTIONAL LOGICAL; bits : OPTIONAL BINARY; size : OPTIONAL measure;
  counts : OPTIONAL LIST OF INTEGER; grid : OPTIONAL LIST OF LIST OF REAL; END_ENTITY;
ENTITY named_triangle SUBTYPE OF (triangle); id : STRING; END_ENTITY;
END_SCHEMA;
"""


@pytest.fixture
def triangle_schema(tmp_path):
    """A schema with values of every kind."""
    file = tmp_path / "triangle.exp"
    file.write_text(TRIANGLE)
    return file


@pytest.fixture
def triangles(triangle_schema):
    return orx.new("triangle", schemas=[triangle_schema])
