// Services of the operating system.

#ifndef KORSYSTEM_H
#define KORSYSTEM_H

#include "KORExport.h"

// The value of an environment variable; null if it is not set. Owned by the environment.
KOR_API const char* KORGetEnv(const char* name);

// A universally unique identifier: version 4 (random) of RFC 4122.
class KOR_API KORUuid {
  public:
    // Length of the text form, without the NUL.
    static constexpr int kTextLength = 36;

    // A new, unique identifier.
    KORUuid();

    // Writes the text form, 36 characters in lower case and a NUL, into the caller's buffer.
    void UUID_to_chaine(char* buffer) const;

  private:
    unsigned char bytes_[16];
};

#endif
