// `orx sql`, and `.sql` in the shell.

#include "HostTest.h"
#include "script/SqlQuery.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

class Sql : public HostTest {
  protected:
    OrxResult Query(std::vector<std::string> queries, std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"sql", "-m", "parts.stp"});
        options.insert(options.end(), queries.begin(), queries.end());
        return Orx(options);
    }

    void ExpectFails(const OrxResult& result, const std::string& message) const {
        EXPECT_EQ(result.err, "orx: <command line>:" + message + "\n");
        EXPECT_EQ(result.status, 1);
    }
};

}  // namespace

// ---- Rows

TEST_F(Sql, PrintsCsvWithHeaders) {
    ExpectPrints(Query({"SELECT * FROM product"}),
                 "instance,entity,id,name,description,frame_of_reference\n"
                 "3,PRODUCT,P1,Bolt,,[2]\n"
                 "4,PRODUCT,P2,Nut,a nut,[2]\n");
    ExpectPrints(Query({"SELECT id FROM product WHERE id = 'P3'"}), "id\n");
    ExpectPrints(Query({"SELECT 'a, \"b\"' AS x, 1.0, 0.1, X'0aFf', NULL"}),
                 "x,1.0,0.1,X'0aFf',NULL\n\"a, \"\"b\"\"\",1.0,0.1,X'0AFF',\n");
}

TEST_F(Sql, PrintsObjects) {
    ExpectPrints(Query({"SELECT instance, id, description, 2.5 AS real FROM product"}, {"--json"}),
                 "{\"instance\":3,\"id\":\"P1\",\"description\":null,\"real\":2.5}\n"
                 "{\"instance\":4,\"id\":\"P2\",\"description\":\"a nut\",\"real\":2.5}\n");
}

TEST_F(Sql, PrintsBoxes) {
    ExpectPrints(Query({"SELECT id, name AS \"the name\", 'a' || char(10) || char(233) AS c "
                        "FROM product"},
                       {"--box"}),
                 "┌────┬──────────┬─────┐\n"
                 "│ id │ the name │ c   │\n"
                 "├────┼──────────┼─────┤\n"
                 "│ P1 │ Bolt     │ a\uFFFD\u00E9 │\n"
                 "│ P2 │ Nut      │ a\uFFFD\u00E9 │\n"
                 "└────┴──────────┴─────┘\n");
    ExpectPrints(Query({"SELECT id FROM product WHERE 0"}, {"--box"}), "");
}

TEST_F(Sql, RunsStatementsOneAfterTheOther) {
    ExpectPrints(Query({"SELECT 1 AS a; -- a remark\n SELECT 2 AS b;", "SELECT 3 AS c"}),
                 "a\n1\nb\n2\nc\n3\n");
    ExpectPrints(Orx({"sql", "-m", "parts.stp", "-"}, "SELECT id\nFROM product;\n"),
                 "id\nP1\nP2\n");
    ExpectPrints(Orx({"sql", "parts.stp", "SELECT COUNT(*) FROM product"}), "COUNT(*)\n2\n");
}

// ---- Errors

TEST_F(Sql, RefusesU0000) {
    const std::string query = "SELECT 1;\n ";
    const OrxResult result =
        Orx({"sql", "-m", "parts.stp", "-"}, query + std::string(1, '\0') + "SELECT 2;");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "orx: <standard input>:2:2: U+0000 cannot stand in a query\n");
}

TEST_F(Sql, TellsWhereAQueryIsWrong) {
    ExpectFails(Query({"SELECT 1", "SELECT idd\nFROM product"}), "2:8: no such column: idd");
    ExpectFails(Query({"SELECT 1;\n  SELECT FROM x"}), "2:10: near \"FROM\": syntax error");
    ExpectFails(Query({"SELECT *\nFROM produkt"}),
                "2:6: no such table: produkt; did you mean 'product'?");
    const OrxResult input = Orx({"sql", "-m", "parts.stp", "-"}, "\nSELECT nobody");
    EXPECT_EQ(input.err, "orx: <standard input>:2:8: no such column: nobody\n");
}

TEST_F(Sql, PrintsTheRowsBeforeAFailure) {
    const OrxResult result =
        Query({"SELECT GetInst(instance, 'ID') AS i FROM product "
               "UNION ALL SELECT GetInst(99, 'ID')"});
    EXPECT_EQ(result.out, "i\nP1\nP2\n");
    ExpectFails(result, "1:1: GetInst: argument 1: there is no instance #99 in model 'parts'");
}

TEST_F(Sql, NeedsAQuery) {
    EXPECT_EQ(Orx({"sql", "-m", "parts.stp"}).status, 2);
    EXPECT_EQ(Orx({"sql", "parts.stp"}).status, 2);
    EXPECT_EQ(Query({"SELECT 1"}, {"--box", "--csv"}).status, 2);
    EXPECT_EQ(Orx({"sql", "-m", "nowhere.stp", "SELECT 1"}).status, 2);
}

TEST_F(Sql, WritesNothing) {
    for (const char* query :
         {"INSERT INTO product(id) VALUES ('x')", "UPDATE product SET id = 'x'",
          "DELETE FROM product", "DELETE FROM parts.product WHERE instance = 3"}) {
        ExpectFails(Query({query}), "1:1: table product may not be modified");
    }
}

// ---- Models

TEST_F(Sql, NamesTablesByTheirModels) {
    folder.Write("more.stp",
                 ExchangeFile("AUTOMOTIVE_DESIGN", "#3=PRODUCT('Q1','Washer',$,());\n"));
    const std::vector<std::string> both = {"sql", "-m", "parts.stp", "-m", "b=more.stp"};
    const auto query = [&](const std::string& text) {
        std::vector<std::string> arguments = both;
        arguments.push_back(text);
        return Orx(arguments);
    };
    ExpectPrints(query("SELECT a.id, b.id FROM parts.product a JOIN b.product b USING (instance)"),
                 "id,id\nP1,Q1\n");
    // Without a name, the query uses the first model.
    ExpectPrints(query("SELECT COUNT(*) AS n FROM product"), "n\n2\n");
    ExpectPrints(query("SELECT GetInst(3, 'ID') AS a, GetInst('#3', 'ID') AS b, "
                       "GetInst('@b#3', 'ID') AS c, GetInst('@parts#4', 'ID') AS d"),
                 "a,b,c,d\nP1,P1,Q1,P2\n");
    const OrxResult unknown = query("SELECT GetInst('@c#3', 'ID')");
    EXPECT_THAT(unknown.err, HasSubstr("GetInst: argument 1: unknown model 'c'"));
}

TEST_F(Sql, RefusesNamesThatAreSqlitesOwn) {
    for (const char* name : {"main", "TEMP"}) {
        const OrxResult result = Orx({"sql", "-m", std::string(name) + "=parts.stp", "SELECT 1"});
        EXPECT_EQ(result.err, "orx: a model cannot be named '" + std::string(name) +
                                  "', as SQLite's own are (name models with NAME=...)\n");
        EXPECT_EQ(result.status, 2);
    }
    ExpectPrints(Orx({"sql", "-m", "a \"b\".c=parts.stp",
                      "SELECT COUNT(*) AS n FROM \"a \"\"b\"\".c\".product"}),
                 "n\n2\n");
}

TEST_F(Sql, TakesTenModels) {
    std::vector<std::string> arguments = {"sql"};
    for (int i = 0; i < 10; ++i) {
        arguments.insert(arguments.end(), {"-m", "m" + std::to_string(i) + "=parts.stp"});
    }
    arguments.emplace_back("SELECT COUNT(*) AS n FROM m9.product");
    ExpectPrints(Orx(arguments), "n\n2\n");
    arguments.insert(arguments.begin() + 1, {"-m", "m10=parts.stp"});
    const OrxResult result = Orx(arguments);
    EXPECT_THAT(result.err, StartsWith("orx: too many attached databases - max 10"));
    EXPECT_EQ(result.status, 2);
}

// ---- The shell

TEST_F(Sql, IsACommandOfTheShell) {
    const OrxResult result =
        Orx({"shell", "-m", "parts.stp"},
            ".sql SELECT name FROM product\nSET #3.NAME = 'Screw'\n"
            ".sql SELECT name FROM product WHERE instance = 3\n  .sql SELECT nam FROM product\n"
            "LET p = NEW PRODUCT(ID = 'P3')\n.sql SELECT COUNT(*) AS n FROM product\n");
    EXPECT_EQ(result.out, "name\nBolt\nNut\nname\nScrew\nn\n3\n");
    EXPECT_EQ(result.err,
              "orx: 4:15: no such column: nam\n"
              "      .sql SELECT nam FROM product\n"
              "                  ^\n");
    EXPECT_EQ(result.status, 1);
}

namespace {

class SqlCompletion : public testing::Test {
  protected:
    SqlCompletion() {
        exchange::Messages messages;
        session_.Add({"parts", "", exchange::ParseDataSet(Parts(), "parts", {}, {}, messages)});
    }
    std::vector<std::string> Candidates(const std::string& query) const {
        return host::CompleteSql(query, session_).candidates;
    }

    host::Session session_;
};

}  // namespace

TEST_F(SqlCompletion, KnowsTablesColumnsAndFunctions) {
    EXPECT_THAT(Candidates("SELECT id FROM PRODUCT_DEFINITION_FORM"),
                Contains("product_definition_formation"));
    EXPECT_THAT(Candidates("SELECT GetAbsP"), ElementsAre("GetAbsPlacement("));
    EXPECT_THAT(Candidates("SELECT p.de"), IsEmpty());
    EXPECT_THAT(Candidates("SELECT id FROM product p WHERE p.de"), ElementsAre("description"));
    EXPECT_THAT(Candidates("SELECT id FROM product AS p WHERE p.de"), ElementsAre("description"));
    EXPECT_THAT(Candidates("SELECT id FROM product WHERE product.inst"), ElementsAre("instance"));
    EXPECT_THAT(Candidates("SELECT id FROM product WHERE descr"), Contains("description"));
    EXPECT_THAT(Candidates("SELECT id FROM parts.product_cont"), ElementsAre("product_context"));
    EXPECT_THAT(Candidates("SELECT id FROM par"), Contains("parts"));
    EXPECT_THAT(Candidates("SELECT id FROM product WHERE name = 'prod"), IsEmpty());
    EXPECT_EQ(host::CompleteSql("SELECT prod", session_).start, 7U);
}
