// Ctrl-C while a statement runs: the statement ends, the program continues.

#ifndef HOST_INTERRUPT_H
#define HOST_INTERRUPT_H

#include <csignal>

namespace host {

// Thrown to end the statement; its effects up to that point remain.
struct Interrupted {};

// While it exists, SIGINT is noted instead of ending the program. Only one may exist at a time.
class InterruptsNoted {
  public:
    InterruptsNoted();
    ~InterruptsNoted();
    InterruptsNoted(const InterruptsNoted&) = delete;
    InterruptsNoted& operator=(const InterruptsNoted&) = delete;

  private:
    struct sigaction before_;
};

// Notes an interrupt other than a signal; clears the note.
void NoteInterrupt();
void ForgetInterrupt();

// Throws Interrupted if an interrupt was noted, and clears the note.
void ThrowIfInterrupted();

}  // namespace host

#endif
