// File names of V5 documents, and their extensions.

#include "Function.h"

using namespace orx;

namespace {

// The extension of a V5 document's file name: the part after the first ".", if it begins with "KOR"
// and is longer than 3 characters; empty for any other name.
KORUnicodeString V5Extension(Trace& trace, const KORUnicodeString& name) {
    const int end = name.GetLengthInChar();
    const int dot = name.SearchSubString(".", 0, KORSearchFirst);
    trace.Line("EndPos : ", end);
    trace.Line("StartPos : ", dot);
    if (dot < 0 || dot == end) return {};
    const KORUnicodeString extension = name.SubString(dot + 1, end - dot - 1);
    trace.Line("son extension : ", extension);
    if (extension.GetLengthInChar() < 4) return {};
    return extension.ComparePart(0, 3, "KOR") == 2 ? extension : KORUnicodeString();
}

}  // namespace

SdaiPrimitiveH IsaNARVOV5Doc(const SdaiPrimitiveH& fileName) {
    return Function<"IsaNARVOV5Doc">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (fileName.exists()) {
            const KORUnicodeString& name = TextOf(fileName);
            trace.Line("IsaNARVOV5Doc sur: ", name);
            result = SdaiBoolean(V5Extension(trace, name).GetLengthInChar() > 0);
        }
        trace.Line("IsaNARVOV5DOC retourne: ", result);
    });
}

SdaiPrimitiveH GetNARVOV5Ext(const SdaiPrimitiveH& fileName) {
    return Function<"GetNARVOV5Ext">(SdaiString(), [&](Trace& trace, SdaiString& result) {
        if (fileName.exists()) {
            const KORUnicodeString& name = TextOf(fileName);
            trace.Line("GetNARVOV5Ext: ", name);
            result = V5Extension(trace, name);
        }
        trace.Line("GetNARVOV5Ext retourne: ", result);
    });
}
