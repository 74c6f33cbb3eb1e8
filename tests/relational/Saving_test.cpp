// Saving to databases: only what has changed, all of it or nothing, and never over the changes of
// another program.

#include <gmock/gmock.h>

#include "Places.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kParts =
    "#1=PART_OBJECT('P1','a',1,$,$,(#11,#12),$,$,$,$);\n"
    "#2=PART_OBJECT('P2','a',2,$,$,(),$,$,$,$);\n"
    "#3=PART_OBJECT('P3','a',3,$,$,$,$,$,$,$);\n"
    "#11=PART_LINK('L1',#1,#2,(1.,2.,3.),$,$,$);\n"
    "#12=PART_LINK('L2',#1,#3,$,$,$,$);";

class Saving : public Relational {
  protected:
    void SetUp() override {
        Relational::SetUp();
        if (IsSkipped()) return;
        ASSERT_THAT(Save(DataSetOf("cdma", kParts), Name()), IsEmpty());
        opened_ = Open(Name());
        ASSERT_THAT(opened_.errors, IsEmpty());
    }
    void Put(std::uint64_t id, const char* attribute, const SdaiPrimitiveH& value) {
        kor::Instance::Of(*opened_.Model().Find(id)).PutAttr(SdaiString(attribute), value);
    }
    Lines SaveAgain() { return Save(opened_.dataSet, Name()); }
    std::string Stored() { return Open(Name()).Text(); }
    Lines Parts() {
        return At().Query("SELECT s_part_number, s_desc FROM part_object ORDER BY instance");
    }

    Opened opened_;
};

TEST_P(Saving, WritesWhatHasChangedAlone) {
    // Changes that another program makes in other rows in the meantime are kept.
    At().Execute("UPDATE part_object SET s_desc = 'of another' WHERE instance = 2");
    Put(1, "S_DESC", SdaiString("mine"));
    Put(11, "ID", SdaiString("L9"));
    EXPECT_THAT(SaveAgain(), IsEmpty());
    EXPECT_THAT(Parts(), ElementsAre("P1|mine", "P2|of another", "P3|NULL"));
    EXPECT_THAT(At().Query("SELECT id FROM part_link ORDER BY instance"), ElementsAre("L9", "L2"));
}

TEST_P(Saving, WritesNothingWhereNothingHasChanged) {
    const std::string before = Stored();
    At().Execute("UPDATE part_object SET s_desc = 'of another'");
    EXPECT_THAT(SaveAgain(), IsEmpty());
    EXPECT_THAT(Parts(), ElementsAre("P1|of another", "P2|of another", "P3|of another"));
}

TEST_P(Saving, AddsAndChangesWhatAModelHas) {
    kor::Model& model = opened_.Model();
    kor::Instance& added = model.Create(kor::Instance::Of(*model.Find(1)).Type());
    added.PutAttr(SdaiString("S_PART_NUMBER"), SdaiString("P13"));
    EXPECT_EQ(added.Id(), 13U);
    SdaiAggrInstance links;
    links.Append(SdaiPrimitiveH(model.Find(12)));
    Put(1, "KORASS", SdaiPrimitiveH(&links));
    Put(2, "KORASS", SdaiPrimitiveH());
    Put(12, "REF", SdaiPrimitiveH(&added));
    // To orx_other, as text.
    Put(3, "S_DESC", SdaiString(std::string_view("a\0b", 3)));
    EXPECT_THAT(SaveAgain(), IsEmpty());
    EXPECT_EQ(Stored(), exchange::ToExchangeText(opened_.dataSet));
    EXPECT_THAT(At().Query("SELECT owner, position, value FROM part_object_korass"),
                ElementsAre("1|1|12"));
    EXPECT_THAT(At().Query("SELECT instance FROM orx_other"), ElementsAre("3"));
    // And back into its table.
    Put(3, "S_DESC", SdaiString("plain"));
    EXPECT_THAT(SaveAgain(), IsEmpty());
    EXPECT_EQ(Stored(), exchange::ToExchangeText(opened_.dataSet));
    EXPECT_THAT(At().Query("SELECT instance FROM orx_other"), IsEmpty());
}

TEST_P(Saving, KeepsTheOrderOfWhatIsAdded) {
    const exchange::DataSet unordered = DataSetOf("cdma",
                                                  "#9=PART_OBJECT('P9',$,$,$,$,$,$,$,$,$);\n"
                                                  "#4=PART_OBJECT('P4',$,$,$,$,$,$,$,$,$);");
    ASSERT_THAT(Save(unordered, Name()), IsEmpty());
    opened_ = Open(Name());
    kor::Model& model = opened_.Model();
    for (int i = 0; i < 2; ++i) {
        model.Create(kor::Instance::Of(*model.Find(9)).Type())
            .PutAttr(SdaiString("S_PART_NUMBER"), SdaiString("new"));
    }
    EXPECT_THAT(SaveAgain(), IsEmpty());
    EXPECT_EQ(Stored(), exchange::ToExchangeText(opened_.dataSet));
    EXPECT_THAT(At().Query("SELECT instance FROM orx_order ORDER BY position"),
                ElementsAre("9", "4", "10", "11"));
}

TEST_P(Saving, TellsConflictsAndWritesNothing) {
    Put(1, "S_DESC", SdaiString("mine"));
    Put(2, "S_DESC", SdaiString("mine"));
    Put(3, "S_DESC", SdaiString("mine"));
    At().Execute("UPDATE part_object SET s_desc = 'of another' WHERE instance = 2");
    At().Execute("UPDATE part_link SET id = 'of another' WHERE instance = 12");
    At().Execute("UPDATE part_object SET korass = 1 WHERE instance = 1");
    EXPECT_THAT(SaveAgain(), ElementsAre("another has changed meanwhile: #1, #2"));
    EXPECT_THAT(Parts(), ElementsAre("P1|NULL", "P2|of another", "P3|NULL"));
}

TEST_P(Saving, TellsConflictsInAggregatesDeletedRowsAndNumbers) {
    Put(1, "S_DESC", SdaiString("mine"));
    At().Execute("UPDATE part_object_korass SET value = 12 WHERE owner = 1 AND position = 1");
    EXPECT_THAT(SaveAgain(), ElementsAre("another has changed meanwhile: #1"));
    At().Execute("UPDATE part_object_korass SET value = 11 WHERE owner = 1 AND position = 1");
    EXPECT_THAT(SaveAgain(), IsEmpty());

    Put(12, "ID", SdaiString("mine"));
    At().Execute("DELETE FROM part_object_korass WHERE owner = 1 AND position = 2; ");
    At().Execute("UPDATE part_object SET korass = 1 WHERE instance = 1");
    At().Execute("DELETE FROM part_link WHERE instance = 12");
    EXPECT_THAT(SaveAgain(), ElementsAre("another has changed meanwhile: #12"));

    opened_ = Open(Name());
    kor::Model& model = opened_.Model();
    model.Create(kor::Instance::Of(*model.Find(1)).Type())
        .PutAttr(SdaiString("S_PART_NUMBER"), SdaiString("mine"));
    At().Execute("INSERT INTO part_link (instance, id, ref) VALUES (12, 'of another', 1)");
    EXPECT_THAT(SaveAgain(), ElementsAre("another has changed meanwhile: #12"));
    EXPECT_THAT(At().Query("SELECT count(*) FROM part_object"), ElementsAre("3"));
}

TEST_P(Saving, KnowsWhatItHasSavedItself) {
    Put(1, "S_DESC", SdaiString("first"));
    EXPECT_THAT(SaveAgain(), IsEmpty());
    Put(1, "S_DESC", SdaiString("second"));
    EXPECT_THAT(SaveAgain(), IsEmpty());
    EXPECT_THAT(Parts(), ElementsAre("P1|second", "P2|NULL", "P3|NULL"));
    // A data set from elsewhere that was saved here can be changed and saved again.
    const exchange::DataSet fresh = DataSetOf("cdma", kParts);
    EXPECT_THAT(Save(fresh, Name()), IsEmpty());
    kor::Instance::Of(*fresh.model->Find(1)).PutAttr(SdaiString("S_DESC"), SdaiString("x"));
    At().Execute("UPDATE part_object SET s_desc = 'of another' WHERE instance = 1");
    EXPECT_THAT(Save(fresh, Name()), ElementsAre("another has changed meanwhile: #1"));
}

TEST_P(Saving, WritesAllWhereTheDatabaseHasBeenMadeAnew) {
    const std::string before = Stored();
    if (At().IsSqlite()) {
        std::remove(relational::FileOf(Name()).c_str());
    } else {
        const std::string schema = Name().substr(Name().rfind("%3D") + 3);
        At().Execute("DROP SCHEMA " + schema + " CASCADE; CREATE SCHEMA " + schema);
    }
    EXPECT_THAT(SaveAgain(), IsEmpty());
    EXPECT_EQ(Stored(), before);
}

TEST_P(Saving, RefusesWhatNoTextHolds) {
    const exchange::DataSet other = DataSetOf("cdma", "#1=PART_OBJECT('x',$,$,$,$,$,$,$,$,$);");
    Put(1, "EXCHANGED", SdaiPrimitiveH(other.model->Find(1)));
    EXPECT_THAT(SaveAgain(),
                ElementsAre(HasSubstr("#1 has a reference to an instance of another")));
    EXPECT_THAT(Parts(), ElementsAre("P1|NULL", "P2|NULL", "P3|NULL"));
}

TEST_P(Saving, RefusesTablesThatLackColumnsBeforeItWrites) {
    At().Execute("ALTER TABLE part_object DROP COLUMN s_desc");
    opened_ = Open(Name());
    Put(2, "S_CHG_NUM", SdaiString("b"));
    EXPECT_THAT(SaveAgain(), IsEmpty());
    Put(2, "S_CHG_NUM", SdaiString("c"));
    Put(1, "S_DESC", SdaiString("mine"));
    EXPECT_THAT(SaveAgain(), ElementsAre("table part_object has no column s_desc"));
    EXPECT_THAT(At().Query("SELECT s_chg_num FROM part_object ORDER BY instance"),
                ElementsAre("a", "b", "a"));
}

TEST_P(Saving, KeepsAnchorsAndSections) {
    exchange::Messages messages;
    const std::string file =
        "ISO-10303-21;HEADER;FILE_DESCRIPTION(('a''b'),'4;1');FILE_NAME('n','',"
        "(''),(''),'','','');FILE_SCHEMA(('CDMA'));ENDSEC;"
        "ANCHOR;<first>=#1;ENDSEC;REFERENCE;#7=<other.stp#x>;ENDSEC;"
        "DATA('one',('CDMA'));#1=PART_LINK('x',$,#7,$,$,$,$);ENDSEC;"
        "DATA('two',('CDMA'));#2=&SCOPE #3=NOTE(); ENDSCOPE /#3/ NOTE(#3);"
        "ENDSEC;END-ISO-10303-21;";
    const exchange::DataSet dataSet = exchange::ParseDataSet(file, "f", {}, {}, messages);
    ASSERT_NE(dataSet.model, nullptr);
    ASSERT_THAT(Save(dataSet, Name()), IsEmpty());
    EXPECT_EQ(Stored(), exchange::ToExchangeText(dataSet));
    EXPECT_THAT(At().Query("SELECT text FROM orx_header WHERE section = 'ANCHOR'"),
                ElementsAre("<first>=#1"));
}

ON_EACH_DATABASE(Saving);

// ---- A site's own tables

class Views : public Relational {
  protected:
    void SetUp() override {
        Relational::SetUp();
        if (IsSkipped()) return;
        At().Execute(
            "CREATE TABLE items (nr integer PRIMARY KEY, code varchar(40), rev smallint, "
            "weight numeric(10,2), origin text)");
        At().Execute(
            "CREATE TABLE uses (nr integer PRIMARY KEY, label varchar(40), whole integer, "
            "piece integer)");
        At().Execute(
            "INSERT INTO items VALUES (1, 'Bicycle', 2, 10.5, 'x'), (2, 'Wheel', 1, 2.25, "
            "'y')");
        At().Execute("INSERT INTO uses VALUES (10, 'front', 1, 2), (11, 'back', 1, 2)");
        // Without s_desc; with an additional weight; the links of a part by a query.
        At().Execute(
            "CREATE VIEW part_object AS SELECT nr AS instance, code AS s_part_number, "
            "rev AS c_version, weight FROM items");
        At().Execute(
            "CREATE VIEW part_link AS SELECT nr AS instance, label AS id, whole AS parent, "
            "piece AS ref FROM uses");
        At().Execute(
            "CREATE VIEW part_object_korass AS SELECT whole AS owner, row_number() OVER "
            "(PARTITION BY whole ORDER BY nr) AS position, nr AS value FROM uses");
    }
    static constexpr const char* kLoaded =
        "#1=PART_OBJECT('Bicycle',$,2,$,$,(#10,#11),$,$,$,$);\n"
        "#2=PART_OBJECT('Wheel',$,1,$,$,$,$,$,$,$);\n"
        "#10=PART_LINK('front',#1,#2,$,$,$,$);\n#11=PART_LINK('back',#1,#2,$,$,$,$);\n";
};

TEST_P(Views, MapTheTablesOfASite) {
    const Opened opened = Open(Name());
    EXPECT_THAT(opened.errors, IsEmpty());
    EXPECT_THAT(opened.Text(), HasSubstr(kLoaded));
}

TEST_P(Views, ThatCannotBeUpdatedAreRefusedBeforeAnythingIsWritten) {
    const Opened opened = Open(Name());
    kor::Instance::Of(*opened.Model().Find(1)).PutAttr(SdaiString("C_VERSION"), SdaiPrimitiveH(3L));
    // PostgreSQL cannot update the view with the links of parts, SQLite cannot update any of the
    // views.
    EXPECT_THAT(Save(opened.dataSet, Name()),
                ElementsAre((At().IsSqlite() ? std::string("part_object")
                                             : std::string("part_object_korass")) +
                            " is a view that cannot be updated"));
    EXPECT_THAT(At().Query("SELECT rev FROM items ORDER BY nr"), ElementsAre("2", "1"));
    // Not even to delete rows that the data set does not contain.
    EXPECT_THAT(Save(DataSetOf("cdma", ""), Name()), ElementsAre(HasSubstr("cannot be updated")));
    EXPECT_THAT(At().Query("SELECT count(*) FROM items"), ElementsAre("2"));
}

TEST_P(Views, ThatCanBeUpdatedAreWritten) {
    At().Execute("DROP VIEW part_object_korass");
    if (At().IsSqlite()) {
        At().Execute(
            "CREATE TRIGGER u INSTEAD OF UPDATE ON part_object BEGIN UPDATE items SET "
            "code = new.s_part_number, rev = new.c_version WHERE nr = old.instance; END;"
            "CREATE TRIGGER i INSTEAD OF INSERT ON part_object BEGIN INSERT INTO items "
            "(nr, code, rev) VALUES (new.instance, new.s_part_number, new.c_version); END;"
            "CREATE TRIGGER d INSTEAD OF DELETE ON part_object BEGIN DELETE FROM items "
            "WHERE nr = old.instance; END;");
    }
    const Opened opened = Open(Name());
    ASSERT_THAT(opened.errors, IsEmpty());
    kor::Model& model = opened.Model();
    kor::Instance::Of(*model.Find(2)).PutAttr(SdaiString("C_VERSION"), SdaiPrimitiveH(7L));
    model.Create(kor::Instance::Of(*model.Find(1)).Type())
        .PutAttr(SdaiString("S_PART_NUMBER"), SdaiString("'; DROP TABLE items; --"));
    EXPECT_THAT(Save(opened.dataSet, Name()), IsEmpty());
    EXPECT_THAT(At().Query("SELECT nr, code, rev, weight, origin FROM items ORDER BY nr"),
                ElementsAre(At().IsSqlite() ? "1|Bicycle|2|10.5|x" : "1|Bicycle|2|10.50|x",
                            "2|Wheel|7|2.25|y", "12|'; DROP TABLE items; --|NULL|NULL|NULL"));
    // No table is created without need.
    EXPECT_THROW(At().Query("SELECT * FROM orx_schema"), std::exception);
    EXPECT_THROW(At().Query("SELECT * FROM part_object_korass"), std::exception);
    // And again.
    kor::Instance::Of(*model.Find(12)).PutAttr(SdaiString("C_VERSION"), SdaiPrimitiveH(1L));
    EXPECT_THAT(Save(opened.dataSet, Name()), IsEmpty());
    EXPECT_THAT(At().Query("SELECT rev FROM items ORDER BY nr"), ElementsAre("2", "7", "1"));
}

ON_EACH_DATABASE(Views);

}  // namespace
