// Model identifiers: NAME _ORXExchangedRep_ NUMBER _ORXExchangedRep2_ NAME, the names in file form.

#include <algorithm>
#include <climits>
#include <string_view>

#include "Attributes.h"
#include "FileNames.h"
#include "Function.h"
#include "KORLocale.h"

using namespace orx;
using namespace sdai_names;

namespace {

constexpr std::string_view kTag = "_ORXExchangedRep_";
constexpr std::string_view kTag2 = "_ORXExchangedRep2_";

// The position of a tag; kNoTag if it is missing. A tag at the very start counts as missing.
constexpr int kNoTag = 0;
int PositionOf(std::string_view tag, const KORUnicodeString& identifier) {
    return std::max(identifier.SearchSubString(tag, 0, KORSearchForward), kNoTag);
}

constexpr int Length(std::string_view tag) { return static_cast<int>(tag.size()); }

void TraceReading(Trace& trace, const KORUnicodeString& identifier, const char* what) {
    trace.Line("Conversion file name -> NARVO name ");
    trace.Line("Nom du fichier: ", identifier);
    trace.Line(what);
}

}  // namespace

SdaiPrimitiveH ORX_GetModelId_Exp(const SdaiPrimitiveH& model) {
    return Function<"ORX_GetModelId_Exp">(SdaiString(), [&](Trace& trace, SdaiString& result) {
        if (model.exists()) {
            const SdaiNamedType* type = model.GetInstanceType();
            const SdaiModel* holder = model.FindEntityInstanceModel();
            const SdaiEntity* entity =
                holder != nullptr ? holder->GetEntityDefinition(type->Name()) : nullptr;
            const auto has = [entity](const SdaiName& attribute) {
                return entity != nullptr && entity->AttrDefinition(attribute) != nullptr;
            };
            // The first two fields are evaluated for their trace and effects, but are not part of
            // the identifier, which starts over with the third.
            trace.Line("RECUPERATION DE S_TYPE_REP");
            const SdaiString typeRep = TextOf(model, "S_TYPE_REP"_name);
            trace.Line("RECUPERATION DE S_NEXT");
            if (has("S_NEXT"_name)) {
                const long next = model.GetAttr("S_NEXT"_name);
                KORLocale::sConvertNumToString(static_cast<double>(next), 6, 0);
            } else {
                GetUniqId(SdaiPrimitiveH());
            }
            trace.Line("RECUPERATION DE C_SOFT_VER");
            const SdaiString version =
                has("C_SOFT_VER"_name) ? TextOf(model, "C_SOFT_VER"_name) : kEmptyValue;
            trace.Line("ON REMPLACE LES BLANCS PAR DES ", kFileBlank);
            const KORUnicodeString& name = version;
            NameConversion conversion(std::max(
                static_cast<const KORUnicodeString&>(typeRep).View().size(), name.View().size()));
            conversion.ToFileName(typeRep);
            const KORUnicodeString fileName = conversion.ToFileName(name);
            trace.Line("CREATION DE LA CHAINE POUR LA SORTIE");
            KORUnicodeString identifier;
            identifier.Reserve(2 * static_cast<std::size_t>(version.length()) + kTag2.size());
            identifier.Append(fileName).Append(kTag2).Append(name);
            result = identifier;
        }
        trace.Line("ORX_GetModelId en mode EXPORT de donnees retourne: >", result, "<");
    });
}

SdaiPrimitiveH ORX_GetModelId_Imp1(const SdaiPrimitiveH& identifier) {
    return Function<"ORX_GetModelId_Imp1">(SdaiString(), [&](Trace& trace, SdaiString& result) {
        if (identifier.exists()) {
            const KORUnicodeString& text = TextOf(identifier);
            TraceReading(trace, text, "ON RECUPERE LA CHAINE AVANT LE TAG ORX_TAG");
            trace.Line("ON REMPLACE LES ", kFileBlank, " PAR DES BLANCS");
            result = ToDatabaseName(text, 0, PositionOf(kTag, text));
        }
        trace.Line("on retourne comme cle: >", result, "<");
    });
}

SdaiPrimitiveH ORX_GetModelId_Imp2(const SdaiPrimitiveH& identifier) {
    return Function<"ORX_GetModelId_Imp2">(-999L, [&](Trace& trace, long& result) {
        if (identifier.exists()) {
            const KORUnicodeString& text = TextOf(identifier);
            TraceReading(trace, text, "ON RECUPERE LA CHAINE APRES LE TAG ORX_TAG");
            const int position = PositionOf(kTag, text);
            if (position != kNoTag) {
                const int start = position + Length(kTag);
                trace.Line("il faut garder la chaine avant le tag ORX_TAG2");
                const int end = text.SearchSubString(kTag2, start, KORSearchForward);
                const KORUnicodeString field =
                    text.SubString(start, end > start ? end - start : INT_MAX);
                trace.Line("on a la chaine desiree on peut la convertir");
                KORLocale::sConvertStringToNum(field, &result);  // 0 if it is not a number
            }
        }
        trace.Line("on retourne la cle : >", result, "<");
    });
}

SdaiPrimitiveH ORX_GetModelId_Imp3(const SdaiPrimitiveH& identifier) {
    return Function<"ORX_GetModelId_Imp3">(kEmptyValue, [&](Trace& trace, SdaiString& result) {
        if (identifier.exists()) {
            const KORUnicodeString& text = TextOf(identifier);
            TraceReading(trace, text, "ON RECUPERE LA CHAINE APRES LE TAG ORX_TAG2");
            const int position = PositionOf(kTag2, text);
            if (position != kNoTag) {
                trace.Line("on remplace les ", kFileBlank, " par des blancs");
                result = ToDatabaseName(text, position + Length(kTag2));
            }
        }
        trace.Line("on retourne la cle: ", result, "<");
    });
}
