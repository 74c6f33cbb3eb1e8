// The tables of a schema.

#include "Layout.h"

#include <algorithm>
#include <set>
#include <unordered_set>
#include <utility>

#include "DataSets.h"

namespace relational {

using exchange::ColumnKind;

namespace {

// PostgreSQL has no longer names.
constexpr std::size_t kLongestName = 63;

// Names, each given once: one that is taken gets "_" appended, within the longest that there may
// be.
class FreeNames {
  public:
    void Take(const char* name) { taken_.insert(name); }

    std::string Free(const std::string& name) {
        for (std::size_t underscores = 0;; ++underscores) {
            std::string free = name.substr(0, kLongestName - underscores);
            free.append(underscores, '_');
            if (taken_.insert(free).second) return free;
        }
    }

  private:
    std::unordered_set<std::string> taken_;
};

const char* TypeOf(ColumnKind kind, const Dialect& dialect) {
    switch (kind) {
        case ColumnKind::Integer:
        case ColumnKind::Reference:
        case ColumnKind::Aggregate: return dialect.integer;
        case ColumnKind::Real: return "double precision";
        case ColumnKind::Boolean: return "boolean";
        case ColumnKind::Text:
        case ColumnKind::Exchange: break;
    }
    return "text";
}

const std::vector<const Dialect*>& Dialects() {
    static const std::vector<const Dialect*> kDialects{&kSqlite, &kPostgresql};
    return kDialects;
}

}  // namespace

std::string QuotedName(std::string_view name) {
    std::string quoted(1, '"');
    for (const char c : name) quoted.append(c == '"' ? 2 : 1, c);
    return quoted += '"';
}

Layout::Layout(const kor::Schema& schema)
    : ofEntity_(schema.Entities().size(), LayoutColumn::kNone),
      holders_(schema.Entities().size()),
      schema_(schema) {
    FreeNames names;
    for (const char* own : {kSchemaTable, kHeaderTable, kOrderTable, kOtherTable}) names.Take(own);
    for (const kor::EntityType* entity : schema.Entities()) {
        if (entity->IsAbstract()) continue;
        ofEntity_[entity->Number()] = tables_.size();
        for (const kor::EntityType* kind : entity->Lineage()) {
            holders_[kind->Number()].push_back(tables_.size());
        }
        tables_.push_back({entity, names.Free(exchange::TableName(*entity)), {}});
    }
    for (Table& table : tables_) {
        for (exchange::Column& column : exchange::ColumnsOf(*table.entity)) {
            LayoutColumn& added = table.columns.emplace_back();
            static_cast<exchange::Column&>(added) = std::move(column);
            if (added.kind == ColumnKind::Reference) added.target = TargetOf(*added.domain);
            if (!added.IsAggregate()) continue;
            added.members = names.Free(table.name + '_' + added.name);
            added.memberKind = exchange::ColumnKindOf(added.MemberDomain());
            // What is nested is text.
            if (added.memberKind == ColumnKind::Aggregate) added.memberKind = ColumnKind::Exchange;
            if (added.memberKind == ColumnKind::Reference) {
                added.target = TargetOf(*added.MemberDomain());
            }
        }
    }
}

const Table* Layout::Of(const kor::EntityType& entity) const {
    const std::size_t number = entity.Number();
    if (number >= ofEntity_.size() || schema_.Entities()[number] != &entity ||
        ofEntity_[number] == LayoutColumn::kNone) {
        return nullptr;
    }
    return &tables_[ofEntity_[number]];
}

std::size_t Layout::TargetOf(const kor::Domain& domain) const {
    std::set<std::size_t> targets;
    const auto add = [&](const kor::EntityType* type) {
        const auto& holders = holders_[type->Number()];
        targets.insert(holders.begin(), holders.end());
    };
    if (domain.IsSelect()) {
        for (const kor::EntityType* type : domain.entities) add(type);
    } else {
        add(domain.entity);
    }
    return targets.size() == 1 ? *targets.begin() : LayoutColumn::kNone;
}

// ---- As SQL

std::string ForeignKey::Name() const {
    constexpr std::string_view kEnd = "_fkey";
    return column.substr(0, kLongestName - kEnd.size()).append(kEnd);
}

std::string ForeignKey::Clause() const {
    return "FOREIGN KEY (" + QuotedName(column) + ") REFERENCES " + QuotedName(target) +
           " (\"instance\") DEFERRABLE INITIALLY DEFERRED";
}

std::vector<ForeignKey> KeysOf(const Layout& layout, const Table& table) {
    std::vector<ForeignKey> keys;
    const auto add = [&](const std::string& from, const std::string& column, std::size_t target) {
        if (target == LayoutColumn::kNone) return;
        const Table& to = layout.Tables()[target];
        keys.push_back({from, column, to.name, to.entity});
    };
    for (const LayoutColumn& column : table.columns) {
        if (!column.IsAggregate()) {
            add(table.name, column.name, column.target);
        } else {
            keys.push_back({column.members, "owner", table.name, nullptr});
            add(column.members, "value", column.target);
        }
    }
    return keys;
}

std::vector<Definition> DefinitionsOf(const Table& table, const Dialect& dialect,
                                      const std::vector<ForeignKey>& keys) {
    const auto clausesOf = [&](const std::string& name) {
        std::string clauses;
        for (const ForeignKey& key : keys) {
            if (!dialect.addsKeys && key.table == name) clauses += ",\n  " + key.Clause();
        }
        return clauses;
    };
    std::vector<Definition> definitions(1);
    std::string sql = "CREATE TABLE " + QuotedName(table.name) + " (\n  \"instance\" " +
                      dialect.integer + " PRIMARY KEY";
    for (const LayoutColumn& column : table.columns) {
        sql += ",\n  " + QuotedName(column.name) + ' ' + TypeOf(column.kind, dialect);
        if (!column.IsAggregate()) continue;
        definitions.push_back(
            {column.members, "CREATE TABLE " + QuotedName(column.members) + " (\n  \"owner\" " +
                                 dialect.integer + " NOT NULL,\n  \"position\" " + dialect.integer +
                                 " NOT NULL,\n  \"value\" " + TypeOf(column.memberKind, dialect) +
                                 ",\n  PRIMARY KEY (\"owner\", \"position\")" +
                                 clausesOf(column.members) + ")" + dialect.keyedRows});
    }
    definitions.front() = {table.name, sql + clausesOf(table.name) + ")"};
    return definitions;
}

std::vector<Definition> OwnDefinitions(const Dialect& dialect) {
    const std::string integer = dialect.integer;
    return {
        {kSchemaTable, "CREATE TABLE orx_schema (\n  \"name\" text NOT NULL,\n  \"layout\" " +
                           integer + " NOT NULL)"},
        {kHeaderTable,
         "CREATE TABLE orx_header (\n  \"position\" " + integer +
             " PRIMARY KEY,\n  \"section\" text NOT NULL,\n  \"text\" text NOT NULL)"},
        {kOrderTable, "CREATE TABLE orx_order (\n  \"position\" " + integer +
                          " PRIMARY KEY,\n  \"instance\" " + integer + " NOT NULL UNIQUE)"},
        {kOtherTable, "CREATE TABLE orx_other (\n  \"instance\" " + integer +
                          " PRIMARY KEY,\n  \"text\" text NOT NULL)"},
    };
}

std::vector<std::string> AddKeysTo(const std::vector<ForeignKey>& keys) {
    std::vector<std::string> statements;
    const std::string* table = nullptr;
    for (const ForeignKey& key : keys) {
        const bool same = table != nullptr && *table == key.table;
        if (same) {
            statements.back() += ',';
        } else {
            statements.push_back("ALTER TABLE " + QuotedName(key.table));
        }
        statements.back() += "\n  ADD CONSTRAINT " + QuotedName(key.Name()) + ' ' + key.Clause();
        table = &key.table;
    }
    return statements;
}

std::string DropKey(const ForeignKey& key) {
    return "ALTER TABLE " + QuotedName(key.table) + " DROP CONSTRAINT IF EXISTS " +
           QuotedName(key.Name());
}

std::vector<std::string> DatabaseKinds() {
    std::vector<std::string> kinds;
    for (const Dialect* dialect : Dialects()) kinds.emplace_back(dialect->name);
    return kinds;
}

std::string TablesAsSql(const kor::Schema& schema, std::string_view kind) {
    const auto& all = Dialects();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Dialect* one) { return one->name == kind; });
    if (found == all.end()) return {};
    const Dialect& dialect = **found;
    const Layout layout(schema);
    std::string sql;
    const auto add = [&sql](const std::string& statement) { sql += statement + ";\n"; };
    for (const Definition& own : OwnDefinitions(dialect)) add(own.sql);
    add("INSERT INTO orx_schema VALUES ('" + std::string(schema.Name().View()) + "', " +
        std::to_string(kLayoutVersion) + ')');
    std::vector<ForeignKey> later;
    for (const Table& table : layout.Tables()) {
        const std::vector<ForeignKey> keys = KeysOf(layout, table);
        for (const Definition& one : DefinitionsOf(table, dialect, keys)) add(one.sql);
        if (dialect.addsKeys) later.insert(later.end(), keys.begin(), keys.end());
    }
    for (const std::string& statement : AddKeysTo(later)) add(statement);
    return sql;
}

}  // namespace relational
