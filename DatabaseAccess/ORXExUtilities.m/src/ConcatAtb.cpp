// Encoded keys: reading them, and building those of models, parts and documents.

#include "Access.h"
#include "Fields.h"
#include "Function.h"
#include "KORLocale.h"
#include "Keys.h"

using namespace orx;
using namespace sdai_names;

// ---- Reading a key

SdaiPrimitiveH IsEncodedKey(const SdaiPrimitiveH& key) {
    return Function<"IsEncodedKey">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (key.exists()) {
            const std::string_view text = static_cast<const SdaiString&>(key).View();
            const long end = std::ssize(text);
            result = SdaiBoolean(end > 0);
            // A last field that runs past the end of the key is well formed.
            for (long position = 0; result && position < end;) {
                const std::string_view letter = TextAt(text, position, 1);
                ++position;
                trace.Line("StartIndex", " = ", position);
                trace.Line("Type a lire: ", Characters{letter});
                if (letter == "S" || letter == "I" || letter == "R") {
                    const std::optional<long> length = LengthAt(text, position);
                    result = SdaiBoolean(length.has_value() && *length >= 0);
                    position += kFieldLength + length.value_or(0);
                } else {
                    result = sdaiLFALSE;
                }
            }
        }
        trace.Line("IsEncodedKey retourne: ", result);
    });
}

namespace {

// The number that a text is, or the one given when it is none.
template <class Number>
Number NumberIn(std::string_view text, Number otherwise) {
    Number number;
    return KORLocale::sConvertStringToNum(KORUnicodeString(text), &number) == 1 ? number
                                                                                : otherwise;
}

// The value of the requested field.
SdaiPrimitiveH DecodeField(Trace& trace, std::string_view letter, std::string_view value) {
    trace.Line("on a trouve a priori le bon placement");
    if (letter == "S") {
        trace.Line("Lecture de la chaine de caracteres: [", Characters{value}, "]");
        return SdaiString(value);
    }
    if (letter == "I") {
        const long number = NumberIn(value, 0L);
        trace.Line("Lecture de la valeur entiere: [", number, "]");
        return number;
    }
    if (letter == "R") {
        const double number = NumberIn(value, 0.0);
        trace.Line("Lecture de la valeur reelle: [", number, "]");
        return number;
    }
    trace.Line("Valeur forcee a [WRONG TYPE ENCODING]");
    return NumberIn(value, -1L);
}

}  // namespace

SdaiPrimitiveH DecodeKey(const SdaiPrimitiveH& key, const SdaiPrimitiveH& place) {
    if (key.exists()) {
        return OrDefault(SdaiPrimitiveH(), [&] {
            return orx::DecodeKey(static_cast<const SdaiString&>(key).View(), place);
        });
    }
    return Function<"DecodeKey">(SdaiPrimitiveH(), [](Trace&, SdaiPrimitiveH&) {});
}

SdaiPrimitiveH orx::DecodeKey(std::string_view text, const SdaiPrimitiveH& place) {
    return Nested<"DecodeKey">(SdaiPrimitiveH(), [&](Trace& trace, SdaiPrimitiveH& result) {
        if (!place.exists()) return;
        const long end = std::ssize(text);
        const long requested = place;
        trace.Line("TheEncodedKey", " = ", Characters{text});
        trace.Line("ThePlacement", " = ", requested);
        long position = 0;
        for (long current = 1; current <= requested; ++current) {
            trace.Line("CurrPlacement", " = ", current);
            const std::string_view letter = TextAt(text, position, 1);
            const long length = LengthAt(text, position + 1).value_or(0);
            position += kFieldHead;
            trace.Line("Type a lire: ", Characters{letter});
            trace.Line("Index de debut : ", position);
            trace.Line("Longueur a lire: ", length);
            const bool readable = length >= 0;  // else the key ends here
            if (readable && current == requested) {
                result = DecodeField(trace, letter, TextAt(text, position, length));
                return;
            }
            trace.Line("on saute la valeur lue et on continue");
            position += length;
            if (!readable || end <= position) {
                trace.Line("on sort car la place demandee est inconnue");
                result = kEmptyValue;
                return;
            }
        }
    });
}

// ---- Building a key

namespace {

// The number in an attribute as text; empty when it is not set.
SdaiString NumberOf(const SdaiPrimitiveH& instance, const SdaiName& attribute) {
    const SdaiPrimitiveH value = instance.GetAttr(attribute);
    return value.exists() ? KORLocale::sConvertNumToString(static_cast<long>(value))
                          : KORUnicodeString();
}

}  // namespace

SdaiPrimitiveH ConcatModelAtb(const SdaiPrimitiveH& model) {
    return Function<"ConcatModelAtb">(kEmptyValue, [&](Trace& trace, SdaiString& result) {
        if (model.exists()) {
            trace.Line("the ORXmodel existe");
            result = EncodeFields({{'S', TextOf(model, "S_TYPE_REP"_name).View()},
                                   {'I', NumberOf(model, "S_NEXT"_name).View()},
                                   {'S', TextOf(model, "C_REVISION"_name).View()},
                                   {'S', TextOf(model, "C_NICKNAME"_name).View()}});
        }
        trace.Line("la valeur retournee est ", result);
    });
}

SdaiPrimitiveH ConcatPartAtb(const SdaiPrimitiveH& part) {
    return Function<"ConcatPartAtb">(kEmptyValue, [&](Trace& trace, SdaiString& result) {
        if (part.exists()) {
            trace.Line("the ORXPart existe");
            result = EncodeFields({{'S', TextOf(part, "S_PART_NUMBER"_name).View()},
                                   {'S', TextOf(part, "S_CHG_NUM"_name).View()},
                                   {'I', NumberOf(part, "C_VERSION"_name).View()},
                                   {'S', TextOf(part, "S_TYPE"_name).View()}});
        }
        trace.Line("la valeur retournee est ", result);
    });
}

SdaiPrimitiveH ConcatDocAtb(const SdaiPrimitiveH& document) {
    return OrDefault(kEmptyValue, [&] { return DocumentKey(document, {}); });
}

SdaiPrimitiveH orx::DocumentKey(const SdaiPrimitiveH& document, std::string_view prefix) {
    return Nested<"ConcatDocAtb">(kEmptyValue, [&](Trace& trace, SdaiString& result) {
        std::string_view key = result.View();
        if (document.exists()) {
            trace.Line("document existe");
            // The type is named after the storage and the table: STORAGE_TABLE.
            const SdaiNamedType* type = document.GetInstanceType();
            const std::string_view storage =
                type != nullptr ? type->Name().View() : std::string_view();
            const std::string_view table = storage.substr(storage.find('_') + 1);
            trace.Line("storage : ", storage);
            trace.Line("table   : ", table);

            const SdaiString typeRep = TextOf(document, "S_TYPE_REP"_name);
            const SdaiString notes = TextOf(document, "NOTES"_name);
            const Field first{'S', typeRep.View()};
            const Field third{'S', notes.View()};
            if (table == "DOCUMENT") {
                trace.Line(" je suis un document DOCUMENT ");
                result = EncodeFields({first,
                                       {'S', TextOf(document, "S_NAME"_name).View()},
                                       third,
                                       {'S', TextOf(document, "S_FORMAT"_name).View()}},
                                      prefix);
            } else if (table == "DOCCAD") {
                result = EncodeFields({first, {'S', TextOf(document, "S_NAME"_name).View()}, third},
                                      prefix);
            } else {
                result = EncodeFields({first, third}, prefix);
            }
            key = result.View().substr(prefix.size());
        }
        trace.Line("la valeur retournee est ", Characters{key});
    });
}
