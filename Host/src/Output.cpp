#include "Output.h"

#include <iostream>

#include "Cell.h"
#include "ExchangeText.h"
#include "Json.h"
#include "Printable.h"
#include "Utf8.h"

namespace host {

namespace {

using Kind = KORHandleAccess::Kind;

Kind KindOf(const SdaiPrimitiveH& value) {
    return KORHandleAccess::KindOf(KORHandleAccess::Held(value));
}

// The text of a string, enumeration item or binary.
const SdaiString& TextOf(const SdaiPrimitiveH& value) {
    return KORHandleAccess::TextOf(KORHandleAccess::Held(value));
}

std::string InstanceName(const SdaiEntityInstance& instance, const Session& session) {
    const SdaiModel* model = instance.FindEntityInstanceModel();
    const NamedModel* named = session.Holding(model);
    std::string name;
    if (named != nullptr && named != session.Models().data()) name = '@' + named->name;
    return name + '#' + std::to_string(instance.GetInstanceNameId());
}

void AppendValue(std::string& to, const SdaiPrimitiveH& value, const Session& session) {
    switch (KindOf(value)) {
        case Kind::Integer: exchange::AppendInteger(to, value); break;
        case Kind::Real: exchange::AppendReal(to, value); break;
        case Kind::Logical:
        case Kind::Boolean: exchange::AppendLogical(to, value); break;
        case Kind::String:
            exchange::AppendString(to, static_cast<const KORUnicodeString&>(TextOf(value)));
            break;
        case Kind::Enumeration: exchange::AppendEnumeration(to, TextOf(value).View()); break;
        case Kind::Binary: exchange::AppendBinary(to, TextOf(value).View()); break;
        case Kind::Instance:
            to += Printable(InstanceName(*static_cast<SdaiEntityInstance*>(value), session));
            break;
        case Kind::ModelAggregate:
        case Kind::SharedAggregate: {
            const SdaiAggrInstance& members = *static_cast<SdaiAggrInstance*>(value);
            to += '(';
            for (long i = 0; i < members.GetMemberCount(); ++i) {
                if (i != 0) to += ',';
                AppendValue(to, members.GetMember(i), session);
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

void Write(Json& json, const SdaiPrimitiveH& value, const Session& session) {
    switch (KindOf(value)) {
        case Kind::Integer: json.Integer(static_cast<long>(value)); break;
        case Kind::Real: json.Real(value); break;
        case Kind::Logical:
        case Kind::Boolean: {
            const SdaiLogical& logical = value;
            if (logical == SdaiLogical()) {
                json.Text("UNKNOWN");
            } else {
                json.Truth(static_cast<bool>(logical));
            }
            break;
        }
        case Kind::String: json.Text(TextOf(value).ToUtf8()); break;
        case Kind::Enumeration:
            json.Object([&] { json.Name("enumeration").Text(TextOf(value).View()); });
            break;
        case Kind::Binary:
            json.Object([&] { json.Name("binary").Text(TextOf(value).View()); });
            break;
        case Kind::Instance:
            json.Object([&] {
                const SdaiEntityInstance& instance = *static_cast<SdaiEntityInstance*>(value);
                json.Name("instance").Text(NameToUtf8(InstanceName(instance, session)));
                json.Name("type").Text(value.GetInstanceType()->Name().ToUtf8());
            });
            break;
        case Kind::ModelAggregate:
        case Kind::SharedAggregate:
            json.Array([&] {
                const SdaiAggrInstance& members = *static_cast<SdaiAggrInstance*>(value);
                for (long i = 0; i < members.GetMemberCount(); ++i) {
                    Write(json, members.GetMember(i), session);
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

std::string KindName(const SdaiPrimitiveH& value) {
    const SdaiString kind =
        KindOf(value) == Kind::Instance ? "INSTANCE" : value.UnderlyingTypeName();
    return kind.length() != 0 ? std::string(kind.View()) : "UNSET";
}

}  // namespace

std::string ToText(const SdaiPrimitiveH& value, const Session& session) {
    std::string text;
    AppendValue(text, value, session);
    return text;
}

std::string Readable(std::string_view utf8) { return Printable(utf8); }

std::string NameToUtf8(std::string_view name) {
    return kor::IsUtf8(name) ? std::string(name) : KORUnicodeString(name).ToUtf8();
}

std::string ReadableName(std::string_view name) { return Printable(NameToUtf8(name)); }

void Printer::Print(Position position, const SdaiPrimitiveH& value) const {
    if (!json_) {
        std::cout << ToText(value, session_) << '\n';
        return;
    }
    Json json;
    json.Object([&] {
        json.Name("line").Count(position.line);
        json.Name("kind").Text(KindName(value));
        Write(json.Name("value"), value, session_);
    });
    std::cout << json.Line() << '\n';
}

void Printer::Print(Position position, const SdaiPrimitiveH& member,
                    std::span<const SdaiPrimitiveH> values) const {
    if (!json_) {
        std::string line = ToText(member, session_);
        for (const SdaiPrimitiveH& value : values) line += '\t' + ToText(value, session_);
        std::cout << line << '\n';
        return;
    }
    Json json;
    json.Object([&] {
        json.Name("line").Count(position.line);
        Write(json.Name("member"), member, session_);
        json.Name("values").Array([&] {
            for (const SdaiPrimitiveH& value : values) Write(json, value, session_);
        });
    });
    std::cout << json.Line() << '\n';
}

}  // namespace host
