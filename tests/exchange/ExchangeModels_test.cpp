// Models for programs that embed the platform.

#include "ExchangeModels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "SdaiAggrInstance.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr char kTools[] = "SCHEMA tools; ENTITY tool; name : STRING; END_ENTITY; END_SCHEMA;";

class ExchangeModels : public testing::Test {
  protected:
    ~ExchangeModels() override { std::remove(path_.c_str()); }

    std::vector<std::string> messages_;
    const std::string path_ =
        testing::TempDir() + "exchange_models-" + std::to_string(getpid()) + ".stp";
};

TEST_F(ExchangeModels, AreMadeOfBuiltInSchemasInAnyCase) {
    const auto model = exchange::NewModel("automotive_design", messages_);
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(std::string(model->SchemaName().View()), "AUTOMOTIVE_DESIGN");
    EXPECT_EQ(model->GetEntityExtent("PRODUCT")->GetMemberCount(), 0);
    EXPECT_THAT(messages_, IsEmpty());
}

TEST_F(ExchangeModels, AreMadeOfTheCallersSchemas) {
    const auto model = exchange::NewModel("tools", messages_, kTools);
    ASSERT_NE(model, nullptr);
    EXPECT_NE(model->GetEntityDefinition("TOOL"), nullptr);
}

TEST_F(ExchangeModels, OfAnUnknownSchemaAreNone) {
    EXPECT_EQ(exchange::NewModel("AUTOMOTIVE_DESING", messages_), nullptr);
    EXPECT_THAT(messages_, ElementsAre("unknown schema 'AUTOMOTIVE_DESING'; did you mean "
                                       "'AUTOMOTIVE_DESIGN'?"));
}

TEST_F(ExchangeModels, OfASchemaThatCannotBeReadAreNone) {
    EXPECT_EQ(exchange::NewModel("cdma", messages_, "SCHEMA tools; ENTITY"), nullptr);
    ASSERT_FALSE(messages_.empty());
    EXPECT_THAT(messages_.front(), HasSubstr("<schema>:1:"));
}

TEST_F(ExchangeModels, AreReadAsTheyWereWritten) {
    const auto written = exchange::NewModel("tools", messages_, kTools);
    written->GetEntityDefinition("TOOL")
        ->CreateEntityInstance(written.get())
        ->PutAttr("NAME", SdaiString("drill"));
    ASSERT_TRUE(exchange::WriteModel(*written, path_, messages_));
    const auto read = exchange::ReadModel(path_, messages_, kTools);
    ASSERT_NE(read, nullptr);
    const SdaiPrimitiveH tool = read->GetEntityExtent("TOOL")->GetMember(0);
    EXPECT_EQ(std::string(static_cast<const SdaiString&>(tool.GetAttr("NAME")).View()), "drill");
    EXPECT_THAT(messages_, IsEmpty());
}

TEST_F(ExchangeModels, OfAFileThatCannotBeReadAreNone) {
    EXPECT_EQ(exchange::ReadModel("no/such/file.stp", messages_), nullptr);
    std::ofstream(path_) << "ISO-10303-21;HEADER;FILE_SCHEMA(('cdma'));ENDSEC;DATA;\n#1=;";
    EXPECT_EQ(exchange::ReadModel(path_, messages_), nullptr);
    ASSERT_GE(messages_.size(), 2U);
    EXPECT_THAT(messages_[0], HasSubstr("no/such/file.stp: "));
    EXPECT_THAT(messages_[1], HasSubstr(path_ + ":2:4: "));
}

TEST_F(ExchangeModels, TellWhatIsNotKept) {
    const std::string head = "ISO-10303-21;HEADER;FILE_SCHEMA(('PDM_SCHEMA'));ENDSEC;";
    const std::string end = "ENDSEC;END-ISO-10303-21;";
    const auto read = [&](const std::string& sections) {
        std::ofstream(path_) << head << sections << end;
        messages_.clear();
        return exchange::ReadModel(path_, messages_);
    };
    for (const char* sections : {"ANCHOR;<a>=1;ENDSEC;DATA;", "REFERENCE;#1=<a>;ENDSEC;DATA;",
                                 "DATA('a',('PDM_SCHEMA'));", "DATA;#1=&SCOPE ENDSCOPE OWN();"}) {
        EXPECT_NE(read(sections), nullptr);
        EXPECT_THAT(messages_, ElementsAre(HasSubstr("not written with it"))) << sections;
    }
    EXPECT_NE(read("DATA;"), nullptr);
    EXPECT_THAT(messages_, IsEmpty());
}

TEST_F(ExchangeModels, AreNotWrittenWhereNothingCanBe) {
    const auto model = exchange::NewModel("cdma", messages_);
    EXPECT_FALSE(exchange::WriteModel(*model, "no/such/directory/file.stp", messages_));
    ASSERT_EQ(messages_.size(), 1U);
    EXPECT_THAT(messages_[0], HasSubstr("no/such/directory/file.stp: cannot be written: "));
}

TEST_F(ExchangeModels, AreReadFromTextsAndWrittenToThem) {
    const auto model = exchange::NewModel("tools", messages_, kTools);
    model->GetEntityDefinition("TOOL")
        ->CreateEntityInstance(model.get())
        ->PutAttr("NAME", SdaiString("saw"));
    const std::string text = exchange::WriteText(*model, messages_, "tools.stp");
    EXPECT_THAT(text, testing::StartsWith("ISO-10303-21;"));
    EXPECT_THAT(text, HasSubstr("#1=TOOL('saw');"));
    std::uint64_t seen = 0;
    const exchange::ModelOptions options{.express = kTools,
                                         .progress = [&](std::uint64_t read) { seen = read; }};
    const auto again = exchange::ReadText(text, messages_, options);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->GetEntityExtent("TOOL")->GetMemberCount(), 1);
    EXPECT_LE(seen, text.size());
    EXPECT_THAT(messages_, IsEmpty());
}

TEST_F(ExchangeModels, OfDamagedTextsAreReadAsFarAsTheyGo) {
    const std::string text =
        "ISO-10303-21;HEADER;FILE_SCHEMA(('TOOLS'));ENDSEC;DATA;\n#1=TOOL(#9);\n#2=TOOL('b');\n"
        "ENDSEC;END-ISO-10303-21;";
    EXPECT_EQ(exchange::ReadText(text, messages_, {.express = kTools}, "damaged"), nullptr);
    ASSERT_FALSE(messages_.empty());
    EXPECT_THAT(messages_.front(), HasSubstr("damaged:2:"));
    messages_.clear();
    const auto model = exchange::ReadText(text, messages_, {.express = kTools, .lenient = true});
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model->GetEntityExtent("TOOL")->GetMemberCount(), 2);
    EXPECT_THAT(messages_, testing::Contains(HasSubstr("<text>:2:9: there is no instance #9")));
}

}  // namespace
