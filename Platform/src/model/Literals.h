// Literals of exchange files (ISO 10303-21).

#ifndef KOR_LITERALS_H
#define KOR_LITERALS_H

#include <string>

#include "KORExport.h"

namespace kor {

// The shortest decimal digits that read back as the same real, with a point: "1.5", "1.", "1.E+20";
// "nan", "inf" or "-inf" if it is not finite.
KOR_API void AppendReal(std::string& to, double value);

}  // namespace kor

#endif
