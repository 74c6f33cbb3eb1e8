// The comparison of two data sets, and the check of one against its schema.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "Comparison.h"
#include "Conformity.h"
#include "Exchange.h"
#include "Orx.h"

namespace {

using exchange::DataSet;
using exchange::Messages;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

DataSet Parse(const std::string& schema, const std::string& data) {
    Messages messages;
    DataSet dataSet =
        exchange::ParseDataSet("ISO-10303-21;HEADER;FILE_SCHEMA(('" + schema + "'));ENDSEC;DATA;" +
                                   data + "ENDSEC;END-ISO-10303-21;",
                               "test.stp", exchange::SchemaCatalog(), {}, messages);
    for (const exchange::Message& error : messages.Errors()) ADD_FAILURE() << error.ToString();
    if (dataSet.model == nullptr) throw std::runtime_error("the test's data cannot be read");
    return dataSet;
}
DataSet Database(const std::string& data) { return Parse("cdma", data); }

// The differences as TYPE LABEL.ATTRIBUTE: LEFT | RIGHT.
std::vector<std::string> Differences(const DataSet& left, const DataSet& right,
                                     double tolerance = 0) {
    std::vector<std::string> lines;
    const std::uint64_t count = exchange::CompareModels(
        *left.model, *right.model, tolerance, [&](const exchange::Difference& difference) {
            lines.push_back(difference.entity + ' ' + difference.label + '.' +
                            difference.attribute + ": " + difference.left + " | " +
                            difference.right);
        });
    EXPECT_EQ(count, lines.size());
    return lines;
}

// A frame with two wheels at different places.
std::string Cart(const std::string& rightWheel = "(250.,0.,0.)",
                 const std::string& name = "Wheel") {
    return "#1=PART_OBJECT('C-1','00',1,'ASSEMBLY','Cart',(#3,#4),(),(),(),$);"
           "#2=PART_OBJECT('C-2','00',1,'PART','" +
           name +
           "',$,(),(),(),$);"
           "#3=PART_LINK('L1',#1,#2,(-250.,0.,0.),$,$,$);"
           "#4=PART_LINK('L2',#1,#2," +
           rightWheel + ",$,$,$);";
}

}  // namespace

TEST(Comparison, FindsNothingBetweenADataSetAndItself) {
    EXPECT_THAT(Differences(Database(Cart()), Database(Cart())), IsEmpty());
}

TEST(Comparison, LooksNeitherAtInstanceNumbersNorAtTheOrderOfInstances) {
    const DataSet other = Database(
        "#40=PART_LINK('L2',#10,#99,(250.,0.,0.),$,$,$);"
        "#99=PART_OBJECT('C-2','00',1,'PART','Wheel',$,(),(),(),$);"
        "#10=PART_OBJECT('C-1','00',1,'ASSEMBLY','Cart',(#7,#40),(),(),(),$);"
        "#7=PART_LINK('L1',#10,#99,(-250.,0.,0.),$,$,$);");
    EXPECT_THAT(Differences(Database(Cart()), other), IsEmpty());
}

TEST(Comparison, TellsAChangedValueOnceAndWhere) {
    EXPECT_THAT(Differences(Database(Cart()), Database(Cart("(250.,0.,1.)"))),
                ElementsAre("part_link C-1 → C-2.origin: (250.,0.,0.) | (250.,0.,1.)"));
    EXPECT_THAT(Differences(Database(Cart()), Database(Cart("(250.,0.,0.)", "Rad"))),
                ElementsAre("part_object C-2.S_DESC: 'Wheel' | 'Rad'"));
}

TEST(Comparison, DistinguishesWhatReadersLose) {
    const auto part = [](const std::string& change) {
        return Database("#1=PART_OBJECT('C-1'," + change + ",$,$,$,$,$,$,$,$);");
    };
    EXPECT_THAT(Differences(part("''"), part("$")),
                ElementsAre("part_object C-1.S_CHG_NUM: '' | $"));
    const auto list = [](const std::string& models) {
        return Database("#1=PART_OBJECT('C-1',$,$,$,$,$," + models + ",$,$,$);");
    };
    EXPECT_THAT(Differences(list("()"), list("$")), ElementsAre("part_object C-1.models: () | $"));
    const auto link = [](const std::string& x) { return Database(Cart("(" + x + ",0.,0.)")); };
    EXPECT_THAT(Differences(link("0."), link("-0.")),
                ElementsAre("part_link C-1 → C-2.origin: (0.,0.,0.) | (-0.,0.,0.)"));
}

TEST(Comparison, RealsMayDifferByTheTolerance) {
    const DataSet left = Database(Cart("(250.,0.,0.)"));
    const DataSet right = Database(Cart("(250.001,0.,0.)"));
    EXPECT_THAT(Differences(left, right, 0.01), IsEmpty());
    EXPECT_THAT(Differences(left, right, 0.0001), testing::SizeIs(1));
}

TEST(Comparison, NamesWhatOnlyOneSideHas) {
    const std::string more = "#5=PART_OBJECT('C-3',$,$,$,'Handle',$,(),(),(),$);";
    EXPECT_THAT(Differences(Database(Cart()), Database(Cart() + more)),
                ElementsAre("part_object C-3.:  | #5"));
    EXPECT_THAT(Differences(Database(Cart() + more), Database(Cart())),
                ElementsAre("part_object C-3.: #5 | "));
}

TEST(Comparison, ListsHaveAnOrderAndSetsHaveNone) {
    const auto representation = [](const std::string& items) {
        return Parse("AUTOMOTIVE_DESIGN",
                     "#1=CARTESIAN_POINT('a',(0.,0.,0.));"
                     "#2=CARTESIAN_POINT('b',(0.,0.,0.));"
                     "#3=REPRESENTATION_CONTEXT('','');"
                     "#4=SHAPE_REPRESENTATION('s'," +
                         items + ",#3);");
    };
    // ITEMS is a set.
    EXPECT_THAT(Differences(representation("(#1,#2)"), representation("(#2,#1)")), IsEmpty());
    const auto models = [](const std::string& list) {
        return Database(
            "#1=MODEL_OBJECT('m1',$,$,$,$,$);#2=MODEL_OBJECT('m2',$,$,$,$,$);"
            "#3=PART_OBJECT('p',$,$,$,$,$," +
            list + ",$,$,$);");
    };
    EXPECT_THAT(Differences(models("(#1,#2)"), models("(#2,#1)")),
                ElementsAre("part_object p.models: (#1 m1,#2 m2) | (#2 m2,#1 m1)"));
}

TEST(Comparison, SeesWhatIsSharedAndWhatIsNot) {
    const auto placements = [](const std::string& second) {
        return Parse("AUTOMOTIVE_DESIGN",
                     "#1=CARTESIAN_POINT('',(0.,0.,0.));"
                     "#2=AXIS2_PLACEMENT_3D('a',#1,$,$);"
                     "#3=AXIS2_PLACEMENT_3D('b'," +
                         second + ",$,$);#4=CARTESIAN_POINT('',(0.,0.,0.));");
    };
    // In one data set both placements refer to one point, in the other to two.
    EXPECT_THAT(Differences(placements("#1"), placements("#4")),
                ElementsAre(testing::HasSubstr(".LOCATION: ")));
}

TEST(Comparison, KeepsTogetherWhatIsSharedAmongInstancesOfEqualContent) {
    // Four equal placements, two at each of two equal points, in two orders.
    const auto placements = [](const std::vector<int>& points) {
        std::string data = "#1=CARTESIAN_POINT('',(0.,0.,0.));#2=CARTESIAN_POINT('',(0.,0.,0.));";
        for (std::size_t i = 0; i < points.size(); ++i) {
            data += '#' + std::to_string(i + 3) + "=AXIS2_PLACEMENT_3D('',#" +
                    std::to_string(points[i]) + ",$,$);";
        }
        return Parse("AUTOMOTIVE_DESIGN", data);
    };
    EXPECT_THAT(Differences(placements({1, 1, 2, 2}), placements({1, 2, 1, 2})), IsEmpty());
    EXPECT_THAT(Differences(placements({1, 1, 2, 2}), placements({1, 1, 1, 2})),
                testing::SizeIs(1));
}

TEST(Comparison, FindsWhatAChangedInstanceRefersTo) {
    const auto placement = [](const std::string& coordinates) {
        return Parse("AUTOMOTIVE_DESIGN", "#1=CARTESIAN_POINT(''," + coordinates +
                                              ");#2=AXIS2_PLACEMENT_3D('place',#1,$,$);");
    };
    EXPECT_THAT(Differences(placement("(0.,0.,0.)"), placement("(0.,0.,5.)")),
                ElementsAre("CARTESIAN_POINT #1.COORDINATES: (0.,0.,0.) | (0.,0.,5.)"));
}

TEST(Comparison, ComparesSelectValuesWithTheirTypes) {
    const auto measure = [](const std::string& value) {
        return Parse("AUTOMOTIVE_DESIGN", "#1=MEASURE_WITH_UNIT(" + value +
                                              ",#2);#2=(LENGTH_UNIT()NAMED_UNIT(*)"
                                              "SI_UNIT(.MILLI.,.METRE.));");
    };
    EXPECT_THAT(Differences(measure("LENGTH_MEASURE(1.)"), measure("LENGTH_MEASURE(1.)")),
                IsEmpty());
    EXPECT_THAT(Differences(measure("LENGTH_MEASURE(1.)"), measure("POSITIVE_LENGTH_MEASURE(1.)")),
                ElementsAre("MEASURE_WITH_UNIT #1.VALUE_COMPONENT: LENGTH_MEASURE(1.) | "
                            "POSITIVE_LENGTH_MEASURE(1.)"));
}

TEST(Comparison, FindsEachSingleChangeInARandomDataSet) {
    // A forest of parts; one value is changed, and the instances are renumbered and reordered.
    std::mt19937 random(7);
    constexpr int kParts = 60;
    std::vector<std::string> lines;
    std::vector<std::string> links(kParts + 1);
    int next = kParts;
    for (int child = 2; child <= kParts; ++child) {
        const int parent = static_cast<int>(random() % static_cast<unsigned>(child - 1)) + 1;
        const std::string link = '#' + std::to_string(++next);
        links[static_cast<std::size_t>(parent)] +=
            (links[static_cast<std::size_t>(parent)].empty() ? "" : ",") + link;
        lines.push_back(link + "=PART_LINK('" + std::to_string(random() % 9) + "',#" +
                        std::to_string(parent) + ",#" + std::to_string(child) + ",(" +
                        std::to_string(random() % 3) + ".,0.,0.),$,$,$);");
    }
    for (int part = 1; part <= kParts; ++part) {
        // Numbers repeat, as those of revisions do.
        lines.push_back('#' + std::to_string(part) + "=PART_OBJECT('P" + std::to_string(part % 40) +
                        "',$,$,$,'name',(" + links[static_cast<std::size_t>(part)] +
                        "),(),(),(),$);");
    }
    const auto text = [](const std::vector<std::string>& of) {
        std::string all;
        for (const std::string& line : of) all += line;
        return all;
    };
    const DataSet left = Database(text(lines));
    std::vector<std::string> shuffled = lines;
    std::shuffle(shuffled.begin(), shuffled.end(), random);
    EXPECT_THAT(Differences(left, Database(text(shuffled))), IsEmpty());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        std::vector<std::string> changed = lines;
        const std::string from =
            changed[i].find("'name'") != std::string::npos ? "'name'" : ".,0.,0.";
        const std::string to = from == "'name'" ? "'other'" : ".,0.,7.";
        changed[i].replace(changed[i].find(from), from.size(), to);
        std::shuffle(changed.begin(), changed.end(), random);
        EXPECT_THAT(Differences(left, Database(text(changed))), testing::SizeIs(1)) << lines[i];
    }
}

// ---- Conformity

namespace {

// The violations as #NUMBER ATTRIBUTE: TEXT.
std::vector<std::string> Violations(const DataSet& dataSet) {
    std::vector<std::string> lines;
    const exchange::Conformity result =
        exchange::CheckModel(*dataSet.model, [&](const exchange::Violation& violation) {
            lines.push_back('#' + std::to_string(violation.instance->Id()) + ' ' +
                            violation.attribute + ": " + violation.text);
        });
    EXPECT_EQ(result.violations, lines.size());
    return lines;
}

}  // namespace

TEST(Conformity, FindsNothingInADataSetThatKeepsToItsSchema) {
    EXPECT_THAT(Violations(Database(Cart())), IsEmpty());
}

TEST(Conformity, AMandatoryAttributeMustBeSet) {
    EXPECT_THAT(Violations(Database("#1=PART_OBJECT($,$,$,$,$,$,$,$,$,$);")),
                ElementsAre("#1 S_PART_NUMBER: is mandatory and unset"));
}

TEST(Conformity, AggregatesKeepToTheirBounds) {
    EXPECT_THAT(Violations(Database(Cart("(250.,0.)"))),
                ElementsAre("#4 origin: 2 members, at least 3 allowed"));
    EXPECT_THAT(Violations(Database(Cart("(250.,0.,0.,0.)"))),
                ElementsAre("#4 origin: 4 members, at most 3 allowed"));
    EXPECT_THAT(Violations(Database(Cart("(250.,$,0.)"))),
                ElementsAre("#4 origin: member 2 is unset"));
}

TEST(Conformity, MembersOfASetDiffer) {
    EXPECT_THAT(Violations(Parse("AUTOMOTIVE_DESIGN",
                                 "#1=CARTESIAN_POINT('a',(0.,0.,0.));"
                                 "#3=REPRESENTATION_CONTEXT('','');"
                                 "#4=SHAPE_REPRESENTATION('s',(#1,#1),#3);")),
                ElementsAre("#4 ITEMS: the CARTESIAN_POINT #1 is a member twice"));
}

TEST(Conformity, ValuesAreOfTheKindThatIsDeclared) {
    EXPECT_THAT(Violations(Database("#1=MODEL_OBJECT(7,$,'x',$,$,$);"
                                    "#2=CONFIGURATION_ITEM('c',$,#1);")),
                UnorderedElementsAre("#1 S_NAME: an integer where a string is declared",
                                     "#1 S_NEXT: a string where an integer is declared",
                                     "#2 design: the MODEL_OBJECT #1 where a PART_OBJECT is "
                                     "declared"));
}

TEST(Conformity, CountsWhatTheSchemaDoesNotDeclare) {
    const DataSet dataSet = Database("#1=FOO(1);#2=FOO(2);#3=BAR();");
    const exchange::Conformity result =
        exchange::CheckModel(*dataSet.model, [](const exchange::Violation&) { FAIL(); });
    EXPECT_EQ(result.violations, 0);
    EXPECT_THAT(result.undeclared, ElementsAre(testing::Pair("BAR", 1), testing::Pair("FOO", 2)));
}
