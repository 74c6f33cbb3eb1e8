// Data sets through databases: they come back identical, to the byte.

#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <limits>

#include "Comparison.h"
#include "Places.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// The exchange files of the project, and the shared ones if available.
std::vector<std::string> Files() {
    std::vector<std::string> files;
    for (const char* folder : {"/examples", "/tests/conformance", "/fuzz/corpus/Exchange",
                               "/fuzz/corpus/Host", "/../shared/data"}) {
        std::error_code error;
        const std::string path = std::string(SOURCE_DIRECTORY) + folder;
        for (const auto& entry : std::filesystem::directory_iterator(path, error)) {
            if (entry.path().extension() == ".stp") files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

exchange::SchemaCatalog CatalogOf(const std::string& file) {
    exchange::SchemaCatalog schemas;
    exchange::Messages messages;
    for (auto& schema : exchange::ReadSchemas(file, messages)) schemas.Add(schema);
    EXPECT_EQ(messages.ErrorCount(), 0U) << file;
    return schemas;
}

class RoundTrip : public Relational {
  protected:
    // Saves to the database, loads again, and compares.
    void Check(const exchange::DataSet& dataSet, const exchange::SchemaCatalog& schemas = {}) {
        ASSERT_THAT(Save(dataSet, Name()), IsEmpty());
        const Opened back = Open(Name(), schemas);
        ASSERT_THAT(back.errors, IsEmpty());
        EXPECT_EQ(back.Text(), exchange::ToExchangeText(dataSet));
        std::string differences;
        exchange::CompareModels(*dataSet.model, back.Model(), 0,
                                [&](const exchange::Difference& difference) {
                                    differences += difference.label + difference.attribute + '\n';
                                });
        EXPECT_EQ(differences, "");
    }
    // The same for the data section of a model.
    void CheckData(const std::string& schema, const std::string& data) {
        exchange::SchemaCatalog schemas;
        std::string name = schema;
        if (schema.starts_with("SCHEMA ")) {
            exchange::Messages messages;
            for (auto& parsed : exchange::ParseSchemas(schema, "schema", messages)) {
                name = parsed->Name().View();
                schemas.Add(parsed);
            }
        }
        Check(DataSetOf(name, data, schemas), schemas);
    }
};

// Through both kinds, one after the other; files of one schema through the same database.
TEST_P(RoundTrip, KeepsEveryFile) {
    std::map<std::string, std::unique_ptr<Place>> places;
    std::size_t read = 0;
    for (const std::string& file : Files()) {
        SCOPED_TRACE(file);
        exchange::SchemaCatalog schemas;
        if (file.ends_with("associations.stp")) {
            schemas = CatalogOf(std::string(SOURCE_DIRECTORY) + "/examples/associations.exp");
        }
        exchange::Messages messages;
        const exchange::DataSet dataSet = exchange::ReadDataSet(file, schemas, {}, messages);
        if (dataSet.model == nullptr) continue;  // damaged
        ++read;
        const std::unique_ptr<Place> first = NewPlace("sqlite");
        ASSERT_THAT(Save(dataSet, first->Name()), IsEmpty());
        std::unique_ptr<Place>& second = places[dataSet.model->SchemaName().ToUtf8()];
        if (second == nullptr) second = NewPlace(GetParam());
        const Opened between = Open(first->Name(), schemas);
        ASSERT_THAT(Save(between.dataSet, second->Name()), IsEmpty());
        const Opened back = Open(second->Name(), schemas);
        EXPECT_THAT(back.errors, IsEmpty());
        EXPECT_EQ(back.Text(), exchange::ToExchangeText(dataSet));
    }
    EXPECT_GE(read, 17U);
}

TEST_P(RoundTrip, KeepsAFileWithItsFullSchema) {
    const std::string shared = std::string(SOURCE_DIRECTORY) + "/../shared/";
    if (!std::filesystem::exists(shared + "schemas/AP214E3_2010.exp")) {
        GTEST_SKIP() << "there is no ../shared";
    }
    const exchange::SchemaCatalog schemas = CatalogOf(shared + "schemas/AP214E3_2010.exp");
    exchange::Messages messages;
    const exchange::DataSet dataSet =
        exchange::ReadDataSet(shared + "data/as1-oc-214.stp", schemas, {}, messages);
    ASSERT_NE(dataSet.model, nullptr);
    Check(dataSet, schemas);
    // With all types declared, only instances of several types or with a -0.0 are stored as text.
    for (const std::string& text : At().Query("SELECT text FROM orx_other")) {
        const bool negative = At().IsSqlite() && text.find("-0.") != text.npos;
        EXPECT_TRUE(text.starts_with("(") || negative) << text;
    }
}

// An instance of each entity type of a schema, with a value for each attribute.
class OneOfEachType {
  public:
    explicit OneOfEachType(const kor::Schema& schema) {
        for (const kor::EntityType* entity : schema.Entities()) {
            if (!entity->IsAbstract()) types_.push_back(entity);
        }
    }

    std::string Data() const {
        std::string data;
        for (std::size_t i = 0; i < types_.size(); ++i) {
            data += '#' + std::to_string(i + 1) + '=' + types_[i]->FoldedName() + '(';
            const char* comma = "";
            for (const kor::Slot& slot : types_[i]->Slots()) {
                data += comma + (slot.derived ? "*" : Value(*slot.domain));
                comma = ",";
            }
            data += ");\n";
        }
        return data;
    }
    std::size_t Count() const { return types_.size(); }

  private:
    // The first instance of the type or of a subtype; unset if there is none.
    std::string Reference(const kor::EntityType& entity) const {
        for (std::size_t i = 0; i < types_.size(); ++i) {
            if (types_[i]->IsKindOf(std::string_view(entity.FoldedName()))) {
                return '#' + std::to_string(i + 1);
            }
        }
        return "$";
    }

    std::string Value(const kor::Domain& domain) const {
        using kor::Base;
        switch (domain.base) {
            case Base::Integer: return "-7";
            case Base::Real:
            case Base::Number: return "2.5";
            case Base::Boolean: return ".F.";
            case Base::Logical: return ".U.";
            case Base::Binary: return "\"0FF\"";
            case Base::Enumeration: return '.' + domain.items.front() + '.';
            case Base::Entity: return Reference(*domain.entity);
            case Base::Aggregate:
                return '(' + Value(*domain.element) + ',' + Value(*domain.element) + ')';
            case Base::Select:
                if (!domain.entities.empty()) return Reference(*domain.entities.front());
                return domain.choices.front().first + '(' + Value(*domain.choices.front().second) +
                       ')';
            case Base::String:
            case Base::Generic: break;
        }
        return "'it''s \\X2\\0141\\X0\\'";
    }

    std::vector<const kor::EntityType*> types_;
};

// From SQLite into the other kind; no instance is stored as text.
TEST_P(RoundTrip, KeepsEveryTypeOfAFullSchema) {
    const std::string folder = std::string(SOURCE_DIRECTORY) + "/../shared/schemas/";
    struct Full {
        const char* file;
        const char* name;
        std::size_t types;  // at least
    };
    for (const Full& full : {Full{"ap203.exp", "CONFIG_CONTROL_DESIGN", 200},
                             Full{"pdm_schema_12.exp", "PDM_SCHEMA", 150}}) {
        if (!std::filesystem::exists(folder + full.file)) {
            GTEST_SKIP() << "there is no ../shared/schemas/" << full.file;
        }
        SCOPED_TRACE(full.file);
        const exchange::SchemaCatalog schemas = CatalogOf(folder + full.file);
        const OneOfEachType each(*schemas.Find(full.name));
        EXPECT_GT(each.Count(), full.types);
        const exchange::DataSet dataSet = DataSetOf(full.name, each.Data(), schemas);
        ASSERT_EQ(dataSet.model->InstanceCount(), each.Count());

        const std::unique_ptr<Place> first = NewPlace("sqlite");
        ASSERT_THAT(Save(dataSet, first->Name()), IsEmpty());
        EXPECT_THAT(first->Query("SELECT text FROM orx_other"), IsEmpty());
        const Opened between = Open(first->Name(), schemas);
        EXPECT_THAT(between.errors, IsEmpty());
        const std::unique_ptr<Place> second = NewPlace(GetParam());
        ASSERT_THAT(Save(between.dataSet, second->Name()), IsEmpty());
        const Opened back = Open(second->Name(), schemas);
        EXPECT_THAT(back.errors, IsEmpty());
        EXPECT_EQ(back.Text(), exchange::ToExchangeText(dataSet));
    }
}

constexpr const char* kKinds = R"(SCHEMA kinds;
  TYPE colour = ENUMERATION OF (red, green); END_TYPE;
  TYPE label = STRING; END_TYPE;
  TYPE length_measure = REAL; END_TYPE;
  TYPE mixed = SELECT (thing, label, length_measure); END_TYPE;
  ENTITY thing;
    s : OPTIONAL STRING; i : OPTIONAL INTEGER; r : OPTIONAL REAL; n : OPTIONAL NUMBER;
    b : OPTIONAL BOOLEAN; l : OPTIONAL LOGICAL; y : OPTIONAL BINARY; e : OPTIONAL colour;
    t : OPTIONAL thing; m : OPTIONAL mixed; g : OPTIONAL GENERIC;
    reals : OPTIONAL LIST OF REAL; things : OPTIONAL SET OF thing;
    nested : OPTIONAL LIST OF LIST OF INTEGER; mixeds : OPTIONAL LIST OF mixed;
    gaps : OPTIONAL ARRAY [1:3] OF OPTIONAL STRING;
  END_ENTITY;
END_SCHEMA;)";

TEST_P(RoundTrip, KeepsEveryKindOfValue) {
    CheckData(kKinds,
              "#1=THING($,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$);\n"
              "#2=THING('it''s \\\\ \"x\"',7,1.5,2.,.T.,.U.,\"0A\",.RED.,#1,LABEL('x'),'g',"
              "(1.,2.5),(#1,#2),((1,2),(),(3)),(LENGTH_MEASURE(2.5),#1),('a',$,'c'));\n"
              "#3=THING('',-9223372036854775808,1.E-300,1.E300,.F.,.F.,\"3FFF\",.GREEN.,#3,#2,"
              "(1,'a',#2,(.T.)),(),(),(),(),());\n"
              "#4=THING('x',9223372036854775807,1.7976931348623157E+308,5.E-324,.T.,.T.,\"0\",$,$,"
              "LENGTH_MEASURE(-0.),.X.,$,$,$,$,$);");
    EXPECT_THAT(
        At().Query("SELECT s, i, r, n, b, l, y, e, t, m, g, reals, things, nested, "
                   "mixeds, gaps FROM thing WHERE instance = 2"),
        ElementsAre(At().IsSqlite()
                        ? "it's \\ \"x\"|7|1.5|2.0|1|.U.|\"0A\"|RED|1|LABEL('x')|'g'|2|2|3|2|3"
                        : "it's \\ \"x\"|7|1.5|2|t|.U.|\"0A\"|RED|1|LABEL('x')|'g'|2|2|3|2|3"));
    EXPECT_THAT(At().Query("SELECT owner, position, value FROM thing_mixeds ORDER BY 1, 2"),
                ElementsAre("2|1|LENGTH_MEASURE(2.5)", "2|2|#1"));
    EXPECT_THAT(At().Query("SELECT owner, position, value FROM thing_nested ORDER BY 1, 2"),
                ElementsAre("2|1|(1,2)", "2|2|()", "2|3|(3)"));
    EXPECT_THAT(At().Query("SELECT owner, position, value FROM thing_gaps ORDER BY 1, 2"),
                ElementsAre("2|1|a", "2|2|NULL", "2|3|c"));
    // Empty and unset.
    EXPECT_THAT(At().Query("SELECT reals, things FROM thing WHERE instance IN (1, 3) "
                           "ORDER BY instance"),
                ElementsAre("NULL|NULL", "0|0"));
    EXPECT_THAT(At().Query("SELECT instance FROM orx_other"), IsEmpty());
}

// Numbers of another kind, truth values in place of numbers, U+0000.
TEST_P(RoundTrip, KeepsWhatNoColumnHoldsApart) {
    CheckData(kKinds,
              "#1=THING('a\\X\\00b',$,$,$,$,$,$,$,$,$,$,$,$,$,$,$);\n"
              "#2=THING($,1.5,$,$,$,$,$,$,$,$,$,$,$,$,$,$);\n"
              "#3=THING($,$,$,7,$,$,$,$,$,$,$,$,$,$,$,$);\n"
              "#4=THING($,$,$,$,.U.,$,$,$,$,$,$,$,$,$,$,$);\n"
              "#5=THING($,$,$,$,$,$,$,$,*,$,$,$,$,$,$,$);\n"
              "#6=THING($,$,$,$,$,$,$,$,$,$,$,(1.,'x'),$,$,$,$);\n"
              "#7=THING('fine',$,$,$,$,$,$,$,#1,$,$,$,(#1,#2),$,$,$);\n"
              "#8=(OTHER(1)THING($,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$));\n"
              "#9=UNKNOWN_TYPE('x',#1,(2.,3));");
    EXPECT_THAT(At().Query("SELECT instance FROM orx_other ORDER BY 1"),
                ElementsAre("1", "2", "3", "4", "5", "6", "8", "9"));
    EXPECT_THAT(At().Query("SELECT text FROM orx_other WHERE instance = 9"),
                ElementsAre("UNKNOWN_TYPE('x',#1,(2.,3))"));
    EXPECT_THAT(At().Query("SELECT s FROM thing"), ElementsAre("fine"));
}

TEST_P(RoundTrip, KeepsEveryReal) {
    exchange::SchemaCatalog schemas;
    exchange::Messages messages;
    for (auto& parsed : exchange::ParseSchemas(kKinds, "schema", messages)) schemas.Add(parsed);
    const exchange::DataSet dataSet =
        DataSetOf("kinds", "#1=THING($,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$);", schemas);
    kor::Model& model = *dataSet.model;
    const kor::ModelType& type = kor::Instance::Of(*model.Find(1)).Type();
    const double reals[] = {-0.0,
                            0.0,
                            std::numeric_limits<double>::quiet_NaN(),
                            std::numeric_limits<double>::infinity(),
                            -std::numeric_limits<double>::infinity(),
                            0.1,
                            1e22,
                            3.0};
    for (const double real : reals) {
        kor::Instance& instance = model.Create(type);
        instance.PutAttr(SdaiString("R"), SdaiPrimitiveH(real));
        instance.PutAttr(SdaiString("G"), SdaiPrimitiveH(real));
        SdaiListClassOfSdaiReal list(0, 2);
        list.Append(real);
        list.Append(1.5);
        instance.PutAttr(SdaiString("REALS"), SdaiPrimitiveH(&list));
    }
    ASSERT_THAT(Save(dataSet, Name()), IsEmpty());
    const Opened back = Open(Name(), schemas);
    ASSERT_THAT(back.errors, IsEmpty());
    unsigned long id = 2;
    for (const double real : reals) {
        SCOPED_TRACE(real);
        const SdaiEntityInstance* instance = back.Model().Find(id++);
        ASSERT_NE(instance, nullptr);
        const SdaiPrimitiveH list = instance->GetAttr(SdaiString("REALS"));
        const SdaiAggrInstance* members = list;
        for (const double read :
             {static_cast<double>(instance->GetAttr(SdaiString("R"))),
              static_cast<double>(instance->GetAttr(SdaiString("G"))), members->GetRealMember(0)}) {
            EXPECT_TRUE(std::isnan(real) ? std::isnan(read) : real == read);
            EXPECT_TRUE(std::isnan(real) || std::signbit(real) == std::signbit(read));
        }
    }
    EXPECT_THAT(At().Query("SELECT count(*) FROM orx_other"),
                ElementsAre(At().IsSqlite() ? "2" : "0"));
}

// Every character, 1,000 in each text.
TEST_P(RoundTrip, KeepsEveryCharacter) {
    const exchange::DataSet dataSet = DataSetOf("cdma", "#1=MODEL_OBJECT('',$,$,$,$,$);");
    kor::Model& model = *dataSet.model;
    const kor::ModelType& type = kor::Instance::Of(*model.Find(1)).Type();
    std::u32string text;
    for (char32_t c = 1; c <= 0x10FFFF; ++c) {
        if (c == 0xD800) c = 0xE000;
        text += c;
        if (text.size() < 1000 && c != 0x10FFFF) continue;
        model.Create(type).PutAttr(SdaiString("S_NAME"), SdaiString(KORUnicodeString(text)));
        text.clear();
    }
    Check(dataSet);
    EXPECT_THAT(At().Query("SELECT count(*) FROM orx_other"), ElementsAre("0"));
    EXPECT_THAT(At().Query("SELECT length(s_name) FROM model_object WHERE instance = 2"),
                ElementsAre("1000"));
}

TEST_P(RoundTrip, KeepsVeryLongTexts) {
    const exchange::DataSet dataSet = DataSetOf("cdma", "#1=MODEL_OBJECT('',$,$,$,$,$);");
    std::string text;
    while (text.size() < 20'000'000) text += "part number \xE9\xFF '; DROP TABLE product; -- ";
    kor::Instance::Of(*dataSet.model->Find(1))
        .PutAttr(SdaiString("S_NAME"), SdaiString(std::string_view(text)));
    ASSERT_THAT(Save(dataSet, Name()), IsEmpty());
    const Opened back = Open(Name());
    ASSERT_THAT(back.errors, IsEmpty());
    const SdaiPrimitiveH name = back.Model().Find(1)->GetAttr(SdaiString("S_NAME"));
    EXPECT_TRUE(static_cast<const SdaiString&>(name).View() == text);
}

// Entity types and attributes whose names are words of SQL or names of other tables, and names that
// are too long for a database.
TEST_P(RoundTrip, KeepsEveryName) {
    const std::string longName(60, 'x');
    CheckData(
        "SCHEMA words; ENTITY select; order : STRING; group : LIST OF select; "
        "instance : INTEGER; owner : OPTIONAL select; END_ENTITY;"
        "ENTITY orx_other; text : STRING; END_ENTITY; ENTITY user SUBTYPE OF (select); "
        "order : INTEGER; END_ENTITY; ENTITY select_group; value : STRING; END_ENTITY;"
        "ENTITY " +
            longName +
            "; many_things : LIST OF STRING; many_thingz : LIST OF "
            "STRING; END_ENTITY; END_SCHEMA;",
        "#1=SELECT('''; DROP TABLE \"select\"; --',(#1,#3),5,$);\n"
        "#2=ORX_OTHER('\"');\n"
        "#3=USER('a',(),1,#1,9);\n"
        "#4=SELECT_GROUP('$1 ? :x');\n"
        "#5=" +
            longName + "(('a'),('b','c'));");
    EXPECT_THAT(At().Query("SELECT \"order\", \"group\", instance_ FROM \"select\""),
                ElementsAre("'; DROP TABLE \"select\"; --|2|5"));
    EXPECT_THAT(At().Query("SELECT text FROM orx_other_"), ElementsAre("\""));
    EXPECT_THAT(At().Query("SELECT order_ FROM \"user\""), ElementsAre("9"));
    EXPECT_THAT(At().Query("SELECT value FROM select_group_ WHERE owner = 1 ORDER BY position"),
                ElementsAre("1", "3"));
}

TEST_P(RoundTrip, KeepsTheOrderOfCreation) {
    CheckData("cdma",
              "#30=MODEL_OBJECT('c',$,$,$,$,$);\n#2=CDM_DOCCAD('x',$,$);\n"
              "#10=MODEL_OBJECT('a',$,$,$,$,$);\n"
              "#9223372036854775807=MODEL_OBJECT('z',$,$,$,$,$);\n#1=UNDECLARED(#30);");
    EXPECT_THAT(At().Query("SELECT instance FROM orx_order ORDER BY position"),
                ElementsAre("30", "2", "10", "9223372036854775807", "1"));
}

TEST_P(RoundTrip, NeedsNoOrderWhereNumbersAscend) {
    CheckData("cdma",
              "#1=MODEL_OBJECT('c',$,$,$,$,$);\n#2=CDM_DOCCAD('x',$,$);\n"
              "#10=MODEL_OBJECT('a',$,$,$,$,$);");
    EXPECT_THAT(At().Query("SELECT instance FROM orx_order"), IsEmpty());
    EXPECT_THAT(At().Query("SELECT name, layout FROM orx_schema"), ElementsAre("cdma|1"));
}

TEST_P(RoundTrip, KeepsSupertypesAndSubtypesApart) {
    CheckData("cdma",
              "#1=PART_OBJECT('p',$,$,$,$,(#2),(),$,(#3,#4),$);\n"
              "#2=PART_LINK('l',$,#1,(0.,1.,2.),$,$,$);\n"
              "#3=CDM_DOCUMENT('t','n',$,'f');\n#4=CDM_DOCCAD('t','m',$);");
    EXPECT_THAT(At().Query("SELECT instance, s_type_rep, s_name, notes, s_format "
                           "FROM cdm_document"),
                ElementsAre("3|t|n|NULL|f"));
    EXPECT_THAT(At().Query("SELECT owner, position, value FROM part_object_docs2 ORDER BY 2"),
                ElementsAre("1|1|3", "1|2|4"));
    EXPECT_THROW(At().Query("SELECT * FROM document_object"), std::exception);
}

// Data sets of different kinds, one after the other, in the same database.
TEST_P(RoundTrip, ReplacesWhatIsThere) {
    ASSERT_THAT(Save(DataSetOf("cdma", "#1=PART_OBJECT('p',$,$,$,$,$,$,$,$,$);\n#2=X(1);"), Name()),
                IsEmpty());
    CheckData("cdma", "#2=PART_OBJECT('q',$,$,$,$,$,$,$,$,$);\n#1=PART_LINK('l',$,#2,$,$,$,$);");
    EXPECT_THAT(At().Query("SELECT s_part_number FROM part_object"), ElementsAre("q"));
    EXPECT_THAT(At().Query("SELECT * FROM orx_other"), IsEmpty());
    EXPECT_THAT(Save(DataSetOf("AUTOMOTIVE_DESIGN", ""), Name()),
                ElementsAre("holds a data set of the schema cdma, not of AUTOMOTIVE_DESIGN"));
}

ON_EACH_DATABASE(RoundTrip);

}  // namespace
