// Models of the second platform: an instance is a map from names to values, an extent a vector in
// the order of creation. Names are compared in upper case.

#ifndef SECOND_MODELS_H
#define SECOND_MODELS_H

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "PlainTables.h"
#include "SdaiModel.h"
#include "SecondPlatform.h"

namespace second {

std::string Folded(std::string_view name);

// ---- The dictionary

class Schema;

class Attribute final : public SdaiAttribute {
  public:
    Attribute(const SdaiString& name, const tables::Attribute& declared)
        : SdaiAttribute(name), domain(declared.domain), derived(declared.derived) {}

    tables::Domain domain;
    bool derived;
};

class Entity final : public SdaiEntity {
  public:
    Entity(const SdaiString& name, const Schema& of) : SdaiEntity(name), schema(of) {}

    const Schema& schema;
    std::set<std::string> kinds;  // its own name and those of its supertypes
    std::map<std::string, std::shared_ptr<const Attribute>> attributes;  // inherited ones, too

    // Adds the attributes and kinds of a supertype, or of a type of a complex instance.
    void Inherit(const Entity& other);
};

class Schema final : public SdaiSchema {
  public:
    explicit Schema(const tables::Schema& declared);

    const Entity* Find(const std::string& folded) const;
    const std::map<std::string, std::unique_ptr<Entity>>& Entities() const { return entities_; }
    // The domain that any names of defined types lead to.
    const tables::Domain& Underlying(const tables::Domain& domain) const;
    // The name in the dictionary's spelling.
    SdaiString Spelt(std::string_view name) const;

  private:
    std::map<std::string, tables::Domain> types_;
    std::map<std::string, std::unique_ptr<Entity>> entities_;
};

// The value as stored in an attribute of the domain (null: any domain); aggregates are copied. No
// value if the domain is an enumeration without that item.
struct Place {
    const Schema& schema;
    const tables::Domain& domain;
};
std::optional<SdaiPrimitiveH> Stored(const SdaiPrimitiveH& value, const Place* place);

// ---- Data

class Model;

class Instance final : public SdaiAppInstance {
  public:
    Instance(Model& of, const Entity& is, unsigned long id)
        : SdaiAppInstance(&is), model(of), entity(is), number(id) {}

    Model& model;
    const Entity& entity;
    const unsigned long number;
    std::map<std::string, SdaiPrimitiveH> values;
    std::vector<SdaiPrimitiveH> replaced;  // keeps replaced aggregates alive
};

class Model final : public SdaiModel {
  public:
    explicit Model(std::shared_ptr<const Schema> schema);

    const Schema& GetSchema() const { return *schema_; }
    const Entity* Find(const std::string& folded) const;
    // The same; if there is none, adds a type that the schema does not declare.
    const Entity& FindOrAdd(const std::string& name);
    // The type of instances of several types of the schema; null if one of them is missing.
    const Entity* Complex(const std::vector<std::string>& types);
    Instance& Create(const Entity& entity, unsigned long number);
    unsigned long LargestNumber() const { return largest_; }
    const SdaiAggrInstance* Extent(const std::string& folded) const;

  private:
    Entity& Add(const std::string& name);
    void AddExtent(const std::string& folded);

    std::shared_ptr<const Schema> schema_;
    std::vector<std::unique_ptr<Instance>> instances_;
    unsigned long largest_ = 0;
    std::map<std::string, std::unique_ptr<Entity>> own_;  // complex and undeclared types
    // One for each entity type, and an empty one without a name for all other names.
    std::map<std::string, std::unique_ptr<SdaiAggrInstance>> extents_;
};

}  // namespace second

#endif
