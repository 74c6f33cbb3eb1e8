// The description of the command line, as what is made of it sees it.

#ifndef HOST_COMMANDTREE_H
#define HOST_COMMANDTREE_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace host {

// Those that are not hidden.
inline std::vector<const CLI::App*> CommandsOf(const CLI::App& app) {
    return app.get_subcommands(
        [](const CLI::App* command) { return !command->get_group().empty(); });
}

inline std::vector<const CLI::Option*> OptionsOf(const CLI::App& command) {
    return command.get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

// As they are typed: "-m", "--model".
inline std::vector<std::string> SpellingsOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) names.push_back('-' + name);
    for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
    return names;
}

inline bool TakesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

inline std::string Joined(const std::vector<std::string>& words, const char* separator) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
    return text;
}

}  // namespace host

#endif
