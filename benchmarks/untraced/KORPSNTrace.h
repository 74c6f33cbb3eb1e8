// A platform without a trace service, for measuring what tracing costs while it is off: the
// module's sources are built a second time against this header.

#ifndef KORPSNTRACE_H
#define KORPSNTRACE_H

#include <iostream>

#include "KORString.h"

class KORPSNLigne {
  public:
    std::ostream& GetStream() { return std::cerr; }
};

class KORPSNTrace {
  public:
    constexpr KORPSNTrace(const char*, int, int) {}
    static constexpr int GetLevel() { return 0; }
    static constexpr int LevelIsActive(int) { return 0; }
    static constexpr int GetIndent() { return 0; }
    static KORString Indent(int) { return {}; }
    static KORString GetMethod() { return {}; }
    static KORPSNLigne GetLigne() { return {}; }
    static void Out() {}
};

#endif
