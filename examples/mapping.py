"""Shared by export and import: the strings with the data that do not fit into STEP, and the protocol of
a run. The mapping itself is in examples/export.py and examples/import.py.

A database instance becomes STEP instances, which the functions under "Reading STEP" read back. If the
database contains something else, or something that does not fit into STEP, the export adds a remainder
to the instance's string: three or more fields of an encoded key,

    S  the entity type in the database
    I  the instance's number there, by which other remainders refer to it
    I  how many fields follow
    S  a JSON object: {"S_CHG_NUM": ["ORX", ""]}, for each such attribute the value in STEP and the
       value in the database; split into several fields if it is too long for one

The import restores the database's value if the value in STEP has not changed. A part renamed or moved
by another program stays renamed and moved.
"""

import contextlib
import gc
import json
import sys
import warnings
from collections import Counter

import orxexutilities as orx

LONGEST_FIELD = 9999
NO_FIELD = "EMPTY VALUE"
RECORD = "database record"  # the kind of a document that carries a database instance

# ---- Values as JSON


def to_json(value, number_of):
    """A value of an attribute as a JSON text; `number_of` returns the number of an instance."""

    def plain(value):
        match value:
            case orx.Instance():
                return {"#": number_of(value)}
            case orx.Enum():
                return {"enumeration": value.name}
            case orx.Binary():
                return {"binary": value.digits}
            case orx.Typed():
                return {"type": value.type, "value": plain(value.value)}
            case list() | tuple():
                return [plain(member) for member in value]
        return {"logical": "UNKNOWN"} if value is orx.UNKNOWN else value

    return json.dumps(plain(value))


def from_json(text, instance_of):
    """The value of a JSON text. `instance_of` returns the instance with a number; if it returns None, a
    list omits the member."""
    return from_plain(json.loads(text), instance_of)


def from_plain(value, instance_of):
    match value:
        case {"#": number}:
            return instance_of(number)
        case {"enumeration": name}:
            return orx.Enum(name)
        case {"binary": digits}:
            return orx.Binary(digits)
        case {"type": name, "value": inner}:
            return orx.Typed(name, from_plain(inner, instance_of))
        case {"logical": _}:
            return orx.UNKNOWN
        case list():
            members = [from_plain(member, instance_of) for member in value]
            return [m for m, v in zip(members, value) if m is not None or v is None]
    return value


# ---- Remainders


def text_field(text):
    return f"S{len(text):04d}{text}"


def integer_field(number):
    return f"I{len(str(number)):04d}{number}"


def attributes_of(instance):
    """The names of the attributes of an instance."""
    return list((Counter(dir(instance)) - Counter(dir(orx.Instance))).keys())


def label(instance):
    """The name of an instance for users."""
    for name in ("S_PART_NUMBER", "id", "S_NAME", "Coid"):
        try:
            text = instance[name]
        except AttributeError:
            continue
        if isinstance(text, str) and text:
            return text if len(text) <= 40 else text[:39] + "…"
    return f"#{instance.number}"


def lists_of_files(names):
    """The attributes of a part that list files: models, docs1, docs2, ... without gaps."""
    lists = ["models"]
    while f"docs{len(lists)}" in names:
        lists.append(f"docs{len(lists)}")
    return lists


class Remainder:
    """The values of the database that differ from those in STEP."""

    def __init__(self, entity, number, differences):
        self.entity = entity
        self.number = number
        self.differences = differences  # attribute: (value in STEP, value in the database)

    @classmethod
    def of(cls, instance, stated, names):
        """The remainder of a database instance; `stated` are the values in STEP by attribute."""

        def number(other):
            return other.number

        differences = {}
        for name in names:
            has, states = instance[name], stated.get(name)
            if has is states or (type(has) is type(states) is str and has == states):
                continue
            has, states = to_json(has, number), to_json(states, number)
            if has != states:
                differences[name] = (states, has)
        return cls(instance.entity, instance.number, differences)

    def key(self):
        pairs = [f"{json.dumps(n)}: [{s}, {h}]" for n, (s, h) in self.differences.items()]
        text = "{" + ", ".join(pairs) + "}"
        parts = [text[i : i + LONGEST_FIELD] for i in range(0, len(text), LONGEST_FIELD)]
        fields = [text_field(self.entity), integer_field(self.number), integer_field(len(parts))]
        return "".join(fields + [text_field(part) for part in parts])

    @classmethod
    def read(cls, key, place=1):
        """The remainder that begins at a field of a key; None if there is none."""
        if not key or not orx.IsEncodedKey(key):
            return None
        entity, number, count = (orx.DecodeKey(key, place + i) for i in range(3))
        if type(entity) is not str or type(number) is not int or type(count) is not int:
            return None
        texts = [orx.DecodeKey(key, place + 3 + i) for i in range(count)]
        try:
            pairs = json.loads("".join(texts))
            differences = {n: (json.dumps(s), json.dumps(h)) for n, (s, h) in pairs.items()}
        except (TypeError, ValueError, AttributeError):
            return None
        return cls(entity, number, differences)


# ---- Reading STEP
#
# Each function returns the attributes of a database instance as read from its STEP instances, from
# their strings and structures. The import fills the database with them; the export compares them to
# determine the remainder. Both add the references.

PART_FIELDS = 4  # those of ConcatPartAtb, and of ConcatModelAtb
MODEL_FIELDS = 4
IDENTITY = ("Caenv", "Catab", "Coid", "Compid")


def part_states(key, definition):
    """A part: the key is in the description of its formation."""
    return {
        "S_PART_NUMBER": orx.DecodeKey(key, 1),
        "S_CHG_NUM": orx.DecodeKey(key, 2),
        "C_VERSION": orx.DecodeKey(key, 3),
        "S_TYPE": orx.DecodeKey(key, 4),
        "S_DESC": definition.DESCRIPTION if definition else None,
    }


def link_states(occurrence, placement):
    """A link: its occurrence, and the place according to GetAbsPlacement."""
    component = occurrence.RELATED_PRODUCT_DEFINITION
    name = occurrence.NAME
    own_names = ("", occurrence.ID, component.DESCRIPTION, component.FORMATION.OF_PRODUCT.NAME)
    stated = {"id": occurrence.ID, "exchanged": None if name in own_names else name}
    if placement is not None:
        x_axis, z_axis, origin = placement[0:3], placement[6:9], placement[9:12]
        stated |= {"origin": origin, "axis": z_axis, "ref_direction": x_axis}
    return stated


# ---- Placements


def attribute(instance, name):
    """An attribute of an instance; None if there is no instance, or no such attribute."""
    return getattr(instance, name, None) if isinstance(instance, orx.Instance) else None


def is_kind(instance, entity):
    return isinstance(instance, orx.Instance) and entity in instance.entity.split("+")


def shapes_of(occurrence):
    return occurrence.users("PRODUCT_DEFINITION_SHAPE.DEFINITION")


def context_of(occurrence):
    """The context-dependent shape representation with the place of an occurrence."""
    for shape in shapes_of(occurrence):
        name = "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION.REPRESENTED_PRODUCT_RELATION"
        for context in shape.users(name):
            return context
    return None


def placement_of(occurrence):
    """The place of an occurrence in its parent, in millimetres: the columns of a rotation, then a
    translation. None if there is none.

    GetAbsPlacement returns the difference of two origins. If the component is not placed by its own
    origin, the rotation moves that, too.
    """
    context = context_of(occurrence)
    if context is None:
        return None
    placement = orx.GetAbsPlacement(occurrence)
    relation = context.REPRESENTATION_RELATION
    scale = max(millimetres(attribute(relation, name)) for name in ("REP_1", "REP_2"))
    own = component_origin(operator_of(occurrence), placement[9:])
    return about_own_zero(placement, own, scale)


def mapped_placement(item):
    """The place of a mapped item, as placement_of; None if its target is not an axis placement."""
    origin, target = attribute(item.MAPPING_SOURCE, "MAPPING_ORIGIN"), item.MAPPING_TARGET
    if not all(is_kind(axes, "AXIS2_PLACEMENT_3D") for axes in (origin, target)):
        return None
    placement = []
    orx.ComputeABSPlacement(origin, target, placement)
    mapped = attribute(item.MAPPING_SOURCE, "MAPPED_REPRESENTATION")
    return about_own_zero(placement, coordinates(origin), millimetres(mapped))


def about_own_zero(placement, own, scale):
    """Converts a placement of the point `own` of a component to one of its zero, in millimetres."""
    placement = [value + 0.0 for value in placement]  # no negative zeros
    for axis in range(3) if any(own) else ():
        turned = sum(placement[axis + 3 * column] * own[column] for column in range(3))
        placement[9 + axis] += own[axis] - turned
    if scale != 1.0:
        placement[9:] = [value * scale for value in placement[9:]]
    return placement


def operator_of(occurrence):
    """The transformation that places an occurrence."""
    relation = attribute(context_of(occurrence), "REPRESENTATION_RELATION")
    return attribute(relation, "TRANSFORMATION_OPERATOR")


def shapes_of_part(definition):
    """The representations of the shape of a part."""
    return [
        shape.USED_REPRESENTATION
        for property in definition.users("PRODUCT_DEFINITION_SHAPE.DEFINITION")
        for shape in property.users("SHAPE_DEFINITION_REPRESENTATION.DEFINITION")
        if shape.USED_REPRESENTATION is not None
    ]


NO_SHIFT = [0.0, 0.0, 0.0]


def component_origin(operator, shift):
    """The location of the component's placement in a transformation: that of its two items from which
    the shift leads to the other."""
    one, other = (coordinates(attribute(operator, f"TRANSFORM_ITEM_{i}")) for i in (1, 2))
    if [b - a for a, b in zip(one, other)] == shift:
        return one
    if [a - b for a, b in zip(one, other)] == shift:
        return other
    return NO_SHIFT


def coordinates(placement):
    values = attribute(attribute(placement, "LOCATION"), "COORDINATES") or []
    return [*values, *NO_SHIFT][:3]


SI_PREFIXES = {
    "EXA": 18, "PETA": 15, "TERA": 12, "GIGA": 9, "MEGA": 6, "KILO": 3, "HECTO": 2, "DECA": 1,
    "DECI": -1, "CENTI": -2, "MILLI": -3, "MICRO": -6, "NANO": -9, "PICO": -12, "FEMTO": -15,
    "ATTO": -18,
}  # fmt: skip


def millimetres(representation):
    """The length unit of a representation in millimetres; 1 if there is none."""
    for unit in attribute(attribute(representation, "CONTEXT_OF_ITEMS"), "UNITS") or []:
        if is_kind(unit, "LENGTH_UNIT"):
            return length_of(unit)
    return 1.0


def length_of(unit):
    if is_kind(unit, "SI_UNIT"):
        prefix = attribute(unit, "PREFIX")
        power = 3 + (SI_PREFIXES[prefix.name] if prefix else 0)
        return float(10**power) if power >= 0 else 1 / 10**-power
    factor = attribute(unit, "CONVERSION_FACTOR")
    value = attribute(factor, "VALUE_COMPONENT")
    return 1.0 if value is None else float(value) * length_of(attribute(factor, "UNIT_COMPONENT"))


def is_default_placement(occurrence):
    """Whether GetAbsPlacement returns its default because it cannot follow the structure in STEP."""
    if orx.GetAbsPlacement(occurrence) != [1.0, 0, 0, 0, 1.0, 0, 0, 0, 1.0, 0, 0, 0]:
        return False
    operator = operator_of(occurrence)
    items = [attribute(operator, f"TRANSFORM_ITEM_{i}") for i in (1, 2)]
    if items[0] is not None and axes(items[0]) == axes(items[1]):
        return False
    lines = []
    with orx.trace(lines.append):
        orx.GetAbsPlacement(occurrence)
    return any("Use of default placement" in line for line in lines)


def axes(placement):
    directions = (attribute(placement, name) for name in ("AXIS", "REF_DIRECTION"))
    return coordinates(placement), [attribute(d, "DIRECTION_RATIOS") for d in directions]


def scale_of(occurrence):
    """The scale of a cartesian transformation operator, which GetAbsPlacement ignores."""
    scale = attribute(operator_of(occurrence), "SCALE")
    return scale if scale not in (None, 1.0) else None


# ---- Reading models, documents, configurations and effectivities


def model_states(file):
    """A model: a file, whose name is the model's key and whose description is its identifier."""
    return {
        "S_NAME": orx.ORX_GetModelName(file.ID, 0),
        "S_TYPE_REP": orx.DecodeKey(file.NAME, 1),
        "S_NEXT": orx.DecodeKey(file.NAME, 2),
        "C_REVISION": orx.DecodeKey(file.NAME, 3),
        "C_NICKNAME": orx.DecodeKey(file.NAME, 4),
        "C_SOFT_VER": orx.ORX_GetModelId_Imp3(file.DESCRIPTION),
    }


# The fields of a document's key depend on its table.
DOCUMENT_FIELDS = {
    "DOCUMENT": ("S_TYPE_REP", "S_NAME", "NOTES", "S_FORMAT"),
    "DOCCAD": ("S_TYPE_REP", "S_NAME", "NOTES"),
}
OTHER_DOCUMENT_FIELDS = ("S_TYPE_REP", "NOTES")


def document_fields(entity):
    table = entity.partition("_")[2] or entity
    return DOCUMENT_FIELDS.get(table.upper(), OTHER_DOCUMENT_FIELDS)


def document_states(file, entity):
    """A document: a file, whose description is the document's key."""
    stated = {"S_NAME": orx.ORX_GetDocName(file.ID, 0)}
    for place, name in enumerate(document_fields(entity), start=1):
        stated[name] = orx.DecodeNARVOV5(file.DESCRIPTION, place)
    return stated


def item_states(item):
    """A configuration item: its description is its identifier."""
    return {"id": orx.DecodeKey(item.DESCRIPTION, 2), "name": item.NAME}


def handler_states(concept):
    """A configuration handler: a product concept."""
    return {"id": concept.ID}


EFFECTIVITY_KINDS = {1: "range", 2: "date", 3: "option_range", 4: "option_date"}


def effectivity_kind(key):
    """The kind of effectivity of a key; None if it is not one of the four."""
    return next((kind for mode, kind in EFFECTIVITY_KINDS.items() if orx.ExtractEFFType(key, mode)),
                None)  # fmt: skip


def effectivity_states(effectivity, prefix=""):
    """An effectivity: its identifier is its key. The attributes of an option's begin with a prefix."""
    stated = {}
    if effectivity.entity.find("SERIAL_NUMBERED") >= 0:
        stated[prefix + "start_range"] = orx.GetValue(effectivity.EFFECTIVITY_START_ID)
        end = effectivity.EFFECTIVITY_END_ID
        stated[prefix + "end_range"] = None if end is None else orx.GetValue(end)
    if effectivity.entity.find("DATED") >= 0:
        stated[prefix + "start_date"] = orx.GetDate(effectivity.EFFECTIVITY_START_DATE)
        end = effectivity.EFFECTIVITY_END_DATE
        stated[prefix + "end_date"] = None if end is None else orx.GetDate(end)
    return stated


def keyed_effectivity_states(effectivity):
    key = effectivity.ID
    kind = effectivity_kind(key)
    if kind in ("range", "date"):
        return {"id": orx.DecodeEFF(key, 1)} | effectivity_states(effectivity)
    return {
        "id": orx.DecodeEFF(key, 1),
        "option_type": orx.DecodeKey(key, 1),
        "option_id": orx.DecodeEFF(key, 2),
    } | effectivity_states(effectivity, "option_")


def effectivity_remainder(key):
    """The remainder that follows the two or three fields of an effectivity's key."""
    return next(filter(None, (Remainder.read(key, place) for place in (3, 4))), None)


def identity_states(key):
    """A part's database identity: four fields."""
    return {name: orx.DecodeKey(key, place) for place, name in enumerate(IDENTITY, start=1)}


# ---- The protocol


class Protocol:
    """What was read, written, replaced, stored in strings or left out, and why."""

    TITLES = {
        "replaced": "Replaced",
        "carried": "Carried in strings, for want of a place",
        "left out": "Left out",
        "remark": "Remarks",
    }

    def __init__(self):
        self.source = self.target = ""
        self.read = Counter()
        self.written = Counter()
        self.notes = {kind: {} for kind in self.TITLES}

    def note(self, kind, what, why, which=None, count=1):
        """Adds a case; equal cases are counted, and all of them are kept."""
        cases = self.notes[kind].setdefault((what, why), {"count": 0, "cases": []})
        cases["count"] += count
        if which is not None:
            cases["cases"].append(str(which))

    def count(self, kind):
        return sum(cases["count"] for cases in self.notes[kind].values())

    def count_models(self, source, target):
        self.read.update(instance.entity for instance in source)
        self.written.update(instance.entity for instance in target)

    def as_json(self):
        notes = {
            kind: [{"what": what, "why": why} | cases for (what, why), cases in found.items()]
            for kind, found in self.notes.items()
        }
        return {
            "source": self.source,
            "target": self.target,
            "summary": self.summary(),
            "read": dict(sorted(self.read.items())),
            "written": dict(sorted(self.written.items())),
        } | notes

    def save(self, path):
        with open(path, "w", encoding="utf-8") as file:
            json.dump(self.as_json(), file, indent=1, ensure_ascii=False)
            file.write("\n")

    def summary(self):
        """The numbers of parts, links and other instances of the database, in one line."""
        counted = self.read if "part_object" in self.read else self.written
        kinds = {
            "parts": ("part_object",),
            "links": ("part_link",),
            "models": ("model_object",),
            "documents": ("CDM_DOCUMENT", "CDM_DOCCAD", "CDM_DOCNOTE"),
            "configurations": ("configuration_item", "configuration_handler"),
            "effectivities": ("range_effectivity", "date_effectivity", "option_effectivity"),
            "identities": ("cdma_id",),
            "histories": ("cdma_revision_history",),
        }
        numbers = {kind: sum(counted[e] for e in entities) for kind, entities in kinds.items()}
        told = [f"{number:,} {kind}" for kind, number in numbers.items() if number]
        return ", ".join(told) or "nothing of a database"

    def brief(self):
        """Only the places and the sums."""
        lines = [f"{self.source} → {self.target}"]
        lines += [f"  {title}: {self.count(kind):,}" for kind, title in self.TITLES.items()]
        lines += [f"  {what}: {why}" for what, why in self.notes["remark"]]
        return "\n".join(lines)

    def __str__(self):
        lines = [f"{self.source} → {self.target}", self.summary(), ""]
        lines += counts_in_columns("Read", self.read) + counts_in_columns("Written", self.written)
        for kind, title in self.TITLES.items():
            lines += notes_in_columns(title, self.notes[kind])
        if not self.notes["left out"]:
            lines += ["Left out: nothing", ""]
        return "\n".join(lines)


MOST_ROWS = 24  # in the text form; the JSON form has all


def shortened(text, width):
    return text if len(text) <= width else text[: width - 1] + "…"


def counts_in_columns(title, counted):
    """The counts of entity types, the most frequent first."""
    rows = counted.most_common()
    lines = [f"{title:<50}{'instances':>10}"]
    lines += [f"  {shortened(name, 46):<48}{count:>10,}" for name, count in rows[:MOST_ROWS]]
    if rest := rows[MOST_ROWS:]:
        name = f"and {len(rest)} other types"
        lines.append(f"  {name:<48}{sum(count for _, count in rest):>10,}")
    return lines + [""]


def notes_in_columns(title, notes):
    """A line for each kind of note: what, how often, why, and the first cases."""
    if not notes:
        return []
    rows = sorted(notes.items(), key=lambda row: -row[1]["count"])
    lines = [f"{title:<50}{'cases':>10}  why"]
    for (what, why), cases in rows[:MOST_ROWS]:
        shown = ", ".join(shortened(case, 30) for case in cases["cases"][:3])
        more = ", …" if shown and cases["count"] > 3 else ""
        which = f" ({shown}{more})" if shown else ""
        lines.append(f"  {shortened(what, 46):<48}{cases['count']:>10,}  {why}{which}")
    if rest := rows[MOST_ROWS:]:
        name = f"and {len(rest)} other kinds"
        lines.append(f"  {name:<48}{sum(cases['count'] for _, cases in rest):>10,}")
    return lines + [""]


@contextlib.contextmanager
def no_collections():
    """Disables the search for unreferenced cycles of objects during a run: there are none, and the
    search takes longer the more objects there are."""
    enabled = gc.isenabled()
    gc.disable()
    try:
        yield
    finally:
        if enabled:
            gc.enable()


# ---- The command line


def add_options(options):
    options.add_argument("--protocol", metavar="FILE", help="write the protocol there, as JSON")
    options.add_argument("--brief", action="store_true", help="print the sums of the protocol alone")
    options.add_argument("--quiet", action="store_true", help="print no protocol")
    options.add_argument("--as", dest="as_schema", metavar="SCHEMA",
                         help="read with this schema, whatever the data set names")  # fmt: skip
    options.add_argument("-s", "--express", metavar="FILE", action="append", default=[],
                         help="an EXPRESS schema of the data set's own (again for more)")  # fmt: skip


def journey(arguments, source, mapped):
    """Reads a data set, maps it, writes the result and reports the protocol."""
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always", orx.DataWarning)
        read = orx.read(source, schemas=arguments.express, schema=arguments.as_schema)
    target, protocol = mapped(read)
    for warning in caught:
        protocol.note("remark", "reading", str(warning.message))
    protocol.source = f"{source} ({read.schema})"
    protocol.target = f"{arguments.out} ({target.schema})"
    target.write(arguments.out)
    if arguments.protocol:
        protocol.save(arguments.protocol)
    if not arguments.quiet:
        print(protocol.brief() if arguments.brief else protocol)
    return target, protocol


@contextlib.contextmanager
def errors_told(program):
    """Ends the program with status 2 and a message if a data set cannot be read or written."""
    try:
        yield
    except (orx.Error, OSError) as error:
        for message in getattr(error, "messages", (str(error),)):
            print(f"{program}: {message}", file=sys.stderr)
        sys.exit(2)
