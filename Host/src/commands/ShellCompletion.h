// Completions of orx for shells, made of its own description of the command line.

#ifndef HOST_SHELLCOMPLETION_H
#define HOST_SHELLCOMPLETION_H

#include <CLI/CLI.hpp>
#include <string>

namespace host {

// The text of a completion function for bash and for zsh.
std::string BashCompletion(const CLI::App& app);
std::string ZshCompletion(const CLI::App& app);

}  // namespace host

#endif
