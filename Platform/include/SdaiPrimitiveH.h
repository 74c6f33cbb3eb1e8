// The value handle of the data access interface. Every mapping function takes handles as arguments
// and returns a handle.
//
// A handle is unset (`exists` is FALSE) or holds one value: a string, an integer, a real, a
// logical, a boolean, an enumeration item, a binary, an entity instance, an aggregate, or a select
// value that holds one of these.
//
// Ownership. A handle owns its text or number. An entity instance belongs to its model and is
// shared, never copied or destroyed by a handle. The same holds for an aggregate read from an
// instance. An aggregate returned by a call (see TakeOver) is owned jointly by the handles to it
// and is destroyed with the last of them. Do not use a handle to something that belongs to a model
// after the model is destroyed.
//
// Reading. Every conversion is total. Integers and reals convert to each other (a real is truncated
// towards zero; 0 if it is out of range); a select reads as the value it holds; reading any other
// value as another kind returns "", 0, 0.0, FALSE or a null pointer. GetAttr and the other reads by
// name return an unset handle or FALSE for a value that is not an instance, and for an attribute
// that its type does not have; the count of a value that is not an aggregate is 0. A handle
// constructed from a null pointer is unset.
//
// Several threads may read and copy the same handle; no thread may write a handle while another
// uses it.

#ifndef SDAIPRIMITIVEH_H
#define SDAIPRIMITIVEH_H

#include <cstdint>
#include <iosfwd>
#include <string>

#include "SdaiLogical.h"
#include "SdaiName.h"
#include "SdaiString.h"

class SdaiAggrInstance;
class SdaiEntityInstance;
class SdaiModel;
class SdaiNamedType;
class SdaiPrimitiveH;

// The kinds of values. A select is of the kind of the value it holds.
enum class SdaiKind : std::uint8_t {
    Unset,
    Integer,
    Real,
    Logical,
    Boolean,
    String,
    Enumeration,
    Binary,
    Instance,
    Aggregate
};

// A select value: a value read from an attribute or aggregate whose type is a SELECT. It holds the
// selected value and, if the data name it, the defined type under which the value was selected
// (LENGTH_MEASURE(2.5)).
class KOR_API SdaiSelectH {
  public:
    SdaiSelectH() noexcept : kind_(Kind::Unset) {}
    // A select that holds the value; unset if the value is unset.
    explicit SdaiSelectH(const SdaiPrimitiveH& value);
    // The same, with the defined type under which the value was selected.
    SdaiSelectH(const SdaiString& definedType, const SdaiPrimitiveH& value);
    SdaiSelectH(const SdaiSelectH& other) noexcept;
    SdaiSelectH(SdaiSelectH&& other) noexcept;
    SdaiSelectH& operator=(const SdaiSelectH& other) noexcept;
    SdaiSelectH& operator=(SdaiSelectH&& other) noexcept;
    ~SdaiSelectH() {
        if (kind_ >= Kind::FirstOwning) Release();
    }

    // The selected value itself, not a select. For a plain value viewed as a select, returns that
    // value.
    SdaiPrimitiveH getValue() const;

    // The defined type under which the value was selected; "" if the data do not name one.
    const SdaiString& DefinedType() const;

  private:
    friend class SdaiPrimitiveH;
    friend class kor::HandleAccess;

    // Values of FirstOwning and the kinds after it must be released.
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
    const SdaiSelectH& Held() const;  // the value inside any defined types

    union {
        long integer_;
        double real_;
        SdaiLogical logical_;
        SdaiEntityInstance* instance_;
        SdaiAggrInstance* aggregate_;
        kor::TypedValue* typed_;
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
    // An aggregate already owned by handles gains an owner; any other stays with its creator.
    SdaiPrimitiveH(SdaiAggrInstance* aggregate) noexcept;
    SdaiPrimitiveH(const SdaiSelectH& select) noexcept : value_(select) {}
    SdaiPrimitiveH(bool) = delete;  // ambiguous: use sdaiLTRUE or sdaiLFALSE

    // Takes ownership of an aggregate created with `new`: from now on the handles to it own it.
    static SdaiPrimitiveH TakeOver(SdaiAggrInstance* aggregate) noexcept;

    // An enumeration item, by its name without the dots; a binary, by its digits as an exchange
    // file (ISO 10303-21) writes them between the double quotes. Returns an unset handle if the
    // item is not a word (letters, digits, underscores), or if the digits are not hexadecimal with
    // a first digit from 0 to 3.
    static SdaiPrimitiveH Enumeration(const SdaiString& item) noexcept;
    static SdaiPrimitiveH Binary(const SdaiString& digits) noexcept;

    // Whether the handle holds a value.
    SdaiBoolean exists() const { return SdaiBoolean(value_.kind_ != SdaiSelectH::Kind::Unset); }

    // The kind of the value; for a select, of the value it holds.
    SdaiKind Kind() const;

    // The value of the named explicit attribute; unset if it has none. Names are case-insensitive.
    SdaiPrimitiveH GetAttr(const SdaiString& name) const;
    SdaiPrimitiveH GetAttr(const SdaiName& name) const;

    // Whether the named attribute has a value.
    SdaiBoolean TestAttr(const SdaiString& name) const;
    SdaiBoolean TestAttr(const SdaiName& name) const;

    // Whether the instance's entity type is the named type or a subtype of it.
    SdaiBoolean IsKindOf(const SdaiString& typeName) const;
    SdaiBoolean IsKindOf(const SdaiName& typeName) const;

    // The instance's entity type; null if the value is not an instance.
    SdaiNamedType* GetInstanceType() const;

    // "STRING", "INTEGER", "REAL", "LOGICAL", "BOOLEAN", "ENUMERATION", "BINARY", "AGGREGATE" or
    // the entity type's name; for a select, of the value it holds. "" if unset.
    SdaiString UnderlyingTypeName() const;

    // The number of members of an aggregate.
    long GetMemberCount() const;

    // The instance's model; null if the value is not an instance.
    SdaiModel* FindEntityInstanceModel() const;

    // TRUE for equal values: the same instance, or equal texts, numbers (of either kind) or truth
    // values. UNKNOWN if either is unset. Aggregates are compared member by member, in order: FALSE
    // if the counts or any pair differ, else UNKNOWN if any pair is UNKNOWN, else TRUE.
    SdaiLogical operator==(const SdaiPrimitiveH& other) const;

    // The value as text in UTF-8, in the notation of exchange files (ISO 10303-21) without its
    // string directives: 'text', 7, 1.5, .T., .ITEM., "0A", #12, (1.,2.), LENGTH_MEASURE(2.5), and
    // $ if unset. Throws std::bad_alloc if memory runs out.
    friend KOR_API std::string ToString(const SdaiPrimitiveH& value);
    friend KOR_API std::ostream& operator<<(std::ostream& stream, const SdaiPrimitiveH& value);

    // The references are valid until this handle is modified or destroyed.
    operator const SdaiString&() const;
    operator const SdaiLogical&() const;
    operator const SdaiSelectH&() const { return value_; }
    operator long() const;
    operator double() const;
    operator SdaiEntityInstance*() const;
    operator SdaiAggrInstance*() const;

  private:
    friend class SdaiSelectH;
    friend class kor::HandleAccess;

    SdaiSelectH value_;
};

// The text of a string; "" for any other value. The reference is valid until the handle is modified
// or destroyed.
inline const SdaiString& TextOf(const SdaiPrimitiveH& value) { return value; }

#endif
