// orx sql: queries over data sets.

#include <memory>
#include <string>

#include "commands/Commands.h"
#include "commands/Loading.h"
#include "console/Console.h"
#include "console/Display.h"
#include "script/SqlQuery.h"

namespace host {

int Sql(const Options& options) {
    TraceView trace;
    StartTrace(trace, options);
    Session session;
    Load(session, options);
    const std::unique_ptr<calls::Module> module = LoadModule(options);
    SqlSession sql(session, *module);
    const Form form = options.box ? Form::Box : SqlFormOf(FormOf(options));
    Place next = kStartOfScript;  // that of an argument: they count as lines of the command line
    for (const std::string& query : options.expressions) {
        const bool isInput = query == "-";
        const std::string text = isInput ? ReadText(query) : query;
        const std::string source = isInput ? TextName(query) : "<command line>";
        try {
            sql.Run(text, isInput ? kStartOfScript : next, form);
        } catch (const ScriptError& error) {
            Flush();
            Complain(source + ':' + std::to_string(error.Where().line) + ':' +
                     std::to_string(error.Where().column) + ": " + error.what());
            return kStatementFailed;
        }
        ++next.line;
    }
    return Flush() ? kDone : kUnusable;
}

}  // namespace host
