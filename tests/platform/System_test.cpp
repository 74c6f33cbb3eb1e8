// The environment and unique identifiers.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "KORSystem.h"

namespace {

std::string TextOf(const KORUuid& uuid) {
    char text[KORUuid::kTextLength + 1];
    uuid.UUID_to_chaine(text);
    return text;
}

}  // namespace

TEST(Environment, GivesTheValueOfAVariable) {
    setenv("ORX_TEST_VARIABLE", "some value", 1);
    EXPECT_STREQ(KORGetEnv("ORX_TEST_VARIABLE"), "some value");
    setenv("ORX_TEST_VARIABLE", "", 1);
    EXPECT_STREQ(KORGetEnv("ORX_TEST_VARIABLE"), "");
    unsetenv("ORX_TEST_VARIABLE");
    EXPECT_EQ(KORGetEnv("ORX_TEST_VARIABLE"), nullptr);
}

TEST(Uuid, HasTheFormOfVersion4) {
    for (int i = 0; i < 1'000; ++i) {
        const std::string text = TextOf(KORUuid());
        ASSERT_EQ(text.size(), 36U) << text;
        for (std::size_t at = 0; at < text.size(); ++at) {
            if (at == 8 || at == 13 || at == 18 || at == 23) {
                ASSERT_EQ(text[at], '-') << text;
            } else {
                ASSERT_NE(std::strchr("0123456789abcdef", text[at]), nullptr) << text;
            }
        }
        ASSERT_EQ(text[14], '4') << text;                           // version 4
        ASSERT_NE(std::strchr("89ab", text[19]), nullptr) << text;  // the variant of RFC 4122
    }
}

TEST(Uuid, WritesItsTextAndANulAndNoMore) {
    EXPECT_EQ(KORUuid::kTextLength, 36);
    char buffer[40];
    std::memset(buffer, '#', sizeof buffer);
    KORUuid().UUID_to_chaine(buffer);
    EXPECT_EQ(std::strlen(buffer), 36U);
    EXPECT_EQ(buffer[37], '#');
}

TEST(Uuid, WritesTheSameTextEveryTime) {
    const KORUuid uuid;
    EXPECT_EQ(TextOf(uuid), TextOf(uuid));
}

TEST(Uuid, IsDifferentFromEveryOther) {
    std::set<std::string> texts;
    for (int i = 0; i < 10'000; ++i) texts.insert(TextOf(KORUuid()));
    EXPECT_EQ(texts.size(), 10'000U);
}

TEST(Uuid, IsDifferentInEveryThread) {
    std::vector<std::vector<std::string>> made(4);
    std::vector<std::thread> threads;
    for (std::vector<std::string>& own : made) {
        threads.emplace_back([&own] {
            for (int i = 0; i < 1'000; ++i) own.push_back(TextOf(KORUuid()));
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::set<std::string> texts;
    for (const auto& own : made) texts.insert(own.begin(), own.end());
    EXPECT_EQ(texts.size(), 4'000U);
}

// If a child process inherited the state of the generator, both would get the same identifier.
TEST(Uuid, IsDifferentInAChildProcess) {
    TextOf(KORUuid());
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const std::string text = TextOf(KORUuid());
        _exit(write(ends[1], text.data(), text.size()) == 36 ? 0 : 1);
    }
    const std::string own = TextOf(KORUuid());
    int status = 1;
    waitpid(child, &status, 0);
    char text[36];
    ASSERT_EQ(read(ends[0], text, sizeof text), 36);
    close(ends[0]);
    close(ends[1]);
    EXPECT_EQ(status, 0);
    EXPECT_NE(std::string(text, sizeof text), own);
}
