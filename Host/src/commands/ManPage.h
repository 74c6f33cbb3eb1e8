// The section OPTIONS of the manual page of orx, made of its own description of the command line.

#ifndef HOST_MANPAGE_H
#define HOST_MANPAGE_H

#include <CLI/CLI.hpp>
#include <string>

namespace host {

// In the macros of man(7): each option once, with what it does and the commands that take it.
std::string ManOptions(const CLI::App& app);

}  // namespace host

#endif
