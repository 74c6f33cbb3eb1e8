// Loading a data set from a database.

#include "Load.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "Fingerprint.h"
#include "Layout.h"
#include "Stored.h"
#include "Values.h"
#include "services/Suggestions.h"

namespace relational {

using exchange::ColumnKind;
using kor::Cell;

namespace {

// Values that are on their way into a model.
class Cells {
  public:
    Cells() = default;
    ~Cells() { Clear(); }
    Cells(const Cells&) = delete;
    Cells& operator=(const Cells&) = delete;

    void Add(const Cell& cell) { cells_.push_back(cell); }
    void Resize(std::size_t size) { cells_.resize(size); }
    Cell& operator[](std::size_t index) { return cells_[index]; }
    std::size_t Size() const { return cells_.size(); }
    std::span<const Cell> All() const { return cells_; }
    void Clear() {
        for (const Cell& cell : cells_) kor::ReleaseCell(cell);
        cells_.clear();
    }
    // They have become another's.
    void Forget() { cells_.clear(); }

  private:
    std::vector<Cell> cells_;
};

// The members of one aggregate attribute, of all owners.
class Members {
  public:
    struct Member {
        std::int64_t owner;
        std::int64_t position;
        std::uint64_t fingerprint;
        Cell value;
        bool taken = false;
    };

    ~Members() {
        for (const Member& member : members_) {
            if (!member.taken) kor::ReleaseCell(member.value);
        }
    }

    void Add(const Member& member) { members_.push_back(member); }

    void PutInOrder() {
        const auto before = [](const Member& a, const Member& b) {
            return a.owner != b.owner ? a.owner < b.owner : a.position < b.position;
        };
        if (!std::is_sorted(members_.begin(), members_.end(), before)) {
            std::sort(members_.begin(), members_.end(), before);
        }
    }

    // Owners mostly come in their order.
    std::span<Member> Of(std::int64_t owner) {
        if (next_ == members_.size() || members_[next_].owner != owner) {
            next_ = static_cast<std::size_t>(
                std::lower_bound(
                    members_.begin(), members_.end(), owner,
                    [](const Member& member, std::int64_t one) { return member.owner < one; }) -
                members_.begin());
        }
        const std::size_t first = next_;
        while (next_ < members_.size() && members_[next_].owner == owner) ++next_;
        return std::span(members_).subspan(first, next_ - first);
    }

    std::span<const Member> All() const { return members_; }

  private:
    std::vector<Member> members_;
    std::size_t next_ = 0;
};

class Loader {
  public:
    Loader(Database& database, const std::string& name, const std::string& stem,
           const exchange::SchemaCatalog& schemas, const exchange::ReadOptions& options,
           exchange::Messages& messages)
        : database_(database),
          name_(name),
          stem_(stem),
          schemas_(schemas),
          options_(options),
          messages_(messages) {}

    exchange::DataSet Load() {
        database_.Begin(Database::Access::Read);
        relations_ = database_.ReadRelations();
        const exchange::SchemaPtr schema = FindSchema();
        if (schema == nullptr) return {};
        dataSet_.model = std::make_unique<kor::Model>(schema);
        LoadHeader(*schema);
        layout_.emplace(*schema);
        texts_.emplace(Model(), dataSet_.structure);
        cells_.emplace(Model(), *texts_);
        if (!IsKnown()) {
            Error("there is no data set: neither orx_schema nor a table of " +
                  std::string(schema->Name().View()));
            dataSet_.model.reset();
            return {};
        }
        for (const Table& table : layout_->Tables()) LoadTable(table);
        LoadOther();
        Settle();
        CheckStructure();
        if (messages_.ErrorCount() != 0) return {};
        Arrange();
        database_.Commit();
        return std::move(dataSet_);
    }

  private:
    // An instance, where it comes in the order, and its row.
    struct Loaded {
        std::uint64_t key;
        kor::Instance* instance;
        std::uint64_t row;
        bool inOther;
    };

    kor::Model& Model() { return *dataSet_.model; }

    // ---- Messages

    void Error(std::string text) { messages_.AddError({name_, 0, 0, std::move(text)}); }

    // A problem after which a lenient reading continues.
    void Mend(std::string text) {
        if (options_.lenient) {
            messages_.AddWarning({name_, 0, 0, std::move(text)});
        } else {
            messages_.AddError({name_, 0, 0, std::move(text), true});
        }
    }

    static std::string PlaceOf(std::string_view table, std::int64_t key, std::string_view column) {
        std::string place = "table " + std::string(table) + ", row " + std::to_string(key);
        if (!column.empty()) place.append(", column ").append(column);
        return place + ": ";
    }

    const Relation* Find(std::string_view table) const {
        const auto found = relations_.find(table);
        return found != relations_.end() ? &found->second : nullptr;
    }

    // ---- The tables that hold no entity type

    exchange::SchemaPtr FindSchema() {
        StoredSchema stored = ReadStoredSchema(database_, relations_);
        if (!stored.problem.empty()) {
            Error(stored.problem);
            return nullptr;
        }
        exchange::SchemaPtr schema = schemas_.Find(stored.name);
        if (schema == nullptr) {
            Error("unknown schema '" + stored.name + "'" +
                  kor::DidYouMean(stored.name, schemas_.Names()) +
                  " (give its EXPRESS file with --schema)");
        }
        return schema;
    }

    bool IsKnown() const {
        if (Find(kSchemaTable) != nullptr) return true;
        return std::any_of(layout_->Tables().begin(), layout_->Tables().end(),
                           [this](const Table& table) { return Find(table.name) != nullptr; });
    }

    void LoadHeader(const kor::Schema& schema) {
        const std::vector<HeaderRow> rows = ReadHeader(database_, relations_);
        baseline_.header = AsTexts(rows);
        dataSet_.structure.sections.clear();
        for (const HeaderRow& row : rows) {
            if (!TakeHeaderRow(row, dataSet_)) {
                Mend("table orx_header: '" + row.section + ' ' + row.text +
                     "' is none of its rows");
            }
        }
        if (dataSet_.structure.sections.empty()) dataSet_.structure.sections.emplace_back();
        if (!dataSet_.header.empty()) return;
        dataSet_.header = exchange::NewHeader(schema, stem_);
        // What is given to a data set that has no header is not taken for a change.
        baseline_.header = AsTexts(HeaderRows(dataSet_.header, dataSet_.structure));
    }

    // Sections and scopes count instances.
    void CheckStructure() {
        const std::uint64_t count = Model().InstanceCount();
        exchange::Structure& structure = dataSet_.structure;
        std::uint64_t first = 0;
        for (exchange::Structure::Section& section : structure.sections) {
            section.first = first = std::clamp(section.first, first, count);
        }
        std::erase_if(structure.scopes, [&](const exchange::Structure::Scope& scope) {
            if (scope.owner < count && scope.first <= scope.owner) return false;
            Mend("table orx_header: a scope of instances that are not there");
            return true;
        });
    }

    // ---- Tables

    void LoadTable(const Table& table) {
        const Relation* relation = Find(table.name);
        if (relation == nullptr) return;
        if (!relation->columns.contains("instance")) {
            Error("table " + table.name + " has no column instance");
            return;
        }
        std::vector<std::optional<Members>> members(table.columns.size());
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            if (table.columns[i].IsAggregate()) StageMembers(table.columns[i], i, members[i]);
        }
        ColumnNames names{"instance"};
        std::vector<std::size_t> places;  // of the columns among the fields; 0: missing
        for (const LayoutColumn& column : table.columns) {
            const bool there = relation->columns.contains(column.name);
            places.push_back(there ? names.size() : 0);
            if (there) names.push_back(column.name);
        }
        const kor::ModelType* type = nullptr;
        const auto rows = database_.Read(table.name, names);
        for (std::vector<Field> row; rows->Next(row);) {
            const std::optional<std::uint64_t> id = IdOf(table.name, row[0]);
            if (!id.has_value()) continue;
            // A type is known to the model as soon as it has an instance.
            if (type == nullptr) type = Model().TypeOf(*table.entity);
            LoadRow(table, *type, *id, row, places, members);
        }
        for (std::size_t i = 0; i < members.size(); ++i) {
            if (members[i].has_value()) CheckTaken(table.columns[i], *members[i]);
        }
    }

    std::optional<std::uint64_t> IdOf(std::string_view table, const Field& field) {
        std::int64_t id = 0;
        if (!WholeNumber(field, id) || id < 0) {
            Mend("table " + std::string(table) + ", column instance: " + Shown(field) +
                 " is no instance number");
            return std::nullopt;
        }
        const auto number = static_cast<std::uint64_t>(id);
        if (Model().Find(number) != nullptr) {
            Mend(PlaceOf(table, id, "") + "a second instance #" + std::to_string(id));
            return std::nullopt;
        }
        return number;
    }

    void LoadRow(const Table& table, const kor::ModelType& type, std::uint64_t id,
                 const std::vector<Field>& row, const std::vector<std::size_t>& places,
                 std::vector<std::optional<Members>>& members) {
        const auto key = static_cast<std::int64_t>(id);
        const std::vector<kor::Slot>& slots = table.entity->Slots();
        std::uint64_t fingerprint = 0;
        values_.Clear();
        values_.Resize(slots.size());
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            const LayoutColumn& column = table.columns[i];
            const Field& field = places[i] != 0 ? row[places[i]] : kNull;
            fingerprint += FingerprintOf(field, i);
            Cell& value = values_[column.slot];
            if (column.IsAggregate()) {
                value = Aggregate(table, key, column, places[i] != 0 ? &field : nullptr, members[i],
                                  fingerprint);
            } else if (!cells_->Make(field, column.kind, column.domain, value, error_)) {
                Mend(PlaceOf(table.name, key, column.name) + error_);
            }
        }
        if (table.columns.size() != slots.size()) {
            for (std::size_t i = 0; i < slots.size(); ++i) {
                if (slots[i].derived) values_[i] = Cell::Of(kor::Tag::Derived, 0);
            }
        }
        kor::Instance& instance = Model().Create(type, id, values_.All());
        values_.Forget();
        Keep(instance, fingerprint, false);
    }

    // `count`: null if that column is missing; the members' table then decides.
    Cell Aggregate(const Table& table, std::int64_t key, const LayoutColumn& column,
                   const Field* count, std::optional<Members>& staged, std::uint64_t& fingerprint) {
        const std::span<Members::Member> found =
            staged.has_value() ? staged->Of(key) : std::span<Members::Member>();
        for (const Members::Member& member : found) fingerprint += member.fingerprint;
        std::int64_t size = std::ssize(found);
        if (count != nullptr && !count->IsNull() && (!WholeNumber(*count, size) || size < 0)) {
            Mend(PlaceOf(table.name, key, column.name) + Shown(*count) + " is no count of members");
            size = std::ssize(found);
        }
        const bool unset = count != nullptr ? count->IsNull() : found.empty();
        bool fits = unset ? found.empty() : std::ssize(found) == size;
        for (std::size_t i = 0; i < found.size() && fits; ++i) {
            fits = found[i].position == static_cast<std::int64_t>(i) + 1;
        }
        if (!fits) {
            Mend(PlaceOf(table.name, key, column.name) +
                 (unset ? "nothing" : std::to_string(size)) + ", but table " + column.members +
                 " has " + std::to_string(found.size()) + " members" +
                 (!unset && std::ssize(found) == size ? " with other positions" : ""));
        }
        if (unset && found.empty()) return {};
        for (Members::Member& member : found) {
            members_.Add(member.value);
            member.taken = true;
        }
        const kor::Domain* element = column.MemberDomain();
        const Cell aggregate =
            Model().NewAggregate(members_.All(), element != nullptr && element->IsSelect());
        members_.Forget();
        return aggregate;
    }

    void StageMembers(const LayoutColumn& column, std::size_t number,
                      std::optional<Members>& members) {
        const Relation* relation = Find(column.members);
        if (relation == nullptr) return;
        ColumnNames names{"owner", "position", "value"};
        for (const std::string& name : names) {
            if (relation->columns.contains(name)) continue;
            Error("table " + column.members + " has no column " + name);
            return;
        }
        members.emplace();
        const auto rows = database_.Read(column.members, names);
        for (std::vector<Field> row; rows->Next(row);) {
            Members::Member member{};
            if (!WholeNumber(row[0], member.owner) || !WholeNumber(row[1], member.position)) {
                Mend("table " + column.members + ": owner " + Shown(row[0]) + ", position " +
                     Shown(row[1]));
                continue;
            }
            if (!cells_->Make(row[2], column.memberKind, column.MemberDomain(), member.value,
                              error_)) {
                Mend("table " + column.members + ", owner " + std::to_string(member.owner) +
                     ", position " + std::to_string(member.position) + ", column value: " + error_);
            }
            member.fingerprint = FingerprintOf(
                row[2], MemberPlace(number, static_cast<std::uint64_t>(member.position)));
            members->Add(member);
        }
        members->PutInOrder();
    }

    // Members must have an owner.
    void CheckTaken(const LayoutColumn& column, const Members& members) {
        std::int64_t last = -1;
        for (const Members::Member& member : members.All()) {
            if (member.taken || member.owner == last) continue;
            last = member.owner;
            Mend("table " + column.members + ", column owner: there is no instance #" +
                 std::to_string(member.owner));
        }
    }

    void LoadOther() {
        if (Find(kOtherTable) == nullptr) return;
        const auto rows = database_.Read(kOtherTable, {"instance", "text"});
        for (std::vector<Field> row; rows->Next(row);) {
            const std::optional<std::uint64_t> id = IdOf(kOtherTable, row[0]);
            if (!id.has_value()) continue;
            kor::Instance* instance = texts_->Instance(*id, row[1].text, error_);
            if (instance == nullptr) {
                Mend(PlaceOf(kOtherTable, static_cast<std::int64_t>(*id), "text") + error_);
                continue;
            }
            Keep(*instance, FingerprintOf(row[1], 0), true);
        }
    }

    void Keep(kor::Instance& instance, std::uint64_t row, bool inOther) {
        loaded_.push_back({instance.Id(), &instance, row, inOther});
        if (options_.progress && loaded_.size() % 4096 == 0) options_.progress(loaded_.size());
    }

    // ---- References

    void Settle() {
        const std::vector<std::uint64_t> missing = Model().SettleReferences();
        std::size_t told = 0;
        for (const std::uint64_t id : missing) {
            if (told++ == exchange::Messages::kKept) {
                Mend(std::to_string(missing.size()) + " instances are referred to and not there");
                return;
            }
            TellOfMissing(id);
        }
    }

    // Where a missing instance is referred to is looked for afterwards: sound data need not pay.
    void TellOfMissing(std::uint64_t id) {
        const std::string text = "there is no instance #" + std::to_string(id);
        const Key referring{"", static_cast<std::int64_t>(id)};
        bool told = false;
        const auto look = [&](const std::string& table, const std::string& keyColumn,
                              const std::string& column) {
            const Relation* relation = Find(table);
            if (relation == nullptr || !relation->columns.contains(column)) return;
            const auto rows = database_.Read(table, {keyColumn}, {column, referring.value});
            for (std::vector<Field> row; rows->Next(row);) {
                told = true;
                std::int64_t key = 0;
                WholeNumber(row[0], key);
                Mend(PlaceOf(table, key, column) + text);
            }
        };
        for (const Table& table : layout_->Tables()) {
            for (const LayoutColumn& column : table.columns) {
                if (column.kind == ColumnKind::Reference) look(table.name, "instance", column.name);
                if (column.IsAggregate() && column.memberKind == ColumnKind::Reference) {
                    look(column.members, "owner", "value");
                }
            }
        }
        if (!told) Mend(text + ", which a text refers to");
    }

    // ---- The order of creation

    void Arrange() {
        ReadOrder();
        const auto before = [](const Loaded& a, const Loaded& b) { return a.key < b.key; };
        if (!std::is_sorted(loaded_.begin(), loaded_.end(), before)) {
            std::sort(loaded_.begin(), loaded_.end(), before);
            std::vector<kor::Instance*> order;
            order.reserve(loaded_.size());
            for (const Loaded& one : loaded_) order.push_back(one.instance);
            Model().PutInOrder(order);
        }
        baseline_.rows.reserve(loaded_.size());
        for (const Loaded& one : loaded_) {
            baseline_.rows.push_back(
                {Baseline::Marked(FingerprintOf(*one.instance), one.inOther), one.row});
        }
        auto databases = std::make_shared<Databases>();
        databases->baselines[database_.Identity()] = std::move(baseline_);
        dataSet_.origin = std::move(databases);
    }

    // Instances that are not in orx_order follow those that are, by number.
    void ReadOrder() {
        if (Find(kOrderTable) == nullptr) return;
        std::vector<std::pair<std::uint64_t, std::int64_t>> positions;  // by instance
        const auto rows = database_.Read(kOrderTable, {"position", "instance"});
        for (std::vector<Field> row; rows->Next(row);) {
            std::int64_t position = 0;
            std::int64_t id = 0;
            if (WholeNumber(row[0], position) && WholeNumber(row[1], id)) {
                positions.emplace_back(id, position);
            }
        }
        if (positions.empty()) return;
        baseline_.ordered = true;
        std::sort(positions.begin(), positions.end());
        const auto rank = [&](const Loaded& one) {
            const auto found = std::lower_bound(positions.begin(), positions.end(),
                                                std::pair{one.key, std::int64_t{-1}});
            const bool there = found != positions.end() && found->first == one.key;
            return std::pair{there ? found->second : std::numeric_limits<std::int64_t>::max(),
                             one.key};
        };
        std::vector<std::pair<std::pair<std::int64_t, std::uint64_t>, Loaded>> ranked;
        ranked.reserve(loaded_.size());
        for (const Loaded& one : loaded_) ranked.emplace_back(rank(one), one);
        std::sort(ranked.begin(), ranked.end(),
                  [](const auto& a, const auto& b) { return a.first < b.first; });
        for (std::size_t i = 0; i < ranked.size(); ++i) {
            loaded_[i] = ranked[i].second;
            loaded_[i].key = i;
        }
        std::vector<kor::Instance*> order;
        for (const Loaded& one : loaded_) order.push_back(one.instance);
        Model().PutInOrder(order);
    }

    static constexpr Field kNull{};

    Database& database_;
    const std::string& name_;
    const std::string& stem_;
    const exchange::SchemaCatalog& schemas_;
    const exchange::ReadOptions& options_;
    exchange::Messages& messages_;

    Relations relations_;
    exchange::DataSet dataSet_;
    Baseline baseline_;
    std::optional<Layout> layout_;
    std::optional<exchange::InstanceTextReader> texts_;
    std::optional<CellMaker> cells_;
    Cells values_;   // of the instance that is being loaded
    Cells members_;  // of the aggregate that is being loaded
    std::vector<Loaded> loaded_;
    std::string error_;
};

}  // namespace

exchange::DataSet Load(Database& database, const std::string& name, const std::string& stem,
                       const exchange::SchemaCatalog& schemas, const exchange::ReadOptions& options,
                       exchange::Messages& messages) {
    return Loader(database, name, stem, schemas, options, messages).Load();
}

}  // namespace relational
