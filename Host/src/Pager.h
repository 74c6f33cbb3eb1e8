// Long output on a terminal, page by page.

#ifndef HOST_PAGER_H
#define HOST_PAGER_H

#include <memory>

namespace host {

// While it lives, what goes to std::cout waits until it is more than the terminal has lines, and
// goes through a pager from then on: $PAGER, or less or more where it is not set. An empty $PAGER
// asks for none. Less that fits goes to the terminal at the end. Leaving the pager early is an
// interrupt (see Interrupt.h).
class Pager {
  public:
    Pager();
    // Waits until the pager has been left.
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    // Whether the user has left the pager before the end of the output.
    bool WasLeft() const;

  private:
    class Buffer;
    std::unique_ptr<Buffer> buffer_;  // null where there is no pager
};

}  // namespace host

#endif
