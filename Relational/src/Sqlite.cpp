// SQLite, through its C interface.

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "Database.h"

namespace relational {

namespace {

// How long another program may hold the database before it counts as locked.
constexpr int kPatience = 2'000;  // milliseconds

struct SqliteCloser {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using SqliteConnection = std::unique_ptr<sqlite3, SqliteCloser>;
using Statement = std::unique_ptr<sqlite3_stmt, SqliteCloser>;

[[noreturn]] void Fail(sqlite3* database) {
    switch (sqlite3_errcode(database)) {
        case SQLITE_NOMEM: throw std::bad_alloc();
        case SQLITE_BUSY:
        case SQLITE_LOCKED: throw DatabaseError{"the database is locked by another program"};
        case SQLITE_TOOBIG: throw DatabaseError{"a text is longer than SQLite takes"};
        default: throw DatabaseError{sqlite3_errmsg(database)};
    }
}

Statement Prepare(sqlite3* database, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database, sql.c_str(), static_cast<int>(sql.size()), &statement,
                           nullptr) != SQLITE_OK) {
        Fail(database);
    }
    return Statement(statement);
}

void Bind(sqlite3* database, sqlite3_stmt* statement, int index, const Field& field) {
    int result = SQLITE_OK;
    switch (field.kind) {
        case Field::Kind::Null: result = sqlite3_bind_null(statement, index); break;
        case Field::Kind::Integer:
        case Field::Kind::Boolean:
            result = sqlite3_bind_int64(statement, index, field.integer);
            break;
        case Field::Kind::Real: result = sqlite3_bind_double(statement, index, field.real); break;
        case Field::Kind::Text:
            result =
                sqlite3_bind_text64(statement, index, field.text.empty() ? "" : field.text.data(),
                                    field.text.size(), SQLITE_STATIC, SQLITE_UTF8);
            break;
    }
    if (result == SQLITE_TOOBIG) throw DatabaseError{"a text is longer than SQLite takes"};
    if (result != SQLITE_OK) Fail(database);
}

void Run(sqlite3* database, sqlite3_stmt* statement) {
    const int result = sqlite3_step(statement);
    if (result != SQLITE_DONE && result != SQLITE_ROW) Fail(database);
    sqlite3_reset(statement);
}

std::string ListOf(const ColumnNames& columns) {
    std::string list;
    for (const std::string& column : columns) {
        list += (list.empty() ? "" : ", ") + QuotedName(column);
    }
    return list;
}

class SqliteRows final : public Rows {
  public:
    SqliteRows(sqlite3* database, Statement statement)
        : database_(database), statement_(std::move(statement)) {}

    bool Next(std::vector<Field>& row) override {
        const int result = sqlite3_step(statement_.get());
        if (result == SQLITE_DONE) return false;
        if (result != SQLITE_ROW) Fail(database_);
        row.resize(static_cast<std::size_t>(sqlite3_column_count(statement_.get())));
        for (std::size_t i = 0; i < row.size(); ++i) row[i] = FieldAt(static_cast<int>(i));
        return true;
    }

  private:
    Field FieldAt(int column) const {
        sqlite3_stmt* const statement = statement_.get();
        switch (sqlite3_column_type(statement, column)) {
            case SQLITE_INTEGER:
                return Field::Of(std::int64_t{sqlite3_column_int64(statement, column)});
            case SQLITE_FLOAT: return Field::OfReal(sqlite3_column_double(statement, column));
            case SQLITE_NULL: return {};
            default: break;
        }
        const void* text = sqlite3_column_blob(statement, column);
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
        if (text == nullptr && size != 0) Fail(database_);
        return Field::OfText({text != nullptr ? static_cast<const char*>(text) : "", size});
    }

    sqlite3* database_;
    Statement statement_;
};

class SqliteInsertion final : public Insertion {
  public:
    SqliteInsertion(sqlite3* database, Statement statement)
        : database_(database), statement_(std::move(statement)) {}

    void Add(std::span<const Field> row) override {
        int index = 0;
        for (const Field& field : row) Bind(database_, statement_.get(), ++index, field);
        Run(database_, statement_.get());
    }
    void Finish() override {}

  private:
    sqlite3* database_;
    Statement statement_;
};

// The file of a database. If it is made for this database and nothing is saved to it, it is removed
// at the end, without a path of the standard library, which needs memory.
class DatabaseFile {
  public:
    DatabaseFile(const std::string& name, Database::Access access)
        : name_(name),
          made_(access == Database::Access::Write && ::access(name.c_str(), F_OK) != 0) {}
    ~DatabaseFile() {
        struct stat status {};
        if (made_ && ::stat(name_.c_str(), &status) == 0 && status.st_size == 0) {
            ::unlink(name_.c_str());
        }
    }
    DatabaseFile(const DatabaseFile&) = delete;
    DatabaseFile& operator=(const DatabaseFile&) = delete;

    const std::string& Name() const { return name_; }

  private:
    const std::string name_;
    const bool made_;
};

class Sqlite final : public Database {
  public:
    Sqlite(const std::string& file, Access access) : file_(file, access) {
        sqlite3* opened = nullptr;
        // A reader may have to roll back what a writer that was killed has left. Where the file
        // cannot be written, SQLite opens it for reading alone. One thread at a time uses it.
        const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX |
                          (access == Access::Write ? SQLITE_OPEN_CREATE : 0);
        const int result = sqlite3_open_v2(file.c_str(), &opened, flags, nullptr);
        database_.reset(opened);
        if (opened == nullptr) throw std::bad_alloc();
        if (result != SQLITE_OK) Fail(opened);
        sqlite3_busy_timeout(opened, kPatience);
    }

    const Dialect& GetDialect() const override { return kSqlite; }

    std::string Identity() const override {
        std::error_code error;
        const std::filesystem::path whole = std::filesystem::canonical(file_.Name(), error);
        return "sqlite:" + (error ? file_.Name() : whole.string());
    }

    void Begin(Access access) override {
        Execute(access == Access::Read ? "BEGIN" : "BEGIN IMMEDIATE");
    }

    void Commit() override {
        statements_.clear();
        Execute("COMMIT");
    }

    Relations ReadRelations() override {
        Relations relations;
        const auto rows = Query(
            "SELECT lower(m.name), m.type, lower(c.name) FROM sqlite_master AS m, "
            "pragma_table_xinfo(m.name) AS c WHERE m.type IN ('table', 'view')");
        for (std::vector<Field> row; rows->Next(row);) {
            Relation& relation = relations[std::string(row[0].text)];
            relation.columns.emplace(row[2].text);
            if (row[1].text != "view") continue;
            relation = {true, false, false, false, std::move(relation.columns)};
        }
        // A view is written by triggers.
        const auto triggers = Query(
            "SELECT lower(tbl_name), upper(sql) FROM sqlite_master "
            "WHERE type = 'trigger'");
        for (std::vector<Field> row; triggers->Next(row);) {
            const auto found = relations.find(row[0].text);
            if (found == relations.end() || !found->second.isView) continue;
            const std::string sql(row[1].text);
            const auto fires = [&sql](const char* event) {
                const std::size_t instead = sql.find("INSTEAD");
                const std::size_t of = instead == sql.npos ? instead : sql.find("OF", instead + 7);
                const std::size_t at =
                    of == sql.npos ? of : sql.find_first_not_of(" \t\r\n", of + 2);
                return at != sql.npos &&
                       sql.compare(at, std::string_view(event).size(), event) == 0;
            };
            found->second.inserts |= fires("INSERT");
            found->second.updates |= fires("UPDATE");
            found->second.deletes |= fires("DELETE");
        }
        return relations;
    }

    std::unique_ptr<Rows> Read(const std::string& table, const ColumnNames& columns) override {
        return Query("SELECT " + ListOf(columns) + " FROM " + QuotedName(table));
    }

    std::unique_ptr<Rows> Read(const std::string& table, const ColumnNames& columns,
                               const Key& key) override {
        Statement statement =
            Prepare(database_.get(), "SELECT " + ListOf(columns) + " FROM " + QuotedName(table) +
                                         " WHERE " + QuotedName(key.column) + " = ?");
        Bind(database_.get(), statement.get(), 1, Field::Of(key.value));
        return std::make_unique<SqliteRows>(database_.get(), std::move(statement));
    }

    std::unique_ptr<Insertion> Insert(const std::string& table,
                                      const ColumnNames& columns) override {
        std::string values = "?";
        for (std::size_t i = 1; i < columns.size(); ++i) values += ", ?";
        return std::make_unique<SqliteInsertion>(
            database_.get(),
            Prepare(database_.get(), "INSERT INTO " + QuotedName(table) + " (" + ListOf(columns) +
                                         ") VALUES (" + values + ")"));
    }

    std::uint64_t Update(const std::string& table, const ColumnNames& columns,
                         std::span<const Field> values, const Key& key) override {
        std::string assignments;
        for (const std::string& column : columns) {
            assignments += (assignments.empty() ? "" : ", ") + QuotedName(column) + " = ?";
        }
        sqlite3_stmt* statement = Cached("UPDATE " + QuotedName(table) + " SET " + assignments +
                                         " WHERE " + QuotedName(key.column) + " = ?");
        int index = 0;
        for (const Field& value : values) Bind(database_.get(), statement, ++index, value);
        Bind(database_.get(), statement, ++index, Field::Of(key.value));
        return RunCounting(statement);
    }

    std::uint64_t Delete(const std::string& table, const Key& key) override {
        sqlite3_stmt* statement = Cached("DELETE FROM " + QuotedName(table) + " WHERE " +
                                         QuotedName(key.column) + " = ?");
        Bind(database_.get(), statement, 1, Field::Of(key.value));
        return RunCounting(statement);
    }

    void Execute(const std::string& sql) override {
        const Statement statement = Prepare(database_.get(), sql);
        Run(database_.get(), statement.get());
    }

  private:
    std::unique_ptr<Rows> Query(const std::string& sql) {
        return std::make_unique<SqliteRows>(database_.get(), Prepare(database_.get(), sql));
    }

    sqlite3_stmt* Cached(const std::string& sql) {
        Statement& statement = statements_[sql];
        if (statement == nullptr) statement = Prepare(database_.get(), sql);
        return statement.get();
    }

    std::uint64_t RunCounting(sqlite3_stmt* statement) {
        Run(database_.get(), statement);
        return static_cast<std::uint64_t>(sqlite3_changes(database_.get()));
    }

    const DatabaseFile file_;  // closed before it is removed
    SqliteConnection database_;
    std::map<std::string, Statement> statements_;
};

}  // namespace

std::unique_ptr<Database> OpenSqlite(const std::string& file, Database::Access access) {
    return std::make_unique<Sqlite>(file, access);
}

}  // namespace relational
