#include "Output.h"

#include <cmath>
#include <iostream>
#include <nlohmann/json.hpp>

#include "Cell.h"
#include "ExchangeText.h"
#include "Utf8.h"

namespace host {

namespace {

using Kind = KORHandleAccess::Kind;
using Json = nlohmann::ordered_json;

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
            to += InstanceName(*static_cast<SdaiEntityInstance*>(value), session);
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

Json ToJson(const SdaiPrimitiveH& value, const Session& session) {
    switch (KindOf(value)) {
        case Kind::Integer: return static_cast<long>(value);
        case Kind::Real: return RealToJson(value);
        case Kind::Logical:
        case Kind::Boolean: {
            const SdaiLogical& logical = value;
            if (logical == SdaiLogical()) return "UNKNOWN";
            return static_cast<bool>(logical);
        }
        case Kind::String: return TextOf(value).ToUtf8();
        case Kind::Enumeration: return Json{{"enumeration", TextOf(value).View()}};
        case Kind::Binary: return Json{{"binary", TextOf(value).View()}};
        case Kind::Instance:
            return Json{{"instance", ReadableName(InstanceName(
                                         *static_cast<SdaiEntityInstance*>(value), session))},
                        {"type", value.GetInstanceType()->Name().ToUtf8()}};
        case Kind::ModelAggregate:
        case Kind::SharedAggregate: {
            const SdaiAggrInstance& members = *static_cast<SdaiAggrInstance*>(value);
            Json list = Json::array();
            for (long i = 0; i < members.GetMemberCount(); ++i) {
                list.push_back(ToJson(members.GetMember(i), session));
            }
            return list;
        }
        default: {
            const std::string_view external = exchange::ExternalReference(value);
            if (external.empty()) return nullptr;
            return Json{{"external", external}};
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

Json RealToJson(double value) {
    if (std::isfinite(value)) return value;
    std::string name;
    exchange::AppendReal(name, value);
    return name;
}

std::string Readable(std::string_view utf8) {
    std::string readable;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const std::string_view rest = utf8.substr(i);
        const auto first = static_cast<unsigned char>(rest[0]);
        const auto second = static_cast<unsigned char>(rest.size() > 1 ? rest[1] : '\0');
        std::size_t length = 0;  // of a character that is shown as another
        if (first < 0x20 || first == 0x7F) length = 1;
        if (first == 0xC2 && second < 0xA0) length = 2;  // U+0080 to U+009F
        if (rest.starts_with("\xEF\xBF\xBE") || rest.starts_with("\xEF\xBF\xBF")) length = 3;
        if (length == 0) {
            readable += rest[0];
        } else {
            readable += "\uFFFD";
            i += length - 1;
        }
    }
    return readable;
}

std::string ReadableName(std::string_view name) {
    return Readable(kor::IsUtf8(name) ? std::string(name) : KORUnicodeString(name).ToUtf8());
}

void Printer::Print(Position position, const SdaiPrimitiveH& value) const {
    if (json_) {
        const Json result{
            {"line", position.line}, {"kind", KindName(value)}, {"value", ToJson(value, session_)}};
        std::cout << result << '\n';
    } else {
        std::cout << ToText(value, session_) << '\n';
    }
}

void Printer::Print(Position position, const SdaiPrimitiveH& member,
                    std::span<const SdaiPrimitiveH> values) const {
    if (json_) {
        Json list = Json::array();
        for (const SdaiPrimitiveH& value : values) list.push_back(ToJson(value, session_));
        const Json result{{"line", position.line},
                          {"member", ToJson(member, session_)},
                          {"values", std::move(list)}};
        std::cout << result << '\n';
        return;
    }
    std::string line = ToText(member, session_);
    for (const SdaiPrimitiveH& value : values) line += '\t' + ToText(value, session_);
    std::cout << line << '\n';
}

}  // namespace host
