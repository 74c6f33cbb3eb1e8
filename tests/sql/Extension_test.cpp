// The extension, in the SQLite shell.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>

#include "Orx.h"

using testing::HasSubstr;

namespace {

constexpr const char* kParts =
    "ISO-10303-21;HEADER;FILE_DESCRIPTION((''),'2;1');FILE_NAME('','',(''),(''),'','','');"
    "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));ENDSEC;DATA;#1=PRODUCT('P1','Bolt',$,());"
    "#2=PRODUCT_DEFINITION_FORMATION('A',$,#1);ENDSEC;END-ISO-10303-21;";

class SqliteExtension : public testing::Test {
  protected:
    SqliteExtension() {
        folder.Write("parts.stp", kParts);
        folder.Write("bad.stp", "no exchange file");
    }

    // The output of the shell, including its error messages.
    std::string Run(const std::string& input, const std::string& database = ":memory:") const {
        const std::string script =
            folder.Write("script.sql", ".load " SQLITE_EXTENSION "\n" + input + "\n");
        const std::string command = "cd " + folder.Path() + " && " + SQLITE_PRELOAD + " sqlite3 " +
                                    database + " < " + script + " 2>&1";
        std::FILE* shell = popen(command.c_str(), "r");
        std::string output;
        std::array<char, 4096> block;
        for (std::size_t size = 0;
             (size = std::fread(block.data(), 1, block.size(), shell)) != 0;) {
            output.append(block.data(), size);
        }
        status_ = pclose(shell);
        return output;
    }

    TemporaryDirectory folder;
    mutable int status_ = 0;
};

TEST_F(SqliteExtension, OpensModels) {
    EXPECT_EQ(
        Run("SELECT orx_open('parts.stp', 'step');\n"
            "SELECT * FROM step.product;\nSELECT id, GetInst(instance, 'NAME') FROM product;\n"
            "SELECT f.id FROM product p JOIN product_definition_formation f ON "
            "f.of_product = p.instance;\n"),
        "step\n1|PRODUCT|P1|Bolt||[]\nP1|Bolt\nA\n");
    EXPECT_EQ(status_, 0);
    // Named after the file; several in one statement.
    EXPECT_EQ(Run("SELECT orx_open('parts.stp'), orx_open('parts.stp', 'b');\n"
                  "SELECT GetInst('@b#1', 'ID'), (SELECT COUNT(*) FROM parts.product);\n"),
              "parts|b\nP1|1\n");
}

TEST_F(SqliteExtension, TellsWhatIsWrong) {
    EXPECT_THAT(Run("SELECT orx_open('bad.stp');"),
                HasSubstr("orx_open: bad.stp:1:1: this is no exchange file"));
    EXPECT_THAT(Run("SELECT orx_open('nowhere.stp');"), HasSubstr("orx_open: nowhere.stp: "));
    EXPECT_THAT(Run("SELECT orx_open('parts.stp', 'main');"),
                HasSubstr("orx_open: a model cannot be named 'main'"));
    EXPECT_THAT(Run("SELECT orx_open('parts.stp'), orx_open('parts.stp');"),
                HasSubstr("orx_open: database parts is already in use"));
    EXPECT_THAT(Run("SELECT orx_open();"), HasSubstr("orx_open: 1 to 3 arguments expected"));
    EXPECT_THAT(Run("SELECT GetInst(1, 'ID');"),
                HasSubstr("GetInst: argument 1: there is no model"));
    EXPECT_THAT(Run("SELECT orx_open('parts.stp'); INSERT INTO product(id) VALUES ('x');"),
                HasSubstr("table product may not be modified"));
}

TEST_F(SqliteExtension, ReadsWithASchemaOfOnesOwn) {
    folder.Write("own.exp", "SCHEMA own; ENTITY box; size : REAL; END_ENTITY; END_SCHEMA;");
    folder.Write("boxes.stp",
                 "ISO-10303-21;HEADER;FILE_DESCRIPTION((''),'2;1');FILE_NAME('','',(''),(''),'',"
                 "'','');FILE_SCHEMA(('OWN'));ENDSEC;DATA;#1=BOX(2.5);ENDSEC;END-ISO-10303-21;");
    EXPECT_EQ(Run("SELECT orx_open('boxes.stp', 'b', 'own.exp');\nSELECT size FROM box;"),
              "b\n2.5\n");
}

TEST_F(SqliteExtension, PutsNothingIntoTheUsersFile) {
    EXPECT_EQ(Run("SELECT orx_open('parts.stp', 'step');\nCREATE TABLE own(a);\n"
                  "INSERT INTO own SELECT id FROM product;\n",
                  "own.db"),
              "step\n");
    EXPECT_EQ(Run("SELECT name FROM sqlite_schema;\nSELECT a FROM own;", "own.db"), "own\nP1\n");
}

TEST_F(SqliteExtension, LetsModelsGo) {
    EXPECT_EQ(Run("SELECT orx_open('parts.stp', 'a');\nDETACH a;\n"
                  "SELECT orx_open('parts.stp', 'a');\nSELECT COUNT(*) FROM a.product;"),
              "a\na\n1\n");
    // Within a transaction of the user, too.
    EXPECT_EQ(Run("BEGIN;\nSELECT orx_open('parts.stp', 'a');\nCOMMIT;\nSELECT id FROM product;"),
              "a\nP1\n");
}

}  // namespace
