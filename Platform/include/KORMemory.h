// Reports whether calls have run out of memory.
//
// No function throws or fails: one that runs out of memory returns its default, which it also
// returns if the data contain nothing. To distinguish the two, check here after each call.

#ifndef KORMEMORY_H
#define KORMEMORY_H

#include "KORExport.h"

class KOR_API KORMemory {
  public:
    // Notes that a call on this thread returned its default, or was only partly carried out,
    // because memory ran out. Later calls do not clear the note.
    static void NoteExhausted() noexcept;

    // Returns whether that was noted on this thread since the last call of this function, and
    // clears the note.
    static bool TakeExhausted() noexcept;
};

#endif
