"""The values that Python has no type for."""

import copy
import pickle

import orxexutilities as orx
import pytest


def test_values_are_equal_by_what_they_hold():
    assert orx.Enum("milli") == orx.Enum("MILLI") != orx.Enum("MICRO")
    assert orx.Enum("A") != "A" and orx.Enum("A") != orx.Binary("0A")
    assert orx.Typed("length", 2.5) == orx.Typed("LENGTH", 2.5) != orx.Typed("AREA", 2.5)
    assert len({orx.Enum("A"), orx.Enum("a"), orx.Binary("0a"), orx.Binary("0A")}) == 2
    assert float(orx.Typed("LENGTH", 2.5)) == 2.5 and int(orx.Typed("COUNT", 3)) == 3


def test_values_show_how_they_are_made():
    for value in (orx.Enum("MILLI"), orx.Binary("0A"), orx.Typed("LENGTH_MEASURE", 2.5)):
        assert eval(repr(value), vars(orx)) == value
        assert pickle.loads(pickle.dumps(value)) == value == copy.deepcopy(value)
    assert str(orx.Enum("MILLI")) == "MILLI" and str(orx.Typed("LENGTH", 2.5)) == "2.5"


def test_values_cannot_be_changed():
    with pytest.raises(AttributeError):
        orx.Enum("A").name = "B"


@pytest.mark.parametrize(
    "make",
    [
        lambda: orx.Enum(""),
        lambda: orx.Enum("a b"),
        lambda: orx.Enum("1A"),
        lambda: orx.Binary(""),
        lambda: orx.Binary("4F"),
        lambda: orx.Binary("0G"),
        lambda: orx.Typed("", 1),
    ],
)
def test_what_is_no_value_is_refused(make):
    with pytest.raises(ValueError, match="expected, found"):
        make()


def test_values_of_another_type_are_refused():
    for make in (lambda: orx.Enum(5), lambda: orx.Binary(b"0A"), lambda: orx.Typed(None, 1)):
        with pytest.raises(TypeError, match="a str expected"):
            make()


def test_unknown_is_one_and_counts_as_false():
    assert not orx.UNKNOWN and orx.UNKNOWN is not False
    assert pickle.loads(pickle.dumps(orx.UNKNOWN)) is orx.UNKNOWN
    assert copy.deepcopy(orx.UNKNOWN) is orx.UNKNOWN
