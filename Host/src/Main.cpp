// orx: calls the mapping functions on data sets. See `orx --help`.

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "Evaluator.h"
#include "KORPSNTrace.h"
#include "Module.h"
#include "Names.h"
#include "Output.h"
#include "Script.h"
#include "Session.h"

namespace host {

namespace {

// Exit statuses.
constexpr int kAllEvaluated = 0;
constexpr int kStatementFailed = 1;
constexpr int kUnusable = 2;  // bad usage, or a file that cannot be read or written

void Complain(const std::string& message) { std::cerr << "orx: " << message << '\n'; }

// Ends the program with kUnusable; the messages have been given.
struct Unusable {};

[[noreturn]] void Refuse(const std::string& message) {
    Complain(message);
    throw Unusable();
}

// ---- Options

// NAME=VALUE, in two parts.
struct Named {
    std::string name;
    std::string value;
};

// A name may be left out where the value says it.
Named Split(const std::string& option) {
    const std::size_t sign = option.find('=');
    if (sign == std::string::npos || option.find('/') < sign) return {"", option};
    return {option.substr(0, sign), option.substr(sign + 1)};
}

struct Options {
    // A data set to read or to make, in the order of the command line.
    struct Model {
        bool isNew;
        std::string argument;
    };
    std::vector<Model> models;
    std::vector<std::string> schemas;
    std::string trace;
    std::vector<std::string> saves;
    bool json = false;
    bool keepGoing = false;
    bool lenient = false;
    std::string module;
    std::string script;
    std::vector<std::string> expressions;
};

// ---- Reading data sets

void Tell(const exchange::Messages& messages) {
    for (const exchange::Message& warning : messages.Warnings()) {
        Complain("warning: " + warning.ToString());
    }
    if (messages.WarningCount() > messages.Warnings().size()) {
        Complain("warning: " + std::to_string(messages.WarningCount()) + " warnings in all");
    }
    for (const exchange::Message& error : messages.Errors()) Complain(error.ToString());
    if (messages.ErrorCount() > messages.Errors().size()) {
        Complain(std::to_string(messages.ErrorCount()) + " errors in all");
    }
}

// Shows on the standard error stream how far a file has been read, when that takes longer than a
// second and the stream is a terminal.
class Progress {
  public:
    explicit Progress(const std::string& file) : file_(file), isTerminal_(isatty(STDERR_FILENO)) {
        std::error_code error;
        size_ = std::filesystem::file_size(file, error);
        if (error) size_ = 0;
    }
    ~Progress() {
        if (shown_) std::cerr << "\r\033[K" << std::flush;
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(std::uint64_t read) {
        if (!isTerminal_ || std::chrono::steady_clock::now() < next_) return;
        next_ = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
        shown_ = true;
        std::cerr << "\rreading " << file_ << ": " << read / 1'000'000 << " MB";
        if (size_ != 0)
            std::cerr << " (" << std::min<std::uint64_t>(100, 100 * read / size_) << "%)";
        std::cerr << std::flush;
    }

  private:
    const std::string& file_;
    const bool isTerminal_;
    std::uint64_t size_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point next_ =
        std::chrono::steady_clock::now() + std::chrono::seconds(1);
};

NamedModel ReadModel(const Session& session, const std::string& argument, bool lenient) {
    NamedModel model;
    const Named named = Split(argument);
    model.file = named.value;
    model.name =
        named.name.empty() ? std::filesystem::path(named.value).stem().string() : named.name;
    Progress progress(model.file);
    exchange::ReadOptions options;
    options.lenient = lenient;
    options.progress = [&progress](std::uint64_t read) { progress.Show(read); };
    exchange::Messages messages;
    model.dataSet = exchange::ReadDataSet(model.file, session.schemas, options, messages);
    Tell(messages);
    if (model.dataSet.model == nullptr) throw Unusable();
    return model;
}

NamedModel NewModel(const Session& session, const std::string& argument) {
    const Named named = Split(argument);
    if (named.name.empty()) Refuse("--new takes NAME=SCHEMA, found '" + argument + "'");
    const exchange::SchemaPtr schema = session.schemas.Find(named.value);
    if (schema == nullptr) {
        Refuse("unknown schema '" + named.value + "'" +
               kor::DidYouMean(named.value, session.schemas.Names()));
    }
    return {named.name, "", exchange::NewDataSet(schema, named.name)};
}

void Load(Session& session, const Options& options) {
    for (const std::string& file : options.schemas) {
        exchange::Messages messages;
        for (exchange::SchemaPtr& schema : exchange::ReadSchemas(file, messages)) {
            session.schemas.Add(std::move(schema));
        }
        Tell(messages);
        if (messages.ErrorCount() != 0) throw Unusable();
    }
    for (const Options::Model& model : options.models) {
        NamedModel loaded = model.isNew ? NewModel(session, model.argument)
                                        : ReadModel(session, model.argument, options.lenient);
        if (session.Find(loaded.name) != nullptr) {
            Refuse("two models are named '" + loaded.name + "' (name one with NAME=...)");
        }
        session.Add(std::move(loaded));
    }
}

// ---- Commands

// Writes what is printed; false when the standard output does not take it.
bool Flush() {
    std::cout.flush();
    if (std::cout) return true;
    Complain("the standard output cannot be written");
    return false;
}

std::string KindNames(orx::Kind kinds) {
    struct Name {
        orx::Kind kind;
        const char* name;
    };
    static constexpr Name kNames[] = {
        {orx::String, "string"},   {orx::Integer, "integer"},    {orx::Real, "real"},
        {orx::Logical, "logical"}, {orx::Instance, "instance"},  {orx::Aggregate, "aggregate"},
        {orx::Select, "select"},   {orx::RealList, "real list"}, {orx::Model, "model"},
        {orx::Nothing, "nothing"}, {orx::Unset, "unset"},
    };
    if (kinds == orx::Any) return "any";
    std::string names;
    for (const Name& name : kNames) {
        if ((kinds & name.kind) == 0) continue;
        if (!names.empty()) names += " | ";
        names += name.name;
    }
    return names;
}

int Functions(const Options& options) {
    for (const orx::Export& row : orx::kExports) {
        std::vector<std::string> arguments;
        for (std::size_t i = 0; i < row.ArgumentCount(); ++i) {
            arguments.push_back(KindNames(row.arguments[i]));
        }
        const std::string result = KindNames(row.result);
        if (options.json) {
            const nlohmann::ordered_json line{{"name", row.name},
                                              {"arguments", arguments},
                                              {"result", result},
                                              {"unit", row.unit},
                                              {"label", row.label}};
            std::cout << line << '\n';
            continue;
        }
        std::string list;
        for (const std::string& argument : arguments) list += (list.empty() ? "" : ", ") + argument;
        std::cout << row.name << '(' << list << ")\t" << result << '\t' << row.unit << '\t'
                  << row.label << '\n';
    }
    return Flush() ? kAllEvaluated : kUnusable;
}

// The number of instances by type name: declared types first, each group in alphabetical order.
struct TypeCounts {
    std::map<std::string, std::uint64_t> declared;
    std::map<std::string, std::uint64_t> undeclared;

    explicit TypeCounts(const kor::Model& model) {
        for (const kor::ModelType& type : model.Types()) {
            auto& counts = type.entity->IsDeclared() ? declared : undeclared;
            counts[std::string(type.entity->Name().View())] += type.instanceCount;
        }
    }
};

void PrintCounts(const std::map<std::string, std::uint64_t>& counts) {
    for (const auto& [name, count] : counts) {
        if (count != 0) std::cout << std::setw(10) << count << "  " << name << '\n';
    }
}

int Describe(const Session& session, const Options& options) {
    for (const NamedModel& model : session.Models()) {
        const TypeCounts counts(model.Model());
        const std::string schema(model.Model().SchemaName().View());
        if (options.json) {
            std::cout << nlohmann::ordered_json{{"model", model.name},
                                                {"file", model.file},
                                                {"schema", schema},
                                                {"instances", model.Model().InstanceCount()},
                                                {"declared", counts.declared},
                                                {"undeclared", counts.undeclared}}
                      << '\n';
            continue;
        }
        std::cout << "model " << model.name << '\n';
        if (!model.file.empty()) std::cout << "file " << model.file << '\n';
        std::cout << "schema " << schema << '\n'
                  << "instances " << model.Model().InstanceCount() << '\n';
        PrintCounts(counts.declared);
        if (!counts.undeclared.empty()) {
            std::cout << "of types that the schema does not declare\n";
            PrintCounts(counts.undeclared);
        }
    }
    return Flush() ? kAllEvaluated : kUnusable;
}

// A script, or an expression of the command line.
struct Source {
    std::string name;
    std::string text;
    Position start;
};

std::vector<Source> Sources(const Options& options) {
    std::vector<Source> sources;
    for (const std::string& expression : options.expressions) {
        sources.push_back({"<command line>", expression, {sources.size() + 1, 1}});
    }
    if (options.script.empty()) return sources;
    std::ostringstream text;
    if (options.script == "-") {
        text << std::cin.rdbuf();
        sources.push_back({"<standard input>", text.str(), {}});
        return sources;
    }
    std::ifstream file(options.script, std::ios::binary);
    if (!file || std::filesystem::is_directory(options.script)) {
        Refuse(options.script + ": cannot be read");
    }
    text << file.rdbuf();
    sources.push_back({options.script, text.str(), {}});
    return sources;
}

int Evaluate(Session& session, const Options& options, const Module& module) {
    const Printer printer(session, options.json);
    Evaluator evaluator(module, session, printer);
    int status = kAllEvaluated;
    for (const Source& source : Sources(options)) {
        ScriptReader reader(source.text, source.start, session.ModelNames());
        for (;;) {
            try {
                const std::optional<Statement> statement = reader.Next();
                if (!statement.has_value()) break;
                evaluator.Run(*statement);
            } catch (const ScriptError& error) {
                std::cout.flush();
                Complain(source.name + ':' + std::to_string(error.Where().line) + ':' +
                         std::to_string(error.Where().column) + ": " + error.what());
                status = kStatementFailed;
                if (!options.keepGoing) return Flush() ? status : kUnusable;
            }
        }
    }
    return Flush() ? status : kUnusable;
}

void Save(const Session& session, const Options& options) {
    for (const std::string& save : options.saves) {
        const Named named = Split(save);
        exchange::Messages messages;
        exchange::WriteDataSet(session.Find(named.name)->dataSet, named.value, messages);
        Tell(messages);
        if (messages.ErrorCount() != 0) throw Unusable();
    }
}

int CallOrRun(const Options& options) {
    if (!options.trace.empty() &&
        !KORPSNTrace::Configure(12, options.trace == "-" ? nullptr : options.trace.c_str())) {
        Refuse(options.trace + ": the trace cannot be written");
    }
    Session session;
    Load(session, options);
    for (const std::string& save : options.saves) {
        const Named named = Split(save);
        if (named.name.empty()) Refuse("--save takes NAME=FILE, found '" + save + "'");
        if (session.Find(named.name) == nullptr) {
            Refuse("unknown model '" + named.name + "'" +
                   kor::DidYouMean(named.name, session.ModelNames()));
        }
    }
    std::unique_ptr<Module> module;
    try {
        module = std::make_unique<Module>(options.module);
    } catch (const std::runtime_error& error) {
        Refuse(std::string("the module cannot be loaded: ") + error.what());
    }
    const int status = Evaluate(session, options, *module);
    // A script that was left halfway leaves its models unsaved.
    if (status == kAllEvaluated || options.keepGoing) Save(session, options);
    return status;
}

// ---- The command line

CLI::Option* AddSchemaAndModelOptions(CLI::App& command, Options& options) {
    command.add_option("-s,--schema", options.schemas, "an EXPRESS schema (again for more)")
        ->type_name("FILE")
        ->allow_extra_args(false);
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
    command.add_flag("--lenient", options.lenient, "read damaged files as far as they go");
    command.add_flag("--json", options.json, "one JSON object a result (UTF-8)");
    return model;
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
    command.add_flag("--keep-going", options.keepGoing, "go on after a statement that fails");
    command.add_option("--module", options.module, "another build of the module")
        ->type_name("FILE");
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
    Options options;
    CLI::App app("Calls the mapping functions of ORXExUtilities on data sets.", "orx");
    app.set_version_flag("--version", "orx " ORX_VERSION);
    app.require_subcommand(1);

    CLI::App* functions = app.add_subcommand("functions", "the export table");
    functions->add_flag("--json", options.json, "one JSON object a function");
    CLI::App* describe =
        app.add_subcommand("describe", "schema, instance counts by type, undeclared types");
    AddSchemaAndModelOptions(*describe, options)->required();
    CLI::App* call = app.add_subcommand("call", "evaluate expressions, one result a line");
    AddEvaluationOptions(*call, options);
    call->add_option("EXPRESSION", options.expressions, "expressions or statements")->required();
    CLI::App* run = app.add_subcommand("run", "the same from a file, one statement a line");
    AddEvaluationOptions(*run, options);
    run->add_option("SCRIPT", options.script, "the file (\"-\": standard input)")->required();

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        app.exit(success);
        return kAllEvaluated;
    } catch (const CLI::ParseError& error) {
        app.exit(error, std::cerr, std::cerr);
        return kUnusable;
    }
    if (functions->parsed()) return Functions(options);
    if (describe->parsed()) {
        Session session;
        Load(session, options);
        return Describe(session, options);
    }
    return CallOrRun(options);
}

}  // namespace

}  // namespace host

int main(int argc, char** argv) {
    try {
        return host::Main(argc, argv);
    } catch (const host::Unusable&) {
        return host::kUnusable;
    } catch (const std::bad_alloc&) {
        host::Complain("out of memory");
        return host::kUnusable;
    }
}
