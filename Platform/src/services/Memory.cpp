// Notes that memory has run out, for each thread.

#include "KORMemory.h"

#include <utility>

namespace {

// A thread has it from its start: memory taken for it later could run out, too.
[[gnu::tls_model("initial-exec")]] constinit thread_local bool exhausted = false;

}  // namespace

void KORMemory::NoteExhausted() noexcept { exhausted = true; }

bool KORMemory::TakeExhausted() noexcept { return std::exchange(exhausted, false); }
