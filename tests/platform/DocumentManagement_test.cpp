// Document management: identities, lists of them and the store of their families, identifiers and
// starting values; and the conversion of names, cmbflmd and cmbrcmd.

#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "KORDMInstance.h"
#include "KORDMNarvo.h"
#include "KORNameConversion.h"
#include "TestModel.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

KORDMInstance Identity(double coid, double compid = 0.0) {
    return KORDMInstance("KORCON", "ENV", "PARTS", coid, compid, nullptr, nullptr, 0);
}

KORListValKORDMInstance ListOf(const std::vector<double>& coids) {
    KORListValKORDMInstance list;
    for (const double coid : coids) list.Append(Identity(coid));
    return list;
}

// The Coids of the members of a list, if from 1 to 9.
std::vector<int> CoidsIn(const KORListValKORDMInstance& list) {
    std::vector<int> coids;
    for (int position = 1; position <= list.Size(); ++position) {
        for (int coid = 1; coid <= 9; ++coid) {
            if (list[position] == Identity(coid)) coids.push_back(coid);
        }
    }
    return coids;
}

// The revisions of an identity's family; empty, with a status other than 0, if it has none.
std::vector<int> Revisions(const KORDMInstance& instance) {
    KORListValKORDMInstance list;
    const int status = instance.GetAllRevision(list, 0, 1, 0);
    EXPECT_EQ(status, list.Size() == 0 ? 1 : 0);
    return CoidsIn(list);
}

// The store is global: every test begins and ends with an empty one.
class KORDMStoreTest : public testing::Test {
  protected:
    KORDMStoreTest() { KORDMStore::RemoveAll(); }
    ~KORDMStoreTest() override { KORDMStore::RemoveAll(); }
};

}  // namespace

// ---- KORDMInstance

TEST(KORDMInstanceTest, IsEqualByEnvironmentTableAndBothIdentifiers) {
    const KORDMInstance instance("KORCON", "ENV", "PARTS", 1.0, 2.0, nullptr, nullptr, 0);
    const KORDMInstance same("KORCON", "ENV", "PARTS", 1.0, 2.0, nullptr, nullptr, 0);
    EXPECT_TRUE(instance == same);
    EXPECT_EQ(instance.Hash(), same.Hash());
    const KORDMInstance others[] = {
        {"KORCON", "OTHER", "PARTS", 1.0, 2.0, nullptr, nullptr, 0},
        {"KORCON", "env", "PARTS", 1.0, 2.0, nullptr, nullptr, 0},
        {"KORCON", "ENV", "OTHER", 1.0, 2.0, nullptr, nullptr, 0},
        {"KORCON", "ENV", "parts", 1.0, 2.0, nullptr, nullptr, 0},
        {"KORCON", "PARTS", "ENV", 1.0, 2.0, nullptr, nullptr, 0},
        {"KORCON", "ENVP", "ARTS", 1.0, 2.0, nullptr, nullptr, 0},
        {"KORCON", "ENV", "PARTS", 3.0, 2.0, nullptr, nullptr, 0},
        {"KORCON", "ENV", "PARTS", 1.0, 3.0, nullptr, nullptr, 0},
        {"KORCON", "ENV", "PARTS", 2.0, 1.0, nullptr, nullptr, 0},
        {"KORCON", "", "", 0.0, 0.0, nullptr, nullptr, 0},
    };
    for (const KORDMInstance& other : others) {
        EXPECT_FALSE(instance == other);
        EXPECT_FALSE(other == instance);
    }
}

TEST(KORDMInstanceTest, DoesNotCompareTheKindOrPartsOfObjects) {
    const double part = 7.0;
    const KORDMInstance instance("KORCON", "ENV", "PARTS", 1.0, 2.0);
    const KORDMInstance other("ANY", "ENV", "PARTS", 1.0, 2.0, &part, "part", 3);
    EXPECT_TRUE(instance == other);
    EXPECT_EQ(instance.Hash(), other.Hash());
}

TEST(KORDMInstanceTest, HasOneHashForBothZeros) {
    EXPECT_TRUE(Identity(0.0, 0.0) == Identity(-0.0, -0.0));
    EXPECT_EQ(Identity(0.0, 0.0).Hash(), Identity(-0.0, -0.0).Hash());
}

TEST(KORDMInstanceTest, IsAValue) {
    KORDMInstance instance = Identity(1);
    const KORDMInstance copy = instance;
    instance = Identity(2);
    EXPECT_TRUE(copy == Identity(1));
    EXPECT_TRUE(instance == Identity(2));
}

// ---- KORListValKORDMInstance

TEST(KORListValKORDMInstanceTest, CountsPositionsFromOne) {
    KORListValKORDMInstance list;
    EXPECT_EQ(list.Size(), 0);
    list.Append(Identity(1));
    list.Append(Identity(2));
    EXPECT_EQ(list.Size(), 2);
    EXPECT_TRUE(list[1] == Identity(1));
    EXPECT_TRUE(list[2] == Identity(2));
}

TEST(KORListValKORDMInstanceTest, AppendsEveryMemberOfAnotherList) {
    KORListValKORDMInstance list = ListOf({1, 2});
    list.Append(ListOf({3, 2}));
    EXPECT_THAT(CoidsIn(list), ElementsAre(1, 2, 3, 2));
    list.Append(KORListValKORDMInstance());
    EXPECT_THAT(CoidsIn(list), ElementsAre(1, 2, 3, 2));
}

TEST(KORListValKORDMInstanceTest, AppendsItself) {
    KORListValKORDMInstance list = ListOf({1, 2, 3});
    list.Append(list);
    EXPECT_THAT(CoidsIn(list), ElementsAre(1, 2, 3, 1, 2, 3));
    list.Append(list[2]);
    EXPECT_THAT(CoidsIn(list), ElementsAre(1, 2, 3, 1, 2, 3, 2));
}

TEST(KORListValKORDMInstanceTest, LocatesMembersOfLongListsLikeASearchFromTheFirst) {
    KORListValKORDMInstance list;
    std::vector<double> coids;
    std::mt19937 random(1);
    while (coids.size() < 300) {
        // Some occur repeatedly.
        coids.push_back(static_cast<double>(random() % (coids.size() % 3 == 0 ? 5 : 1000)));
        const KORListValKORDMInstance before = list;
        list.Append(Identity(coids.back()));
        // The copy does not change.
        EXPECT_EQ(before.Size() + 1, list.Size());
        for (const double sought : {coids.back(), static_cast<double>(random() % 1000)}) {
            const int from = static_cast<int>(random() % (coids.size() + 2)) - 1;
            int expected = 0;
            for (std::size_t i = coids.size(); i >= static_cast<std::size_t>(std::max(from, 1));
                 --i) {
                if (coids[i - 1] == sought) expected = static_cast<int>(i);
            }
            ASSERT_EQ(list.Locate(Identity(sought), from), expected) << coids.size();
        }
    }
    KORListValKORDMInstance twice = list;
    twice.Append(list);
    EXPECT_EQ(twice.Locate(Identity(coids[7]), 301), 300 + list.Locate(Identity(coids[7]), 1));
    EXPECT_EQ(list.Locate(Identity(coids[7]), 301), 0);
}

TEST(KORListValKORDMInstanceTest, LocatesTheFirstEqualMemberFromAPosition) {
    const KORListValKORDMInstance list = ListOf({1, 2, 1, 3});
    const struct {
        double coid;
        int from;
        int position;
    } kSearches[] = {
        {1, 1, 1}, {1, 2, 3}, {1, 3, 3}, {1, 4, 0}, {2, 1, 2},  {2, 2, 2},  {2, 3, 0},
        {3, 4, 4}, {3, 5, 0}, {4, 1, 0}, {1, 0, 1}, {1, -5, 1}, {3, -1, 4}, {1, 1000, 0},
    };
    for (const auto& [coid, from, position] : kSearches) {
        EXPECT_EQ(list.Locate(Identity(coid), from), position) << coid << " from " << from;
    }
    EXPECT_EQ(KORListValKORDMInstance().Locate(Identity(1), 1), 0);
    EXPECT_EQ(KORListValKORDMInstance().Locate(Identity(1), 0), 0);
}

TEST(KORListValKORDMInstanceTest, RemovesAll) {
    KORListValKORDMInstance list = ListOf({1, 2});
    list.RemoveAll();
    EXPECT_EQ(list.Size(), 0);
    EXPECT_EQ(list.Locate(Identity(1), 1), 0);
    list.Append(Identity(3));
    EXPECT_THAT(CoidsIn(list), ElementsAre(3));
}

TEST(KORListValKORDMInstanceTest, IsAValue) {
    KORListValKORDMInstance list = ListOf({1, 2});
    const KORListValKORDMInstance copy = list;
    KORListValKORDMInstance longer = list;
    longer.Append(Identity(3));
    EXPECT_THAT(CoidsIn(longer), ElementsAre(1, 2, 3));
    EXPECT_THAT(CoidsIn(list), ElementsAre(1, 2));
    list.RemoveAll();
    EXPECT_THAT(CoidsIn(copy), ElementsAre(1, 2));
}

// ---- KORDMStore

TEST_F(KORDMStoreTest, GivesTheRevisionsOfAFamilyOldestFirst) {
    KORDMStore::AddFamily(ListOf({3, 1, 2}));
    KORDMStore::AddFamily(ListOf({4}));
    for (const double coid : {1, 2, 3}) {
        EXPECT_THAT(Revisions(Identity(coid)), ElementsAre(3, 1, 2));
    }
    EXPECT_THAT(Revisions(Identity(4)), ElementsAre(4));
}

TEST_F(KORDMStoreTest, HasNoRevisionsOfAnIdentityOfNoFamily) {
    EXPECT_THAT(Revisions(Identity(1)), IsEmpty());
    KORDMStore::AddFamily(ListOf({1, 2}));
    EXPECT_THAT(Revisions(Identity(3)), IsEmpty());
    EXPECT_THAT(Revisions(Identity(1, 5.0)), IsEmpty());

    KORListValKORDMInstance list = ListOf({7});
    EXPECT_EQ(Identity(3).GetAllRevision(list, 0, 1, 0), 1);
    EXPECT_THAT(CoidsIn(list), ElementsAre(7));
}

TEST_F(KORDMStoreTest, ComparesTheRevisionsOfOneFamilyAlone) {
    KORDMStore::AddFamily(ListOf({3, 1, 2}));
    KORDMStore::AddFamily(ListOf({4, 5}));
    const struct {
        double coid;
        double other;
        bool comparable;
        int newer;
    } kPairs[] = {
        {1, 3, true, 1},  {2, 1, true, 1},  {2, 3, true, 1},  // also if further apart
        {3, 1, true, 0},  {1, 2, true, 0},  {1, 1, true, 0},  {5, 4, true, 1},
        {4, 3, false, 0}, {3, 4, false, 0}, {5, 2, false, 0}, {6, 1, false, 0},
        {1, 6, false, 0}, {6, 7, false, 0}, {6, 6, false, 0},
    };
    for (const auto& [coid, other, comparable, newer] : kPairs) {
        for (const int before : {0, 1, -1}) {
            int diagnostic = before;
            EXPECT_EQ(Identity(coid).IsNewerRevision(Identity(other), 1, diagnostic), newer)
                << coid << ' ' << other;
            EXPECT_EQ(diagnostic == 0, comparable) << coid << ' ' << other;
        }
    }
}

TEST_F(KORDMStoreTest, KeepsAnIdentityInItsFirstFamily) {
    KORDMStore::AddFamily(ListOf({1, 2}));
    KORDMStore::AddFamily(ListOf({2, 3, 1, 4}));
    EXPECT_THAT(Revisions(Identity(1)), ElementsAre(1, 2));
    EXPECT_THAT(Revisions(Identity(2)), ElementsAre(1, 2));
    EXPECT_THAT(Revisions(Identity(3)), ElementsAre(3, 4));
    EXPECT_THAT(Revisions(Identity(4)), ElementsAre(3, 4));
}

TEST_F(KORDMStoreTest, KeepsAnIdentityThatIsGivenTwiceOnce) {
    KORDMStore::AddFamily(ListOf({1, 2, 1, 3, 2}));
    EXPECT_THAT(Revisions(Identity(1)), ElementsAre(1, 2, 3));
}

TEST_F(KORDMStoreTest, TakesAnEmptyFamily) {
    KORDMStore::AddFamily(KORListValKORDMInstance());
    KORDMStore::AddFamily(ListOf({1}));
    EXPECT_THAT(Revisions(Identity(1)), ElementsAre(1));
}

TEST_F(KORDMStoreTest, ForgetsEveryFamily) {
    KORDMStore::AddFamily(ListOf({1, 2}));
    KORDMStore::RemoveAll();
    EXPECT_THAT(Revisions(Identity(1)), IsEmpty());
    KORDMStore::AddFamily(ListOf({2, 1}));
    EXPECT_THAT(Revisions(Identity(1)), ElementsAre(2, 1));
}

TEST_F(KORDMStoreTest, HoldsManyFamilies) {
    constexpr int kFamilies = 20000;
    for (int family = 0; family < kFamilies; ++family) {
        KORDMStore::AddFamily(ListOf({family * 3.0 + 10, family * 3.0 + 11, family * 3.0 + 12}));
    }
    for (const int family : {0, 1, kFamilies / 2, kFamilies - 1}) {
        const KORDMInstance oldest = Identity(family * 3.0 + 10);
        const KORDMInstance newest = Identity(family * 3.0 + 12);
        KORListValKORDMInstance list;
        EXPECT_EQ(newest.GetAllRevision(list, 0, 1, 0), 0);
        ASSERT_EQ(list.Size(), 3);
        EXPECT_TRUE(list[1] == oldest);
        EXPECT_TRUE(list[3] == newest);
        int diagnostic = 1;
        EXPECT_EQ(newest.IsNewerRevision(oldest, 1, diagnostic), 1);
        EXPECT_EQ(diagnostic, 0);
    }
}

TEST_F(KORDMStoreTest, ReadsTheFamiliesOfAModel) {
    const TestModel model("cdma", R"(
#1=CDMA_ID($,'1','0','ENV','PARTS');
#2=CDMA_ID($,'2','0','ENV','PARTS');
#3=CDMA_ID($,'3','0','ENV','PARTS');
#4=CDMA_ID($,'04','','ENV','PARTS');
#5=CDMA_ID($,'5','0','OTHER','PARTS');
#11=CDMA_REVISION_HISTORY((#2,#1));
#12=CDMA_REVISION_HISTORY((#3,#4));
)");
    EXPECT_EQ(KORDMStore::AddFamilies(model.Model()), 2);
    EXPECT_THAT(Revisions(Identity(1)), ElementsAre(2, 1));
    EXPECT_THAT(Revisions(Identity(4)), ElementsAre(3, 4));
    EXPECT_THAT(Revisions(Identity(5)), IsEmpty());
}

TEST_F(KORDMStoreTest, ReadsTheIdentifiersOfAModelAsHexadecimalTexts) {
    const TestModel model("cdma", R"(
#1=CDMA_ID($,'1A','ff','ENV','PARTS');
#2=CDMA_ID($,'none','-1','ENV','PARTS');
#11=CDMA_REVISION_HISTORY((#1,#2));
)");
    EXPECT_EQ(KORDMStore::AddFamilies(model.Model()), 1);
    KORListValKORDMInstance list;
    ASSERT_EQ(Identity(26.0, 255.0).GetAllRevision(list, 0, 1, 0), 0);
    ASSERT_EQ(list.Size(), 2);
    EXPECT_TRUE(list[1] == Identity(26.0, 255.0));
    EXPECT_TRUE(list[2] == Identity(0.0, 0.0));
}

TEST_F(KORDMStoreTest, FindsNoFamiliesInOtherModels) {
    EXPECT_EQ(KORDMStore::AddFamilies(TestModel("cdma").Model()), 0);
    const TestModel step("AUTOMOTIVE_DESIGN", "#1=PRODUCT('p','',$,());");
    EXPECT_EQ(KORDMStore::AddFamilies(step.Model()), 0);
}

TEST_F(KORDMStoreTest, TakesAHistoryWithoutUsableRecords) {
    const TestModel model("cdma", R"(
#1=CDMA_ID($,$,$,$,$);
#11=CDMA_REVISION_HISTORY($);
#12=CDMA_REVISION_HISTORY(());
#13=CDMA_REVISION_HISTORY(('text',7,$));
#14=CDMA_REVISION_HISTORY((#1));
)");
    KORDMStore::AddFamilies(model.Model());
    EXPECT_THAT(Revisions(Identity(1)), IsEmpty());
    KORListValKORDMInstance list;
    EXPECT_EQ(KORDMInstance("KORCON", "", "", 0.0, 0.0).GetAllRevision(list, 0, 1, 0), 0);
    EXPECT_EQ(list.Size(), 1);
}

// ---- KORDMNarvo

TEST(KORDMNarvoTest, ReadsHexadecimalTexts) {
    const struct {
        const char* text;
        double value;
    } kTexts[] = {
        {"0", 0},
        {"9", 9},
        {"a", 10},
        {"F", 15},
        {"10", 16},
        {"FF", 255},
        {"ff", 255},
        {"fF", 255},
        {"00FF", 255},
        {"0123456789ABCDEF", 81985529216486895.0},
        {"1FFFFFFFFFFFFF", 9007199254740991.0},
        {"FFFFFFFFFFFFFFFF", 18446744073709551615.0},
        {"10000000000000000", 18446744073709551616.0},
    };
    for (const auto& [text, value] : kTexts) {
        EXPECT_EQ(KORDMNarvo::HexaToDouble(text), value) << text;
    }
    const std::string zeros(100000, '0');
    EXPECT_EQ(KORDMNarvo::HexaToDouble((zeros + "1a").c_str()), 26.0);
}

TEST(KORDMNarvoTest, GivesZeroForAnyOtherText) {
    for (const char* const text : {"", " ", "G", "1G", "G1", "0x1A", "x1A", "-1", "+1", "1.0",
                                   "1p2", " 1", "1 ", "1 2", "nan", "inf", "\xB2", "1h", "#1"}) {
        EXPECT_EQ(KORDMNarvo::HexaToDouble(text), 0.0) << text;
    }
    EXPECT_EQ(KORDMNarvo::HexaToDouble(KORUnicodeString(std::string_view("1\0"
                                                                         "1",
                                                                         3))),
              0.0);
}

TEST(KORDMNarvoTest, StartsWithAUntilAnotherValueIsSet) {
    int status = 5;
    EXPECT_TRUE(KORDMNarvo::GetRevVerStartValue(1, "", "", "", &status) == "A");
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(KORDMNarvo::GetRevVerStartValue(1, "", "", "", nullptr) == "A");
    EXPECT_TRUE(KORDMNarvo::GetRevVerStartValue(1, "ENV", "PARTS", "T", nullptr) == "A");

    KORDMNarvo::SetRevVerStartValue("01");
    EXPECT_TRUE(KORDMNarvo::GetRevVerStartValue(1, "", "", "", nullptr) == "01");
    KORDMNarvo::SetRevVerStartValue("");
    EXPECT_TRUE(KORDMNarvo::GetRevVerStartValue(1, "", "", "", nullptr) == "");
    KORDMNarvo::SetRevVerStartValue("A");
}

TEST(KORDMNarvoTest, HasNoStartingValueForOtherSelectors) {
    for (const int selector : {0, 2, 3, -1, 100}) {
        int status = 5;
        EXPECT_TRUE(KORDMNarvo::GetRevVerStartValue(selector, "", "", "", &status) == "");
        EXPECT_EQ(status, 0);
    }
}

// ---- cmbflmd and cmbrcmd

namespace {

// The output of a routine in a buffer of exactly the required size; the next byte must not change.
template <class Routine>
std::string Converted(const std::string& name, Routine routine) {
    std::vector<char> buffer(name.size() + 2, '#');
    routine(name.c_str(), buffer.data());
    EXPECT_EQ(buffer[name.size()], '\0');
    EXPECT_EQ(buffer[name.size() + 1], '#');
    return std::string(buffer.data());
}
std::string ToFile(const std::string& name) {
    return Converted(name, [](const char* from, char* to) {
        int status = 5;
        cmbflmd(from, to, &status);
        EXPECT_EQ(status, 0);
    });
}
std::string ToDatabase(const std::string& name) { return Converted(name, cmbrcmd); }

}  // namespace

TEST(NameConversion, ExchangesBlanksAndPlusMinus) {
    const struct {
        const char* database;
        const char* file;
    } kNames[] = {
        {"", ""},
        {" ", "\xB1"},
        {"Left Door",
         "Left\xB1"
         "Door"},
        {"  two  ", "\xB1\xB1two\xB1\xB1"},
        {"none", "none"},
    };
    for (const auto& [database, file] : kNames) {
        EXPECT_EQ(ToFile(database), file);
        EXPECT_EQ(ToDatabase(file), database);
    }
}

TEST(NameConversion, ExchangesThemInOneDirection) {
    EXPECT_EQ(ToFile("a b\xB1"
                     "c"),
              "a\xB1"
              "b\xB1"
              "c");
    EXPECT_EQ(ToDatabase("a b\xB1"
                         "c"),
              "a b c");
}

TEST(NameConversion, ChangesNoOtherCharacter) {
    for (int c = 1; c < 256; ++c) {
        const std::string name(3, static_cast<char>(c));
        EXPECT_EQ(ToFile(name), c == ' ' ? "\xB1\xB1\xB1" : name) << c;
        EXPECT_EQ(ToDatabase(name), c == 0xB1 ? "   " : name) << c;
    }
}

TEST(NameConversion, TakesNamesOfAnyLength) {
    for (const std::size_t length : {0U, 5U, 6U, 7U, 79U, 80U, 81U, 160U, 161U, 100000U}) {
        const std::string blanks(length, ' ');
        const std::string marks(length, '\xB1');
        EXPECT_EQ(ToFile(blanks), marks) << length;
        EXPECT_EQ(ToDatabase(marks), blanks) << length;
    }
}

TEST(NameConversion, GivesBackEveryNameWithoutPlusMinus) {
    std::mt19937 random(20240705);
    std::uniform_int_distribution<std::size_t> length(0, 200);
    std::uniform_int_distribution<int> character(1, 255);
    for (int i = 0; i < 500; ++i) {
        std::string name(length(random), ' ');
        for (char& c : name) c = static_cast<char>(character(random));
        std::replace(name.begin(), name.end(), '\xB1', ' ');
        EXPECT_EQ(ToDatabase(ToFile(name)), name);
    }
}
