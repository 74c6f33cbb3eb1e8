// Models in databases for programs that embed the platform.

#include "DatabaseModels.h"

#include <gmock/gmock.h>

#include "Places.h"
#include "SdaiAggrInstance.h"
#include "SdaiEntityInstance.h"
#include "SdaiModel.h"

namespace {

using relational::StoredModel;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class DatabaseModels : public Relational {};

TEST_P(DatabaseModels, AreLoadedChangedAndSaved) {
    Lines messages;
    const auto made = StoredModel::Make("CDMA", messages);
    ASSERT_NE(made, nullptr);
    SdaiAppInstance* part =
        made->Model().GetEntityDefinition("part_object")->CreateEntityInstance(&made->Model());
    ASSERT_NE(part, nullptr);
    part->PutAttr(SdaiString("S_PART_NUMBER"), SdaiString("P1"));
    EXPECT_TRUE(made->Save(Name(), messages));
    const auto loaded = StoredModel::Load(Name(), messages);
    ASSERT_NE(loaded, nullptr);
    EXPECT_THAT(messages, IsEmpty());
    EXPECT_EQ(loaded->Model().GetEntityExtent("part_object")->GetMemberCount(), 1);
    At().Execute("UPDATE part_object SET s_desc = 'of another'");
    part->PutAttr(SdaiString("S_DESC"), SdaiString("mine"));
    EXPECT_FALSE(made->Save(Name(), messages));
    EXPECT_THAT(messages, ElementsAre(HasSubstr(": another has changed meanwhile: #1")));
}

ON_EACH_DATABASE(DatabaseModels);

TEST(StoredModels, TellWhatIsWrong) {
    Lines messages;
    EXPECT_EQ(StoredModel::Make("cdm", messages), nullptr);
    EXPECT_EQ(StoredModel::Load("sqlite:/no/such.db", messages), nullptr);
    EXPECT_EQ(StoredModel::Load("sqlite:/no/such.db", messages, "SCHEMA x"), nullptr);
    EXPECT_THAT(messages, ElementsAre("<schema>: unknown schema 'cdm'; did you mean 'cdma'?",
                                      "sqlite:/no/such.db: unable to open database file",
                                      HasSubstr("<schema>:1:")));
}

}  // namespace
