// The first characters of a text.

#include "Function.h"

using namespace orx;

SdaiPrimitiveH ORXTrunc(const SdaiPrimitiveH& text, const SdaiPrimitiveH& count) {
    return Function<"ORXTrunc">(SdaiString("NO VALUE"), [&](Trace& trace, SdaiString& result) {
        if (text.exists() && count.exists()) {
            const SdaiString& whole = text;
            long n = count;
            trace.Line("TheLongString", whole);
            trace.Line("TheNbOfChar", n);
            trace.Line("on test la longueur");
            const long length = whole.length();
            if (length < n) n = length;
            trace.Line("on lie la valeur");
            const KORUnicodeString& characters = whole;
            result = n < 0 ? KORUnicodeString() : characters.SubString(0, static_cast<int>(n));
        }
        trace.Line("Valeur de retour: >", result);
    });
}
