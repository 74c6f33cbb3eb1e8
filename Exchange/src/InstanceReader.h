// The reader of values and instances: takes them from the lexer and adds them to a model. An
// instance is read into cells and added to the model when complete; a reference to a later instance
// waits in its place in the model until that instance is read.

#ifndef EXCHANGE_INSTANCEREADER_H
#define EXCHANGE_INSTANCEREADER_H

#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "Exchange.h"
#include "ExchangeLexer.h"
#include "model/Model.h"

namespace exchange {

class InstanceReader {
  public:
    InstanceReader(ExchangeLexer& lexer, Problems& problems) : lexer_(lexer), problems_(problems) {}
    ~InstanceReader() { ReleaseValues(); }
    InstanceReader(const InstanceReader&) = delete;
    InstanceReader& operator=(const InstanceReader&) = delete;

    // The model that receives the following instances. It must outlive the reader.
    void Into(kor::Model& model) { model_ = &model; }

    // A name with an address in the reference section: #5 or @5.
    void AddExternal(std::string name) { externals_.insert(std::move(name)); }

    void AddExternals(const InstanceReader& other) { externals_ = other.externals_; }

    bool IsExternal(std::string_view name) const { return externals_.contains(std::string(name)); }

    // From now on nan, inf and -inf are reals, which no exchange file has.
    void TakeInfinite() { takesInfinite_ = true; }

    // A statement of the data section, after its "#".
    void Instance() { Instance(0); }

    // A value without a type name, in the declared domain; null: any.
    kor::Cell Value(const kor::Domain* domain) { return Value(domain, 0); }

    // The scopes so far, in the order of their owners.
    std::vector<Structure::Scope> TakeScopes() { return std::move(scopes_); }

    // The parameters of an undeclared record, after its "(". The values are valid until released.
    std::span<const kor::Cell> Parameters() {
        Parameters({});
        return values_;
    }
    void ReleaseValues();

    // The instances whose names are too large, and their places.
    struct GreatlyNamed {
        SdaiEntityInstance* instance;
        Place place;
    };
    const std::vector<GreatlyNamed>& GreatlyNamedOnes() const { return greatlyNamed_; }

    // After an error: the name of the broken instance, if there is one.
    std::optional<std::uint64_t> TakeBroken();

  private:
    kor::Cell Value(const kor::Domain* domain, int depth);
    bool TakeInfinite(kor::Cell& value);
    kor::Cell Reference(const kor::Domain* domain);
    kor::Cell ExternalReference();
    kor::Cell TypedValue(const kor::Domain* domain, int depth);
    kor::Cell List(const kor::Domain* domain, int depth);
    void CheckDepth(int depth) const;
    void Check(const char* value, const kor::Domain* domain, kor::Tag tag) {
        if (domain != nullptr && !domain->admitted.Has(tag)) WarnOfKind(value, *domain, tag);
    }
    [[gnu::cold]] void WarnOfKind(const char* value, const kor::Domain& domain, kor::Tag tag);
    std::string Context() const;

    void Parameters(std::span<const kor::Slot> slots);
    void CheckCount(Place place, const kor::EntityType& entity, std::size_t first,
                    std::size_t expected);
    const kor::EntityType& Undeclared(Place place, std::string_view keyword, std::size_t count);
    const kor::EntityType& SimpleInstance();
    const kor::EntityType& ComplexInstance();
    void Instance(int depth);
    Structure::Scope Scope(std::uint64_t id, int depth);

    ExchangeLexer& lexer_;
    Problems& problems_;
    kor::Model* model_ = nullptr;
    std::vector<kor::Cell> values_;         // of the instance being read
    const kor::Slot* slot_ = nullptr;       // of the value being read
    std::optional<std::uint64_t> current_;  // the instance being read
    std::vector<GreatlyNamed> greatlyNamed_;
    std::set<std::string> externals_;
    std::vector<Structure::Scope> scopes_;
    bool takesInfinite_ = false;
};

}  // namespace exchange

#endif
