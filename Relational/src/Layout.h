// The tables of a schema: one for each entity type that has instances of its own, one for each of
// its aggregates, and the additional ones.

#ifndef RELATIONAL_LAYOUT_H
#define RELATIONAL_LAYOUT_H

#include <array>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Tables.h"
#include "model/Dictionary.h"

namespace relational {

inline constexpr int kLayoutVersion = 1;

inline constexpr const char* kSchemaTable = "orx_schema";
inline constexpr const char* kHeaderTable = "orx_header";
inline constexpr const char* kOrderTable = "orx_order";
inline constexpr const char* kOtherTable = "orx_other";

// How a kind of database writes what the layout needs.
struct Dialect {
    const char* name;
    const char* integer;    // of 64 bits
    const char* keyedRows;  // after the columns of a table whose key is not one integer
    bool addsKeys;          // foreign keys are added to tables that are there
    bool keepsNegativeZero;
    bool keepsNan;
};

inline constexpr Dialect kSqlite{"sqlite", "integer", " WITHOUT ROWID", false, false, false};
inline constexpr Dialect kPostgresql{"postgresql", "bigint", "", true, true, true};

std::string QuotedName(std::string_view name);

struct LayoutColumn : exchange::Column {
    // Of the members of an aggregate: their table, and what it contains.
    std::string members;
    exchange::ColumnKind memberKind = exchange::ColumnKind::Exchange;
    // The table that holds all that the column, or a member, can refer to: its number; kNone where
    // it is not one.
    std::size_t target = kNone;

    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    bool IsAggregate() const { return kind == exchange::ColumnKind::Aggregate; }
    const kor::Domain* MemberDomain() const { return domain->element; }
};

struct Table {
    const kor::EntityType* entity;
    std::string name;
    std::vector<LayoutColumn> columns;
};

class Layout {
  public:
    explicit Layout(const kor::Schema& schema);

    const std::vector<Table>& Tables() const { return tables_; }
    // Null for a type that has no table: its instances are in orx_other.
    const Table* Of(const kor::EntityType& entity) const;

  private:
    std::size_t TargetOf(const kor::Domain& domain) const;

    std::vector<Table> tables_;
    std::vector<std::size_t> ofEntity_;              // by the numbers of the entity types
    std::vector<std::vector<std::size_t>> holders_;  // the tables of a type and its subtypes
    const kor::Schema& schema_;
};

// A foreign key: the column of a table refers to instances of another table.
struct ForeignKey {
    std::string table;
    std::string column;
    std::string target;
    const kor::EntityType* targetType;  // null for the owner of an aggregate

    std::string Name() const;
    std::string Clause() const;
};

// The foreign keys of an entity type's tables.
std::vector<ForeignKey> KeysOf(const Layout& layout, const Table& table);

// A table as SQL, with those of the keys that the database cannot add later.
struct Definition {
    std::string table;
    std::string sql;
};

// The tables of an entity type.
std::vector<Definition> DefinitionsOf(const Table& table, const Dialect& dialect,
                                      const std::vector<ForeignKey>& keys);
// The additional tables.
std::vector<Definition> OwnDefinitions(const Dialect& dialect);

// What adds keys to tables that are there, one statement for each run of keys of one table.
std::vector<std::string> AddKeysTo(const std::vector<ForeignKey>& keys);
std::string DropKey(const ForeignKey& key);

}  // namespace relational

#endif
