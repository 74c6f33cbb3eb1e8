// Fingerprints of instances and rows.

#include "Fingerprint.h"

#include <bit>
#include <charconv>
#include <cstring>
#include <string_view>
#include <system_error>
#include <utility>

#include "model/Aggregate.h"

namespace relational {

using kor::Cell;
using kor::Tag;

namespace {

constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15U;

constexpr std::uint64_t Mixed(std::uint64_t hash, std::uint64_t value) {
    hash = (hash ^ value) * kFactor;
    return hash ^ (hash >> 32);
}

std::uint64_t Mixed(std::uint64_t hash, const void* data, std::size_t size) {
    hash = Mixed(hash, size);
    const char* bytes = static_cast<const char*>(data);
    for (; size > 0; bytes += 8) {
        std::uint64_t word = 0;
        const std::size_t taken = size < 8 ? size : 8;
        std::memcpy(&word, bytes, taken);
        hash = Mixed(hash, word);
        size -= taken;
    }
    return hash;
}

std::uint64_t Mixed(std::uint64_t hash, const Cell& cell);

std::uint64_t Mixed(std::uint64_t hash, const SdaiAggrInstance& members) {
    const std::size_t count = kor::AggregateAccess::Count(members);
    hash = Mixed(hash, count);
    for (std::size_t i = 0; i < count; ++i) {
        hash = Mixed(hash, kor::AggregateAccess::MemberCell(members, i));
    }
    return hash;
}

std::uint64_t Mixed(std::uint64_t hash, const kor::TypedValue& typed) {
    const std::string_view name = typed.definedType.View();
    hash = Mixed(hash, name.data(), name.size());
    return Mixed(hash, typed.cell);
}

std::uint64_t Mixed(std::uint64_t hash, const Cell& cell) {
    hash = Mixed(hash, static_cast<std::uint64_t>(cell.GetTag()));
    switch (cell.GetTag()) {
        case Tag::Integer:
        case Tag::Real: return Mixed(hash, cell.Get<std::uint64_t>());
        case Tag::Logical:
        case Tag::Boolean: {
            const auto value = cell.Get<SdaiLogical>();
            return Mixed(hash, value == sdaiLTRUE ? 1U : value == sdaiLFALSE ? 2U : 3U);
        }
        case Tag::Text:
        case Tag::Enumeration:
        case Tag::Binary:
            return cell.Characters([hash](auto characters) {
                return Mixed(hash, characters.data(), characters.size() * sizeof characters[0]);
            });
        case Tag::Instance:
            return Mixed(hash, cell.Get<SdaiEntityInstance*>()->GetInstanceNameId());
        case Tag::Aggregate: return Mixed(hash, *cell.Get<SdaiAggrInstance*>());
        case Tag::Typed: return Mixed(hash, *cell.Get<kor::TypedValue*>());
        default: return hash;
    }
}

}  // namespace

std::uint64_t FingerprintOf(const kor::Instance& instance) {
    std::uint64_t hash = instance.Type().slotCount;
    for (const Cell& cell : instance.Values()) hash = Mixed(hash, cell);
    return hash;
}

std::uint64_t FingerprintOf(const Field& field, std::uint64_t place) {
    const std::uint64_t hash = Mixed(kFactor, place);
    switch (field.kind) {
        case Field::Kind::Null: return Mixed(hash, 1);
        case Field::Kind::Integer:
        case Field::Kind::Boolean:
            return Mixed(Mixed(hash, 2), static_cast<std::uint64_t>(field.integer));
        case Field::Kind::Real:
            return Mixed(Mixed(hash, 3), std::bit_cast<std::uint64_t>(field.real));
        case Field::Kind::Text: break;
    }
    return Mixed(Mixed(hash, 4), field.text.data(), field.text.size());
}

// ---- The header

namespace {

constexpr const char* kHeader = "HEADER";
constexpr const char* kAnchor = "ANCHOR";
constexpr const char* kReference = "REFERENCE";
constexpr const char* kData = "DATA";
constexpr const char* kScope = "SCOPE";

// A number and the blank after it, from the front of a text.
bool TakeNumber(std::string_view& text, std::uint64_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (!text.starts_with(' ')) return false;
    text.remove_prefix(1);
    return true;
}

}  // namespace

std::vector<HeaderRow> HeaderRows(const exchange::Header& header,
                                  const exchange::Structure& structure) {
    std::vector<HeaderRow> rows;
    for (const exchange::HeaderRecord& record : header) {
        rows.push_back({kHeader, record.keyword + record.parameters});
    }
    for (const std::string& anchor : structure.anchors) rows.push_back({kAnchor, anchor});
    for (const std::string& address : structure.references) rows.push_back({kReference, address});
    for (const exchange::Structure::Section& section : structure.sections) {
        rows.push_back({kData, std::to_string(section.first) + ' ' + section.parameters});
    }
    for (const exchange::Structure::Scope& scope : structure.scopes) {
        rows.push_back({kScope, std::to_string(scope.first) + ' ' + std::to_string(scope.owner) +
                                    ' ' + scope.exported});
    }
    return rows;
}

bool TakeHeaderRow(const HeaderRow& row, exchange::DataSet& dataSet) {
    exchange::Structure& structure = dataSet.structure;
    std::string_view text = row.text;
    if (row.section == kHeader) {
        const std::size_t parenthesis = text.find('(');
        if (parenthesis == std::string_view::npos) return false;
        dataSet.header.push_back(
            {std::string(text.substr(0, parenthesis)), std::string(text.substr(parenthesis))});
        return true;
    }
    if (row.section == kAnchor) {
        structure.anchors.push_back(row.text);
        return true;
    }
    if (row.section == kReference) {
        structure.references.push_back(row.text);
        return true;
    }
    if (row.section == kData) {
        exchange::Structure::Section section;
        if (!TakeNumber(text, section.first)) return false;
        section.parameters = text;
        structure.sections.push_back(std::move(section));
        return true;
    }
    if (row.section == kScope) {
        exchange::Structure::Scope scope{};
        if (!TakeNumber(text, scope.first) || !TakeNumber(text, scope.owner)) return false;
        scope.exported = text;
        structure.scopes.push_back(std::move(scope));
        return true;
    }
    return false;
}

std::vector<std::string> AsTexts(const std::vector<HeaderRow>& rows) {
    std::vector<std::string> texts;
    texts.reserve(rows.size());
    for (const HeaderRow& row : rows) texts.push_back(row.section + ' ' + row.text);
    return texts;
}

}  // namespace relational
