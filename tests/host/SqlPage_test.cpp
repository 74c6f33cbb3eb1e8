// The questions of docs/sql.md and the answers shown there.

#include <fstream>

#include "HostTest.h"

namespace {

struct Question {
    std::string title;
    std::string query;
    std::string answer;
};

// A heading "### ...", the query in a block "```sql", the answer in the next block.
std::vector<Question> Questions() {
    std::ifstream page(SOURCE_DIRECTORY "/docs/sql.md");
    std::vector<Question> questions;
    std::string* block = nullptr;  // that contains the line
    std::string other;             // a block of another kind
    bool isAnswerNext = false;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("### ")) {
            questions.push_back({line.substr(4), "", ""});
        } else if (!line.starts_with("```")) {
            if (block != nullptr) *block += line + '\n';
        } else if (block != nullptr) {
            block = nullptr;
        } else if (line == "```sql") {
            block = &questions.back().query;
            isAnswerNext = true;
        } else if (isAnswerNext) {
            block = &questions.back().answer;
            isAnswerNext = false;
        } else {
            block = &other;
        }
    }
    return questions;
}

}  // namespace

TEST(SqlPage, GivesTheAnswersOfItsQuestions) {
    const std::vector<Question> questions = Questions();
    EXPECT_EQ(questions.size(), 10U);
    for (const Question& question : questions) {
        SCOPED_TRACE(question.title);
        EXPECT_GT(Lines(question.answer).size(), 3U);
        ExpectPrints(RunOrx({"sql", "--box", "-m", SOURCE_DIRECTORY "/examples/handcart.stp",
                             question.query}),
                     question.answer);
    }
}
