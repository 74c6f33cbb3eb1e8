// Truth values of the data access interface (ISO 10303-22): the two-valued SdaiBoolean, the
// three-valued SdaiLogical, and the four constants that the mapping functions return. Both types
// are plain values, safe to copy and to read from any thread.

#ifndef SDAILOGICAL_H
#define SDAILOGICAL_H

#include <iosfwd>

#include "KORExport.h"

class SdaiLogical;

// TRUE or FALSE. Default-constructed: FALSE.
class SdaiBoolean {
  public:
    constexpr SdaiBoolean() = default;
    constexpr explicit SdaiBoolean(bool value) : value_(value) {}

    constexpr SdaiBoolean operator&&(SdaiBoolean other) const {
        return SdaiBoolean(value_ && other.value_);
    }
    constexpr SdaiBoolean operator||(SdaiBoolean other) const {
        return SdaiBoolean(value_ || other.value_);
    }
    // With a logical, both count as logicals.
    constexpr SdaiLogical operator&&(SdaiLogical other) const;
    constexpr SdaiLogical operator||(SdaiLogical other) const;
    constexpr SdaiBoolean operator!() const { return SdaiBoolean(!value_); }
    constexpr SdaiBoolean operator==(SdaiBoolean other) const {
        return SdaiBoolean(value_ == other.value_);
    }
    constexpr SdaiBoolean operator==(SdaiLogical other) const;
    constexpr SdaiBoolean operator!=(SdaiBoolean other) const { return !(*this == other); }
    constexpr SdaiBoolean operator!=(SdaiLogical other) const;

    // Writes TRUE or FALSE.
    friend KOR_API std::ostream& operator<<(std::ostream& stream, SdaiBoolean value);

    // 1 for TRUE, 0 for FALSE, so that a boolean can be used as a condition.
    constexpr operator int() const { return value_ ? 1 : 0; }

  private:
    bool value_ = false;
};

// TRUE, FALSE or UNKNOWN. Default-constructed: UNKNOWN. The operators follow the tables of ISO
// 10303-11: FALSE AND anything is FALSE, TRUE OR anything is TRUE, NOT UNKNOWN is UNKNOWN.
class SdaiLogical {
  public:
    constexpr SdaiLogical() = default;
    constexpr SdaiLogical(SdaiBoolean value) : value_(value ? kTrue : kFalse) {}

    constexpr SdaiLogical operator&&(SdaiLogical other) const {
        return SdaiLogical(value_ < other.value_ ? value_ : other.value_);
    }
    constexpr SdaiLogical operator||(SdaiLogical other) const {
        return SdaiLogical(value_ < other.value_ ? other.value_ : value_);
    }
    constexpr SdaiLogical operator!() const { return SdaiLogical(static_cast<Value>(-value_)); }

    // Whether both are the same truth value; UNKNOWN equals UNKNOWN.
    constexpr SdaiBoolean operator==(SdaiLogical other) const {
        return SdaiBoolean(value_ == other.value_);
    }
    constexpr SdaiBoolean operator==(SdaiBoolean other) const {
        return *this == SdaiLogical(other);
    }
    constexpr SdaiBoolean operator!=(SdaiLogical other) const { return !(*this == other); }
    constexpr SdaiBoolean operator!=(SdaiBoolean other) const { return !(*this == other); }

    // Writes TRUE, FALSE or UNKNOWN.
    friend KOR_API std::ostream& operator<<(std::ostream& stream, SdaiLogical value);

    // 1 for TRUE, 0 for FALSE and UNKNOWN, so that a logical can be used as a condition.
    constexpr operator int() const { return value_ == kTrue ? 1 : 0; }

  private:
    // Ordered FALSE < UNKNOWN < TRUE, so that AND is the minimum and OR the maximum.
    enum Value : signed char { kFalse = -1, kUnknown = 0, kTrue = 1 };

    constexpr explicit SdaiLogical(Value value) : value_(value) {}

    Value value_ = kUnknown;
};

constexpr SdaiLogical SdaiBoolean::operator&&(SdaiLogical other) const {
    return SdaiLogical(*this) && other;
}
constexpr SdaiLogical SdaiBoolean::operator||(SdaiLogical other) const {
    return SdaiLogical(*this) || other;
}
constexpr SdaiBoolean SdaiBoolean::operator==(SdaiLogical other) const {
    return SdaiLogical(*this) == other;
}
constexpr SdaiBoolean SdaiBoolean::operator!=(SdaiLogical other) const {
    return SdaiLogical(*this) != other;
}

// The runtime's constants.
class KORSdaiStaticGlobalData {
  public:
    static constexpr SdaiBoolean sdaiTRUE{true};
    static constexpr SdaiBoolean sdaiFALSE{false};
    static constexpr SdaiLogical sdaiLTRUE{sdaiTRUE};
    static constexpr SdaiLogical sdaiLFALSE{sdaiFALSE};
};

inline constexpr const SdaiBoolean& sdaiTRUE = KORSdaiStaticGlobalData::sdaiTRUE;
inline constexpr const SdaiBoolean& sdaiFALSE = KORSdaiStaticGlobalData::sdaiFALSE;
inline constexpr const SdaiLogical& sdaiLTRUE = KORSdaiStaticGlobalData::sdaiLTRUE;
inline constexpr const SdaiLogical& sdaiLFALSE = KORSdaiStaticGlobalData::sdaiLFALSE;

#endif
