// Document names, converted between database form and file form.

#include "FileNames.h"
#include "Function.h"

using namespace orx;

SdaiPrimitiveH ORX_GetDocName(const SdaiPrimitiveH& name, const SdaiPrimitiveH& direction) {
    return Function<"ORX_GetDocName">(SdaiString(), [&](Trace& trace, SdaiString& result) {
        if (name.exists() && direction.exists()) {
            const SdaiString& given = name;
            trace.Line("nom rentre ", given);
            if (static_cast<long>(direction) == 1) {
                trace.Line("Conversion NARVO name -> file name");
                trace.Line("Nom de document en base: ", given);
                trace.Line("On remplace les blancs par des ", kFileBlank);
                result = ToFileName(given);
            } else {
                trace.Line("Conversion file name - >NARVO name ");
                trace.Line("Nom du fichier: ", given);
                trace.Line("Longueur: ", given.length());
                trace.Line("On remplace les ", kFileBlank, " par des blancs");
                result = ToDatabaseName(given);
            }
            trace.Line("Nom de model traite : ", result);
        }
        trace.Line("le nom du document retourne: >", result, "<");
    });
}
