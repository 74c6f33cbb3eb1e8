// Compares data sets in databases with the same rows read and written directly: by SQLite's own
// interface, by psql. Prints a table, and fails if a figure exceeds what docs/databases.md
// promises.
//
//     orx-bench-databases [PARTS]

#include <libpq-fe.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "DataSets.h"
#include "Server.h"

namespace {

bool allGood = true;

double Seconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// A row of the table; `most` is the largest ratio allowed.
void Report(const char* what, double ours, double plain, double most) {
    const bool good = ours <= most * plain;
    allGood = allGood && good;
    std::printf("%-44s %8.2f s %8.2f s %6.2f  %s\n", what, ours, plain, ours / plain,
                good ? "" : "TOO SLOW");
    std::fflush(stdout);
}

// Memory in kilobytes, as the system counts it: VmRSS, VmHWM.
long Memory(const std::string& which) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(which + ':', 0) == 0) return std::atol(line.c_str() + which.size() + 1);
    }
    return 0;
}

[[noreturn]] void Fail(const std::string& why) { throw std::runtime_error(why); }

std::string PartsFile(long count) {
    std::string text =
        "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\n"
        "FILE_SCHEMA(('CDMA'));\nENDSEC;\nDATA;\n";
    for (long i = 1; i <= count; ++i) {
        const std::string n = std::to_string(i);
        const std::string link = '#' + std::to_string(count + i);
        text += '#' + n + "=PART_OBJECT('PN-" + n + "','A'," + std::to_string(i % 9) +
                ",'assembly','Description of part number " + n + "',(" + link + "),$,$,$,$);\n";
    }
    for (long i = 1; i <= count; ++i) {
        text += '#' + std::to_string(count + i) + "=PART_LINK('L" + std::to_string(i) + "',#" +
                std::to_string(i) + ",#" + std::to_string(i % count + 1) + ",(" +
                std::to_string(i % 1000) + ".5,0.25,1.),$,$,$);\n";
    }
    return text + "ENDSEC;\nEND-ISO-10303-21;\n";
}

exchange::DataSet Open(const std::string& name) {
    exchange::Messages messages;
    exchange::DataSet dataSet = relational::Open(name, {}, {}, messages);
    if (dataSet.model == nullptr) Fail(messages.Errors().front().ToString());
    return dataSet;
}

void Save(const exchange::DataSet& dataSet, const std::string& name) {
    exchange::Messages messages;
    if (!relational::Save(dataSet, name, messages)) Fail(messages.Errors().front().ToString());
}

void Change(const exchange::DataSet& dataSet, long count) {
    static int round = 0;
    ++round;
    for (long i = 1; i <= count; ++i) {
        kor::Instance::Of(*dataSet.model->Find(static_cast<std::uint64_t>(i * 97)))
            .PutAttr(SdaiString("S_DESC"),
                     SdaiPrimitiveH(SdaiString("changed " + std::to_string(round))));
    }
}

// Loads in a separate process and compares its peak memory with that of the model.
void MeasureMemory(const char* what, const std::string& name) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        const long before = Memory("VmRSS");
        const exchange::DataSet dataSet = Open(name);
        const long model = Memory("VmRSS") - before;
        const long most = Memory("VmHWM") - before;
        std::printf("%-44s %7.0f MB %7.0f MB %6.2f  %s\n", what, static_cast<double>(most) / 1024,
                    static_cast<double>(model) / 1024,
                    static_cast<double>(most) / static_cast<double>(model),
                    most <= 2 * model ? "" : "TOO MUCH");
        std::fflush(stdout);
        _exit(most <= 2 * model ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    allGood = allGood && status == 0;
}

// The time for saving alone, with and without changes, in any kind of database.
void MeasureChanges(const std::string& place, const std::string& name) {
    const exchange::DataSet dataSet = Open(name);
    double empty = 1e9;
    double changed = 1e9;
    for (int i = 0; i < 3; ++i) {
        empty = std::min(empty, Seconds([&] { Save(dataSet, name); }));
        Change(dataSet, 100);
        changed = std::min(changed, Seconds([&] { Save(dataSet, name); }));
    }
    const bool good = changed <= empty + 0.2;
    allGood = allGood && good;
    std::printf("%-44s %8.2f s %8.2f s         %s\n", ("save 100 changes, none: " + place).c_str(),
                changed, empty, good ? "" : "TOO SLOW");
}

// ---- Plain SQLite

const std::vector<std::string>& Tables() {
    static const std::vector<std::string> kTables{"part_object", "part_link", "part_object_korass",
                                                  "part_link_origin"};
    return kTables;
}

void Exec(sqlite3* database, const std::string& sql) {
    if (sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        Fail(sqlite3_errmsg(database));
    }
}

void StepThrough(const std::string& file) {
    sqlite3* database = nullptr;
    sqlite3_open(file.c_str(), &database);
    Exec(database, "BEGIN");
    for (const std::string& table : Tables()) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(database, ("SELECT * FROM " + table).c_str(), -1, &statement, nullptr);
        while (sqlite3_step(statement) == SQLITE_ROW) {
            for (int i = 0; i < sqlite3_column_count(statement); ++i) {
                if (sqlite3_column_type(statement, i) == SQLITE_TEXT) {
                    sqlite3_column_text(statement, i);
                } else {
                    sqlite3_column_int64(statement, i);
                }
            }
        }
        sqlite3_finalize(statement);
    }
    sqlite3_close(database);
}

// Inserts the same rows into the same tables, by prepared statements in one transaction.
void InsertPlainly(const std::string& file, long count) {
    sqlite3* database = nullptr;
    sqlite3_open(file.c_str(), &database);
    Exec(database, "BEGIN");
    Exec(database, relational::TablesAsSql(*exchange::BuiltInSchema("cdma"), "sqlite"));
    const auto prepare = [&](const char* sql) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(database, sql, -1, &statement, nullptr) != SQLITE_OK) {
            Fail(sqlite3_errmsg(database));
        }
        return statement;
    };
    const auto run = [&](sqlite3_stmt* statement) {
        if (sqlite3_step(statement) != SQLITE_DONE) Fail(sqlite3_errmsg(database));
        sqlite3_reset(statement);
    };
    const auto text = [](sqlite3_stmt* statement, int index, const std::string& value) {
        sqlite3_bind_text(statement, index, value.c_str(), static_cast<int>(value.size()),
                          SQLITE_TRANSIENT);
    };
    sqlite3_stmt* part = prepare(
        "INSERT INTO part_object VALUES (?,?,?,?,?,?,1,NULL,NULL,NULL,"
        "NULL)");
    sqlite3_stmt* korass = prepare("INSERT INTO part_object_korass VALUES (?,1,?)");
    sqlite3_stmt* link = prepare("INSERT INTO part_link VALUES (?,?,?,?,3,NULL,NULL,NULL)");
    sqlite3_stmt* origin = prepare("INSERT INTO part_link_origin VALUES (?,?,?)");
    for (long i = 1; i <= count; ++i) {
        const std::string n = std::to_string(i);
        sqlite3_bind_int64(part, 1, i);
        text(part, 2, "PN-" + n);
        text(part, 3, "A");
        sqlite3_bind_int64(part, 4, i % 9);
        text(part, 5, "assembly");
        text(part, 6, "Description of part number " + n);
        run(part);
    }
    for (long i = 1; i <= count; ++i) {
        sqlite3_bind_int64(korass, 1, i);
        sqlite3_bind_int64(korass, 2, count + i);
        run(korass);
    }
    for (long i = 1; i <= count; ++i) {
        sqlite3_bind_int64(link, 1, count + i);
        text(link, 2, "L" + std::to_string(i));
        sqlite3_bind_int64(link, 3, i);
        sqlite3_bind_int64(link, 4, i % count + 1);
        run(link);
    }
    for (long i = 1; i <= count; ++i) {
        const double place[] = {static_cast<double>(i % 1000) + 0.5, 0.25, 1};
        for (int j = 0; j < 3; ++j) {
            sqlite3_bind_int64(origin, 1, count + i);
            sqlite3_bind_int64(origin, 2, j + 1);
            sqlite3_bind_double(origin, 3, place[j]);
            run(origin);
        }
    }
    for (sqlite3_stmt* statement : {part, korass, link, origin}) sqlite3_finalize(statement);
    Exec(database, "COMMIT");
    sqlite3_close(database);
}

// ---- psql

void Psql(const std::string& uri, const std::string& commands) {
    const TemporaryDirectory files;
    const std::string file = files.Write("commands.sql", commands);
    const std::string line = "psql -q -X -v ON_ERROR_STOP=1 -f " + file + " '" + uri + "'";
    if (std::system(line.c_str()) != 0) Fail("psql fails");
}

int Measure(int argc, char** argv) {
    const long count = argc > 1 ? std::atol(argv[1]) : 1'000'000;
    const TemporaryDirectory files;
    const std::string file = files.Write("parts.stp", PartsFile(count));
    const std::string database = files / "parts.db";
    const std::string sqlite = "sqlite:" + database;
    std::printf("%ld parts with %ld links %21s %10s  ratio\n", count, count, "ours", "plain");

    {
        const exchange::DataSet dataSet = Open(file);
        const double ours = Seconds([&] { Save(dataSet, sqlite); });
        const double plain = Seconds([&] { InsertPlainly(files / "plain.db", count); });
        Report("save anew, insert: SQLite", ours, plain, 3);
    }
    StepThrough(database);
    const double stepped = Seconds([&] { StepThrough(database); });
    Report("load, SELECT: SQLite", Seconds([&] { Open(sqlite); }), stepped, 3);
    MeasureChanges("SQLite", sqlite);
    MeasureMemory("memory at most, of the model: SQLite", sqlite);
    if (!Server::IsInstalled()) {
        std::puts("PostgreSQL is not installed");
        return allGood ? 0 : 1;
    }

    Server server;
    const std::string uri = server.Uri("public");
    {
        const exchange::DataSet dataSet = Open(file);
        const double ours = Seconds([&] { Save(dataSet, uri); });
        std::string out;
        std::string in = "BEGIN;\n";
        for (const std::string& table : Tables()) {
            out += "\\copy " + table + " TO '" + files / table + "'\n";
        }
        Psql(uri, out);
        // The same tables; keys are added after the rows.
        std::string keys;
        const std::string sql =
            relational::TablesAsSql(*exchange::BuiltInSchema("cdma"), "postgresql");
        const std::size_t first = sql.find("ALTER TABLE");
        in += "CREATE SCHEMA plain; SET search_path = plain;\n" + sql.substr(0, first);
        for (const std::string& table : Tables()) {
            in += "\\copy " + table + " FROM '" + files / table + "'\n";
        }
        in += sql.substr(first) + "COMMIT;\n";
        const double plain = Seconds([&] { Psql(uri, in); });
        Report("save anew, COPY FROM: PostgreSQL", ours, plain, 3);
    }
    std::string toNowhere;
    for (const std::string& table : Tables()) toNowhere += "\\copy " + table + " TO '/dev/null'\n";
    Psql(uri, toNowhere);
    const double copied = Seconds([&] { Psql(uri, toNowhere); });
    Report("load, COPY TO: PostgreSQL", Seconds([&] { Open(uri); }), copied, 3);
    MeasureChanges("PostgreSQL", uri);
    MeasureMemory("memory at most, of the model: PostgreSQL", uri);
    return allGood ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Measure(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "orx-bench-databases: " << error.what() << '\n';
        return 1;
    }
}
