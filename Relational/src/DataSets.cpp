// Data sets by name: files and databases.

#include "DataSets.h"

#include <algorithm>
#include <filesystem>
#include <memory>

#include "Database.h"
#include "Load.h"
#include "Save.h"

namespace relational {

namespace {

constexpr std::string_view kSqliteScheme = "sqlite:";
constexpr std::string_view kPostgresqlSchemes[] = {"postgresql://", "postgres://"};

bool IsPostgresql(std::string_view name) {
    for (const std::string_view scheme : kPostgresqlSchemes) {
        if (name.starts_with(scheme)) return true;
    }
    return false;
}

}  // namespace

bool IsDatabase(std::string_view name) {
    return name.starts_with(kSqliteScheme) || IsPostgresql(name);
}

std::string FileOf(const std::string& name) {
    if (IsPostgresql(name)) return "";
    return name.starts_with(kSqliteScheme) ? name.substr(kSqliteScheme.size()) : name;
}

// In a URI, the password is between the first ":" after the scheme and the last "@" before the
// path, or is a parameter.
std::string WithoutPasswords(std::string_view text) {
    std::string clean(text);
    for (const std::string_view scheme : kPostgresqlSchemes) {
        for (std::size_t at = clean.find(scheme); at != clean.npos; at = clean.find(scheme, at)) {
            at += scheme.size();
            const std::size_t end = std::min(clean.find_first_of(" \t\r\n'\"", at), clean.size());
            const std::size_t path = std::min(clean.find_first_of("/?", at), end);
            // A password may contain an "@" that should have been escaped.
            const std::size_t user = clean.rfind('@', end);
            const std::size_t colon = clean.find(':', at);
            if (user != clean.npos && user > at && colon < user && (user < path || colon < path)) {
                clean.erase(colon, user - colon);
            }
        }
    }
    constexpr std::string_view kParameters[] = {"password=", "sslpassword="};
    for (const std::string_view parameter : kParameters) {
        for (std::size_t at = clean.find(parameter); at != clean.npos;
             at = clean.find(parameter, at)) {
            at += parameter.size();
            const std::size_t end = std::min(clean.find_first_of("& \t\r\n'\"", at), clean.size());
            clean.replace(at, end - at, "...");
        }
    }
    return clean;
}

std::string ReadableName(const std::string& name) {
    return IsPostgresql(name) ? WithoutPasswords(name) : name;
}

std::string StemOf(const std::string& name) {
    if (!IsPostgresql(name)) return std::filesystem::path(FileOf(name)).stem().string();
    const std::size_t authority = name.find("//") + 2;
    const std::string whole = name.substr(0, name.find('?', authority));
    const std::size_t path =
        whole.find('/', whole.rfind('@') != whole.npos ? whole.rfind('@') : authority);
    const std::string database = path != whole.npos ? whole.substr(path + 1) : "";
    return database.empty() ? "database" : database;
}

std::unique_ptr<Database> Database::Open(const std::string& name, Access access) {
    return IsPostgresql(name) ? OpenPostgresql(name, access) : OpenSqlite(FileOf(name), access);
}

exchange::DataSet Open(const std::string& name, const exchange::SchemaCatalog& schemas,
                       const exchange::ReadOptions& options, exchange::Messages& messages) {
    if (!IsDatabase(name)) return exchange::ReadDataSet(name, schemas, options, messages);
    const std::string readable = ReadableName(name);
    try {
        const auto database = Database::Open(name, Database::Access::Read);
        return Load(*database, readable, StemOf(name), schemas, options, messages);
    } catch (const DatabaseError& error) {
        messages.AddError({readable, 0, 0, WithoutPasswords(error.text)});
    }
    return {};
}

bool Save(const exchange::DataSet& dataSet, const std::string& name, exchange::Messages& messages,
          const SaveOptions& options) {
    if (!IsDatabase(name)) {
        return exchange::WriteDataSet(dataSet, name, messages, {options.inPlace});
    }
    const std::string readable = ReadableName(name);
    try {
        const auto database = Database::Open(name, Database::Access::Write);
        return SaveTo(*database, dataSet, readable, options, messages);
    } catch (const DatabaseError& error) {
        messages.AddError({readable, 0, 0, WithoutPasswords(error.text)});
    }
    return false;
}

}  // namespace relational
