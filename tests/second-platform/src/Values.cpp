// Value handles and selects.

#include "Values.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include "KORLocale.h"
#include "SdaiEntityInstance.h"
#include "SdaiModel.h"

using second::Aggregate;
using second::Held;

namespace {

const SdaiString& NoText() {
    static const SdaiString& none = *new SdaiString;
    return none;
}

// ISO 10303-21 writes every real with a point.
std::string RealText(double value) {
    std::string text(KORLocale::sConvertNumToString(value).View());
    if (!std::isfinite(value)) return text;
    std::replace(text.begin(), text.end(), 'e', 'E');
    if (text.find('.') == std::string::npos)
        text.insert(std::min(text.find('E'), text.size()), ".");
    return text;
}

}  // namespace

// ---- Creating handles

SdaiPrimitiveH::SdaiPrimitiveH(second::Value value) {
    value_.value_ = std::make_shared<const second::Value>(std::move(value));
}
SdaiPrimitiveH::SdaiPrimitiveH(const SdaiString& value) : SdaiPrimitiveH(second::Value{value}) {}
SdaiPrimitiveH::SdaiPrimitiveH(long value) : SdaiPrimitiveH(second::Value{value}) {}
SdaiPrimitiveH::SdaiPrimitiveH(double value) : SdaiPrimitiveH(second::Value{value}) {}
SdaiPrimitiveH::SdaiPrimitiveH(const SdaiLogical& value) : SdaiPrimitiveH(second::Value{value}) {}
SdaiPrimitiveH::SdaiPrimitiveH(const SdaiBoolean& value)
    : SdaiPrimitiveH(second::Value{second::Boolean{value}}) {}

SdaiPrimitiveH::SdaiPrimitiveH(SdaiEntityInstance* instance) {
    if (instance != nullptr) *this = SdaiPrimitiveH(second::Value{instance});
}

SdaiPrimitiveH::SdaiPrimitiveH(SdaiAggrInstance* aggregate) {
    if (aggregate == nullptr) return;
    Aggregate owned = aggregate->weak_from_this().lock();
    // An aggregate that no handle owns is referenced and never destroyed.
    if (owned == nullptr) owned = Aggregate(Aggregate(), aggregate);
    *this = SdaiPrimitiveH(second::Value{owned});
}

SdaiPrimitiveH SdaiPrimitiveH::TakeOver(SdaiAggrInstance* aggregate) {
    if (aggregate != nullptr && aggregate->weak_from_this().expired()) {
        return SdaiPrimitiveH(second::Value{Aggregate(aggregate)});
    }
    return SdaiPrimitiveH(aggregate);
}

SdaiPrimitiveH SdaiPrimitiveH::Enumeration(const SdaiString& item) {
    const std::string_view name = item.View();
    const bool isWord = !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= '0' && c <= '9') || c == '_' ||
               (SdaiFoldCase(c) >= 'A' && SdaiFoldCase(c) <= 'Z');
    });
    return isWord ? SdaiPrimitiveH(second::Value{second::Item{item}}) : SdaiPrimitiveH();
}

SdaiPrimitiveH SdaiPrimitiveH::Binary(const SdaiString& digits) {
    const std::string_view text = digits.View();
    const bool good = text.find_first_of("0123") == 0 &&
                      text.find_first_not_of("0123456789ABCDEF") == std::string_view::npos;
    return good ? SdaiPrimitiveH(second::Value{second::Bits{digits}}) : SdaiPrimitiveH();
}

// ---- Selects

SdaiSelectH::SdaiSelectH(const SdaiPrimitiveH& value) : value_(value.value_.value_) {}

SdaiSelectH::SdaiSelectH(const SdaiString& definedType, const SdaiPrimitiveH& value) {
    if (value.exists()) {
        value_ =
            std::make_shared<const second::Value>(second::Value{second::Typed{definedType, value}});
    }
}

SdaiPrimitiveH SdaiSelectH::getValue() const {
    SdaiPrimitiveH value(*this);
    while (value.exists() && std::holds_alternative<second::Typed>(value.Get()->held)) {
        value = SdaiPrimitiveH(std::get<second::Typed>(value.Get()->held).value);
    }
    return value;
}

const SdaiString& SdaiSelectH::DefinedType() const {
    const auto* typed = value_ != nullptr ? std::get_if<second::Typed>(&value_->held) : nullptr;
    return typed != nullptr ? typed->type : NoText();
}

// ---- Reading. A value of another kind reads as unset.

SdaiPrimitiveH::operator const SdaiString&() const {
    const auto* text = Held<SdaiString>(*this);
    return text != nullptr ? *text : NoText();
}

SdaiPrimitiveH::operator const SdaiLogical&() const {
    if (const auto* boolean = Held<second::Boolean>(*this)) return boolean->value;
    const auto* logical = Held<SdaiLogical>(*this);
    return logical != nullptr ? *logical : sdaiLFALSE;
}

SdaiPrimitiveH::operator long() const {
    if (const long* integer = Held<long>(*this)) return *integer;
    const double* real = Held<double>(*this);
    // 2 to the power of 63 is the first real that is too large.
    const bool fits = real != nullptr && std::trunc(*real) >= -0x1p63 && *real < 0x1p63;
    return fits ? static_cast<long>(*real) : 0;
}

SdaiPrimitiveH::operator double() const {
    if (const double* real = Held<double>(*this)) return *real;
    const long* integer = Held<long>(*this);
    return integer != nullptr ? static_cast<double>(*integer) : 0.0;
}

SdaiPrimitiveH::operator SdaiEntityInstance*() const {
    const auto* instance = Held<SdaiEntityInstance*>(*this);
    return instance != nullptr ? *instance : nullptr;
}

SdaiPrimitiveH::operator SdaiAggrInstance*() const {
    const auto* aggregate = Held<Aggregate>(*this);
    return aggregate != nullptr ? aggregate->get() : nullptr;
}

SdaiPrimitiveH SdaiPrimitiveH::GetAttr(const SdaiString& name) const {
    const SdaiEntityInstance* instance = *this;
    return instance != nullptr ? instance->GetAttr(name) : SdaiPrimitiveH();
}

SdaiBoolean SdaiPrimitiveH::TestAttr(const SdaiString& name) const {
    return GetAttr(name).exists();
}

SdaiBoolean SdaiPrimitiveH::IsKindOf(const SdaiString& typeName) const {
    const SdaiEntityInstance* instance = *this;
    return instance != nullptr ? instance->IsKindOf(typeName) : sdaiFALSE;
}

SdaiNamedType* SdaiPrimitiveH::GetInstanceType() const {
    const SdaiEntityInstance* instance = *this;
    return instance != nullptr ? instance->GetInstanceType() : nullptr;
}

SdaiModel* SdaiPrimitiveH::FindEntityInstanceModel() const {
    const SdaiEntityInstance* instance = *this;
    return instance != nullptr ? instance->FindEntityInstanceModel() : nullptr;
}

long SdaiPrimitiveH::GetMemberCount() const {
    const SdaiAggrInstance* aggregate = *this;
    return aggregate != nullptr ? aggregate->GetMemberCount() : 0;
}

SdaiKind SdaiPrimitiveH::Kind() const {
    if (Held<SdaiString>(*this) != nullptr) return SdaiKind::String;
    if (Held<long>(*this) != nullptr) return SdaiKind::Integer;
    if (Held<double>(*this) != nullptr) return SdaiKind::Real;
    if (Held<SdaiLogical>(*this) != nullptr) return SdaiKind::Logical;
    if (Held<second::Boolean>(*this) != nullptr) return SdaiKind::Boolean;
    if (Held<second::Item>(*this) != nullptr) return SdaiKind::Enumeration;
    if (Held<second::Bits>(*this) != nullptr) return SdaiKind::Binary;
    if (Held<Aggregate>(*this) != nullptr) return SdaiKind::Aggregate;
    return Held<SdaiEntityInstance*>(*this) != nullptr ? SdaiKind::Instance : SdaiKind::Unset;
}

SdaiString SdaiPrimitiveH::UnderlyingTypeName() const {
    switch (Kind()) {
        case SdaiKind::Unset: return "";
        case SdaiKind::Integer: return "INTEGER";
        case SdaiKind::Real: return "REAL";
        case SdaiKind::Logical: return "LOGICAL";
        case SdaiKind::Boolean: return "BOOLEAN";
        case SdaiKind::String: return "STRING";
        case SdaiKind::Enumeration: return "ENUMERATION";
        case SdaiKind::Binary: return "BINARY";
        case SdaiKind::Instance: return GetInstanceType()->Name();
        case SdaiKind::Aggregate: return "AGGREGATE";
    }
    return "";
}

// ---- Comparing

namespace {

// Not every integer has an equal real.
bool AreEqual(long integer, double real) {
    return real >= -0x1p63 && real < 0x1p63 && std::trunc(real) == real &&
           integer == static_cast<long>(real);
}

bool AreEqualNumbers(const SdaiPrimitiveH& a, const SdaiPrimitiveH& b) {
    const long* integer = Held<long>(a);
    const long* other = Held<long>(b);
    if (integer != nullptr && other != nullptr) return *integer == *other;
    if (integer != nullptr) return AreEqual(*integer, b);
    if (other != nullptr) return AreEqual(*other, a);
    return static_cast<double>(a) == static_cast<double>(b);
}

SdaiLogical AreEqualAggregates(const SdaiAggrInstance& a, const SdaiAggrInstance& b) {
    SdaiLogical equal = SdaiBoolean(a.GetMemberCount() == b.GetMemberCount());
    for (long i = 0; i < a.GetMemberCount() && !(equal == sdaiLFALSE); ++i) {
        equal = equal && a.GetMember(i) == b.GetMember(i);
    }
    return equal;
}

// The kind that a value is compared as: values of different kinds are never equal.
SdaiString Comparable(const SdaiPrimitiveH& value) {
    const SdaiString kind = value.UnderlyingTypeName();
    if (kind == "REAL") return "INTEGER";
    if (kind == "BOOLEAN") return "LOGICAL";
    return static_cast<SdaiEntityInstance*>(value) != nullptr ? SdaiString("an instance") : kind;
}

}  // namespace

SdaiLogical SdaiPrimitiveH::operator==(const SdaiPrimitiveH& other) const {
    const SdaiString kind = Comparable(*this);
    if (kind == "" || Comparable(other) == "") return {};
    if (kind != Comparable(other)) return sdaiLFALSE;
    if (kind == "INTEGER") return SdaiBoolean(AreEqualNumbers(*this, other));
    if (kind == "LOGICAL") {
        return static_cast<const SdaiLogical&>(*this) == static_cast<const SdaiLogical&>(other);
    }
    if (kind == "an instance") {
        return SdaiBoolean(static_cast<SdaiEntityInstance*>(*this) ==
                           static_cast<SdaiEntityInstance*>(other));
    }
    const SdaiAggrInstance* members = *this;
    const SdaiAggrInstance* others = other;
    if (members != nullptr) return AreEqualAggregates(*members, *others);
    if (const auto* item = Held<second::Item>(*this)) {
        return item->name == Held<second::Item>(other)->name;
    }
    if (const auto* bits = Held<second::Bits>(*this)) {
        return bits->digits == Held<second::Bits>(other)->digits;
    }
    return static_cast<const SdaiString&>(*this) == static_cast<const SdaiString&>(other);
}

// ---- Writing

std::string ToString(const SdaiPrimitiveH& value) {
    if (!value.exists()) return "$";
    if (const auto* typed = std::get_if<second::Typed>(&value.Get()->held)) {
        return std::string(typed->type.View()) + "(" + ToString(typed->value) + ")";
    }
    if (const long* integer = Held<long>(value)) return std::to_string(*integer);
    if (const double* real = Held<double>(value)) return RealText(*real);
    if (const auto* item = Held<second::Item>(value)) {
        return "." + std::string(item->name.View()) + ".";
    }
    if (const auto* bits = Held<second::Bits>(value)) {
        return "\"" + std::string(bits->digits.View()) + "\"";
    }
    if (const SdaiEntityInstance* instance = value) {
        return "#" + std::to_string(instance->GetInstanceNameId());
    }
    if (const SdaiAggrInstance* members = value) {
        std::string text;
        for (long i = 0; i < members->GetMemberCount(); ++i) {
            text += (i == 0 ? "" : ",") + ToString(members->GetMember(i));
        }
        return "(" + text + ")";
    }
    if (const auto* text = Held<SdaiString>(value)) {
        std::string quoted = "'";
        for (const char c : text->ToUtf8()) quoted += c == '\'' ? "''" : std::string(1, c);
        return quoted + "'";
    }
    const SdaiLogical& truth = value;
    return truth == sdaiLTRUE ? ".T." : truth == sdaiLFALSE ? ".F." : ".U.";
}

std::ostream& operator<<(std::ostream& stream, const SdaiPrimitiveH& value) {
    return stream << ToString(value);
}

std::ostream& operator<<(std::ostream& stream, SdaiBoolean value) {
    return stream << (value ? "TRUE" : "FALSE");
}

std::ostream& operator<<(std::ostream& stream, SdaiLogical value) {
    return stream << (value == sdaiLTRUE ? "TRUE" : value == sdaiLFALSE ? "FALSE" : "UNKNOWN");
}
