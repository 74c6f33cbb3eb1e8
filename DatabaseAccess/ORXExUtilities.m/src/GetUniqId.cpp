// Unique identifiers.

#include <string_view>

#include "Function.h"
#include "KORSystem.h"

using namespace orx;

SdaiPrimitiveH GetUniqId(const SdaiPrimitiveH&) {
    return Function<"GetUniqId">(SdaiString(), [&](Trace& trace, SdaiString& result) {
        const char* logname = KORGetEnv("LOGNAME");
        const std::string_view owner = logname != nullptr && *logname != '\0' ? logname : "RZ/ORX";
        char uuid[KORUuid::kTextLength + 1];
        KORUuid().UUID_to_chaine(uuid);

        KORUnicodeString text;
        text.Reserve(owner.size() + 1 + KORUuid::kTextLength);
        text.Append(owner).Append("-").Append(uuid);
        result = text;
        trace.Line("valeur rendue = ", result);
    });
}
