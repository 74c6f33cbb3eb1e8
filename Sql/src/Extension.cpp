// The extension for programs that have SQLite: models as tables, the mapping functions, and
//
//     orx_open(FILE [, NAME [, SCHEMA]])
//
// which reads an exchange file (ISO 10303-21), with the schemas of an EXPRESS file where one is
// given, and makes its tables in an attached database in memory of that name: the stem of the file
// unless given. Returns the name. The files of the program are not touched; DETACH releases a
// model.

#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "Connection.h"
#include "Exchange.h"
#include "KORDMInstance.h"
#include "Sqlite.h"

SQLITE_EXTENSION_INIT1

namespace sql {

namespace {

using Owner = std::shared_ptr<Connection>;

// What is wrong, a message a line; nothing when nothing is.
void Check(const exchange::Messages& messages) {
    for (const exchange::Message& warning : messages.Warnings()) {
        sqlite3_log(SQLITE_WARNING, "%s", warning.ToString().c_str());
    }
    std::string all;
    for (const exchange::Message& error : messages.Errors()) {
        if (!all.empty()) all += '\n';
        all += error.ToString();
    }
    if (!all.empty()) throw std::runtime_error(all);
}

std::string TextAt(int position, int count, sqlite3_value** values) {
    if (position >= count || sqlite3_value_type(values[position]) == SQLITE_NULL) return "";
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(values[position]));
    if (text == nullptr) throw std::bad_alloc();
    return text;
}

std::string Open(Connection& connection, int count, sqlite3_value** values) {
    const std::string file = TextAt(0, count, values);
    std::string name = TextAt(1, count, values);
    const std::string express = TextAt(2, count, values);
    if (name.empty()) name = std::filesystem::path(file).stem().string();
    exchange::SchemaCatalog schemas;
    exchange::Messages messages;
    if (!express.empty()) {
        for (exchange::SchemaPtr& schema : exchange::ReadSchemas(express, messages)) {
            schemas.Add(std::move(schema));
        }
        Check(messages);
    }
    exchange::DataSet dataSet = exchange::ReadDataSet(file, schemas, {}, messages);
    Check(messages);
    KORDMStore::AddFamilies(*dataSet.model);
    AddModel(connection, name, std::move(dataSet.model));
    return name;
}

void CallOpen(sqlite3_context* context, int count, sqlite3_value** values) {
    try {
        if (count < 1 || count > 3) throw std::runtime_error("1 to 3 arguments expected");
        Connection& connection = **static_cast<Owner*>(sqlite3_user_data(context));
        const std::string name = Open(connection, count, values);
        sqlite3_result_text64(context, name.data(), name.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(context);
    } catch (const std::exception& error) {
        sqlite3_result_error(context, (std::string("orx_open: ") + error.what()).c_str(), -1);
    }
}

void AddOpen(const Owner& connection) {
    // It reads files: no view or trigger of a database may call it.
    const int status = sqlite3_create_function_v2(
        connection->database, "orx_open", -1, SQLITE_UTF8 | SQLITE_DIRECTONLY,
        new Owner(connection), CallOpen, nullptr, nullptr,
        [](void* owner) { delete static_cast<Owner*>(owner); });
    if (status == SQLITE_NOMEM) throw std::bad_alloc();
    if (status != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(connection->database));
}

}  // namespace

}  // namespace sql

// SQLite finds it by the name of the file.
extern "C" __attribute__((visibility("default"))) int sqlite3_orxsqlite_init(
    sqlite3* database, char** message, const sqlite3_api_routines* api) {
    SQLITE_EXTENSION_INIT2(api);
    try {
        static const calls::Module module("");
        sql::AddOpen(sql::Connect(database, module));
        // If SQLite unloaded it, the end of the process could unload it within its own destructors.
        return SQLITE_OK_LOAD_PERMANENTLY;
    } catch (const std::bad_alloc&) {
        *message = sqlite3_mprintf("out of memory");
        return SQLITE_NOMEM;
    } catch (const std::exception& error) {
        *message = sqlite3_mprintf("%s", error.what());
        return SQLITE_ERROR;
    }
}
