// Fills models from tables.

#include "TestModel.h"

#include <algorithm>
#include <stdexcept>
#include <variant>

#include "Notation.h"
#include "SdaiIterator.h"

namespace {

tables::Schema SchemaOf(const std::string& text) {
    return text.find("SCHEMA ") == 0 ? tables::ReadSchema(text) : tables::BuiltInSchema(text);
}

template <class... Visits>
struct Visitor : Visits... {
    using Visits::operator()...;
};
template <class... Visits>
Visitor(Visits...) -> Visitor<Visits...>;

}  // namespace

TestModel::TestModel(const std::string& schema, const std::string& data)
    : schema_(SchemaOf(schema)), model_(platform::NewModel(schema_)) {
    const tables::DataSet rows = tables::ReadData(schema_, data);
    // References may point forward: all instances are created before any value is set.
    unsigned long last = 0;
    for (const tables::Instance& row : rows) {
        const SdaiEntity* type =
            model_->GetEntityDefinition(SdaiString(std::string_view(row.types.front())));
        const bool isNext = row.types.size() == 1 && row.number == last + 1 && type != nullptr;
        SdaiAppInstance* instance = isNext ? type->CreateEntityInstance(model_.get())
                                           : platform::Create(*model_, row.types, row.number);
        if (instance == nullptr) throw std::runtime_error("no such type as " + row.types.front());
        instances_[row.number] = instance;
        last = std::max(last, row.number);
    }
    for (const tables::Instance& row : rows) {
        for (const auto& [attribute, value] : row.values) {
            instances_[row.number]->PutAttr(SdaiString(std::string_view(attribute)), Handle(value));
        }
    }
}

SdaiPrimitiveH TestModel::operator[](unsigned long number) const {
    const auto known = instances_.find(number);
    if (known != instances_.end()) return known->second;
    for (SdaiEntityInstance* instance : Instances()) {
        if (instance->GetInstanceNameId() == number) return instance;
    }
    ADD_FAILURE() << "no instance #" << number;
    return {};
}

SdaiPrimitiveH TestModel::Handle(const tables::Value& value) const {
    return std::visit(
        Visitor{
            [](std::monostate) { return SdaiPrimitiveH(); },
            [](long number) { return SdaiPrimitiveH(number); },
            [](double number) { return SdaiPrimitiveH(number); },
            [](tables::Truth truth) {
                return SdaiPrimitiveH(truth == tables::Truth::True    ? sdaiLTRUE
                                      : truth == tables::Truth::False ? sdaiLFALSE
                                                                      : SdaiLogical());
            },
            [](const tables::Text& text) {
                return SdaiPrimitiveH(SdaiString(KORUnicodeString(text.characters)));
            },
            [](const tables::Item& item) {
                return SdaiPrimitiveH::Enumeration(SdaiString(std::string_view(item.name)));
            },
            [](const tables::Bits& bits) {
                return SdaiPrimitiveH::Binary(SdaiString(std::string_view(bits.digits)));
            },
            [this](const tables::Reference& reference) { return (*this)[reference.number]; },
            [this](const std::vector<tables::Value>& members) {
                auto* aggregate = new SdaiAggrInstance;
                const SdaiPrimitiveH owner = SdaiPrimitiveH::TakeOver(aggregate);
                for (const tables::Value& member : members) aggregate->Append(Handle(member));
                return owner;
            },
            [this](const tables::Typed& typed) {
                return SdaiPrimitiveH(
                    SdaiSelectH(SdaiString(std::string_view(typed.type)), Handle(*typed.value)));
            },
        },
        value.held);
}

std::vector<SdaiEntityInstance*> TestModel::Instances() const {
    std::map<unsigned long, SdaiEntityInstance*> byNumber(instances_.begin(), instances_.end());
    for (const tables::Entity& entity : schema_.entities) {
        SdaiIterator_Of_SdaiEntityInstanceH instance(
            model_->GetEntityExtent(SdaiString(std::string_view(entity.name))));
        while (instance.Next()) {
            SdaiEntityInstance* found = instance.GetCurrentMember();
            byNumber[found->GetInstanceNameId()] = found;
        }
    }
    std::vector<SdaiEntityInstance*> all;
    for (const auto& [number, instance] : byNumber) all.push_back(instance);
    return all;
}
