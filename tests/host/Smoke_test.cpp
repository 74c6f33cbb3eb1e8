#include <gtest/gtest.h>

#include "Orx.h"

TEST(Orx, TellsItsVersion) {
    const OrxResult result = RunOrx({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out.rfind("orx ", 0), 0U) << result.out;
}
