// Values of models as values of SQL, and the reverse.

#include "Values.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "Arguments.h"
#include "Signature.h"
#include "model/Aggregate.h"
#include "model/Cell.h"
#include "services/Utf8.h"

namespace sql {

namespace {

using exchange::ColumnKind;
using kor::Cell;
using kor::Tag;
using Json = nlohmann::json;
using Kind = KORHandleAccess::Kind;

constexpr unsigned kJson = 'J';  // the subtype by which SQLite's own functions know JSON

bool IsTrue(const SdaiLogical& logical) { return static_cast<bool>(logical == sdaiLTRUE); }

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

void GiveText(sqlite3_context* to, std::string_view utf8,
              sqlite3_destructor_type owner = SQLITE_TRANSIENT) {
    sqlite3_result_text64(to, utf8.data(), utf8.size(), owner, SQLITE_UTF8);
}

void GiveJson(sqlite3_context* to, const Json& json) {
    GiveText(to, json.dump(-1, ' ', false, Json::error_handler_t::replace));
    sqlite3_result_subtype(to, kJson);
}

// ---- Columns

std::int64_t NumberOf(const SdaiEntityInstance& instance) {
    return static_cast<std::int64_t>(instance.GetInstanceNameId());
}

Json JsonOf(const Cell& cell, ColumnKind kind, const kor::Domain* domain) {
    const Tag tag = cell.GetTag();
    if (tag <= Tag::Derived || tag == Tag::Pending) return nullptr;
    if (kind == ColumnKind::Aggregate && tag == Tag::Aggregate) {
        const SdaiAggrInstance& members = *cell.Get<SdaiAggrInstance*>();
        const kor::Domain* element = domain->element;
        const ColumnKind memberKind = exchange::ColumnKindOf(element);
        Json array = Json::array();
        for (std::size_t i = 0; i < KORAggregateAccess::Count(members); ++i) {
            array.push_back(
                JsonOf(KORAggregateAccess::MemberCell(members, i), memberKind, element));
        }
        return array;
    }
    if (kind == ColumnKind::Exchange) return exchange::ExchangeForm(cell);
    if (kind == ColumnKind::Reference && TargetOf(cell) != nullptr) {
        return NumberOf(*TargetOf(cell));
    }
    switch (tag) {
        case Tag::Integer: return cell.Get<long>();
        case Tag::Real: return cell.Get<double>();
        case Tag::Text: return cell.SharedText().ToUtf8();
        case Tag::Enumeration: return std::string(cell.Text());
        case Tag::Boolean:
            if (kind == ColumnKind::Boolean) return IsTrue(cell.Get<SdaiLogical>());
            break;
        default: break;
    }
    return exchange::ExchangeForm(cell);
}

void GiveCharacters(sqlite3_context* to, const Cell& cell) {
    if (!cell.IsWide() && IsAscii(cell.Text())) {
        GiveText(to, cell.Text(), SQLITE_STATIC);
    } else {
        GiveText(to, cell.SharedText().ToUtf8());
    }
}

// ---- Results

std::string TextIn(const SdaiPrimitiveH& value) {
    return KORHandleAccess::TextOf(KORHandleAccess::Held(value)).ToUtf8();
}

Json JsonOf(const SdaiPrimitiveH& value, const Models& models) {
    switch (KORHandleAccess::KindOf(KORHandleAccess::Held(value))) {
        case Kind::Integer: return static_cast<long>(value);
        case Kind::Real: return static_cast<double>(value);
        case Kind::Logical:
        case Kind::Boolean: {
            const SdaiLogical& logical = value;
            if (logical == SdaiLogical()) return nullptr;
            return IsTrue(logical);
        }
        case Kind::String:
        case Kind::Enumeration: return TextIn(value);
        case Kind::Binary: return '"' + TextIn(value) + '"';
        case Kind::Instance: {
            const SdaiEntityInstance& instance = *static_cast<SdaiEntityInstance*>(value);
            if (models.IsFirst(instance.FindEntityInstanceModel())) return NumberOf(instance);
            return models.NameOf(instance);
        }
        case Kind::ModelAggregate:
        case Kind::SharedAggregate: {
            const SdaiAggrInstance& members = *static_cast<SdaiAggrInstance*>(value);
            Json array = Json::array();
            for (long i = 0; i < members.GetMemberCount(); ++i) {
                array.push_back(JsonOf(members.GetMember(i), models));
            }
            return array;
        }
        default: return nullptr;
    }
}

// ---- Arguments

constexpr int kDeepestNesting = 100;  // of lists, as in exchange files

std::string_view TextIn(sqlite3_value* value) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
    if (text == nullptr) throw std::bad_alloc();
    return {text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

SdaiPrimitiveH StringOf(std::string_view utf8) {
    const std::size_t nul = utf8.find('\0');
    if (nul != std::string_view::npos) {
        throw std::runtime_error("the text holds a NUL at position " + std::to_string(nul));
    }
    return SdaiPrimitiveH(SdaiString(TextOf(utf8)));
}

SdaiPrimitiveH ValueOf(const Json& json, int depth);

SdaiPrimitiveH ListOf(const Json& array, int depth) {
    if (depth > kDeepestNesting) {
        throw std::runtime_error("lists nested more than " + std::to_string(kDeepestNesting) +
                                 " deep");
    }
    std::vector<SdaiPrimitiveH> members;
    for (const Json& member : array) members.push_back(ValueOf(member, depth + 1));
    return calls::LiteralList(members);
}

SdaiPrimitiveH ValueOf(const Json& json, int depth) {
    switch (json.type()) {
        case Json::value_t::null: return {};
        case Json::value_t::boolean: return json.get<bool>() ? sdaiLTRUE : sdaiLFALSE;
        case Json::value_t::number_integer:
        case Json::value_t::number_unsigned: return static_cast<long>(json.get<std::int64_t>());
        case Json::value_t::number_float: return json.get<double>();
        case Json::value_t::string: return StringOf(json.get_ref<const std::string&>());
        case Json::value_t::array: return ListOf(json, depth);
        default: throw std::runtime_error("a JSON array of values expected, found an object");
    }
}

// What stands in an SQL text for the value, shortened.
std::string Shown(sqlite3_value* value) {
    switch (sqlite3_value_type(value)) {
        case SQLITE_NULL: return "NULL";
        case SQLITE_BLOB: return "a BLOB";
        case SQLITE_TEXT: {
            constexpr std::size_t kMost = 40;
            std::string_view text = TextIn(value);
            std::string_view shown = text.substr(0, kMost);
            while (shown.size() < text.size() && (text[shown.size()] & 0xC0) == 0x80) {
                shown.remove_suffix(1);
            }
            return '\'' + std::string(shown) + (shown.size() < text.size() ? "...'" : "'");
        }
        default: return std::string(TextIn(value));
    }
}

[[noreturn]] void FailOf(sqlite3_value* value, orx::Kind kind) {
    struct Expectation {
        orx::Kind kind;
        const char* text;
    };
    static constexpr Expectation kExpectations[] = {
        {orx::Instance, "an instance, by its number, '#12' or '@model#12',"},
        {orx::Select, "an instance, by its number, '#12' or '@model#12', or a value"},
        {orx::String, "a text"},
        {orx::Integer, "an integer"},
        {orx::Real, "a number"},
        {orx::Aggregate, "a JSON array"},
        {orx::RealList, "a JSON array of numbers, such as '[]',"},
    };
    std::string expectation = calls::KindNames(kind);
    for (const auto& [known, text] : kExpectations) {
        if (known == kind) expectation = text;
    }
    throw std::runtime_error(expectation + " expected, found " + Shown(value));
}

SdaiPrimitiveH TakeText(sqlite3_value* value, orx::Kind kind, const Models& models) {
    const std::string_view text = TextIn(value);
    if (kind == orx::Instance || kind == orx::Select) {
        if (const auto instance = ParseInstance(text)) return &models.InstanceOf(*instance);
    }
    const bool mayBeList = kind == orx::Aggregate || kind == orx::RealList || kind == orx::Select;
    if (mayBeList && text.find_first_not_of(" \t\r\n") != std::string_view::npos) {
        const Json json = Json::parse(text, nullptr, false);
        if (json.is_array()) return ListOf(json, 1);
    }
    return StringOf(text);
}

SdaiPrimitiveH TakeValue(sqlite3_value* value, orx::Kind kind, const Models& models) {
    switch (sqlite3_value_type(value)) {
        case SQLITE_INTEGER: {
            const std::int64_t number = sqlite3_value_int64(value);
            if (kind == orx::Instance || kind == orx::Select) {
                if (number < 0) FailOf(value, kind);
                return &models.InstanceNumbered(static_cast<std::uint64_t>(number));
            }
            return static_cast<long>(number);
        }
        case SQLITE_FLOAT: return sqlite3_value_double(value);
        case SQLITE_TEXT: return TakeText(value, kind, models);
        case SQLITE_BLOB: FailOf(value, kind);
        default: return {};
    }
}

}  // namespace

const SdaiEntityInstance* TargetOf(const Cell& cell) {
    if (cell.GetTag() == Tag::Instance) return cell.Get<SdaiEntityInstance*>();
    return cell.GetTag() == Tag::Typed ? kor::ToHandle(cell, true) : SdaiPrimitiveH();
}

KORUnicodeString TextOf(std::string_view utf8) {
    if (IsAscii(utf8)) return KORUnicodeString(utf8);
    kor::TextBuilder builder;
    while (!utf8.empty()) {
        char32_t character = kor::kReplacement;
        if (!kor::TakeUtf8(utf8, character)) utf8.remove_prefix(1);
        builder.Add(character);
    }
    return builder.Text();
}

void Give(sqlite3_context* to, const Cell& cell, ColumnKind kind, const kor::Domain* domain) {
    const Tag tag = cell.GetTag();
    if (tag <= Tag::Derived || tag == Tag::Pending) return sqlite3_result_null(to);
    if (kind == ColumnKind::Exchange) return GiveText(to, exchange::ExchangeForm(cell));
    switch (tag) {
        case Tag::Integer: return sqlite3_result_int64(to, cell.Get<long>());
        case Tag::Real: return sqlite3_result_double(to, cell.Get<double>());
        case Tag::Text:
        case Tag::Enumeration: return GiveCharacters(to, cell);
        case Tag::Boolean:
            if (kind != ColumnKind::Boolean) break;
            return sqlite3_result_int(to, IsTrue(cell.Get<SdaiLogical>()) ? 1 : 0);
        case Tag::Instance:
            if (kind != ColumnKind::Reference) break;
            return sqlite3_result_int64(to, NumberOf(*cell.Get<SdaiEntityInstance*>()));
        case Tag::Typed:
            if (kind != ColumnKind::Reference || TargetOf(cell) == nullptr) break;
            return sqlite3_result_int64(to, NumberOf(*TargetOf(cell)));
        case Tag::Aggregate:
            if (kind != ColumnKind::Aggregate) break;
            return GiveJson(to, JsonOf(cell, kind, domain));
        default: break;
    }
    GiveText(to, exchange::ExchangeForm(cell));
}

void Give(sqlite3_context* to, const SdaiPrimitiveH& value, const Models& models) {
    const Json json = JsonOf(value, models);
    switch (json.type()) {
        case Json::value_t::null: return sqlite3_result_null(to);
        case Json::value_t::boolean: return sqlite3_result_int(to, json.get<bool>() ? 1 : 0);
        case Json::value_t::number_integer:
            return sqlite3_result_int64(to, json.get<std::int64_t>());
        case Json::value_t::number_float: return sqlite3_result_double(to, json.get<double>());
        case Json::value_t::string: return GiveText(to, json.get_ref<const std::string&>());
        default: return GiveJson(to, json);
    }
}

calls::Argument TakeArgument(sqlite3_value* value, orx::Kind kind, const Models& models) {
    calls::Argument argument{TakeValue(value, kind, models)};
    const bool fits = kind == orx::RealList || calls::Accepts(kind, argument.handle);
    if (!fits || calls::Misfit(kind, argument) != nullptr) FailOf(value, kind);
    return argument;
}

}  // namespace sql
