// Failures while databases are used: a save is then complete or has no effect, there is a clear
// message, and no connection is left open.

#include <gmock/gmock.h>
#include <libpq-fe.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <thread>

#include "Places.h"
#include "Server.h"

namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

// A file of `count` parts and links, with `mark` in each.
std::string PartsFile(const std::string& mark, int count) {
    std::string text =
        "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\n"
        "FILE_SCHEMA(('CDMA'));\nENDSEC;\nDATA;\n";
    for (int i = 1; i <= count; ++i) {
        const std::string part = '#' + std::to_string(2 * i);
        const std::string link = '#' + std::to_string(2 * i + 1);
        text += part + "=PART_OBJECT('" + mark + "',$,$,$,$,(" + link + "),$,$,$,$);\n" + link +
                "=PART_LINK('" + mark + "'," + part + ",#2,(1.,2.,3.),$,$,$);\n";
    }
    return text + "ENDSEC;\nEND-ISO-10303-21;\n";
}

// Runs `orx copy`, which may be killed before it ends.
class Copying {
  public:
    Copying(const std::string& from, const std::string& to, std::size_t longestFile = 0) {
        process_ = fork();
        if (process_ != 0) return;
        if (longestFile != 0) {
            const rlimit limit{longestFile, longestFile};
            setrlimit(RLIMIT_FSIZE, &limit);
        }
        const int null = open("/dev/null", O_WRONLY);
        dup2(null, STDERR_FILENO);
        execl(ORX_PROGRAM, ORX_PROGRAM, "copy", from.c_str(), to.c_str(), nullptr);
        _exit(127);
    }
    ~Copying() { Wait(); }
    Copying(const Copying&) = delete;
    Copying& operator=(const Copying&) = delete;

    void Kill() const { kill(process_, SIGKILL); }
    int Wait() {
        if (process_ == 0) return status_;
        waitpid(process_, &status_, 0);
        process_ = 0;
        return status_;
    }

  private:
    pid_t process_;
    int status_ = 0;
};

class Faults : public Relational {
  protected:
    void SetUp() override {
        Relational::SetUp();
        if (IsSkipped()) return;
        for (const char* mark : {"A", "B"}) {
            file_[*mark - 'A'] = files_.Write(std::string(mark) + ".stp", PartsFile(mark, kCount));
            text_[*mark - 'A'] = Open(file_[*mark - 'A']).Text();
        }
    }
    // The file whose contents are stored: A, B, or neither.
    std::string Stored() const {
        const std::string text = Open(Name()).Text();
        return text == text_[0] ? "A" : text == text_[1] ? "B" : "neither: " + text.substr(0, 2000);
    }

    static constexpr int kCount = 200;
    TemporaryDirectory files_;
    std::string file_[2];
    std::string text_[2];
};

TEST_P(Faults, AKilledSaveIsWholeOrNotThere) {
    const Clock::time_point start = Clock::now();
    ASSERT_EQ(Copying(file_[0], Name()).Wait(), 0);
    const auto whole = std::chrono::duration_cast<microseconds>(Clock::now() - start);
    std::mt19937 random(18);
    std::uniform_int_distribution<long> delay(0, whole.count());
    int kept = 0;
    std::string before = "A";
    // On a server, which does the writing, fewer are enough.
    const int kills = At().IsSqlite() ? 100 : 15;
    for (int i = 0; i < kills; ++i) {
        const std::string next = before == "A" ? "B" : "A";
        {
            const Copying copying(file_[next[0] - 'A'], Name());
            std::this_thread::sleep_for(microseconds(delay(random)));
            copying.Kill();
        }
        const std::string after = Stored();
        ASSERT_THAT(after, AnyOf("A", "B"));
        kept += after == before ? 1 : 0;
        before = after;
    }
    // Most are killed before they end.
    EXPECT_GT(kept, kills / 10);
}

TEST_P(Faults, TwoSaversComeOneAfterTheOther) {
    ASSERT_EQ(Copying(file_[0], Name()).Wait(), 0);
    for (int i = 0; i < 5; ++i) {
        Copying a(file_[0], Name());
        Copying b(file_[1], Name());
        EXPECT_TRUE(a.Wait() == 0 || b.Wait() == 0);
        ASSERT_THAT(Stored(), AnyOf("A", "B"));
    }
    // If two have loaded the same data, only one can write.
    const Opened first = Open(Name());
    const Opened second = Open(Name());
    for (const Opened* each : {&first, &second}) {
        kor::Instance::Of(*each->Model().Find(2)).PutAttr(SdaiString("S_DESC"), SdaiString("x"));
    }
    EXPECT_THAT(Save(first.dataSet, Name()), IsEmpty());
    EXPECT_THAT(Save(second.dataSet, Name()), ElementsAre("another has changed meanwhile: #2"));
}

TEST_P(Faults, TwoSaversMakeTheTablesOnce) {
    Copying a(file_[0], Name());
    Copying b(file_[1], Name());
    EXPECT_EQ(a.Wait(), 0);
    EXPECT_EQ(b.Wait(), 0);
    EXPECT_THAT(Stored(), AnyOf("A", "B"));
}

// A dangling reference, inserted by another program: the database rejects it, or loading does.
TEST_P(Faults, ReferencesToNothingAreTold) {
    ASSERT_EQ(Copying(file_[0], Name()).Wait(), 0);
    const std::string bad = "INSERT INTO part_link (instance, id, ref) VALUES (9999, 'x', 8888)";
    if (!At().IsSqlite()) {
        EXPECT_THROW(At().Execute(bad), std::exception);
        return;
    }
    At().Execute(bad);
    EXPECT_THAT(Open(Name()).errors,
                ElementsAre("table part_link, row 9999, column ref: there is no instance #8888"));
}

ON_EACH_DATABASE(Faults);

// ---- SQLite alone

TEST(Sqlite, IsToldWhenItIsLocked) {
    const std::unique_ptr<Place> place = NewPlace("sqlite");
    const exchange::DataSet dataSet = DataSetOf("cdma", "#1=PART_OBJECT('p',$,$,$,$,$,$,$,$,$);");
    ASSERT_THAT(Save(dataSet, place->Name()), IsEmpty());
    sqlite3* other = nullptr;
    sqlite3_open(relational::FileOf(place->Name()).c_str(), &other);
    sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
    EXPECT_THAT(Open(place->Name()).errors,
                ElementsAre("the database is locked by another program"));
    kor::Instance::Of(*dataSet.model->Find(1)).PutAttr(SdaiString("S_DESC"), SdaiString("x"));
    EXPECT_THAT(Save(dataSet, place->Name()),
                ElementsAre("the database is locked by another program"));
    sqlite3_close(other);
    EXPECT_THAT(Save(dataSet, place->Name()), IsEmpty());
}

TEST(Sqlite, StaysAsItIsWhenTheFileMayNotGrow) {
    const TemporaryDirectory files;
    const std::string name = "sqlite:" + files / "x.db";
    const std::string small = files.Write("small.stp", PartsFile("A", 3));
    const std::string large = files.Write("large.stp", PartsFile("B", 5000));
    ASSERT_EQ(Copying(small, name).Wait(), 0);
    EXPECT_EQ(WEXITSTATUS(Copying(large, name, 150'000).Wait()), 2);
    EXPECT_EQ(Open(name).Text(), Open(small).Text());
    // A new file is removed again.
    EXPECT_EQ(WEXITSTATUS(Copying(large, "sqlite:" + files / "y.db", 150'000).Wait()), 2);
    EXPECT_THAT(RunOrx({"describe", "sqlite:" + files / "y.db"}).err,
                HasSubstr("unable to open database file"));
}

TEST(Sqlite, TellsWhatIsNoDatabase) {
    const TemporaryDirectory files;
    const std::string file = files.Write("x.db", PartsFile("A", 30));
    EXPECT_THAT(Open("sqlite:" + file).errors, ElementsAre("file is not a database"));
    EXPECT_THAT(Save(DataSetOf("cdma", ""), "sqlite:" + file),
                ElementsAre("file is not a database"));
    EXPECT_EQ(ReadFile(file), PartsFile("A", 30));
    EXPECT_THAT(Open("sqlite:" + files / "none.db").errors,
                ElementsAre("unable to open database file"));
    EXPECT_THAT(Save(DataSetOf("cdma", ""), "sqlite:" + files / "no/folder.db"),
                ElementsAre("unable to open database file"));
}

// ---- PostgreSQL alone

class Postgresql : public testing::Test {
  protected:
    void SetUp() override {
        if (!Server::IsInstalled()) GTEST_SKIP() << "postgresql is not installed";
    }
};

TEST_F(Postgresql, AServerThatStopsLeavesASaveWholeOrNotThere) {
    const TemporaryDirectory files;
    const std::string a = files.Write("a.stp", PartsFile("A", 200));
    const std::string b = files.Write("b.stp", PartsFile("B", 20'000));
    const std::string texts[] = {Open(a).Text(), Open(b).Text()};
    Server server;
    const std::string name = server.Uri("public");
    int whole = 0;
    for (const int delay : {60, 150, 250, 400}) {
        ASSERT_EQ(Copying(a, name).Wait(), 0);
        Copying copying(b, name);
        std::this_thread::sleep_for(std::chrono::milliseconds(delay));
        server.Kill();
        const bool saved = copying.Wait() == 0;
        EXPECT_THAT(Open(name).errors, ElementsAre(HasSubstr("connection to server")));
        server.Start();
        const std::string text = Open(name).Text();
        EXPECT_TRUE(text == texts[0] || text == texts[1]);
        EXPECT_TRUE(!saved || text == texts[1]);
        whole += text == texts[1] ? 1 : 0;
    }
    EXPECT_LT(whole, 4);
}

// A disk of a few megabytes, for the server's user; unmounted with the object.
class SmallDisk {
  public:
    SmallDisk() : place_(folder_ / "disk") {
        std::filesystem::permissions(folder_.Path(), std::filesystem::perms::owner_all |
                                                         std::filesystem::perms::others_exec);
        std::filesystem::create_directory(place_);
        mounted_ = mount("tmpfs", place_.c_str(), "tmpfs", 0, "size=6m,uid=65534,mode=0700") == 0;
    }
    ~SmallDisk() {
        if (mounted_) umount2(place_.c_str(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool IsMounted() const { return mounted_; }
    const std::string& Place() const { return place_; }

  private:
    TemporaryDirectory folder_;
    std::string place_;
    bool mounted_ = false;
};

TEST_F(Postgresql, AFullDiskLeavesWhatWasThere) {
    const SmallDisk disk;
    if (geteuid() != 0 || !disk.IsMounted()) GTEST_SKIP() << "a disk cannot be mounted here";
    const TemporaryDirectory files;
    const std::string small = files.Write("small.stp", PartsFile("A", 30));
    const std::string large = files.Write("large.stp", PartsFile("B", 20'000));
    Server server;
    PGconn* connection = PQconnectdb(server.Uri("public").c_str());
    for (const std::string& statement :
         {"CREATE TABLESPACE small LOCATION '" + disk.Place() + "'",
          std::string("ALTER ROLE orx SET default_tablespace = small")}) {
        PGresult* result = PQexec(connection, statement.c_str());
        EXPECT_EQ(PQresultStatus(result), PGRES_COMMAND_OK) << PQerrorMessage(connection);
        PQclear(result);
    }
    PQfinish(connection);
    const std::string name = server.Uri("public");
    ASSERT_THAT(Save(Open(small).dataSet, name), IsEmpty());

    EXPECT_THAT(Save(Open(large).dataSet, name), ElementsAre(HasSubstr("No space left on device")));
    EXPECT_EQ(Open(name).Text(), Open(small).Text());
    const OrxResult result = RunOrx({"copy", large, name});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("No space left on device"));
    EXPECT_EQ(Open(name).Text(), Open(small).Text());
    // What fits is still saved.
    const exchange::DataSet stored = Open(name).dataSet;
    kor::Instance::Of(*stored.model->Find(2)).PutAttr(SdaiString("S_DESC"), SdaiString("x"));
    EXPECT_THAT(Save(stored, name), IsEmpty());
}

TEST_F(Postgresql, NoConnectionIsLeftOpen) {
    const std::unique_ptr<Place> place = NewPlace("postgresql");
    const exchange::DataSet dataSet = DataSetOf("cdma", "#1=PART_OBJECT('p',$,$,$,$,$,$,$,$,$);");
    ASSERT_THAT(Save(dataSet, place->Name()), IsEmpty());
    Open(place->Name());
    place->Execute("UPDATE part_object SET s_desc = 'of another'");
    kor::Instance::Of(*dataSet.model->Find(1)).PutAttr(SdaiString("S_DESC"), SdaiString("x"));
    EXPECT_THAT(Save(dataSet, place->Name()), Not(IsEmpty()));
    place->Execute("UPDATE orx_schema SET layout = 7");
    EXPECT_THAT(Open(place->Name()).errors, Not(IsEmpty()));
    Lines others;
    for (int i = 0; i < 100; ++i) {
        others = place->Query(
            "SELECT count(*) FROM pg_stat_activity WHERE pid <> pg_backend_pid() "
            "AND backend_type = 'client backend'");
        if (others == Lines{"0"}) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_THAT(others, ElementsAre("0"));
}

// Errors of the server are reported.
TEST_F(Postgresql, TellsWhatTheServerRefuses) {
    const std::unique_ptr<Place> place = NewPlace("postgresql");
    const std::string name = place->Name();
    const std::string schema = name.substr(name.rfind("%3D") + 3);
    place->Execute("CREATE ROLE reader LOGIN; GRANT USAGE ON SCHEMA " + schema + " TO reader");
    const exchange::DataSet dataSet = DataSetOf("cdma", "#1=PART_OBJECT('p',$,$,$,$,$,$,$,$,$);");
    ASSERT_THAT(Save(dataSet, name), IsEmpty());
    std::string other = name;
    other.replace(other.find("orx@"), 4, "reader@");
    kor::Instance::Of(*dataSet.model->Find(1)).PutAttr(SdaiString("S_DESC"), SdaiString("x"));
    EXPECT_THAT(Save(dataSet, other), ElementsAre(HasSubstr("permission denied")));
    EXPECT_THAT(Open(other).errors, ElementsAre(HasSubstr("permission denied")));
    place->Execute("DROP OWNED BY reader; DROP ROLE reader");
}

TEST_F(Postgresql, KeepsPasswordsToItself) {
    const TemporaryDirectory files;
    const std::string trace = files / "trace";
    const std::string file = files.Write("a.stp", PartsFile("A", 1));
    for (const std::string uri :
         {"postgresql://me:s3cret@/parts?host=/nowhere", "postgresql://me:s3cret@h:badport/parts",
          "postgresql://me:s3cr@t@nowhere.invalid/parts?host=/nowhere&password=s3cret",
          "postgresql:///parts?host=/nowhere&password=s3cret", "postgresql://me:s3cret@[h/parts"}) {
        for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
                 {"describe", uri},
                 {"describe", "--json", "-m", uri},
                 {"call", "-t", trace, "-m", uri, "1"},
                 {"call", "-o", uri, "-m", "m=" + file, "1"},
                 {"call", "-o", "m=" + uri, "-m", "m=" + file, "1"},
                 {"call", "-o", "m=" + uri, "-o", "m=" + uri, "-m", "m=" + file, "1"},
                 {"call", "-n", uri, "1"},
                 {"copy", file, uri},
                 {"copy", file, file, uri},
                 {"diff", file, uri},
                 {uri},
                 {"no" + uri}}) {
            const OrxResult result = RunOrx(arguments);
            EXPECT_EQ(result.status, 2);
            EXPECT_THAT(result.out + result.err + ReadFile(trace), Not(HasSubstr("s3cr")));
        }
    }
}

// ---- Results after copies

TEST(Answers, StayTheSameAfterEachCopy) {
    struct Question {
        const char* file;
        std::vector<std::string> statements;
    };
    const std::string examples = std::string(SOURCE_DIRECTORY) + "/examples/";
    const Question questions[] = {
        {"assembly.stp",
         {"EACH n IN NEXT_ASSEMBLY_USAGE_OCCURRENCE: GetAbsPlacement(n)",
          "EACH n IN ITEM_DEFINED_TRANSFORMATION: GetItem(1, n); GetItem(2, n)"}},
        {"database.stp",
         {"EACH c IN CONFIGURATION_ITEM: ORXIdCfg(c)",
          "EACH e IN EFFECTIVITY_OBJECT: ORXIdEff(#1, e)",
          "EACH p IN PART_OBJECT: IsVersion(p, 1); "
          "IsVersion(p, 0)",
          "EACH p IN PART_OBJECT: IsNewer(p, #5); IsNewer(#5, p)"}},
    };
    for (const Question& question : questions) {
        const std::string file = examples + question.file;
        const auto ask = [&](const std::string& from) {
            std::vector<std::string> arguments{"call", "-m", "m=" + from};
            for (const std::string& statement : question.statements) arguments.push_back(statement);
            const OrxResult result = RunOrx(arguments);
            EXPECT_EQ(result.status, 0) << result.err;
            EXPECT_GT(result.out.size(), 100U);
            return result.out;
        };
        const std::string answers = ask(file);
        std::string from = file;
        std::vector<std::unique_ptr<Place>> places;
        for (const char* kind : {"sqlite", "postgresql", "sqlite"}) {
            places.push_back(NewPlace(kind));
            if (places.back() == nullptr) continue;
            const std::string to = places.back()->Name();
            EXPECT_EQ(RunOrx({"copy", from, to}).err, "");
            EXPECT_EQ(ask(to), answers) << kind;
            EXPECT_EQ(RunOrx({"diff", file, to}).status, 0);
            from = to;
        }
        const TemporaryDirectory files;
        EXPECT_EQ(RunOrx({"copy", from, files / "last.stp"}).status, 0);
        EXPECT_EQ(RunOrx({"copy", file, files / "first.stp"}).status, 0);
        EXPECT_EQ(ReadFile(files / "last.stp"), ReadFile(files / "first.stp"));
    }
}

// Every command accepts a database in place of a file.
TEST(Commands, TakeDatabases) {
    const std::unique_ptr<Place> place = NewPlace("sqlite");
    const std::string name = place->Name();
    const std::string file = std::string(SOURCE_DIRECTORY) + "/examples/database.stp";
    ASSERT_EQ(RunOrx({"copy", file, name}).err, "");
    for (const std::vector<std::string>& command :
         std::vector<std::vector<std::string>>{{"tree"}, {"check"}, {"report", "-o", "-"}}) {
        std::vector<std::string> ofFile = command;
        std::vector<std::string> ofDatabase = command;
        ofFile.push_back(file);
        ofDatabase.push_back(name);
        const OrxResult result = RunOrx(ofDatabase);
        EXPECT_EQ(result.status, 0) << result.err;
        if (command[0] == "report") continue;
        EXPECT_EQ(result.out, RunOrx(ofFile).out);
    }
    EXPECT_THAT(RunOrx({"describe", name}).out, HasSubstr("file " + name));
    EXPECT_THAT(RunOrx({"shell", "-m", name}, "#1.S_PART_NUMBER\n").out, HasSubstr("'TR-100'"));
    // Changes made by a script are saved to the same database, or elsewhere.
    EXPECT_EQ(RunOrx({"call", "-m", "db=" + name, "-o", "db=" + name,
                      "SET #1.S_DESC = 'Trolley, painted'"})
                  .err,
              "");
    EXPECT_THAT(place->Query("SELECT s_desc FROM part_object WHERE instance = 1"),
                ElementsAre("Trolley, painted"));
    EXPECT_EQ(RunOrx({"diff", file, name}).status, 1);
    // The tables can be created by hand.
    const std::unique_ptr<Place> own = NewPlace("sqlite");
    own->Execute(RunOrx({"schema", "cdma", "--sql", "sqlite"}).out);
    own->Execute("INSERT INTO part_object (instance, s_part_number) VALUES (5, 'own')");
    EXPECT_EQ(RunOrx({"call", "-m", own->Name(), "#5.S_PART_NUMBER"}).out, "'own'\n");
    if (const std::unique_ptr<Place> server = NewPlace("postgresql")) {
        server->Execute(RunOrx({"schema", "AUTOMOTIVE_DESIGN", "--sql", "postgresql"}).out);
        EXPECT_THAT(Open(server->Name()).errors, IsEmpty());
        EXPECT_EQ(Save(DataSetOf("AUTOMOTIVE_DESIGN", "#1=PRODUCT('p','',$,());"), server->Name()),
                  Lines());
    }
    EXPECT_THAT(RunOrx({"schema", "cdma"}).out, HasSubstr("ENTITY part_link;"));
    const std::string schema = std::string(SOURCE_DIRECTORY) + "/examples/associations.exp";
    const OrxResult text = RunOrx({"schema", "-s", schema, "product_documents"});
    EXPECT_TRUE(text.out.starts_with("SCHEMA ") && text.out.ends_with("END_SCHEMA;\n")) << text.out;
    EXPECT_THAT(RunOrx({"schema", "cdma", "--sql", "sqlit"}).err,
                HasSubstr("did you mean 'sqlite'?"));
}

}  // namespace
