#!/usr/bin/python3
"""From the database into STEP:

    export.py DATABASE OUT [--schema AUTOMOTIVE_DESIGN] [--protocol FILE]

exports every instance of a data set of schema "cdma" to one of the schemas below; import.py brings it
back. Each function below maps one thing: the left side is what STEP gets, the right side is where it
comes from. Anything that does not fit into STEP is stored in the strings that the mapping functions
build, followed by a remainder (mapping.py). Copy and change them.

A program that maps models itself imports this file and calls `export`:

    from export import export
    step, protocol = export(database, "AP242")                 # a whole database
    step, protocol = export(database, parts=[database[7]])     # some parts, with their data
"""

import argparse
import math
import sys
from collections import defaultdict

import mapping
import orxexutilities as orx
from mapping import Protocol, Remainder

# The schemas by short name: the name of the schema, and the name, year and status of its application
# protocol definition.
SCHEMAS = {
    "AP203": ("CONFIG_CONTROL_DESIGN", "config_control_design", 1994,
              "configuration controlled 3D designs of mechanical parts and assemblies"),
    "AP203E2": ("AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF",
                "ap203_configuration_controlled_3d_design_of_mechanical_parts_and_assemblies_mim_lf",
                2011, "configuration controlled 3D designs of mechanical parts and assemblies"),
    "AP214": ("AUTOMOTIVE_DESIGN", "automotive_design", 2010,
              "core data for automotive mechanical design processes"),
    "AP242": ("AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF",
              "ap242_managed_model_based_3d_engineering", 2014,
              "managed model based 3d engineering"),
    "PDM": ("PDM_SCHEMA", "pdm_schema", 2000, "product data management"),
}  # fmt: skip


def schema_named(name):
    """The row of a schema, by its short or full name."""
    for short, row in SCHEMAS.items():
        if name.upper() in (short, row[0]):
            return row
    raise orx.Error(f"no mapping into '{name}': {', '.join(SCHEMAS)} or the schemas' own names")


def export(database, schema="AUTOMOTIVE_DESIGN", parts=None):
    """Returns a model of a STEP schema with the contents of a database, and the protocol.

    `parts` limits the export to these parts, with their components, models and documents, and the
    configurations, effectivities and identities that concern them.
    """
    with mapping.no_collections():
        return Export(database, schema_named(schema), parts).run()


class Export:
    def __init__(self, database, schema, parts=None):
        self.database = database
        self.schema, self.protocol_name, self.year, self.application_text = schema
        self.step = orx.new(self.schema)
        self.protocol = Protocol()
        self.chosen = None if parts is None else belonging_to(parts)
        self.names = {}  # entity type: the names of its attributes

        self.products = {}  # part number: PRODUCT
        self.categories = defaultdict(dict)  # name of a category: the products in it
        self.definitions = {}  # part: PRODUCT_DEFINITION
        self.shapes = {}  # part: SHAPE_REPRESENTATION, its items
        self.occurrences = {}  # link: NEXT_ASSEMBLY_USAGE_OCCURRENCE
        self.occurrence_shapes = {}  # link: its PRODUCT_DEFINITION_SHAPE, which contains the remainder
        self.files = {}  # model or document: DOCUMENT_FILE
        self.handlers = {}  # handler: PRODUCT_CONCEPT
        self.concepts = {}  # id and part of a handler: the PRODUCT_CONCEPT of the first such handler
        self.items = {}  # configuration item: CONFIGURATION_ITEM
        self.effectivities = {}  # effectivity: one STEP effectivity for each link that it governs
        self.identities = {}  # identity: APPLIED_IDENTIFICATION_ASSIGNMENT
        self.designs = {}  # part: CONFIGURATION_DESIGN
        self.kinds = {}  # kind of document: DOCUMENT_TYPE
        self.no_handler = None  # the concept of items without a handler
        self.identity_role = None
        self.declared = {}  # entity type: whether the STEP schema declares it

    # ---- The export

    def run(self):
        orx.RemoveValueVersion()
        try:
            self.contexts()
            for part in self.extent("part_object"):
                self.part(part)
            self.product_categories()
            owners = self.owners()
            for link, owner in owners.items():
                self.link(link, owner)
            self.placements()
            for model in self.extent("model_object"):
                self.model(model)
            for document in self.extent("document_object"):
                self.document(document)
            for part in self.definitions:
                self.references_of(part)
            for handler in self.extent("configuration_handler"):
                self.handler(handler)
            for item in self.extent("configuration_item"):
                self.item(item)
            for effectivity in self.extent("effectivity_object"):
                self.effectivity(effectivity, owners)
            for identity in self.extent("cdma_id"):
                self.identity(identity)
            for history in self.extent("cdma_revision_history"):
                self.history(history)
            self.remainders(owners)
            self.other_instances()
            self.remarks()
        finally:
            orx.RemoveValueVersion()
        self.protocol.count_models(self.chosen_instances(), self.step)
        return self.step, self.protocol

    # ---- What every part needs

    def contexts(self):
        new = self.step.create
        self.application = new("APPLICATION_CONTEXT", APPLICATION=self.application_text)
        new(
            "APPLICATION_PROTOCOL_DEFINITION",
            STATUS="international standard",
            APPLICATION_INTERPRETED_MODEL_SCHEMA_NAME=self.protocol_name,
            APPLICATION_PROTOCOL_YEAR=self.year,
            APPLICATION=self.application,
        )
        self.discipline = new(
            "MECHANICAL_CONTEXT" if self.has("MECHANICAL_CONTEXT") else "PRODUCT_CONTEXT",
            NAME="",
            FRAME_OF_REFERENCE=self.application,
            DISCIPLINE_TYPE="mechanical",
        )
        self.stage = new(
            "DESIGN_CONTEXT" if self.has("DESIGN_CONTEXT") else "PRODUCT_DEFINITION_CONTEXT",
            NAME="part definition",
            FRAME_OF_REFERENCE=self.application,
            LIFE_CYCLE_STAGE="design",
        )
        self.market = None  # of configurations, created when needed
        self.space = self.units()
        self.centre = self.point((0.0, 0.0, 0.0))
        self.up = self.direction((0.0, 0.0, 1.0))
        self.ahead = self.direction((1.0, 0.0, 0.0))

    def units(self):
        """Millimetres, radians and steradians, and the accuracy of lengths."""
        new, item = self.step.create, orx.Enum
        length = new("LENGTH_UNIT+NAMED_UNIT+SI_UNIT", PREFIX=item("MILLI"), NAME=item("METRE"))
        angle = new("NAMED_UNIT+PLANE_ANGLE_UNIT+SI_UNIT", NAME=item("RADIAN"))
        solid_angle = new("NAMED_UNIT+SI_UNIT+SOLID_ANGLE_UNIT", NAME=item("STERADIAN"))
        accuracy = new(
            "UNCERTAINTY_MEASURE_WITH_UNIT",
            VALUE_COMPONENT=orx.Typed("LENGTH_MEASURE", 1e-6),
            UNIT_COMPONENT=length,
            NAME="distance_accuracy_value",
            DESCRIPTION="",
        )
        return new(
            "GEOMETRIC_REPRESENTATION_CONTEXT+GLOBAL_UNCERTAINTY_ASSIGNED_CONTEXT"
            "+GLOBAL_UNIT_ASSIGNED_CONTEXT+REPRESENTATION_CONTEXT",
            CONTEXT_IDENTIFIER="",
            CONTEXT_TYPE="3D",
            COORDINATE_SPACE_DIMENSION=3,
            UNITS=[length, angle, solid_angle],
            UNCERTAINTY=[accuracy],
        )

    # ---- Parts
    #
    # The revisions of a part are the formations of one product: IsVersion returns the part that
    # represents them. A formation contains the key of its part.

    def part(self, part):
        formation = self.step.create(
            self.formation_type(),
            ID=self.mandatory(part, "S_CHG_NUM"),
            DESCRIPTION=orx.ConcatPartAtb(part),
            OF_PRODUCT=self.product(part),
        )
        if self.has("MECHANICAL_CONTEXT"):
            formation.MAKE_OR_BUY = orx.Enum("NOT_KNOWN")
        definition = self.step.create(
            "PRODUCT_DEFINITION",
            ID="design",
            DESCRIPTION=text_of(part.S_DESC),
            FORMATION=formation,
            FRAME_OF_REFERENCE=self.stage,
        )
        self.definitions[part] = definition
        self.shape(part, definition)

    def formation_type(self):
        source = "_WITH_SPECIFIED_SOURCE" if self.has("MECHANICAL_CONTEXT") else ""
        return "PRODUCT_DEFINITION_FORMATION" + source

    def product(self, part):
        first = orx.IsVersion(part, 1) or part
        number = self.mandatory(first, "S_PART_NUMBER")
        if number not in self.products:
            self.products[number] = self.step.create(
                "PRODUCT",
                ID=number,
                NAME=text_of(first.S_DESC),
                DESCRIPTION="",
                FRAME_OF_REFERENCE=[self.discipline],
            )
        product = self.products[number]
        category = "assembly" if orx.IsAnAssembly(part) else "detail"
        self.categories[category][product] = None
        return product

    def product_categories(self):
        """Every product is a part, and an assembly or a detail."""
        if not self.products:
            return
        new = self.step.create
        every = new(
            "PRODUCT_RELATED_PRODUCT_CATEGORY", NAME="part", PRODUCTS=list(self.products.values())
        )
        for name, products in self.categories.items():
            category = new("PRODUCT_RELATED_PRODUCT_CATEGORY", NAME=name, PRODUCTS=list(products))
            new(
                "PRODUCT_CATEGORY_RELATIONSHIP",
                NAME="",
                DESCRIPTION="",
                CATEGORY=every,
                SUB_CATEGORY=category,
            )

    def shape(self, part, definition):
        """A part's shape: its own origin, to which the places of its components are added."""
        new = self.step.create
        origin = new(
            "AXIS2_PLACEMENT_3D",
            NAME="origin",
            LOCATION=self.centre,
            AXIS=self.up,
            REF_DIRECTION=self.ahead,
        )
        representation = new(
            "SHAPE_REPRESENTATION",
            NAME=text_of(part.S_PART_NUMBER),
            ITEMS=[origin],
            CONTEXT_OF_ITEMS=self.space,
        )
        new(
            "SHAPE_DEFINITION_REPRESENTATION",
            DEFINITION=new(
                "PRODUCT_DEFINITION_SHAPE", NAME="", DESCRIPTION="", DEFINITION=definition
            ),
            USED_REPRESENTATION=representation,
        )
        self.shapes[part] = (representation, [origin])

    # ---- Links
    #
    # An occurrence of the component in the part that the link names as its parent; if there is none,
    # in the part that lists the link. Many programs show the description of an occurrence as its name,
    # so the remainder is in the description of its shape.

    def owners(self):
        """The part in which each link is an occurrence, in the order of the parts and their links."""
        owners = {}
        for part in self.definitions:
            for link in part.KORASS or []:
                owners.setdefault(link, part)
        for link in self.extent("part_link"):
            owners[link] = link.parent or owners.get(link)
        return {link: owner for link, owner in owners.items()
                if owner in self.definitions and link.ref in self.definitions}  # fmt: skip

    def link(self, link, owner):
        name = link.exchanged if isinstance(link.exchanged, str) else ""
        self.occurrences[link] = self.step.create(
            "NEXT_ASSEMBLY_USAGE_OCCURRENCE",
            ID=text_of(link.id),
            NAME=name or text_of(link.ref.S_DESC),
            DESCRIPTION="",
            RELATING_PRODUCT_DEFINITION=self.definitions[owner],
            RELATED_PRODUCT_DEFINITION=self.definitions[link.ref],
        )
        self.occurrence_shapes[link] = self.step.create(
            "PRODUCT_DEFINITION_SHAPE",
            NAME="Placement",
            DESCRIPTION="",
            DEFINITION=self.occurrences[link],
        )
        if all(orx.IsFree(link, name) for name in ("origin", "axis", "ref_direction")):
            self.protocol.note("replaced", "part_link",
                               "it has no place, without which programs do not show a component: "
                               "the parent's own", mapping.label(link))  # fmt: skip
        self.place(link, self.shapes[owner], self.shapes[link.ref])

    def place(self, link, parent, component):
        """The component's own origin, moved to its place in the parent."""
        new = self.step.create
        axis = self.usable(link, "axis", is_direction)
        reference = self.usable(link, "ref_direction", is_direction)
        if axis and reference and are_parallel(axis, reference):
            self.protocol.note("replaced", "part_link.ref_direction",
                               "it lies along the axis: another is taken", link.id)  # fmt: skip
            reference = None
        place = new(
            "AXIS2_PLACEMENT_3D",
            NAME=text_of(link.id),
            LOCATION=self.point(self.usable(link, "origin", is_point) or (0.0, 0.0, 0.0)),
            AXIS=self.direction(axis) if axis else None,
            REF_DIRECTION=self.direction(reference) if reference else None,
        )
        parent[1].append(place)
        new(
            "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION",
            REPRESENTATION_RELATION=new(
                "REPRESENTATION_RELATIONSHIP+REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION"
                "+SHAPE_REPRESENTATION_RELATIONSHIP",
                NAME="",
                DESCRIPTION="",
                REP_1=component[0],
                REP_2=parent[0],
                TRANSFORMATION_OPERATOR=new(
                    "ITEM_DEFINED_TRANSFORMATION",
                    NAME="",
                    DESCRIPTION="",
                    TRANSFORM_ITEM_1=component[1][0],
                    TRANSFORM_ITEM_2=place,
                ),
            ),
            REPRESENTED_PRODUCT_RELATION=self.occurrence_shapes[link],
        )

    def usable(self, link, attribute, is_usable):
        value = link[attribute]
        if value is None or is_usable(value):
            return value
        self.protocol.note("replaced", f"part_link.{attribute}",
                           "STEP takes no such value: its default", link.id)  # fmt: skip
        return None

    def placements(self):
        """Sets the items of the shapes, which now include every place."""
        for representation, items in self.shapes.values():
            if len(items) > 1:
                representation.ITEMS = items

    def point(self, coordinates):
        return self.step.create("CARTESIAN_POINT", NAME="", COORDINATES=[*map(float, coordinates)])

    def direction(self, ratios):
        return self.step.create("DIRECTION", NAME="", DIRECTION_RATIOS=[*map(float, ratios)])

    # ---- Models and documents: files

    def model(self, model):
        self.files[model] = self.file(
            ID=orx.ORX_GetModelName(model.S_NAME, 1),
            NAME=orx.ConcatModelAtb(model),
            DESCRIPTION=orx.ORX_GetModelId_Exp(model),
            KIND=self.kind("geometry"),
        )

    def document(self, document):
        self.files[document] = self.file(
            ID=orx.ORX_GetDocName(document.S_NAME, 1),
            NAME=text_of(document.S_NAME),
            DESCRIPTION=orx.EncodeNARVOV5Doc(document),
            KIND=self.kind(document.entity),
        )

    def file(self, **attributes):
        if not self.has("DOCUMENT_FILE"):
            return self.step.create("DOCUMENT", **attributes)
        file = self.step.create("DOCUMENT_FILE", **attributes)
        file["CHARACTERIZED_OBJECT.NAME"] = ""
        self.step.create(
            "DOCUMENT_REPRESENTATION_TYPE", NAME="digital", REPRESENTED_DOCUMENT=file
        )
        return file

    def kind(self, name):
        if name not in self.kinds:
            self.kinds[name] = self.step.create("DOCUMENT_TYPE", PRODUCT_DATA_TYPE=name)
        return self.kinds[name]

    def references_of(self, part):
        """The files of a part, list by list: the name of the list is the source of the reference."""
        if not orx.IsModelDocLinked(part):
            return
        modern = self.has("APPLIED_DOCUMENT_REFERENCE")
        for name in mapping.lists_of_files(self.attributes(part)):
            for target in part[name] or []:
                if target in self.files:
                    self.step.create(
                        "APPLIED_DOCUMENT_REFERENCE" if modern else "CC_DESIGN_SPECIFICATION_REFERENCE",
                        ASSIGNED_DOCUMENT=self.files[target],
                        SOURCE=name,
                        ITEMS=[self.definitions[part]],
                    )  # fmt: skip

    # ---- Configurations
    #
    # A handler is the product concept of the items for which ORXIdCfg finds it.

    def handler(self, handler):
        self.handlers[handler] = self.concept(text_of(handler.id))
        self.concepts.setdefault((handler.id or "", handler.apply), self.handlers[handler])

    def concept(self, identifier):
        new = self.step.create
        if self.market is None:
            self.market = new(
                "PRODUCT_CONCEPT_CONTEXT",
                NAME="",
                FRAME_OF_REFERENCE=self.application,
                MARKET_SEGMENT_TYPE="",
            )
        return new(
            "PRODUCT_CONCEPT",
            ID=identifier,
            NAME=identifier,
            DESCRIPTION="",
            MARKET_CONTEXT=self.market,
        )

    def item(self, item):
        step_item = self.step.create(
            "CONFIGURATION_ITEM",
            ID=text_of(item.id),
            NAME=text_of(item.name),
            DESCRIPTION=orx.ORXIdCfg(item),
        )
        step_item.ITEM_CONCEPT = self.concept_of(item, step_item)
        self.items[item] = step_item
        if item.design in self.definitions:
            design = self.step.create(
                "CONFIGURATION_DESIGN",
                CONFIGURATION=step_item,
                DESIGN=self.definitions[item.design].FORMATION,
            )
            self.designs.setdefault(item.design, design)

    def concept_of(self, item, step_item):
        if orx.HasAORXValue(step_item):
            return self.concepts[orx.DecodeKey(step_item.DESCRIPTION, 3), item.design]
        if self.no_handler is None:
            self.no_handler = self.concept("")
        return self.no_handler

    # ---- Effectivities
    #
    # An effectivity of STEP applies to one occurrence, so there is one for each link. Ranges become
    # serial-numbered effectivities, dates dated ones; an open end is omitted. If the part with the link
    # is configured, the effectivity belongs to its configuration, and has a name that says so.

    def effectivity(self, effectivity, owners):
        key = orx.ConcatEffAtb(effectivity)
        if key == mapping.NO_FIELD:
            return
        bounds = self.bounds(effectivity)
        links = [link for link in effectivity.usage or [] if link in self.occurrences]
        used_by = {}
        for link in links:
            part = owners[link]
            if part not in used_by:
                used_by[part] = orx.IsUsedByPart(part, effectivity)
        self.effectivities[effectivity] = [
            self.effectivity_of(effectivity, key, bounds, link,
                                owners[link] if used_by[owners[link]] else None)
            for link in links
        ] or [self.effectivity_of(effectivity, key, bounds, None, None)]  # fmt: skip

    def effectivity_of(self, effectivity, key, bounds, link, configured):
        kinds, attributes = list(bounds[0]), {"ID": key} | bounds[1]
        if link is not None:
            kinds.append("PRODUCT_DEFINITION_EFFECTIVITY")
            attributes["USAGE"] = self.occurrences[link]
        if configured in self.designs:
            kinds[-1] = "CONFIGURATION_EFFECTIVITY"
            attributes["CONFIGURATION"] = self.designs[configured]
        if len(kinds) > 1:
            kinds = {"EFFECTIVITY", "PRODUCT_DEFINITION_EFFECTIVITY", *kinds}
        step = self.step.create("+".join(sorted(kinds)) or "EFFECTIVITY", **attributes)
        if configured in self.designs and self.has("NAME_ATTRIBUTE"):
            self.step.create(
                "NAME_ATTRIBUTE",
                ATTRIBUTE_VALUE=orx.ORXIdEff(configured, effectivity),
                NAMED_ITEM=step,
            )
        return step

    def bounds(self, effectivity):
        """The entity type for the bounds, if any, and its attributes."""
        if orx.IsRangeType(effectivity):
            bounds = {"EFFECTIVITY_START_ID": orx.GetRangeValue(effectivity, 1)}
            if not orx.IsInfiniteRank(effectivity):
                bounds["EFFECTIVITY_END_ID"] = orx.GetRangeValue(effectivity, 2)
            return ["SERIAL_NUMBERED_EFFECTIVITY"], bounds
        if orx.IsDateType(effectivity):
            start = orx.GetStartDate(effectivity, self.application)
            bounds = {"EFFECTIVITY_START_DATE": self.in_universal_time(start)}
            if not orx.IsInfiniteDate(effectivity):
                end = orx.GetEndDate(effectivity, self.application)
                bounds["EFFECTIVITY_END_DATE"] = self.in_universal_time(end)
            return ["DATED_EFFECTIVITY"], bounds
        return [], {}

    def in_universal_time(self, date):
        offset = date.TIME_COMPONENT.ZONE
        offset.HOUR_OFFSET = 0
        # The first edition of AP203 has no EXACT.
        offset.SENSE = orx.Enum("AHEAD" if self.schema == "CONFIG_CONTROL_DESIGN" else "EXACT")
        return date

    # ---- Identities and revisions

    def identity(self, identity):
        part = identity.CdmaObject
        if part not in self.definitions or not self.has("APPLIED_IDENTIFICATION_ASSIGNMENT"):
            return
        if self.identity_role is None:
            self.identity_role = self.step.create(
                "IDENTIFICATION_ROLE", NAME="database identity", DESCRIPTION=""
            )
        fields = [text_of(identity[name])[: mapping.LONGEST_FIELD] for name in mapping.IDENTITY]
        self.identities[identity] = self.step.create(
            "APPLIED_IDENTIFICATION_ASSIGNMENT",
            ASSIGNED_ID="".join(map(mapping.text_field, fields)),
            ROLE=self.identity_role,
            ITEMS=[self.definitions[part]],
        )

    def history(self, history):
        """Each revision follows the previous one, by IsNewer. The history itself is a record."""
        if not self.has("PRODUCT_DEFINITION_FORMATION_RELATIONSHIP"):
            return
        revisions = [identity.CdmaObject for identity in history.Revisions or []]
        for older, newer in zip(revisions, revisions[1:]):
            if {older, newer} <= self.definitions.keys() and orx.IsNewer(newer, older):
                self.step.create(
                    "PRODUCT_DEFINITION_FORMATION_RELATIONSHIP",
                    ID="",
                    NAME="sequence",
                    DESCRIPTION="",
                    RELATING_PRODUCT_DEFINITION_FORMATION=self.definitions[older].FORMATION,
                    RELATED_PRODUCT_DEFINITION_FORMATION=self.definitions[newer].FORMATION,
                )

    # ---- Data that do not fit into STEP

    def remainders(self, owners):
        components = defaultdict(list)
        for link, owner in owners.items():
            components[owner].append(link)
        for part, definition in self.definitions.items():
            formation = definition.FORMATION
            stated = mapping.part_states(formation.DESCRIPTION, definition)
            stated["KORASS"] = components.get(part)
            for name in mapping.lists_of_files(self.attributes(part)):
                stated[name] = [file for file in part[name] or [] if file in self.files] or None
            self.add_remainder(part, stated, formation, "DESCRIPTION")
        for link, occurrence in self.occurrences.items():
            stated = mapping.link_states(occurrence, mapping.placement_of(occurrence))
            stated |= {"parent": owners[link], "ref": link.ref}
            self.add_remainder(link, stated, self.occurrence_shapes[link], "DESCRIPTION")
        for file, step in self.files.items():
            if file.entity.upper() == "MODEL_OBJECT":
                self.add_remainder(file, mapping.model_states(step), step, "NAME")
            else:
                stated = mapping.document_states(step, file.entity)
                self.add_remainder(file, stated, step, "DESCRIPTION")
        applied = {}
        for item, step in self.items.items():
            design = item.design if item.design in self.definitions else None
            applied.setdefault(step.ITEM_CONCEPT, design)
            self.add_remainder(item, mapping.item_states(step) | {"design": design}, step, "PURPOSE")
        for handler, concept in self.handlers.items():
            stated = mapping.handler_states(concept) | {"apply": applied.get(concept)}
            self.add_remainder(handler, stated, concept, "DESCRIPTION")
        for effectivity, steps in self.effectivities.items():
            stated = mapping.keyed_effectivity_states(steps[0])
            usage = [link for link in effectivity.usage or [] if link in self.occurrences]
            self.add_remainder(effectivity, stated | {"usage": usage or None}, steps[0], "ID")
            for step in steps[1:]:
                step.ID = steps[0].ID
        for identity, step in self.identities.items():
            stated = mapping.identity_states(step.ASSIGNED_ID) | {"CdmaObject": identity.CdmaObject}
            self.add_remainder(identity, stated, step, "ASSIGNED_ID")

    def add_remainder(self, instance, stated, step, attribute):
        remainder = Remainder.of(instance, stated, self.attributes(instance))
        step[attribute] = key = (step[attribute] or "") + remainder.key()
        if not orx.IsEncodedKey(key.removeprefix("_ORX_")):
            self.protocol.note("left out", instance.entity,
                               "its key cannot be read back: a field is too long", mapping.label(instance))  # fmt: skip
        for name, (states, has) in remainder.differences.items():
            if has == "null":
                why = "it is unset; STEP states a value"
            elif has == "[]":
                why = "it is an empty list; STEP has none"
            elif states == "null":
                why = "STEP states none"
            else:
                why = "STEP states it in another way"
            self.protocol.note("carried", f"{instance.entity}.{name}", why, mapping.label(instance))

    def other_instances(self):
        """Instances that are not mapped become records: documents of a special kind."""
        mapped = (self.definitions, self.occurrences, self.files, self.handlers, self.items,
                  self.effectivities, self.identities)  # fmt: skip
        for instance in self.chosen_instances():
            if not any(instance in which for which in mapped):
                self.record(instance)

    def record(self, instance):
        if is_undeclared(instance):
            self.protocol.note("left out", instance.entity, "the schema does not declare it",
                               mapping.label(instance))  # fmt: skip
            return
        self.step.create(
            "DOCUMENT",
            ID=f"{instance.entity} #{instance.number}",
            NAME=instance.entity,
            DESCRIPTION=Remainder.of(instance, {}, self.attributes(instance)).key(),
            KIND=self.kind(mapping.RECORD),
        )
        self.protocol.note("carried", instance.entity,
                           f"{self.schema[:21]} has no place for it: a record", mapping.label(instance))  # fmt: skip

    def remarks(self):
        note = self.protocol.note
        if self.schema == "CONFIG_CONTROL_DESIGN":
            note("remark", "approvals, persons, dates, security",
                 "this schema asks for them with each part; the database has none", count=1)  # fmt: skip
            for entity, what in (
                ("APPLIED_IDENTIFICATION_ASSIGNMENT", "identities of parts"),
                ("PRODUCT_DEFINITION_FORMATION_RELATIONSHIP", "the sequence of revisions"),
                ("NAME_ATTRIBUTE", "names of effectivities"),
                ("DOCUMENT_FILE", "files: they are documents here"),
            ):
                note("remark", what, f"this schema has no {entity}")

    # ---- Helpers

    def extent(self, entity):
        """The instances of an entity type to be exported."""
        try:
            instances = self.database[entity]
        except orx.NotFound:
            return []
        return [i for i in instances if self.chosen is None or i in self.chosen]

    def chosen_instances(self):
        return [i for i in self.database if self.chosen is None or i in self.chosen]

    def attributes(self, instance):
        if instance.entity not in self.names:
            self.names[instance.entity] = mapping.attributes_of(instance)
        return self.names[instance.entity]

    def has(self, entity):
        """Whether the STEP schema declares an entity type."""
        if entity not in self.declared:
            try:
                self.declared[entity] = self.step[entity] is not None
            except orx.NotFound:
                self.declared[entity] = False
        return self.declared[entity]

    def mandatory(self, part, attribute):
        """A text that may not be empty in STEP."""
        value = part[attribute]
        text = orx.ReadMandatory(value, attribute)
        if text != value:
            self.protocol.note("replaced", f"part_object.{attribute}",
                               f"it may not be empty in STEP: '{text}'", mapping.label(part))  # fmt: skip
        return text


def text_of(value):
    return value if isinstance(value, str) else "" if value is None else str(value)


def is_undeclared(instance):
    """Whether the schema does not declare the instance's type: values are then accessed by position."""
    try:
        instance[1]
    except AttributeError:
        return False
    return True


def is_point(value):
    return (
        isinstance(value, list)
        and len(value) == 3
        and all(isinstance(x, (int, float)) and math.isfinite(x) for x in value)
    )


def is_direction(value):
    return is_point(value) and any(value)


def are_parallel(a, b):
    cross = [a[i - 2] * b[i - 1] - a[i - 1] * b[i - 2] for i in range(3)]
    return math.hypot(*cross) <= 1e-9 * math.hypot(*a) * math.hypot(*b)


def belonging_to(parts):
    """The parts, their components on all levels, and all instances that concern any of these."""
    chosen, waiting = set(), list(parts)
    if not waiting:
        return chosen
    model = waiting[0].model
    while waiting:
        part = waiting.pop()
        if part in chosen:
            continue
        chosen.add(part)
        for link in part.KORASS or []:
            chosen.add(link)
            if link.ref is not None:
                waiting.append(link.ref)
    for part in [i for i in chosen if i.entity == "part_object"]:
        for name in mapping.lists_of_files(mapping.attributes_of(part)):
            chosen.update(part[name] or [])
        chosen.update(part.users("configuration_item.design"))
        chosen.update(part.users("configuration_handler.apply"))
        chosen.update(part.users("cdma_id.CdmaObject"))
        chosen.update(link for link in part.users("part_link.parent") if link.ref in chosen)
    for entity, name in (("effectivity_object", "usage"), ("cdma_revision_history", "Revisions")):
        chosen.update(i for i in model[entity] if not chosen.isdisjoint(i[name] or []))
    return chosen


def main():
    options = argparse.ArgumentParser(description="Takes a database out into STEP.")
    options.add_argument("database", metavar="DATABASE", help="a data set of schema cdma")
    options.add_argument("out", metavar="OUT", help="the STEP data set to write")
    options.add_argument("--schema", default="AUTOMOTIVE_DESIGN",
                         help=f"a STEP schema, by its name or as {', '.join(SCHEMAS)}")  # fmt: skip
    mapping.add_options(options)
    arguments = options.parse_args()
    with mapping.errors_told(options.prog):
        mapping.journey(
            arguments, arguments.database, lambda model: export(model, arguments.schema)
        )
    return 0


if __name__ == "__main__":
    sys.exit(main())
