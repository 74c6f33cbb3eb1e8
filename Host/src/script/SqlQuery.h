// Queries in SQL over the models of a session.

#ifndef HOST_SQLQUERY_H
#define HOST_SQLQUERY_H

#include <memory>
#include <string_view>

#include "Module.h"
#include "console/Columns.h"
#include "script/Completion.h"
#include "script/Script.h"
#include "script/Session.h"

struct sqlite3;

namespace sql {
struct Connection;
}

namespace host {

// A connection of SQLite that has the models as tables. The session must stay as long as it does.
class SqlSession {
  public:
    SqlSession(Session& session, const calls::Module& module);
    ~SqlSession();
    SqlSession(const SqlSession&) = delete;
    SqlSession& operator=(const SqlSession&) = delete;

    // Runs the statements of a text, which begins at that place, and prints their rows: as
    // boxes, CSV with headers or JSON objects. Throws ScriptError for one that fails; the rows
    // before it have been printed. Models whose names SQLite cannot have are refused.
    void Run(std::string_view text, Place start, Form form);

  private:
    [[noreturn]] void FailToPrepare(int status, std::string_view text, std::size_t first,
                                    Place start) const;

    // Makes tables of the models that have come to the session.
    void AddModels();

    Session& session_;
    sqlite3* database_ = nullptr;
    std::shared_ptr<sql::Connection> connection_;
    std::size_t modelCount_ = 0;  // that have tables
};

// Rows are boxes where other results are aligned, and CSV where these are separated by tabs.
Form SqlFormOf(Form form);

// Completions of a query that is being typed: the tables and models, the columns of the tables that
// it names (after a point, of the table or alias before the point), the functions and the keywords
// of SQL.
Completion CompleteSql(std::string_view query, const Session& session);

}  // namespace host

#endif
