// orx completion man: the options in the manual page.

#include "commands/ManPage.h"

#include <algorithm>
#include <vector>

#include "commands/CommandTree.h"

namespace host {

namespace {

// What one option does in the commands that take it; it may differ from one to another.
struct Use {
    std::string description;
    std::vector<std::string> commands;
};
struct Entry {
    std::string head;
    std::vector<Use> uses;
};

// Hyphens that are typed, backslashes as they are.
std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '-') {
            escaped += "\\-";
        } else if (c == '\\') {
            escaped += "\\e";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

std::string Bold(const std::string& word) { return "\\fB" + Escaped(word) + "\\fR"; }

std::string Head(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : SpellingsOf(option)) names.push_back(Bold(name));
    std::string head = Joined(names, ", ");
    if (TakesValue(option)) head += " \\fI" + Escaped(option.get_type_name()) + "\\fR";
    return head;
}

// A sentence.
std::string Sentence(const CLI::Option& option) {
    std::string text = option.get_description();
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') {
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
    }
    if (!option.get_default_str().empty()) text += " (" + option.get_default_str() + ')';
    return Escaped(text) + '.';
}

template <class Items, class Matches>
auto& FoundOrAdded(Items& items, Matches matches) {
    const auto found = std::find_if(items.begin(), items.end(), matches);
    return found != items.end() ? *found : items.emplace_back();
}

void Add(std::vector<Entry>& entries, const CLI::Option& option, const std::string& command) {
    const std::string head = Head(option);
    Entry& entry = FoundOrAdded(entries, [&](const Entry& other) { return other.head == head; });
    entry.head = head;
    const std::string description = Sentence(option);
    Use& use = FoundOrAdded(entry.uses,
                            [&](const Use& other) { return other.description == description; });
    use.description = description;
    if (!command.empty()) use.commands.push_back(Bold(command));
}

}  // namespace

std::string ManOptions(const CLI::App& app) {
    std::vector<Entry> entries;
    // Those of orx itself; every command has the help.
    for (const CLI::Option* option : OptionsOf(app)) Add(entries, *option, "");
    for (const CLI::App* command : CommandsOf(app)) {
        for (const CLI::Option* option : OptionsOf(*command)) {
            if (option != command->get_help_ptr()) Add(entries, *option, command->get_name());
        }
    }
    std::string page;
    for (const Entry& entry : entries) {
        page += ".TP\n" + entry.head + '\n';
        for (const Use& use : entry.uses) {
            page += (&use == &entry.uses.front() ? "" : ".br\n") + use.description + '\n';
            if (!use.commands.empty()) page += "Of " + Joined(use.commands, ", ") + ".\n";
        }
    }
    return page;
}

}  // namespace host
