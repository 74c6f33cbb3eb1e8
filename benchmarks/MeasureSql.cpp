// Measures queries over a model against the same queries over plain tables of SQLite, with the same
// rows and an index for each reference, in one process. Both must return the same rows, which is
// checked first.
//
//     measure-sql FILE OCCURRENCES...
//
// FILE is an exchange file of several hundred thousand instances. The numbers are the occurrences
// in further files, FILE.OCCURRENCES; the time of a join must grow as they do. The exit status is 1
// if a figure misses what docs/performance.md promises.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <stdexcept>
#include <string>
#include <vector>

#include "Connection.h"
#include "Exchange.h"

namespace {

constexpr int kRounds = 7;

bool missed = false;

// Processor time, which is less affected by other work on the machine.
double Milliseconds() { return 1e3 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

void Hold(double figure, double most) {
    std::printf(figure <= most ? "   at most %g\n" : "   MISSES %g\n", most);
    missed = missed || figure > most;
}

class Database {
  public:
    explicit Database(std::shared_ptr<const kor::Model> model) : model_(std::move(model)) {
        const double start = Milliseconds();
        sqlite3_open(":memory:", &database_);
        static const calls::Module module("");
        const auto connection = sql::Connect(database_, module);
        sql::AddModel(*connection, "m", model_);
        opening_ = Milliseconds() - start;
    }
    ~Database() { sqlite3_close(database_); }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    double Opening() const { return opening_; }

    // All rows, one per line.
    std::string Run(const std::string& query) const {
        sqlite3_stmt* statement = nullptr;
        Check(sqlite3_prepare_v2(database_, query.c_str(), -1, &statement, nullptr));
        std::string rows;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            for (int i = 0; i < sqlite3_column_count(statement); ++i) {
                const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
                rows += text != nullptr ? text : "NULL";
                rows += '|';
            }
            rows += '\n';
        }
        Check(sqlite3_finalize(statement));
        return rows;
    }

    // Copies the tables into plain ones.
    void Copy(const std::vector<std::string>& tables) const {
        Run("ATTACH ':memory:' AS plain");
        for (const std::string& table : tables) {
            std::string columns = "instance INTEGER PRIMARY KEY";
            std::vector<std::string> references;
            for (const std::string& name : sql::ColumnNames(*model_, table)) {
                if (name == "instance") continue;
                const std::string type = Run("SELECT type FROM pragma_table_info('" + table +
                                             "', 'm') WHERE name = '" + name + "'");
                columns += ", " + sql::Quoted(name) + ' ' + type.substr(0, type.find('|'));
                if (type.starts_with("INTEGER")) references.push_back(name);
            }
            Run("CREATE TABLE plain." + table + '(' + columns + ')');
            Run("INSERT INTO plain." + table + " SELECT * FROM m." + table);
            for (const std::string& name : references) {
                Run("CREATE INDEX plain." + sql::Quoted("by_" + table + '_' + name) + " ON " +
                    table + '(' + sql::Quoted(name) + ')');
            }
        }
        Run("ANALYZE plain");
    }

    // The shortest of several rounds, in milliseconds. The query has $ in place of the database.
    double Time(const std::string& query, const std::string& database) const {
        const std::string text = In(query, database);
        double best = 1e300;
        for (int i = 0; i < kRounds; ++i) {
            const double start = Milliseconds();
            Run(text);
            best = std::min(best, Milliseconds() - start);
        }
        return best;
    }

    static std::string In(std::string query, const std::string& database) {
        for (std::size_t at = 0; (at = query.find('$')) != std::string::npos;) {
            query.replace(at, 1, database + '.');
        }
        return query;
    }

  private:
    void Check(int status) const {
        if (status != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(database_));
    }

    std::shared_ptr<const kor::Model> model_;
    sqlite3* database_ = nullptr;
    double opening_ = 0;
};

std::shared_ptr<const kor::Model> Read(const std::string& file) {
    exchange::Messages messages;
    exchange::DataSet dataSet = exchange::ReadDataSet(file, {}, {}, messages);
    if (dataSet.model == nullptr) throw std::runtime_error(messages.Errors().at(0).ToString());
    return std::move(dataSet.model);
}

constexpr const char* kJoin =
    "SELECT SUM(LENGTH(n.id)), SUM(LENGTH(p.name)) FROM $next_assembly_usage_occurrence n "
    "JOIN $product_definition d ON d.instance = n.related_product_definition "
    "JOIN $product_definition_formation f ON f.instance = d.formation "
    "JOIN $product p ON p.instance = f.of_product";

void Compare(const std::string& file) {
    const double start = Milliseconds();
    const Database database(Read(file));
    constexpr const char* kCount = "SELECT COUNT(*) FROM $cartesian_point";
    database.Run(Database::In(kCount, "m"));
    const double whole = Milliseconds() - start;
    std::printf("%-46s %9.1f ms", "reading, opening and counting", whole);
    Hold(whole, 1000);
    std::printf("%-46s %9.1f ms\n", "  of this, opening", database.Opening());

    database.Copy({"cartesian_point", "next_assembly_usage_occurrence", "product",
                   "product_definition", "product_definition_formation",
                   "product_definition_shape"});
    const double count = database.Time(kCount, "m");
    std::printf("%-46s %9.1f ms", "a count", count);
    Hold(count, 30);

    struct Question {
        const char* name;
        const char* query;
    };
    const Question questions[] = {
        {.name = "group by a reference",
         .query =
             "SELECT relating_product_definition, COUNT(*) FROM $next_assembly_usage_occurrence "
             "GROUP BY relating_product_definition"},
        {.name = "group by a text",
         .query = "SELECT name, COUNT(*) FROM $product_definition_shape GROUP BY name"},
        {.name = "join along references", .query = kJoin},
        {.name = "join against references",
         .query = "SELECT COUNT(*), SUM(LENGTH(n.id)) FROM $product p "
                  "CROSS JOIN $product_definition_formation f ON f.of_product = p.instance "
                  "CROSS JOIN $product_definition d ON d.formation = f.instance CROSS JOIN "
                  "$next_assembly_usage_occurrence n ON n.related_product_definition = d.instance"},
        {.name = "join and group",
         .query = "SELECT p.id, COUNT(*) FROM $next_assembly_usage_occurrence n "
                  "JOIN $product_definition d ON d.instance = n.related_product_definition "
                  "JOIN $product_definition_formation f ON f.instance = d.formation "
                  "JOIN $product p ON p.instance = f.of_product GROUP BY p.id ORDER BY 2 DESC, 1 "
                  "LIMIT 9"},
    };
    for (const auto& [name, query] : questions) {
        if (database.Run(Database::In(query, "m")) != database.Run(Database::In(query, "plain"))) {
            throw std::runtime_error(std::string(name) + ": other rows");
        }
        const double ours = database.Time(query, "m");
        const double plain = database.Time(query, "plain");
        std::printf("%-46s %9.1f ms, plain %6.1f ms, ratio %4.2f", name, ours, plain, ours / plain);
        Hold(ours / plain, 2);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: measure-sql FILE OCCURRENCES...\n");
        return 2;
    }
    try {
        Compare(argv[1]);
        double first = 0;
        for (int i = 2; i < argc; ++i) {
            const Database database(Read(std::string(argv[1]) + '.' + argv[i]));
            const double each = 1e6 * database.Time(kJoin, "m") / std::atof(argv[i]);
            if (i == 2) first = each;
            std::printf("join of %7s occurrences %30.0f ns each, ratio %4.2f", argv[i], each,
                        each / first);
            Hold(each / first, 2);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "measure-sql: %s\n", error.what());
        return 2;
    }
    return missed ? 1 : 0;
}
