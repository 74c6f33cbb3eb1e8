// IsNewer, IsVersion and RemoveValueVersion.

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "KORDMInstance.h"
#include "KORDMNarvo.h"
#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

// If set, document management compares identities but returns no history.
bool historyFails = false;

}  // namespace

// These replace the platform's functions, which return a history for everything that can be
// compared, and ignore the modes.
int KORDMInstance::GetAllRevision(KORListValKORDMInstance& list, int mode1, int mode2,
                                  int mode3) const {
    EXPECT_EQ(mode1, 0);
    EXPECT_EQ(mode2, 1);
    EXPECT_EQ(mode3, 0);
    if (historyFails) return 1;
    using Platform = int (*)(const KORDMInstance*, KORListValKORDMInstance&, int, int, int);
    static const auto platform = reinterpret_cast<Platform>(
        dlsym(RTLD_NEXT, "_ZNK13KORDMInstance14GetAllRevisionER23KORListValKORDMInstanceiii"));
    return platform(this, list, mode1, mode2, mode3);
}

int KORDMInstance::IsNewerRevision(const KORDMInstance& other, int mode, int& diagnostic) const {
    EXPECT_EQ(mode, 1);
    using Platform = int (*)(const KORDMInstance*, const KORDMInstance&, int, int&);
    static const auto platform = reinterpret_cast<Platform>(
        dlsym(RTLD_NEXT, "_ZNK13KORDMInstance15IsNewerRevisionERKS_iRi"));
    return platform(this, other, mode, diagnostic);
}

namespace {

const char* const kNewerLabel = "SdaiPrimitiveH IsNewer ->";
const char* const kVersionLabel = "SdaiPrimitiveH IsVersion ->";
const char* const kRemoveLabel = "SdaiPrimitiveH RemoveValueVersion ->";

// Rows of a data set: a part, and a record of its identity, of which only the Coid varies.
std::string Part(long id) {
    return "#" + std::to_string(id) + "=PART_OBJECT('P',$,$,$,$,$,$,$,$,$);\n";
}
std::string Record(long id, long part, const std::string& coid) {
    return "#" + std::to_string(id) + "=CDMA_ID(#" + std::to_string(part) + ",'" + coid +
           "','2B','ENV','PARTS');\n";
}
std::string Parts(long first, long last) {
    std::string rows;
    for (long id = first; id <= last; ++id) rows += Part(id);
    return rows;
}

// A family of revisions with these Coids, oldest first.
void AddFamily(const std::vector<std::string>& coids) {
    KORListValKORDMInstance revisions;
    for (const std::string& coid : coids) {
        revisions.Append(KORDMInstance("KORCON", "ENV", "PARTS",
                                       KORDMNarvo::HexaToDouble(coid.c_str()),
                                       KORDMNarvo::HexaToDouble("2B"), nullptr, nullptr, 0));
    }
    KORDMStore::AddFamily(revisions);
}

std::string Joined(const std::vector<std::string>& messages, std::size_t from) {
    std::string joined;
    for (std::size_t i = from; i < messages.size(); ++i) joined += messages[i];
    return joined;
}

// The functions' state is global: every test starts with it cleared.
class Versions : public testing::Test {
  protected:
    Versions() { Forget(); }
    ~Versions() override { Forget(); }

    static void Forget() {
        RemoveValueVersion();
        KORDMStore::RemoveAll();
    }

    static bool Newer(const SdaiPrimitiveH& a, const SdaiPrimitiveH& b) {
        const SdaiPrimitiveH result = IsNewer(a, b);
        EXPECT_NE(IsTrue(result), IsFalse(result));  // never UNKNOWN
        return IsTrue(result);
    }
    // The instance name of the representative; 0 if there is none.
    static unsigned long Representative(const SdaiPrimitiveH& part) {
        const SdaiPrimitiveH result = IsVersion(part, 1_h);
        return IsUnset(result) ? 0 : InstanceIn(result)->GetInstanceNameId();
    }
    static bool SeenBefore(const SdaiPrimitiveH& part) {
        const SdaiPrimitiveH result = IsVersion(part, 0_h);
        EXPECT_NE(IsTrue(result), IsFalse(result));
        return IsTrue(result);
    }
};

// Two families: R has the revisions #1, #2 and #3, S has #4 and #5. Part #6 has no record, #7 has
// an identity without family, and #8 has the identity of #1 in lower case.
class TwoFamilies : public Versions {
  protected:
    TwoFamilies() {
        AddFamily({"1A", "2A", "3A"});
        AddFamily({"4A", "5A"});
    }

    const TestModel model_{"cdma", Parts(1, 8) + Record(11, 1, "1A") + Record(12, 2, "2A") +
                                       Record(13, 3, "3A") + Record(14, 4, "4A") +
                                       Record(15, 5, "5A") + Record(17, 7, "7A") +
                                       Record(18, 8, "1a")};
    const SdaiPrimitiveH r1_ = model_[1];
    const SdaiPrimitiveH r2_ = model_[2];
    const SdaiPrimitiveH r3_ = model_[3];
    const SdaiPrimitiveH s1_ = model_[4];
    const SdaiPrimitiveH s2_ = model_[5];
    const SdaiPrimitiveH unrecorded_ = model_[6];
    const SdaiPrimitiveH unknown_ = model_[7];
    const SdaiPrimitiveH twin_ = model_[8];
};

}  // namespace

// ---- IsNewer

TEST_F(TwoFamilies, IsNewerHoldsForTheRevisionThatDirectlyFollowsAlone) {
    const struct {
        unsigned long a;
        unsigned long b;
        bool newer;
    } kPairs[] = {
        {2, 1, true},
        {3, 2, true},
        {5, 4, true},
        // Two revisions apart.
        {3, 1, false},
        // Older.
        {1, 2, false},
        {2, 3, false},
        {1, 3, false},
        {4, 5, false},
        // The same part.
        {1, 1, false},
        {3, 3, false},
        // Two parts with one identity: identifiers are compared ignoring case.
        {8, 1, false},
        {1, 8, false},
        {2, 8, true},
        // Of two families.
        {4, 3, false},
        {3, 4, false},
        {4, 1, false},
        {5, 1, false},
        {1, 5, false},
        // Without record.
        {6, 1, false},
        {1, 6, false},
        {6, 7, false},
        // Without family.
        {7, 1, false},
        {1, 7, false},
        {7, 3, false},
        {7, 5, false},
    };
    for (const char* const lists : {"empty", "filled"}) {
        for (const int level : {0, 12}) {
            const TraceCapture trace(level);
            for (const auto& [a, b, newer] : kPairs) {
                // With filled lists, an older part that is not in them is a separate case.
                if (std::string(lists) == "filled" && a == 1 && b == 7) continue;
                EXPECT_EQ(Newer(model_[a], model_[b]), newer)
                    << a << " after " << b << ", lists " << lists;
            }
        }
        Representative(r2_);
        Representative(s1_);
    }
}

TEST_F(TwoFamilies, IsNewerIsFalseForAnythingButTwoInstances) {
    for (const char* const lists : {"empty", "filled"}) {
        for (const int level : {0, 12}) {
            const TraceCapture trace(level);
            EXPECT_FALSE(Newer({}, {})) << lists;
            EXPECT_FALSE(Newer(r2_, {})) << lists;
            EXPECT_FALSE(Newer({}, r1_)) << lists;
            EXPECT_FALSE(Newer("a"_h, "b"_h)) << lists;
            EXPECT_FALSE(Newer(r2_, "b"_h)) << lists;
            EXPECT_FALSE(Newer(7_h, r1_)) << lists;
            EXPECT_FALSE(Newer(model_[12], model_[11])) << lists;  // records are not parts
        }
        Representative(r1_);
    }
}

TEST_F(TwoFamilies, IsNewerIsFalseForPartsOfTwoModels) {
    const TestModel other("cdma", Parts(1, 2) + Record(11, 1, "1A") + Record(12, 2, "2A"));
    EXPECT_FALSE(Newer(other[2], r1_));
    EXPECT_FALSE(Newer(r2_, other[1]));
    EXPECT_TRUE(Newer(other[2], other[1]));
}

TEST_F(TwoFamilies, IsNewerIsFalseInAModelOfAnotherSchema) {
    const TestModel step("AUTOMOTIVE_DESIGN", "#1=PRODUCT('a','',$,());#2=PRODUCT('b','',$,());");
    EXPECT_FALSE(Newer(step[2], step[1]));
}

TEST_F(Versions, IsNewerDoesNotMatchRecordsWithoutPart) {
    AddFamily({"1A", "2A"});
    const TestModel model("cdma",
                          "#1=CDMA_ID($,'1A','2B','ENV','PARTS');"
                          "#2=CDMA_ID($,'2A','2B','ENV','PARTS');" +
                              Parts(3, 4));
    EXPECT_FALSE(Newer(model[4], model[3]));
    EXPECT_FALSE(Newer("a"_h, "b"_h));
}

TEST_F(TwoFamilies, IsNewerTracesTheRoughWay) {
    const TraceCapture trace;
    EXPECT_TRUE(Newer(r2_, r1_));
    const auto messages = trace.Messages(kNewerLabel);
    ASSERT_GT(messages.size(), 20U);
    // In the model, the record of the second part comes first.
    EXPECT_THAT(std::vector(messages.begin(), messages.begin() + 20),
                ElementsAre("the Parts exist",                                   //
                            " -> OUI sur #2 ", "    CAENV  = ENV",               //
                            "    CATAB  = PARTS", "    COID   = 1A",             //
                            "    COMPID = 2B", "    ind= 4",                     //
                            " -> OUI sur #1 ", "    CAENV  = ENV",               //
                            "    CATAB  = PARTS", "    COID   = 2A",             //
                            "    COMPID = 2B", "    ind= 9",                     //
                            " Create the DM Instance #1",                        //
                            " Create the DM Instance #2",                        //
                            " >> Listes STATIQUES pas pretes : rough Version ",  //
                            " DIAGNOSTIC from KORDMINSTANCE comparison = 0",     //
                            " -> Affinage (comme le fromage)",                   //
                            "    Retrouver toutes les versions",                 //
                            "    -> OK .. taille: 3"));
    EXPECT_EQ(Joined(messages, 20), "       pos1: 1 - pos2: 2 Valeur retournee : TRUE");
}

TEST_F(TwoFamilies, IsNewerTracesTheScoresInTheOrderOfTheRecords) {
    const TestModel model("cdma", Parts(1, 3) + Record(11, 2, "2A") + Record(12, 3, "3A") +
                                      Record(13, 1, "1A") + Record(14, 3, "3A"));
    const TraceCapture trace;
    EXPECT_TRUE(Newer(model[2], model[1]));
    const auto messages = trace.Messages(kNewerLabel);
    ASSERT_GT(messages.size(), 13U);
    EXPECT_EQ(messages[1], " -> OUI sur #1 ");
    EXPECT_EQ(messages[6], "    ind= 1");
    EXPECT_EQ(messages[7], " -> OUI sur #2 ");
    EXPECT_EQ(messages[12], "    ind= 6");
}

TEST_F(TwoFamilies, IsNewerTracesRevisionsThatAreTooFarApart) {
    const TraceCapture trace;
    EXPECT_FALSE(Newer(r3_, r1_));
    EXPECT_EQ(Joined(trace.Messages(kNewerLabel), 20),
              "       pos1: 1 - pos2: 3 Valeur retournee : FALSE");
}

// If the comparison itself decides, the function returns immediately.
TEST_F(TwoFamilies, IsNewerTracesNothingAfterAComparisonThatFails) {
    {
        const TraceCapture trace;
        EXPECT_FALSE(Newer(r1_, r2_));
        EXPECT_EQ(trace.Messages(kNewerLabel).back(),
                  " DIAGNOSTIC from KORDMINSTANCE comparison = 0");
    }
    const TraceCapture trace;
    EXPECT_FALSE(Newer(s1_, r3_));
    const std::string last = trace.Messages(kNewerLabel).back();
    EXPECT_THAT(last, StartsWith(" DIAGNOSTIC from KORDMINSTANCE comparison = "));
    EXPECT_NE(last, " DIAGNOSTIC from KORDMINSTANCE comparison = 0");
}

// Newer, but there is no history to tell by how much.
TEST_F(TwoFamilies, IsNewerIsFalseWithoutAHistory) {
    historyFails = true;
    const TraceCapture trace;
    const bool newer = Newer(r2_, r1_);
    historyFails = false;
    EXPECT_FALSE(newer);
    const auto messages = trace.Messages(kNewerLabel);
    ASSERT_EQ(messages.size(), 19U);
    EXPECT_EQ(messages[16], " DIAGNOSTIC from KORDMINSTANCE comparison = 0");
    EXPECT_EQ(messages[17], " -> Affinage (comme le fromage)");
    EXPECT_EQ(messages[18], "    Retrouver toutes les versions");
    EXPECT_TRUE(Newer(r2_, r1_));
}

TEST_F(TwoFamilies, IsNewerTracesNothingAfterIdenticalParts) {
    const TraceCapture trace;
    EXPECT_FALSE(Newer(r1_, r1_));
    EXPECT_THAT(trace.Messages(kNewerLabel),
                ElementsAre("the Parts exist", " Entites identiques !! "));
}

TEST_F(TwoFamilies, IsNewerTracesNothingAfterAPartWithoutRecord) {
    const TraceCapture trace;
    EXPECT_FALSE(Newer(unrecorded_, r1_));
    EXPECT_THAT(
        trace.Messages(kNewerLabel),
        ElementsAre("the Parts exist", " -> OUI sur #2 ", "    CAENV  = ENV", "    CATAB  = PARTS",
                    "    COID   = 1A", "    COMPID = 2B", "    ind= 4"));
}

TEST_F(TwoFamilies, IsNewerTracesItsResultAloneForAMissingPart) {
    const TraceCapture trace;
    IsNewer({}, r1_);
    IsNewer(r1_, {});
    EXPECT_THAT(trace.Messages(kNewerLabel),
                ElementsAre(" Valeur retournee : FALSE", " Valeur retournee : FALSE"));
}

// ---- IsNewer, once IsVersion has filled the lists

TEST_F(TwoFamilies, IsNewerTracesTheLightWay) {
    Representative(r1_);
    const TraceCapture trace;
    EXPECT_TRUE(Newer(r2_, r1_));
    EXPECT_FALSE(Newer(r1_, r2_));
    const auto messages = trace.Messages(kNewerLabel);
    EXPECT_THAT(messages, Contains(" >> Listes STATIQUES pretes : light Version").Times(2));
    // No comparison and no other search.
    EXPECT_THAT(messages, Not(Contains(HasSubstr("DIAGNOSTIC"))));
    EXPECT_THAT(messages, Not(Contains(HasSubstr("rough Version"))));
    EXPECT_THAT(messages, Not(Contains(HasSubstr("Retrouver toutes les versions"))));
    EXPECT_THAT(messages, Contains(" Valeur retournee : TRUE").Times(1));
    EXPECT_THAT(messages, Contains(" Valeur retournee : FALSE").Times(1));
    EXPECT_EQ(messages.back(), " Valeur retournee : FALSE");
}

TEST_F(TwoFamilies, IsNewerStopsAtTheEndOfTheFamily) {
    // The first of S comes directly after the last of R in the lists, and then the reverse.
    Representative(r1_);
    Representative(s1_);
    EXPECT_FALSE(Newer(s1_, r3_));
    EXPECT_FALSE(Newer(r1_, s2_));
    EXPECT_TRUE(Newer(r3_, r2_));
    EXPECT_TRUE(Newer(s2_, s1_));
    RemoveValueVersion();
    Representative(s2_);
    Representative(r3_);
    EXPECT_FALSE(Newer(r1_, s2_));
    EXPECT_FALSE(Newer(s1_, r3_));
    EXPECT_TRUE(Newer(r2_, r1_));
    EXPECT_TRUE(Newer(s2_, s1_));
}

TEST_F(Versions, IsNewerTellsFamiliesOfOneRevisionApart) {
    AddFamily({"1A"});
    AddFamily({"2A"});
    AddFamily({"3A"});
    const TestModel model(
        "cdma", Parts(1, 3) + Record(11, 1, "1A") + Record(12, 2, "2A") + Record(13, 3, "3A"));
    for (const unsigned long id : {1UL, 2UL, 3UL}) Representative(model[id]);
    EXPECT_FALSE(Newer(model[2], model[1]));
    EXPECT_FALSE(Newer(model[3], model[2]));
}

TEST_F(TwoFamilies, IsNewerKnowsOnlyTheFamiliesInTheListsOnceThereAreAny) {
    Representative(r1_);
    EXPECT_TRUE(Newer(r2_, r1_));
    EXPECT_FALSE(Newer(s2_, s1_));
    Representative(s1_);
    EXPECT_TRUE(Newer(s2_, s1_));
}

TEST_F(TwoFamilies, IsNewerNeedsNoDocumentManagementOnceTheListsAreFilled) {
    Representative(r1_);
    KORDMStore::RemoveAll();
    EXPECT_TRUE(Newer(r2_, r1_));
    EXPECT_FALSE(Newer(r3_, r1_));
    RemoveValueVersion();
    EXPECT_FALSE(Newer(r2_, r1_));
}

// A part that is not in the lists has position 0, directly before the first position.
TEST_F(TwoFamilies, IsNewerTakesTheFirstOfTheListsAsFollowingAnUnknownPart) {
    EXPECT_FALSE(Newer(r1_, unknown_));
    Representative(r1_);
    EXPECT_TRUE(Newer(r1_, unknown_));
    EXPECT_TRUE(Newer(r1_, s1_));
    EXPECT_FALSE(Newer(r2_, unknown_));
    EXPECT_FALSE(Newer(unknown_, r1_));
}

// ---- The records that IsNewer visits

TEST_F(Versions, IsNewerCountsTheRecordsOfEachPartByItsWeights) {
    AddFamily({"1A", "2A"});
    // The part of each record: 1 and 2 are the first and the second revision.
    const struct {
        std::vector<long> parts;
        bool found;
    } kOrders[] = {
        {{1, 2}, true},
        {{2, 1}, true},
        {{3, 1, 3, 2, 3}, true},
        // After both are found, the rest is not read.
        {{1, 2, 2, 1, 1}, true},
        {{2, 1, 1, 2, 2}, true},
        // With a second record before the other part, the weights miss.
        {{2, 2, 1}, false},
        {{2, 2, 1, 1}, false},
        {{1, 1, 2}, false},
        {{1, 1, 2, 2, 2}, false},
        {{2, 2, 2, 1}, false},
        // The weights add up, but the other part's record was skipped.
        {{2, 2, 1, 2, 2}, false},
        {{1, 1, 2, 1, 1}, false},
        {{1}, false},
        {{2, 2}, false},
        {{}, false},
    };
    for (const auto& [parts, found] : kOrders) {
        std::string rows = Parts(1, 3);
        for (std::size_t i = 0; i < parts.size(); ++i) {
            rows += Record(static_cast<long>(11 + i), parts[i], std::to_string(parts[i]) + "A");
        }
        const TestModel model("cdma", rows);
        EXPECT_EQ(Newer(model[2], model[1]), found) << rows;
        EXPECT_FALSE(Newer(model[1], model[2])) << rows;
    }
}

// The weights of three records of A and two of B also add up to 10 (2, 3, 4, 8, 9 and 1 more), and
// so do those of five of A around one of B, but the identity of B has not been read: nothing is
// compared.
TEST_F(TwoFamilies, IsNewerIsFalseWhenTheWeightsAddUpWithoutTheIdentityOfB) {
    const std::vector<std::string> ofA{
        " -> OUI sur #1 ", "    CAENV  = ENV", "    CATAB  = PARTS",
        "    COID   = 2A", "    COMPID = 2B",  "    ind= 1",
    };
    std::vector<std::string> again = ofA;
    again.back() = "    ind= 9";
    for (const std::vector<long>& parts : {std::vector<long>{2, 2, 2, 1, 2}, {2, 2, 1, 2, 2}}) {
        std::string rows = Parts(1, 2);
        for (std::size_t i = 0; i < parts.size(); ++i) {
            rows += Record(static_cast<long>(11 + i), parts[i], std::to_string(parts[i]) + "A");
        }
        const TestModel model("cdma", rows);
        for (const bool seen : {false, true}) {
            if (seen) Representative(r1_);
            const TraceCapture trace;
            EXPECT_FALSE(Newer(model[2], model[1]));
            std::vector<std::string> messages{"the Parts exist"};
            messages.insert(messages.end(), ofA.begin(), ofA.end());
            messages.insert(messages.end(), again.begin(), again.end());
            EXPECT_THAT(trace.Messages(kNewerLabel), ElementsAreArray(messages)) << rows;
        }
        RemoveValueVersion();
    }
}

// The fourth record of A brings the score to 4, a record of B one of A's to 9: each score asks for
// the other part, which that record does not contain.
TEST_F(TwoFamilies, IsNewerReadsAnIdentityFromARecordOfItsPartAlone) {
    const struct {
        std::vector<long> parts;
        std::vector<std::string> scores;
    } kOrders[] = {
        {{2, 2, 2, 2}, {"    ind= 1"}},
        {{2, 2, 2, 2, 1}, {"    ind= 1"}},
        {{2, 2, 2, 2, 2, 2, 2, 2}, {"    ind= 1", "    ind= 9"}},
        {{1, 1, 1, 1}, {"    ind= 4"}},
        {{1, 1, 1, 1, 2}, {"    ind= 4"}},
    };
    for (const auto& [parts, scores] : kOrders) {
        std::string rows = Parts(1, 2);
        for (std::size_t i = 0; i < parts.size(); ++i) {
            rows += Record(static_cast<long>(11 + i), parts[i], std::to_string(parts[i]) + "A");
        }
        const TestModel model("cdma", rows);
        const TraceCapture trace;
        EXPECT_FALSE(Newer(model[2], model[1])) << rows;
        std::vector<std::string> traced;
        for (const std::string& message : trace.Messages(kNewerLabel)) {
            if (message.starts_with("    ind= ")) traced.push_back(message);
            EXPECT_THAT(message, Not(StartsWith(" Create"))) << rows;
        }
        EXPECT_EQ(traced, scores) << rows;
    }
}

// The first record of A and the first of B come to 10 in either order, and no further record is
// read. After two records of A the score is 3, and a record of B brings it to 7 at least, where its
// identity is not read; after two of B it is 12. Whatever follows changes none of this.
TEST_F(Versions, IsNewerComparesTheFirstRecordOfEachPartOrNothing) {
    AddFamily({"1A", "2A", "3A"});
    const TestModel filler("cdma", Parts(1, 1) + Record(11, 1, "1A"));
    // How the records begin (C is another part), the identities of A and B in the first records and
    // in all further ones.
    struct Pair {
        std::string ofA;
        std::string ofB;
    };
    const struct {
        std::string beginning;
        Pair first;
        Pair further;
        bool newer;
    } kCases[] = {
        {"AB", {"2A", "1A"}, {"1A", "2A"}, true},  // of the first, A follows B
        {"BA", {"2A", "1A"}, {"1A", "2A"}, true},
        {"CACCB", {"2A", "1A"}, {"1A", "2A"}, true},
        {"AB", {"1A", "2A"}, {"2A", "1A"}, false},  // of the further ones alone
        {"BA", {"1A", "2A"}, {"2A", "1A"}, false},
        {"AA", {"2A", "1A"}, {"2A", "1A"}, false},  // of any two
        {"BB", {"2A", "1A"}, {"2A", "1A"}, false},
    };
    // Everything of up to four records that may follow.
    std::vector<std::string> continuations{""};
    for (std::size_t i = 0; continuations[i].size() < 4; ++i) {
        for (const char part : {'A', 'B', 'C'}) continuations.push_back(continuations[i] + part);
    }
    for (const auto& [beginning, first, further, newer] : kCases) {
        for (const std::string& continuation : continuations) {
            const std::string order = beginning + continuation;
            std::string rows = Parts(1, 3);
            for (std::size_t i = 0; i < order.size(); ++i) {
                const Pair& pair = order.find(order[i]) == i ? first : further;
                rows += Record(static_cast<long>(11 + i), order[i] - 'A' + 1,
                               order[i] == 'A'   ? pair.ofA
                               : order[i] == 'B' ? pair.ofB
                                                 : "3A");
            }
            const TestModel model("cdma", rows);
            EXPECT_EQ(Newer(model[1], model[2]), newer) << "lists empty\n" << rows;
            Representative(filler[1]);
            EXPECT_EQ(Newer(model[1], model[2]), newer) << "lists filled\n" << rows;
            RemoveValueVersion();
        }
    }
}

TEST_F(Versions, IsNewerIsTrueForEachRevisionDirectlyAfterAnotherOfItsFamily) {
    AddFamily({"1A", "2A", "3A", "4A"});
    AddFamily({"5A", "6A"});
    AddFamily({"7A", "8A"});  // 9A is in no family
    // One part of each family, in another model, for filling the lists.
    const TestModel filler(
        "cdma", Parts(1, 3) + Record(11, 1, "1A") + Record(12, 2, "5A") + Record(13, 3, "7A"));
    const std::set<std::pair<int, int>> following{{2, 1}, {3, 2}, {4, 3}, {6, 5}, {8, 7}};
    for (int a = 1; a <= 9; ++a) {
        for (int b = 1; b <= 9; ++b) {
            const TestModel model("cdma", Parts(1, 2) + Record(11, 1, std::to_string(a) + "A") +
                                              Record(12, 2, std::to_string(b) + "A"));
            const bool expected = following.count({a, b}) == 1;
            EXPECT_EQ(Newer(model[1], model[2]), expected) << a << " after " << b;
            for (const unsigned long id : {1UL, 2UL, 3UL}) Representative(filler[id]);
            // An identity without family has no place in the lists and counts as directly before
            // the first.
            const bool expectedLight = expected || (a == 1 && b == 9);
            EXPECT_EQ(Newer(model[1], model[2]), expectedLight) << a << " after " << b;
            RemoveValueVersion();
        }
    }
}

// ---- IsVersion

TEST_F(TwoFamilies, IsVersionGivesThePartThroughWhichTheFamilyWasFirstSeen) {
    for (const int level : {0, 12}) {
        const TraceCapture trace(level);
        EXPECT_EQ(Representative(r1_), 1U);
        EXPECT_EQ(Representative(r2_), 1U);
        EXPECT_EQ(Representative(s2_), 5U);
        EXPECT_EQ(Representative(r3_), 1U);
        EXPECT_EQ(Representative(s1_), 5U);
        EXPECT_EQ(Representative(r1_), 1U);
        EXPECT_EQ(Representative(twin_), 1U);
        RemoveValueVersion();
        EXPECT_EQ(Representative(r2_), 2U);
        EXPECT_EQ(Representative(r1_), 2U);
        RemoveValueVersion();
    }
}

TEST_F(TwoFamilies, IsVersionTellsWhetherAnotherRevisionWasSeenBefore) {
    for (const int level : {0, 12}) {
        const TraceCapture trace(level);
        EXPECT_FALSE(SeenBefore(r2_));  // which fills the lists, too
        EXPECT_FALSE(SeenBefore(r2_));
        EXPECT_TRUE(SeenBefore(r1_));
        EXPECT_TRUE(SeenBefore(r3_));
        EXPECT_FALSE(SeenBefore(s1_));
        EXPECT_TRUE(SeenBefore(s2_));
        EXPECT_EQ(Representative(r1_), 2U);
        EXPECT_EQ(Representative(s2_), 4U);
        EXPECT_TRUE(SeenBefore(twin_));  // another part, although with the identity of r1
        RemoveValueVersion();
    }
}

TEST_F(TwoFamilies, IsVersionGivesNothingForAPartThatIsNotKnown) {
    for (const char* const lists : {"empty", "filled"}) {
        for (const SdaiPrimitiveH& part : {unrecorded_, unknown_, "text"_h, 7_h, model_[11]}) {
            EXPECT_TRUE(IsUnset(IsVersion(part, 1_h))) << lists;
            EXPECT_TRUE(IsFalse(IsVersion(part, 0_h))) << lists;
        }
        Representative(r1_);
    }
}

TEST_F(TwoFamilies, IsVersionIsFalseForAnyOtherFlag) {
    for (const long flag : {2L, -1L, 3L, 256L, 4294967296L, 4294967297L}) {
        EXPECT_TRUE(IsFalse(IsVersion(r1_, Handle(flag)))) << flag;
    }
    // These calls have not registered a family.
    EXPECT_EQ(Representative(r2_), 2U);
    for (const long flag : {2L, -1L}) EXPECT_TRUE(IsFalse(IsVersion(r1_, Handle(flag)))) << flag;
}

TEST_F(TwoFamilies, IsVersionReadsTheFlagAsAnInteger) {
    EXPECT_EQ(InstanceIn(IsVersion(r1_, 1.5_h)), InstanceIn(r1_));
    EXPECT_TRUE(IsTrue(IsVersion(r2_, 0.5_h)));
    EXPECT_TRUE(IsTrue(IsVersion(r2_, "1"_h)));  // a text reads as 0
}

TEST_F(TwoFamilies, IsVersionGivesNothingWhenAnArgumentIsMissing) {
    for (const int level : {0, 12}) {
        const TraceCapture trace(level);
        EXPECT_TRUE(IsUnset(IsVersion({}, 1_h)));
        EXPECT_TRUE(IsFalse(IsVersion({}, 0_h)));
        EXPECT_TRUE(IsFalse(IsVersion({}, 2_h)));
        EXPECT_TRUE(IsFalse(IsVersion(r1_, {})));
        EXPECT_TRUE(IsFalse(IsVersion({}, {})));
    }
    EXPECT_EQ(Representative(r2_), 2U);
}

TEST_F(TwoFamilies, IsVersionGoesOnOverAllRecordsOfThePart) {
    // #1 is recorded in R and then in S, #2 in S and then in R; the last record of #3 is in another
    // family.
    AddFamily({"6A"});
    const TestModel model("cdma", Parts(1, 5) + Record(11, 1, "1A") + Record(12, 1, "4A") +
                                      Record(13, 2, "5A") + Record(14, 2, "2A") +
                                      Record(15, 3, "3A") + Record(16, 3, "6A") +
                                      Record(17, 4, "3A") + Record(18, 5, "5A"));
    EXPECT_EQ(Representative(model[4]), 4U);  // R
    EXPECT_EQ(Representative(model[5]), 5U);  // S
    // The last record decides.
    EXPECT_EQ(Representative(model[1]), 5U);
    EXPECT_EQ(Representative(model[2]), 4U);
    EXPECT_TRUE(SeenBefore(model[1]));
    // Seen in R before. The new family of the last record does not change that result; the next
    // call finds this family known, with #3 as its representative.
    EXPECT_TRUE(SeenBefore(model[3]));
    EXPECT_FALSE(SeenBefore(model[3]));
    EXPECT_EQ(Representative(model[3]), 3U);
}

TEST_F(TwoFamilies, IsVersionKeepsThePartThatIsRecordedTwiceAsItsOwnRepresentative) {
    const TestModel model("cdma", Parts(1, 1) + Record(11, 1, "1A") + Record(12, 1, "1A"));
    EXPECT_FALSE(SeenBefore(model[1]));
    EXPECT_EQ(Representative(model[1]), 1U);
    EXPECT_FALSE(SeenBefore(model[1]));
}

TEST_F(TwoFamilies, IsVersionGivesWhatItHasWhenARecordFails) {
    // The second record is without family; the third is not read.
    const TestModel model("cdma", Parts(1, 2) + Record(11, 1, "1A") + Record(12, 1, "7A") +
                                      Record(13, 1, "4A") + Record(14, 2, "5A"));
    EXPECT_EQ(Representative(model[1]), 1U);
    EXPECT_EQ(Representative(model[2]), 2U);  // S has not been seen
    EXPECT_EQ(Representative(r3_), 1U);
    RemoveValueVersion();
    EXPECT_FALSE(SeenBefore(r3_));
    EXPECT_TRUE(SeenBefore(model[1]));
}

TEST_F(TwoFamilies, IsVersionKnowsPartsOfSeveralModels) {
    const TestModel other("cdma", Parts(1, 1) + Record(11, 1, "2A"));
    EXPECT_EQ(InstanceIn(IsVersion(other[1], 1_h)), InstanceIn(other[1]));
    EXPECT_EQ(InstanceIn(IsVersion(r1_, 1_h)), InstanceIn(other[1]));
    EXPECT_TRUE(SeenBefore(r1_));
    EXPECT_TRUE(Newer(r2_, r1_));
    RemoveValueVersion();
}

TEST_F(TwoFamilies, IsVersionTracesTheFirstFamily) {
    const TraceCapture trace;
    Representative(r2_);
    EXPECT_THAT(trace.Messages(kVersionLabel),
                ElementsAre("the Part exists and the Flag exist", " On a trouve la Part",
                            "    CAENV  = ENV", "    CATAB  = PARTS", "    COID   = 2A",
                            "    COMPID = 2B", " Create the DM Instance ",
                            " >> TAILLE DE LISTE : 0 << ", "    Ma Liste est vide",
                            "    Retrouver toutes les versions", "    Taille de Liste = 3"));
}

TEST_F(TwoFamilies, IsVersionTracesAFurtherFamily) {
    Representative(r2_);
    const TraceCapture trace;
    Representative(s1_);
    const auto messages = trace.Messages(kVersionLabel);
    ASSERT_GT(messages.size(), 10U);
    EXPECT_THAT(
        std::vector(messages.begin(), messages.begin() + 10),
        ElementsAre("the Part exists and the Flag exist", " On a trouve la Part",
                    "    CAENV  = ENV", "    CATAB  = PARTS", "    COID   = 4A", "    COMPID = 2B",
                    " Create the DM Instance ", " >> TAILLE DE LISTE : 3 << ",
                    "    Ma Liste n'est pas vide", "    -> cette DM n'a pas ete traitee"));
    // The size of this family only.
    EXPECT_EQ(messages.back(), "    Taille de Liste = 2");
}

TEST_F(TwoFamilies, IsVersionTracesAFamilyThatWasSeen) {
    Representative(r2_);
    Representative(s1_);
    const TraceCapture trace;
    Representative(s2_);
    EXPECT_THAT(
        trace.Messages(kVersionLabel),
        ElementsAre("the Part exists and the Flag exist", " On a trouve la Part",
                    "    CAENV  = ENV", "    CATAB  = PARTS", "    COID   = 5A", "    COMPID = 2B",
                    " Create the DM Instance ", " >> TAILLE DE LISTE : 5 << ",
                    "    Ma Liste n'est pas vide", "    -> cette DM a deja ete traitee : 5",
                    "       index de la part : 2"));
}

TEST_F(TwoFamilies, IsVersionTracesTheSameForBothFlags) {
    std::vector<std::vector<std::string>> messages;
    for (const SdaiPrimitiveH& flag : {0_h, 1_h}) {
        const TraceCapture trace;
        for (const SdaiPrimitiveH& part : {r1_, r2_, s1_, unknown_, unrecorded_}) {
            IsVersion(part, flag);
        }
        messages.push_back(trace.Messages(kVersionLabel));
        RemoveValueVersion();
    }
    EXPECT_EQ(messages[0], messages[1]);
}

TEST_F(TwoFamilies, IsVersionTracesThatAPartHasNoFamily) {
    {
        const TraceCapture trace;
        EXPECT_EQ(Representative(unknown_), 0U);
        const auto messages = trace.Messages(kVersionLabel);
        EXPECT_THAT(messages, Contains("    Ma Liste est vide"));
        EXPECT_EQ(messages.back(), " --> ERREUR : sortie <-- ");
    }
    Representative(r1_);
    const TraceCapture trace;
    EXPECT_EQ(Representative(unknown_), 0U);
    const auto messages = trace.Messages(kVersionLabel);
    EXPECT_THAT(messages, Contains("    -> cette DM n'a pas ete traitee"));
    EXPECT_THAT(messages, Not(Contains(StartsWith("    Taille de Liste"))));
    EXPECT_EQ(messages.back(), " --> ERREUR : sortie <-- ");
}

TEST_F(TwoFamilies, IsVersionTracesOnlyThatTheArgumentsExistWithoutRecordOrFlag) {
    const TraceCapture trace;
    IsVersion(unrecorded_, 1_h);
    IsVersion(r1_, 2_h);
    EXPECT_THAT(trace.Messages(kVersionLabel), ElementsAre("the Part exists and the Flag exist",
                                                           "the Part exists and the Flag exist"));
}

TEST_F(TwoFamilies, IsVersionTracesNothingWhenAnArgumentIsMissing) {
    const TraceCapture trace;
    IsVersion({}, 1_h);
    IsVersion(r1_, {});
    EXPECT_THAT(trace.Messages(kVersionLabel), IsEmpty());
    EXPECT_THAT(trace.Lines(), Contains("SdaiPrimitiveH IsVersion -> {").Times(2));
}

// ---- RemoveValueVersion

TEST_F(TwoFamilies, RemoveValueVersionForgetsEveryFamily) {
    for (const int level : {0, 12}) {
        const TraceCapture trace(level);
        Representative(r1_);
        Representative(s1_);
        EXPECT_TRUE(IsTrue(RemoveValueVersion()));
        EXPECT_FALSE(SeenBefore(s2_));
        EXPECT_EQ(Representative(r2_), 2U);
        EXPECT_EQ(Representative(s1_), 5U);
        EXPECT_TRUE(IsTrue(RemoveValueVersion()));
    }
    const TraceCapture trace;
    EXPECT_TRUE(Newer(r2_, r1_));
    EXPECT_THAT(trace.Messages(kNewerLabel),
                Contains(" >> Listes STATIQUES pas pretes : rough Version "));
    Representative(r2_);
    EXPECT_THAT(trace.Messages(kVersionLabel), Contains("    Ma Liste est vide"));
}

TEST_F(TwoFamilies, RemoveValueVersionLeavesThePartsAlone) {
    Representative(r1_);
    RemoveValueVersion();
    EXPECT_EQ(InstanceIn(r1_)->GetInstanceNameId(), 1U);
    EXPECT_EQ(TextIn(r1_.GetAttr(SdaiString("S_PART_NUMBER"))), "P");
}

TEST_F(TwoFamilies, RemoveValueVersionTracesTheSizes) {
    Representative(r1_);
    Representative(s1_);
    const TraceCapture trace;
    RemoveValueVersion();
    EXPECT_THAT(trace.Messages(kRemoveLabel),
                ElementsAre("Taille DMList : 0", "Taille SdaiList : 0", "Taille IndList : 0"));
}

TEST_F(Versions, RemoveValueVersionIsTrueWhenThereIsNothingToForget) {
    EXPECT_TRUE(IsTrue(RemoveValueVersion()));
    EXPECT_TRUE(IsTrue(RemoveValueVersion()));
}

// ---- Random families

TEST_F(Versions, FamiliesKeepTheirOrderAndOneRepresentativeInWhateverOrderTheyAreSeen) {
    std::mt19937 random(20240704);
    const auto upTo = [&random](int most) {
        return std::uniform_int_distribution<int>(1, most)(random);
    };
    for (int trial = 0; trial < 60; ++trial) {
        // Families of parts in random order: a part's place is its family and position.
        std::vector<std::pair<int, int>> places;
        const int families = upTo(5);
        int coid = 0x10;
        std::vector<std::string> coids;
        for (int family = 0; family < families; ++family) {
            std::vector<std::string> revisions;
            for (int position = 0, size = upTo(5); position < size; ++position) {
                places.emplace_back(family, position);
                revisions.push_back(std::to_string(coid++));
            }
            AddFamily(revisions);
            coids.insert(coids.end(), revisions.begin(), revisions.end());
        }
        std::vector<std::size_t> order(places.size());
        for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
        std::shuffle(order.begin(), order.end(), random);
        std::string rows = Parts(1, static_cast<long>(places.size()));
        for (const std::size_t i : order) {
            const long id = static_cast<long>(i) + 1;
            rows += Record(1000 + id, id, coids[i]);
        }
        const TestModel model("cdma", rows);
        const auto part = [&model](std::size_t i) { return model[i + 1]; };

        const auto checkOrder = [&](const char* when) {
            for (std::size_t a = 0; a < places.size(); ++a) {
                for (std::size_t b = 0; b < places.size(); ++b) {
                    const bool follows = places[a].first == places[b].first &&
                                         places[a].second == places[b].second + 1;
                    EXPECT_EQ(Newer(part(a), part(b)), follows) << when << '\n' << rows;
                }
            }
        };
        checkOrder("lists empty");

        // Every part once, some twice, with either flag.
        std::vector<std::size_t> calls = order;
        for (int i = upTo(10); i > 0; --i) calls.push_back(order[random() % order.size()]);
        std::shuffle(calls.begin(), calls.end(), random);
        std::map<int, std::size_t> representatives;  // of the families seen so far
        for (const std::size_t i : calls) {
            representatives.emplace(places[i].first, i);
            const std::size_t representative = representatives[places[i].first];
            if (random() % 2 == 0) {
                EXPECT_EQ(Representative(part(i)), representative + 1) << rows;
            } else {
                EXPECT_EQ(SeenBefore(part(i)), representative != i) << rows;
            }
        }
        checkOrder("lists filled");
        for (std::size_t i = 0; i < places.size(); ++i) {
            EXPECT_EQ(Representative(part(i)), representatives[places[i].first] + 1) << rows;
        }

        const TraceCapture trace;
        EXPECT_TRUE(IsTrue(RemoveValueVersion()));
        EXPECT_EQ(Representative(part(order[0])), order[0] + 1);
        EXPECT_THAT(trace.Messages(kVersionLabel), Contains(" >> TAILLE DE LISTE : 0 << "));
        Forget();
    }
}
