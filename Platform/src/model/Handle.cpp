// SdaiPrimitiveH and SdaiSelectH, and the conversion between handles and a model's values.

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "SdaiPrimitiveH.h"
#include "model/Aggregate.h"
#include "model/Cell.h"
#include "model/Dictionary.h"
#include "model/Model.h"

namespace {

const SdaiString kNoText;

}  // namespace

// ---- Copying and destroying

void SdaiSelectH::CopyFrom(const SdaiSelectH& other) noexcept {
    kind_ = other.kind_;
    select_ = other.select_;
    switch (kind_) {
        case Kind::String:
        case Kind::Enumeration:
        case Kind::Binary: new (&text_) SdaiString(other.text_); break;
        case Kind::SharedAggregate:
            aggregate_ = other.aggregate_;
            kor::AggregateAccess::AddOwner(*aggregate_);
            break;
        case Kind::Typed:
            typed_ = other.typed_;
            typed_->owners.fetch_add(1, std::memory_order_relaxed);
            break;
        default: std::memcpy(&integer_, &other.integer_, sizeof integer_);
    }
}

void SdaiSelectH::MoveFrom(SdaiSelectH& other) noexcept {
    kind_ = other.kind_;
    select_ = other.select_;
    if (kind_ == Kind::String || kind_ == Kind::Enumeration || kind_ == Kind::Binary) {
        new (&text_) SdaiString(std::move(other.text_));
        other.text_.~SdaiString();
    } else {
        std::memcpy(&integer_, &other.integer_, sizeof integer_);
    }
    other.kind_ = Kind::Unset;
    other.select_ = false;
}

void SdaiSelectH::Release() noexcept {
    switch (kind_) {
        case Kind::String:
        case Kind::Enumeration:
        case Kind::Binary: text_.~SdaiString(); break;
        case Kind::SharedAggregate: kor::AggregateAccess::RemoveOwner(*aggregate_); break;
        case Kind::Typed:
            if (typed_->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) delete typed_;
            break;
        default: break;
    }
}

SdaiSelectH::SdaiSelectH(const SdaiSelectH& other) noexcept { CopyFrom(other); }
SdaiSelectH::SdaiSelectH(SdaiSelectH&& other) noexcept { MoveFrom(other); }

SdaiSelectH& SdaiSelectH::operator=(const SdaiSelectH& other) noexcept {
    if (this != &other) {
        // The other value may belong to something that goes with this one.
        SdaiSelectH old(std::move(*this));
        CopyFrom(other);
    }
    return *this;
}

SdaiSelectH& SdaiSelectH::operator=(SdaiSelectH&& other) noexcept {
    if (this != &other) {
        SdaiSelectH old(std::move(*this));
        MoveFrom(other);
    }
    return *this;
}

// ---- Selects

SdaiSelectH::SdaiSelectH(const SdaiPrimitiveH& value) : SdaiSelectH(value.value_) {
    select_ = kind_ != Kind::Unset;
}

SdaiSelectH::SdaiSelectH(const SdaiString& definedType, const SdaiPrimitiveH& value)
    : SdaiSelectH() {
    if (!value.exists()) return;
    typed_ = new kor::TypedValue(definedType, value);
    kind_ = Kind::Typed;
    select_ = true;
}

SdaiPrimitiveH SdaiSelectH::getValue() const {
    SdaiPrimitiveH value;
    value.value_ = Held();
    value.value_.select_ = false;
    return value;
}

const SdaiString& SdaiSelectH::DefinedType() const {
    return kind_ == Kind::Typed ? typed_->definedType : kNoText;
}

const SdaiSelectH& SdaiSelectH::Held() const {
    const SdaiSelectH* held = this;
    while (held->kind_ == Kind::Typed) held = &held->typed_->value.value_;
    return *held;
}

// ---- Construction

SdaiPrimitiveH::SdaiPrimitiveH(const SdaiString& value) noexcept {
    new (&value_.text_) SdaiString(value);
    value_.kind_ = SdaiSelectH::Kind::String;
}

SdaiPrimitiveH::SdaiPrimitiveH(SdaiString&& value) noexcept {
    new (&value_.text_) SdaiString(std::move(value));
    value_.kind_ = SdaiSelectH::Kind::String;
}

SdaiPrimitiveH::SdaiPrimitiveH(long value) noexcept {
    value_.integer_ = value;
    value_.kind_ = SdaiSelectH::Kind::Integer;
}

SdaiPrimitiveH::SdaiPrimitiveH(double value) noexcept {
    value_.real_ = value;
    value_.kind_ = SdaiSelectH::Kind::Real;
}

SdaiPrimitiveH::SdaiPrimitiveH(const SdaiLogical& value) noexcept {
    value_.logical_ = value;
    value_.kind_ = SdaiSelectH::Kind::Logical;
}

SdaiPrimitiveH::SdaiPrimitiveH(const SdaiBoolean& value) noexcept {
    value_.logical_ = value;
    value_.kind_ = SdaiSelectH::Kind::Boolean;
}

SdaiPrimitiveH::SdaiPrimitiveH(SdaiEntityInstance* instance) noexcept {
    if (instance == nullptr) return;
    value_.instance_ = instance;
    value_.kind_ = SdaiSelectH::Kind::Instance;
}

SdaiPrimitiveH::SdaiPrimitiveH(SdaiAggrInstance* aggregate) noexcept {
    if (aggregate == nullptr) return;
    value_.aggregate_ = aggregate;
    value_.kind_ = SdaiSelectH::Kind::ModelAggregate;
    if (kor::AggregateAccess::HasOwners(*aggregate)) {
        kor::AggregateAccess::AddOwner(*aggregate);
        value_.kind_ = SdaiSelectH::Kind::SharedAggregate;
    }
}

SdaiPrimitiveH SdaiPrimitiveH::TakeOver(SdaiAggrInstance* aggregate) noexcept {
    SdaiPrimitiveH handle;
    if (aggregate == nullptr) return handle;
    kor::AggregateAccess::AddOwner(*aggregate);
    handle.value_.aggregate_ = aggregate;
    handle.value_.kind_ = SdaiSelectH::Kind::SharedAggregate;
    return handle;
}

SdaiPrimitiveH SdaiPrimitiveH::Enumeration(const SdaiString& item) noexcept {
    if (!kor::IsWord(item.View())) return {};
    return kor::HandleAccess::OfText(SdaiSelectH::Kind::Enumeration, item);
}

SdaiPrimitiveH SdaiPrimitiveH::Binary(const SdaiString& digits) noexcept {
    const std::string_view text = digits.View();
    if (text.find_first_of("0123") != 0 ||
        text.find_first_not_of("0123456789ABCDEF") != std::string_view::npos) {
        return {};
    }
    return kor::HandleAccess::OfText(SdaiSelectH::Kind::Binary, digits);
}

SdaiPrimitiveH kor::HandleAccess::OfText(Kind kind, KORUnicodeString text) {
    SdaiPrimitiveH handle;
    new (&handle.value_.text_) SdaiString(std::move(text));
    handle.value_.kind_ = kind;
    return handle;
}

SdaiPrimitiveH kor::HandleAccess::OfTyped(kor::TypedValue* typed) {
    SdaiPrimitiveH handle;
    typed->owners.fetch_add(1, std::memory_order_relaxed);
    handle.value_.typed_ = typed;
    handle.value_.kind_ = Kind::Typed;
    return handle;
}

// ---- Conversions

SdaiPrimitiveH::operator const SdaiString&() const {
    const SdaiSelectH& held = value_.Held();
    return held.kind_ == SdaiSelectH::Kind::String ? held.text_ : kNoText;
}

SdaiPrimitiveH::operator const SdaiLogical&() const {
    const SdaiSelectH& held = value_.Held();
    const bool logical =
        held.kind_ == SdaiSelectH::Kind::Logical || held.kind_ == SdaiSelectH::Kind::Boolean;
    return logical ? held.logical_ : sdaiLFALSE;
}

SdaiPrimitiveH::operator long() const {
    const SdaiSelectH& held = value_.Held();
    if (held.kind_ == SdaiSelectH::Kind::Integer) return held.integer_;
    if (held.kind_ != SdaiSelectH::Kind::Real) return 0;
    // 2 to the power of 63 is representable as a double; the largest long is not.
    constexpr double kLimit = 9223372036854775808.0;
    const double real = std::trunc(held.real_);
    return real >= -kLimit && real < kLimit ? static_cast<long>(real) : 0;
}

SdaiPrimitiveH::operator double() const {
    const SdaiSelectH& held = value_.Held();
    if (held.kind_ == SdaiSelectH::Kind::Real) return held.real_;
    return held.kind_ == SdaiSelectH::Kind::Integer ? static_cast<double>(held.integer_) : 0.0;
}

SdaiPrimitiveH::operator SdaiEntityInstance*() const {
    const SdaiSelectH& held = value_.Held();
    return held.kind_ == SdaiSelectH::Kind::Instance ? held.instance_ : nullptr;
}

SdaiPrimitiveH::operator SdaiAggrInstance*() const {
    const SdaiSelectH& held = value_.Held();
    const bool aggregate = held.kind_ == SdaiSelectH::Kind::ModelAggregate ||
                           held.kind_ == SdaiSelectH::Kind::SharedAggregate;
    return aggregate ? held.aggregate_ : nullptr;
}

// ---- Reads through the handle

SdaiPrimitiveH SdaiPrimitiveH::GetAttr(const SdaiString& name) const {
    const SdaiEntityInstance* instance = *this;
    return instance != nullptr ? instance->GetAttr(name) : SdaiPrimitiveH();
}

SdaiPrimitiveH SdaiPrimitiveH::GetAttr(const SdaiName& name) const {
    const SdaiEntityInstance* instance = *this;
    return instance != nullptr ? instance->GetAttr(name) : SdaiPrimitiveH();
}

SdaiBoolean SdaiPrimitiveH::TestAttr(const SdaiString& name) const {
    const SdaiEntityInstance* instance = *this;
    return instance != nullptr ? instance->TestAttr(name) : sdaiFALSE;
}

SdaiBoolean SdaiPrimitiveH::TestAttr(const SdaiName& name) const {
    const SdaiEntityInstance* instance = *this;
    return instance != nullptr ? instance->TestAttr(name) : sdaiFALSE;
}

SdaiBoolean SdaiPrimitiveH::IsKindOf(const SdaiString& typeName) const {
    const SdaiEntityInstance* instance = *this;
    return instance != nullptr ? instance->IsKindOf(typeName) : sdaiFALSE;
}

SdaiBoolean SdaiPrimitiveH::IsKindOf(const SdaiName& typeName) const {
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
    switch (value_.Held().kind_) {
        case SdaiSelectH::Kind::Integer: return SdaiKind::Integer;
        case SdaiSelectH::Kind::Real: return SdaiKind::Real;
        case SdaiSelectH::Kind::Logical: return SdaiKind::Logical;
        case SdaiSelectH::Kind::Boolean: return SdaiKind::Boolean;
        case SdaiSelectH::Kind::String: return SdaiKind::String;
        case SdaiSelectH::Kind::Enumeration: return SdaiKind::Enumeration;
        case SdaiSelectH::Kind::Binary: return SdaiKind::Binary;
        case SdaiSelectH::Kind::Instance: return SdaiKind::Instance;
        case SdaiSelectH::Kind::ModelAggregate:
        case SdaiSelectH::Kind::SharedAggregate: return SdaiKind::Aggregate;
        default: return SdaiKind::Unset;
    }
}

SdaiString SdaiPrimitiveH::UnderlyingTypeName() const {
    switch (Kind()) {
        case SdaiKind::Unset: return {};
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
    return {};
}

namespace {

// Compares exactly: not every integer is representable as a real.
bool IsEqual(long integer, double real) {
    constexpr double kBeyond = 9223372036854775808.0;  // 2 to the power 63
    return real >= -kBeyond && real < kBeyond && static_cast<double>(integer) == real &&
           integer == static_cast<long>(real);
}

}  // namespace

SdaiLogical SdaiPrimitiveH::operator==(const SdaiPrimitiveH& other) const {
    using Kind = SdaiSelectH::Kind;
    const SdaiSelectH& a = value_.Held();
    const SdaiSelectH& b = other.value_.Held();
    if (a.kind_ == Kind::Unset || b.kind_ == Kind::Unset) return {};
    const auto isTruth = [](Kind kind) { return kind == Kind::Logical || kind == Kind::Boolean; };
    if (a.kind_ == Kind::Integer && b.kind_ == Kind::Integer) {
        return SdaiBoolean(a.integer_ == b.integer_);
    }
    if (a.kind_ == Kind::Real && b.kind_ == Kind::Real) return SdaiBoolean(a.real_ == b.real_);
    if (a.kind_ == Kind::Integer && b.kind_ == Kind::Real) {
        return SdaiBoolean(IsEqual(a.integer_, b.real_));
    }
    if (a.kind_ == Kind::Real && b.kind_ == Kind::Integer) {
        return SdaiBoolean(IsEqual(b.integer_, a.real_));
    }
    if (isTruth(a.kind_) && isTruth(b.kind_)) return a.logical_ == b.logical_;
    const SdaiAggrInstance* members = *this;
    const SdaiAggrInstance* otherMembers = other;
    if (members != nullptr && otherMembers != nullptr) {
        const long count = members->GetMemberCount();
        SdaiLogical equal = SdaiBoolean(count == otherMembers->GetMemberCount());
        for (long i = 0; i < count && !(equal == sdaiLFALSE); ++i) {
            equal = equal && members->GetMember(i) == otherMembers->GetMember(i);
        }
        return equal;
    }
    if (a.kind_ != b.kind_) return sdaiLFALSE;
    if (a.kind_ == Kind::Instance) return SdaiBoolean(a.instance_->IsSameInstance(b.instance_));
    return a.text_ == b.text_;
}

// ---- Values of a model

namespace kor {

namespace {

// The only choice of a select that a value without a defined type can have; empty if there is none
// or more than one.
std::string_view OnlyChoice(const Domain& select, Tag tag) {
    std::string_view only;
    for (const auto& [name, domain] : select.choices) {
        if (!domain->admitted.Has(tag)) continue;
        if (!only.empty()) return {};
        only = name;
    }
    return only;
}

// Creates a typed value that takes ownership of what the cell owns.
Cell NewTypedCell(const SdaiString& definedType, const Cell& value, Model* model) {
    if (model != nullptr) return model->NewTyped(definedType, value);
    const CellHolder holder(value);
    return Cell::Of(Tag::Typed, new TypedValue(definedType, ToHandle(value, false)));
}

Cell CopyOfAggregate(const SdaiAggrInstance& aggregate, const Domain* domain, Model* model) {
    const Domain* element = domain != nullptr ? domain->element : nullptr;
    struct Members {
        std::vector<Cell> cells;
        ~Members() { std::for_each(cells.begin(), cells.end(), ReleaseCell); }
    } members;
    const std::size_t count = AggregateAccess::Count(aggregate);
    members.cells.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        members.cells.push_back(ToCell(aggregate.GetMember(static_cast<long>(i)), element, model));
    }
    const bool selects =
        element != nullptr ? element->IsSelect() : AggregateAccess::HoldsSelects(aggregate);
    const Cell copy =
        model != nullptr
            ? model->NewAggregate(members.cells, selects)
            : Cell::Of(Tag::Aggregate, AggregateAccess::Make(members.cells, selects, nullptr));
    members.cells.clear();
    if (model != nullptr) AggregateAccess::NoteModels(*copy.Get<SdaiAggrInstance*>());
    return copy;
}

// The cell of a value without its defined type, converted as the domain requires.
Cell PlainCell(const SdaiPrimitiveH& value, const Domain* domain, Model* model) {
    using Kind = HandleAccess::Kind;
    const Base base = domain != nullptr ? domain->base : Base::Generic;
    const SdaiSelectH& held = HandleAccess::Held(value);
    const Kind kind = HandleAccess::KindOf(held);
    switch (kind) {
        case Kind::Unset: return {};
        case Kind::Integer:
            if (base == Base::Real) {
                return Cell::Of(Tag::Real, static_cast<double>(value));
            }
            return Cell::Of(Tag::Integer, static_cast<long>(value));
        case Kind::Real: return Cell::Of(Tag::Real, static_cast<double>(value));
        case Kind::Logical:
        case Kind::Boolean: {
            const SdaiLogical& logical = value;
            const bool boolean = kind == Kind::Boolean
                                     ? base != Base::Logical
                                     : base == Base::Boolean && logical != SdaiLogical();
            return Cell::Of(boolean ? Tag::Boolean : Tag::Logical, logical);
        }
        case Kind::Instance:
            return Cell::Of(Tag::Instance, static_cast<SdaiEntityInstance*>(value));
        case Kind::ModelAggregate:
        case Kind::SharedAggregate:
            return CopyOfAggregate(*static_cast<SdaiAggrInstance*>(value), domain, model);
        case Kind::String:
            return Cell::OfText(base == Base::Enumeration ? Tag::Enumeration : Tag::Text,
                                HandleAccess::TextOf(held));
        case Kind::Enumeration: return Cell::OfText(Tag::Enumeration, HandleAccess::TextOf(held));
        case Kind::Binary: return Cell::OfText(Tag::Binary, HandleAccess::TextOf(held));
        case Kind::Typed: break;  // never returned by Held
    }
    return {};
}

// The cell of a value, which shares what the handle owns; it does not own an aggregate.
Cell SharedCell(const SdaiPrimitiveH& value) {
    if (TypedValue* typed = HandleAccess::TypedOf(value)) {
        typed->owners.fetch_add(1, std::memory_order_relaxed);
        return Cell::Of(Tag::Typed, typed);
    }
    if (SdaiAggrInstance* aggregate = value) return Cell::Of(Tag::Aggregate, aggregate);
    return PlainCell(value, nullptr, nullptr);
}

}  // namespace

// ---- Typed values

TypedValue::TypedValue(SdaiString type, SdaiPrimitiveH held)
    : definedType(std::move(type)), value(std::move(held)), cell(SharedCell(value)) {}

TypedValue::~TypedValue() {
    if (cell.GetTag() != Tag::Aggregate) ReleaseCell(cell);  // the handle or the model owns it
}

void TypedValue::Set(SdaiPrimitiveH held) {
    value = std::move(held);
    cell = SharedCell(value);
}

SdaiPrimitiveH OtherHandle(const Cell& cell) {
    using Kind = HandleAccess::Kind;
    switch (cell.GetTag()) {
        case Tag::Integer: return {cell.Get<long>()};
        case Tag::Real: return {cell.Get<double>()};
        case Tag::Logical: return {cell.Get<SdaiLogical>()};
        case Tag::Boolean: return {cell.Get<SdaiLogical>() == sdaiLTRUE};
        case Tag::Text: return HandleAccess::OfText(Kind::String, cell.SharedText());
        case Tag::Enumeration: return HandleAccess::OfText(Kind::Enumeration, cell.SharedText());
        case Tag::Binary: return HandleAccess::OfText(Kind::Binary, cell.SharedText());
        case Tag::Aggregate: return {cell.Get<SdaiAggrInstance*>()};
        case Tag::Typed: return HandleAccess::OfTyped(cell.Get<TypedValue*>());
        default: return {};
    }
}

Cell ToCell(const SdaiPrimitiveH& value, const Domain* domain, Model* model) {
    const bool isSelect = domain != nullptr && domain->IsSelect();
    const TypedValue* typed = HandleAccess::TypedOf(value);
    // A typed value that is unset has only its type's name, and is allowed anywhere.
    if (typed != nullptr && (domain == nullptr || isSelect || !typed->value.exists())) {
        const SdaiAggrInstance* aggregate = value;
        if (aggregate == nullptr) return SharedCell(value);
        return NewTypedCell(typed->definedType, ToCell(typed->value, nullptr, model), model);
    }
    const Cell cell = PlainCell(value, domain, model);
    const std::string_view choice =
        isSelect ? OnlyChoice(*domain, cell.GetTag()) : std::string_view();
    if (choice.empty()) return cell;
    const CellHolder plain(cell);
    return NewTypedCell(SdaiString(choice), ToCell(value, domain->Choice(choice), model), model);
}

std::optional<std::string> FindWrongItem(const SdaiPrimitiveH& value, const Domain* domain) {
    using Kind = HandleAccess::Kind;
    const TypedValue* typed = HandleAccess::TypedOf(value);
    if (typed != nullptr && domain != nullptr && domain->IsSelect()) {
        domain = domain->Choice(typed->definedType.View());
    }
    const SdaiSelectH& held = HandleAccess::Held(value);
    const Kind kind = HandleAccess::KindOf(held);
    const bool isItem = kind == Kind::Enumeration || (kind == Kind::String && domain != nullptr &&
                                                      domain->base == Base::Enumeration);
    if (isItem) {
        const std::string_view item = HandleAccess::TextOf(held).View();
        const bool fits = IsWord(item) && (domain == nullptr || domain->AdmitsItem(item));
        return fits ? std::nullopt : std::optional<std::string>(item);
    }
    if (kind != Kind::ModelAggregate && kind != Kind::SharedAggregate) return std::nullopt;
    const SdaiAggrInstance& members = *static_cast<SdaiAggrInstance*>(value);
    const Domain* element = domain != nullptr ? domain->element : nullptr;
    std::optional<std::string> wrong;
    for (long i = 0; !wrong.has_value() && i < members.GetMemberCount(); ++i) {
        wrong = WrongItem(members.GetMember(i), element);
    }
    return wrong;
}

void ReleaseCell(const Cell& cell) {
    switch (cell.GetTag()) {
        case Tag::Text:
        case Tag::Enumeration:
        case Tag::Binary:
            if (TextAccess::Buffer* buffer = cell.Buffer()) {
                TextAccess::Release(buffer, cell.IsWide());
            }
            break;
        case Tag::Typed: {
            auto* typed = cell.Get<TypedValue*>();
            if (typed->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) delete typed;
            break;
        }
        case Tag::Aggregate: {
            auto* aggregate = cell.Get<SdaiAggrInstance*>();
            if (AggregateAccess::HasOwners(*aggregate)) {
                AggregateAccess::RemoveOwner(*aggregate);
            } else {
                aggregate->~SdaiAggrInstance();  // its memory belongs to the model
            }
            break;
        }
        default: break;
    }
}

}  // namespace kor
