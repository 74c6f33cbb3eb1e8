// Entity instances of the data access interface. An instance belongs to its model: it is created
// through its entity type (SdaiEntity::CreateEntityInstance), lives as long as the model and must
// not be deleted by a caller. Its identity is its address: two instances with equal attribute
// values are different instances.
//
// Attribute and type names are case-insensitive. A missing attribute is not an error: an attribute
// that the type does not have reads as unset, and writing it has no effect.
//
// Any number of threads may read the instances of a model that no thread writes.

#ifndef SDAIENTITYINSTANCE_H
#define SDAIENTITYINSTANCE_H

#include "SdaiLogical.h"
#include "SdaiName.h"
#include "SdaiPrimitiveH.h"

class SdaiModel;
class SdaiNamedType;

class KOR_API SdaiEntityInstance {
  public:
    SdaiEntityInstance(const SdaiEntityInstance&) = delete;
    SdaiEntityInstance& operator=(const SdaiEntityInstance&) = delete;

    // The instance name: the number after the "#" of an exchange file, unique in its model.
    unsigned long GetInstanceNameId() const;

    // The instance's model.
    SdaiModel* FindEntityInstanceModel() const;

    // The entity type; for an instance of several types at once, a type named "A+B+C".
    SdaiNamedType* GetInstanceType() const;

    // The value of the named explicit attribute; unset if it has no value or the type has no such
    // attribute.
    SdaiPrimitiveH GetAttr(const SdaiString& name) const;
    SdaiPrimitiveH GetAttr(const SdaiName& name) const;

    // Whether the named attribute has a value.
    SdaiBoolean TestAttr(const SdaiString& name) const;
    SdaiBoolean TestAttr(const SdaiName& name) const;

    // Whether the entity type is the named type or a subtype of it.
    SdaiBoolean IsKindOf(const SdaiString& typeName) const;
    SdaiBoolean IsKindOf(const SdaiName& typeName) const;

    // Whether `other` is this instance; false for a null pointer.
    bool IsSameInstance(const SdaiEntityInstance* other) const { return this == other; }

  protected:
    explicit SdaiEntityInstance(const void* type) : type_(type) {}
    ~SdaiEntityInstance() = default;

    const void* Type() const { return type_; }

  private:
    const void* type_;  // owned by the in-memory model
};

// An application instance: its attributes can be written. Every instance of the stand-alone
// platform's models is one.
class KOR_API SdaiAppInstance : public SdaiEntityInstance {
  public:
    // Sets the named attribute; an unset value clears it. The model stores its own copy of an
    // aggregate and its members. If the schema declares a REAL, a number is stored as a real; if it
    // declares an ENUMERATION, a text is stored as the item of that name. Has no effect if the type
    // does not have the attribute or derives it, or if the schema does not declare the item.
    void PutAttr(const SdaiString& name, const SdaiPrimitiveH& value);
    void PutAttr(const SdaiName& name, const SdaiPrimitiveH& value);

  protected:
    using SdaiEntityInstance::SdaiEntityInstance;
    ~SdaiAppInstance() = default;
};

#endif
