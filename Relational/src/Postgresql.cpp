// PostgreSQL, through libpq. Whole tables travel by COPY in its binary form, so that numbers keep
// their bits.

#include <libpq-fe.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <map>
#include <memory>
#include <new>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Database.h"

namespace relational {

namespace {

struct PostgresqlCloser {
    void operator()(PGconn* connection) const { PQfinish(connection); }
    void operator()(PGresult* result) const { PQclear(result); }
    void operator()(char* memory) const { PQfreemem(memory); }
    void operator()(PQconninfoOption* options) const { PQconninfoFree(options); }
};
using PostgresqlConnection = std::unique_ptr<PGconn, PostgresqlCloser>;
using Result = std::unique_ptr<PGresult, PostgresqlCloser>;
using CopyData = std::unique_ptr<char, PostgresqlCloser>;

// A message in one line.
std::string InOneLine(std::string_view message) {
    std::string text;
    for (const char c : message) {
        const bool space = c == '\n' || c == '\t' || c == ' ';
        if (!space) {
            text += c;
        } else if (!text.empty() && text.back() != ' ') {
            text += ' ';
        }
    }
    if (text.ends_with(' ')) text.pop_back();
    return text;
}

[[noreturn]] void Fail(PGconn* connection, const PGresult* result) {
    const char* state = result != nullptr ? PQresultErrorField(result, PG_DIAG_SQLSTATE) : nullptr;
    const char* primary =
        result != nullptr ? PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY) : nullptr;
    std::string text = InOneLine(primary != nullptr ? primary : PQerrorMessage(connection));
    if (const char* detail =
            primary != nullptr ? PQresultErrorField(result, PG_DIAG_MESSAGE_DETAIL) : nullptr) {
        text.append(" (").append(detail).append(")");
    }
    // Serialization failures and deadlocks.
    const bool conflict = state != nullptr && std::string_view(state).starts_with("40");
    throw DatabaseError{conflict ? "another has changed the database meanwhile: " + text : text,
                        conflict};
}

// ---- Binary values, in network byte order

template <class T>
T FromNetwork(const char* bytes) {
    std::array<char, sizeof(T)> reversed;
    for (std::size_t i = 0; i < sizeof(T); ++i) reversed[sizeof(T) - 1 - i] = bytes[i];
    return std::bit_cast<T>(reversed);
}

template <class T>
void ToNetwork(std::string& to, T value) {
    const auto bytes = std::bit_cast<std::array<char, sizeof(T)>>(value);
    to.append(bytes.rbegin(), bytes.rend());
}

// What a column is read as.
enum class Form : std::uint8_t { Integer, Real, Boolean, Text };

struct FormOfType {
    std::string_view type;
    Form form;
};
constexpr FormOfType kForms[] = {{"int8", Form::Integer}, {"int4", Form::Integer},
                                 {"int2", Form::Integer}, {"float8", Form::Real},
                                 {"float4", Form::Real},  {"bool", Form::Boolean}};

Form FormOf(std::string_view type) {
    for (const FormOfType& one : kForms) {
        if (one.type == type) return one.form;
    }
    return Form::Text;
}

// Whether the binary form of a column is that of the fields here.
bool IsCopied(std::string_view type) {
    constexpr std::string_view kCopied[] = {"int8", "float8", "bool", "text", "varchar", "bpchar"};
    return std::find(std::begin(kCopied), std::end(kCopied), type) != std::end(kCopied);
}

const char* CastOf(Form form) {
    switch (form) {
        case Form::Integer: return "::bigint";
        case Form::Real: return "::double precision";
        case Form::Boolean: return "";
        case Form::Text: break;
    }
    return "::text";
}

Field FieldOf(Form form, const char* bytes, std::size_t size) {
    switch (form) {
        case Form::Integer: return Field::Of(FromNetwork<std::int64_t>(bytes));
        case Form::Real: return Field::OfReal(FromNetwork<double>(bytes));
        case Form::Boolean: return Field::OfBoolean(*bytes != 0);
        case Form::Text: break;
    }
    return Field::OfText({bytes, size});
}

// The advisory lock of those who save.
constexpr std::int64_t kSaverLock = 0x6F72'785F'7361'7665;

// What COPY begins with.
constexpr std::string_view kSignature("PGCOPY\n\377\r\n\0", 11);
constexpr std::size_t kCopyHeader = kSignature.size() + 8;

// The rows that COPY ... TO STDOUT sends.
class CopiedRows final : public Rows {
  public:
    CopiedRows(PGconn* connection, std::vector<Form> forms)
        : connection_(connection), forms_(std::move(forms)) {}

    ~CopiedRows() override {
        if (ended_) return;
        // What is left is of no use; the connection is, for the next query.
        for (char* data = nullptr; PQgetCopyData(connection_, &data, 0) > 0;) PQfreemem(data);
        while (const Result result{PQgetResult(connection_)}) {
        }
    }
    CopiedRows(const CopiedRows&) = delete;
    CopiedRows& operator=(const CopiedRows&) = delete;

    bool Next(std::vector<Field>& row) override {
        while (at_ == end_) {
            if (!Receive()) return false;
        }
        const auto count = Take<std::int16_t>();
        if (count < 0) {  // the trailer
            at_ = end_;
            return Next(row);
        }
        if (static_cast<std::size_t>(count) != forms_.size()) FailOfForm();
        row.resize(forms_.size());
        for (std::size_t i = 0; i < forms_.size(); ++i) {
            const auto size = Take<std::int32_t>();
            if (size < 0) {
                row[i] = {};
                continue;
            }
            if (end_ - at_ < size) FailOfForm();
            row[i] = FieldOf(forms_[i], at_, static_cast<std::size_t>(size));
            at_ += size;
        }
        return true;
    }

  private:
    [[noreturn]] static void FailOfForm() {
        throw DatabaseError{"the server sends what is no binary COPY"};
    }

    template <class T>
    T Take() {
        if (end_ - at_ < static_cast<std::ptrdiff_t>(sizeof(T))) FailOfForm();
        const T value = FromNetwork<T>(at_);
        at_ += sizeof(T);
        return value;
    }

    // The next piece, which is one row, the header before the first. False at the end.
    bool Receive() {
        if (ended_) return false;
        char* data = nullptr;
        const int size = PQgetCopyData(connection_, &data, 0);
        data_.reset(data);
        if (size > 0) {
            at_ = data;
            end_ = data + size;
            if (first_ &&
                std::string_view(at_, static_cast<std::size_t>(size)).starts_with(kSignature)) {
                at_ += std::min<std::size_t>(kCopyHeader, static_cast<std::size_t>(size));
            }
            first_ = false;
            return true;
        }
        ended_ = true;
        const Result result(PQgetResult(connection_));
        if (size < -1 || PQresultStatus(result.get()) != PGRES_COMMAND_OK) {
            Fail(connection_, result.get());
        }
        while (const Result more{PQgetResult(connection_)}) {
        }
        return false;
    }

    PGconn* connection_;
    const std::vector<Form> forms_;
    CopyData data_;
    const char* at_ = nullptr;
    const char* end_ = nullptr;
    bool first_ = true;
    bool ended_ = false;
};

// The rows of a query, which are few.
class FewRows final : public Rows {
  public:
    FewRows(Result result, std::vector<Form> forms)
        : result_(std::move(result)), forms_(std::move(forms)) {}

    bool Next(std::vector<Field>& row) override {
        if (next_ == PQntuples(result_.get())) return false;
        row.resize(forms_.size());
        for (std::size_t i = 0; i < forms_.size(); ++i) {
            const int column = static_cast<int>(i);
            row[i] =
                PQgetisnull(result_.get(), next_, column) != 0
                    ? Field()
                    : FieldOf(forms_[i], PQgetvalue(result_.get(), next_, column),
                              static_cast<std::size_t>(PQgetlength(result_.get(), next_, column)));
        }
        ++next_;
        return true;
    }

  private:
    Result result_;
    const std::vector<Form> forms_;
    int next_ = 0;
};

// COPY ... FROM STDIN.
class CopyInsertion final : public Insertion {
  public:
    explicit CopyInsertion(PGconn* connection) : connection_(connection) {
        buffer_ = kSignature;
        buffer_.append(8, '\0');
    }

    void Add(std::span<const Field> row) override {
        ToNetwork(buffer_, static_cast<std::int16_t>(row.size()));
        for (const Field& field : row) Append(field);
        if (buffer_.size() >= kPiece) Send();
    }

    void Finish() override {
        ToNetwork(buffer_, std::int16_t{-1});
        Send();
        if (PQputCopyEnd(connection_, nullptr) != 1) Fail(connection_, nullptr);
        Result failed;
        while (Result result{PQgetResult(connection_)}) {
            if (PQresultStatus(result.get()) != PGRES_COMMAND_OK && failed == nullptr) {
                failed = std::move(result);
            }
        }
        if (failed != nullptr) Fail(connection_, failed.get());
    }

  private:
    static constexpr std::size_t kPiece = std::size_t{1} << 16;

    void Append(const Field& field) {
        switch (field.kind) {
            case Field::Kind::Null: ToNetwork(buffer_, std::int32_t{-1}); return;
            case Field::Kind::Integer:
                ToNetwork(buffer_, std::int32_t{8});
                ToNetwork(buffer_, field.integer);
                return;
            case Field::Kind::Real:
                ToNetwork(buffer_, std::int32_t{8});
                ToNetwork(buffer_, field.real);
                return;
            case Field::Kind::Boolean:
                ToNetwork(buffer_, std::int32_t{1});
                buffer_ += field.integer != 0 ? '\1' : '\0';
                return;
            case Field::Kind::Text: break;
        }
        if (field.text.size() > std::numeric_limits<std::int32_t>::max()) {
            throw DatabaseError{"a text is longer than PostgreSQL takes"};
        }
        ToNetwork(buffer_, static_cast<std::int32_t>(field.text.size()));
        buffer_ += field.text;
    }

    void Send() {
        if (PQputCopyData(connection_, buffer_.data(), static_cast<int>(buffer_.size())) != 1) {
            Fail(connection_, nullptr);
        }
        buffer_.clear();
    }

    PGconn* connection_;
    std::string buffer_;
};

// A value as the text of a parameter, whose type the server takes from its place.
class Parameters {
  public:
    void Add(const Field& field) {
        std::string& text = texts_.emplace_back();
        isNull_.push_back(field.IsNull());
        switch (field.kind) {
            case Field::Kind::Null: break;
            case Field::Kind::Integer: text = std::to_string(field.integer); break;
            case Field::Kind::Boolean: text = field.integer != 0 ? "t" : "f"; break;
            case Field::Kind::Real: {
                char digits[32];
                text.assign(digits, std::to_chars(digits, digits + sizeof digits, field.real).ptr);
                break;
            }
            case Field::Kind::Text: text = field.text; break;
        }
    }

    std::vector<const char*> Values() const {
        std::vector<const char*> values;
        for (std::size_t i = 0; i < texts_.size(); ++i) {
            values.push_back(isNull_[i] ? nullptr : texts_[i].c_str());
        }
        return values;
    }

  private:
    std::vector<std::string> texts_;
    std::vector<bool> isNull_;
};

class Postgresql final : public Database {
  public:
    explicit Postgresql(const std::string& uri) {
        char* error = nullptr;
        const std::unique_ptr<PQconninfoOption, PostgresqlCloser> parsed(
            PQconninfoParse(uri.c_str(), &error));
        const CopyData freed(error);
        // The message of libpq may hold a part of the password.
        if (parsed == nullptr) throw DatabaseError{"is no URI as libpq takes it"};
        connection_.reset(PQconnectdb(uri.c_str()));
        if (connection_ == nullptr) throw std::bad_alloc();
        if (PQstatus(Get()) != CONNECTION_OK) Fail(Get(), nullptr);
        PQsetNoticeProcessor(
            Get(), [](void*, const char*) {}, nullptr);
        if (PQsetClientEncoding(Get(), "UTF8") != 0) Fail(Get(), nullptr);
    }

    const Dialect& GetDialect() const override { return kPostgresql; }

    std::string Identity() const override {
        const Result result(PQexec(Get(), "SELECT current_database(), current_schema()"));
        if (PQresultStatus(result.get()) != PGRES_TUPLES_OK) Fail(Get(), result.get());
        return std::string("postgresql:") + PQhost(Get()) + ':' + PQport(Get()) + '/' +
               PQgetvalue(result.get(), 0, 0) + '/' + PQgetvalue(result.get(), 0, 1);
    }

    void Begin(Access access) override {
        if (access == Access::Read) {
            return Execute("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY");
        }
        // One saver after the other. The lock is there before the snapshot is taken, and goes with
        // the connection.
        Execute("SELECT pg_catalog.pg_advisory_lock(" + std::to_string(kSaverLock) + ")");
        Execute("BEGIN ISOLATION LEVEL REPEATABLE READ");
    }

    void Commit() override {
        Execute("COMMIT");
        statements_.clear();
    }

    Relations ReadRelations() override {
        types_.clear();
        const Result result =
            Ask("SELECT c.relname, c.relkind, a.attname, t.typname, "
                "pg_catalog.pg_relation_is_updatable(c.oid, true) "
                "FROM pg_catalog.pg_class c "
                "JOIN pg_catalog.pg_attribute a ON a.attrelid = c.oid "
                "JOIN pg_catalog.pg_type t ON t.oid = a.atttypid "
                "WHERE c.relkind IN ('r', 'p', 'f', 'v', 'm') AND a.attnum > 0 "
                "AND NOT a.attisdropped AND pg_catalog.pg_table_is_visible(c.oid) "
                "AND c.relnamespace NOT IN (SELECT oid FROM pg_catalog.pg_namespace "
                "WHERE nspname IN ('pg_catalog', 'information_schema'))");
        Relations relations;
        for (int i = 0; i < PQntuples(result.get()); ++i) {
            const auto value = [&](int column) { return PQgetvalue(result.get(), i, column); };
            Relation& relation = relations[value(0)];
            relation.isView = *value(1) == 'v' || *value(1) == 'm';
            // Bits for UPDATE, INSERT and DELETE.
            const int events = std::atoi(value(4));
            relation.updates = (events & 4) != 0;
            relation.inserts = (events & 8) != 0;
            relation.deletes = (events & 16) != 0;
            relation.columns.emplace(value(2));
            types_[value(0)][value(2)] = FormOf(value(3));
            if (relation.isView || !IsCopied(value(3))) byRows_[value(0)].emplace(value(2));
        }
        return relations;
    }

    std::unique_ptr<Rows> Read(const std::string& table, const ColumnNames& columns) override {
        const std::string sql =
            "COPY (" + Selection(table, columns) + ") TO STDOUT (FORMAT binary)";
        const Result result(PQexec(Get(), sql.c_str()));
        if (PQresultStatus(result.get()) != PGRES_COPY_OUT) Fail(Get(), result.get());
        return std::make_unique<CopiedRows>(Get(), FormsOf(table, columns));
    }

    std::unique_ptr<Rows> Read(const std::string& table, const ColumnNames& columns,
                               const Key& key) override {
        Parameters parameters;
        parameters.Add(Field::Of(key.value));
        const std::string sql =
            Selection(table, columns) + " WHERE " + QuotedName(key.column) + " = $1";
        Result result = Run(sql, parameters, 1);
        if (PQresultStatus(result.get()) != PGRES_TUPLES_OK) Fail(Get(), result.get());
        return std::make_unique<FewRows>(std::move(result), FormsOf(table, columns));
    }

    std::unique_ptr<Insertion> Insert(const std::string& table,
                                      const ColumnNames& columns) override;

    std::uint64_t Update(const std::string& table, const ColumnNames& columns,
                         std::span<const Field> values, const Key& key) override {
        Parameters parameters;
        for (const Field& value : values) parameters.Add(value);
        parameters.Add(Field::Of(key.value));
        std::string assignments;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            assignments +=
                (i == 0 ? "" : ", ") + QuotedName(columns[i]) + " = $" + std::to_string(i + 1);
        }
        return RunCounting("UPDATE " + QuotedName(table) + " SET " + assignments + " WHERE " +
                               QuotedName(key.column) + " = $" + std::to_string(columns.size() + 1),
                           parameters);
    }

    std::uint64_t Delete(const std::string& table, const Key& key) override {
        Parameters parameters;
        parameters.Add(Field::Of(key.value));
        return RunCounting(
            "DELETE FROM " + QuotedName(table) + " WHERE " + QuotedName(key.column) + " = $1",
            parameters);
    }

    void Execute(const std::string& statement) override {
        const Result result(PQexec(Get(), statement.c_str()));
        if (PQresultStatus(result.get()) != PGRES_COMMAND_OK &&
            PQresultStatus(result.get()) != PGRES_TUPLES_OK) {
            Fail(Get(), result.get());
        }
    }

    // Runs a statement that counts rows.
    std::uint64_t RunCounting(const std::string& sql, const Parameters& parameters) {
        const Result result = Run(sql, parameters, 0);
        if (PQresultStatus(result.get()) != PGRES_COMMAND_OK) Fail(Get(), result.get());
        return std::strtoull(PQcmdTuples(result.get()), nullptr, 10);
    }

  private:
    PGconn* Get() const { return connection_.get(); }

    Result Ask(const char* sql) {
        Result result(PQexec(Get(), sql));
        if (PQresultStatus(result.get()) != PGRES_TUPLES_OK) Fail(Get(), result.get());
        return result;
    }

    // Prepares what it has not met yet. `format` of the results: 0 text, 1 binary.
    Result Run(const std::string& sql, const Parameters& parameters, int format) {
        const std::vector<const char*> values = parameters.Values();
        const auto [found, isNew] =
            statements_.try_emplace(sql, "orx" + std::to_string(statements_.size()));
        if (isNew) {
            const Result prepared(PQprepare(Get(), found->second.c_str(), sql.c_str(), 0, nullptr));
            if (PQresultStatus(prepared.get()) != PGRES_COMMAND_OK) Fail(Get(), prepared.get());
        }
        return Result(PQexecPrepared(Get(), found->second.c_str(), static_cast<int>(values.size()),
                                     values.data(), nullptr, nullptr, format));
    }

    // Of a table that this has made, the columns have the types of the layout.
    Form FormOfColumn(const std::string& table, const std::string& column) const {
        const auto found = types_.find(table);
        if (found == types_.end()) return Form::Text;
        const auto form = found->second.find(column);
        return form != found->second.end() ? form->second : Form::Text;
    }

    std::vector<Form> FormsOf(const std::string& table, const ColumnNames& columns) const {
        std::vector<Form> forms;
        for (const std::string& column : columns) forms.push_back(FormOfColumn(table, column));
        return forms;
    }

    std::string Selection(const std::string& table, const ColumnNames& columns) const {
        std::string list;
        for (const std::string& column : columns) {
            list += (list.empty() ? "" : ", ") + QuotedName(column) +
                    CastOf(FormOfColumn(table, column));
        }
        return "SELECT " + list + " FROM " + QuotedName(table);
    }

    PostgresqlConnection connection_;
    std::map<std::string, std::map<std::string, Form>> types_;  // by table and column
    std::map<std::string, std::set<std::string>> byRows_;       // columns that COPY does not fill
    std::map<std::string, std::string> statements_;  // the names of those that are prepared
};

// Row by row: for what COPY cannot fill.
class RowInsertion final : public Insertion {
  public:
    RowInsertion(Postgresql& database, std::string sql)
        : database_(database), sql_(std::move(sql)) {}

    void Add(std::span<const Field> row) override {
        Parameters parameters;
        for (const Field& field : row) parameters.Add(field);
        database_.RunCounting(sql_, parameters);
    }
    void Finish() override {}

  private:
    Postgresql& database_;
    const std::string sql_;
};

std::unique_ptr<Insertion> Postgresql::Insert(const std::string& table,
                                              const ColumnNames& columns) {
    std::string names;
    std::string values;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        names += (i == 0 ? "" : ", ") + QuotedName(columns[i]);
        values += (i == 0 ? "$" : ", $") + std::to_string(i + 1);
    }
    const std::string into = QuotedName(table) + " (" + names + ")";
    const auto found = byRows_.find(table);
    if (found != byRows_.end() &&
        std::any_of(columns.begin(), columns.end(),
                    [&](const std::string& column) { return found->second.contains(column); })) {
        return std::make_unique<RowInsertion>(*this,
                                              "INSERT INTO " + into + " VALUES (" + values + ")");
    }
    const std::string copy = "COPY " + into + " FROM STDIN (FORMAT binary)";
    const Result result(PQexec(Get(), copy.c_str()));
    if (PQresultStatus(result.get()) != PGRES_COPY_IN) Fail(Get(), result.get());
    return std::make_unique<CopyInsertion>(Get());
}

}  // namespace

std::unique_ptr<Database> OpenPostgresql(const std::string& uri, Database::Access) {
    return std::make_unique<Postgresql>(uri);
}

}  // namespace relational
