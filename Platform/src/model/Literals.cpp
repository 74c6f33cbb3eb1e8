// Values as literals of exchange files, and the text of value handles.

#include "model/Literals.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <ostream>
#include <string_view>

#include "SdaiAggrInstance.h"
#include "SdaiEntityInstance.h"
#include "model/Cell.h"

namespace kor {

void AppendReal(std::string& to, double value) {
    if (!std::isfinite(value)) {
        to += std::isnan(value) ? "nan" : value < 0 ? "-inf" : "inf";
        return;
    }
    char text[40];
    char* end = std::to_chars(text, text + 32, value).ptr;
    char* const exponent = std::find(text, end, 'e');
    if (exponent != end) *exponent = 'E';
    if (std::find(text, exponent, '.') == exponent) {
        std::copy_backward(exponent, end, end + 1);
        *exponent = '.';
        ++end;
    }
    to.append(text, end);
}

namespace {

void AppendBetween(std::string& to, char quote, std::string_view text) {
    to += quote;
    to += text;
    to += quote;
}

void AppendString(std::string& to, std::string_view utf8) {
    to += '\'';
    for (const char c : utf8) to.append(c == '\'' ? 2 : 1, c);
    to += '\'';
}

void AppendValue(std::string& to, const SdaiPrimitiveH& value) {
    using Kind = HandleAccess::Kind;
    if (const TypedValue* typed = HandleAccess::TypedOf(value)) {
        to += typed->definedType.View();
        to += '(';
        AppendValue(to, typed->value);
        to += ')';
        return;
    }
    const SdaiSelectH& held = HandleAccess::Held(value);
    switch (HandleAccess::KindOf(held)) {
        case Kind::Integer: to += std::to_string(static_cast<long>(value)); break;
        case Kind::Real: AppendReal(to, value); break;
        case Kind::Logical:
        case Kind::Boolean: {
            const SdaiLogical& logical = value;
            to += logical == sdaiLTRUE ? ".T." : logical == sdaiLFALSE ? ".F." : ".U.";
            break;
        }
        case Kind::String: AppendString(to, HandleAccess::TextOf(held).ToUtf8()); break;
        case Kind::Enumeration: AppendBetween(to, '.', HandleAccess::TextOf(held).View()); break;
        case Kind::Binary: AppendBetween(to, '"', HandleAccess::TextOf(held).View()); break;
        case Kind::Instance: {
            const SdaiEntityInstance* instance = value;
            to += '#' + std::to_string(instance->GetInstanceNameId());
            break;
        }
        case Kind::ModelAggregate:
        case Kind::SharedAggregate: {
            const SdaiAggrInstance* members = value;
            to += '(';
            for (long i = 0; i < members->GetMemberCount(); ++i) {
                if (i != 0) to += ',';
                AppendValue(to, members->GetMember(i));
            }
            to += ')';
            break;
        }
        default: to += '$';
    }
}

}  // namespace

}  // namespace kor

std::string ToString(const SdaiPrimitiveH& value) {
    std::string text;
    kor::AppendValue(text, value);
    return text;
}

std::ostream& operator<<(std::ostream& stream, const SdaiPrimitiveH& value) {
    return stream << ToString(value);
}
