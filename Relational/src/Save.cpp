// Saving a data set to a database.

#include "Save.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Fingerprint.h"
#include "Layout.h"
#include "Stored.h"
#include "Values.h"

namespace relational {

using kor::Cell;

namespace {

// Why nothing is written.
struct Refusal {
    std::string text;
};

class Saver {
  public:
    Saver(Database& database, const exchange::DataSet& dataSet, const SaveOptions& options)
        : options_(options),
          database_(database),
          dialect_(database.GetDialect()),
          dataSet_(dataSet),
          model_(*dataSet.model),
          layout_(model_.GetSchema()),
          writer_(dataSet.structure),
          fields_(writer_) {}

    void Save() {
        Databases& known = Known();
        const std::lock_guard lock(known.mutex);
        const auto before = known.baselines.find(database_.Identity());
        if (before != known.baselines.end() && IsStillThere()) loaded_ = &before->second;
        Compare();
        if (loaded_ != nullptr && !AnythingChanged()) return;
        database_.Begin(Database::Access::Write);
        relations_ = database_.ReadRelations();
        CheckSchema();
        FindTouched();
        CheckTargets();
        if (loaded_ != nullptr) CheckConflicts();
        DropKeys();
        CreateTables();
        if (loaded_ == nullptr) Clear();
        Write();
        WriteOrder();
        WriteHeader();
        WriteSchema();
        if (!writer_.Problem().empty()) throw Refusal{writer_.Problem()};
        AddKeys();
        // Once the database has the data set, nothing needs memory.
        const std::string identity = database_.Identity();
        decltype(known.baselines) saved;
        if (keepable_) saved.emplace(identity, std::move(now_));
        database_.Commit();
        known.baselines.erase(identity);
        known.baselines.merge(saved);
    }

  private:
    enum class Change : std::uint8_t { None, Written, Added };

    // The tables of an entity type, as far as the database has them or will.
    struct Target {
        const Table* table;
        bool exists = false;
        bool isView = false;
        std::vector<std::size_t> columns;  // those that it has
        ColumnNames names;                 // and their names
    };

    Databases& Known() const {
        // What is kept of a data set is no part of it: saving leaves the data set as it is.
        auto& origin = const_cast<exchange::DataSet&>(dataSet_).origin;
        static std::mutex mutex;
        const std::lock_guard lock(mutex);
        auto* databases = dynamic_cast<Databases*>(origin.get());
        if (databases == nullptr) {
            auto made = std::make_shared<Databases>();
            databases = made.get();
            origin = std::move(made);
        }
        return *databases;
    }

    // Whether there is anything of a data set: the database may have been made anew.
    bool IsStillThere() {
        database_.Begin(Database::Access::Read);
        const Relations relations = database_.ReadRelations();
        database_.Commit();
        return relations.contains(kSchemaTable) ||
               std::any_of(layout_.Tables().begin(), layout_.Tables().end(),
                           [&](const Table& table) { return relations.contains(table.name); });
    }

    const Relation* Find(std::string_view table) const {
        const auto found = relations_.find(table);
        return found != relations_.end() ? &found->second : nullptr;
    }

    // ---- What is to be written

    // Finds the place of each instance, and what has changed.
    void Compare() {
        now_.rows.reserve(model_.InstanceCount());
        changes_.reserve(model_.InstanceCount());
        std::uint64_t last = 0;
        model_.ForEachInstance([&](const kor::Instance& instance) {
            const Table* table = layout_.Of(*instance.Type().entity);
            const bool other = table == nullptr || !Fits(instance, *table, dialect_);
            const std::size_t index = now_.rows.size();
            const std::uint64_t fingerprint = Baseline::Marked(FingerprintOf(instance), other);
            Change change = Change::Added;
            std::uint64_t row = 0;
            if (loaded_ != nullptr && index < loaded_->rows.size()) {
                const Baseline::Row& was = loaded_->rows[index];
                // A row of orx_other that a table could hold may stay there.
                const bool same =
                    (fingerprint | 1) == (was.model | 1) && (!other || Baseline::IsInOther(was));
                change = same ? Change::None : Change::Written;
                row = was.row;
                if (same) {
                    now_.rows.push_back(was);
                    changes_.push_back(change);
                    Note(instance, last);
                    return;
                }
            }
            const std::size_t type = instance.Type().number;
            if (changed_.size() <= type) changed_.resize(type + 1);
            changed_[type].push_back(&instance);
            now_.rows.push_back({fingerprint, row});
            changes_.push_back(change);
            Note(instance, last);
        });
        header_ = HeaderRows(dataSet_.header, dataSet_.structure);
        now_.header = AsTexts(header_);
        now_.ordered = ordered_ || (loaded_ != nullptr && loaded_->ordered);
    }

    // Whether instances are in the order of their numbers.
    void Note(const kor::Instance& instance, std::uint64_t& last) {
        if (instance.Id() < last) ordered_ = true;
        last = instance.Id();
    }

    bool AnythingChanged() const { return !changed_.empty() || now_.header != loaded_->header; }

    // Calls visit(instance) for what is new or has changed: of a type, in the order of creation; or
    // of all types.
    template <class Visit>
    void ForEachChanged(const kor::ModelType& type, Visit visit) const {
        if (type.number >= changed_.size()) return;
        for (const kor::Instance* instance : changed_[type.number]) visit(*instance);
    }
    template <class Visit>
    void ForEachChanged(Visit visit) const {
        for (const auto& ofType : changed_) {
            for (const kor::Instance* instance : ofType) visit(*instance);
        }
    }

    bool IsInOther(const kor::Instance& instance) const {
        return Baseline::IsInOther(now_.rows[instance.Order()]);
    }
    bool WasInOther(const kor::Instance& instance) const {
        return Baseline::IsInOther(loaded_->rows[instance.Order()]);
    }
    Change ChangeOf(const kor::Instance& instance) const { return changes_[instance.Order()]; }

    // Calls visit(type, table) for each type with a table that has changed instances.
    void FindTouched() {
        for (const kor::ModelType& type : model_.Types()) {
            const Table* table = layout_.Of(*type.entity);
            if (table == nullptr) continue;
            bool touched = false;
            ForEachChanged(type, [&](const kor::Instance& instance) {
                touched |= !IsInOther(instance) ||
                           (ChangeOf(instance) == Change::Written && !WasInOther(instance));
            });
            if (touched) touched_.insert(table);
        }
    }

    // ---- What is there

    void CheckSchema() {
        const StoredSchema stored = ReadStoredSchema(database_, relations_);
        schemaIsThere_ = stored.isThere;
        const std::string_view name = model_.GetSchema().Name().View();
        if (!stored.problem.empty()) throw Refusal{stored.problem};
        if (stored.isThere && !kor::MatchesFolded(stored.name, kor::Folded(name))) {
            throw Refusal{"holds a data set of the schema " + stored.name + ", not of " +
                          std::string(name)};
        }
    }

    void RequireColumn(const std::string& table, const Relation& relation,
                       std::string_view column) const {
        if (relation.columns.contains(column)) return;
        throw Refusal{"table " + table + " has no column " + std::string(column)};
    }

    void RequireWritable(const std::string& table, const Relation& relation) const {
        if (!relation.isView || relation.MayBeWritten()) return;
        throw Refusal{table + " is a view that cannot be updated"};
    }

    // Whether an instance that is written has a value in the column.
    bool IsUsed(const Table& table, const LayoutColumn& column) const {
        bool used = false;
        for (const kor::ModelType& type : model_.Types()) {
            if (type.entity != table.entity) continue;
            ForEachChanged(type, [&](const kor::Instance& instance) {
                used |= !IsInOther(instance) &&
                        instance.Values()[column.slot].GetTag() != kor::Tag::Unset;
            });
        }
        return used;
    }

    // Everything that could be refused is, before anything is written.
    void CheckTargets() {
        for (const Table& table : layout_.Tables()) {
            Target& target = targets_.emplace_back();
            target.table = &table;
            const Relation* relation = Find(table.name);
            target.exists = relation != nullptr;
            target.isView = relation != nullptr && relation->isView;
            const bool touched = touched_.contains(&table);
            const bool written = touched || (loaded_ == nullptr && relation != nullptr);
            if (relation != nullptr && written) CheckTarget(table, *relation, touched);
            for (std::size_t i = 0; i < table.columns.size(); ++i) {
                const LayoutColumn& column = table.columns[i];
                if (relation != nullptr && !relation->columns.contains(column.name)) continue;
                target.columns.push_back(i);
                target.names.push_back(column.name);
            }
        }
        for (const char* own : {kSchemaTable, kHeaderTable, kOrderTable, kOtherTable}) {
            const Relation* relation = Find(own);
            if (relation != nullptr) RequireWritable(own, *relation);
        }
    }

    void CheckTarget(const Table& table, const Relation& relation, bool touched) {
        RequireColumn(table.name, relation, "instance");
        RequireWritable(table.name, relation);
        keepable_ = keepable_ && (loaded_ != nullptr || !relation.isView);
        for (const LayoutColumn& column : table.columns) {
            if (column.IsAggregate()) {
                if (const Relation* members = Find(column.members)) {
                    for (const char* name : {"owner", "position", "value"}) {
                        RequireColumn(column.members, *members, name);
                    }
                    RequireWritable(column.members, *members);
                }
            }
            if (touched && !relation.columns.contains(column.name) && IsUsed(table, column)) {
                RequireColumn(table.name, relation, column.name);
            }
        }
    }

    // ---- Conflicts

    // The fingerprint of the row as it is now; none if it is gone.
    std::optional<std::uint64_t> RowNow(const kor::Instance& instance) {
        const Key key{"instance", static_cast<std::int64_t>(instance.Id())};
        std::vector<Field> row;
        if (WasInOther(instance)) {
            if (Find(kOtherTable) == nullptr) return std::nullopt;
            const auto rows = database_.Read(kOtherTable, {"text"}, key);
            if (!rows->Next(row)) return std::nullopt;
            return FingerprintOf(row[0], 0);
        }
        const Target& target = TargetOf(instance);
        if (!target.exists) return std::nullopt;
        const Table& table = *target.table;
        std::uint64_t fingerprint = 0;
        {
            ColumnNames names{"instance"};
            names.insert(names.end(), target.names.begin(), target.names.end());
            const auto rows = database_.Read(table.name, names, key);
            if (!rows->Next(row)) return std::nullopt;
            std::size_t next = 0;
            for (std::size_t i = 0; i < table.columns.size(); ++i) {
                const bool there = next < target.columns.size() && target.columns[next] == i;
                fingerprint += FingerprintOf(there ? row[++next] : Field(), i);
            }
        }
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            const LayoutColumn& column = table.columns[i];
            if (!column.IsAggregate() || Find(column.members) == nullptr) continue;
            const auto rows =
                database_.Read(column.members, {"position", "value"}, {"owner", key.value});
            while (rows->Next(row)) {
                std::int64_t position = 0;
                WholeNumber(row[0], position);
                fingerprint +=
                    FingerprintOf(row[1], MemberPlace(i, static_cast<std::uint64_t>(position)));
            }
        }
        return fingerprint;
    }

    const Target& TargetOf(const kor::Instance& instance) const {
        const Table* table = layout_.Of(*instance.Type().entity);
        return targets_[static_cast<std::size_t>(table - layout_.Tables().data())];
    }

    void CheckConflicts() {
        std::vector<std::uint64_t> conflicts;
        std::set<std::uint64_t> added;
        ForEachChanged([&](const kor::Instance& instance) {
            if (ChangeOf(instance) == Change::Written) {
                const std::optional<std::uint64_t> row = RowNow(instance);
                if (!row.has_value() || *row != loaded_->rows[instance.Order()].row) {
                    conflicts.push_back(instance.Id());
                }
            } else {
                added.insert(instance.Id());
            }
        });
        FindTaken(added, conflicts);
        if (conflicts.empty()) return;
        std::sort(conflicts.begin(), conflicts.end());
        throw Refusal{"another has changed meanwhile: " + Listed(conflicts)};
    }

    // Numbers of new instances that another has given to its own.
    void FindTaken(const std::set<std::uint64_t>& added, std::vector<std::uint64_t>& taken) {
        if (added.empty()) return;
        const auto look = [&](const std::string& table) {
            const Relation* relation = Find(table);
            if (relation == nullptr || !relation->columns.contains("instance")) return;
            for (const std::uint64_t id : added) {
                std::vector<Field> row;
                const auto rows = database_.Read(table, {"instance"},
                                                 {"instance", static_cast<std::int64_t>(id)});
                if (rows->Next(row)) taken.push_back(id);
            }
        };
        for (const Table& table : layout_.Tables()) look(table.name);
        look(kOtherTable);
    }

    static std::string Listed(const std::vector<std::uint64_t>& ids) {
        constexpr std::size_t kMost = 20;
        std::string listed;
        for (std::size_t i = 0; i < ids.size() && i < kMost; ++i) {
            listed += (i == 0 ? "#" : ", #") + std::to_string(ids[i]);
        }
        if (ids.size() > kMost) listed += " and " + std::to_string(ids.size() - kMost) + " more";
        return listed;
    }

    // ---- Tables

    void CreateTables() {
        for (const Definition& own : OwnDefinitions(dialect_)) {
            if (MakesAll() || IsNeeded(own.table)) Create(own);
        }
        const bool complete = !dialect_.addsKeys;
        for (const Table& table : layout_.Tables()) {
            if (!MakesAll() && !touched_.contains(&table)) continue;
            std::vector<ForeignKey> keys = KeysOf(layout_, table);
            std::erase_if(keys, [this](const ForeignKey& key) { return !Holds(key); });
            for (const Definition& definition :
                 DefinitionsOf(table, dialect_, complete ? keys : std::vector<ForeignKey>())) {
                if (!MakesAll() && !HasRows(table, definition.table)) continue;
                if (!Create(definition) || complete) continue;
                for (const ForeignKey& key : keys) {
                    if (key.table == definition.table) keysToAdd_.push_back(key);
                }
            }
        }
    }

    // Whether all tables of the schema are made. A site's own tables, which are no data set of this
    // layout, get those alone that they need.
    bool MakesAll() const { return loaded_ == nullptr || schemaIsThere_; }

    // Whether rows go into the table of an entity type, or into one of its aggregates'.
    bool HasRows(const Table& table, std::string_view name) const {
        return name == table.name ||
               std::any_of(table.columns.begin(), table.columns.end(),
                           [&](const LayoutColumn& column) {
                               return column.members == name && IsUsed(table, column);
                           });
    }

    // The additional tables.
    bool IsNeeded(std::string_view own) const {
        if (own == kHeaderTable) return now_.header != loaded_->header;
        if (own == kOrderTable) return now_.ordered;
        if (own != kOtherTable) return false;
        bool needed = false;
        ForEachChanged([&](const kor::Instance& instance) { needed |= IsInOther(instance); });
        return needed;
    }

    bool Create(const Definition& definition) {
        if (Find(definition.table) != nullptr) return false;
        database_.Execute(definition.sql);
        return true;
    }

    // Whether the instance referred to is in the table that the foreign key names.
    bool Holds(const ForeignKey& key) {
        if (otherTypes_.empty() && !otherTypesKnown_) {
            otherTypesKnown_ = true;
            model_.ForEachInstance([this](const kor::Instance& instance) {
                if (!IsInOther(instance)) return;
                for (const kor::EntityType* kind : instance.Type().entity->Lineage()) {
                    otherTypes_.insert(kind);
                }
            });
        }
        const Relation* target = Find(key.target);
        if (target != nullptr && target->isView) return false;
        return key.targetType == nullptr || !otherTypes_.contains(key.targetType);
    }

    void Clear() {
        const auto clear = [this](const std::string& table) {
            if (Find(table) != nullptr) database_.Execute("DELETE FROM " + QuotedName(table));
        };
        for (const Table& table : layout_.Tables()) {
            for (const LayoutColumn& column : table.columns) {
                if (column.IsAggregate()) clear(column.members);
            }
            clear(table.name);
        }
        for (const char* own : {kOtherTable, kOrderTable}) clear(own);
    }

    // Keys that new rows in orx_other break go.
    void DropKeys() {
        if (!dialect_.addsKeys) return;
        for (const Table& table : layout_.Tables()) {
            if (Find(table.name) == nullptr) continue;
            for (const ForeignKey& key : KeysOf(layout_, table)) {
                const Relation* of = Find(key.table);
                if (of == nullptr || of->isView || Holds(key)) continue;
                database_.Execute(DropKey(key));
            }
        }
    }

    // Those of new tables come when the rows are there.
    void AddKeys() {
        if (keysToAdd_.empty()) return;
        // Deferred checks of keys would prevent new ones.
        database_.Execute("SET CONSTRAINTS ALL IMMEDIATE");
        for (const std::string& statement : AddKeysTo(keysToAdd_)) database_.Execute(statement);
    }

    // ---- Rows

    void Write() {
        for (const kor::ModelType& type : model_.Types()) {
            const Table* table = layout_.Of(*type.entity);
            if (table == nullptr || !touched_.contains(table)) continue;
            const Target& target =
                targets_[static_cast<std::size_t>(table - layout_.Tables().data())];
            if (loaded_ != nullptr) Rewrite(type, target);
            InsertRows(type, target);
            for (std::size_t i = 0; i < table->columns.size(); ++i) {
                if (table->columns[i].IsAggregate()) InsertMembers(type, *table, i);
            }
        }
        WriteOther();
    }

    // A row has been written, in the table of an entity type or another.
    void CountRow() {
        constexpr std::uint64_t kStep = 4096;
        if (!options_.progress || ++rows_ % kStep != 0) return;
        std::uint64_t all = 0;
        for (const auto& ofType : changed_) all += ofType.size();
        options_.progress(written_, all);
    }
    void CountInstance() {
        ++written_;
        CountRow();
    }

    // Whether the instance gets a new row in its table.
    bool IsInserted(const kor::Instance& instance) const {
        return !IsInOther(instance) &&
               (ChangeOf(instance) == Change::Added || WasInOther(instance));
    }

    // Changes the rows that are there, and takes those away that go to orx_other.
    void Rewrite(const kor::ModelType& type, const Target& target) {
        const Table& table = *target.table;
        ForEachChanged(type, [&](const kor::Instance& instance) {
            if (ChangeOf(instance) != Change::Written || WasInOther(instance)) return;
            const auto id = static_cast<std::int64_t>(instance.Id());
            for (const LayoutColumn& column : table.columns) {
                if (column.IsAggregate() && Find(column.members) != nullptr) {
                    database_.Delete(column.members, {"owner", id});
                }
            }
            const Key key{"instance", id};
            std::uint64_t rows = 1;
            if (IsInOther(instance)) {
                rows = database_.Delete(table.name, key);
            } else if (!target.columns.empty()) {
                MakeRow(instance, target, false);
                rows = database_.Update(table.name, target.names, row_, key);
            }
            // What the triggers of a view do is not counted.
            if (rows != 1 && !target.isView) ThrowConflict(instance);
            if (!IsInOther(instance)) CountInstance();
        });
    }

    [[noreturn]] static void ThrowConflict(const kor::Instance& instance) {
        throw Refusal{"another has changed meanwhile: #" + std::to_string(instance.Id())};
    }

    // The fields of the row, into row_; the fingerprint of all columns is noted.
    void MakeRow(const kor::Instance& instance, const Target& target, bool withInstance) {
        const Table& table = *target.table;
        row_.clear();
        buffers_.resize(std::max(buffers_.size(), table.columns.size()));
        if (withInstance) row_.push_back(Field::Of(instance.Id()));
        std::uint64_t fingerprint = 0;
        std::size_t next = 0;
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            Field field;
            if (next < target.columns.size() && target.columns[next] == i) {
                ++next;
                const LayoutColumn& column = table.columns[i];
                field = fields_.Make(instance, instance.Values()[column.slot], column.kind,
                                     buffers_[i]);
                row_.push_back(field);
            }
            fingerprint += FingerprintOf(field, i);
        }
        now_.rows[instance.Order()].row = fingerprint;
    }

    void InsertRows(const kor::ModelType& type, const Target& target) {
        ColumnNames names{"instance"};
        names.insert(names.end(), target.names.begin(), target.names.end());
        std::unique_ptr<Insertion> insertion;
        ForEachChanged(type, [&](const kor::Instance& instance) {
            if (!IsInserted(instance)) return;
            if (insertion == nullptr) insertion = database_.Insert(target.table->name, names);
            MakeRow(instance, target, true);
            insertion->Add(row_);
            CountInstance();
        });
        if (insertion != nullptr) insertion->Finish();
    }

    void InsertMembers(const kor::ModelType& type, const Table& table, std::size_t number) {
        const LayoutColumn& column = table.columns[number];
        std::unique_ptr<Insertion> insertion;
        std::string buffer;
        ForEachChanged(type, [&](const kor::Instance& instance) {
            const Cell& cell = instance.Values()[column.slot];
            if (cell.GetTag() == kor::Tag::Unset || IsInOther(instance)) return;
            const std::size_t count = MemberCount(cell);
            std::uint64_t fingerprint = 0;
            for (std::size_t i = 0; i < count; ++i) {
                if (insertion == nullptr) {
                    insertion = database_.Insert(column.members, {"owner", "position", "value"});
                }
                const Cell member = MemberOf(cell, i);
                const Field row[] = {Field::Of(instance.Id()), Field::Of(std::uint64_t{i + 1}),
                                     fields_.Make(instance, member, column.memberKind, buffer)};
                fingerprint += FingerprintOf(row[2], MemberPlace(number, i + 1));
                insertion->Add(row);
                CountRow();
            }
            now_.rows[instance.Order()].row += fingerprint;
        });
        if (insertion != nullptr) insertion->Finish();
    }

    void WriteOther() {
        if (loaded_ != nullptr) {
            ForEachChanged([this](const kor::Instance& instance) {
                if (ChangeOf(instance) != Change::Written || !WasInOther(instance)) return;
                const Key key{"instance", static_cast<std::int64_t>(instance.Id())};
                if (database_.Delete(kOtherTable, key) != 1) ThrowConflict(instance);
            });
        }
        std::unique_ptr<Insertion> insertion;
        ForEachChanged([&](const kor::Instance& instance) {
            if (!IsInOther(instance)) return;
            if (insertion == nullptr)
                insertion = database_.Insert(kOtherTable, {"instance", "text"});
            const Field row[] = {Field::Of(instance.Id()), Field::OfText(writer_.Record(instance))};
            now_.rows[instance.Order()].row = FingerprintOf(row[1], 0);
            insertion->Add(row);
            CountInstance();
        });
        if (insertion != nullptr) insertion->Finish();
    }

    // ---- The additional tables

    // Positions of instances that are there stay; new ones follow.
    void WriteOrder() {
        if (!now_.ordered) return;
        const bool appends = loaded_ != nullptr && loaded_->ordered;
        std::int64_t position = 0;
        if (appends) {
            const auto rows = database_.Read(kOrderTable, {"position"});
            for (std::vector<Field> row; rows->Next(row);) {
                std::int64_t one = 0;
                if (WholeNumber(row[0], one)) position = std::max(position, one);
            }
        }
        const auto insertion = database_.Insert(kOrderTable, {"position", "instance"});
        model_.ForEachInstance([&](const kor::Instance& instance) {
            if (appends && instance.Order() < loaded_->rows.size()) return;
            const Field row[] = {Field::Of(++position), Field::Of(instance.Id())};
            insertion->Add(row);
        });
        insertion->Finish();
    }

    void WriteHeader() {
        if (loaded_ != nullptr && now_.header == loaded_->header) return;
        if (Find(kHeaderTable) != nullptr) database_.Execute("DELETE FROM orx_header");
        const auto insertion = database_.Insert(kHeaderTable, {"position", "section", "text"});
        std::int64_t position = 0;
        for (const HeaderRow& row : header_) {
            const Field fields[] = {Field::Of(++position), Field::OfText(row.section),
                                    Field::OfText(row.text)};
            insertion->Add(fields);
        }
        insertion->Finish();
    }

    void WriteSchema() {
        if (schemaIsThere_ || !MakesAll()) return;
        const std::string_view name = model_.GetSchema().Name().View();
        const auto insertion = database_.Insert(kSchemaTable, {"name", "layout"});
        const Field row[] = {Field::OfText(name), Field::Of(std::int64_t{kLayoutVersion})};
        insertion->Add(row);
        insertion->Finish();
    }

    const SaveOptions& options_;
    Database& database_;
    const Dialect& dialect_;
    const exchange::DataSet& dataSet_;
    const kor::Model& model_;
    const Layout layout_;
    exchange::InstanceWriter writer_;
    FieldMaker fields_;

    const Baseline* loaded_ = nullptr;  // null: what is there is replaced
    Baseline now_;
    std::vector<Change> changes_;  // of the instances, in the order of creation
    std::vector<std::vector<const kor::Instance*>> changed_;  // by the numbers of their types
    bool ordered_ = false;  // whether the order of creation is not by number
    std::vector<HeaderRow> header_;

    Relations relations_;
    bool schemaIsThere_ = false;
    bool keepable_ = true;  // whether what was written identifies the rows
    std::set<const Table*> touched_;
    std::vector<Target> targets_;
    std::vector<ForeignKey> keysToAdd_;
    std::unordered_set<const kor::EntityType*> otherTypes_;  // types with instances in orx_other
    bool otherTypesKnown_ = false;

    std::uint64_t rows_ = 0;     // in all tables
    std::uint64_t written_ = 0;  // instances
    std::vector<Field> row_;
    std::vector<std::string> buffers_;
};

}  // namespace

bool SaveTo(Database& database, const exchange::DataSet& dataSet, const std::string& name,
            const SaveOptions& options, exchange::Messages& messages) {
    try {
        Saver(database, dataSet, options).Save();
        return true;
    } catch (const Refusal& refusal) {
        messages.AddError({name, 0, 0, refusal.text});
    }
    return false;
}

}  // namespace relational
