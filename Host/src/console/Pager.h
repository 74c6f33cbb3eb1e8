// Long output on a terminal, page by page.

#ifndef HOST_PAGER_H
#define HOST_PAGER_H

#include <memory>

namespace host {

// While it exists, output to std::cout is held back until it exceeds the lines of the terminal, and
// then goes through a pager: $PAGER or, if it is not set, less or more. An empty $PAGER disables
// it. Output that fits is written to the terminal at the end. Leaving the pager early is an
// interrupt (see Interrupt.h).
class Pager {
  public:
    Pager();
    // Waits until the user leaves the pager.
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    // Whether the user left the pager before the end of the output.
    bool WasLeft() const;

  private:
    class Buffer;
    std::unique_ptr<Buffer> buffer_;  // null if there is no pager
};

}  // namespace host

#endif
