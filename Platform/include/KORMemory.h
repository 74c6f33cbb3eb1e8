// Whether calls have run out of memory.
//
// No function throws or fails: one that runs out of memory gives its default, which is also what it
// gives where the data hold nothing. Whoever has to tell the two apart asks here after each call.

#ifndef KORMEMORY_H
#define KORMEMORY_H

#include "KORExport.h"

class KOR_API KORMemory {
  public:
    // Notes that a call of this thread gives its default, or a part of its effect, because memory
    // ran out. It stays noted through the calls that follow.
    static void NoteExhausted() noexcept;

    // Whether that was noted on this thread since it last asked; forgets it.
    static bool TakeExhausted() noexcept;
};

#endif
