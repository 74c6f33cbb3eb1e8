// The reader of values and instances.

#include "InstanceReader.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <span>
#include <string>
#include <system_error>
#include <utility>

namespace exchange {

using kor::Cell;
using kor::Domain;
using kor::EntityType;
using kor::Tag;

namespace {

const char* NameOf(Tag tag) {
    switch (tag) {
        case Tag::Integer: return "an INTEGER";
        case Tag::Real: return "a REAL";
        case Tag::Logical: return "a LOGICAL";
        case Tag::Boolean: return "a BOOLEAN";
        case Tag::Text: return "a STRING";
        case Tag::Enumeration: return "an ENUMERATION";
        case Tag::Binary: return "a BINARY";
        case Tag::Aggregate: return "an AGGREGATE";
        case Tag::Typed: return "a typed value";
        default: return "an instance";
    }
}

const char* NameOf(kor::Base base) {
    switch (base) {
        case kor::Base::Integer: return "an INTEGER";
        case kor::Base::Real: return "a REAL";
        case kor::Base::Number: return "a NUMBER";
        case kor::Base::String: return "a STRING";
        case kor::Base::Boolean: return "a BOOLEAN";
        case kor::Base::Logical: return "a LOGICAL";
        case kor::Base::Binary: return "a BINARY";
        case kor::Base::Enumeration: return "an ENUMERATION";
        case kor::Base::Entity: return "an instance";
        case kor::Base::Select: return "a select value";
        case kor::Base::Aggregate: return "an AGGREGATE";
        default: return "a value";
    }
}

// A type created by the model, or null if it refuses.
const EntityType& Own(Place place, const EntityType* entity) {
    if (entity == nullptr) {
        throw SyntaxError{place,
                          "more than " + std::to_string(kor::Model::kMostOwn) +
                              " entity types and combinations that the schema does not declare"};
    }
    return *entity;
}

}  // namespace

void InstanceReader::AddExternal(std::string name) {
    std::uint64_t id = 0;
    const char* const digits = name.data() + 1;
    const bool isNumber = std::from_chars(digits, name.data() + name.size(), id).ec == std::errc();
    if (name.front() == '#' && isNumber) model_->KeepFree(id);
    externals_.insert(std::move(name));
}

// ---- Values

// A value with the name of its type: KEYWORD(value).
Cell InstanceReader::TypedValue(const Domain* domain, int depth) {
    CheckDepth(depth);
    const Place place = lexer_.Here();
    const std::string name(lexer_.Keyword());
    const Domain* choice = nullptr;
    if (domain != nullptr && domain->IsSelect()) {
        choice = domain->Choice(name);
        if (choice == nullptr) {
            problems_.Warn(place, name + " is not among the types of the select" + Context());
        }
    }
    lexer_.Expect('(');
    kor::CellHolder value(Value(choice, depth + 1));
    lexer_.Expect(')');
    SdaiString type(name);
    if (value.Get().GetTag() == Tag::Pending) {
        kor::CellHolder typed(model_->NewTyped(std::move(type), Cell()));
        model_->AddPending(typed.Get(), value.Get().Get<std::uint64_t>());
        return typed.Take();
    }
    if (value.Get().GetTag() == Tag::Derived) {
        kor::CellHolder derived(model_->NewTyped("*", Cell()));
        return model_->NewTyped(std::move(type), derived.Take());
    }
    return model_->NewTyped(std::move(type), value.Take());
}

void InstanceReader::FailNested() const {
    lexer_.FailHere("values nested more than " + std::to_string(kDeepestNesting) + " deep");
}

// Warns if the domain does not allow a value of that kind.
void InstanceReader::WarnOfKind(const char* value, const Domain& domain, Tag tag) {
    problems_.Warn(lexer_.PlaceOf(value), std::string(NameOf(domain.base)) + " expected, found " +
                                              NameOf(tag) + Context());
}

// The place of a value, for messages.
std::string InstanceReader::Context() const {
    if (slot_ == nullptr || slot_->attribute == nullptr) return "";
    return " (attribute " + slot_->attribute->folded + ")";
}

Cell InstanceReader::Number(const Domain* domain) {
    const char* const start = lexer_.At();
    const Cell number = lexer_.Number(domain != nullptr && domain->base == kor::Base::Real);
    Check(start, domain, number.GetTag());
    return number;
}

Cell InstanceReader::Reference(const Domain* domain) {
    if (!problems_.InData()) lexer_.FailHere("a reference to an instance in the header");
    const char* const start = lexer_.At();
    if (Is(start[1], kLetter)) return ExternalReference();
    lexer_.Advance();
    const std::uint64_t id = lexer_.InstanceNameInWindow();
    if (IsExternal(id)) return ExternalValue(id);
    Check(start, domain, Tag::Instance);
    return model_->Reference(id);
}

bool InstanceReader::IsListed(std::uint64_t id) const { return IsExternal(lexer_.NameOf(id)); }

Cell InstanceReader::ExternalValue(std::uint64_t id) { return ExternalValue(lexer_.NameOf(id)); }

Cell InstanceReader::ExternalValue(const std::string& name) {
    return model_->NewTyped(SdaiString(name), Cell());
}

// @5, and the constants #NAME and @NAME.
Cell InstanceReader::ExternalReference() {
    const Place place = lexer_.Here();
    std::string name(1, lexer_.Peek());
    lexer_.Advance();
    name += lexer_.Word();
    if (name.size() == 1) lexer_.FailExpecting("a name");
    name = exchange::ExternalName(name);
    if (Is(name[1], kDigit) && !externals_.contains(name)) {
        problems_.Mend(place, "there is no value " + name);
        return {};
    }
    return ExternalValue(name);
}

bool InstanceReader::TakeInfinite(Cell& value) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr std::pair<std::string_view, double> kWords[] = {
        {"nan", std::numeric_limits<double>::quiet_NaN()},
        {"inf", kInfinity},
        {"-inf", -kInfinity}};
    for (const auto& [word, real] : kWords) {
        // The text ends with a NUL.
        if (std::strncmp(lexer_.At(), word.data(), word.size()) != 0) continue;
        for (std::size_t i = 0; i < word.size(); ++i) lexer_.Advance();
        value = Cell::Of(Tag::Real, real);
        return true;
    }
    return false;
}

Cell InstanceReader::Item(const Domain* domain) {
    const char* const start = lexer_.At();
    lexer_.Advance();
    const Cell item = lexer_.Enumeration(domain);
    Check(start, domain, item.GetTag());
    if (item.GetTag() == Tag::Enumeration && domain != nullptr &&
        !domain->AdmitsItem(item.Text())) {
        problems_.Warn(lexer_.PlaceOf(start),
                       std::string(item.Text()) + " is not an item of the enumeration" + Context());
    }
    return item;
}

// The values of which most of a file consists.
inline Cell InstanceReader::Value(const Domain* domain, int depth) {
    lexer_.Skip();
    const char* const start = lexer_.At();
    if (Is(*start, kNumber) && !takesInfinite_) return Number(domain);
    switch (*start) {
        case '#': return Reference(domain);
        case '\'':
            Check(start, domain, Tag::Text);
            lexer_.Advance();
            return lexer_.String();
        case '(':
            Check(start, domain, Tag::Aggregate);
            lexer_.Advance();
            return List(domain, depth);
        case '$': lexer_.Advance(); return {};
        case '*': lexer_.Advance(); return Cell::Of(Tag::Derived, 0);
        default: return OtherValue(domain, depth);
    }
}

Cell InstanceReader::Value(const Domain* domain) { return Value(domain, 0); }

Cell InstanceReader::OtherValue(const Domain* domain, int depth) {
    Cell infinite;
    if (takesInfinite_ && TakeInfinite(infinite)) return infinite;
    const char* const start = lexer_.At();
    switch (*start) {
        case '@': return ExternalReference();
        case '.': return Item(domain);
        case '"':
            Check(start, domain, Tag::Binary);
            lexer_.Advance();
            return lexer_.Binary();
        default:
            if (Is(*start, kNumber)) return Number(domain);
            if (!Is(*start, kLetter) && *start != '!') {
                lexer_.FailExpecting("a value");
            }
            Check(start, domain, Tag::Typed);
            return TypedValue(domain, depth);
    }
}

// The values up to the closing parenthesis into values_; domain() is that of the next one.
template <class DomainOfNext>
inline void InstanceReader::Values(DomainOfNext domain, int depth) {
    do {
        Keep(Value(domain(), depth));
    } while (lexer_.TakeIf(','));
    lexer_.Expect(')');
}

// Most lists are of reals, which need no cells.
Cell InstanceReader::List(const Domain* domain, int depth) {
    CheckDepth(depth);
    const Domain* element =
        domain != nullptr && domain->base == kor::Base::Aggregate ? domain->element : nullptr;
    const bool selects = element != nullptr && element->IsSelect();
    const std::size_t first = values_.size();
    if (!lexer_.TakeIf(')')) {
        reals_.clear();
        const bool admitsReals = element == nullptr || element->admitted.Has(Tag::Real);
        if (admitsReals && lexer_.TakeReals(reals_)) return model_->NewAggregate(reals_, selects);
        for (const double real : reals_) Keep(Cell::Of(Tag::Real, real));
        Values([element] { return element; }, depth + 1);
    }
    const Cell list = model_->NewAggregate(std::span(values_).subspan(first), selects);
    values_.resize(first);
    return list;
}

// ---- Instances

// Reads the parameters of a record into values_, after the first `(`. The slots say what is
// expected; there are none for a type that is not known.
inline void InstanceReader::Parameters(std::span<const kor::Slot> slots) {
    const kor::Slot* next = slots.data();
    const kor::Slot* const end = next + slots.size();
    if (lexer_.TakeIf(')')) return;
    Values(
        [&]() -> const Domain* {
            slot_ = nullptr;
            if (next == end) return nullptr;
            slot_ = next++;
            return slot_->domain;
        },
        0);
    slot_ = nullptr;
}

// The same for what is rare, which need not become part of its caller.
void InstanceReader::OtherParameters(std::span<const kor::Slot> slots) { Parameters(slots); }

// Adjusts the number of values from `first` on to what the type declares.
void InstanceReader::MendCount(Place place, const EntityType& entity, std::size_t first,
                               std::size_t expected) {
    const std::size_t count = values_.size() - first;
    problems_.Mend(place, std::string(entity.Name().View()) + " has " + std::to_string(expected) +
                              " attributes, found " + std::to_string(count) + " values");
    while (values_.size() > first + expected) {
        ReleaseCell(values_.back());
        values_.pop_back();
    }
    values_.resize(first + expected);
}

const EntityType& InstanceReader::Undeclared(Place place, std::string_view keyword,
                                             std::size_t count) {
    return Own(place, model_->UndeclaredEntity(keyword, count));
}

inline const EntityType& InstanceReader::SimpleInstance() {
    const Place place = lexer_.Here();
    const EntityType* known = known_.Expected(lexer_.Window());
    if (known == nullptr) known = known_.Find(lexer_.UpToParenthesis());
    if (known == nullptr) return UnknownInstance(place);
    lexer_.Advance(known->FoldedName().size() + 1);
    Parameters(known->Slots());
    if (values_.size() == known->Slots().size()) return *known;
    return InstanceOfOtherCount(place, *known);
}

// An instance of a known type with another number of values than the type has.
const EntityType& InstanceReader::InstanceOfOtherCount(Place place, const EntityType& known) {
    if (known.IsDeclared()) {
        MendCount(place, known, 0, known.Slots().size());
        return known;
    }
    const EntityType& entity = Undeclared(place, known.FoldedName(), values_.size());
    known_.Keep(entity);
    return entity;
}

// An instance of a type that is not known yet, or with its keyword written in another way.
const EntityType& InstanceReader::UnknownInstance(Place place) {
    const std::string keyword(lexer_.Keyword());  // copied, since the window may move
    const EntityType* entity = model_->GetSchema().FindEntity(std::string_view(keyword));
    lexer_.Expect('(');
    if (entity != nullptr) {
        OtherParameters(entity->Slots());
        CheckCount(place, *entity, 0, entity->Slots().size());
    } else {
        OtherParameters({});
        entity = &Undeclared(place, keyword, values_.size());
    }
    known_.Keep(*entity);
    return *entity;
}

const EntityType& InstanceReader::NextPart() {
    lexer_.Skip();
    const Place place = lexer_.Here();
    const std::size_t first = values_.size();
    const std::string_view ahead = lexer_.UpToParenthesis();
    const EntityType* entity = known_.Find(ahead);
    if (entity != nullptr && entity->IsDeclared()) {
        lexer_.Advance(ahead.size() + 1);
    } else {
        const std::string keyword(lexer_.Keyword());  // copied, since the window may move
        entity = model_->GetSchema().FindEntity(std::string_view(keyword));
        lexer_.Expect('(');
        if (entity == nullptr) {
            OtherParameters({});
            return Undeclared(place, keyword, values_.size() - first);
        }
        known_.Keep(*entity);
    }
    OtherParameters(entity->OwnSlots());
    CheckCount(place, *entity, first, entity->OwnSlots().size());
    return *entity;
}

// #1=(A(...)B(...)): the parts come in any order and are sorted.
const EntityType& InstanceReader::ComplexInstance() {
    const Place start = lexer_.Here();
    parts_.clear();
    while (!lexer_.TakeIf(')')) {
        const std::size_t first = values_.size();
        const EntityType& entity = NextPart();
        parts_.push_back({&entity, first, values_.size() - first});
    }
    if (parts_.empty()) lexer_.Fail(start, "an instance without a type");
    SortParts();
    entities_.clear();
    for (const Part& part : parts_) {
        if (!entities_.empty() && entities_.back()->FoldedName() == part.entity->FoldedName()) {
            lexer_.Fail(start, "an instance that is " + part.entity->FoldedName() + " twice");
        }
        entities_.push_back(part.entity);
    }
    return Own(start, model_->ComplexEntity(entities_));
}

// Sorts the parts of a complex instance, and their values, by name. Most files have them sorted.
void InstanceReader::SortParts() {
    const auto before = [](const Part& a, const Part& b) {
        return a.entity->FoldedName() < b.entity->FoldedName();
    };
    if (std::is_sorted(parts_.begin(), parts_.end(), before)) return;
    std::sort(parts_.begin(), parts_.end(), before);
    std::vector<Cell> ordered;
    ordered.reserve(values_.size());
    for (const Part& part : parts_) {
        const auto values = values_.begin() + static_cast<long>(part.first);
        ordered.insert(ordered.end(), values, values + static_cast<long>(part.count));
    }
    values_ = std::move(ordered);
}

void InstanceReader::Instance(int depth) {
    const Place place = lexer_.PlaceOf(lexer_.At() - 1);
    const std::uint64_t id = lexer_.InstanceName();
    open_.push_back(id);
    lexer_.Expect('=');
    if (lexer_.TakeIf('&')) scopes_.push_back(Scope(depth));
    const EntityType& entity = lexer_.TakeIf('(') ? ComplexInstance() : SimpleInstance();
    if (model_->Find(id) != nullptr || IsExternal(id)) FailTwice(place, id);
    lexer_.Expect(';');
    kor::Instance& instance = model_->Create(*model_->TypeOf(entity), id, values_);
    values_.clear();  // they are the model's now
    open_.pop_back();
    if (id > kor::Model::kLargestId) greatlyNamed_.push_back({&instance, place});
}

void InstanceReader::FailTwice(Place place, std::uint64_t id) const {
    const std::string name = lexer_.NameOf(id);
    lexer_.Fail(place, model_->Find(id) != nullptr ? "a second instance " + name
                                                   : name + " is an external reference");
}

// &SCOPE #2=...; ENDSCOPE /#2/: the instances that belong to the one being read, which itself
// follows, and those of them that others may use (first edition only). In a model they are like
// others.
Structure::Scope InstanceReader::Scope(int depth) {
    CheckDepth(depth);
    lexer_.FailInPart(lexer_.Here());
    Structure::Scope scope{model_->InstanceCount(), 0, ""};
    lexer_.ExpectWord("SCOPE");
    while (lexer_.TakeIf('#')) Instance(depth + 1);
    lexer_.ExpectWord("ENDSCOPE");
    scope.owner = model_->InstanceCount();  // the instance that follows
    lexer_.Skip();                          // what may be a comment
    if (!lexer_.TakeIf('/')) return scope;
    scope.exported = " /";
    do {
        lexer_.Expect('#');
        if (scope.exported.back() != '/') scope.exported += ',';
        scope.exported += lexer_.NameOf(lexer_.InstanceName());
    } while (lexer_.TakeIf(','));
    lexer_.Expect('/');
    scope.exported += '/';
    return scope;
}

void InstanceReader::ReleaseValues() {
    for (const Cell& value : values_) ReleaseCell(value);
    values_.clear();
    slot_ = nullptr;
}

std::vector<std::uint64_t> InstanceReader::TakeBroken() {
    ReleaseValues();
    // A scope without an owner: that was the broken instance.
    if (!scopes_.empty() && scopes_.back().owner == model_->InstanceCount()) scopes_.pop_back();
    return std::exchange(open_, {});
}

}  // namespace exchange
