// Queries over two small models. An input is run as it is: it returns rows or a message, and
// changes no model. An input that begins with U+0000 produces a query with constraints, a join and
// an order, whose rows must be those that SQLite finds by testing every row.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Connection.h"
#include "Input.h"
#include "Shapes.h"

namespace {

constexpr const char* kFile =
    "ISO-10303-21;HEADER;FILE_DESCRIPTION((''),'2;1');FILE_NAME('','',(''),(''),'','','');"
    "FILE_SCHEMA(('";
constexpr const char* kProducts =
    "#1=PRODUCT_DEFINITION('root',$,$,$);#2=PRODUCT_DEFINITION('leaf',$,$,$);"
    "#3=NEXT_ASSEMBLY_USAGE_OCCURRENCE('','',$,#1,#2,$);#4=CARTESIAN_POINT('',(1.,2.,3.));"
    "#5=AXIS2_PLACEMENT_3D('',#4,$,$);#6=CONFIGURATION_ITEM('c','n',$,$,$);"
    "#7=OWN_TYPE('text',(1,2),MEASURE(2.5),#1);";

// Limits of a query, so that every input ends soon.
constexpr int kMostSteps = 1'000;  // of a thousand instructions of SQLite's virtual machine
constexpr int kMostRows = 1'000;
constexpr int kMostBytes = 100'000;  // of a text

exchange::DataSet Read(const std::string& schema, const std::string& instances,
                       const exchange::SchemaCatalog& schemas) {
    exchange::Messages messages;
    return exchange::ParseDataSet(
        kFile + schema + "'));ENDSEC;DATA;" + instances + "ENDSEC;END-ISO-10303-21;", "data",
        schemas, {}, messages);
}

const exchange::DataSet& Shapes() {
    static const exchange::DataSet shapes = [] {
        exchange::Messages messages;
        exchange::SchemaCatalog schemas;
        schemas.Add(exchange::ParseSchemas(kShapesSchema, "shapes", messages).at(0));
        return Read("shapes", kShapesData, schemas);
    }();
    return shapes;
}

const exchange::DataSet& Products() {
    static const exchange::DataSet products = Read("AUTOMOTIVE_DESIGN", kProducts, {});
    return products;
}

class Database {
  public:
    Database() {
        sqlite3_open(":memory:", &database_);
        sqlite3_limit(database_, SQLITE_LIMIT_LENGTH, kMostBytes);
        connection_ = sql::Connect(database_, TheModule());
    }
    ~Database() {
        connection_.reset();
        sqlite3_close(database_);
    }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    // The data set must outlive the connection.
    void Add(const char* name, const exchange::DataSet& dataSet) {
        const std::shared_ptr<const kor::Model> borrowed(std::shared_ptr<void>(),
                                                         dataSet.model.get());
        sql::AddModel(*connection_, name, borrowed);
    }

    // Runs arbitrary text: it can open no file, change no settings of the process, end no
    // transaction and not run for long. Its changes are rolled back.
    void RunConfined(std::string_view text) {
        Run("SAVEPOINT before");
        sqlite3_set_authorizer(database_, Authorize, nullptr);
        int steps = 0;
        sqlite3_progress_handler(database_, 1'000, Count, &steps);
        Run(text);
        sqlite3_progress_handler(database_, 0, nullptr, nullptr);
        sqlite3_set_authorizer(database_, nullptr, nullptr);
        Run("ROLLBACK TO before; RELEASE before");
    }

    using Rows = std::vector<std::vector<std::string>>;

    // The rows of all statements up to one that fails, or up to U+0000, where SQLite stops.
    Rows Run(std::string_view text) {
        text = text.substr(0, text.find('\0'));
        Rows rows;
        const char* rest = text.data();
        const char* const end = rest + text.size();
        while (rest != end) {
            sqlite3_stmt* statement = nullptr;
            int status = sqlite3_prepare_v2(database_, rest, static_cast<int>(end - rest),
                                            &statement, &rest);
            if (!Succeeded(status)) break;
            if (statement == nullptr) continue;
            while ((status = sqlite3_step(statement)) == SQLITE_ROW && rows.size() < kMostRows) {
                rows.push_back(RowOf(statement));
            }
            const bool succeeded = status == SQLITE_ROW || Succeeded(status);
            sqlite3_finalize(statement);
            if (!succeeded) break;
        }
        return rows;
    }

  private:
    static int Authorize(void*, int action, const char* name, const char*, const char*,
                         const char*) {
        switch (action) {
            case SQLITE_ATTACH:
            case SQLITE_DETACH:
            case SQLITE_SAVEPOINT:
            case SQLITE_TRANSACTION: return SQLITE_DENY;
            case SQLITE_PRAGMA:
                return std::string_view(name).starts_with("table_") ? SQLITE_OK : SQLITE_DENY;
            default: return SQLITE_OK;
        }
    }
    static int Count(void* steps) { return ++*static_cast<int*>(steps) > kMostSteps ? 1 : 0; }

    bool Succeeded(int status) const {
        if (status == SQLITE_OK || status == SQLITE_DONE) return true;
        Require(sqlite3_errmsg(database_)[0] != '\0', "a failure has a message");
        Require(status != SQLITE_MISUSE && status != SQLITE_INTERNAL && status != SQLITE_NOMEM,
                "a failure is the query's", sqlite3_errmsg(database_));
        return false;
    }

    static std::vector<std::string> RowOf(sqlite3_stmt* statement) {
        std::vector<std::string> row;
        for (int i = 0; i < sqlite3_column_count(statement); ++i) {
            const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, i));
            row.push_back(text != nullptr ? std::string(text, size) : "NULL");
        }
        return row;
    }

    sqlite3* database_ = nullptr;
    std::shared_ptr<sql::Connection> connection_;
};

Database& TheDatabase() {
    static Database database;
    static const bool opened = [] {
        database.Add("m", Shapes());
        database.Add("step", Products());
        return true;
    }();
    Require(opened, "there is a database");
    return database;
}

void RunText(std::string_view text) {
    static const std::string shapesBefore = exchange::ToExchangeText(Shapes());
    static const std::string productsBefore = exchange::ToExchangeText(Products());
    TheDatabase().RunConfined(text);
    TheModule().Call(*orx::FindExport("RemoveValueVersion"), {});
    Require(exchange::ToExchangeText(Shapes()) == shapesBefore &&
                exchange::ToExchangeText(Products()) == productsBefore,
            "a query changes no model", text);
    Require(TheDatabase().Run("SELECT instance FROM m.thing").size() == 4,
            "the tables stay as they are", text);
}

// ---- Queries with constraints

class Question {
  public:
    explicit Question(FuzzedDataProvider& input) : input_(input) {}

    // The same query twice: SQLite may pass its constraints and its order to the tables, or
    // evaluates them itself because they are in a subquery.
    struct Forms {
        std::string handedOver;
        std::string tested;
    };
    Forms Make() {
        const std::string left = Table();
        const std::string right = Table();
        const bool isJoin = input_.ConsumeBool();
        Forms forms;
        Append(forms, "SELECT a.instance");
        if (isJoin) Append(forms, ", b.instance");
        Append(forms, " FROM m." + sql::Quoted(left) + " a");
        if (isJoin) {
            static constexpr const char* kJoins[] = {"JOIN", "LEFT JOIN", "CROSS JOIN"};
            Append(forms, ' ' + std::string(input_.PickValueInArray(kJoins)) + " m." +
                              sql::Quoted(right) + " b");
            AppendTest(forms, " ON ", "a." + Column(left) + " = b." + Column(right));
        }
        const char* word = " WHERE ";
        for (int i = input_.ConsumeIntegralInRange(0, 4); i > 0; --i) {
            const bool isRight = isJoin && input_.ConsumeBool();
            AppendTest(forms, word,
                       (isRight ? "b." + Column(right) : "a." + Column(left)) + Test());
            word = input_.ConsumeBool() ? " AND " : " OR ";
        }
        if (input_.ConsumeBool()) {
            const std::string key = "a." + Column(left);
            const char* const direction = input_.ConsumeBool() ? " DESC" : "";
            forms.handedOver = Keyed(forms.handedOver, key) + " ORDER BY " + key + direction;
            forms.tested = Keyed(forms.tested, key) + " ORDER BY (SELECT " + key + ')' + direction;
            isOrdered_ = true;
        }
        return forms;
    }
    // Whether the rows are ordered by the first column.
    bool IsOrdered() const { return isOrdered_; }

  private:
    const std::string& Table() {
        static const std::vector<std::string> tables = sql::TableNames(*Shapes().model);
        return OneOf(tables);
    }
    std::string Column(const std::string& table) {
        return sql::Quoted(OneOf(sql::ColumnNames(*Shapes().model, table)));
    }
    const std::string& OneOf(const std::vector<std::string>& items) {
        return items[input_.ConsumeIntegralInRange<std::size_t>(0, items.size() - 1)];
    }
    std::string Test() {
        static constexpr const char* kOperators[] = {
            " = ", " <> ", " < ", " >= ", " IS ", " IS NOT ", " LIKE ", " IN "};
        const std::string comparison = input_.PickValueInArray(kOperators);
        if (comparison != " IN ") return comparison + Value();
        const std::string first = Value();
        return comparison + '(' + first + ", " + Value() + ')';
    }
    std::string Value() {
        static constexpr const char* kValues[] = {"5",
                                                  "3",
                                                  "2",
                                                  "4",
                                                  "9",
                                                  "7",
                                                  "1",
                                                  "0",
                                                  "-1",
                                                  "3.0",
                                                  "2.5",
                                                  "9e99",
                                                  "'5'",
                                                  "' 3 '",
                                                  "'#5'",
                                                  "'#3'",
                                                  "'#9999'",
                                                  "'part'",
                                                  "'BOLT'",
                                                  "''",
                                                  "NULL",
                                                  "X'33'",
                                                  "1.5",
                                                  "'.F.'",
                                                  "'[]'",
                                                  "'p%'",
                                                  "'LABEL(''m\\X\\E9'')'",
                                                  "9223372036854775807"};
        return input_.PickValueInArray(kValues);
    }
    static void Append(Forms& forms, const std::string& text) {
        forms.handedOver += text;
        forms.tested += text;
    }
    static void AppendTest(Forms& forms, const char* word, const std::string& test) {
        forms.handedOver += word + test;
        forms.tested += word + ("(SELECT " + test + ')');
    }
    static std::string Keyed(std::string query, const std::string& key) {
        return query.insert(std::string_view("SELECT ").size(), key + ", ");
    }

    FuzzedDataProvider& input_;
    bool isOrdered_ = false;
};

void RunQuestion(FuzzedDataProvider& input) {
    Question question(input);
    const auto [handedOver, tested] = question.Make();
    Database::Rows rows = TheDatabase().Run(handedOver);
    Database::Rows expected = TheDatabase().Run(tested);
    if (question.IsOrdered()) {
        const bool sameOrder =
            std::equal(rows.begin(), rows.end(), expected.begin(), expected.end(),
                       [](const auto& a, const auto& b) { return a.front() == b.front(); });
        Require(sameOrder, "rows stand in the order that is asked for", handedOver);
    }
    std::sort(rows.begin(), rows.end());
    std::sort(expected.begin(), expected.end());
    Require(rows == expected, "a way to the rows finds what a walk finds", handedOver);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size != 0 && data[0] == 0) {
        FuzzedDataProvider input(data + 1, size - 1);
        RunQuestion(input);
    } else {
        RunText(AsText(data, size));
    }
    return 0;
}
