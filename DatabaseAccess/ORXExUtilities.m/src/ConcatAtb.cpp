// Encoded keys: reading them, and building those of models, parts and documents.

#include "ConcatAtb.h"

#include <climits>
#include <optional>
#include <utility>

#include "Attributes.h"
#include "Fields.h"
#include "Function.h"
#include "KORLocale.h"

using namespace orx;
using namespace sdai_names;

// ---- Reading a key

SdaiPrimitiveH IsEncodedKey(const SdaiPrimitiveH& key) {
    return Function<"IsEncodedKey">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (key.exists()) {
            const KORUnicodeString& text = TextOf(key);
            const long end = text.GetLengthInChar();
            result = SdaiBoolean(end > 0);
            // The last field may run past the end of the key.
            for (long position = 0; result && position < end;) {
                trace.Line("StartIndex", " = ", position + 1);
                trace.Line("Type a lire: ", PartAt{text, position, 1});
                if (IsTextAt(text, position, "S") || IsTextAt(text, position, "I") ||
                    IsTextAt(text, position, "R")) {
                    const std::optional<long> length = LengthAt(text, position + 1);
                    result = SdaiBoolean(length.has_value() && *length >= 0);
                    position += kFieldHead + length.value_or(0);
                } else {
                    result = sdaiLFALSE;
                }
            }
        }
        trace.Line("IsEncodedKey retourne: ", result);
    });
}

namespace {

// The number in a text, or `otherwise` if the text is not a number.
template <class Number>
Number NumberIn(const KORUnicodeString& text, Number otherwise) {
    Number number;
    return KORLocale::sConvertStringToNum(text, &number) == 1 ? number : otherwise;
}

// The value of the requested field.
SdaiPrimitiveH DecodeField(Trace& trace, const FieldAt& field) {
    trace.Line("on a trouve a priori le bon placement");
    KORUnicodeString value = field.Value();
    if (field.HasLetter("S")) {
        trace.Line("Lecture de la chaine de caracteres: [", value, "]");
        return SdaiString(std::move(value));
    }
    if (field.HasLetter("I")) {
        const long number = NumberIn(value, 0L);
        trace.Line("Lecture de la valeur entiere: [", number, "]");
        return number;
    }
    if (field.HasLetter("R")) {
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
        return OrDefault(SdaiPrimitiveH(), [&] { return orx::DecodeKey(TextOf(key), 0, place); });
    }
    return Function<"DecodeKey">(SdaiPrimitiveH(), [](Trace&, SdaiPrimitiveH&) {});
}

SdaiPrimitiveH orx::DecodeKey(const KORUnicodeString& text, long start,
                              const SdaiPrimitiveH& place) {
    return Nested<"DecodeKey">(SdaiPrimitiveH(), [&](Trace& trace, SdaiPrimitiveH& result) {
        if (!place.exists()) return;
        const long end = text.GetLengthInChar() - start;
        const long requested = place;
        trace.Line("TheEncodedKey", " = ", PartAt{text, start, end});
        trace.Line("ThePlacement", " = ", requested);
        long position = 0;
        for (long current = 1; current <= requested; ++current) {
            trace.Line("CurrPlacement", " = ", current);
            const FieldAt field(text, start + position);
            trace.Line("Type a lire: ", PartAt{text, start + position, 1});
            position += kFieldHead;
            trace.Line("Index de debut : ", position);
            trace.Line("Longueur a lire: ", field.length);
            const bool readable = field.length >= 0;  // otherwise the key ends here
            if (readable && current == requested) {
                result = DecodeField(trace, field);
                return;
            }
            trace.Line("on saute la valeur lue et on continue");
            position += field.length;
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

// An integer attribute as text; empty if it is not set.
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
            result = EncodeFields({{'S', TextOf(model, "S_TYPE_REP"_name)},
                                   {'I', NumberOf(model, "S_NEXT"_name)},
                                   {'S', TextOf(model, "C_REVISION"_name)},
                                   {'S', TextOf(model, "C_NICKNAME"_name)}});
        }
        trace.Line("la valeur retournee est ", result);
    });
}

SdaiPrimitiveH ConcatPartAtb(const SdaiPrimitiveH& part) {
    return Function<"ConcatPartAtb">(kEmptyValue, [&](Trace& trace, SdaiString& result) {
        if (part.exists()) {
            trace.Line("the ORXPart existe");
            result = EncodeFields({{'S', TextOf(part, "S_PART_NUMBER"_name)},
                                   {'S', TextOf(part, "S_CHG_NUM"_name)},
                                   {'I', NumberOf(part, "C_VERSION"_name)},
                                   {'S', TextOf(part, "S_TYPE"_name)}});
        }
        trace.Line("la valeur retournee est ", result);
    });
}

SdaiPrimitiveH ConcatDocAtb(const SdaiPrimitiveH& document) {
    return OrDefault(kEmptyValue, [&] { return DocumentKey(document, {}); });
}

SdaiPrimitiveH orx::DocumentKey(const SdaiPrimitiveH& document, std::string_view prefix) {
    return Nested<"ConcatDocAtb">(kEmptyValue, [&](Trace& trace, SdaiString& result) {
        int keyStart = 0;
        if (document.exists()) {
            trace.Line("document existe");
            // Type names have the form STORAGE_TABLE.
            const SdaiNamedType* type = document.GetInstanceType();
            static const SdaiString kNoName;
            const KORUnicodeString& storage = type != nullptr ? type->Name() : kNoName;
            const int table =
                storage.SearchSubString(std::string_view("_"), 0, KORSearchForward) + 1;
            const auto isTable = [&storage, table](std::string_view name) {
                return storage.ComparePart(table, INT_MAX, name) == 2;
            };
            trace.Line("storage : ", storage);
            trace.Line("table   : ", PartAt{storage, table, INT_MAX});

            const SdaiString typeRep = TextOf(document, "S_TYPE_REP"_name);
            const SdaiString notes = TextOf(document, "NOTES"_name);
            const Field first{'S', typeRep};
            const Field third{'S', notes};
            if (isTable("DOCUMENT")) {
                trace.Line(" je suis un document DOCUMENT ");
                result = EncodeFields({first,
                                       {'S', TextOf(document, "S_NAME"_name)},
                                       third,
                                       {'S', TextOf(document, "S_FORMAT"_name)}},
                                      prefix);
            } else if (isTable("DOCCAD")) {
                result =
                    EncodeFields({first, {'S', TextOf(document, "S_NAME"_name)}, third}, prefix);
            } else {
                result = EncodeFields({first, third}, prefix);
            }
            keyStart = static_cast<int>(prefix.size());
        }
        if (trace.IsActive()) {
            const KORUnicodeString& whole = result;
            trace.Line("la valeur retournee est ", whole.SubString(keyStart, INT_MAX));
        }
    });
}
