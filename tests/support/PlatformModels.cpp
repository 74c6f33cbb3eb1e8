// The models of the stand-alone platform, for the module's tests: its dictionary made from tables.

#include "PlatformModels.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <string_view>

#include "model/Dictionary.h"
#include "model/Model.h"

namespace {

kor::TypeExpression Expression(const tables::Domain& domain) {
    using Kind = tables::Domain::Kind;
    static const std::map<Kind, kor::Base> kSimple{
        {Kind::Any, kor::Base::Generic},     {Kind::Integer, kor::Base::Integer},
        {Kind::Real, kor::Base::Real},       {Kind::Number, kor::Base::Number},
        {Kind::String, kor::Base::String},   {Kind::Boolean, kor::Base::Boolean},
        {Kind::Logical, kor::Base::Logical}, {Kind::Binary, kor::Base::Binary},
    };
    kor::TypeExpression expression;
    switch (domain.kind) {
        case Kind::Named:
            expression.kind = kor::TypeExpression::Kind::Named;
            expression.name = domain.names.front();
            break;
        case Kind::Aggregate:
            expression.kind = kor::TypeExpression::Kind::Aggregate;
            expression.element =
                std::make_shared<const kor::TypeExpression>(Expression(*domain.members));
            break;
        default: expression.simple = kSimple.at(domain.kind);
    }
    return expression;
}

kor::TypeDeclaration Declaration(const std::string& name, const tables::Domain& domain) {
    kor::TypeDeclaration type;
    type.name = name;
    switch (domain.kind) {
        case tables::Domain::Kind::Enumeration:
            type.kind = kor::TypeDeclaration::Kind::Enumeration;
            type.members = domain.names;
            break;
        case tables::Domain::Kind::Select:
            type.kind = kor::TypeDeclaration::Kind::Select;
            type.members = domain.names;
            break;
        default: type.alias = Expression(domain);
    }
    return type;
}

kor::AttributeDeclaration Declaration(const tables::Attribute& attribute) {
    kor::AttributeDeclaration declaration;
    declaration.type = Expression(attribute.domain);
    declaration.optional = true;
    declaration.derived = attribute.derived;
    if (attribute.redeclaredOf.empty()) {
        declaration.name = attribute.name;
    } else {
        declaration.redeclaredEntity = attribute.redeclaredOf;
        declaration.redeclaredAttribute = attribute.name;
    }
    return declaration;
}

kor::EntityDeclaration Declaration(const tables::Entity& entity) {
    kor::EntityDeclaration declaration;
    declaration.name = entity.name;
    declaration.supertypes = entity.supertypes;
    for (const tables::Attribute& attribute : entity.attributes) {
        declaration.attributes.push_back(Declaration(attribute));
    }
    return declaration;
}

std::shared_ptr<const kor::Schema> Made(const tables::Schema& schema) {
    kor::SchemaDeclaration declaration{schema.name, {}, {}};
    for (const tables::Entity& entity : schema.entities) {
        declaration.entities.push_back(Declaration(entity));
    }
    for (const auto& [name, domain] : schema.types) {
        declaration.types.push_back(Declaration(name, domain));
    }
    std::vector<kor::Diagnostic> errors;
    auto made = kor::Schema::Make(declaration, errors);
    if (made == nullptr) throw std::runtime_error(errors.front().message);
    return made;
}

}  // namespace

std::unique_ptr<SdaiModel> platform::NewModel(const tables::Schema& schema) {
    return std::make_unique<kor::Model>(Made(schema));
}

SdaiAppInstance* platform::Create(SdaiModel& model, const std::vector<std::string>& types,
                                  unsigned long number) {
    auto& own = static_cast<kor::Model&>(model);
    std::vector<const kor::EntityType*> parts;
    for (const std::string& type : types) {
        parts.push_back(own.GetSchema().FindEntity(std::string_view(type)));
    }
    const kor::EntityType* entity = parts.front();
    if (types.size() > 1) {
        if (std::ranges::find(parts, nullptr) != parts.end()) return nullptr;
        std::ranges::sort(parts, {}, &kor::EntityType::FoldedName);
        entity = own.ComplexEntity(parts);
    } else if (entity == nullptr) {
        entity = own.UndeclaredEntity(kor::Folded(types.front()), 0);
    }
    const std::vector<kor::Cell> unset(entity->Slots().size());
    return &own.Create(*own.TypeOf(*entity), number, unset);
}
