// Models in databases for programs that embed the platform.

#include "DatabaseModels.h"

#include <gmock/gmock.h>

#include <memory>
#include <new>

#include "Allocations.h"
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

// The values of an instance belong to the model from its creation on, whatever fails after that.
TEST_P(DatabaseModels, AreLoadedOrNotWhereMemoryRunsOut) {
    if (!Name().starts_with("sqlite:")) GTEST_SKIP() << "it would connect a thousand times";
    Lines messages;
    const auto made = StoredModel::Make("CDMA", messages);
    SdaiModel& model = made->Model();
    for (const char* type : {"part_object", "part_link"}) {
        SdaiAppInstance* instance = model.GetEntityDefinition(type)->CreateEntityInstance(&model);
        instance->PutAttr(SdaiString("S_DESC"), SdaiString("a text of more than fourteen letters"));
        instance->PutAttr(SdaiString("ID"), SdaiString("another text, and as long as that"));
    }
    ASSERT_TRUE(made->Save(Name(), messages));
    bool failed = true;
    for (long succeeding = 0; failed; ++succeeding) {
        std::unique_ptr<StoredModel> loaded;
        {
            const FailingAllocations failing(succeeding, FailingAllocations::Extent::Once);
            try {
                loaded = StoredModel::Load(Name(), messages);
            } catch (const std::bad_alloc&) {
            }
            failed = failing.HaveFailed();
        }
        if (loaded == nullptr) continue;
        const SdaiAggrInstance* parts = loaded->Model().GetEntityExtent("part_object");
        ASSERT_EQ(parts->GetMemberCount(), 1) << succeeding;
        EXPECT_EQ(TextOf(parts->GetInstanceMember(0)->GetAttr("S_DESC")).View(),
                  "a text of more than fourteen letters");
    }
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
