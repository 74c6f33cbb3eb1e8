// orx: calls the mapping functions on data sets. See `orx --help`. Here is its command line.

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <iostream>
#include <new>
#include <sstream>

#include "Commands.h"
#include "Console.h"
#include "Loading.h"
#include "Options.h"
#include "Printable.h"

namespace host {

namespace {

constexpr const char* kFirstSteps =
    "orx looks at product data and calls mapping functions on them. What to do next:\n"
    "\n"
    "  orx tree -m FILE.stp                      the assembly structure of a STEP file\n"
    "  orx report -m FILE.stp -o report.html     the same with a drawing, as a page for a browser\n"
    "  orx shell -m FILE.stp                     ask for instances and call functions; try `help`\n"
    "\n"
    "`orx --help` lists all commands, `orx COMMAND --help` their options.\n";

void AddModuleOption(CLI::App& command, Options& options) {
    command.add_option("--module", options.module, "another build of the module")
        ->type_name("FILE");
}

void AddSchemaOption(CLI::App& command, Options& options) {
    command.add_option("-s,--schema", options.schemas, "an EXPRESS schema (again for more)")
        ->type_name("FILE")
        ->allow_extra_args(false);
    command.add_flag("--lenient", options.lenient, "read damaged files as far as they go");
}

CLI::Option* AddSchemaAndModelOptions(CLI::App& command, Options& options) {
    AddSchemaOption(command, options);
    CLI::Option* model =
        command
            .add_option_function<std::string>(
                "-m,--model",
                [&options](const std::string& argument) {
                    options.models.push_back({false, argument});
                },
                "a data set (again for more); NAME is the file's stem unless given")
            ->type_name("[NAME=]FILE")
            ->trigger_on_parse();
    return model;
}

void AddJsonFlag(CLI::App& command, Options& options) {
    command.add_flag("--json", options.json, "one JSON object a result (UTF-8)");
}

void AddInPlaceFlag(CLI::App& command, Options& options) {
    command.add_flag(
        "--in-place", options.inPlace,
        "write over a file that is there, under all its names, rather than replace it");
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
    command
        .add_option("-t,--trace", options.trace, "write the trace there (\"-\": standard error)")
        ->type_name("FILE");
    command
        .add_option("-o,--save", options.saves,
                    "write a model after the last statement (again for more)")
        ->type_name("NAME=FILE")
        ->allow_extra_args(false);
    AddInPlaceFlag(command, options);
    AddModuleOption(command, options);
    AddJsonFlag(command, options);
}

void AddKeepGoingFlag(CLI::App& command, Options& options) {
    command.add_flag("--keep-going", options.keepGoing, "go on after a statement that fails");
}

// Gives the standard streams that are closed a place that cannot be used, lest a file that is
// opened takes it.
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

int Main(int argc, char** argv) {
    HoldStandardStreams();
    // A file that may not grow further is told like any other that cannot be written.
    std::signal(SIGXFSZ, SIG_IGN);
    if (argc < 2) {
        std::cerr << kFirstSteps;
        return kUnusable;
    }
    Options options;
    CLI::App app("Calls the mapping functions of ORXExUtilities on data sets.", "orx");
    app.set_version_flag("--version", "orx " ORX_VERSION);
    app.require_subcommand(1);

    CLI::App* functions = app.add_subcommand("functions", "the export table");
    functions->add_flag("--json", options.json, "one JSON object a function");
    CLI::App* describe =
        app.add_subcommand("describe", "schema, instance counts by type, undeclared types");
    AddSchemaAndModelOptions(*describe, options)->required();
    AddJsonFlag(*describe, options);
    CLI::App* tree = app.add_subcommand("tree", "the assembly structure");
    AddSchemaAndModelOptions(*tree, options)->required();
    tree->add_flag("--placements", options.placements,
                   "each occurrence in a line of its own, with its placement in its parent: the "
                   "columns of a rotation, then a translation");
    tree->add_option("--depth", options.depth, "how many levels are shown below a root")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber.description(""))
        ->capture_default_str();
    tree->add_option("--lines", options.lines, "how many lines of a tree are shown")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber.description(""))
        ->capture_default_str();
    AddModuleOption(*tree, options);
    tree->add_flag("--json", options.json, "one JSON object a line of the tree (UTF-8)");
    CLI::App* diff = app.add_subcommand("diff", "what two data sets hold differently");
    AddSchemaOption(*diff, options);
    const auto addDataSet = [&](const char* name, const char* description) {
        diff->add_option_function<std::string>(
                name,
                [&options, name](const std::string& file) {
                    options.models.push_back({false, std::string(name) + '=' + file});
                },
                description)
            ->required();
    };
    addDataSet("LEFT", "a data set");
    addDataSet("RIGHT", "the one that it is compared with");
    diff->add_option("--tolerance", options.tolerance, "by how much reals may differ")
        ->type_name("NUMBER")
        ->check(CLI::NonNegativeNumber.description(""));
    AddJsonFlag(*diff, options);
    CLI::App* check = app.add_subcommand("check", "what the schema of a data set does not allow");
    AddSchemaOption(*check, options);
    check
        ->add_option_function<std::vector<std::string>>(
            "FILE",
            [&options](const std::vector<std::string>& files) {
                for (const std::string& file : files) options.models.push_back({false, file});
            },
            "data sets")
        ->required();
    AddJsonFlag(*check, options);
    CLI::App* report = app.add_subcommand(
        "report", "a page for a browser: structure, drawing, configurations, versions");
    AddSchemaAndModelOptions(*report, options)->required();
    report->add_option("-o,--output", options.output, "the page (\"-\": standard output)")
        ->type_name("FILE.html")
        ->required();
    AddInPlaceFlag(*report, options);
    AddModuleOption(*report, options);
    CLI::App* call = app.add_subcommand("call", "evaluate expressions, one result a line");
    AddEvaluationOptions(*call, options);
    AddKeepGoingFlag(*call, options);
    call->add_option("EXPRESSION", options.expressions, "expressions or statements")->required();
    CLI::App* run = app.add_subcommand("run", "the same from a file, one statement a line");
    AddEvaluationOptions(*run, options);
    AddKeepGoingFlag(*run, options);
    run->add_option("SCRIPT", options.script, "the file (\"-\": standard input)")->required();
    CLI::App* shell = app.add_subcommand("shell", "the same as they are typed");
    AddEvaluationOptions(*shell, options);

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        app.exit(success);
        return Flush() ? kDone : kUnusable;
    } catch (const CLI::ParseError& error) {
        // Its message may hold any argument.
        std::ostringstream message;
        app.exit(error, message, message);
        std::istringstream lines(message.str());
        for (std::string line; std::getline(lines, line);) std::cerr << Printable(line) << '\n';
        return kUnusable;
    }
    CheckTargets(options);
    if (functions->parsed()) return Functions(options);
    if (describe->parsed()) return Describe(options);
    if (tree->parsed()) return Tree(options);
    if (diff->parsed()) return Diff(options);
    if (check->parsed()) return Check(options);
    if (report->parsed()) return Report(options);
    if (shell->parsed()) return Shell(options);
    return CallOrRun(options);
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
