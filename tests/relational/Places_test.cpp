// The databases that the tests use.

#include "Places.h"

#include <libpq-fe.h>
#include <sqlite3.h>

#include <stdexcept>

#include "Server.h"

namespace {

class SqlitePlace final : public Place {
  public:
    std::string Name() const override { return "sqlite:" + File(); }

    void Execute(const std::string& sql) override {
        const Connection database(File());
        char* error = nullptr;
        if (sqlite3_exec(database.handle, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
            const std::string text = error;
            sqlite3_free(error);
            throw std::runtime_error(text);
        }
    }

    Lines Query(const std::string& sql) override {
        const Connection database(File());
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(database.handle, sql.c_str(), -1, &statement, nullptr) !=
            SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(database.handle));
        }
        Lines rows;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            std::string& row = rows.emplace_back();
            for (int i = 0; i < sqlite3_column_count(statement); ++i) {
                if (i != 0) row += '|';
                const unsigned char* text = sqlite3_column_text(statement, i);
                row += text == nullptr ? "NULL" : reinterpret_cast<const char*>(text);
            }
        }
        sqlite3_finalize(statement);
        return rows;
    }

  private:
    struct Connection {
        explicit Connection(const std::string& file) { sqlite3_open(file.c_str(), &handle); }
        ~Connection() { sqlite3_close(handle); }
        Connection(const Connection&) = delete;
        Connection& operator=(const Connection&) = delete;
        sqlite3* handle = nullptr;
    };

    std::string File() const { return files_ / "parts.db"; }

    TemporaryDirectory files_;
};

// A separate schema on the server that the tests share.
class PostgresqlPlace final : public Place {
  public:
    PostgresqlPlace() {
        static int count = 0;
        schema_ = "place" + std::to_string(++count);
        Execute("CREATE SCHEMA " + schema_);
    }

    std::string Name() const override { return Server::Shared().Uri(schema_); }
    void Execute(const std::string& sql) override { Run(sql); }

    Lines Query(const std::string& sql) override {
        const std::unique_ptr<PGresult, decltype(&PQclear)> result(Run(sql));
        Lines rows;
        for (int i = 0; i < PQntuples(result.get()); ++i) {
            std::string& row = rows.emplace_back();
            for (int j = 0; j < PQnfields(result.get()); ++j) {
                if (j != 0) row += '|';
                row +=
                    PQgetisnull(result.get(), i, j) != 0 ? "NULL" : PQgetvalue(result.get(), i, j);
            }
        }
        return rows;
    }

  private:
    std::unique_ptr<PGresult, decltype(&PQclear)> Run(const std::string& sql) const {
        const std::unique_ptr<PGconn, decltype(&PQfinish)> connection(PQconnectdb(Name().c_str()),
                                                                      &PQfinish);
        PQsetNoticeProcessor(
            connection.get(), [](void*, const char*) {}, nullptr);
        std::unique_ptr<PGresult, decltype(&PQclear)> result(PQexec(connection.get(), sql.c_str()),
                                                             &PQclear);
        const ExecStatusType status = PQresultStatus(result.get());
        if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
            throw std::runtime_error(PQerrorMessage(connection.get()));
        }
        return result;
    }

    std::string schema_;
};

// The server ends before the program does.
class SharedServer : public testing::Environment {
    void TearDown() override { Server::StopShared(); }
};
const auto* const kEnvironment = testing::AddGlobalTestEnvironment(new SharedServer);

}  // namespace

std::unique_ptr<Place> NewPlace(const std::string& kind) {
    if (kind == "sqlite") return std::make_unique<SqlitePlace>();
    if (!Server::IsInstalled()) return nullptr;
    return std::make_unique<PostgresqlPlace>();
}

Opened Open(const std::string& name, const exchange::SchemaCatalog& schemas, bool lenient) {
    Opened opened;
    exchange::Messages messages;
    exchange::ReadOptions options;
    options.lenient = lenient;
    opened.dataSet = relational::Open(name, schemas, options, messages);
    for (const auto& error : messages.Errors()) opened.errors.push_back(error.text);
    for (const auto& warning : messages.Warnings()) opened.warnings.push_back(warning.text);
    EXPECT_EQ(opened.dataSet.model == nullptr, !opened.errors.empty());
    return opened;
}

Lines Save(const exchange::DataSet& dataSet, const std::string& name) {
    exchange::Messages messages;
    Lines errors;
    const bool done = relational::Save(dataSet, name, messages);
    for (const auto& error : messages.Errors()) errors.push_back(error.text);
    EXPECT_EQ(done, errors.empty());
    return errors;
}

exchange::DataSet DataSetOf(const std::string& schema, const std::string& data,
                            const exchange::SchemaCatalog& schemas) {
    exchange::Messages messages;
    exchange::DataSet dataSet = exchange::ParseDataSet(
        "ISO-10303-21;HEADER;FILE_DESCRIPTION((''),'2;1');FILE_SCHEMA(('" + schema +
            "'));ENDSEC;DATA;\n" + data + "\nENDSEC;END-ISO-10303-21;",
        "data", schemas, {}, messages);
    for (const auto& error : messages.Errors()) ADD_FAILURE() << error.ToString();
    if (dataSet.model == nullptr) throw std::runtime_error("the test's data cannot be read");
    return dataSet;
}
