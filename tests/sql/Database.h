// An SQLite connection with models, for tests.

#ifndef TESTS_DATABASE_H
#define TESTS_DATABASE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Connection.h"
#include "Exchange.h"
#include "Module.h"

using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

// Returns fields as SQLite converts them to text; NULL is "NULL". An error is a row with the
// message.
class Database {
  public:
    Database() {
        sqlite3_open(":memory:", &database_);
        connection_ = sql::Connect(database_, module_);
    }
    ~Database() { sqlite3_close(database_); }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void Add(const std::string& name, std::shared_ptr<const kor::Model> model) {
        sql::AddModel(*connection_, name, std::move(model));
    }

    Rows Query(const std::string& query) const {
        sqlite3_stmt* statement = nullptr;
        Rows rows;
        if (sqlite3_prepare_v2(database_, query.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
            return {{sqlite3_errmsg(database_)}};
        }
        int status = sqlite3_step(statement);
        for (; status == SQLITE_ROW; status = sqlite3_step(statement)) {
            rows.emplace_back();
            for (int i = 0; i < sqlite3_column_count(statement); ++i) {
                const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
                rows.back().push_back(text != nullptr ? text : "NULL");
            }
        }
        if (status != SQLITE_DONE) rows = {{sqlite3_errmsg(database_)}};
        sqlite3_finalize(statement);
        return rows;
    }

    // The first column.
    Row Column(const std::string& query) const {
        Row column;
        for (Row& row : Query(query)) column.push_back(row.front());
        return column;
    }
    std::string Value(const std::string& query) const {
        const Row column = Column(query);
        return column.size() == 1 ? column.front() : std::to_string(column.size()) + " rows";
    }

    // The query plan of each table, in the order of the loops.
    Row Ways(const std::string& query) const {
        Row ways;
        for (const Row& row : Query("EXPLAIN QUERY PLAN " + query)) {
            const std::size_t colon = row.back().find(':');
            ways.push_back(colon != std::string::npos ? row.back().substr(colon + 1) : row.back());
        }
        return ways;
    }

    sqlite3* Handle() const { return database_; }

  private:
    inline static const calls::Module module_{""};
    sqlite3* database_ = nullptr;
    std::shared_ptr<sql::Connection> connection_;
};

// The model of an exchange file with these instances; null, with a test failure, if they are
// invalid.
inline std::shared_ptr<kor::Model> ModelOf(const std::string& schema, const std::string& instances,
                                           const std::string& express = "") {
    exchange::Messages messages;
    exchange::SchemaCatalog schemas;
    for (auto& declared : express.empty() ? std::vector<exchange::SchemaPtr>()
                                          : exchange::ParseSchemas(express, "schema", messages)) {
        schemas.Add(std::move(declared));
    }
    exchange::DataSet dataSet = exchange::ParseDataSet(
        "ISO-10303-21;HEADER;FILE_DESCRIPTION((''),'2;1');FILE_NAME('','',(''),(''),'','','');"
        "FILE_SCHEMA(('" +
            schema + "'));ENDSEC;DATA;" + instances + "ENDSEC;END-ISO-10303-21;",
        "test", schemas, {}, messages);
    for (const auto& error : messages.Errors()) ADD_FAILURE() << error.ToString();
    return std::move(dataSet.model);
}

#endif
