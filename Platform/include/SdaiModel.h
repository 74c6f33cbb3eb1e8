// Models, schemas and the dictionary of the data access interface.
//
// A schema describes entity types and their attributes; it is immutable. A model is a data set: the
// instances of the entity types of one schema. A model keeps its schema alive and owns its
// instances, aggregates and extents. Returned pointers belong to the schema or the model and are
// never null unless documented. Names are case-insensitive.

#ifndef SDAIMODEL_H
#define SDAIMODEL_H

#include "SdaiAggrInstance.h"
#include "SdaiEntityInstance.h"
#include "SdaiName.h"
#include "SdaiString.h"

class SdaiModel;

// A named type: an entity type or a defined type.
class KOR_API SdaiNamedType {
  public:
    SdaiNamedType(const SdaiNamedType&) = delete;
    SdaiNamedType& operator=(const SdaiNamedType&) = delete;
    virtual ~SdaiNamedType() = default;

    // The type's name: in upper case, or as spelled in the schema for the schema "cdma". A complex
    // type is named "A+B+C", after its entity types in alphabetical order.
    const SdaiString& Name() const { return name_; }

  protected:
    explicit SdaiNamedType(SdaiString name) : name_(static_cast<SdaiString&&>(name)) {}

  private:
    SdaiString name_;
};

// The definition of an explicit attribute.
class KOR_API SdaiAttribute {
  public:
    SdaiAttribute(const SdaiAttribute&) = delete;
    SdaiAttribute& operator=(const SdaiAttribute&) = delete;
    virtual ~SdaiAttribute() = default;

    // The attribute's name, spelled like type names.
    const SdaiString& Name() const { return name_; }

  protected:
    explicit SdaiAttribute(SdaiString name) : name_(static_cast<SdaiString&&>(name)) {}

  private:
    SdaiString name_;
};

// An entity definition.
class KOR_API SdaiEntity : public SdaiNamedType {
  public:
    // Creates an instance in the model, with unset attributes and an instance name one greater than
    // the largest in the model. The model owns it. Returns null if the model is null or has another
    // schema.
    SdaiAppInstance* CreateEntityInstance(SdaiModel* model) const;

    // The definition of the named explicit attribute, declared or inherited; null if the entity
    // type has no such attribute.
    const SdaiAttribute* AttrDefinition(const SdaiString& name) const;
    const SdaiAttribute* AttrDefinition(const SdaiName& name) const;

  protected:
    using SdaiNamedType::SdaiNamedType;
};

class KOR_API SdaiSchema {
  public:
    SdaiSchema(const SdaiSchema&) = delete;
    SdaiSchema& operator=(const SdaiSchema&) = delete;
    virtual ~SdaiSchema() = default;

    // The schema's name in upper case; "cdma" as spelled in the schema.
    const SdaiString& Name() const { return name_; }

  protected:
    explicit SdaiSchema(SdaiString name) : name_(static_cast<SdaiString&&>(name)) {}

  private:
    SdaiString name_;
};

class KOR_API SdaiModel {
  public:
    SdaiModel(const SdaiModel&) = delete;
    SdaiModel& operator=(const SdaiModel&) = delete;
    virtual ~SdaiModel() = default;

    // The name of the model's schema.
    const SdaiString& SchemaName() const;

    // The model's schema.
    SdaiSchema* Underlying_schema() const;

    // The named entity type of the model's schema, or a type that the schema does not declare but
    // of which the model contains instances ("A+B+C" for a complex type); null if there is none.
    SdaiEntity* GetEntityDefinition(const SdaiString& name) const;
    SdaiEntity* GetEntityDefinition(const SdaiName& name) const;

    // The extent of an entity type: the model's instances of the type and of its subtypes, in the
    // order of their creation. It is not a copy: it grows as instances are created. The extent of
    // an unknown name or a null pointer is empty.
    const SdaiAggrInstance* GetEntityExtent(const SdaiString& name) const;
    const SdaiAggrInstance* GetEntityExtent(const SdaiName& name) const;
    const SdaiAggrInstance* GetEntityExtent(const SdaiEntity* entity) const;

  protected:
    SdaiModel() = default;
};

#endif
