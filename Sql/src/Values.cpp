// Values of models as values of SQL, and the reverse.

#include "Values.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

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

constexpr unsigned kJson = 'J';  // the subtype by which SQLite's own functions know JSON

bool IsTrue(const SdaiLogical& logical) { return static_cast<bool>(logical == sdaiLTRUE); }

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

void GiveText(sqlite3_context* to, std::string_view utf8,
              sqlite3_destructor_type owner = SQLITE_TRANSIENT) {
    sqlite3_result_text64(to, utf8.data(), utf8.size(), owner, SQLITE_UTF8);
}

// Arrays are written and read without a tree of them, which takes memory to destroy; there may be
// none.
void AppendScalar(std::string& to, const Json& scalar) {
    to += scalar.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// Appends an array; append(to, i) appends the i-th of its members.
template <class Append>
void AppendArray(std::string& to, std::size_t count, Append append) {
    to += '[';
    for (std::size_t i = 0; i < count; ++i) {
        if (i != 0) to += ',';
        append(to, i);
    }
    to += ']';
}

void GiveArray(sqlite3_context* to, std::string_view array) {
    GiveText(to, array);
    sqlite3_result_subtype(to, kJson);
}

// ---- Columns

std::int64_t NumberOf(const SdaiEntityInstance& instance) {
    return static_cast<std::int64_t>(instance.GetInstanceNameId());
}

Json ScalarOf(const Cell& cell, ColumnKind kind) {
    const Tag tag = cell.GetTag();
    if (tag <= Tag::Derived || tag == Tag::Pending) return nullptr;
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

void AppendJson(std::string& to, const Cell& cell, ColumnKind kind, const kor::Domain* domain) {
    if (kind != ColumnKind::Aggregate || cell.GetTag() != Tag::Aggregate) {
        return AppendScalar(to, ScalarOf(cell, kind));
    }
    const SdaiAggrInstance& members = *cell.Get<SdaiAggrInstance*>();
    const kor::Domain* element = domain->element;
    const ColumnKind memberKind = exchange::ColumnKindOf(element);
    AppendArray(to, kor::AggregateAccess::Count(members), [&](std::string& text, std::size_t i) {
        AppendJson(text, kor::AggregateAccess::MemberCell(members, i), memberKind, element);
    });
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
    return kor::HandleAccess::TextOf(value).ToUtf8();
}

Json ScalarOf(const SdaiPrimitiveH& value, const Models& models) {
    switch (value.Kind()) {
        case SdaiKind::Integer: return static_cast<long>(value);
        case SdaiKind::Real: return static_cast<double>(value);
        case SdaiKind::Logical:
        case SdaiKind::Boolean: {
            const SdaiLogical& logical = value;
            if (logical == SdaiLogical()) return nullptr;
            return IsTrue(logical);
        }
        case SdaiKind::String:
        case SdaiKind::Enumeration: return TextIn(value);
        case SdaiKind::Binary: return '"' + TextIn(value) + '"';
        case SdaiKind::Instance: {
            const SdaiEntityInstance& instance = *static_cast<SdaiEntityInstance*>(value);
            if (models.IsFirst(instance.FindEntityInstanceModel())) return NumberOf(instance);
            return models.NameOf(instance);
        }
        default: return nullptr;
    }
}

void AppendJson(std::string& to, const SdaiPrimitiveH& value, const Models& models) {
    const SdaiAggrInstance* members = value;
    if (members == nullptr) return AppendScalar(to, ScalarOf(value, models));
    const auto count = static_cast<std::size_t>(members->GetMemberCount());
    AppendArray(to, count, [&](std::string& text, std::size_t i) {
        AppendJson(text, members->GetMember(static_cast<long>(i)), models);
    });
}

// ---- Arguments

constexpr std::size_t kDeepestNesting = 100;  // of lists, as in exchange files

std::string_view TextIn(sqlite3_value* value) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
    if (text == nullptr) throw std::bad_alloc();
    return {text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

std::string NulAt(std::size_t position) {
    return "the text holds a NUL at position " + std::to_string(position);
}

SdaiPrimitiveH StringOf(std::string_view utf8) {
    const std::size_t nul = utf8.find('\0');
    if (nul != std::string_view::npos) throw std::runtime_error(NulAt(nul));
    return SdaiPrimitiveH(SdaiString(TextOf(utf8)));
}

// Builds an aggregate while a JSON array is parsed. Errors in the values are reported once the text
// has proved to be an array.
class ArrayReader final : public nlohmann::json_sax<Json> {
  public:
    // No value if the text is not a JSON array.
    static std::optional<SdaiPrimitiveH> Read(std::string_view text) {
        ArrayReader reader;
        if (!Json::sax_parse(text, &reader) || !reader.array_.has_value()) return std::nullopt;
        if (!reader.problem_.empty()) throw std::runtime_error(reader.problem_);
        return std::move(reader.array_);
    }

    bool null() override { return Add({}); }
    bool boolean(bool value) override { return Add(value ? sdaiLTRUE : sdaiLFALSE); }
    bool number_integer(std::int64_t value) override { return Add(static_cast<long>(value)); }
    bool number_unsigned(std::uint64_t value) override { return Add(static_cast<long>(value)); }
    bool number_float(double value, const std::string&) override { return Add(value); }
    bool string(std::string& value) override {
        const std::size_t nul = value.find('\0');
        if (nul != std::string::npos) return Note(NulAt(nul));
        return Add(StringOf(value));
    }
    bool binary(Json::binary_t&) override { return false; }
    bool start_array(std::size_t) override {
        open_.emplace_back();
        if (open_.size() > kDeepestNesting) {
            Note("lists nested more than " + std::to_string(kDeepestNesting) + " deep");
        }
        return true;
    }
    bool end_array() override {
        SdaiPrimitiveH list =
            problem_.empty() ? calls::LiteralList(open_.back()) : SdaiPrimitiveH();
        open_.pop_back();
        if (!open_.empty() || isInObject_) return Add(list);
        array_ = std::move(list);
        return true;
    }
    bool start_object(std::size_t) override {
        if (open_.empty()) isInObject_ = true;
        return Note("a JSON array of values expected, found an object");
    }
    bool key(std::string&) override { return true; }
    bool end_object() override { return true; }
    bool parse_error(std::size_t, const std::string&, const Json::exception&) override {
        return false;
    }

  private:
    bool Add(const SdaiPrimitiveH& value) {
        if (!open_.empty() && problem_.empty()) open_.back().push_back(value);
        return true;
    }
    bool Note(const std::string& problem) {
        if (problem_.empty()) problem_ = problem;
        return true;
    }

    std::vector<std::vector<SdaiPrimitiveH>> open_;  // the members of arrays that have not ended
    bool isInObject_ = false;                        // which the text is
    std::optional<SdaiPrimitiveH> array_;
    std::string problem_;
};

// The value as in an SQL text, shortened.
std::string Shown(sqlite3_value* value) {
    switch (sqlite3_value_type(value)) {
        case SQLITE_NULL: return "NULL";
        case SQLITE_BLOB: return "a BLOB";
        case SQLITE_TEXT: {
            constexpr std::size_t kMost = 40;
            std::string_view text = TextIn(value);
            std::string_view shown = text.substr(0, kMost);
            // Not in the middle of a character; a text may be no UTF-8 at all.
            while (!shown.empty() && shown.size() < text.size() &&
                   (text[shown.size()] & 0xC0) == 0x80) {
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
        if (auto list = ArrayReader::Read(text)) return *std::move(list);
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
            {
                std::string array;
                AppendJson(array, cell, kind, domain);
                return GiveArray(to, array);
            }
        default: break;
    }
    GiveText(to, exchange::ExchangeForm(cell));
}

void Give(sqlite3_context* to, const SdaiPrimitiveH& value, const Models& models) {
    if (static_cast<SdaiAggrInstance*>(value) != nullptr) {
        std::string array;
        AppendJson(array, value, models);
        return GiveArray(to, array);
    }
    const Json json = ScalarOf(value, models);
    switch (json.type()) {
        case Json::value_t::null: return sqlite3_result_null(to);
        case Json::value_t::boolean: return sqlite3_result_int(to, json.get<bool>() ? 1 : 0);
        case Json::value_t::number_integer:
            return sqlite3_result_int64(to, json.get<std::int64_t>());
        case Json::value_t::number_float: return sqlite3_result_double(to, json.get<double>());
        default: return GiveText(to, json.get_ref<const std::string&>());
    }
}

calls::Argument TakeArgument(sqlite3_value* value, orx::Kind kind, const Models& models) {
    calls::Argument argument{TakeValue(value, kind, models)};
    const bool fits = kind == orx::RealList || calls::Accepts(kind, argument.handle);
    if (!fits || calls::Misfit(kind, argument) != nullptr) FailOf(value, kind);
    return argument;
}

}  // namespace sql
