// Whether a part of the database has models or documents.

#include "Function.h"

using namespace orx;
using namespace sdai_names;

SdaiPrimitiveH IsModelDocLinked(const SdaiPrimitiveH& part) {
    return Function<"IsModelDocLinked">(sdaiLFALSE, [&](Trace&, SdaiLogical& result) {
        const SdaiNamedType* type = part.GetInstanceType();
        if (type == nullptr || !(type->Name() == "part_object")) return;
        const auto hasMembers = [&part](const auto& attribute) {
            return SdaiBoolean(part.TestAttr(attribute) &&
                               part.GetAttr(attribute).GetMemberCount() > 0);
        };
        result = hasMembers("models"_name);
        const SdaiEntity* entity =
            part.FindEntityInstanceModel()->GetEntityDefinition(type->Name());
        // The schema determines the number of attributes "docsN": the search ends at the first
        // number that is missing.
        for (int n = 1; !result && entity != nullptr; ++n) {
            KORUnicodeString number;
            number.BuildFromNum(n, "%d");
            const SdaiString attribute(KORUnicodeString("docs").Append(number));
            if (entity->AttrDefinition(attribute) == nullptr) break;
            result = hasMembers(attribute);
        }
    });
}
