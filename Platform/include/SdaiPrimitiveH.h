// The value handle of the data access interface. Every mapping function takes its arguments and
// gives its result as a handle.
//
// A handle is unset (`exists` is FALSE) or holds one value: a string, an integer, a real, a
// logical, a boolean, an enumeration item, a binary, an entity instance, an aggregate, or a select
// value that holds one of these.
//
// Ownership. Texts and numbers are the handle's own. An entity instance belongs to its model and
// is shared, never copied or destroyed by a handle. So does an aggregate that was read from an
// instance; an aggregate that a call made (see TakeOver) belongs to the handles on it together and
// goes with the last of them. A handle on something that belongs to a model may not be used after
// the model is gone.
//
// Reading. Every conversion is total: integers and reals read as each other (a real towards zero,
// 0 when the integer cannot hold it); a select reads as what it holds; anything else read as
// another kind gives "", 0, 0.0, FALSE or a null pointer. The named reads (GetAttr and so on) of
// anything but an instance, or of an attribute that its type lacks, give an unset handle or FALSE;
// counts of anything but an aggregate are 0. A handle made from a null pointer does not exist.
//
// Several threads may read one handle and copy it; a handle may not be written by one thread while
// another uses it.

#ifndef SDAIPRIMITIVEH_H
#define SDAIPRIMITIVEH_H

#include <cstdint>

#include "SdaiLogical.h"
#include "SdaiName.h"
#include "SdaiString.h"

class SdaiAggrInstance;
class SdaiEntityInstance;
class SdaiModel;
class SdaiNamedType;
class SdaiPrimitiveH;
struct KORTypedValue;

// A select value: a value that was reached through an attribute or aggregate whose type is a
// SELECT. It holds the selected value and, where the data name it, the defined type under which
// the value was selected (LENGTH_MEASURE(2.5)).
class KOR_API SdaiSelectH {
  public:
    SdaiSelectH() noexcept : kind_(Kind::Unset) {}
    // A select that holds the value; an unset value gives an unset select.
    explicit SdaiSelectH(const SdaiPrimitiveH& value);
    // The same, selected under a defined type.
    SdaiSelectH(const SdaiString& definedType, const SdaiPrimitiveH& value);
    SdaiSelectH(const SdaiSelectH& other) noexcept;
    SdaiSelectH(SdaiSelectH&& other) noexcept;
    SdaiSelectH& operator=(const SdaiSelectH& other) noexcept;
    SdaiSelectH& operator=(SdaiSelectH&& other) noexcept;
    ~SdaiSelectH() {
        if (kind_ >= Kind::FirstOwning) Release();
    }

    // The selected value, no longer a select. A plain value viewed as a select gives itself.
    SdaiPrimitiveH getValue() const;

    // The defined type under which the value was selected; "" when the data name none.
    const SdaiString& DefinedType() const;

  private:
    friend class SdaiPrimitiveH;
    friend class KORHandleAccess;  // the in-memory model

    // From FirstOwning on, the value must be released.
    enum class Kind : std::uint8_t {
        Unset,
        Integer,
        Real,
        Logical,
        Boolean,
        Instance,
        ModelAggregate,
        String,
        FirstOwning = String,
        Enumeration,
        Binary,
        SharedAggregate,
        Typed,
    };

    void CopyFrom(const SdaiSelectH& other) noexcept;
    void MoveFrom(SdaiSelectH& other) noexcept;
    void Release() noexcept;
    const SdaiSelectH& Held() const;  // past the defined types, the value itself

    union {
        long integer_;
        double real_;
        SdaiLogical logical_;
        SdaiEntityInstance* instance_;
        SdaiAggrInstance* aggregate_;
        KORTypedValue* typed_;
        SdaiString text_;
    };
    Kind kind_;
    bool select_ = false;
};

class KOR_API SdaiPrimitiveH {
  public:
    // An unset handle.
    SdaiPrimitiveH() noexcept = default;
    SdaiPrimitiveH(const SdaiString& value) noexcept;
    SdaiPrimitiveH(SdaiString&& value) noexcept;
    SdaiPrimitiveH(long value) noexcept;
    SdaiPrimitiveH(int value) noexcept : SdaiPrimitiveH(static_cast<long>(value)) {}
    SdaiPrimitiveH(double value) noexcept;
    SdaiPrimitiveH(const SdaiLogical& value) noexcept;
    SdaiPrimitiveH(const SdaiBoolean& value) noexcept;
    SdaiPrimitiveH(SdaiEntityInstance* instance) noexcept;
    // An aggregate that handles already own gains an owner; any other stays with whoever made it.
    SdaiPrimitiveH(SdaiAggrInstance* aggregate) noexcept;
    SdaiPrimitiveH(const SdaiSelectH& select) noexcept : value_(select) {}
    SdaiPrimitiveH(bool) = delete;  // which logical would it be? Say sdaiLTRUE or sdaiLFALSE

    // A handle on an aggregate made with `new`: from now on it belongs to the handles on it.
    static SdaiPrimitiveH TakeOver(SdaiAggrInstance* aggregate) noexcept;

    // An item of an enumeration, by its name without the points; the digits of a binary, as an
    // exchange file (ISO 10303-21) writes them between the double quotes. Unset for a text that is
    // no word (letters, digits, underscores), or no hexadecimal digits of which the first is from 0
    // to 3.
    static SdaiPrimitiveH Enumeration(const SdaiString& item) noexcept;
    static SdaiPrimitiveH Binary(const SdaiString& digits) noexcept;

    // Whether the handle holds a value.
    SdaiBoolean exists() const { return SdaiBoolean(value_.kind_ != SdaiSelectH::Kind::Unset); }

    // The value of the named explicit attribute: unset if it has none. The name is matched without
    // regard to case.
    SdaiPrimitiveH GetAttr(const SdaiString& name) const;
    SdaiPrimitiveH GetAttr(const SdaiName& name) const;

    // Whether the named attribute has a value.
    SdaiBoolean TestAttr(const SdaiString& name) const;
    SdaiBoolean TestAttr(const SdaiName& name) const;

    // Whether the instance's entity type is the named one or one of its subtypes.
    SdaiBoolean IsKindOf(const SdaiString& typeName) const;
    SdaiBoolean IsKindOf(const SdaiName& typeName) const;

    // The instance's entity type; null for anything but an instance.
    SdaiNamedType* GetInstanceType() const;

    // "STRING", "INTEGER", "REAL", "LOGICAL", "BOOLEAN", "ENUMERATION", "BINARY", "AGGREGATE" or
    // the entity type's name, of what the value finally is; "" when unset.
    SdaiString UnderlyingTypeName() const;

    // The number of members of an aggregate.
    long GetMemberCount() const;

    // The model that holds the instance; null for anything but an instance.
    SdaiModel* FindEntityInstanceModel() const;

    // TRUE for equal values: the same instance, equal texts, numbers (whatever their kinds) or
    // truth values; UNKNOWN when either is unset. Aggregates are compared member by member in their
    // order: FALSE where the counts or any pair differ, else UNKNOWN where any pair is, else TRUE.
    SdaiLogical operator==(const SdaiPrimitiveH& other) const;

    // The references are valid until this handle is written or destroyed.
    operator const SdaiString&() const;
    operator const SdaiLogical&() const;
    operator const SdaiSelectH&() const { return value_; }
    operator long() const;
    operator double() const;
    operator SdaiEntityInstance*() const;
    operator SdaiAggrInstance*() const;

  private:
    friend class SdaiSelectH;
    friend class KORHandleAccess;

    SdaiSelectH value_;
};

// A value with the name of the defined type under which it was selected, shared by the handles and
// the model that hold it.
struct KORTypedValue {
    std::atomic<std::uint32_t> owners;
    SdaiString definedType;
    SdaiPrimitiveH value;
};

#endif
