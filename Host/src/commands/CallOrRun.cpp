// orx call and orx run.

#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "commands/Commands.h"
#include "commands/Loading.h"
#include "console/Console.h"
#include "script/Evaluator.h"

namespace host {

namespace {

// A script, or an expression on the command line.
struct Source {
    std::string name;
    std::string text;
    Place start;
};

std::vector<Source> Sources(const Options& options) {
    std::vector<Source> sources;
    for (const std::string& expression : options.expressions) {
        sources.push_back({"<command line>", expression, {sources.size() + 1, 1}});
    }
    if (options.script.empty()) return sources;
    sources.push_back({TextName(options.script), ReadText(options.script), kStartOfScript});
    return sources;
}

int Evaluate(Session& session, const Options& options, const calls::Module& module,
             TraceView& trace) {
    Printer printer(session, FormOf(options));
    int status = kDone;
    std::string sourceName;
    const auto complain = [&](const char* kind, const ScriptError& error) {
        std::cout.flush();
        Complain(kind + sourceName + ':' + std::to_string(error.Where().line) + ':' +
                 std::to_string(error.Where().column) + ": " + error.what());
    };
    const auto fail = [&](const ScriptError& error) {
        complain("", error);
        printer.PrintError(sourceName, error);
        status = kStatementFailed;
    };
    Leniency leniency;
    if (options.lenient) {
        leniency.warn = [&](const ScriptError& error) { complain("warning: ", error); };
    }
    if (options.keepGoing) leniency.skip = fail;
    if (options.strict) {
        leniency.misfit = [](const ScriptError& error) { throw error; };
    } else if (!options.quiet) {
        leniency.misfit = [&](const ScriptError& error) { complain("warning: ", error); };
    }
    Evaluator evaluator(module, session, printer, leniency, &trace);
    for (const Source& source : Sources(options)) {
        sourceName = source.name;
        ScriptReader reader(source.text, source.start, session.ModelNames());
        for (;;) {
            try {
                const std::optional<Statement> statement = reader.Next();
                if (!statement.has_value()) break;
                evaluator.Run(*statement);
            } catch (const ScriptError& error) {
                fail(error);
                if (!options.keepGoing) return Flush() ? status : kUnusable;
            }
        }
    }
    return Flush() ? status : kUnusable;
}

}  // namespace

int CallOrRun(const Options& options) {
    TraceView trace;
    StartTrace(trace, options);
    Session session;
    Load(session, options);
    CheckSaves(session, options);
    const std::unique_ptr<calls::Module> module = LoadModule(options);
    const int status = Evaluate(session, options, *module, trace);
    // The models of an aborted script are not saved.
    if (status == kDone || options.keepGoing) Save(session, options);
    return status;
}

}  // namespace host
