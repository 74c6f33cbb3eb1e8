// orx: calls the mapping functions on data sets. See `orx --help`. Here is its command line.

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <charconv>
#include <csignal>
#include <exception>
#include <filesystem>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "DataSets.h"
#include "commands/Commands.h"
#include "commands/Loading.h"
#include "commands/ManPage.h"
#include "commands/Options.h"
#include "commands/ShellCompletion.h"
#include "console/Console.h"
#include "services/Suggestions.h"

namespace host {

namespace {

constexpr const char* kFirstSteps =
    "orx looks at product data and calls mapping functions on them. What to do next:\n"
    "\n"
    "  orx FILE.stp              what a STEP file holds\n"
    "  orx tree FILE.stp         its assembly structure\n"
    "  orx report FILE.stp       the same with a drawing, as a page for a browser: FILE.html\n"
    "  orx shell FILE.stp        ask for instances and call functions; try `help`\n"
    "\n"
    "`orx --help` lists all commands, `orx COMMAND --help` their options.\n";

void AddModuleOption(CLI::App& command, Options& options) {
    command.add_option("--module", options.module, "another build of the module")
        ->type_name("FILE");
}

// A whole number from 0; a message names what was found instead.
CLI::Validator Natural() {
    return CLI::Validator(
        [](const std::string& text) {
            const bool digits = !text.empty() && text.size() <= 18 &&
                                text.find_first_not_of("0123456789") == std::string::npos;
            return digits ? "" : "a whole number from 0 expected, found '" + text + "'";
        },
        "");
}

void AddSchemaOption(CLI::App& command, Options& options) {
    command.add_option("-s,--schema", options.schemas, "an EXPRESS schema (again for more)")
        ->type_name("FILE")
        ->allow_extra_args(false);
    command.add_option("--as", options.as, "read with this schema, whatever the files name")
        ->type_name("SCHEMA");
    command.add_flag("--lenient", options.lenient, "read damaged files as far as they go");
    command.add_option("--threads", options.threads, "read a file with at most that many threads")
        ->type_name("N")
        ->check(Natural());
}

void AddSchemaAndModelOptions(CLI::App& command, Options& options) {
    AddSchemaOption(command, options);
    command
        .add_option_function<std::string>(
            "-m,--model",
            [&options](const std::string& argument) {
                options.models.push_back({false, argument});
            },
            "a data set (again for more); NAME is the file's stem unless given")
        ->type_name("[NAME=]FILE")
        ->trigger_on_parse();
}

// Data sets without -m: orx tree FILE.
CLI::Option* AddFiles(CLI::App& command, Options& options,
                      const char* description = "data sets (\"-\": standard input)") {
    return command.add_option_function<std::vector<std::string>>(
        "FILE",
        [&options](const std::vector<std::string>& files) {
            for (const std::string& file : files) options.models.push_back({false, file});
        },
        description);
}

// A number from 0.
CLI::Validator NotNegative() {
    return CLI::Validator(
        [](const std::string& text) {
            double number = 0;
            const char* end = text.data() + text.size();
            const auto read = std::from_chars(text.data(), end, number);
            const bool right = read.ec == std::errc() && read.ptr == end && number >= 0;
            return right ? "" : "a number from 0 expected, found '" + text + "'";
        },
        "");
}

CLI::Option* AddJsonFlag(CLI::App& command, Options& options) {
    return command.add_flag("--json", options.json, "one JSON object a result (UTF-8)");
}

struct FormFlags {
    CLI::Option* json;
    CLI::Option* csv;
};

FormFlags AddFormFlags(CLI::App& command, Options& options) {
    // Options are not looked up by name: CLI11 ends the program where that needs memory.
    CLI::Option* json = AddJsonFlag(command, options);
    CLI::Option* csv = command.add_flag("--csv", options.csv, "rows as CSV, headers first");
    csv->excludes(json);
    return {json, csv};
}

void AddRootOption(CLI::App& command, Options& options) {
    command.add_option("--root", options.root, "begin with the part of that id, name or instance")
        ->type_name("PART");
}

void AddInPlaceFlag(CLI::App& command, Options& options) {
    command.add_flag(
        "--in-place", options.inPlace,
        "write over a file that is there, under all its names, rather than replace it");
}

void AddMisfitFlags(CLI::App& command, Options& options) {
    CLI::Option* quiet =
        command.add_flag("--quiet", options.quiet,
                         "no warning of an argument that is of another kind than a function takes");
    command
        .add_flag("--strict", options.strict,
                  "an argument of another kind than a function takes is an error")
        ->excludes(quiet);
}

void AddTraceOption(CLI::App& command, Options& options) {
    command
        .add_option("-t,--trace", options.trace, "write the trace there (\"-\": standard error)")
        ->type_name("FILE");
}

void AddEvaluationOptions(CLI::App& command, Options& options) {
    AddSchemaAndModelOptions(command, options);
    command
        .add_option_function<std::string>(
            "-n,--new",
            [&options](const std::string& argument) {
                options.models.push_back({true, argument});
            },
            "an empty model of that schema (again for more)")
        ->type_name("NAME=SCHEMA")
        ->trigger_on_parse();
    AddTraceOption(command, options);
    command
        .add_option("--trace-only", options.traceOnly,
                    "trace calls of that function, and what it calls (again for more)")
        ->type_name("NAME")
        ->allow_extra_args(false);
    command
        .add_option("--trace-depth", options.traceDepth,
                    "trace so many levels of functions that call each other")
        ->type_name("N")
        ->check(Natural());
    command
        .add_option("-o,--save", options.saves,
                    "write a model after the last statement (again for more)")
        ->type_name("NAME=FILE")
        ->allow_extra_args(false);
    AddInPlaceFlag(command, options);
    AddModuleOption(command, options);
    AddMisfitFlags(command, options);
    AddFormFlags(command, options);
}

void AddKeepGoingFlag(CLI::App& command, Options& options) {
    command.add_flag("--keep-going", options.keepGoing, "go on after a statement that fails");
}

std::vector<std::string> NamesOf(const std::vector<const CLI::App*>& commands) {
    std::vector<std::string> names;
    names.reserve(commands.size());
    for (const CLI::App* command : commands) names.push_back(command->get_name());
    return names;
}

// `orx FILE` describes the file. Any other word that is not a command is a typing error.
std::vector<std::string> WithCommand(std::vector<std::string> arguments, const CLI::App& app) {
    const std::string& first = arguments.front();
    const std::vector<std::string> commands = NamesOf(app.get_subcommands(nullptr));
    const bool isOption = first.starts_with('-') && first != "-";
    if (isOption || std::find(commands.begin(), commands.end(), first) != commands.end()) {
        return arguments;
    }
    std::error_code error;
    if (first == "-" || relational::IsDatabase(first) || std::filesystem::exists(first, error)) {
        arguments.insert(arguments.begin(), "describe");
        return arguments;
    }
    const std::string nearest = kor::DidYouMean(first, commands);
    Refuse("'" + first + "' is no command and no file" +
           (nearest.empty() ? " (orx --help lists the commands)" : nearest));
}

// The command that was given, or orx itself.
const CLI::App& Parsed(const CLI::App& app) {
    const std::vector<CLI::App*> commands = app.get_subcommands();
    return commands.empty() ? app : *commands.front();
}

[[noreturn]] void RefuseUsage(const CLI::App& app, const CLI::ParseError& error) {
    const CLI::App& command = Parsed(app);
    const std::string help =
        " (orx " + (&command == &app ? "" : command.get_name() + ' ') + "--help)";
    const std::vector<std::string> extras = command.remaining();
    const auto option = std::find_if(extras.begin(), extras.end(), [](const std::string& extra) {
        return extra.starts_with('-');
    });
    if (option != extras.end()) {
        std::vector<std::string> known;
        for (const CLI::Option* each : command.get_options()) {
            for (const std::string& name : each->get_lnames()) known.push_back("--" + name);
        }
        const std::string name = option->substr(0, option->find('='));
        const std::string nearest = kor::DidYouMean(name, known);
        Refuse("unknown option '" + name + "'" + (nearest.empty() ? help : nearest));
    }
    std::string message = error.what();
    message.resize(std::min(message.find('\n'), message.size()));
    Refuse(message + help);
}

// For show, users and sql without -m, the first argument is the data set.
void TakeFile(Options& options, const char* missing) {
    if (options.models.empty() && !options.expressions.empty()) {
        options.models.push_back({false, options.expressions.front()});
        options.expressions.erase(options.expressions.begin());
    }
    if (options.expressions.empty()) Refuse(missing);
}

// Occupies the descriptors of closed standard streams, so that no file is opened with one of them.
void HoldStandardStreams() {
    for (;;) {
        const int descriptor = open("/dev/null", O_RDONLY);
        if (descriptor < 0) return;
        if (descriptor > STDERR_FILENO) {
            close(descriptor);
            return;
        }
    }
}

// CLI11 builds its texts with string streams, which ignore failed allocations and are left with
// half a text. So each failed allocation is recorded.
std::atomic<bool> ranOut = false;

void NoteLack() {
    ranOut = true;
    throw std::bad_alloc();
}

// What CLI11 says of the program: its help or version.
std::string TextOf(const CLI::App& app, const CLI::Success& end) {
    std::ostringstream text;
    app.exit(end, text, text);
    std::string whole = text.str();
    if (ranOut) throw std::bad_alloc();
    return whole;
}

// ---- The commands

void AddFunctionsOptions(CLI::App& command, Options& options) {
    command.add_flag("--json", options.json, "one JSON object a function");
}

void AddDescribeOptions(CLI::App& command, Options& options) {
    AddSchemaAndModelOptions(command, options);
    AddFiles(command, options);
    AddJsonFlag(command, options);
}

void AddTreeOptions(CLI::App& command, Options& options) {
    AddSchemaAndModelOptions(command, options);
    AddFiles(command, options);
    command.add_flag("--placements", options.placements,
                     "each occurrence on a line of its own, with its placement in its parent: the "
                     "columns of a rotation, then a translation");
    command.add_option("--depth", options.depth, "how many levels are shown below a root")
        ->type_name("N")
        ->check(Natural())
        ->capture_default_str();
    command.add_option("--lines", options.lines, "how many lines of a tree are shown")
        ->type_name("N")
        ->check(Natural())
        ->capture_default_str();
    command.add_flag("--absolute", options.absolute,
                     "each occurrence on a line of its own, with its placement in the root");
    command.add_flag("--names", options.names, "each occurrence with its name");
    AddRootOption(command, options);
    AddModuleOption(command, options);
    AddFormFlags(command, options);
}

void AddBomOptions(CLI::App& command, Options& options) {
    AddSchemaAndModelOptions(command, options);
    AddFiles(command, options);
    AddRootOption(command, options);
    AddFormFlags(command, options);
}

// A data set that is an argument of its own; the model has the argument's name.
void AddDataSet(CLI::App& command, Options& options, const char* name, const char* description) {
    command
        .add_option_function<std::string>(
            name,
            [&options, name](const std::string& file) {
                options.models.push_back({false, std::string(name) + '=' + file});
            },
            description)
        ->required();
}

void AddDiffOptions(CLI::App& command, Options& options) {
    AddSchemaOption(command, options);
    AddDataSet(command, options, "LEFT", "a data set");
    AddDataSet(command, options, "RIGHT", "the one that it is compared with");
    command.add_option("--tolerance", options.tolerance, "by how much reals may differ")
        ->type_name("NUMBER")
        ->check(NotNegative());
    AddJsonFlag(command, options);
}

void AddCheckOptions(CLI::App& command, Options& options) {
    AddSchemaOption(command, options);
    AddFiles(command, options, "data sets")->required();
    AddJsonFlag(command, options);
}

void AddCopyOptions(CLI::App& command, Options& options) {
    AddSchemaOption(command, options);
    AddDataSet(command, options, "FROM", "a data set");
    command.add_option("TO", options.output, "where it goes")->required();
    AddInPlaceFlag(command, options);
}

void AddPrintSchemaOptions(CLI::App& command, Options& options) {
    AddSchemaOption(command, options);
    command.add_option("NAME", options.schemaName, "the schema")->required();
    command.add_option("--sql", options.sql, "its tables in a database of that kind")
        ->type_name("sqlite|postgresql");
}

void AddReportOptions(CLI::App& command, Options& options) {
    AddSchemaAndModelOptions(command, options);
    AddFiles(command, options);
    command
        .add_option("-o,--output", options.output,
                    "the page (\"-\": standard output); unless given, a new file that is named "
                    "after the data set")
        ->type_name("FILE.html");
    AddInPlaceFlag(command, options);
    AddModuleOption(command, options);
}

void AddInspectionOptions(CLI::App& command, Options& options) {
    AddSchemaAndModelOptions(command, options);
    command
        .add_option("INSTANCE", options.expressions,
                    "#12, 12, @model#12 or an expression; without -m, the data set before it")
        ->required();
    AddModuleOption(command, options);
    AddFormFlags(command, options);
}

void AddCallOptions(CLI::App& command, Options& options) {
    AddEvaluationOptions(command, options);
    AddKeepGoingFlag(command, options);
    command.add_option("EXPRESSION", options.expressions, "expressions or statements")->required();
}

void AddRunOptions(CLI::App& command, Options& options) {
    AddEvaluationOptions(command, options);
    AddKeepGoingFlag(command, options);
    command.add_option("SCRIPT", options.script, "the file (\"-\": standard input)")->required();
}

void AddShellOptions(CLI::App& command, Options& options) {
    AddEvaluationOptions(command, options);
    AddFiles(command, options);
}

void AddSqlOptions(CLI::App& command, Options& options) {
    AddSchemaAndModelOptions(command, options);
    AddTraceOption(command, options);
    AddModuleOption(command, options);
    const FormFlags forms = AddFormFlags(command, options);
    command.add_flag("--box", options.box, "rows as boxes")
        ->excludes(forms.json)
        ->excludes(forms.csv);
    command
        .add_option("QUERY", options.expressions,
                    "queries (\"-\": standard input); without -m, the data set before them")
        ->required();
}

// What a command needs of its data sets.
enum class Needs {
    Nothing,
    Model,
    Instance,  // of a model; without -m, the first argument is the data set
    Query      // the same
};

struct Command {
    const char* name;
    const char* description;
    void (*addOptions)(CLI::App& command, Options& options);
    int (*run)(const Options& options);
    Needs needs = Needs::Nothing;
};

constexpr Command kCommands[] = {
    {"functions", "the export table", AddFunctionsOptions, Functions},
    {"describe", "schema, instance counts by type, undeclared types", AddDescribeOptions, Describe,
     Needs::Model},
    {"tree", "the assembly structure", AddTreeOptions, Tree, Needs::Model},
    {"bom", "the parts list: totals over all levels", AddBomOptions, PartsList, Needs::Model},
    {"diff", "what two data sets hold differently", AddDiffOptions, Diff},
    {"check", "what the schema of a data set does not allow", AddCheckOptions, Check},
    {"copy", "a data set from one place to another", AddCopyOptions, Copy},
    {"schema", "a schema as EXPRESS, or as tables", AddPrintSchemaOptions, PrintSchema},
    {"report", "a page for a browser: structure, drawing, configurations, versions",
     AddReportOptions, Report, Needs::Model},
    {"show", "an instance: attributes, types, what it refers to", AddInspectionOptions,
     ShowInstances, Needs::Instance},
    {"users", "who refers to an instance, and through what", AddInspectionOptions, Users,
     Needs::Instance},
    {"call", "evaluate expressions, one result a line", AddCallOptions, CallOrRun},
    {"run", "the same from a file, one statement a line", AddRunOptions, CallOrRun},
    {"shell", "the same as they are typed", AddShellOptions, Shell},
    {"sql", "queries in SQL: each entity type is a table", AddSqlOptions, Sql, Needs::Query},
};

int Run(const Command& command, Options& options) {
    if (command.needs == Needs::Instance) {
        TakeFile(options, "an instance is missing, such as '#12'");
    } else if (command.needs == Needs::Query) {
        TakeFile(options, "a query is missing, such as 'SELECT * FROM product'");
    }
    const bool needsModel = command.needs == Needs::Model || command.needs == Needs::Instance;
    if (needsModel && options.models.empty()) {
        Refuse("a data set is missing: orx " + std::string(command.name) + " FILE");
    }
    CheckTargets(options);
    return command.run(options);
}

// Parses the arguments. Returns false, with the text to print, if they ask for help or the version.
bool Parse(CLI::App& app, std::vector<std::string> arguments, std::string& text) {
    try {
        arguments = WithCommand(std::move(arguments), app);
        std::reverse(arguments.begin(), arguments.end());
        app.parse(std::move(arguments));
        return true;
    } catch (const CLI::Success& success) {
        text = TextOf(app, success);
        return false;
    } catch (const CLI::ParseError& error) {
        RefuseUsage(app, error);
    }
}

int Print(const std::string& text) {
    std::cout << text;
    return Flush() ? kDone : kUnusable;
}

int Main(int argc, char** argv) {
    std::set_new_handler(NoteLack);
    HoldStandardStreams();
    // A file that must not grow further is reported like any other that cannot be written.
    std::signal(SIGXFSZ, SIG_IGN);
    if (argc < 2) {
        std::cerr << kFirstSteps;
        return kUnusable;
    }
    Options options;
    CLI::App app("Calls the mapping functions of ORXExUtilities on data sets.", "orx");
    app.set_version_flag("--version", "orx " ORX_VERSION);
    app.require_subcommand(1);
    for (const Command& command : kCommands) {
        command.addOptions(*app.add_subcommand(command.name, command.description), options);
    }
    CLI::App* completion = app.add_subcommand("completion", "")->group("");
    std::string form;
    completion->add_option("SHELL", form)->required()->check(CLI::IsMember({"bash", "zsh", "man"}));

    std::string text;
    if (!Parse(app, {argv + 1, argv + argc}, text)) return Print(text);
    if (completion->parsed()) {
        return Print(form == "zsh"   ? ZshCompletion(app)
                     : form == "man" ? ManOptions(app)
                                     : BashCompletion(app));
    }
    const std::string parsed = Parsed(app).get_name();
    const auto* command = std::find_if(std::begin(kCommands), std::end(kCommands),
                                       [&](const Command& each) { return parsed == each.name; });
    return Run(*command, options);
}

}  // namespace

}  // namespace host

int main(int argc, char** argv) {
    try {
        return host::Main(argc, argv);
    } catch (const host::Unusable&) {
        // The message has been given.
    } catch (const std::bad_alloc&) {
        host::Complain("out of memory");
    } catch (const std::exception& error) {
        host::Complain(error.what());
    }
    return host::kUnusable;
}
