// GetInst, GetItem, GetMemberCount and the other small accessors.

#include <gmock/gmock.h>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::ElementsAre;

TEST(GetMemberCount, CountsTheMembersOfAnAggregate) {
    const TestModel model("AUTOMOTIVE_DESIGN", "#1=CARTESIAN_POINT('',(1.,2.,3.));");
    TraceCapture trace;
    EXPECT_EQ(IntegerIn(GetMemberCount(model[1].GetAttr("COORDINATES"))), 3);
    EXPECT_THAT(trace.Messages("SdaiPrimitiveH GetMemberCount ->"), ElementsAre("Taille3"));
}
