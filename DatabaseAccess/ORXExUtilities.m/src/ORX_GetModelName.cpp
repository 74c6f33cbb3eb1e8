// Model names, converted between database form and file form.

#include <algorithm>

#include "FileNames.h"
#include "Function.h"

using namespace orx;

SdaiPrimitiveH ORX_GetModelName(const SdaiPrimitiveH& name, const SdaiPrimitiveH& direction) {
    return OrDefault(SdaiString(), [&] { return ModelName(name, direction); });
}

SdaiPrimitiveH orx::ModelName(const SdaiPrimitiveH& name, const SdaiPrimitiveH& direction) {
    return Nested<"ORX_GetModelName">(SdaiString(), [&](Trace& trace, SdaiString& result) {
        if (name.exists() && direction.exists()) {
            const SdaiString& given = name;
            trace.Line("nom rentre ", given);
            if (static_cast<long>(direction) == 1) {
                trace.Line("Conversion NARVO name -> file name");
                trace.Line("Nom de model en base: ", given);
                trace.Line("On remplace les blancs par des ", kFileBlank);
                result = ToFileName(given, kModelExtension);
                // The trace shows the name without its extension.
                if (trace.IsActive()) {
                    const KORUnicodeString& whole = result;
                    const int length = static_cast<int>(given.length());
                    trace.Line("Nom de model traite : ", whole.SubString(0, length));
                }
            } else {
                trace.Line("Conversion file name - >NARVO name ");
                trace.Line("Nom du fichier: ", given);
                trace.Line("On supprime l'extension .model");
                trace.Line("Longueur: ", given.length());
                // The last six characters are removed unseen: callers pass only names of model
                // files.
                const KORUnicodeString& whole = given;
                const int length = std::max(whole.GetLengthInChar() - kExtensionLength, 0);
                if (trace.IsActive()) {
                    trace.Line("Nom du fichier SANS extension: ", whole.SubString(0, length));
                }
                trace.Line("Longueur: ", length);
                trace.Line("On remplace les ", kFileBlank, " par des blancs");
                result = ToDatabaseName(whole, 0, length);
                trace.Line("Nom de model traite : ", result);
            }
        }
        trace.Line("le nom du modele retourne: >", result, "<");
    });
}
