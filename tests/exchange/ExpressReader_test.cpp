// The reader of EXPRESS schemas: what it accepts, what it skips, what it rejects and where.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "Exchange.h"
#include "Orx.h"

namespace {

using exchange::Message;
using exchange::Messages;
using exchange::SchemaPtr;
using kor::Domain;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

// The schema of a text that contains one schema and no error.
SchemaPtr Parse(const std::string& text) {
    Messages messages;
    const std::vector<SchemaPtr> schemas = exchange::ParseSchemas(text, "test.exp", messages);
    for (const Message& error : messages.Errors()) ADD_FAILURE() << error.ToString();
    for (const Message& warning : messages.Warnings()) ADD_FAILURE() << warning.ToString();
    EXPECT_THAT(schemas, SizeIs(1));
    if (schemas.size() != 1) throw std::runtime_error("the test's schema cannot be read");
    return schemas.front();
}

SchemaPtr ParseBody(const std::string& body) {
    return Parse("SCHEMA test;\n" + body + "\nEND_SCHEMA;\n");
}

const kor::EntityType& Entity(const SchemaPtr& schema, const std::string& name) {
    const kor::EntityType* entity = schema->FindEntity(std::string_view(name));
    EXPECT_NE(entity, nullptr) << name;
    if (entity == nullptr) throw std::runtime_error("no entity type " + name);
    return *entity;
}

// The attributes of an entity type in the order of an exchange file; a derived one in brackets.
std::vector<std::string> Slots(const SchemaPtr& schema, const std::string& entity) {
    std::vector<std::string> names;
    for (const kor::Slot& slot : Entity(schema, entity).Slots()) {
        const std::string name(slot.attribute->Name().View());
        names.push_back(slot.derived ? "(" + name + ")" : name);
    }
    return names;
}

const Domain& DomainOf(const SchemaPtr& schema, const std::string& entity,
                       const std::string& attribute) {
    const kor::EntityType& type = Entity(schema, entity);
    const kor::Index slot = type.SlotOf(std::string_view(attribute));
    EXPECT_TRUE(slot.has_value()) << attribute;
    if (!slot) throw std::runtime_error("no attribute " + attribute);
    return *type.Slots()[*slot].domain;
}

std::vector<std::string> EntityNames(const SchemaPtr& schema) {
    std::vector<std::string> names;
    for (const kor::EntityType* entity : schema->Entities()) {
        names.emplace_back(entity->Name().View());
    }
    return names;
}

// The choices of a select: its defined types and entity types.
std::vector<std::string> Choices(const Domain& select) {
    EXPECT_EQ(select.base, kor::Base::Select);
    std::vector<std::string> names;
    for (const auto& [name, domain] : select.choices) names.push_back(name);
    for (const kor::EntityType* entity : select.entities) {
        names.emplace_back(entity->Name().View());
    }
    return names;
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// ---- Schemas

TEST(ExpressReader, TakesTheNameOfTheSchemaInUpperCase) {
    EXPECT_EQ(Parse("SCHEMA my_Schema; END_SCHEMA;")->Name().View(), "MY_SCHEMA");
}

TEST(ExpressReader, KeepsTheSpellingsOfTheDatabaseSchema) {
    const SchemaPtr schema =
        Parse("SCHEMA cdma; ENTITY part_Object; S_name : STRING; END_ENTITY; END_SCHEMA;");
    EXPECT_EQ(schema->Name().View(), "cdma");
    EXPECT_THAT(EntityNames(schema), ElementsAre("part_Object"));
    EXPECT_THAT(Slots(schema, "PART_OBJECT"), ElementsAre("S_name"));
}

TEST(ExpressReader, TakesEverySchemaOfAText) {
    Messages messages;
    const auto schemas = exchange::ParseSchemas(
        "SCHEMA a; END_SCHEMA; -- the first\nSCHEMA b; END_SCHEMA; (* the last *)", "s", messages);
    ASSERT_THAT(schemas, SizeIs(2));
    EXPECT_EQ(schemas[0]->Name().View(), "A");
    EXPECT_EQ(schemas[1]->Name().View(), "B");
}

TEST(ExpressReader, SkipsTheVersionOfASchema) {
    EXPECT_EQ(
        Parse("SCHEMA a '{ iso standard 10303 part(1) version(2) }'; END_SCHEMA;")->Name().View(),
        "A");
}

TEST(ExpressReader, ReadsKeywordsInAnyCase) {
    const SchemaPtr schema = Parse(
        "schema Test; Type Label = string; end_type; entity A; x : Optional LABEL; End_Entity; "
        "end_schema;");
    EXPECT_THAT(Slots(schema, "a"), ElementsAre("X"));
    EXPECT_EQ(DomainOf(schema, "a", "x").base, kor::Base::String);
}

TEST(ExpressReader, KeepsEntityTypesInTheOrderOfTheirDeclaration) {
    EXPECT_THAT(EntityNames(ParseBody("ENTITY c; END_ENTITY; ENTITY a; END_ENTITY;"
                                      "ENTITY b SUBTYPE OF (c); END_ENTITY;")),
                ElementsAre("C", "A", "B"));
}

TEST(ExpressReader, FindsEntityTypesAndAttributesInAnyCase) {
    const SchemaPtr schema = ParseBody("ENTITY Some_Thing; Some_Value : REAL; END_ENTITY;");
    EXPECT_EQ(&Entity(schema, "SOME_THING"), &Entity(schema, "some_thing"));
    EXPECT_EQ(Entity(schema, "some_thing").SlotOf(std::string_view("SOME_value")), 0);
    EXPECT_EQ(schema->FindEntity(std::string_view("SOME")), nullptr);
}

TEST(ExpressReader, ReadsAFile) {
    const TemporaryDirectory directory;
    const std::string path =
        directory.Write("a.exp", "SCHEMA a;\r\nENTITY e;\r\nEND_ENTITY;\r\nEND_SCHEMA;\r\n");
    Messages messages;
    const auto schemas = exchange::ReadSchemas(path, messages);
    EXPECT_EQ(messages.ErrorCount(), 0U);
    ASSERT_THAT(schemas, SizeIs(1));
    EXPECT_THAT(EntityNames(schemas[0]), ElementsAre("E"));
}

TEST(ExpressReader, TellsOfAFileThatCannotBeRead) {
    const TemporaryDirectory directory;
    for (const std::string& path : {directory / "missing.exp", directory.Path()}) {
        Messages messages;
        EXPECT_THAT(exchange::ReadSchemas(path, messages), IsEmpty());
        ASSERT_EQ(messages.ErrorCount(), 1U) << path;
        const Message& error = messages.Errors().front();
        EXPECT_EQ(error.file, path);
        EXPECT_EQ(error.line, 0U);
        EXPECT_FALSE(error.text.empty());
        EXPECT_EQ(error.ToString(), path + ": " + error.text);
    }
}

// ---- Remarks and strings

TEST(ExpressReader, SkipsRemarks) {
    const SchemaPtr schema = Parse(
        "-- ENTITY before; END_ENTITY;\n"
        "(* (* nested *) ENTITY inside; END_ENTITY; (* a (* b *) c *) *)"
        "SCHEMA (**) test (* a -- tail remark within *) ; -- (* no beginning\n"
        "ENTITY(* *)a -- ; the name goes on:\n ; x(* : INTEGER *):(***)REAL--;\n;END_ENTITY;"
        "END_SCHEMA; -- the end");
    EXPECT_THAT(EntityNames(schema), ElementsAre("A"));
    EXPECT_THAT(Slots(schema, "a"), ElementsAre("X"));
    EXPECT_EQ(DomainOf(schema, "a", "x").base, kor::Base::Real);
}

TEST(ExpressReader, ReadsStringsAsWholes) {
    const SchemaPtr schema = ParseBody(
        "ENTITY a; x : STRING; WHERE\n"
        "  wr1 : x <> 'END_ENTITY; ENTITY b; END_ENTITY;';\n"
        "  wr2 : x <> 'it''s -- no remark';\n"
        "  wr3 : x <> '(* nor this';\n"
        "  wr4 : x <> '';\n"
        "  wr5 : x <> \"0000004500000045\";\n"
        "END_ENTITY; ENTITY c; END_ENTITY;");
    EXPECT_THAT(EntityNames(schema), ElementsAre("A", "C"));
    EXPECT_THAT(Slots(schema, "a"), ElementsAre("X"));
}

// ---- What is skipped

TEST(ExpressReader, SkipsFunctionsWithinFunctions) {
    const SchemaPtr schema = ParseBody(R"(
FUNCTION outer(function_name : STRING; a, b : AGGREGATE OF GENERIC : g) : LIST OF GENERIC : g;
  TYPE local_type = ENUMERATION OF (one, two); END_TYPE;
  ENTITY local_entity; x : REAL; END_ENTITY;
  CONSTANT k : INTEGER := 1; END_CONSTANT;
  FUNCTION inner(x : REAL) : REAL;
    FUNCTION innermost(y : REAL) : REAL;
      RETURN (y ** 2);
    END_FUNCTION; -- innermost
    PROCEDURE innermost_procedure(VAR z : INTEGER); z := 1; END_PROCEDURE;
    RETURN (innermost(x));
  END_FUNCTION;
  LOCAL n : INTEGER := 0; s : SET [0:?] OF GENERIC := []; END_LOCAL;
  REPEAT i := 1 TO HIINDEX(a) BY 1 WHILE n < 10 UNTIL n > 20;
    IF (a[i] = 'END_FUNCTION;') AND (2 <= n < 3) THEN BEGIN n := n + 1; END;
    ELSE ESCAPE; END_IF;
    CASE n OF 1, 2 : SKIP; OTHERWISE : n := n - 1; END_CASE;
  END_REPEAT;
  ALIAS m FOR n; m := 1; END_ALIAS;
  RETURN (QUERY(x <* a | ('TEST.ENTITY' IN TYPEOF(x)) AND ({1 <= n < 2})));
END_FUNCTION;
PROCEDURE do_nothing(VAR x : REAL); ; END_PROCEDURE;
-- The schema has no type of that name yet.
TYPE local_type = STRING; END_TYPE;
ENTITY after; END_ENTITY;)");
    EXPECT_THAT(EntityNames(schema), ElementsAre("AFTER"));
}

TEST(ExpressReader, SkipsRulesAndConstants) {
    const SchemaPtr schema = ParseBody(R"(
CONSTANT
  origin : point := point([0.0, 0.0]);
  entity_count : INTEGER := 3;
  text : STRING := 'END_CONSTANT;';
END_CONSTANT;
RULE at_most_one FOR (point, line);
  LOCAL n : INTEGER; END_LOCAL;
  FUNCTION f(x : REAL) : REAL; RETURN (x); END_FUNCTION;
  n := SIZEOF(point);
WHERE
  wr1 : n <= 1;
  wr2 : NOT ('END_RULE; ENTITY wrong; END_ENTITY;' = '');
END_RULE;
ENTITY point; coordinates : LIST [1:3] OF REAL; END_ENTITY;
ENTITY line; END_ENTITY;)");
    EXPECT_THAT(EntityNames(schema), ElementsAre("POINT", "LINE"));
    EXPECT_THAT(Slots(schema, "point"), ElementsAre("COORDINATES"));
}

TEST(ExpressReader, SkipsSubtypeConstraints) {
    const SchemaPtr schema = ParseBody(R"(
ENTITY a ABSTRACT SUPERTYPE OF (ONEOF (b, c) ANDOR (d AND e)); END_ENTITY;
ENTITY b SUBTYPE OF (a); END_ENTITY;
ENTITY c SUBTYPE OF (a); END_ENTITY;
ENTITY d SUPERTYPE OF (e) SUBTYPE OF (a); END_ENTITY;
ENTITY e ABSTRACT SUBTYPE OF (d); END_ENTITY;
SUBTYPE_CONSTRAINT sc FOR a; ABSTRACT SUPERTYPE; TOTAL_OVER (b, c); ONEOF (b, c);
END_SUBTYPE_CONSTRAINT;
ENTITY f SUPERTYPE; END_ENTITY;)");
    EXPECT_THAT(EntityNames(schema), ElementsAre("A", "B", "C", "D", "E", "F"));
    EXPECT_TRUE(Entity(schema, "e").IsKindOf(std::string_view("a")));
}

TEST(ExpressReader, SkipsInterfacesToOtherSchemas) {
    const SchemaPtr schema = ParseBody(R"(
USE FROM other;
USE FROM geometry (point, line AS segment);
REFERENCE FROM support_schema (bag_to_set, label AS text);
ENTITY a; END_ENTITY;)");
    EXPECT_THAT(EntityNames(schema), ElementsAre("A"));
}

TEST(ExpressReader, TakesOnlyExplicitAttributesOfAnEntityType) {
    const SchemaPtr schema = ParseBody(R"(
ENTITY whole;
  id, code : STRING;
  parts : OPTIONAL LIST OF UNIQUE part;
DERIVE
  count : INTEGER := SIZEOF(parts);
  first : part := parts[1];
INVERSE
  owners : SET [0:?] OF owner FOR owned;
  keeper : owner FOR owned;
UNIQUE
  ur1 : id, code;
  ur2 : SELF\whole.id;
WHERE
  wr1 : {1 <= count <= 3};
  SIZEOF(QUERY(p <* parts | p.whole :<>: SELF)) = 0;
END_ENTITY;
ENTITY part; whole : whole; END_ENTITY;
ENTITY owner; owned : whole; END_ENTITY;)");
    EXPECT_THAT(Slots(schema, "whole"), ElementsAre("ID", "CODE", "PARTS"));
    const auto& slots = Entity(schema, "whole").Slots();
    EXPECT_FALSE(slots[0].attribute->optional);
    EXPECT_FALSE(slots[1].attribute->optional);
    EXPECT_TRUE(slots[2].attribute->optional);
    EXPECT_THAT(Slots(schema, "part"), ElementsAre("WHOLE"));
}

// ---- Types

TEST(ExpressReader, ReadsSimpleTypes) {
    const SchemaPtr schema = ParseBody(R"(
CONSTANT size : INTEGER := 8; END_CONSTANT;
ENTITY a;
  a1 : INTEGER;
  a2 : REAL;
  a3 : REAL (size * 2);
  a4 : NUMBER;
  a5 : STRING;
  a6 : STRING (80) FIXED;
  a7 : BOOLEAN;
  a8 : LOGICAL;
  a9 : BINARY;
  a10 : BINARY (size + 1) FIXED;
  a11 : STRING ((size + LENGTH('a)b')) * 2) FIXED;
END_ENTITY;)");
    using kor::Base;
    const Base expected[] = {Base::Integer, Base::Real,   Base::Real,    Base::Number,
                             Base::String,  Base::String, Base::Boolean, Base::Logical,
                             Base::Binary,  Base::Binary, Base::String};
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(Entity(schema, "a").Slots()[i].domain->base, expected[i]) << "a" << i + 1;
    }
}

TEST(ExpressReader, ReadsAggregatesWithBoundsThatAreExpressions) {
    const SchemaPtr schema = ParseBody(R"(
ENTITY a;
  a1 : LIST [1:?] OF REAL;
  a2 : ARRAY [0:SIZEOF([1, [2, 3]]) - 1] OF OPTIONAL UNIQUE INTEGER;
  a3 : SET [LENGTH('a]b') : f(x[1]) ** 2] OF LIST [2:2] OF STRING;
  a4 : BAG OF b;
  a5 : LIST [0:?] OF UNIQUE LIST OF SET [1:(* ] *)2] OF b;
END_ENTITY;
ENTITY b; END_ENTITY;)");
    const auto element = [&schema](const std::string& attribute, int depth) {
        const Domain* domain = &DomainOf(schema, "a", attribute);
        for (int i = 0; i < depth; ++i) {
            EXPECT_EQ(domain->base, kor::Base::Aggregate) << attribute << " " << i;
            domain = domain->element;
        }
        return domain;
    };
    EXPECT_EQ(element("a1", 1)->base, kor::Base::Real);
    EXPECT_EQ(element("a2", 1)->base, kor::Base::Integer);
    EXPECT_EQ(element("a3", 2)->base, kor::Base::String);
    EXPECT_EQ(element("a4", 1)->base, kor::Base::Entity);
    EXPECT_EQ(element("a5", 3)->base, kor::Base::Entity);
    EXPECT_EQ(element("a5", 3)->entity, &Entity(schema, "b"));
}

TEST(ExpressReader, KeepsKindAndBoundsOfAggregates) {
    const SchemaPtr schema = ParseBody(R"(
ENTITY a;
  a1 : LIST OF REAL;
  a2 : LIST [1:?] OF UNIQUE REAL;
  a3 : SET [2:4] OF REAL;
  a4 : BAG [0:f(3)] OF REAL;
  a5 : ARRAY [1:3] OF OPTIONAL REAL;
  a6 : ARRAY [0:n] OF UNIQUE REAL;
  a7 : LIST [n-1:10] OF REAL;
  a8 : three;
END_ENTITY;
TYPE three = LIST [3:3] OF REAL; END_TYPE;)");
    using Kind = kor::AggregateForm::Kind;
    constexpr std::uint64_t kOpen = kor::AggregateForm::kUnbounded;
    struct Expected {
        const char* attribute;
        Kind kind;
        std::uint64_t least, most;
        bool unique, optionalMembers;
    };
    constexpr Expected kExpected[] = {
        {"a1", Kind::List, 0, kOpen, false, false}, {"a2", Kind::List, 1, kOpen, true, false},
        {"a3", Kind::Set, 2, 4, true, false},       {"a4", Kind::Bag, 0, kOpen, false, false},
        {"a5", Kind::Array, 3, 3, false, true},     {"a6", Kind::Array, 0, kOpen, true, false},
        {"a7", Kind::List, 0, 10, false, false},    {"a8", Kind::List, 3, 3, false, false},
    };
    for (const Expected& expected : kExpected) {
        const kor::AggregateForm& form = DomainOf(schema, "a", expected.attribute).form;
        EXPECT_EQ(form.kind, expected.kind) << expected.attribute;
        EXPECT_EQ(form.least, expected.least) << expected.attribute;
        EXPECT_EQ(form.most, expected.most) << expected.attribute;
        EXPECT_EQ(form.unique, expected.unique) << expected.attribute;
        EXPECT_EQ(form.optionalMembers, expected.optionalMembers) << expected.attribute;
    }
}

TEST(ExpressReader, ARedeclarationSaysWhetherAnAttributeMayBeUnset) {
    const SchemaPtr schema = ParseBody(R"(
ENTITY a; x : OPTIONAL STRING; y : STRING; END_ENTITY;
ENTITY b SUBTYPE OF (a); SELF\a.x : STRING; END_ENTITY;
ENTITY c SUBTYPE OF (b); END_ENTITY;)");
    const auto optional = [&schema](const char* entity) {
        std::vector<bool> slots;
        for (const kor::Slot& slot : Entity(schema, entity).Slots()) slots.push_back(slot.optional);
        return slots;
    };
    EXPECT_THAT(optional("a"), ElementsAre(true, false));
    EXPECT_THAT(optional("b"), ElementsAre(false, false));
    EXPECT_THAT(optional("c"), ElementsAre(false, false));
}

TEST(ExpressReader, ResolvesReferencesForward) {
    const SchemaPtr schema = ParseBody(R"(
ENTITY sub SUBTYPE OF (super); x : far_label; y : SET OF later; z : choice; END_ENTITY;
TYPE far_label = label; WHERE wr1 : SELF <> ''; END_TYPE;
TYPE choice = SELECT (label, later); END_TYPE;
ENTITY super; s : INTEGER; END_ENTITY;
TYPE label = STRING; END_TYPE;
ENTITY later; END_ENTITY;)");
    EXPECT_THAT(Slots(schema, "sub"), ElementsAre("S", "X", "Y", "Z"));
    EXPECT_EQ(DomainOf(schema, "sub", "x").base, kor::Base::String);
    EXPECT_EQ(DomainOf(schema, "sub", "y").element->entity, &Entity(schema, "later"));
    EXPECT_THAT(Choices(DomainOf(schema, "sub", "z")), UnorderedElementsAre("LABEL", "LATER"));
}

TEST(ExpressReader, ReadsDefinedAggregates) {
    const SchemaPtr schema = ParseBody(R"(
TYPE row = LIST [3:3] OF REAL; END_TYPE;
TYPE matrix = ARRAY [1:3] OF row; END_TYPE;
ENTITY a; x : matrix; END_ENTITY;)");
    const Domain& matrix = DomainOf(schema, "a", "x");
    ASSERT_EQ(matrix.base, kor::Base::Aggregate);
    ASSERT_EQ(matrix.element->base, kor::Base::Aggregate);
    EXPECT_EQ(matrix.element->element->base, kor::Base::Real);
}

TEST(ExpressReader, ResolvesSelectsOfSelects) {
    const SchemaPtr schema = ParseBody(R"(
TYPE label = STRING; END_TYPE;
TYPE len = REAL; END_TYPE;
TYPE pos_len = len; WHERE SELF > 0.0; END_TYPE;
TYPE row = LIST OF len; END_TYPE;
TYPE colour = ENUMERATION OF (red); END_TYPE;
TYPE inner = SELECT (len, pos_len, a); END_TYPE;
TYPE middle = SELECT (inner, row, b); END_TYPE;
TYPE outer = SELECT (label, middle, colour, inner); END_TYPE;
ENTITY a; x : outer; END_ENTITY;
ENTITY b; END_ENTITY;)");
    const Domain& outer = DomainOf(schema, "a", "x");
    EXPECT_TRUE(outer.IsSelect());
    EXPECT_THAT(Choices(outer),
                UnorderedElementsAre("LABEL", "LEN", "POS_LEN", "ROW", "COLOUR", "A", "B"));
    ASSERT_NE(outer.Choice("POS_LEN"), nullptr);
    EXPECT_EQ(outer.Choice("POS_LEN")->base, kor::Base::Real);
    ASSERT_NE(outer.Choice("ROW"), nullptr);
    EXPECT_EQ(outer.Choice("ROW")->base, kor::Base::Aggregate);
    EXPECT_EQ(outer.Choice("NONE"), nullptr);
}

TEST(ExpressReader, ATypeNamedAfterASelectIsThatSelect) {
    const SchemaPtr schema = ParseBody(R"(
TYPE choice = SELECT (a); END_TYPE;
TYPE renamed = choice; END_TYPE;
ENTITY a; x : renamed; END_ENTITY;)");
    EXPECT_THAT(Choices(DomainOf(schema, "a", "x")), ElementsAre("A"));
}

TEST(ExpressReader, ASelectMayHoldListsOfItself) {
    const SchemaPtr schema = ParseBody(R"(
TYPE value = SELECT (label, values); END_TYPE;
TYPE values = LIST OF value; END_TYPE;
TYPE label = STRING; END_TYPE;
ENTITY a; x : value; END_ENTITY;)");
    const Domain& value = DomainOf(schema, "a", "x");
    EXPECT_THAT(Choices(value), UnorderedElementsAre("LABEL", "VALUES"));
    ASSERT_NE(value.Choice("VALUES"), nullptr);
    EXPECT_THAT(Choices(*value.Choice("VALUES")->element), UnorderedElementsAre("LABEL", "VALUES"));
}

const char kExtensible[] = R"(
TYPE len = REAL; END_TYPE;
TYPE mass = REAL; END_TYPE;
TYPE age = REAL; END_TYPE;
TYPE base = EXTENSIBLE SELECT (len); END_TYPE;
TYPE wider = EXTENSIBLE SELECT BASED_ON base WITH (mass); END_TYPE;
TYPE widest = SELECT BASED_ON wider WITH (age, e); END_TYPE;
TYPE things = EXTENSIBLE GENERIC_ENTITY SELECT (e); END_TYPE;
TYPE nothing_yet = EXTENSIBLE SELECT; END_TYPE;
TYPE something = SELECT BASED_ON nothing_yet WITH (len); END_TYPE;
TYPE colour = EXTENSIBLE ENUMERATION OF (red, green); END_TYPE;
TYPE more_colours = ENUMERATION BASED_ON colour WITH (blue); END_TYPE;
TYPE same_colours = ENUMERATION BASED_ON colour; END_TYPE;
TYPE shade = EXTENSIBLE ENUMERATION; END_TYPE;
ENTITY e;
  x_base : base; x_wider : wider; x_widest : widest; x_things : things; x_nothing : nothing_yet;
  x_something : something; c1 : colour; c2 : more_colours; c3 : same_colours; c4 : shade;
END_ENTITY;)";

TEST(ExpressReader, AnExtensionHoldsWhatTheExtendedSelectHolds) {
    const SchemaPtr schema = ParseBody(kExtensible);
    EXPECT_THAT(Choices(DomainOf(schema, "e", "x_widest")),
                UnorderedElementsAre("LEN", "MASS", "AGE", "E"));
    EXPECT_THAT(Choices(DomainOf(schema, "e", "x_something")), UnorderedElementsAre("LEN"));
    EXPECT_THAT(Choices(DomainOf(schema, "e", "x_things")), UnorderedElementsAre("E"));
}

// An extension widens the select everywhere in the schema.
TEST(ExpressReader, AnExtensibleSelectHoldsWhatItsExtensionsHold) {
    const SchemaPtr schema = ParseBody(kExtensible);
    EXPECT_THAT(Choices(DomainOf(schema, "e", "x_base")),
                UnorderedElementsAre("LEN", "MASS", "AGE", "E"));
    EXPECT_THAT(Choices(DomainOf(schema, "e", "x_wider")),
                UnorderedElementsAre("LEN", "MASS", "AGE", "E"));
    EXPECT_THAT(Choices(DomainOf(schema, "e", "x_nothing")), UnorderedElementsAre("LEN"));
}

TEST(ExpressReader, ReadsExtensibleEnumerations) {
    const SchemaPtr schema = ParseBody(kExtensible);
    for (const char* attribute : {"c1", "c2", "c3", "c4"}) {
        EXPECT_EQ(DomainOf(schema, "e", attribute).base, kor::Base::Enumeration) << attribute;
    }
}

TEST(ExpressReader, ListsTheItemsOfAnEnumeration) {
    const SchemaPtr schema = ParseBody(R"(
TYPE plain = ENUMERATION OF (Red, green); END_TYPE;
TYPE alias = plain; END_TYPE;
TYPE base = EXTENSIBLE ENUMERATION OF (a, b); END_TYPE;
TYPE more = ENUMERATION BASED_ON base WITH (c); END_TYPE;
TYPE other = ENUMERATION BASED_ON base WITH (d); END_TYPE;
TYPE open = EXTENSIBLE ENUMERATION; END_TYPE;
TYPE choice = SELECT (plain, more, text); END_TYPE;
TYPE text = STRING; END_TYPE;
TYPE texts = SELECT (text); END_TYPE;
ENTITY e; plain : plain; alias : alias; base : base; more : more; open : open; choice : choice;
  texts : texts; number : INTEGER;
END_ENTITY;)");
    const auto admitted = [&](const char* attribute) {
        std::string items;
        for (const char* item : {"RED", "green", "Blue", "A", "B", "C", "D"}) {
            if (DomainOf(schema, "e", attribute).AdmitsItem(item)) items += std::string(item) + ' ';
        }
        return items;
    };
    EXPECT_EQ(admitted("plain"), "RED green ");
    EXPECT_EQ(admitted("alias"), "RED green ");
    // An extensible enumeration has the items of all its extensions; an extension has those of the
    // enumerations that it extends.
    EXPECT_EQ(admitted("base"), "A B C D ");
    EXPECT_EQ(admitted("more"), "A B C ");
    EXPECT_EQ(admitted("choice"), "RED green A B C ");
    // If no items are declared, every word may be one.
    const std::string all = "RED green Blue A B C D ";
    EXPECT_EQ(admitted("open"), all);
    EXPECT_EQ(admitted("texts"), all);
    EXPECT_EQ(admitted("number"), all);
}

// ---- Inheritance

TEST(ExpressReader, InheritsDepthFirstAndEachSupertypeOnce) {
    const SchemaPtr schema = ParseBody(R"(
ENTITY root; r1, r2 : INTEGER; END_ENTITY;
ENTITY left SUBTYPE OF (root); l : INTEGER; END_ENTITY;
ENTITY right SUBTYPE OF (root); ri : INTEGER; END_ENTITY;
ENTITY left_first SUBTYPE OF (left, right); b : INTEGER; END_ENTITY;
ENTITY right_first SUBTYPE OF (right, left); b : INTEGER; END_ENTITY;
ENTITY late_root SUBTYPE OF (left, root); b : INTEGER; END_ENTITY;
ENTITY other; o : INTEGER; END_ENTITY;
ENTITY bottom SUBTYPE OF (other, right_first, left_first); z : INTEGER; END_ENTITY;)");
    EXPECT_THAT(Slots(schema, "left_first"), ElementsAre("R1", "R2", "L", "RI", "B"));
    EXPECT_THAT(Slots(schema, "right_first"), ElementsAre("R1", "R2", "RI", "L", "B"));
    EXPECT_THAT(Slots(schema, "late_root"), ElementsAre("R1", "R2", "L", "B"));
    EXPECT_THAT(Slots(schema, "bottom"), ElementsAre("O", "R1", "R2", "RI", "L", "B", "B", "Z"));
    for (const char* kind : {"bottom", "other", "right_first", "left_first", "left", "root"}) {
        EXPECT_TRUE(Entity(schema, "bottom").IsKindOf(std::string_view(kind))) << kind;
    }
    EXPECT_FALSE(Entity(schema, "bottom").IsKindOf(std::string_view("late_root")));
    EXPECT_FALSE(Entity(schema, "root").IsKindOf(std::string_view("left")));
}

TEST(ExpressReader, KeepsAttributesOfTheSameNameFromDifferentSupertypes) {
    const SchemaPtr schema = ParseBody(R"(
ENTITY a; name : STRING; END_ENTITY;
ENTITY b; name : STRING; END_ENTITY;
ENTITY c SUBTYPE OF (a, b); END_ENTITY;)");
    EXPECT_THAT(Slots(schema, "c"), ElementsAre("NAME", "NAME"));
}

TEST(ExpressReader, ARedeclaredAttributeStaysWhereItWasWithItsNarrowerType) {
    const SchemaPtr schema = ParseBody(R"(
ENTITY a; x : NUMBER; y : STRING; z : LIST OF NUMBER; END_ENTITY;
ENTITY b SUBTYPE OF (a); b1 : REAL; SELF\a.x : INTEGER; SELF\a.z : LIST [1:?] OF REAL; END_ENTITY;
ENTITY c SUBTYPE OF (b); END_ENTITY;)");
    for (const char* name : {"b", "c"}) {
        EXPECT_THAT(Slots(schema, name), ElementsAre("X", "Y", "Z", "B1"));
        EXPECT_EQ(DomainOf(schema, name, "x").base, kor::Base::Integer);
        EXPECT_EQ(DomainOf(schema, name, "z").element->base, kor::Base::Real);
    }
    EXPECT_EQ(DomainOf(schema, "a", "x").base, kor::Base::Number);
}

TEST(ExpressReader, ARenamedAttributeIsFoundUnderItsNewName) {
    const SchemaPtr schema = ParseBody(R"(
ENTITY a; x : NUMBER; y : STRING; END_ENTITY;
ENTITY b SUBTYPE OF (a); SELF\a.y RENAMED title : STRING; own : REAL; END_ENTITY;
ENTITY c SUBTYPE OF (b); END_ENTITY;)");
    for (const char* name : {"b", "c"}) {
        EXPECT_THAT(Slots(schema, name), SizeIs(3));
        EXPECT_EQ(Entity(schema, name).SlotOf(std::string_view("TITLE")), 1);
        EXPECT_EQ(Entity(schema, name).SlotOf(std::string_view("own")), 2);
    }
    EXPECT_EQ(Entity(schema, "a").SlotOf(std::string_view("title")), std::nullopt);
}

TEST(ExpressReader, AnAttributeMayBeRedeclaredSeveralLevelsDown) {
    const SchemaPtr schema = ParseBody(R"(
ENTITY root; r : NUMBER; END_ENTITY;
ENTITY left SUBTYPE OF (root); END_ENTITY;
ENTITY right SUBTYPE OF (root); END_ENTITY;
ENTITY bottom SUBTYPE OF (left, right); SELF\root.r : INTEGER; END_ENTITY;
ENTITY under SUBTYPE OF (bottom); SELF\bottom.r RENAMED q : INTEGER; END_ENTITY;)");
    EXPECT_THAT(Slots(schema, "bottom"), ElementsAre("R"));
    EXPECT_EQ(DomainOf(schema, "bottom", "r").base, kor::Base::Integer);
    EXPECT_EQ(Entity(schema, "under").SlotOf(std::string_view("q")), 0);
}

TEST(ExpressReader, ADerivedRedeclarationIsDerivedInItsSubtypesToo) {
    const SchemaPtr schema = ParseBody(R"(
ENTITY a; x, y : REAL; END_ENTITY;
ENTITY b SUBTYPE OF (a); n : REAL; DERIVE SELF\a.y : REAL := f(SELF.n, ';'); END_ENTITY;
ENTITY c SUBTYPE OF (b); END_ENTITY;
ENTITY d SUBTYPE OF (a); DERIVE SELF\a.x RENAMED u : REAL := 1.0; END_ENTITY;
ENTITY e SUBTYPE OF (a); END_ENTITY;)");
    EXPECT_THAT(Slots(schema, "a"), ElementsAre("X", "Y"));
    EXPECT_THAT(Slots(schema, "b"), ElementsAre("X", "(Y)", "N"));
    EXPECT_THAT(Slots(schema, "c"), ElementsAre("X", "(Y)", "N"));
    EXPECT_TRUE(Entity(schema, "d").Slots()[0].derived);
    EXPECT_FALSE(Entity(schema, "d").Slots()[1].derived);
    EXPECT_THAT(Slots(schema, "e"), ElementsAre("X", "Y"));
}

TEST(ExpressReader, AnAttributeThatOneOfTwoSupertypesDerivesIsDerived) {
    const SchemaPtr schema = ParseBody(R"(
ENTITY a; x : REAL; END_ENTITY;
ENTITY plain SUBTYPE OF (a); END_ENTITY;
ENTITY deriving SUBTYPE OF (a); DERIVE SELF\a.x : REAL := 1.0; END_ENTITY;
ENTITY b SUBTYPE OF (plain, deriving); END_ENTITY;
ENTITY c SUBTYPE OF (deriving, plain); END_ENTITY;)");
    EXPECT_THAT(Slots(schema, "b"), ElementsAre("(X)"));
    EXPECT_THAT(Slots(schema, "c"), ElementsAre("(X)"));
}

// ---- Errors

struct BadSchema {
    const char* name;
    // The error is at the "^", which is removed; without one, anywhere.
    const char* text;
    const char* mentions;  // named in the message, in lower case
    bool anyColumn = false;
};

std::ostream& operator<<(std::ostream& stream, const BadSchema& schema) {
    return stream << schema.name;
}

class BadSchemas : public testing::TestWithParam<BadSchema> {};

TEST_P(BadSchemas, AreRefusedWithTheirPlace) {
    std::string text = GetParam().text;
    const std::size_t mark = text.find('^');
    std::uint64_t line = 0;
    std::uint64_t column = 0;
    if (mark != std::string::npos) {
        text.erase(mark, 1);
        const std::string before = text.substr(0, mark);
        line = 1 + static_cast<std::uint64_t>(std::count(before.begin(), before.end(), '\n'));
        column = mark - (before.rfind('\n') + 1) + 1;
    }
    Messages messages;
    EXPECT_THAT(exchange::ParseSchemas(text, "bad.exp", messages), IsEmpty());
    ASSERT_GE(messages.ErrorCount(), 1U);
    const Message& error = messages.Errors().front();
    EXPECT_EQ(error.file, "bad.exp");
    EXPECT_THAT(Lower(error.text), testing::HasSubstr(GetParam().mentions));
    if (line == 0) return;
    EXPECT_EQ(error.line, line) << error.ToString();
    if (!GetParam().anyColumn) {
        EXPECT_EQ(error.column, column) << error.ToString();
    }
}

INSTANTIATE_TEST_SUITE_P(
    ExpressReader, BadSchemas,
    testing::Values(
        BadSchema{"Empty", "", ""},  //
        BadSchema{"OnlyRemarks", "-- nothing\n(* here *)\n", ""},
        BadSchema{"NoSchema", "^ENTITY a; END_ENTITY;", ""},
        BadSchema{"NoName", "SCHEMA ^; END_SCHEMA;", ""},
        BadSchema{"NoEndOfSchema", "SCHEMA a;\nENTITY b; END_ENTITY;\n", "end_schema"},
        BadSchema{"NoEndOfEntity", "SCHEMA a;\nENTITY b; x : REAL;\n^END_SCHEMA;", "", true},
        BadSchema{"NoEndOfFunction", "SCHEMA a;\nFUNCTION f : REAL; RETURN (1.0);\nEND_SCHEMA;",
                  ""},
        BadSchema{"NoColon", "SCHEMA a;\n  ENTITY b;\n    x ^REAL;\n  END_ENTITY;\nEND_SCHEMA;",
                  ":"},
        BadSchema{"NoType", "SCHEMA a;\n  ENTITY b;\n\tx : ^;\n  END_ENTITY;\nEND_SCHEMA;", ""},
        BadSchema{"NoSemicolon",
                  "SCHEMA a;\nENTITY b;\nx : REAL ^y : REAL;\nEND_ENTITY;\n"
                  "END_SCHEMA;",
                  ";"},
        BadSchema{"NoOf", "SCHEMA a;\nENTITY b; x : LIST [1:?] ^REAL; END_ENTITY;\nEND_SCHEMA;",
                  "of"},
        BadSchema{"OpenSelect", "SCHEMA a;\nTYPE t = SELECT (b^; END_TYPE;\nEND_SCHEMA;", ""},
        BadSchema{"OpenBounds",
                  "SCHEMA a;\nENTITY b; x : LIST [1:? OF REAL; END_ENTITY;\n"
                  "END_SCHEMA;",
                  ""},
        BadSchema{"OpenRemark", "SCHEMA a;\n^(* (* never closed *)\nEND_SCHEMA;", ""},
        BadSchema{"OpenString",
                  "SCHEMA a;\nENTITY b; WHERE w : x = ^'open;\nEND_ENTITY;\nEND_SCHEMA;", "", true},
        BadSchema{"StrayCharacter", "SCHEMA a;\r\n\r\nENTITY b; x ^# REAL; END_ENTITY;END_SCHEMA;",
                  ""},
        BadSchema{"UnknownType",
                  "SCHEMA a;\nTYPE length = REAL; END_TYPE;\nENTITY b;\n  x : ^lenght;\n"
                  "END_ENTITY;\nEND_SCHEMA;",
                  "did you mean 'length'"},
        BadSchema{"UnknownMemberType",
                  "SCHEMA a;\nENTITY product; END_ENTITY;\nENTITY b;\n  x : LIST [1:?] OF "
                  "^prodct;\nEND_ENTITY;\nEND_SCHEMA;",
                  "did you mean 'product'"},
        BadSchema{"UnknownAlias", "SCHEMA a;\nTYPE t = ^nonesuch; END_TYPE;\nEND_SCHEMA;",
                  "nonesuch"},
        BadSchema{"UnknownSupertype",
                  "SCHEMA a;\nENTITY part; END_ENTITY;\nENTITY b SUBTYPE OF (^parts); END_ENTITY;"
                  "\nEND_SCHEMA;",
                  "did you mean 'part'", true},
        BadSchema{"ATypeAsASupertype",
                  "SCHEMA a;\nTYPE part = REAL; END_TYPE;\nENTITY parts; END_ENTITY;\n"
                  "ENTITY b SUBTYPE OF (^part); END_ENTITY;\nEND_SCHEMA;",
                  "did you mean 'parts'", true},
        BadSchema{"UnknownSelectMember",
                  "SCHEMA a;\nENTITY part; END_ENTITY;\nTYPE t = SELECT (part, ^prat); END_TYPE;\n"
                  "END_SCHEMA;",
                  "did you mean 'part'", true},
        BadSchema{"UnknownBase",
                  "SCHEMA a;\nTYPE t = SELECT BASED_ON ^nonesuch; END_TYPE;\nEND_SCHEMA;",
                  "nonesuch", true},
        BadSchema{"RedeclaresNoAttribute",
                  "SCHEMA a;\nENTITY b; name : REAL; END_ENTITY;\nENTITY c SUBTYPE OF (b);\n"
                  "  ^SELF\\b.nmae : REAL;\nEND_ENTITY;\nEND_SCHEMA;",
                  "nmae", true},
        BadSchema{"RedeclaresNoSupertype",
                  "SCHEMA a;\nENTITY b; x : REAL; END_ENTITY;\nENTITY c;\n"
                  "  ^SELF\\b.x : REAL;\nEND_ENTITY;\nEND_SCHEMA;",
                  "b", true},
        BadSchema{"RedeclaresItsOwnAttribute",
                  "SCHEMA a;\nENTITY b; x : REAL;\n  ^SELF\\b.x : REAL;\nEND_ENTITY;\nEND_SCHEMA;",
                  "'b.x' is not an attribute of a supertype", true},
        BadSchema{"RedeclaresAnAttributeOfItsNamesake",
                  "SCHEMA a;\nENTITY b; x : REAL; END_ENTITY;\n"
                  "ENTITY ^B; SELF\\b.x : REAL; END_ENTITY;\nEND_SCHEMA;",
                  "b", true},
        BadSchema{"EntityTwice",
                  "SCHEMA a;\nENTITY b; END_ENTITY;\nENTITY ^B; END_ENTITY;\nEND_SCHEMA;", "b",
                  true},
        BadSchema{"TypeTwice",
                  "SCHEMA a;\nTYPE b = REAL; END_TYPE;\nTYPE ^b = REAL; END_TYPE;\nEND_SCHEMA;",
                  "b", true},
        BadSchema{"TypeAndEntityOfOneName",
                  "SCHEMA a;\nTYPE b = REAL; END_TYPE;\nENTITY b; END_ENTITY;\nEND_SCHEMA;", "b"},
        BadSchema{"OwnSupertype", "SCHEMA a;\nENTITY ^b SUBTYPE OF (b); END_ENTITY;\nEND_SCHEMA;",
                  "b", true},
        BadSchema{"CircleOfSupertypes",
                  "SCHEMA a;\nENTITY b SUBTYPE OF (c); END_ENTITY;\n"
                  "ENTITY c SUBTYPE OF (b); END_ENTITY;\nEND_SCHEMA;",
                  ""},
        BadSchema{"CircleOfTypes",
                  "SCHEMA a;\nTYPE t = u; END_TYPE;\nTYPE u = t; END_TYPE;\n"
                  "ENTITY b; x : t; END_ENTITY;\nEND_SCHEMA;",
                  ""}),
    [](const auto& tested) { return std::string(tested.param.name); });

// ---- Limits

TEST(ExpressReader, TakesAThousandLevelsOfSubtypesAndNoMore) {
    const auto chain = [](int levels) {
        std::string text = "SCHEMA s;\nENTITY e0; END_ENTITY;\n";
        for (int i = 1; i <= levels; ++i) {
            text += "ENTITY e" + std::to_string(i) + " SUBTYPE OF (e" + std::to_string(i - 1) +
                    "); a" + std::to_string(i) + " : INTEGER; END_ENTITY;\n";
        }
        return text + "END_SCHEMA;";
    };
    const SchemaPtr schema = Parse(chain(1000));
    EXPECT_EQ(schema->FindEntity(std::string_view("E1000"))->Slots().size(), 1000U);
    Messages messages;
    EXPECT_THAT(exchange::ParseSchemas(chain(4000), "schema", messages), IsEmpty());
    ASSERT_EQ(messages.ErrorCount(), 1U);
    EXPECT_EQ(messages.Errors().front().ToString(),
              "schema:1003:8: entity 'e1001' has more than 1,000 levels of supertypes");
}

TEST(ExpressReader, RefusesASchemaThatInheritsTooMuch) {
    std::string text = "SCHEMA s;\n";
    std::string all = "ENTITY all SUBTYPE OF (s0";
    for (int i = 0; i < 2000; ++i) {
        text += "ENTITY s" + std::to_string(i) + "; a" + std::to_string(i) +
                " : INTEGER; END_ENTITY;\n";
        if (i != 0) all += ",s" + std::to_string(i);
    }
    text += all + "); END_ENTITY;\n";
    for (int i = 0; i < 2000; ++i) {
        text += "ENTITY t" + std::to_string(i) + " SUBTYPE OF (all); END_ENTITY;\n";
    }
    Messages messages;
    EXPECT_THAT(exchange::ParseSchemas(text + "END_SCHEMA;", "schema", messages), IsEmpty());
    ASSERT_EQ(messages.ErrorCount(), 1U);
    EXPECT_THAT(messages.Errors().front().text,
                HasSubstr("inherit more than 2,000,000 attributes and supertypes"));
}

TEST(ExpressReader, RefusesSelectsThatListTooMuch) {
    std::string text = "SCHEMA s;\nTYPE t = REAL; END_TYPE;\nTYPE s0 = SELECT (t); END_TYPE;\n";
    for (int i = 1; i < 4000; ++i) {
        text += "TYPE s" + std::to_string(i) + " = SELECT (t, s" + std::to_string(i - 1) +
                "); END_TYPE;\n";
    }
    Messages messages;
    EXPECT_THAT(exchange::ParseSchemas(text + "END_SCHEMA;", "schema", messages), IsEmpty());
    ASSERT_EQ(messages.ErrorCount(), 1U);
    EXPECT_THAT(messages.Errors().front().text, HasSubstr("list more than 1,000,000 types"));
}

// Each alias must be followed only once: otherwise 30,000 of them take half a minute.
TEST(ExpressReader, FollowsLongChainsOfAliases) {
    std::string forward = "SCHEMA s;\n";
    std::string backward = "TYPE t0 = SELECT (label, e); END_TYPE;\n";
    for (int i = 30'000; i > 0; --i) {
        forward += "TYPE f" + std::to_string(i) + " = f" + std::to_string(i - 1) + "; END_TYPE;\n";
    }
    for (int i = 1; i <= 30'000; ++i) {
        backward += "TYPE t" + std::to_string(i) + " = t" + std::to_string(i - 1) + "; END_TYPE;\n";
    }
    const SchemaPtr schema = Parse(forward + "TYPE f0 = INTEGER; END_TYPE;\n" + backward +
                                   "TYPE label = STRING; END_TYPE;\n"
                                   "ENTITY e; a : f30000; b : t30000; END_ENTITY;\nEND_SCHEMA;");
    EXPECT_EQ(DomainOf(schema, "e", "a").base, kor::Base::Integer);
    EXPECT_THAT(Choices(DomainOf(schema, "e", "b")), ElementsAre("LABEL", "E"));
}

TEST(ExpressReader, SuggestsNamesInTheMessagesThatAreKept) {
    std::string text = "SCHEMA s;\nENTITY known; END_ENTITY;\n";
    for (int i = 0; i < 10'000; ++i) {
        text += "ENTITY e" + std::to_string(i) + "; a : knwon; END_ENTITY;\n";
    }
    Messages messages;
    exchange::ParseSchemas(text + "END_SCHEMA;", "schema", messages);
    EXPECT_EQ(messages.ErrorCount(), 10'000U);
    ASSERT_EQ(messages.Errors().size(), Messages::kKept);
    for (const Message& error : messages.Errors()) {
        EXPECT_THAT(error.text, HasSubstr("did you mean 'KNOWN'?"));
    }
}

TEST(ExpressReader, RedeclaresManyAttributes) {
    std::string text = "SCHEMA s;\nENTITY a;\n";
    std::string narrowed = "ENTITY b SUBTYPE OF (a);\n";
    for (int i = 0; i < 20'000; ++i) {
        const std::string number = std::to_string(i);
        text += 'a' + number + " : NUMBER;\n";
        narrowed += "SELF\\a.a" + number + " RENAMED b" + number + " : REAL;\n";
    }
    const SchemaPtr schema = Parse(text + "END_ENTITY;\n" + narrowed + "END_ENTITY;\nEND_SCHEMA;");
    EXPECT_EQ(DomainOf(schema, "b", "a19999").base, kor::Base::Real);
    EXPECT_EQ(DomainOf(schema, "b", "b19999").base, kor::Base::Real);
}

// ---- Lines and byte order marks

TEST(ExpressReader, TakesAByteOrderMark) {
    EXPECT_EQ(Parse("\xEF\xBB\xBFSCHEMA marked; END_SCHEMA;")->Name().View(), "MARKED");
}

TEST(ExpressReader, CountsLinesOfAllSystems) {
    for (const char* end : {"\n", "\r\n", "\r"}) {
        std::string text = "SCHEMA s; -- a remark\nENTITY e;\n(* more\n*)\n wrong END_ENTITY;";
        for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos;) {
            text.replace(at, 1, end);
            at += std::string(end).size();
        }
        Messages messages;
        exchange::ParseSchemas(text, "schema", messages);
        ASSERT_EQ(messages.ErrorCount(), 1U);
        EXPECT_EQ(messages.Errors().front().line, 5U);
        EXPECT_EQ(messages.Errors().front().column, 8U);
    }
}

TEST(ExpressReader, TellsOfEveryUnknownName) {
    Messages messages;
    EXPECT_THAT(exchange::ParseSchemas("SCHEMA a;\nENTITY b;\n  x : one;\n  y : REAL;\n"
                                       "  z : SET OF two;\nEND_ENTITY;\nEND_SCHEMA;",
                                       "bad.exp", messages),
                IsEmpty());
    ASSERT_EQ(messages.ErrorCount(), 2U);
    EXPECT_EQ(messages.Errors()[0].line, 3U);
    EXPECT_EQ(messages.Errors()[0].column, 7U);
    EXPECT_EQ(messages.Errors()[1].line, 5U);
    EXPECT_EQ(messages.Errors()[1].column, 14U);
    EXPECT_EQ(messages.Errors()[1].ToString(), "bad.exp:5:14: " + messages.Errors()[1].text);
}

TEST(ExpressReader, GivesNoSchemaOfATextWhenOneIsWrong) {
    Messages messages;
    EXPECT_THAT(exchange::ParseSchemas("SCHEMA a; END_SCHEMA;\nSCHEMA b; ENTITY; END_SCHEMA;",
                                       "bad.exp", messages),
                IsEmpty());
    ASSERT_GE(messages.ErrorCount(), 1U);
    EXPECT_EQ(messages.Errors().front().line, 2U);
}

TEST(ExpressReader, KeepsTheFirstTwentyErrorsAndCountsAll) {
    std::string text = "SCHEMA a;\nENTITY b;\n";
    for (int i = 0; i < 25; ++i) {
        text += "x" + std::to_string(i) + " : unknown_" + std::to_string(i) + ";\n";
    }
    Messages messages;
    EXPECT_THAT(exchange::ParseSchemas(text + "END_ENTITY; END_SCHEMA;", "bad.exp", messages),
                IsEmpty());
    EXPECT_EQ(messages.ErrorCount(), 25U);
    ASSERT_THAT(messages.Errors(), SizeIs(20));
    EXPECT_EQ(messages.Errors().back().line, 22U);
}

TEST(ExpressReader, SurvivesEveryPrefixOfASchema) {
    const std::string text =
        "SCHEMA a '1'; (* (* r *) *) CONSTANT c : REAL := 1.0; END_CONSTANT; -- t\n"
        "TYPE s = EXTENSIBLE SELECT (e, f); END_TYPE; TYPE n = ENUMERATION OF (x, y); END_TYPE;\n"
        "ENTITY e ABSTRACT SUPERTYPE OF (ONEOF (f, g)); v : OPTIONAL LIST [1:?] OF s;\n"
        "WHERE w : v[1] <> 'it''s'; END_ENTITY; ENTITY f SUBTYPE OF (e);\n"
        "SELF\\e.v RENAMED u : LIST OF s; END_ENTITY;\n"
        "ENTITY g SUBTYPE OF (e); DERIVE SELF\\e.v : LIST OF s := [?]; END_ENTITY;\n"
        "FUNCTION q : REAL; RETURN (1.0); END_FUNCTION; RULE r FOR (e); WHERE TRUE; END_RULE;\n"
        "END_SCHEMA;";
    for (std::size_t length = 0; length < text.size(); ++length) {
        Messages messages;
        EXPECT_THAT(exchange::ParseSchemas(text.substr(0, length), "prefix", messages), IsEmpty());
        EXPECT_GE(messages.ErrorCount(), 1U) << text.substr(0, length);
    }
    EXPECT_THAT(EntityNames(Parse(text)), ElementsAre("E", "F", "G"));
}

// The result does not matter; that reading ends does.
TEST(ExpressReader, SurvivesDeepNestingAndCircles) {
    const std::size_t depth = 100000;
    std::string aggregates = "SCHEMA a; ENTITY b; x : ";
    for (std::size_t i = 0; i < depth; ++i) aggregates += "LIST OF ";
    const std::string texts[] = {
        aggregates + "REAL; END_ENTITY; END_SCHEMA;",
        std::string(2 * depth, '('),
        "SCHEMA a; (*" + std::string(2 * depth, '('),
        "SCHEMA a; ENTITY b; x : LIST [" + std::string(depth, '(') + "] OF REAL; END_ENTITY;",
        "SCHEMA a; ENTITY b; WHERE w : " + std::string(depth, '[') + "; END_ENTITY;",
        "SCHEMA a; TYPE t = LIST OF t; END_TYPE; ENTITY b; x : t; END_ENTITY; END_SCHEMA;",
        "SCHEMA a; TYPE t = SELECT (u, b); END_TYPE; TYPE u = SELECT (t, b); END_TYPE;"
        "ENTITY b; x : t; END_ENTITY; END_SCHEMA;",
        "SCHEMA a; TYPE t = EXTENSIBLE SELECT BASED_ON u; END_TYPE;"
        "TYPE u = EXTENSIBLE SELECT BASED_ON t; END_TYPE; ENTITY b; x : t; END_ENTITY;"
        "END_SCHEMA;",
    };
    for (const std::string& text : texts) {
        Messages messages;
        const auto schemas = exchange::ParseSchemas(text, "deep", messages);
        EXPECT_EQ(schemas.empty(), messages.ErrorCount() > 0) << text.substr(0, 80);
    }
}

}  // namespace
