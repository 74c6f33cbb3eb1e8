// Two threads reading a file produce what one thread produces: the same instances in the same
// order, the same messages at the same places, wherever the second thread begins.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Allocations.h"
#include "Exchange.h"
#include "TestSchema.h"

namespace {

using exchange::Message;
using exchange::Messages;
using exchange::ReadOptions;

const std::string kHeader =
    "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n"
    "FILE_SCHEMA(('TEST_SCHEMA'));\nENDSEC;\n";
const std::string kEnd = "ENDSEC;\nEND-ISO-10303-21;\n";

void AddMessages(std::string& to, const std::vector<Message>& messages, std::uint64_t count) {
    for (const Message& message : messages) {
        to += message.ToString() + (message.mendable ? " mendable\n" : "\n");
    }
    to += std::to_string(count) + '\n';
}

// All observable results of reading.
std::string Read(std::string_view text, bool lenient, std::optional<std::uint64_t> secondHalf) {
    ReadOptions options;
    options.lenient = lenient;
    options.threads = 1;
    options.secondHalf = secondHalf;
    Messages messages;
    exchange::DataSet dataSet =
        exchange::ParseDataSet(text, "file", TestSchemas(), options, messages);
    std::string seen;
    AddMessages(seen, messages.Errors(), messages.ErrorCount());
    AddMessages(seen, messages.Warnings(), messages.WarningCount());
    if (dataSet.model == nullptr) return seen;
    const kor::Model& model = *dataSet.model;
    std::string problem;
    seen += exchange::ToExchangeText(dataSet, &problem) + problem + '\n';
    for (const kor::ModelType& type : model.Types()) {
        seen += type.entity->FoldedName() + ' ' + std::to_string(type.entity->Number()) + ':';
        type.ForEachInstance([&seen](const kor::Instance& instance) {
            seen += ' ' + std::to_string(instance.Id()) + '/' + std::to_string(instance.Order());
        });
        seen += ' ' + std::to_string(type.instanceCount) + '\n';
    }
    model.ForEachInstance([&](const kor::Instance& instance) {
        if (model.Find(instance.Id()) != &instance || instance.FindEntityInstanceModel() != &model)
            seen += "not found: " + std::to_string(instance.Id());
    });
    // New instances come after all others, in extents and among users.
    kor::Instance& added =
        dataSet.model->Create(*dataSet.model->TypeOf(*model.FindEntity(std::string_view("ITEM"))));
    seen += std::to_string(added.Id()) + '/' + std::to_string(added.Order()) + '\n';
    const SdaiAggrInstance* items = model.Extent(std::string_view("ITEM"));
    for (long i = 0; i < items->GetMemberCount(); ++i) {
        const SdaiEntityInstance* item = items->GetInstanceMember(i);
        seen += std::to_string(item->GetInstanceNameId()) + ':';
        using namespace sdai_names;
        for (const SdaiEntityInstance* user : model.UsersOf(*item, "HOLDER"_name, "ITEM"_name)) {
            seen += ' ' + std::to_string(user->GetInstanceNameId());
        }
        seen += '\n';
    }
    return seen;
}

void ExpectSame(const std::string& text) {
    for (const bool lenient : {false, true}) {
        const std::string alone = Read(text, lenient, std::nullopt);
        for (std::uint64_t from = 0; from <= text.size(); ++from) {
            ASSERT_EQ(Read(text, lenient, from), alone) << "from " << from << " of\n" << text;
        }
    }
}

const std::vector<std::string> kData = {
    // references in both directions, within values of every kind
    "DATA;\n#1=HOLDER(#5);\n#2=HOLDERS((#1,#5,#6));\n#3=ITEM('a');\n#4=CHOOSER(#7);\n"
    "#5=ITEM('a text of more than fourteen characters');\n#6=HOLDERS((#3,#5));\n#7=ITEM($);\n"
    "#8=CHOOSER(LABEL('x'));\n#9=CHOOSER(ITEM_LIST((#3,#7)));\n#10=HOLDER(#3);\n"
    "#11=HOLDER(#12);\n#12=SPECIAL_ITEM('b',3);\n",
    // forward references to the same instance in both halves; one to a missing instance
    "DATA;\n#1=HOLDER(#9);\n#2=HOLDER(#9);\n#3=HOLDERS((#9,#8,#9));\n#4=HOLDER(#9);\n"
    "#5=HOLDERS((#8,#9));\n#9=ITEM('');\n",
    // types that the schema does not declare, and combinations, in either half or both
    "DATA;\n#1=OTHER(1,#4);\n#2=(LEFT(#9)BASE('b')RIGHT($));\n#3=OTHER(1);\n#4=THIRD(*);\n"
    "#5=OTHER(2,#1);\n#6=(RIGHT($)BASE('b')LEFT($));\n#7=(FOURTH(1)BASE('')OTHER());\n"
    "#8=THIRD(.T.);\n#9=ITEM('n');\n#10=(OTHER()FOURTH(1)BASE(''));\n#11=FIFTH(#2,#10);\n",
    // text that only looks like statements
    "DATA;\n#1=ITEM('no; #2=ITEM(''x'');\n#3=ITEM();');\n/* ;\n#4=ITEM('c'); */#5=HOLDER(#1);\n"
    "/* #6 */ #7=ITEM('d');#8=ITEM\n('e')\n;\r\n#9=ITEM('f');\r#10=HOLDER(#9);\n",
    // warnings about kind and count, in either half; more than are kept
    "DATA;\n#1=ITEM(5);\n  #2=NUMBERS(('x',1.));\n#3=ITEM(6);#4=ITEM(7);\n#5=CHOOSER(BAD(1));\n"
    "#6=ITEM(.T.);#7=HOLDER('t');\n#8=ITEM(1.5);\n",
    "DATA;\n#1=NUMBERS(('x','x','x','x','x','x','x','x','x','x','x'));\n"
    "#2=NUMBERS(('x','x','x','x','x','x','x','x','x','x','x'));\n#3=ITEM(6);\n",
    // one name twice; a broken instance, referred to
    "DATA;\n#1=ITEM('a');\n#2=HOLDER(#1);\n#1=ITEM('b');\n#3=HOLDER(#4);\n#4=ITEM('c';\n"
    "#5=HOLDER(#4);\n#6=ITEM('d','e');\n#7=HOLDER(#6);\n",
    // several sections, the last without instances
    "DATA;\n#1=ITEM('a');\n#2=HOLDER(#3);\nENDSEC;\nDATA('x',('y'));\n#3=ITEM('b');\n#4=ITEM('c');"
    "\n"
    "ENDSEC;\nDATA('z',('y'));\n",
    // scopes
    "DATA;\n#1=ITEM('a');\n#5=&SCOPE\n#2=ITEM('b');\n#3=ITEM('c');\nENDSCOPE /#2/ HOLDER(#2);\n"
    "#6=ITEM('d');\n#7=&SCOPE\n#8=ITEM('e');\nENDSCOPE HOLDER(#8);\n#9=HOLDER(#7);\n",
    // anchors and references
    "ANCHOR;\n<a>=#1;\n<b>=#9;\nENDSEC;\nREFERENCE;\n#5=<x.stp#y>;\n@6=<z>;\nENDSEC;\n"
    "DATA;\n#1=HOLDER(#5);\n#2=CHOOSER(@6);\n#3=ITEM('a');\n#4=CHOOSER(@7);\n#5=ITEM('b');\n",
    // characters beyond ASCII: UTF-8, and bytes that are not
    "DATA;\n#1=ITEM('\xC3\xA9');\n#2=ITEM('b');\n#3=ITEM('\xC3\xA9\xC5\x82');\n",
    "DATA;\n#1=ITEM('a');\n#2=ITEM('\xE9');\n#3=ITEM('b');\n#4=ITEM('\xE9');\n#5=HOLDER(#2);\n",
    // names beyond the largest, and far apart
    "DATA;\n#1=HOLDER(#99999999999999999999);\n#99999999999999999999=ITEM('a');\n"
    "#88888888888888888888=ITEM('b');\n#3=HOLDER(#88888888888888888888);\n",
    "DATA;\n#1=HOLDER(#900000000000);\n#70000000000=ITEM('a');\n#900000000000=ITEM('b');\n"
    "#5000000=HOLDER(#70000000000);\n#4=HOLDER(#6000000);\n#6000000=ITEM('c');\n",
    // end of the file within a value
    "DATA;\n#1=ITEM('a');\n#2=HOLDER(#1);\n#3=ITEM('b",
};

TEST(SecondHalf, GivesWhatOneThreadReadsWhereverItBegins) {
    for (const std::string& data : kData) ExpectSame(kHeader + data + kEnd);
    ExpectSame(kHeader + "DATA;\n" + kEnd + "SIGNATURE;\n#1=ITEM('a');\n#2=x;\nENDSEC;\n");
}

TEST(SecondHalf, GivesWhatOneThreadReadsOfDamagedFiles) {
    std::mt19937 random(15);
    const std::string pieces[] = {"'", "/*", "*/", ";",       "\n#", "#1",
                                  "(", ")",  "\\", "ENDSEC;", ","};
    for (int round = 0; round < 400; ++round) {
        std::string text = kHeader + kData[random() % kData.size()] + kEnd;
        for (auto count = random() % 3; count <= 2; ++count) {
            const std::size_t at = kHeader.size() + random() % (text.size() - kHeader.size());
            switch (random() % 3) {
                case 0: text.erase(at, 1 + random() % 9); break;
                case 1: text.insert(at, pieces[random() % std::size(pieces)]); break;
                default: text.insert(at, text.substr(at, random() % 40));
            }
        }
        for (const bool lenient : {false, true}) {
            const std::string alone = Read(text, lenient, std::nullopt);
            for (int i = 0; i < 12; ++i) {
                const std::uint64_t from =
                    kHeader.size() + random() % (text.size() - kHeader.size() + 1);
                ASSERT_EQ(Read(text, lenient, from), alone) << "from " << from << " of\n" << text;
            }
        }
    }
}

// As large as files that are read by two threads by default.
TEST(SecondHalf, GivesWhatOneThreadReadsOfALargeFile) {
    std::mt19937 random(16);
    std::string text = kHeader + "DATA;\n";
    constexpr int kCount = 60'000;
    for (int id = 1; id <= kCount; ++id) {
        const std::string name = '#' + std::to_string(id);
        const std::string other = '#' + std::to_string(3 * (1 + random() % (kCount / 3)));
        switch (id % 3) {
            case 0: text += name + "=ITEM('a text of more than fourteen characters');\n"; break;
            case 1: text += name + "=HOLDER(" + other + ");\n"; break;
            default: text += name + "=OTHER" + std::to_string(id % 7) + "(1.5," + other + ");\n";
        }
    }
    text += kEnd;
    ASSERT_GT(text.size(), std::size_t{1} << 20);
    const auto read = [&text](unsigned threads) {
        ReadOptions options;
        options.threads = threads;
        std::uint64_t last = 0;
        options.progress = [&last](std::uint64_t bytes) { last = bytes; };
        Messages messages;
        const exchange::DataSet dataSet =
            exchange::ParseDataSet(text, "file", TestSchemas(), options, messages);
        EXPECT_EQ(last, text.size());
        EXPECT_EQ(messages.ErrorCount(), 0U);
        return exchange::ToExchangeText(dataSet);
    };
    const std::string alone = read(1);
    EXPECT_EQ(alone, text);
    EXPECT_EQ(read(2), alone);
}

// Whichever allocation of the first thread fails, once or from then on.
TEST(SecondHalf, ChangesNothingWhereMemoryRunsOut) {
    using Extent = FailingAllocations::Extent;
    const std::string text = kHeader + kData[2] + kEnd;
    const std::string alone = Read(text, true, std::nullopt);
    for (const Extent extent : {Extent::Once, Extent::FromThenOn}) {
        bool failed = true;
        for (long succeeding = 0; failed; ++succeeding) {
            SCOPED_TRACE(succeeding);
            std::string seen;
            {
                const FailingAllocations failing(succeeding, extent);
                try {
                    seen = Read(text, true, text.size() / 2);
                } catch (const std::bad_alloc&) {
                }
                failed = failing.HaveFailed();
            }
            if (!seen.empty()) {
                ASSERT_EQ(seen, alone);
            }
        }
    }
}

}  // namespace
