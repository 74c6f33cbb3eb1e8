// The environment, and UUIDs.

#include "KORSystem.h"

#include <sys/random.h>
#include <cerrno>
#include <cstdlib>

const char* KORGetEnv(const char* name) { return name != nullptr ? std::getenv(name) : nullptr; }

KORUuid::KORUuid() {
    // Cannot fail for so few bytes once the system is up; an interrupted call is repeated.
    while (getrandom(bytes_, sizeof bytes_, 0) != sizeof bytes_ && errno == EINTR) {
    }
    bytes_[6] = static_cast<unsigned char>((bytes_[6] & 0x0F) | 0x40);  // version 4
    bytes_[8] = static_cast<unsigned char>((bytes_[8] & 0x3F) | 0x80);  // variant of RFC 4122
}

void KORUuid::UUID_to_chaine(char* buffer) const {
    static constexpr char kDigits[] = "0123456789abcdef";
    for (int i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) *buffer++ = '-';
        *buffer++ = kDigits[bytes_[i] >> 4];
        *buffer++ = kDigits[bytes_[i] & 0x0F];
    }
    *buffer = '\0';
}
