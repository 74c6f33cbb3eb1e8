// The reader of values and instances: takes them from the lexer and adds them to a model. An
// instance is read into cells and added to the model when complete; a reference to a later instance
// waits in its place in the model until that instance is read.

#ifndef EXCHANGE_INSTANCEREADER_H
#define EXCHANGE_INSTANCEREADER_H

#include <array>
#include <cstdint>
#include <cstring>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Exchange.h"
#include "ExchangeLexer.h"
#include "ExchangeWriter.h"
#include "model/Model.h"

namespace exchange {

// The entity types of instances and of their parts by their keywords: those that were read last,
// since a file has the same few again and again, and mostly one after another as before.
class KnownTypes {
  public:
    KnownTypes() { Clear(); }
    KnownTypes(const KnownTypes&) = delete;
    KnownTypes& operator=(const KnownTypes&) = delete;

    // The type that followed the last one when that was found before, if the text begins with its
    // keyword and a "("; otherwise null.
    const kor::EntityType* Expected(std::string_view text) {
        const std::string_view keyword = found_->next->keyword;
        if (keyword.size() >= text.size() || text[keyword.size()] != '(') return nullptr;
        if (!kor::AreEqual(keyword, text.substr(0, keyword.size()))) return nullptr;
        found_ = found_->next;
        return found_->type;
    }
    // Null if it is not known.
    const kor::EntityType* Find(std::string_view keyword) {
        auto& [last, before] = PlacesFor(keyword);
        if (kor::AreEqual(last.keyword, keyword)) return Found(last);
        return kor::AreEqual(before.keyword, keyword) ? Found(before) : nullptr;
    }
    void Keep(const kor::EntityType& type) {
        auto& [last, before] = PlacesFor(type.FoldedName());
        before = std::exchange(last, {type.FoldedName(), &type, &none_});
    }
    void Clear() {
        for (Places& places : places_) places.fill(none_);
        found_ = &none_;
    }

  private:
    struct Known {
        std::string_view keyword;  // of the type, which is null if the place is free
        const kor::EntityType* type;
        Known* next;  // the one that was found after it
    };

    const kor::EntityType* Found(Known& known) {
        found_->next = &known;
        found_ = &known;
        return known.type;
    }

    // The only places for a keyword: the type that was kept last, and the one before it.
    using Places = std::array<Known, 2>;
    Places& PlacesFor(std::string_view keyword) {
        const std::uint64_t hash = keyword.size() >= 8   ? Mixed<std::uint64_t>(keyword)
                                   : keyword.size() >= 4 ? Mixed<std::uint32_t>(keyword)
                                                         : keyword.size();
        return places_[(hash * 0x9E37'79B9'7F4A'7C15U) >> 57];
    }
    // Of the first and last characters, as many as the type has bytes.
    template <class Characters>
    static std::uint64_t Mixed(std::string_view keyword) {
        Characters first;
        Characters last;
        std::memcpy(&first, keyword.data(), sizeof first);
        std::memcpy(&last, keyword.data() + keyword.size() - sizeof last, sizeof last);
        return first + std::uint64_t{3} * last + keyword.size();
    }

    Known none_{"", nullptr, &none_};
    std::array<Places, 128> places_;
    Known* found_;  // the last one
};

class InstanceReader {
  public:
    InstanceReader(ExchangeLexer& lexer, Problems& problems) : lexer_(lexer), problems_(problems) {}
    ~InstanceReader() { ReleaseValues(); }
    InstanceReader(const InstanceReader&) = delete;
    InstanceReader& operator=(const InstanceReader&) = delete;

    // The model that receives the following instances. It must outlive the reader.
    void Into(kor::Model& model) {
        model_ = &model;
        known_.Clear();
    }

    // A name with an address in the reference section: #5 or @5. Call after Into; the model gives
    // no new instance that number.
    void AddExternal(std::string name);

    void AddExternals(const InstanceReader& other) { externals_ = other.externals_; }

    bool IsExternal(std::string_view name) const { return externals_.contains(std::string(name)); }

    // From now on nan, inf and -inf are reals, which no exchange file has.
    void TakeInfinite() { takesInfinite_ = true; }

    // A statement of the data section, after its "#".
    void Instance() { Instance(0); }

    // A value without a type name, in the declared domain; null: any.
    kor::Cell Value(const kor::Domain* domain);

    // The scopes so far, in the order of their owners.
    std::vector<Structure::Scope> TakeScopes() { return std::move(scopes_); }

    // The parameters of an undeclared record, after its "(". The values are valid until released.
    std::span<const kor::Cell> Parameters() {
        OtherParameters({});
        return values_;
    }
    void ReleaseValues();

    // The instances whose names are too large, and their places.
    struct GreatlyNamed {
        SdaiEntityInstance* instance;
        Place place;
    };
    const std::vector<GreatlyNamed>& GreatlyNamedOnes() const { return greatlyNamed_; }

    // After an error: the names of the broken instance and of those in whose scopes it is.
    std::vector<std::uint64_t> TakeBroken();

  private:
    // A part of a complex instance: its type and where its values are in values_.
    struct Part {
        const kor::EntityType* entity;
        std::size_t first;
        std::size_t count;
    };

    kor::Cell Value(const kor::Domain* domain, int depth);
    kor::Cell OtherValue(const kor::Domain* domain, int depth);
    // Takes ownership of the value, if there is memory to keep it or not.
    void Keep(kor::Cell value) {
        try {
            values_.emplace_back();
        } catch (...) {
            ReleaseCell(kor::Cell(value));
            throw;
        }
        values_.back() = value;
    }
    template <class DomainOfNext>
    [[gnu::always_inline]] void Values(DomainOfNext domain, int depth);
    kor::Cell Number(const kor::Domain* domain);
    kor::Cell Item(const kor::Domain* domain);
    bool TakeInfinite(kor::Cell& value);
    kor::Cell Reference(const kor::Domain* domain);
    kor::Cell ExternalReference();
    [[gnu::cold]] kor::Cell ExternalValue(std::uint64_t id);
    kor::Cell ExternalValue(const std::string& name);
    bool IsExternal(std::uint64_t id) const { return !externals_.empty() && IsListed(id); }
    [[gnu::cold]] bool IsListed(std::uint64_t id) const;
    kor::Cell TypedValue(const kor::Domain* domain, int depth);
    kor::Cell List(const kor::Domain* domain, int depth);
    void CheckDepth(int depth) const {
        if (depth > kDeepestNesting) FailNested();
    }
    [[noreturn, gnu::cold]] void FailNested() const;
    void Check(const char* value, const kor::Domain* domain, kor::Tag tag) {
        if (domain != nullptr && !domain->admitted.Has(tag)) WarnOfKind(value, *domain, tag);
    }
    [[gnu::cold]] void WarnOfKind(const char* value, const kor::Domain& domain, kor::Tag tag);
    std::string Context() const;

    [[gnu::always_inline]] void Parameters(std::span<const kor::Slot> slots);
    void OtherParameters(std::span<const kor::Slot> slots);
    void CheckCount(Place place, const kor::EntityType& entity, std::size_t first,
                    std::size_t expected) {
        if (values_.size() - first != expected) MendCount(place, entity, first, expected);
    }
    [[gnu::cold]] void MendCount(Place place, const kor::EntityType& entity, std::size_t first,
                                 std::size_t expected);
    const kor::EntityType& Undeclared(Place place, std::string_view keyword, std::size_t count);
    [[gnu::always_inline]] const kor::EntityType& SimpleInstance();
    const kor::EntityType& InstanceOfOtherCount(Place place, const kor::EntityType& known);
    const kor::EntityType& UnknownInstance(Place place);
    const kor::EntityType& ComplexInstance();
    const kor::EntityType& NextPart();
    void SortParts();
    void Instance(int depth);
    [[noreturn, gnu::cold]] void FailTwice(Place place, std::uint64_t id) const;
    [[gnu::cold]] Structure::Scope Scope(int depth);

    ExchangeLexer& lexer_;
    Problems& problems_;
    kor::Model* model_ = nullptr;
    std::vector<kor::Cell> values_;                 // of the instance being read
    std::vector<double> reals_;                     // with which a list begins
    std::vector<Part> parts_;                       // of the complex instance being read
    std::vector<const kor::EntityType*> entities_;  // the types of its parts, in order
    const kor::Slot* slot_ = nullptr;               // of the value being read
    std::vector<std::uint64_t> open_;  // the instance being read, after those around it
    std::vector<GreatlyNamed> greatlyNamed_;
    std::set<std::string> externals_;
    std::vector<Structure::Scope> scopes_;
    bool takesInfinite_ = false;
    KnownTypes known_;
};

}  // namespace exchange

#endif
