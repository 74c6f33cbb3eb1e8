// A small schema for the tests of readers: texts, references, selects, lists, and a type with two
// subtypes that may be combined.

#ifndef TESTS_TESTSCHEMA_H
#define TESTS_TESTSCHEMA_H

#include "Exchange.h"

inline constexpr const char* kTestSchema = R"(SCHEMA test_schema;
TYPE label = STRING; END_TYPE;
TYPE colour = ENUMERATION OF (red, green); END_TYPE;
TYPE item_list = LIST OF item; END_TYPE;
TYPE choice = SELECT (label, item, item_list); END_TYPE;
ENTITY item; name : OPTIONAL label; END_ENTITY;
ENTITY special_item SUBTYPE OF (item); rank : OPTIONAL INTEGER; END_ENTITY;
ENTITY pair; first : OPTIONAL INTEGER; second : OPTIONAL INTEGER; END_ENTITY;
ENTITY holder; item : OPTIONAL item; END_ENTITY;
ENTITY holders; items : OPTIONAL LIST OF item; END_ENTITY;
ENTITY chooser; choice : OPTIONAL choice; END_ENTITY;
ENTITY coloured; colour : OPTIONAL colour; END_ENTITY;
ENTITY binary_holder; bits : OPTIONAL BINARY; END_ENTITY;
ENTITY numbers; reals : OPTIONAL LIST OF REAL; END_ENTITY;
ENTITY counter; whole : OPTIONAL INTEGER; END_ENTITY;
ENTITY base; base_name : OPTIONAL STRING; END_ENTITY;
ENTITY left SUBTYPE OF (base); left_item : OPTIONAL item; END_ENTITY;
ENTITY right SUBTYPE OF (base); right_item : OPTIONAL item; END_ENTITY;
END_SCHEMA;)";

// The built-in schemas, preceded by that one.
inline exchange::SchemaCatalog TestSchemas() {
    static const std::vector<exchange::SchemaPtr> parsed = [] {
        exchange::Messages messages;
        return exchange::ParseSchemas(kTestSchema, "schema", messages);
    }();
    exchange::SchemaCatalog schemas;
    schemas.Add(parsed.at(0));
    return schemas;
}

#endif
