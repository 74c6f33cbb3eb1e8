// Shared by the tests of `orx`: a folder to run it in, and data sets to run it on.

#ifndef TESTS_HOSTTEST_H
#define TESTS_HOSTTEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "Orx.h"

// An exchange file with a schema and a data section.
inline std::string ExchangeFile(const std::string& schema, const std::string& data) {
    return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\n"
           "FILE_NAME('','',(''),(''),'','','');\nFILE_SCHEMA(('" +
           schema + "'));\nENDSEC;\nDATA;\n" + data + "ENDSEC;\nEND-ISO-10303-21;\n";
}

// Two products; the first has no description.
inline std::string Parts() {
    return ExchangeFile("AUTOMOTIVE_DESIGN",
                        "#1=APPLICATION_CONTEXT('design');\n"
                        "#2=PRODUCT_CONTEXT('',#1,'mechanical');\n"
                        "#3=PRODUCT('P1','Bolt',$,(#2));\n"
                        "#4=PRODUCT('P2','Nut','a nut',(#2));\n"
                        "#5=PRODUCT_DEFINITION_FORMATION('A',$,#3);\n");
}

// A component in an assembly: #13 is placed at (1,2,3) in #20, #15 at (4,6,8) in #21, both with
// unrotated axes.
inline std::string Assembly() {
    return ExchangeFile("AUTOMOTIVE_DESIGN",
                        "#10=CARTESIAN_POINT('',(1.,2.,3.));\n"
                        "#11=DIRECTION('',(0.,0.,1.));\n"
                        "#12=DIRECTION('',(1.,0.,0.));\n"
                        "#13=AXIS2_PLACEMENT_3D('',#10,#11,#12);\n"
                        "#14=CARTESIAN_POINT('',(4.,6.,8.));\n"
                        "#15=AXIS2_PLACEMENT_3D('',#14,#11,#12);\n"
                        "#16=DIRECTION('',(0.,0.,0.));\n"
                        "#17=AXIS2_PLACEMENT_3D('',#14,#11,#16);\n"
                        "#20=SHAPE_REPRESENTATION('component',(#13),#22);\n"
                        "#21=SHAPE_REPRESENTATION('assembly',(#15),#22);\n"
                        "#22=REPRESENTATION_CONTEXT('','');\n"
                        "#23=ITEM_DEFINED_TRANSFORMATION('',$,#13,#15);\n"
                        "#24=(REPRESENTATION_RELATIONSHIP('',$,#20,#21)"
                        "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(#23)"
                        "SHAPE_REPRESENTATION_RELATIONSHIP());\n"
                        "#25=CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(#24,#26);\n"
                        "#26=PRODUCT_DEFINITION_SHAPE('',$,$);\n");
}

// Two parts and an effectivity of the database.
inline std::string Database() {
    return ExchangeFile("cdma",
                        "#1=PART_OBJECT('P-1',$,$,$,'Bolt M6',$,$,$,$,$);\n"
                        "#2=PART_OBJECT('P-2',$,$,$,$,$,$,$,$,$);\n"
                        "#5=DATE_EFFECTIVITY('E1',$,'12312099235959',$);\n");
}

inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

// The command must succeed and print this.
inline void ExpectPrints(const OrxResult& result, const std::string& expected) {
    EXPECT_EQ(result.out, expected);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
}

// Runs orx in its own folder, which contains the data sets above.
class HostTest : public testing::Test {
  protected:
    HostTest() {
        folder.Write("parts.stp", Parts());
        folder.Write("assembly.stp", Assembly());
        folder.Write("db.stp", Database());
    }

    OrxResult Orx(const std::vector<std::string>& arguments, const std::string& input = "",
                  const std::vector<std::string>& environment = {}) const {
        return RunOrx(arguments, input, folder.Path(), environment);
    }

    OrxResult Call(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "call");
        return Orx(arguments);
    }

    // Runs a script, as the file script.orx.
    OrxResult Run(const std::string& script, std::vector<std::string> options = {}) const {
        folder.Write("script.orx", script);
        options.insert(options.begin(), "run");
        options.emplace_back("script.orx");
        return Orx(options);
    }

    TemporaryDirectory folder;
};

#endif
