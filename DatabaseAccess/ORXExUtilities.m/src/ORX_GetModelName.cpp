#include "Function.h"
#include "Names.h"

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
                result = ToFileName(given.View(), kModelExtension);
                // Without the extension.
                trace.Line("Nom de model traite : ",
                           Characters{result.View().substr(0, given.View().size())});
            } else {
                trace.Line("Conversion file name - >NARVO name ");
                trace.Line("Nom du fichier: ", given);
                trace.Line("On supprime l'extension .model");
                trace.Line("Longueur: ", given.length());
                // The last six characters go, whatever they are: the caller passes names of model
                // files only.
                std::string_view shortened = given.View();
                shortened.remove_suffix(std::min(shortened.size(), kModelExtension.size()));
                trace.Line("Nom du fichier SANS extension: ", Characters{shortened});
                trace.Line("Longueur: ", shortened.size());
                trace.Line("On remplace les ", kFileBlank, " par des blancs");
                result = ToDatabaseName(shortened);
                trace.Line("Nom de model traite : ", result);
            }
        }
        trace.Line("le nom du modele retourne: >", result, "<");
    });
}
