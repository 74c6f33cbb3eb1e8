// What orx says beside its results, and how it ends.

#ifndef HOST_CONSOLE_H
#define HOST_CONSOLE_H

#include <string>
#include <string_view>

#include "Exchange.h"

namespace host {

// Exit statuses.
constexpr int kDone = 0;
constexpr int kStatementFailed = 1;
constexpr int kDifferent = 1;  // from another data set, or from what a schema allows
constexpr int kUnusable = 2;   // bad usage, or a file that cannot be read or written

// Writes a message to the standard error stream, as it may reach a terminal. Allocates nothing.
void Complain(std::string_view message);

// Ends the program with kUnusable; the messages have been given.
struct Unusable {};

[[noreturn]] void Refuse(std::string_view message);

// Writes what there is to say about a file; throws Unusable when there is an error.
void Tell(const exchange::Messages& messages);

// Writes what is printed; false, with a message, when the standard output does not take it.
bool Flush();

// Whether what is written to a descriptor may have colours: it is a terminal that knows them, and
// the environment variable NO_COLOR is not set.
bool HasColours(int descriptor);

// A text in a colour, or as it is.
enum class Colour { Faint, Bold, Red };
std::string Coloured(const std::string& text, Colour colour, bool colours);

}  // namespace host

#endif
