// The mapping functions as functions of SQL.

#include "Functions.h"

#include <array>
#include <exception>
#include <mutex>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "Arguments.h"
#include "Values.h"

namespace sql {

namespace {

constexpr std::size_t kMostArguments = 3;

// A row of the export table in a connection.
struct Function {
    std::shared_ptr<Connection> connection;
    const orx::Export& row;
};

// The versions that are seen are one state for the whole process. A model that IsVersion has met
// stays until RemoveValueVersion.
std::mutex versionMutex;
std::vector<std::shared_ptr<const kor::Model>> versionModels;

SdaiPrimitiveH CallVersion(const Function& function, std::span<const calls::Argument> arguments) {
    const std::lock_guard lock(versionMutex);
    if (function.row.name == "IsVersion") {
        const SdaiEntityInstance* instance = arguments[0].handle;
        const NamedModel* named =
            instance == nullptr
                ? nullptr
                : function.connection->models.Holding(instance->FindEntityInstanceModel());
        if (named != nullptr && (versionModels.empty() || versionModels.back() != named->model)) {
            versionModels.push_back(named->model);
        }
    }
    SdaiPrimitiveH result = function.connection->module.Call(function.row, arguments);
    if (function.row.name == "RemoveValueVersion") versionModels.clear();
    return result;
}

SdaiPrimitiveH CallRow(const Function& function, sqlite3_value** values) {
    const orx::Export& row = function.row;
    if (calls::MayCreate(row)) {
        throw std::runtime_error("creates instances, and models are not written here");
    }
    std::array<calls::Argument, kMostArguments> all;
    const std::span<calls::Argument> arguments(all.data(), row.ArgumentCount());
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        try {
            arguments[i] = TakeArgument(values[i], row.arguments[i], function.connection->models);
        } catch (const std::runtime_error& error) {
            throw std::runtime_error("argument " + std::to_string(i + 1) + ": " + error.what());
        }
    }
    return row.unit == "Version" ? CallVersion(function, arguments)
                                 : function.connection->module.Call(row, arguments);
}

void Call(sqlite3_context* context, int, sqlite3_value** values) {
    const Function& function = *static_cast<const Function*>(sqlite3_user_data(context));
    try {
        try {
            Give(context, CallRow(function, values), function.connection->models);
        } catch (const std::runtime_error& error) {
            const std::string message = std::string(function.row.name) + ": " + error.what();
            sqlite3_result_error(context, message.c_str(), -1);
        }
    } catch (const std::exception&) {
        sqlite3_result_error_nomem(context);
    }
}

void Delete(void* function) { delete static_cast<Function*>(function); }

}  // namespace

void AddFunctions(const std::shared_ptr<Connection>& connection) {
    for (const orx::Export& row : orx::kExports) {
        // SQLite deletes the function, also when it fails to take it.
        auto* function = new Function{connection, row};
        const int status =
            sqlite3_create_function_v2(connection->database, std::string(row.name).c_str(),
                                       static_cast<int>(row.ArgumentCount()), SQLITE_UTF8, function,
                                       Call, nullptr, nullptr, Delete);
        if (status == SQLITE_NOMEM) throw std::bad_alloc();
        if (status != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(connection->database));
    }
}

}  // namespace sql
