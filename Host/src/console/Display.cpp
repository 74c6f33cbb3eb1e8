// The display of results.

#include "console/Display.h"

#include <unistd.h>

#include <iostream>
#include <utility>

#include "ExchangeText.h"
#include "console/Json.h"
#include "console/Printable.h"
#include "model/Cell.h"
#include "services/Utf8.h"

namespace host {

namespace {

using kor::HandleAccess;

std::string InstanceName(const SdaiEntityInstance& instance, const Session& session) {
    const SdaiModel* model = instance.FindEntityInstanceModel();
    const NamedModel* named = session.Holding(model);
    std::string name;
    if (named != nullptr && named != session.Models().data()) name = '@' + named->name;
    return name + '#' + std::to_string(instance.GetInstanceNameId());
}

// A text in quotes, with quotes inside doubled.
void AppendReadable(std::string& to, std::string_view utf8) {
    to += '\'';
    for (const char c : utf8) to.append(c == '\'' ? 2 : 1, c);
    to += '\'';
}

// Whether texts are in the notation of exchange files or show their characters.
enum class Texts { Encoded, Readable };

void AppendValue(std::string& to, const SdaiPrimitiveH& value, const Session& session,
                 Texts texts) {
    switch (value.Kind()) {
        case SdaiKind::Integer: exchange::AppendInteger(to, value); break;
        case SdaiKind::Real: exchange::AppendReal(to, value); break;
        case SdaiKind::Logical:
        case SdaiKind::Boolean: exchange::AppendLogical(to, value); break;
        case SdaiKind::String:
            if (texts == Texts::Readable) {
                AppendReadable(to, Readable(TextOf(value).ToUtf8()));
            } else {
                exchange::AppendString(to, static_cast<const KORUnicodeString&>(TextOf(value)));
            }
            break;
        case SdaiKind::Enumeration:
            exchange::AppendEnumeration(to, HandleAccess::TextOf(value).View());
            break;
        case SdaiKind::Binary:
            exchange::AppendBinary(to, HandleAccess::TextOf(value).View());
            break;
        case SdaiKind::Instance:
            to += Printable(InstanceName(*static_cast<SdaiEntityInstance*>(value), session));
            break;
        case SdaiKind::Aggregate: {
            const SdaiAggrInstance& members = *static_cast<SdaiAggrInstance*>(value);
            to += '(';
            for (long i = 0; i < members.GetMemberCount(); ++i) {
                if (i != 0) to += ',';
                AppendValue(to, members.GetMember(i), session, texts);
            }
            to += ')';
            break;
        }
        default: {
            const std::string_view external = exchange::ExternalReference(value);
            to += external.empty() ? "$" : external;
        }
    }
}

}  // namespace

void WriteValue(Json& json, const SdaiPrimitiveH& value, const Session& session) {
    switch (value.Kind()) {
        case SdaiKind::Integer: json.Integer(static_cast<long>(value)); break;
        case SdaiKind::Real: json.Real(value); break;
        case SdaiKind::Logical:
        case SdaiKind::Boolean: {
            const SdaiLogical& logical = value;
            if (logical == SdaiLogical()) {
                json.Text("UNKNOWN");
            } else {
                json.Truth(static_cast<bool>(logical));
            }
            break;
        }
        case SdaiKind::String: json.Text(TextOf(value).ToUtf8()); break;
        case SdaiKind::Enumeration:
            json.Object([&] { json.Name("enumeration").Text(HandleAccess::TextOf(value).View()); });
            break;
        case SdaiKind::Binary:
            json.Object([&] { json.Name("binary").Text(HandleAccess::TextOf(value).View()); });
            break;
        case SdaiKind::Instance:
            json.Object([&] {
                const SdaiEntityInstance& instance = *static_cast<SdaiEntityInstance*>(value);
                json.Name("instance").Text(NameToUtf8(InstanceName(instance, session)));
                json.Name("type").Text(value.GetInstanceType()->Name().ToUtf8());
            });
            break;
        case SdaiKind::Aggregate:
            json.Array([&] {
                const SdaiAggrInstance& members = *static_cast<SdaiAggrInstance*>(value);
                for (long i = 0; i < members.GetMemberCount(); ++i) {
                    WriteValue(json, members.GetMember(i), session);
                }
            });
            break;
        default: {
            const std::string_view external = exchange::ExternalReference(value);
            if (external.empty()) {
                json.Null();
            } else {
                json.Object([&] { json.Name("external").Text(external); });
            }
        }
    }
}

namespace {

std::string KindName(const SdaiPrimitiveH& value) {
    const SdaiString kind =
        value.Kind() == SdaiKind::Instance ? "INSTANCE" : value.UnderlyingTypeName();
    return kind.length() != 0 ? std::string(kind.View()) : "UNSET";
}

}  // namespace

std::string ToText(const SdaiPrimitiveH& value, const Session& session) {
    std::string text;
    AppendValue(text, value, session, Texts::Encoded);
    return text;
}

std::string Readable(std::string_view utf8) { return Printable(utf8); }

std::string NameToUtf8(std::string_view name) {
    return kor::IsUtf8(name) ? std::string(name) : KORUnicodeString(name).ToUtf8();
}

std::string ReadableName(std::string_view name) { return Printable(NameToUtf8(name)); }

Form FormOf(const Options& options) {
    if (options.json) return Form::Json;
    if (options.csv) return Form::Csv;
    return isatty(STDOUT_FILENO) != 0 ? Form::Aligned : Form::Tabs;
}

std::string ToShown(const SdaiPrimitiveH& value, const Session& session, Form form) {
    if (form == Form::Tabs) return ToText(value, session);
    if (form == Form::Csv) {
        if (!value.exists()) return "";
        if (value.Kind() == SdaiKind::String) return Readable(TextOf(value).ToUtf8());
    }
    std::string text;
    AppendValue(text, value, session, Texts::Readable);
    return text;
}

void Printer::Print(Place place, const SdaiPrimitiveH& value) {
    if (form_ != Form::Json) {
        const std::string text = ToShown(value, session_, form_);
        std::cout << (form_ == Form::Csv ? CsvField(text) : text) << '\n';
        return;
    }
    Json json;
    json.Object([&] {
        json.Name("line").Count(place.line);
        json.Name("kind").Text(KindName(value));
        WriteValue(json.Name("value"), value, session_);
    });
    std::cout << json.Line() << '\n';
}

void Printer::Begin(const Statement& each) {
    names_.clear();
    for (const Item& item : each.items) {
        if (item.kind == Item::Kind::Print) names_.push_back(Readable(NameToUtf8(item.text)));
    }
    std::vector<std::string> headers = names_;
    headers.insert(headers.begin(), each.variable);
    rows_ = std::make_unique<Columns>(form_, std::move(headers));
}

void Printer::End() { rows_.reset(); }

void Printer::Print(Place place, const SdaiPrimitiveH& member,
                    std::span<const SdaiPrimitiveH> values) {
    if (form_ != Form::Json) {
        std::vector<std::string> fields{ToShown(member, session_, form_)};
        for (const SdaiPrimitiveH& value : values) {
            fields.push_back(ToShown(value, session_, form_));
        }
        rows_->Add(std::move(fields));
        return;
    }
    Json json;
    json.Object([&] {
        json.Name("line").Count(place.line);
        WriteValue(json.Name("member"), member, session_);
        json.Name("names").Array([&] {
            for (const std::string& name : names_) json.Text(name);
        });
        json.Name("values").Array([&] {
            for (const SdaiPrimitiveH& value : values) WriteValue(json, value, session_);
        });
    });
    std::cout << json.Line() << '\n';
}

void Printer::PrintError(const std::string& source, const ScriptError& error) {
    if (form_ != Form::Json) return;
    Json json;
    json.Object([&] {
        json.Name("line").Count(error.Where().line);
        json.Name("error").Object([&] {
            if (!source.empty()) json.Name("source").Text(NameToUtf8(source));
            json.Name("column").Count(error.Where().column);
            json.Name("message").Text(error.what());
        });
    });
    std::cout << json.Line() << '\n';
}

}  // namespace host
