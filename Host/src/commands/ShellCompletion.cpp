// orx completion: what bash and zsh offer.

#include "commands/ShellCompletion.h"

#include <set>
#include <vector>

#include "commands/CommandTree.h"

namespace host {

namespace {

constexpr const char* kBashHead = R"sh(# shellcheck shell=bash
# Completion of orx for bash, made by `orx completion bash`. A command is one row of the table.

_orx() {
    local word=$2 previous=$3 command=${COMP_WORDS[1]}
    local -A options=(
)sh";
constexpr const char* kBashWords = R"sh(    )

    if [ "$COMP_CWORD" -eq 1 ]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -W "${!options[*]} --version --help" -- "$word"; compgen -f -- "$word")
        return
    fi
    case $previous in
        )sh";
constexpr const char* kBashTail = R"sh( | =)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            return
            ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "${options[$command]}" -- "$word")
    elif [ "$command" = call ]; then
        # The function that an expression begins with.
        compopt -o nospace
        mapfile -t COMPREPLY < <(compgen -S '(' -W "$("$1" functions 2>/dev/null | cut -d '(' -f 1)" -- "$word")
    elif [ "$command" != functions ]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    fi
}
complete -F _orx orx
)sh";

constexpr const char* kZshHead = R"sh(#compdef orx
# Completion of orx for zsh, made by `orx completion zsh`. A command is one row of each table.

_orx_expression() {
    # The function that an expression begins with.
    compset -P '*[^[:alnum:]_]'
    local -a functions
    functions=(${${(f)"$(orx functions 2>/dev/null)"}%%\(*})
    compadd -q -S '(' -- $functions
}

_orx() {
    local -a commands
    commands=(
)sh";
constexpr const char* kZshWords = R"sh(    )

    if (( CURRENT == 2 )); then
        _describe command commands
        _files
        compadd -- --version --help
        return
    fi
    local command=$words[2]
    shift words
    (( CURRENT-- ))
    case $command in
)sh";
constexpr const char* kZshTail = R"sh(    esac
}

_orx "$@"
)sh";

bool TakesFile(const CLI::Option& option) {
    return TakesValue(option) && option.get_type_name().find("FILE") != std::string::npos;
}

// Within the single quotes of zsh.
std::string Quoted(const std::string& text) {
    std::string quoted;
    for (const char c : text) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            if (c == '[' || c == ']' || c == ':') quoted += '\\';
            quoted += c;
        }
    }
    return quoted;
}

std::string ZshOption(const CLI::Option& option) {
    const std::vector<std::string> names = SpellingsOf(option);
    const std::string name =
        names.size() == 1 ? '\'' + names.front() : '{' + Joined(names, ",") + "}'";
    std::string value;
    if (TakesValue(option)) {
        value = ':' + Quoted(option.get_type_name()) + ':' + (TakesFile(option) ? "_files" : "");
    }
    return (TakesValue(option) ? "'*'" : "") + name + '[' + Quoted(option.get_description()) + ']' +
           value + '\'';
}

}  // namespace

std::string BashCompletion(const CLI::App& app) {
    std::string rows;
    std::set<std::string> withFile;
    for (const CLI::App* command : CommandsOf(app)) {
        std::vector<std::string> words;
        for (const CLI::Option* option : OptionsOf(*command)) {
            for (const std::string& name : SpellingsOf(*option)) {
                words.push_back(name);
                if (TakesFile(*option)) withFile.insert(name);
            }
        }
        rows += "        [" + command->get_name() + "]='" + Joined(words, " ") + "'\n";
    }
    return kBashHead + rows + kBashWords + Joined({withFile.begin(), withFile.end()}, " | ") +
           kBashTail;
}

std::string ZshCompletion(const CLI::App& app) {
    std::string described;
    std::string cases;
    for (const CLI::App* command : CommandsOf(app)) {
        const std::string& name = command->get_name();
        described += "        '" + name + ':' + Quoted(command->get_description()) + "'\n";
        cases += "        " + name + ") _arguments";
        for (const CLI::Option* option : OptionsOf(*command)) {
            cases += " \\\n            " + ZshOption(*option);
        }
        if (name == "call") {
            cases += " \\\n            '*:expression:_orx_expression'";
        } else if (name != "functions") {
            cases += " \\\n            '*:file:_files'";
        }
        cases += " ;;\n";
    }
    return kZshHead + described + kZshWords + cases + kZshTail;
}

}  // namespace host
