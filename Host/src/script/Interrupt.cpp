// Interrupts that end a statement.

#include "script/Interrupt.h"

namespace host {

namespace {

volatile std::sig_atomic_t noted = 0;

}  // namespace

InterruptsNoted::InterruptsNoted() : before_{} {
    struct sigaction action {};
    action.sa_handler = [](int) { noted = 1; };
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, &before_);
}

InterruptsNoted::~InterruptsNoted() { sigaction(SIGINT, &before_, nullptr); }

void NoteInterrupt() { noted = 1; }
void ForgetInterrupt() { noted = 0; }

void ThrowIfInterrupted() {
    if (noted == 0) return;
    noted = 0;
    throw Interrupted();
}

}  // namespace host
