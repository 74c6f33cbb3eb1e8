// Ctrl-C while a statement is carried out: the statement ends, the program goes on.

#ifndef HOST_INTERRUPT_H
#define HOST_INTERRUPT_H

#include <csignal>

namespace host {

// Ends what is carried out; what it did before stays done.
struct Interrupted {};

// While it lives, SIGINT is noted instead of ending the program. There is one at a time.
class InterruptsNoted {
  public:
    InterruptsNoted();
    ~InterruptsNoted();
    InterruptsNoted(const InterruptsNoted&) = delete;
    InterruptsNoted& operator=(const InterruptsNoted&) = delete;

  private:
    struct sigaction before_;
};

// Notes an interrupt that is no signal; forgets one.
void NoteInterrupt();
void ForgetInterrupt();

// Throws Interrupted when an interrupt has been noted, which is forgotten.
void ThrowIfInterrupted();

}  // namespace host

#endif
