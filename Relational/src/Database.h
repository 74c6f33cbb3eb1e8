// A kind of database: the interface that loading and saving need. Each kind is a unit of its own;
// everything else is shared.
//
// A database holds one connection, which goes with it; a transaction that is open then is rolled
// back. What fails throws DatabaseError.

#ifndef RELATIONAL_DATABASE_H
#define RELATIONAL_DATABASE_H

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Layout.h"

namespace relational {

struct DatabaseError {
    std::string text;
    // Whether another has changed the database meanwhile.
    bool conflict = false;
};

// A value of a row. A text is UTF-8, and valid until the next row is asked for.
struct Field {
    enum class Kind : std::uint8_t { Null, Integer, Real, Boolean, Text };

    Kind kind = Kind::Null;
    std::int64_t integer = 0;  // 1 and 0 of a boolean
    double real = 0;
    std::string_view text;

    static Field Of(std::int64_t value) { return {Kind::Integer, value, 0, {}}; }
    static Field Of(std::uint64_t value) { return Of(static_cast<std::int64_t>(value)); }
    static Field OfReal(double value) { return {Kind::Real, 0, value, {}}; }
    static Field OfBoolean(bool value) { return {Kind::Boolean, value ? 1 : 0, 0, {}}; }
    static Field OfText(std::string_view value) { return {Kind::Text, 0, 0, value}; }

    bool IsNull() const { return kind == Kind::Null; }
};

// A table or view of the database.
struct Relation {
    bool isView = false;
    // What may be done with it.
    bool inserts = true;
    bool updates = true;
    bool deletes = true;
    std::set<std::string, std::less<>> columns;

    bool MayBeWritten() const { return inserts && updates && deletes; }
};

using Relations = std::map<std::string, Relation, std::less<>>;

class Rows {
  public:
    virtual ~Rows() = default;
    // The next row, as many fields as columns were asked for; false after the last one.
    virtual bool Next(std::vector<Field>& row) = 0;
};

class Insertion {
  public:
    virtual ~Insertion() = default;
    virtual void Add(std::span<const Field> row) = 0;
    // To be called at the end.
    virtual void Finish() = 0;
};

// The rows whose column has a value.
struct Key {
    std::string_view column;
    std::int64_t value;
};

using ColumnNames = std::vector<std::string>;

class Database {
  public:
    enum class Access { Read, Write };

    virtual ~Database() = default;

    // Opens what the name is of (see IsDatabase). For reading alone it must be there.
    static std::unique_ptr<Database> Open(const std::string& name, Access access);

    virtual const Dialect& GetDialect() const = 0;

    // Which database this is, whatever name it was opened by.
    virtual std::string Identity() const = 0;

    // A transaction. One for reading sees one state of the database throughout.
    virtual void Begin(Access access) = 0;
    virtual void Commit() = 0;

    virtual Relations ReadRelations() = 0;

    // All rows of these columns; or those that have the key. No other query may run until the end.
    virtual std::unique_ptr<Rows> Read(const std::string& table, const ColumnNames& columns) = 0;
    virtual std::unique_ptr<Rows> Read(const std::string& table, const ColumnNames& columns,
                                       const Key& key) = 0;

    virtual std::unique_ptr<Insertion> Insert(const std::string& table,
                                              const ColumnNames& columns) = 0;
    // How many rows there were.
    virtual std::uint64_t Update(const std::string& table, const ColumnNames& columns,
                                 std::span<const Field> values, const Key& key) = 0;
    virtual std::uint64_t Delete(const std::string& table, const Key& key) = 0;

    virtual void Execute(const std::string& statement) = 0;
};

std::unique_ptr<Database> OpenSqlite(const std::string& file, Database::Access access);
std::unique_ptr<Database> OpenPostgresql(const std::string& uri, Database::Access access);

}  // namespace relational

#endif
