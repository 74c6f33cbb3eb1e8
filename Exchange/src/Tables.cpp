// The presentation of entity types as tables.

#include "Tables.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "ExchangeWriter.h"

namespace exchange {

namespace {

std::string Lower(std::string_view name) {
    std::string lower(name);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

}  // namespace

ColumnKind ColumnKindOf(const kor::Domain* domain) {
    using kor::Base;
    if (domain == nullptr) return ColumnKind::Exchange;
    switch (domain->base) {
        case Base::String:
        case Base::Enumeration:
        case Base::Logical:
        case Base::Binary: return ColumnKind::Text;
        case Base::Integer: return ColumnKind::Integer;
        case Base::Real:
        case Base::Number: return ColumnKind::Real;
        case Base::Boolean: return ColumnKind::Boolean;
        case Base::Entity: return ColumnKind::Reference;
        case Base::Select:
            return domain->choices.empty() && !domain->entities.empty() ? ColumnKind::Reference
                                                                        : ColumnKind::Exchange;
        case Base::Aggregate: return ColumnKind::Aggregate;
        case Base::Generic: break;
    }
    return ColumnKind::Exchange;
}

std::string TableName(const kor::EntityType& entity) { return Lower(entity.FoldedName()); }

std::string FreeName(std::string name, const std::vector<std::string>& taken) {
    while (std::find(taken.begin(), taken.end(), name) != taken.end()) name += '_';
    return name;
}

std::vector<Column> ColumnsOf(const kor::EntityType& entity, std::vector<std::string> taken) {
    std::vector<Column> columns;
    const std::vector<kor::Slot>& slots = entity.Slots();
    for (std::size_t i = 0; i < slots.size(); ++i) {
        if (slots[i].derived) continue;
        std::string name = slots[i].attribute != nullptr ? Lower(slots[i].attribute->folded)
                                                         : "value_" + std::to_string(i + 1);
        taken.push_back(FreeName(std::move(name), taken));
        columns.push_back({taken.back(), i, ColumnKindOf(slots[i].domain), slots[i].domain});
    }
    return columns;
}

std::string ExchangeForm(const kor::Cell& cell) {
    const std::string list = ParametersText({&cell, 1});
    return list.substr(1, list.size() - 2);
}

}  // namespace exchange
