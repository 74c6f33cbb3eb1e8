// The external name of a document or model.

#include "Attributes.h"
#include "FileNames.h"
#include "Function.h"

using namespace orx;
using namespace sdai_names;

SdaiPrimitiveH GetExternalName(const SdaiPrimitiveH& instance, const SdaiPrimitiveH& source) {
    return Function<"GetExternalName">(SdaiString(), [&](Trace& trace, SdaiString& name) {
        if (instance.exists()) {
            name = TextOf(instance, "ASSIGNED_ID"_name);
            // The source is read only if the instance exists and has no identifier.
            if (name.length() == 0) {
                const SdaiPrimitiveH id = GetInst(source, SdaiPrimitiveH(SdaiString("SOURCE_ID")));
                if (id.UnderlyingTypeName() == "STRING") name = TextOf(id);
            }
        }
        const KORUnicodeString& text = name;
        const int extension = text.GetLengthInChar() - kExtensionLength;
        if (extension > 0 && text.ComparePart(extension, kExtensionLength, kModelExtension) == 2) {
            const SdaiPrimitiveH model = ModelName(name, SdaiPrimitiveH(0L));
            const SdaiString& modelName = model;
            if (modelName.length() != 0) name = modelName;
        }
        trace.Line(" -> nom de fichier retourne :", name);
    });
}
