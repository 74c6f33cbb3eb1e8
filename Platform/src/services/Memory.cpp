// Notes that memory has run out, for each thread.

#include "KORMemory.h"

#include <utility>

namespace {

constinit thread_local bool exhausted = false;

}  // namespace

void KORMemory::NoteExhausted() noexcept { exhausted = true; }

bool KORMemory::TakeExhausted() noexcept { return std::exchange(exhausted, false); }
