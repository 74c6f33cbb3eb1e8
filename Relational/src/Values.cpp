// Conversion between values of a model and fields of rows.

#include "Values.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>
#include <vector>

#include "ExchangeText.h"
#include "model/Aggregate.h"
#include "services/Utf8.h"

namespace relational {

using exchange::ColumnKind;
using kor::Cell;
using kor::Domain;
using kor::Tag;

namespace {

bool HasNul(const Cell& cell) {
    return cell.Characters(
        [](auto characters) { return characters.find('\0') != characters.npos; });
}

// A truth value, or nothing.
bool TruthOf(std::string_view text, SdaiLogical& value) {
    struct Word {
        std::string_view text;
        SdaiLogical value;
    };
    static const Word kWords[] = {{"T", sdaiLTRUE},    {"F", sdaiLFALSE},     {"U", SdaiLogical()},
                                  {"TRUE", sdaiLTRUE}, {"FALSE", sdaiLFALSE}, {"UNKNOWN", {}},
                                  {"1", sdaiLTRUE},    {"0", sdaiLFALSE}};
    if (text.size() > 2 && text.front() == '.' && text.back() == '.') {
        text = text.substr(1, text.size() - 2);
    }
    const std::string folded = kor::Folded(text);
    for (const Word& word : kWords) {
        if (folded != word.text) continue;
        value = word.value;
        return true;
    }
    return false;
}

// The whole text as a number.
template <class Number>
bool NumberOf(std::string_view text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto [read, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && read == end && !text.empty();
}

Field TextField(const Cell& cell, std::string& buffer) {
    if (!cell.IsWide()) {
        const std::string_view text = cell.Text();
        if (std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; })) {
            return Field::OfText(text);
        }
    }
    buffer.clear();
    cell.Characters([&buffer](auto characters) {
        for (const auto c : characters) kor::AppendUtf8(buffer, kor::CodePoint(c));
    });
    return Field::OfText(buffer);
}

Cell TextCell(std::string_view utf8) {
    if (std::all_of(utf8.begin(), utf8.end(), [](char c) { return (c & 0x80) == 0; })) {
        return Cell::OfText(Tag::Text, utf8);
    }
    return Cell::OfText(Tag::Text, KORUnicodeString::FromUtf8(utf8));
}

}  // namespace

// ---- From a model

std::size_t MemberCount(const Cell& aggregate) {
    return kor::AggregateAccess::Count(*aggregate.Get<SdaiAggrInstance*>());
}

Cell MemberOf(const Cell& aggregate, std::size_t position) {
    return kor::AggregateAccess::MemberCell(*aggregate.Get<SdaiAggrInstance*>(), position);
}

bool Fits(const Cell& cell, ColumnKind kind, const Domain* domain, const Dialect& dialect) {
    const Tag tag = cell.GetTag();
    if (tag == Tag::Unset) return true;
    switch (kind) {
        case ColumnKind::Integer: return tag == Tag::Integer;
        case ColumnKind::Real: {
            if (tag != Tag::Real) return false;
            const double real = cell.Get<double>();
            return (dialect.keepsNegativeZero || real != 0 || !std::signbit(real)) &&
                   (dialect.keepsNan || !std::isnan(real));
        }
        case ColumnKind::Boolean:
            return tag == Tag::Boolean && !(cell.Get<SdaiLogical>() == SdaiLogical());
        case ColumnKind::Reference: return tag == Tag::Instance;
        case ColumnKind::Exchange: return true;
        case ColumnKind::Aggregate: return tag == Tag::Aggregate;
        case ColumnKind::Text: break;
    }
    switch (domain->base) {
        case kor::Base::String: return tag == Tag::Text && !HasNul(cell);
        case kor::Base::Enumeration: return tag == Tag::Enumeration && kor::IsWord(cell.Text());
        case kor::Base::Logical: return tag == Tag::Logical;
        default: return tag == Tag::Binary && !HasNul(cell);
    }
}

bool Fits(const kor::Instance& instance, const Table& table, const Dialect& dialect) {
    for (const LayoutColumn& column : table.columns) {
        const Cell& cell = instance.Values()[column.slot];
        if (!Fits(cell, column.kind, column.domain, dialect)) return false;
        if (!column.IsAggregate() || cell.GetTag() == Tag::Unset) continue;
        for (std::size_t i = 0; i < MemberCount(cell); ++i) {
            if (!Fits(MemberOf(cell, i), column.memberKind, column.MemberDomain(), dialect)) {
                return false;
            }
        }
    }
    if (table.columns.size() == instance.Values().size()) return true;
    // A slot without a column is derived.
    const std::vector<kor::Slot>& slots = table.entity->Slots();
    for (std::size_t i = 0; i < slots.size(); ++i) {
        if (slots[i].derived && instance.Values()[i].GetTag() != Tag::Derived) return false;
    }
    return true;
}

Field FieldMaker::Make(const kor::Instance& instance, const Cell& cell, ColumnKind kind,
                       std::string& buffer) {
    if (cell.GetTag() == Tag::Unset) return {};
    switch (kind) {
        case ColumnKind::Integer: return Field::Of(std::int64_t{cell.Get<long>()});
        case ColumnKind::Real: return Field::OfReal(cell.Get<double>());
        case ColumnKind::Boolean: return Field::OfBoolean(cell.Get<SdaiLogical>() == sdaiLTRUE);
        case ColumnKind::Aggregate: return Field::Of(std::uint64_t{MemberCount(cell)});
        case ColumnKind::Reference: {
            const SdaiEntityInstance& target = *cell.Get<SdaiEntityInstance*>();
            if (target.FindEntityInstanceModel() == instance.FindEntityInstanceModel()) {
                return Field::Of(std::uint64_t{target.GetInstanceNameId()});
            }
            break;  // reported by the writer
        }
        case ColumnKind::Text:
            if (cell.GetTag() == Tag::Text || cell.GetTag() == Tag::Enumeration) {
                return TextField(cell, buffer);
            }
            break;
        case ColumnKind::Exchange: break;
    }
    buffer = writer_.Value(instance, cell);
    return Field::OfText(buffer);
}

// ---- From rows

bool WholeNumber(const Field& field, std::int64_t& number) {
    switch (field.kind) {
        case Field::Kind::Integer:
        case Field::Kind::Boolean: number = field.integer; return true;
        case Field::Kind::Text: return NumberOf(field.text, number);
        default: return false;
    }
}

std::string Shown(const Field& field) {
    constexpr std::size_t kMost = 60;
    switch (field.kind) {
        case Field::Kind::Null: return "nothing";
        case Field::Kind::Integer: return std::to_string(field.integer);
        case Field::Kind::Boolean: return field.integer != 0 ? "true" : "false";
        case Field::Kind::Real: {
            std::string real;
            exchange::AppendReal(real, field.real);
            return real;
        }
        case Field::Kind::Text: break;
    }
    std::string shown(1, '\'');
    shown += field.text.substr(0, kMost);
    return shown += field.text.size() > kMost ? "...'" : "'";
}

bool CellMaker::MakeText(const Field& field, const Domain* domain, Cell& cell, std::string& error) {
    std::string_view text = field.text;
    if (field.kind != Field::Kind::Text) {
        buffer_ = Shown(field);
        text = buffer_;
    }
    switch (domain->base) {
        case kor::Base::String:
            if (!kor::IsUtf8(text)) {
                error = "a text that is no UTF-8";
                return false;
            }
            cell = TextCell(text);
            return true;
        case kor::Base::Enumeration:
            if (text.size() > 2 && text.front() == '.' && text.back() == '.') {
                text = text.substr(1, text.size() - 2);
            }
            if (!kor::IsWord(text)) {
                error = Shown(field) + " is no item of an enumeration";
                return false;
            }
            cell = Cell::OfText(Tag::Enumeration, text);
            return true;
        case kor::Base::Logical: {
            SdaiLogical value;
            if (!TruthOf(text, value)) {
                error = Shown(field) + " is no logical (.T., .F. or .U.)";
                return false;
            }
            cell = Cell::Of(Tag::Logical, value);
            return true;
        }
        default:
            if (texts_.Value(text, domain, cell, error) && cell.GetTag() == Tag::Binary) {
                return true;
            }
            kor::ReleaseCell(cell);
            cell = Cell();
            error = Shown(field) + " is no binary as an exchange file writes it";
            return false;
    }
}

bool CellMaker::Make(const Field& field, ColumnKind kind, const Domain* domain, Cell& cell,
                     std::string& error) {
    cell = Cell();
    if (field.IsNull()) return true;
    std::int64_t number = 0;
    switch (kind) {
        case ColumnKind::Integer:
            if (!WholeNumber(field, number)) {
                error = Shown(field) + " is no integer";
                return false;
            }
            cell = Cell::Of(Tag::Integer, static_cast<long>(number));
            return true;
        case ColumnKind::Real: {
            double real = field.real;
            if (field.kind == Field::Kind::Integer) real = static_cast<double>(field.integer);
            if (field.kind == Field::Kind::Boolean ||
                (field.kind == Field::Kind::Text && !NumberOf(field.text, real))) {
                error = Shown(field) + " is no number";
                return false;
            }
            cell = Cell::Of(Tag::Real, real);
            return true;
        }
        case ColumnKind::Boolean: {
            SdaiLogical value = field.integer != 0 ? sdaiLTRUE : sdaiLFALSE;
            const bool numeric =
                field.kind == Field::Kind::Boolean ||
                (field.kind == Field::Kind::Integer && (field.integer == 0 || field.integer == 1));
            const bool worded = field.kind == Field::Kind::Text && TruthOf(field.text, value) &&
                                !(value == SdaiLogical());
            if (!numeric && !worded) {
                error = Shown(field) + " is no boolean";
                return false;
            }
            cell = Cell::Of(Tag::Boolean, value);
            return true;
        }
        case ColumnKind::Reference:
            if (!WholeNumber(field, number) || number < 0) {
                error = Shown(field) + " is no instance number";
                return false;
            }
            cell = model_.Reference(static_cast<std::uint64_t>(number));
            return true;
        case ColumnKind::Exchange:
            if (field.kind != Field::Kind::Text) {
                error = Shown(field) + " where a value as an exchange file writes it is due";
                return false;
            }
            return texts_.Value(field.text, domain, cell, error);
        case ColumnKind::Text: return MakeText(field, domain, cell, error);
        case ColumnKind::Aggregate: break;
    }
    error = "an aggregate as a value";
    return false;
}

}  // namespace relational
