#!/usr/bin/python3
"""From STEP into the database:

    import.py STEP OUT [--protocol FILE]

reads what export.py has written back into a data set of schema "cdma", and any assembly of another
origin (AP203, AP214, AP242, PDM schema). Each function below maps one thing: what the database gets,
and where it is in STEP. Data without keys are read from their own attributes; the protocol
reports what does not fit into the database. Copy and change them.

The name of this file is a keyword of Python, so a program that maps models itself uses

    from importlib import import_module
    database, protocol = import_module("import").to_database(step)
"""

import argparse
import sys
from collections import Counter

import mapping
import orxexutilities as orx
from mapping import Protocol, Remainder

DATABASE_SCHEMA = "cdma"
MOST_COPIES = 10_000  # of one occurrence with a quantity
OPEN_DATE = "00000000000000"

# Entity types around products and shapes: either read together with these, or without a counterpart in
# the database.
FRAME = """
    APPLICATION_CONTEXT APPLICATION_PROTOCOL_DEFINITION APPLICATION_CONTEXT_ELEMENT REPRESENTATION_CONTEXT
    PRODUCT_CATEGORY PRODUCT_CATEGORY_RELATIONSHIP PRODUCT_CONCEPT PRODUCT_CONCEPT_CONTEXT
    NAMED_UNIT DIMENSIONAL_EXPONENTS MEASURE_WITH_UNIT
    CONFIGURATION_DESIGN DOCUMENT_TYPE DOCUMENT_REPRESENTATION_TYPE DOCUMENT_REFERENCE
    DOCUMENT_PRODUCT_ASSOCIATION OBJECT_ROLE ROLE_ASSOCIATION IDENTIFICATION_ROLE EXTERNAL_SOURCE
    CALENDAR_DATE DATE_AND_TIME LOCAL_TIME COORDINATED_UNIVERSAL_TIME_OFFSET
    PRODUCT_DEFINITION_SHAPE SHAPE_DEFINITION_REPRESENTATION
""".split()  # fmt: skip


def to_database(step, schemas=()):
    """Returns a database model with the contents of a model of a STEP schema, and the protocol."""
    with mapping.no_collections():
        return Import(step, schemas).run()


class Made:
    """An instance of the database to be created: its data in STEP, and the remainder."""

    def __init__(self, instance, stated, remainder):
        self.instance = instance
        self.stated = stated
        self.remainder = remainder


class Import:
    def __init__(self, step, schemas=()):
        self.step = step
        self.database = orx.new(DATABASE_SCHEMA, schemas=schemas)
        self.protocol = Protocol()
        self.made = []
        self.by_number = {}  # number at the time of the export: instance
        self.numbers = {}  # and the reverse
        self.used = set()  # the numbers of the STEP instances that were read

        # The products that are documents, and the external names of files.
        self.documents = {
            product
            for category in self.extent("PRODUCT_RELATED_PRODUCT_CATEGORY")
            if (category.NAME or "").lower() == "document"
            for product in category.PRODUCTS or []
        }
        self.external_names = {
            item: assignment
            for assignment in self.extent("APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT")
            for item in assignment.ITEMS or []
        }

        self.parts = {}  # PRODUCT_DEFINITION, its formation: the part
        self.mapped = {}  # PRODUCT_DEFINITION: the mapped items of its shape, by what they map
        self.links = {}  # assembly usage: the links, more than one if it has a quantity
        self.files = {}  # DOCUMENT: model or document
        self.handlers = {}  # PRODUCT_CONCEPT: handler
        self.effectivities = {}  # number at the time of the export: effectivity

    # ---- The import

    def run(self):
        for formation in self.extent("PRODUCT_DEFINITION_FORMATION"):
            self.part(formation)
        for usage in self.extent("ASSEMBLY_COMPONENT_USAGE"):
            self.link(usage)
        for document in self.extent("DOCUMENT"):
            self.document(document)
        self.references()
        for concept in self.extent("PRODUCT_CONCEPT"):
            self.handler(concept)
        for item in self.extent("CONFIGURATION_ITEM"):
            self.item(item)
        for effectivity in self.extent("EFFECTIVITY"):
            self.effectivity(effectivity)
        for assignment in self.extent("APPLIED_IDENTIFICATION_ASSIGNMENT"):
            self.identity(assignment)
        for relationship in self.extent("PRODUCT_DEFINITION_FORMATION_RELATIONSHIP"):
            self.sequence(relationship)
        for made in self.made:
            self.fill(made)
        self.what_is_left_out()
        self.protocol.count_models(self.step, self.database)
        return self.database, self.protocol

    # ---- Parts
    #
    # A part is a formation of a product, with its definitions. Its key is in the formation's
    # description; without a key the formation's own attributes are used.

    def part(self, formation):
        product = formation.OF_PRODUCT
        definitions = self.users(formation, "PRODUCT_DEFINITION.FORMATION")
        if product is None:
            self.left_out(formation, "it has no product")
            return
        if product in self.documents:
            made = self.document_of_product(formation, product)
        else:
            made = self.keyed_part(formation, product, definitions) or self.foreign_part(
                formation, product, definitions
            )
        if made:
            self.use(product, formation, *definitions)
            for step in (formation, *definitions):
                self.parts[step] = made

    def keyed_part(self, formation, product, definitions):
        # In the description of the product if each product has one part.
        key = next(
            (t for t in (formation.DESCRIPTION, product.DESCRIPTION) if t and orx.IsEncodedKey(t)),
            None,
        )
        if key is None:
            return None
        remainder = Remainder.read(key, mapping.PART_FIELDS + 1)
        stated = mapping.part_states(key, definitions[0] if definitions else None)
        if remainder is None:
            stated["S_DESC"] = product.NAME
        return self.make("part_object", stated, remainder)

    def foreign_part(self, formation, product, definitions):
        number = product.ID or product.NAME
        version = orx.ReadPartVersion(formation.ID or "")
        if not number:
            self.replaced("PRODUCT.ID", "it is empty: 'ORX'", f"#{product.number}")
        if version != formation.ID:
            self.replaced(
                "PRODUCT_DEFINITION_FORMATION.ID",
                f"the database takes one to three characters: '{version}'",
                f"{number} '{formation.ID or ''}'",
            )
        if len(definitions) > 1:
            self.protocol.note("remark", "PRODUCT_DEFINITION",
                               "several of one formation: one part", number)  # fmt: skip
        siblings = self.users(product, "PRODUCT_DEFINITION_FORMATION.OF_PRODUCT")
        is_assembly = any(
            self.users(d, "ASSEMBLY_COMPONENT_USAGE.RELATING_PRODUCT_DEFINITION") for d in definitions
        )
        for step, read in (
            (product, ("ID", "NAME", "FRAME_OF_REFERENCE")),
            (formation, ("ID", "OF_PRODUCT", "MAKE_OR_BUY")),
            *((d, ("ID", "FORMATION", "FRAME_OF_REFERENCE")) for d in definitions),
        ):
            self.other_attributes(step, read)
        return self.make(
            "part_object",
            {
                "S_PART_NUMBER": orx.ReadMandatory(number, "S_PART_NUMBER"),
                "S_CHG_NUM": version,
                "C_VERSION": siblings.index(formation) + 1,
                "S_TYPE": "ASSEMBLY" if is_assembly else "PART",
                "S_DESC": product.NAME,
            },
        )

    # ---- Links
    #
    # An occurrence of a component in an assembly. Its place comes from GetAbsPlacement, in
    # millimetres; if there is none, from the item by which the shape of the assembly maps that of the
    # component, the first such item for the first occurrence. A quantity becomes that many links.

    def link(self, usage):
        kinds = usage.entity.split("+")
        if not {"NEXT_ASSEMBLY_USAGE_OCCURRENCE", "QUANTIFIED_ASSEMBLY_COMPONENT_USAGE"} & {*kinds}:
            return
        parent = self.parts.get(usage.RELATING_PRODUCT_DEFINITION)
        component = self.parts.get(usage.RELATED_PRODUCT_DEFINITION)
        if parent is None or component is None:
            self.left_out(usage, "its parent or its component is no part")
            return
        remainders = (Remainder.read(shape.DESCRIPTION) for shape in mapping.shapes_of(usage))
        remainder = next(filter(None, remainders), None)
        placement = mapping.placement_of(usage) or self.mapped_placement(usage)
        stated = mapping.link_states(usage, placement)
        stated |= {"parent": parent.instance, "ref": component.instance}
        if remainder is None:
            self.foreign_link(usage, stated)
        links = [self.make("part_link", stated, remainder)]
        for copy in range(1, self.quantity(usage)):
            links.append(self.make("part_link", stated | {"id": f"{stated['id']}/{copy + 1}"}))
        self.links[usage] = [link for link in links if link]
        parent.stated.setdefault("KORASS", []).extend(link.instance for link in self.links[usage])
        self.use(usage)
        self.use_placement(usage)

    def foreign_link(self, usage, stated):
        stated["id"] = usage.ID or usage.NAME or str(usage.number)
        self.other_attributes(usage, ("ID", "NAME", "RELATING_PRODUCT_DEFINITION", "QUANTITY",
                                      "RELATED_PRODUCT_DEFINITION"))  # fmt: skip
        if "origin" not in stated:
            self.protocol.note("remark", "placement of an occurrence",
                               "STEP states none: it stays unset", stated["id"])  # fmt: skip
        elif mapping.context_of(usage) is None:
            self.protocol.note("remark", "placement of an occurrence", "from a mapped item",
                               stated["id"])  # fmt: skip
        elif mapping.is_default_placement(usage):
            self.replaced("placement of an occurrence",
                          "what STEP states cannot be understood: the parent's own place",
                          stated["id"])  # fmt: skip
        elif scale := mapping.scale_of(usage):
            self.left_out(usage, f"its scale, {scale:g}: a link has none")

    def mapped_placement(self, usage):
        assembly = usage.RELATING_PRODUCT_DEFINITION
        if assembly not in self.mapped:
            self.mapped[assembly] = {}
            for shape in mapping.shapes_of_part(assembly):
                for item in shape.ITEMS or []:
                    if mapping.is_kind(item, "MAPPED_ITEM"):
                        mapped = mapping.attribute(item.MAPPING_SOURCE, "MAPPED_REPRESENTATION")
                        self.mapped[assembly].setdefault(mapped, []).append(item)
        for shape in mapping.shapes_of_part(usage.RELATED_PRODUCT_DEFINITION):
            if items := self.mapped[assembly].get(shape):
                item = items.pop(0)
                self.use(item, item.MAPPING_SOURCE)
                self.use_axes(item.MAPPING_TARGET)
                return mapping.mapped_placement(item)
        return None

    def quantity(self, usage):
        if "QUANTIFIED_ASSEMBLY_COMPONENT_USAGE" not in usage.entity or usage.QUANTITY is None:
            return 1
        try:
            count = float(usage.QUANTITY.VALUE_COMPONENT)
        except (TypeError, ValueError):
            count = 1.0
        self.use(usage.QUANTITY)
        if not count.is_integer() or not 1 <= count <= MOST_COPIES:
            self.replaced("quantity", f"{count:g} is no number of links: one link", usage.ID)
            return 1
        if count > 1:
            self.protocol.note("remark", "quantity", f"{count:g} links for one occurrence", usage.ID)
        return int(count)

    def use_placement(self, usage):
        context = mapping.context_of(usage)
        if context is None:
            return
        operator = mapping.operator_of(usage)
        self.use(context, context.REPRESENTATION_RELATION, operator)
        for name in ("TRANSFORM_ITEM_1", "TRANSFORM_ITEM_2", "LOCAL_ORIGIN", "AXIS1", "AXIS2", "AXIS3"):
            self.use_axes(mapping.attribute(operator, name))

    def use_axes(self, placement):
        self.use(placement)
        for name in ("LOCATION", "AXIS", "REF_DIRECTION"):
            self.use(mapping.attribute(placement, name))

    # ---- Models and documents

    def document(self, document):
        self.use(document)
        if mapping.attribute(document.KIND, "PRODUCT_DATA_TYPE") == mapping.RECORD:
            self.record(document)
            return
        self.files[document] = (
            self.keyed_document(document)
            or self.keyed_model(document)
            or self.equivalent_document(document)
            or self.foreign_document(document)
        )

    def record(self, document):
        """An instance of the database without a counterpart in STEP."""
        remainder = Remainder.read(document.DESCRIPTION)
        if remainder is None:
            self.left_out(document, "its record cannot be read")
        else:
            self.make(remainder.entity, {}, remainder)

    def keyed_document(self, document):
        key = document.DESCRIPTION
        if not orx.IsEncodedNARVOV5(key):
            return None
        entity = mapping.attribute(document.KIND, "PRODUCT_DATA_TYPE") or "CDM_DOCUMENT"
        place = len(mapping.document_fields(entity)) + 1
        remainder = Remainder.read(key.removeprefix("_ORX_"), place)
        if remainder is None and entity not in ("CDM_DOCUMENT", "CDM_DOCCAD", "CDM_DOCNOTE"):
            entity = "CDM_DOCUMENT"
        return self.make(entity, mapping.document_states(document, entity), remainder)

    def keyed_model(self, document):
        key = document.NAME
        if not key or not orx.IsEncodedKey(key):
            return None
        remainder = Remainder.read(key, mapping.MODEL_FIELDS + 1)
        if remainder is None and not orx.IsaNARVOModel(document.ID):
            return None
        return self.make("model_object", mapping.model_states(document), remainder)

    def equivalent_document(self, document):
        """A document managed as a product has already been read as one."""
        name = "DOCUMENT_PRODUCT_EQUIVALENCE.RELATING_DOCUMENT"
        products = [e.RELATED_PRODUCT for e in self.users(document, name)]
        return next((self.parts[p] for p in products if p in self.parts), None)

    def foreign_document(self, document):
        """A file, by its external name; a model if that ends in .model."""
        assignment = self.external_names.get(document)
        self.use(assignment)
        kind = mapping.attribute(document.KIND, "PRODUCT_DATA_TYPE")
        file_name = mapping.attribute(assignment, "ASSIGNED_ID") or document.ID or ""
        if orx.IsaNARVOModel(file_name):
            database_name = orx.ORX_GetModelName(file_name, 0)
            return self.make("model_object", {"S_NAME": database_name, "S_TYPE_REP": kind})
        if assignment is not None:
            database_name = orx.GetExternalName(assignment, assignment.SOURCE)
        else:
            database_name = orx.ORX_GetDocName(file_name, 0)
        self.other_attributes(document, ("ID", "DESCRIPTION", "KIND"), unless=database_name)
        stated = {
            "S_NAME": database_name,
            "S_TYPE_REP": kind,
            "NOTES": document.DESCRIPTION,
            "S_FORMAT": orx.GetNARVOV5Ext(file_name),
        }
        return self.make("CDM_DOCUMENT", stated)

    def document_of_product(self, formation, product):
        self.protocol.note("remark", "PRODUCT", "of the category 'document': a document", product.ID)
        return self.make(
            "CDM_DOCUMENT",
            {
                "S_NAME": product.NAME or product.ID,
                "S_TYPE_REP": "DOCUMENT",
                "NOTES": product.DESCRIPTION,
                "S_FORMAT": formation.ID,
            },
        )

    def references(self):
        """Assigns files to parts: the source of the reference is the name of the part's list."""
        for entity in ("APPLIED_DOCUMENT_REFERENCE", "CC_DESIGN_SPECIFICATION_REFERENCE"):
            for reference in self.extent(entity):
                for item in reference.ITEMS or []:
                    self.refer(item, reference.ASSIGNED_DOCUMENT, reference.SOURCE or "", entity)
        for association in self.extent("DOCUMENT_PRODUCT_ASSOCIATION"):
            if association.entity != "DOCUMENT_PRODUCT_EQUIVALENCE":
                self.refer(association.RELATED_PRODUCT, association.RELATING_DOCUMENT, "",
                           "DOCUMENT_PRODUCT_ASSOCIATION")  # fmt: skip

    def refer(self, item, document, source, entity):
        part, file = self.parts.get(item), self.files.get(document)
        if mapping.is_kind(item, "PRODUCT"):
            part = next(
                (self.parts.get(f)
                 for f in self.users(item, "PRODUCT_DEFINITION_FORMATION.OF_PRODUCT")), None)  # fmt: skip
        if part is None or file is None or part.instance.entity != "part_object":
            if item is not None:
                self.left_out(item, "a file is assigned to it that is none of a part's")
            return
        lists = mapping.lists_of_files(mapping.attributes_of(part.instance))
        default = "models" if file.instance.entity == "model_object" else "docs1"
        if source and source not in lists:
            self.replaced(f"{entity}.SOURCE", f"'{source}' is no list of a part: {default}",
                          mapping.label(part.instance))  # fmt: skip
        part.stated.setdefault(source if source in lists else default, []).append(file.instance)

    # ---- Configurations

    def handler(self, concept):
        remainder = Remainder.read(concept.DESCRIPTION)
        if remainder is None:
            return
        stated = mapping.handler_states(concept)
        for item in self.users(concept, "CONFIGURATION_ITEM.ITEM_CONCEPT")[:1]:
            stated["apply"] = self.design_of(item)
        self.handlers[concept] = self.make("configuration_handler", stated, remainder)

    def item(self, item):
        remainder = Remainder.read(item.PURPOSE)
        if orx.IsAORXCfg(item):
            stated = mapping.item_states(item)
        else:
            stated = {"id": item.ID, "name": item.NAME}
            self.other_attributes(item, ("ID", "NAME", "ITEM_CONCEPT"))
        stated["design"] = self.design_of(item)
        self.make("configuration_item", stated, remainder)
        if orx.HasAORXValue(item) and item.ITEM_CONCEPT not in self.handlers:
            handler = {"id": orx.DecodeKey(item.DESCRIPTION, 3), "apply": stated["design"]}
            self.handlers[item.ITEM_CONCEPT] = self.make("configuration_handler", handler)
        self.use(item)

    def design_of(self, item):
        for design in self.users(item, "CONFIGURATION_DESIGN.CONFIGURATION"):
            if design.DESIGN in self.parts:
                return self.parts[design.DESIGN].instance
        return None

    # ---- Effectivities
    #
    # An effectivity of STEP applies to one occurrence; those from one of the database have its number.

    def effectivity(self, effectivity):
        links = [link.instance for usage in self.usages(effectivity)
                 for link in self.links.get(usage, [])]  # fmt: skip
        made = self.keyed_effectivity(effectivity) or self.foreign_effectivity(effectivity)
        if made is None:
            return
        if links:
            made.stated["usage"] = (made.stated.get("usage") or []) + links
        self.use(effectivity, *self.users(effectivity, "NAME_ATTRIBUTE.NAMED_ITEM"))

    def usages(self, effectivity):
        usages = [mapping.attribute(effectivity, "USAGE")]
        name = "APPLIED_EFFECTIVITY_ASSIGNMENT.ASSIGNED_EFFECTIVITY"
        for assignment in self.users(effectivity, name):
            usages += assignment.ITEMS or []
            self.use(assignment)
        return [usage for usage in usages if usage is not None]

    def keyed_effectivity(self, effectivity):
        key = effectivity.ID
        remainder = mapping.effectivity_remainder(key)
        kind = mapping.effectivity_kind(key)
        if remainder is None and kind is None:
            return None
        if remainder is not None and remainder.number in self.effectivities:
            return self.effectivities[remainder.number]
        entity = f"{kind}_effectivity" if kind in ("range", "date") else "option_effectivity"
        made = self.make(entity, mapping.keyed_effectivity_states(effectivity), remainder)
        if remainder is not None and made is not None:
            self.effectivities[remainder.number] = made
        return made

    def foreign_effectivity(self, effectivity):
        kinds = effectivity.entity.split("+")
        stated = {"id": effectivity.ID} | mapping.effectivity_states(effectivity)
        if "DATED_EFFECTIVITY" in kinds:
            for name in ("EFFECTIVITY_START_DATE", "EFFECTIVITY_END_DATE"):
                if effectivity[name] is not None and orx.GetDate(effectivity[name]) == OPEN_DATE:
                    self.replaced(f"DATED_EFFECTIVITY.{name}", "no date with a time of day: open",
                                  effectivity.ID)  # fmt: skip
            return self.make("date_effectivity", stated)
        if "SERIAL_NUMBERED_EFFECTIVITY" in kinds:
            for name in ("EFFECTIVITY_START_ID", "EFFECTIVITY_END_ID"):
                text = effectivity[name]
                if text and str(orx.GetValue(text)) != text:
                    self.replaced(f"SERIAL_NUMBERED_EFFECTIVITY.{name}",
                                  "the database takes whole numbers",
                                  f"'{text}' → {orx.GetValue(text)}")  # fmt: skip
            return self.make("range_effectivity", stated)
        return None

    # ---- Identities

    def identity(self, assignment):
        remainder = Remainder.read(assignment.ASSIGNED_ID, len(mapping.IDENTITY) + 1)
        if remainder is None:
            return
        stated = mapping.identity_states(assignment.ASSIGNED_ID)
        for item in assignment.ITEMS or []:
            stated["CdmaObject"] = self.parts[item].instance if item in self.parts else None
        self.make("cdma_id", stated, remainder)
        self.use(assignment)

    def sequence(self, relationship):
        """The order of revisions, which the histories of the database already contain."""
        ends = (
            self.parts.get(relationship.RELATING_PRODUCT_DEFINITION_FORMATION),
            self.parts.get(relationship.RELATED_PRODUCT_DEFINITION_FORMATION),
        )
        if relationship.NAME == "sequence" and all(end and end.remainder for end in ends):
            self.use(relationship)

    # ---- Creating instances

    def make(self, entity, stated, remainder=None):
        """An instance of the database, to be filled when all have been created."""
        entity = remainder.entity if remainder else entity
        try:
            instance = self.database.create(entity)
        except (orx.Error, TypeError, ValueError) as error:
            self.protocol.note("left out", entity, str(error))
            return None
        if remainder:
            self.by_number[remainder.number] = instance
            self.numbers[instance] = remainder.number
        made = Made(instance, stated, remainder)
        self.made.append(made)
        return made

    def fill(self, made):
        values = dict(made.stated)
        if made.remainder:
            for name, (states, has) in made.remainder.differences.items():
                values[name] = self.restored(made, name, states, has)
        for name, value in values.items():
            if value is None:
                continue
            try:
                made.instance[name] = value
            except (TypeError, AttributeError, ValueError) as error:
                self.protocol.note("left out", f"{made.instance.entity}.{name}", str(error),
                                   mapping.label(made.instance))  # fmt: skip

    def restored(self, made, name, states, has):
        """The database's former value if the value in STEP is unchanged, otherwise that of STEP."""
        stated = made.stated.get(name)
        if mapping.to_json(stated, self.numbers.get) != states:
            self.protocol.note("remark", f"{made.instance.entity}.{name}",
                               "changed since the export: what STEP states", mapping.label(made.instance))  # fmt: skip
            return stated
        return mapping.from_json(has, lambda number: self.referred(made, name, number))

    def referred(self, made, name, number):
        if number not in self.by_number:
            self.protocol.note("left out", f"{made.instance.entity}.{name}",
                               "it refers to an instance that was not taken out", f"#{number}")  # fmt: skip
        return self.by_number.get(number)

    # ---- The protocol

    def replaced(self, what, why, which):
        self.protocol.note("replaced", what, why, which)

    def left_out(self, instance, why):
        self.protocol.note("left out", instance.entity, why, f"#{instance.number}")

    def use(self, *instances):
        self.used.update(i.number for i in instances if isinstance(i, orx.Instance))

    def other_attributes(self, instance, read, unless=None):
        """Adds a note for each text of an instance that is not read."""
        for name in mapping.attributes_of(instance):
            value = None if name in read else instance[name]
            if isinstance(value, str) and value not in ("", unless):
                self.protocol.note("left out", f"{instance.entity}.{name}",
                                   "the database has no place for it", f"'{value}'")  # fmt: skip

    def what_is_left_out(self):
        frame = set()
        for entity in FRAME:
            frame.update(instance.number for instance in self.extent(entity))
        for shape in self.extent("SHAPE_REPRESENTATION"):
            if shape.entity == "SHAPE_REPRESENTATION":
                frame.add(shape.number)
                for item in shape.ITEMS or []:
                    if mapping.is_kind(item, "AXIS2_PLACEMENT_3D"):
                        self.use_axes(item)
        known = self.used | frame
        counted = Counter(i.entity for i in self.step if i.number not in known)
        for entity, count in counted.most_common():
            self.protocol.note("left out", entity, "the database has no place for it", count=count)

    # ---- Helpers

    def extent(self, entity):
        try:
            return self.step[entity]
        except orx.NotFound:
            return []

    def users(self, instance, name):
        try:
            return instance.users(name)
        except orx.NotFound:
            return []


def main():
    options = argparse.ArgumentParser(description="Reads STEP into a database.")
    options.add_argument("step", metavar="STEP", help="a data set of a STEP schema")
    options.add_argument("out", metavar="OUT", help="the data set of schema cdma to write")
    mapping.add_options(options)
    arguments = options.parse_args()
    with mapping.errors_told(options.prog):
        mapping.journey(arguments, arguments.step,
                        lambda step: to_database(step, arguments.express))  # fmt: skip
    return 0


if __name__ == "__main__":
    sys.exit(main())
