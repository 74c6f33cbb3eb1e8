// Models, schemas and the dictionary of the data access interface.
//
// A schema describes entity types and their attributes; it never changes once it is made. A model
// is a data set: the instances of the entity types of one schema. A model keeps its schema alive
// and owns its instances, its aggregates and its extents; the pointers that the operations give
// belong to the schema or to the model and are never null unless said so. Names are matched without
// regard to case.

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

    // The type's name: in upper case, in the schema "cdma" as the schema spells it. A type that is
    // several entity types at once is named "A+B+C", in alphabetical order.
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

    // Spelled as type names are.
    const SdaiString& Name() const { return name_; }

  protected:
    explicit SdaiAttribute(SdaiString name) : name_(static_cast<SdaiString&&>(name)) {}

  private:
    SdaiString name_;
};

// An entity definition.
class KOR_API SdaiEntity : public SdaiNamedType {
  public:
    // Creates an instance in the model, its attributes unset, its instance name one more than the
    // largest of the model. The model owns it. Null when the model is null or of another schema.
    SdaiAppInstance* CreateEntityInstance(SdaiModel* model) const;

    // The definition of the named explicit attribute, inherited ones included; null when the entity
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

    // In upper case; "cdma" as the schema spells it.
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

    // The named entity type of the model's schema, or one that the schema does not declare but the
    // model holds instances of, "A+B+C" for one of several types; null when there is neither.
    SdaiEntity* GetEntityDefinition(const SdaiString& name) const;
    SdaiEntity* GetEntityDefinition(const SdaiName& name) const;

    // The extent of an entity type: the model's instances of the type and of its subtypes, in the
    // order of their creation. It is walked where it stands and grows as instances are created. A
    // name that the model does not know, or a null pointer, has an empty extent.
    const SdaiAggrInstance* GetEntityExtent(const SdaiString& name) const;
    const SdaiAggrInstance* GetEntityExtent(const SdaiName& name) const;
    const SdaiAggrInstance* GetEntityExtent(const SdaiEntity* entity) const;

  protected:
    SdaiModel() = default;
};

#endif
