// Entity types as virtual tables: columns, ways to the rows, and walks over them.

#include "VirtualTable.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <exception>
#include <limits>
#include <new>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "SdaiUsers.h"
#include "Tables.h"
#include "Values.h"
#include "model/Aggregate.h"
#include "model/NameTable.h"

namespace sql {

namespace {

using exchange::Column;
using exchange::ColumnKind;
using kor::Instance;
using kor::ModelType;

// The columns before those of the attributes.
constexpr int kInstance = 0;
constexpr int kEntity = 1;
constexpr int kFirstAttribute = 2;

// SQLite has no more columns (SQLITE_MAX_COLUMN).
constexpr std::size_t kMostColumns = 2000 - kFirstAttribute;

// ---- Columns

// The type of that name; of several that no schema declares and that differ in their values, the
// one that has most.
const kor::EntityType* EntityNamed(const kor::Model& model, std::string_view table) {
    const kor::EntityType* entity = model.FindEntity(table);
    if (entity == nullptr || entity->IsDeclared()) return entity;
    for (const ModelType& type : model.Types()) {
        if (type.entity->FoldedName() == entity->FoldedName() &&
            type.entity->Slots().size() > entity->Slots().size()) {
            entity = type.entity;
        }
    }
    return entity;
}

std::vector<Column> TableColumns(const kor::EntityType& entity) {
    std::vector<Column> columns = exchange::ColumnsOf(entity, {"instance", "entity"});
    if (columns.size() > kMostColumns) columns.resize(kMostColumns);
    return columns;
}

const char* SqlType(ColumnKind kind) {
    switch (kind) {
        case ColumnKind::Integer:
        case ColumnKind::Reference: return "INTEGER";
        case ColumnKind::Real: return "REAL";
        case ColumnKind::Boolean: return "BOOLEAN";
        default: return "TEXT";
    }
}

// ---- Ways to rows

// How a query reaches the rows of a table; xBestIndex passes it to xFilter as one number.
struct Plan {
    enum class Way : unsigned {
        Scan,     // every instance
        Number,   // the one with a number
        Users,    // those that refer to an instance by a column
        OwnType,  // those exactly of a type
    };
    Way way = Way::Scan;
    unsigned column = 0;  // that refers
    bool isOrdered = false;
    bool descends = false;
    unsigned orderedBy = 0;  // kInstance or a column that refers

    int Encoded() const {
        return static_cast<int>(static_cast<unsigned>(way) | (isOrdered ? 4U : 0U) |
                                (descends ? 8U : 0U) | column << 4 | orderedBy << 16);
    }
    static Plan Decoded(int number) {
        const auto bits = static_cast<unsigned>(number);
        return {static_cast<Way>(bits & 3U), bits >> 4 & 0xFFFU, (bits & 4U) != 0, (bits & 8U) != 0,
                bits >> 16};
    }
};

class Table : public sqlite3_vtab {
  public:
    Table(const NamedModel& named, const kor::EntityType& ofEntity)
        : sqlite3_vtab{},
          model_(named.model),
          entity_(ofEntity),
          columns_(TableColumns(ofEntity)) {}

    const kor::Model& Model() const { return *model_; }
    const kor::EntityType& Entity() const { return entity_; }
    const std::vector<Column>& Columns() const { return columns_; }
    const Column& ColumnAt(unsigned column) const { return columns_[column - kFirstAttribute]; }

    std::string Declaration() const {
        std::string text =
            "CREATE TABLE x(instance INTEGER NOT NULL, entity TEXT NOT NULL COLLATE NOCASE";
        for (const Column& column : columns_) {
            text += ", " + Quoted(column.name) + ' ' + SqlType(column.kind);
        }
        return text + ')';
    }

    // What a row needs of the type of its instance.
    struct TypeView {
        std::string name;
        bool isHeld = false;            // by the table
        std::vector<kor::Index> slots;  // of the columns; none if the type has no such attribute
    };
    const TypeView& ViewOf(const ModelType& type) {
        if (views_.size() <= type.number) views_.resize(type.number + 1);
        auto& view = views_[type.number];
        if (view == nullptr) view = MakeView(*type.entity);
        return *view;
    }

    bool Holds(const ModelType& type) const { return IsHeld(*type.entity); }

    // How many instances the table has; those of one type alone.
    std::uint64_t Count() const { return CountOf(entity_); }
    std::uint64_t CountExactly(std::string_view folded) const {
        std::uint64_t count = 0;
        for (const ModelType& type : Model().Types()) {
            if (Holds(type) && type.entity->FoldedName() == folded) count += type.instanceCount;
        }
        return count;
    }
    std::uint64_t TypeCount() const {
        return static_cast<std::uint64_t>(
            std::count_if(Model().Types().begin(), Model().Types().end(),
                          [this](const ModelType& type) { return Holds(type); }));
    }

    // How many instances the column may refer to.
    std::uint64_t TargetCount(const Column& column) const {
        if (column.domain == nullptr) return Model().InstanceCount();
        if (column.domain->entity != nullptr) return CountOf(*column.domain->entity);
        std::uint64_t count = 0;
        for (const kor::EntityType* entity : column.domain->entities) count += CountOf(*entity);
        return count;
    }

    // Whether the platform's back references, which go by the name of an attribute, lead to all
    // rows that refer by the column: they do unless a type has another attribute of that name.
    bool HasBackReferences(const Column& column) {
        const kor::Attribute* attribute = entity_.Slots()[column.slot].attribute;
        if (attribute == nullptr) return false;
        const std::size_t index = static_cast<std::size_t>(&column - columns_.data());
        return std::all_of(
            Model().Types().begin(), Model().Types().end(), [&](const ModelType& type) {
                return !Holds(type) || type.entity->SlotOf(std::string_view(attribute->folded)) ==
                                           ViewOf(type).slots[index];
            });
    }

    // Appends the rows that refer to an instance by the column.
    void AppendUsers(std::vector<SdaiEntityInstance*>& users, const SdaiEntityInstance& target,
                     const Column& column) {
        const std::string& type = entity_.FoldedName();
        const std::string& attribute = entity_.Slots()[column.slot].attribute->folded;
        const SdaiEntityInstance* const targets[] = {&target};
        const SdaiName typeName{type, type, SdaiNameHash(type)};
        const SdaiName attributeName{attribute, attribute, SdaiNameHash(attribute)};
        const auto index = static_cast<std::size_t>(&column - columns_.data());
        SdaiIterator_Of_Users user(&Model(), typeName, attributeName, targets);
        while (user.Next()) {
            // There may be others among them.
            const Instance& instance = Instance::Of(*user.GetCurrentMember());
            const kor::Index slot = ViewOf(instance.Type()).slots[index];
            if (slot && sql::TargetOf(instance.Cells()[*slot]) == &target) {
                users.push_back(user.GetCurrentMember());
            }
        }
    }

  private:
    bool IsHeld(const kor::EntityType& type) const {
        return type.IsKindOf(std::string_view(entity_.FoldedName()));
    }

    std::uint64_t CountOf(const kor::EntityType& entity) const {
        std::uint64_t count = 0;
        for (const ModelType& type : Model().Types()) {
            if (type.entity->IsKindOf(std::string_view(entity.FoldedName()))) {
                count += type.instanceCount;
            }
        }
        return count;
    }

    std::unique_ptr<TypeView> MakeView(const kor::EntityType& type) const {
        auto view = std::make_unique<TypeView>();
        view->name = type.Name().ToUtf8();
        view->isHeld = IsHeld(type);
        for (const Column& column : columns_) view->slots.push_back(SlotIn(type, column));
        return view;
    }

    // Where a type that the table holds has the value of a column.
    kor::Index SlotIn(const kor::EntityType& type, const Column& column) const {
        if (&type == &entity_) return column.slot;
        const std::vector<kor::Slot>& slots = type.Slots();
        if (const kor::Attribute* attribute = entity_.Slots()[column.slot].attribute) {
            const auto found = std::find_if(slots.begin(), slots.end(), [&](const kor::Slot& slot) {
                return slot.attribute == attribute;
            });
            if (found == slots.end()) return std::nullopt;
            return static_cast<std::size_t>(found - slots.begin());
        }
        for (const kor::EntityType::Part& part : type.Parts()) {
            if (part.name == entity_.FoldedName() && column.slot < part.slotCount) {
                return part.firstSlot + column.slot;
            }
        }
        return std::nullopt;
    }

    const std::shared_ptr<const kor::Model> model_;
    const kor::EntityType& entity_;
    const std::vector<Column> columns_;
    std::vector<std::unique_ptr<TypeView>> views_;  // by the number of the type
};

// ---- Planning

// A way to the rows with what it costs, in visits of a row.
struct Candidate {
    Plan plan;
    int constraint = -1;  // whose value is looked up
    double rows;
    double cost;
    bool isExact = false;  // no row is found that the constraint does not hold for
};

// The name of the type in `entity = 'NAME'`, where it is known before the query runs.
std::optional<std::string> KnownText(sqlite3_index_info* info, int constraint) {
    sqlite3_value* value = nullptr;
    if (sqlite3_vtab_rhs_value(info, constraint, &value) != SQLITE_OK || value == nullptr) {
        return std::nullopt;
    }
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
    if (text == nullptr) return std::nullopt;
    return std::string(text);
}

std::optional<Candidate> CandidateFor(Table& table, sqlite3_index_info* info, int i) {
    const auto& constraint = info->aConstraint[i];
    if (constraint.usable == 0 || constraint.op != SQLITE_INDEX_CONSTRAINT_EQ) return std::nullopt;
    const double all = static_cast<double>(table.Count());
    if (constraint.iColumn <= kInstance) {  // the row's own number, too
        return Candidate{{Plan::Way::Number}, i, 1, 1, true};
    }
    if (constraint.iColumn == kEntity) {
        const auto name = KnownText(info, i);
        const double rows =
            name.has_value()
                ? static_cast<double>(table.CountExactly(kor::Folded(*name)))
                : all / static_cast<double>(std::max<std::uint64_t>(1, table.TypeCount()));
        return Candidate{{Plan::Way::OwnType}, i, rows, rows + 2};
    }
    const auto number = static_cast<unsigned>(constraint.iColumn);
    const Column& column = table.ColumnAt(number);
    const bool mayRefer =
        column.kind == ColumnKind::Reference || column.kind == ColumnKind::Exchange;
    if (!mayRefer || !table.HasBackReferences(column)) return std::nullopt;
    const double targets =
        static_cast<double>(std::max<std::uint64_t>(1, table.TargetCount(column)));
    const double rows = std::max(1.0, all / targets);
    const bool isExact = column.kind == ColumnKind::Reference;
    return Candidate{{Plan::Way::Users, number}, i, rows, rows + 2, isExact};
}

// Takes over the order of the rows where numbers are compared, for less than what SQLite takes to
// sort them.
void PlanOrder(const Table& table, sqlite3_index_info* info, Candidate& best) {
    if (info->nOrderBy != 1) return;
    const int column = std::max(info->aOrderBy[0].iColumn, kInstance);
    if (column == kEntity) return;
    const auto number = static_cast<unsigned>(column);
    if (column != kInstance && table.ColumnAt(number).kind != ColumnKind::Reference) return;
    best.plan.isOrdered = true;
    best.plan.orderedBy = number;
    best.plan.descends = info->aOrderBy[0].desc != 0;
    best.cost += 0.02 * best.rows * std::log2(best.rows + 1);
    info->orderByConsumed = 1;
}

int BestIndex(sqlite3_vtab* vtab, sqlite3_index_info* info) {
    try {
        auto& table = static_cast<Table&>(*vtab);
        const double all = static_cast<double>(table.Count());
        Candidate best{{}, -1, all, all + 2};
        for (int i = 0; i < info->nConstraint; ++i) {
            const auto candidate = CandidateFor(table, info, i);
            if (candidate.has_value() && candidate->cost < best.cost) best = *candidate;
        }
        PlanOrder(table, info, best);
        if (best.constraint >= 0) {
            info->aConstraintUsage[best.constraint].argvIndex = 1;
            // Otherwise SQLite tests it again.
            info->aConstraintUsage[best.constraint].omit = best.isExact ? 1 : 0;
        }
        if (best.plan.way == Plan::Way::Number) info->idxFlags = SQLITE_INDEX_SCAN_UNIQUE;
        static constexpr const char* kWays[] = {"every instance", "by instance", "by reference",
                                                "by entity"};
        info->idxStr = const_cast<char*>(kWays[static_cast<unsigned>(best.plan.way)]);
        info->idxNum = best.plan.Encoded();
        info->estimatedRows = std::max<sqlite3_int64>(1, std::llround(best.rows));
        info->estimatedCost = best.cost;
        return SQLITE_OK;
    } catch (const std::exception&) {
        return SQLITE_NOMEM;
    }
}

// ---- Walking

class Cursor : public sqlite3_vtab_cursor {
  public:
    explicit Cursor(Table& table) : sqlite3_vtab_cursor{}, table_(table) {}

    void Filter(const Plan& plan, sqlite3_value* value) {
        chosen_.clear();
        switch (plan.way) {
            case Plan::Way::Scan: Walk(Extent()); break;
            case Plan::Way::Number: WalkOne(InstanceOf(value)); break;
            case Plan::Way::Users: WalkUsers(table_.ColumnAt(plan.column), value); break;
            case Plan::Way::OwnType: WalkType(value); break;
        }
        if (plan.isOrdered) Order(plan);
    }

    bool IsAtEnd() const { return next_ == end_; }
    void Next() { ++next_; }
    const Instance& Current() const { return Instance::Of(**next_); }

    void GiveColumn(sqlite3_context* to, int column) {
        const Instance& instance = Current();
        if (column == kInstance) {
            sqlite3_result_int64(to, static_cast<sqlite3_int64>(instance.Id()));
            return;
        }
        if (&instance.Type() != type_) {
            type_ = &instance.Type();
            view_ = &table_.ViewOf(*type_);
        }
        if (column == kEntity) {
            sqlite3_result_text64(to, view_->name.data(), view_->name.size(), SQLITE_STATIC,
                                  SQLITE_UTF8);
            return;
        }
        const auto index = static_cast<std::size_t>(column - kFirstAttribute);
        const kor::Index slot = view_->slots[index];
        if (!slot) return;  // NULL
        const Column& definition = table_.Columns()[index];
        Give(to, instance.Cells()[*slot], definition.kind, definition.domain);
    }

  private:
    using Members = std::span<SdaiEntityInstance* const>;

    Members Extent() const {
        return kor::AggregateAccess::ExtentMembers(
            *table_.Model().Extent(std::string_view(table_.Entity().FoldedName())));
    }

    void Walk(Members members) {
        next_ = members.data();
        end_ = members.data() + members.size();
    }

    void WalkChosen() { Walk(chosen_); }

    void WalkOne(SdaiEntityInstance* instance) {
        one_ = instance;
        const bool isHeld =
            instance != nullptr && table_.ViewOf(Instance::Of(*instance).Type()).isHeld;
        Walk({&one_, isHeld ? 1U : 0U});
    }

    // The instance that a number, or a text that reads as one, names.
    SdaiEntityInstance* InstanceOf(sqlite3_value* value) const {
        const int type = sqlite3_value_numeric_type(value);
        if (type != SQLITE_INTEGER && type != SQLITE_FLOAT) return nullptr;
        const sqlite3_int64 number = sqlite3_value_int64(value);
        if (type == SQLITE_FLOAT && static_cast<double>(number) != sqlite3_value_double(value)) {
            return nullptr;
        }
        return number > 0 ? table_.Model().Find(static_cast<std::uint64_t>(number)) : nullptr;
    }

    // A column for values of several kinds has a reference as an exchange file writes it.
    SdaiEntityInstance* TargetOf(const Column& column, sqlite3_value* value) const {
        if (column.kind == ColumnKind::Reference) return InstanceOf(value);
        if (sqlite3_value_type(value) != SQLITE_TEXT) return nullptr;
        const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
        if (text == nullptr) throw std::bad_alloc();
        const auto parsed = ParseInstance(text);
        return parsed.has_value() ? table_.Model().Find(parsed->id) : nullptr;
    }

    void WalkUsers(const Column& column, sqlite3_value* value) {
        if (const SdaiEntityInstance* target = TargetOf(column, value)) {
            table_.AppendUsers(chosen_, *target, column);
            WalkChosen();
        } else if (column.kind == ColumnKind::Exchange) {
            Walk(Extent());
        } else {
            WalkChosen();
        }
    }

    void WalkType(sqlite3_value* value) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
        const std::string name = text != nullptr ? kor::Folded(text) : std::string();
        for (const ModelType& type : table_.Model().Types()) {
            if (type.entity->FoldedName() != name || !table_.Holds(type)) continue;
            type.ForEachInstance([this](Instance& instance) { chosen_.push_back(&instance); });
        }
        // In memory they may be in another order than in the model.
        if (!std::is_sorted(chosen_.begin(), chosen_.end(), kor::IsCreatedBefore)) {
            std::sort(chosen_.begin(), chosen_.end(), kor::IsCreatedBefore);
        }
        WalkChosen();
    }

    // What rows are ordered by: unset values come before numbers, and these before texts.
    struct Key {
        static constexpr std::int64_t kUnset = std::numeric_limits<std::int64_t>::min();
        static constexpr std::int64_t kText = std::numeric_limits<std::int64_t>::max();

        std::int64_t number;
        SdaiEntityInstance* instance;
        const std::string* text = nullptr;

        bool operator<(const Key& other) const {
            if (number != other.number || number != kText) return number < other.number;
            return *text < *other.text;
        }
    };

    void Order(const Plan& plan) {
        std::vector<Key> keys;
        keys.reserve(static_cast<std::size_t>(end_ - next_));
        std::deque<std::string> texts;
        for (; next_ != end_; ++next_) keys.push_back(KeyOf(**next_, plan.orderedBy, texts));
        const auto precedes = [&](const Key& a, const Key& b) {
            return plan.descends ? b < a : a < b;
        };
        if (!std::is_sorted(keys.begin(), keys.end(), precedes)) {
            std::stable_sort(keys.begin(), keys.end(), precedes);
        }
        std::vector<SdaiEntityInstance*> ordered;
        ordered.reserve(keys.size());
        for (const Key& key : keys) ordered.push_back(key.instance);
        chosen_ = std::move(ordered);
        WalkChosen();
    }

    Key KeyOf(SdaiEntityInstance& member, unsigned column, std::deque<std::string>& texts) const {
        const Instance& instance = Instance::Of(member);
        if (column == kInstance) return {static_cast<std::int64_t>(instance.Id()), &member};
        const kor::Index slot = table_.ViewOf(instance.Type()).slots[column - kFirstAttribute];
        if (!instance.HasValue(slot)) return {Key::kUnset, &member};
        const kor::Cell& cell = instance.Cells()[*slot];
        const SdaiEntityInstance* target = sql::TargetOf(cell);
        if (target != nullptr) {
            return {static_cast<std::int64_t>(target->GetInstanceNameId()), &member};
        }
        texts.push_back(exchange::ExchangeForm(cell));
        return {Key::kText, &member, &texts.back()};
    }

    Table& table_;
    std::vector<SdaiEntityInstance*> chosen_;  // the rows, if neither the whole extent
    SdaiEntityInstance* one_ = nullptr;        // nor this one
    SdaiEntityInstance* const* next_ = nullptr;
    SdaiEntityInstance* const* end_ = nullptr;
    const ModelType* type_ = nullptr;  // of the row before, and how it is seen
    const Table::TypeView* view_ = nullptr;
};

// ---- What SQLite calls

using Owner = std::shared_ptr<Connection>;

// Runs what may throw; SQLite is written in C.
template <class Work>
int Guarded(Work work) {
    try {
        return work();
    } catch (const std::exception&) {
        return SQLITE_NOMEM;
    }
}

// The name of the database and of the table follow that of the module.
int ConnectTable(sqlite3* database, void* owner, int, const char* const* arguments,
                 sqlite3_vtab** made, char** message) {
    return Guarded([&] {
        const Connection& connection = **static_cast<Owner*>(owner);
        const NamedModel* named = connection.models.Find(arguments[1]);
        const kor::EntityType* entity =
            named != nullptr ? EntityNamed(*named->model, arguments[2]) : nullptr;
        if (entity == nullptr) {
            *message =
                sqlite3_mprintf("no model has an entity type '%s.%s'", arguments[1], arguments[2]);
            return SQLITE_ERROR;
        }
        auto table = std::make_unique<Table>(*named, *entity);
        const int status = sqlite3_declare_vtab(database, table->Declaration().c_str());
        if (status != SQLITE_OK) return status;
        // A function that takes the number of a row may run in a view of the user's own.
        sqlite3_vtab_config(database, SQLITE_VTAB_INNOCUOUS);
        *made = table.release();
        return SQLITE_OK;
    });
}

// Another function: the tables are no functions.
int CreateTable(sqlite3* database, void* owner, int count, const char* const* arguments,
                sqlite3_vtab** made, char** message) {
    return ConnectTable(database, owner, count, arguments, made, message);
}

int DisconnectTable(sqlite3_vtab* table) {
    delete static_cast<Table*>(table);
    return SQLITE_OK;
}

int OpenCursor(sqlite3_vtab* table, sqlite3_vtab_cursor** made) {
    return Guarded([&] {
        *made = new Cursor(static_cast<Table&>(*table));
        return SQLITE_OK;
    });
}

Cursor& Of(sqlite3_vtab_cursor* cursor) { return static_cast<Cursor&>(*cursor); }

int CloseCursor(sqlite3_vtab_cursor* cursor) {
    delete &Of(cursor);
    return SQLITE_OK;
}

int Filter(sqlite3_vtab_cursor* cursor, int plan, const char*, int count, sqlite3_value** values) {
    return Guarded([&] {
        Of(cursor).Filter(Plan::Decoded(plan), count != 0 ? values[0] : nullptr);
        return SQLITE_OK;
    });
}

int Next(sqlite3_vtab_cursor* cursor) {
    Of(cursor).Next();
    return SQLITE_OK;
}

int IsAtEnd(sqlite3_vtab_cursor* cursor) { return Of(cursor).IsAtEnd() ? 1 : 0; }

int GiveColumn(sqlite3_vtab_cursor* cursor, sqlite3_context* to, int column) {
    return Guarded([&] {
        Of(cursor).GiveColumn(to, column);
        return SQLITE_OK;
    });
}

int GiveRowId(sqlite3_vtab_cursor* cursor, sqlite3_int64* number) {
    *number = static_cast<sqlite3_int64>(Of(cursor).Current().Id());
    return SQLITE_OK;
}

// Without xUpdate, so that SQLite refuses what would write.
constexpr sqlite3_module kModule = [] {
    sqlite3_module module{};
    module.xCreate = CreateTable;
    module.xConnect = ConnectTable;
    module.xBestIndex = BestIndex;
    module.xDisconnect = DisconnectTable;
    module.xDestroy = DisconnectTable;
    module.xOpen = OpenCursor;
    module.xClose = CloseCursor;
    module.xFilter = Filter;
    module.xNext = Next;
    module.xEof = IsAtEnd;
    module.xColumn = GiveColumn;
    module.xRowid = GiveRowId;
    return module;
}();

}  // namespace

void AddVirtualTables(const std::shared_ptr<Connection>& connection) {
    // SQLite deletes the owner, also when it fails to take it.
    const int status = sqlite3_create_module_v2(
        connection->database, kVirtualTables, &kModule, new Owner(connection),
        [](void* owner) { delete static_cast<Owner*>(owner); });
    if (status == SQLITE_NOMEM) throw std::bad_alloc();
    if (status != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(connection->database));
}

std::vector<std::string> TableNames(const kor::Model& model) {
    std::vector<std::string> names;
    std::set<std::string> known;
    const auto add = [&](const kor::EntityType& entity) {
        std::string name = exchange::TableName(entity);
        if (known.insert(name).second) names.push_back(std::move(name));
    };
    for (const kor::EntityType* entity : model.GetSchema().Entities()) add(*entity);
    for (const ModelType& type : model.Types()) add(*type.entity);
    return names;
}

std::vector<std::string> ColumnNames(const kor::Model& model, std::string_view table) {
    const kor::EntityType* entity = EntityNamed(model, table);
    if (entity == nullptr) return {};
    std::vector<std::string> names{"instance", "entity"};
    for (const Column& column : TableColumns(*entity)) names.push_back(column.name);
    return names;
}

}  // namespace sql
