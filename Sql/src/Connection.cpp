// Models as databases of a connection.

#include "Connection.h"

#include <new>
#include <stdexcept>

#include "Functions.h"
#include "VirtualTable.h"
#include "model/NameTable.h"

namespace sql {

namespace {

void Execute(sqlite3* database, const std::string& statement) {
    char* message = nullptr;
    const int status = sqlite3_exec(database, statement.c_str(), nullptr, nullptr, &message);
    if (status == SQLITE_OK) return;
    const std::string text = message != nullptr ? message : sqlite3_errstr(status);
    sqlite3_free(message);
    if (status == SQLITE_NOMEM) throw std::bad_alloc();
    throw std::runtime_error(text);
}

// Detaches a database unless everything went well, for which it needs no memory of its own.
class Attached {
  public:
    Attached(sqlite3* database, const std::string& name)
        : database_(database), detach_("DETACH " + Quoted(name)) {
        Execute(database_, "ATTACH ':memory:' AS " + Quoted(name));
    }
    ~Attached() {
        if (!kept_) sqlite3_exec(database_, detach_.c_str(), nullptr, nullptr, nullptr);
    }
    Attached(const Attached&) = delete;
    Attached& operator=(const Attached&) = delete;
    void Keep() { kept_ = true; }

  private:
    sqlite3* database_;
    const std::string detach_;
    bool kept_ = false;
};

// One transaction, whether the caller has begun one or not.
class Savepoint {
  public:
    explicit Savepoint(sqlite3* database) : database_(database) {
        Execute(database_, "SAVEPOINT orx");
    }
    ~Savepoint() {
        if (released_) return;
        sqlite3_exec(database_, "ROLLBACK TO orx; RELEASE orx", nullptr, nullptr, nullptr);
    }
    Savepoint(const Savepoint&) = delete;
    Savepoint& operator=(const Savepoint&) = delete;
    void Release() {
        Execute(database_, "RELEASE orx");
        released_ = true;
    }

  private:
    sqlite3* database_;
    bool released_ = false;
};

}  // namespace

std::shared_ptr<Connection> Connect(sqlite3* database, const calls::Module& module) {
    auto connection = std::make_shared<Connection>(database, module);
    AddFunctions(connection);
    AddVirtualTables(connection);
    return connection;
}

void RemoveDetached(Connection& connection) {
    connection.models.Remove([&](const NamedModel& model) {
        return sqlite3_db_readonly(connection.database, model.name.c_str()) == -1;
    });
}

void AddModel(Connection& connection, const std::string& name,
              std::shared_ptr<const kor::Model> model) {
    RemoveDetached(connection);
    const std::string folded = kor::Folded(name);
    if (folded == "MAIN" || folded == "TEMP") {
        throw std::runtime_error("a model cannot be named '" + name + "', as SQLite's own are");
    }
    Attached attached(connection.database, name);
    connection.models.Add({name, model});
    try {
        Savepoint savepoint(connection.database);
        for (const std::string& table : TableNames(*model)) {
            Execute(connection.database, "CREATE VIRTUAL TABLE " + Quoted(name) + '.' +
                                             Quoted(table) + " USING " + kVirtualTables);
        }
        savepoint.Release();
    } catch (...) {
        connection.models.Remove([&](const NamedModel& named) { return named.model == model; });
        throw;
    }
    attached.Keep();
}

std::string Quoted(std::string_view name) {
    std::string quoted = "\"";
    for (const char c : name) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + '"';
}

}  // namespace sql
