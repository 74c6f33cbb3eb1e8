// Entity instances of the data access interface. An instance belongs to its model: it is created
// through its entity type (SdaiEntity::CreateEntityInstance), lives as long as the model and is
// never deleted by a caller. Its identity is its address: two instances with equal attribute values
// are different instances.
//
// Attribute and type names are matched without regard to case. What a type does not have is not an
// error: an attribute that it lacks reads as unset and cannot be written.
//
// Any number of threads may read the instances of a model that no thread writes.

#ifndef SDAIENTITYINSTANCE_H
#define SDAIENTITYINSTANCE_H

#include <cstddef>
#include <cstring>

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

    // The model that holds the instance.
    SdaiModel* FindEntityInstanceModel() const;

    // The entity type; of an instance of several types at once, a type named "A+B+C".
    SdaiNamedType* GetInstanceType() const;

    // The value of the named explicit attribute: unset if it has none or the type lacks it.
    SdaiPrimitiveH GetAttr(const SdaiString& name) const;
    SdaiPrimitiveH GetAttr(const SdaiName& name) const;

    // Whether the named attribute has a value.
    SdaiBoolean TestAttr(const SdaiString& name) const;
    SdaiBoolean TestAttr(const SdaiName& name) const;

    // Whether the entity type is the named one or one of its subtypes.
    SdaiBoolean IsKindOf(const SdaiString& typeName) const;
    SdaiBoolean IsKindOf(const SdaiName& typeName) const;

    // Whether `other` is this very instance; a null pointer is not.
    bool IsSameInstance(const SdaiEntityInstance* other) const { return this == other; }

  protected:
    explicit SdaiEntityInstance(const void* type) : type_(type) {}
    ~SdaiEntityInstance() = default;

    const void* Type() const { return type_; }

  private:
    friend class SdaiInstanceReader;

    const void* type_;  // the in-memory model's
};

// An application instance: one whose attributes can be written. Every instance of a stand-alone
// model is one.
class KOR_API SdaiAppInstance : public SdaiEntityInstance {
  public:
    // Sets the named attribute; an unset value clears it. The model keeps a copy of its own of an
    // aggregate and of its members. A number given where the schema declares a REAL is kept as a
    // real, a text where an ENUMERATION is declared as its item. An attribute that the type lacks,
    // or that the type derives, stays as it is; so it does for an item that the schema does not
    // declare.
    void PutAttr(const SdaiString& name, const SdaiPrimitiveH& value);
    void PutAttr(const SdaiName& name, const SdaiPrimitiveH& value);

  protected:
    using SdaiEntityInstance::SdaiEntityInstance;
    ~SdaiAppInstance() = default;
};

// Reads one attribute, as an instance, from many instances: a select gives the instance that it
// holds, anything that is not an instance a null pointer. Where a loop visits a whole extent, a
// reader made before the loop costs a fraction of GetAttr: it remembers where the entity type that
// it met last keeps the attribute, and makes no handle. It keeps no instance alive and belongs to
// one thread.
class KOR_API SdaiInstanceReader {
  public:
    explicit SdaiInstanceReader(const SdaiName& attribute) : attribute_(attribute) {}

    // The instance that the attribute of `instance` refers to; null for a null `instance`.
    SdaiEntityInstance* operator()(const SdaiEntityInstance* instance) {
        if (instance == nullptr) return nullptr;
        if (instance->type_ != type_) Find(*instance);
        if (offset_ == kNowhere) return nullptr;
        const char* value = reinterpret_cast<const char*>(instance) + offset_;
        if (value[kKindOffset] != kInstanceKind) return ReadOther(value);
        SdaiEntityInstance* referred;
        std::memcpy(&referred, value, sizeof referred);
        return referred;
    }

  private:
    // How the in-memory model keeps a value that refers to an instance: the reference, and its kind
    // as the last of 16 bytes.
    static constexpr std::size_t kKindOffset = 15;
    static constexpr char kInstanceKind = 9;
    static constexpr std::size_t kNowhere = 0;

    [[gnu::noinline]] void Find(const SdaiEntityInstance& instance);
    [[gnu::noinline]] static SdaiEntityInstance* ReadOther(const void* value);

    const SdaiName& attribute_;
    const void* type_ = nullptr;     // the type met last
    std::size_t offset_ = kNowhere;  // where its instances keep the attribute
};

#endif
