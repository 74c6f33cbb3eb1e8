// Messages and exit statuses of orx.

#ifndef HOST_CONSOLE_H
#define HOST_CONSOLE_H

#include <string>
#include <string_view>

#include "Exchange.h"

namespace host {

// Exit statuses.
constexpr int kDone = 0;
constexpr int kStatementFailed = 1;
constexpr int kDifferent = 1;  // the data sets differ, or the data violate the schema
constexpr int kUnusable = 2;   // bad usage, or a file that cannot be read or written

// Writes a message, made printable for a terminal, to the standard error stream. Allocates nothing.
void Complain(std::string_view message);

// Ends the program with kUnusable, after the messages were written.
struct Unusable {};

[[noreturn]] void Refuse(std::string_view message);

// Writes the messages about a file; throws Unusable if one is an error.
void Tell(const exchange::Messages& messages);

// Writes what is printed; false, with a message, when the standard output does not take it.
bool Flush();

// Whether output to a descriptor may have colours: it is a terminal that supports them, and the
// environment variable NO_COLOR is not set.
bool HasColours(int descriptor);

// A text in a colour, or unchanged.
enum class Colour { Faint, Bold, Red };
std::string Coloured(const std::string& text, Colour colour, bool colours);

}  // namespace host

#endif
