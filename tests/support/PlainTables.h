// Schemas and data sets as tables, which the tests of every platform use: plain names and values.

#ifndef TESTS_PLAINTABLES_H
#define TESTS_PLAINTABLES_H

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tables {

// ---- A schema

// The values that an attribute accepts.
struct Domain {
    enum class Kind {
        Any,
        Integer,
        Real,
        Number,
        String,
        Boolean,
        Logical,
        Binary,
        Enumeration,
        Select,
        Named,  // an entity type or a defined type
        Aggregate,
    };

    Kind kind = Kind::Any;
    std::vector<std::string> names;         // the items, the choices, the one name
    std::shared_ptr<const Domain> members;  // of an aggregate
};

struct Attribute {
    std::string name;
    Domain domain;
    std::string redeclaredOf;  // the entity type that it is inherited from, with another domain
    bool derived = false;      // has no value of its own
};

struct Entity {
    std::string name;
    std::vector<std::string> supertypes;
    std::vector<Attribute> attributes;
};

struct Schema {
    std::string name;
    std::vector<Entity> entities;
    std::map<std::string, Domain> types;  // by name in upper case
};

// ---- A data set

struct Value;

struct Reference {
    unsigned long number;
};
struct Item {
    std::string name;
};
struct Bits {
    std::string digits;
};
struct Text {
    std::u32string characters;
};
struct Typed {
    std::string type;
    std::shared_ptr<const Value> value;
};
enum class Truth { False, True, Unknown };

struct Value {
    // std::monostate is unset.
    std::variant<std::monostate, long, double, Truth, Text, Item, Bits, Reference,
                 std::vector<Value>, Typed>
        held;
};

struct Instance {
    unsigned long number;
    std::vector<std::string> types;                     // several for a complex instance
    std::vector<std::pair<std::string, Value>> values;  // by the attribute's name
};

using DataSet = std::vector<Instance>;

}  // namespace tables

#endif
