// The value handle of the second platform: a shared pointer to an immutable value. The operations
// are documented in the contract's header.

#ifndef SDAIPRIMITIVEH_H
#define SDAIPRIMITIVEH_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

#include "SdaiLogical.h"
#include "SdaiName.h"
#include "SdaiString.h"

class SdaiAggrInstance;
class SdaiEntityInstance;
class SdaiModel;
class SdaiNamedType;
class SdaiPrimitiveH;

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

namespace second {
struct Value;
}

class KOR_API SdaiSelectH {
  public:
    SdaiSelectH() noexcept = default;
    explicit SdaiSelectH(const SdaiPrimitiveH& value);
    SdaiSelectH(const SdaiString& definedType, const SdaiPrimitiveH& value);

    SdaiPrimitiveH getValue() const;
    const SdaiString& DefinedType() const;

  private:
    friend class SdaiPrimitiveH;

    std::shared_ptr<const second::Value> value_;  // null if unset
};

class KOR_API SdaiPrimitiveH {
  public:
    SdaiPrimitiveH() noexcept = default;
    SdaiPrimitiveH(const SdaiString& value);
    SdaiPrimitiveH(long value);
    SdaiPrimitiveH(int value) : SdaiPrimitiveH(static_cast<long>(value)) {}
    SdaiPrimitiveH(double value);
    SdaiPrimitiveH(const SdaiLogical& value);
    SdaiPrimitiveH(const SdaiBoolean& value);
    SdaiPrimitiveH(SdaiEntityInstance* instance);
    SdaiPrimitiveH(SdaiAggrInstance* aggregate);
    SdaiPrimitiveH(const SdaiSelectH& select) : value_(select) {}
    SdaiPrimitiveH(bool) = delete;

    static SdaiPrimitiveH TakeOver(SdaiAggrInstance* aggregate);
    static SdaiPrimitiveH Enumeration(const SdaiString& item);
    static SdaiPrimitiveH Binary(const SdaiString& digits);

    SdaiBoolean exists() const { return SdaiBoolean(value_.value_ != nullptr); }
    SdaiKind Kind() const;
    SdaiPrimitiveH GetAttr(const SdaiString& name) const;
    SdaiPrimitiveH GetAttr(const SdaiName& name) const { return GetAttr(SdaiString(name.text)); }
    SdaiBoolean TestAttr(const SdaiString& name) const;
    SdaiBoolean TestAttr(const SdaiName& name) const { return TestAttr(SdaiString(name.text)); }
    SdaiBoolean IsKindOf(const SdaiString& typeName) const;
    SdaiBoolean IsKindOf(const SdaiName& name) const { return IsKindOf(SdaiString(name.text)); }
    SdaiNamedType* GetInstanceType() const;
    SdaiString UnderlyingTypeName() const;
    long GetMemberCount() const;
    SdaiModel* FindEntityInstanceModel() const;

    SdaiLogical operator==(const SdaiPrimitiveH& other) const;

    friend KOR_API std::string ToString(const SdaiPrimitiveH& value);
    friend KOR_API std::ostream& operator<<(std::ostream& stream, const SdaiPrimitiveH& value);

    operator const SdaiString&() const;
    operator const SdaiLogical&() const;
    operator const SdaiSelectH&() const { return value_; }
    operator long() const;
    operator double() const;
    operator SdaiEntityInstance*() const;
    operator SdaiAggrInstance*() const;

    // The value itself, for the platform's own sources; null if unset.
    const second::Value* Get() const { return value_.value_.get(); }

  private:
    friend class SdaiSelectH;

    explicit SdaiPrimitiveH(second::Value value);

    SdaiSelectH value_;
};

inline const SdaiString& TextOf(const SdaiPrimitiveH& value) { return value; }

#endif
