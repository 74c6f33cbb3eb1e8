// What the mapping functions rely on in their platform, tested through the contract headers only.
// Every platform for the functions must pass these tests.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "KORDMInstance.h"
#include "KORDMNarvo.h"
#include "KORPSNTrace.h"
#include "KORUnicodeString.h"
#include "Models.h"
#include "SdaiAggrInstance.h"
#include "SdaiIterator.h"
#include "SdaiString.h"
#include "SdaiUsers.h"

using namespace sdai_names;

namespace {

SdaiAppInstance* Create(SdaiModel& model, const SdaiString& type) {
    SdaiEntity* entity = model.GetEntityDefinition(type);
    if (entity == nullptr) throw std::runtime_error("the schema lacks an entity type");
    return entity->CreateEntityInstance(&model);
}

std::string Text(const SdaiPrimitiveH& handle) {
    return std::string(static_cast<const SdaiString&>(handle).View());
}

long Count(const SdaiModel& model, const SdaiString& type) {
    return model.GetEntityExtent(type)->GetMemberCount();
}

// ---- Models and instances

TEST(Contract, AModelTellsItsSchema) {
    EXPECT_EQ(std::string(NewModel("cdma")->SchemaName().View()), "cdma");
    EXPECT_EQ(std::string(NewModel("AUTOMOTIVE_DESIGN")->Underlying_schema()->Name().View()),
              "AUTOMOTIVE_DESIGN");
}

TEST(Contract, NamesMatchInAnyCase) {
    const auto model = NewModel("cdma");
    SdaiEntityInstance* part = Create(*model, "PART_OBJECT");
    EXPECT_EQ(std::string(part->GetInstanceType()->Name().View()), "part_object");
    EXPECT_TRUE(part->IsKindOf("Part_Object"));
    static_cast<SdaiAppInstance*>(part)->PutAttr("S_desc", SdaiString("Frame"));
    EXPECT_EQ(Text(part->GetAttr("S_DESC")), "Frame");
    EXPECT_EQ(Text(part->GetAttr("s_desc"_name)), "Frame");
}

TEST(Contract, ASubtypeIsOfItsSupertypesKind) {
    const auto model = NewModel("cdma");
    const SdaiEntityInstance* range = Create(*model, "range_effectivity");
    EXPECT_TRUE(range->IsKindOf("effectivity_object"));
    EXPECT_FALSE(range->IsKindOf("date_effectivity"));
    EXPECT_FALSE(range->IsKindOf("no_such_type"));
}

TEST(Contract, ANewInstanceHasNumberModelAndNoValues) {
    const auto model = NewModel("cdma");
    const SdaiEntityInstance* first = Create(*model, "part_object");
    const SdaiEntityInstance* second = Create(*model, "part_object");
    EXPECT_EQ(second->GetInstanceNameId(), first->GetInstanceNameId() + 1);
    EXPECT_EQ(first->FindEntityInstanceModel(), model.get());
    EXPECT_FALSE(first->TestAttr("S_PART_NUMBER"));
    EXPECT_FALSE(first->GetAttr("S_PART_NUMBER").exists());
    EXPECT_TRUE(first->IsSameInstance(first));
    EXPECT_FALSE(first->IsSameInstance(second));
}

TEST(Contract, AnInstanceIsNotMadeInAModelOfAnotherSchema) {
    const auto database = NewModel("cdma");
    const auto step = NewModel("AUTOMOTIVE_DESIGN");
    const SdaiEntity* product = step->GetEntityDefinition("PRODUCT");
    EXPECT_EQ(product->CreateEntityInstance(database.get()), nullptr);
    EXPECT_EQ(product->CreateEntityInstance(nullptr), nullptr);
    EXPECT_EQ(database->GetEntityDefinition("PRODUCT"), nullptr);
}

TEST(Contract, AnEntityDefinitionKnowsItsAttributes) {
    const auto model = NewModel("cdma");
    const SdaiEntity* part = model->GetEntityDefinition("part_object");
    EXPECT_NE(part->AttrDefinition("docs2"), nullptr);
    EXPECT_EQ(part->AttrDefinition("docs99"), nullptr);
    // Inherited attributes included.
    EXPECT_NE(model->GetEntityDefinition("range_effectivity")->AttrDefinition("usage"), nullptr);
}

TEST(Contract, AnAttributeThatATypeLacksReadsAsUnsetAndIsNotWritten) {
    const auto model = NewModel("cdma");
    SdaiAppInstance* part = Create(*model, "part_object");
    part->PutAttr("no_such_attribute", SdaiString("x"));
    EXPECT_FALSE(part->TestAttr("no_such_attribute"));
    EXPECT_FALSE(part->GetAttr("no_such_attribute").exists());
}

TEST(Contract, AnUnsetValueClearsAnAttribute) {
    const auto model = NewModel("cdma");
    SdaiAppInstance* part = Create(*model, "part_object");
    part->PutAttr("C_VERSION", 3);
    EXPECT_EQ(static_cast<long>(part->GetAttr("C_VERSION")), 3);
    part->PutAttr("C_VERSION", SdaiPrimitiveH());
    EXPECT_FALSE(part->TestAttr("C_VERSION"));
}

TEST(Contract, AnExtentHoldsTypeAndSubtypesInTheOrderOfCreationAndGrows) {
    const auto model = NewModel("cdma");
    EXPECT_EQ(Count(*model, "effectivity_object"), 0);
    SdaiEntityInstance* date = Create(*model, "date_effectivity");
    SdaiEntityInstance* range = Create(*model, "range_effectivity");
    const SdaiAggrInstance* extent = model->GetEntityExtent("effectivity_object");
    EXPECT_EQ(extent->GetInstanceMember(0), date);
    EXPECT_EQ(extent->GetInstanceMember(1), range);
    Create(*model, "range_effectivity");
    EXPECT_EQ(extent->GetMemberCount(), 3);
    EXPECT_EQ(Count(*model, "range_effectivity"), 2);
    EXPECT_EQ(Count(*model, "no_such_type"), 0);
}

// ---- Handles

TEST(Contract, AHandleGivesBackWhatItIsBuiltFrom) {
    EXPECT_FALSE(SdaiPrimitiveH().exists());
    EXPECT_FALSE(SdaiPrimitiveH(static_cast<SdaiEntityInstance*>(nullptr)).exists());
    EXPECT_EQ(Text(SdaiPrimitiveH(SdaiString("text"))), "text");
    EXPECT_EQ(static_cast<long>(SdaiPrimitiveH(7L)), 7);
    EXPECT_EQ(static_cast<double>(SdaiPrimitiveH(1.5)), 1.5);
    EXPECT_TRUE(static_cast<const SdaiLogical&>(SdaiPrimitiveH(sdaiLTRUE)) == sdaiLTRUE);
}

TEST(Contract, ReadingAHandleAsAnotherKindGivesNothing) {
    const SdaiPrimitiveH text(SdaiString("text"));
    EXPECT_EQ(static_cast<long>(text), 0);
    EXPECT_EQ(static_cast<double>(text), 0.0);
    EXPECT_EQ(static_cast<SdaiEntityInstance*>(text), nullptr);
    EXPECT_EQ(static_cast<SdaiAggrInstance*>(text), nullptr);
    EXPECT_EQ(text.GetMemberCount(), 0);
    EXPECT_EQ(text.GetInstanceType(), nullptr);
    EXPECT_EQ(text.FindEntityInstanceModel(), nullptr);
    EXPECT_FALSE(text.GetAttr("NAME").exists());
    EXPECT_FALSE(text.IsKindOf("PRODUCT"));
    EXPECT_EQ(Text(SdaiPrimitiveH(7L)), "");
    EXPECT_EQ(static_cast<long>(SdaiPrimitiveH(7.9)), 7);
}

TEST(Contract, AHandleHasTheKindOfItsValueOrOfWhatItsSelectHolds) {
    const SdaiPrimitiveH list = SdaiPrimitiveH::TakeOver(new SdaiAggrInstance);
    const std::pair<SdaiPrimitiveH, SdaiKind> kinds[] = {
        {SdaiPrimitiveH(), SdaiKind::Unset},
        {SdaiPrimitiveH(7), SdaiKind::Integer},
        {SdaiPrimitiveH(7.0), SdaiKind::Real},
        {SdaiPrimitiveH(sdaiLTRUE), SdaiKind::Logical},
        {SdaiPrimitiveH(sdaiTRUE), SdaiKind::Boolean},
        {SdaiPrimitiveH(SdaiString("7")), SdaiKind::String},
        {SdaiPrimitiveH::Enumeration("MADE"), SdaiKind::Enumeration},
        {SdaiPrimitiveH::Binary("0A"), SdaiKind::Binary},
        {list, SdaiKind::Aggregate},
    };
    for (const auto& [value, kind] : kinds) {
        EXPECT_EQ(value.Kind(), kind) << value;
        EXPECT_EQ(SdaiPrimitiveH(SdaiSelectH("LENGTH_MEASURE", value)).Kind(), kind) << value;
    }
}

TEST(Contract, ASelectGivesWhatItHoldsAndAPlainValueItself) {
    const auto model = NewModel("AUTOMOTIVE_DESIGN");
    SdaiAppInstance* shape = Create(*model, "PRODUCT_DEFINITION_SHAPE");
    SdaiAppInstance* definition = Create(*model, "PRODUCT_DEFINITION");
    shape->PutAttr("DEFINITION", definition);
    const SdaiPrimitiveH select = shape->GetAttr("DEFINITION");
    const SdaiPrimitiveH held = static_cast<const SdaiSelectH&>(select).getValue();
    EXPECT_EQ(static_cast<SdaiEntityInstance*>(held), definition);
    const SdaiPrimitiveH plain(7L);
    EXPECT_EQ(static_cast<long>(static_cast<const SdaiSelectH&>(plain).getValue()), 7);
}

// ---- Users

// The visited instances for which refers(instance) holds. A platform without back references visits
// others as well.
template <class Refers>
std::vector<SdaiEntityInstance*> Visited(SdaiIterator_Of_Users&& user, Refers refers) {
    std::vector<SdaiEntityInstance*> visited;
    user.Fetch();
    while (user.Next()) {
        if (refers(user.GetCurrentMember())) visited.push_back(user.GetCurrentMember());
    }
    EXPECT_EQ(user.GetCurrentMember(), nullptr);
    return visited;
}

using Instances = std::vector<SdaiEntityInstance*>;

TEST(Contract, UsersComeInTheOrderOfTheExtentWhateverIsWritten) {
    const auto model = NewModel("cdma");
    SdaiAppInstance* part = Create(*model, "part_object");
    SdaiAppInstance* other = Create(*model, "part_object");
    SdaiAppInstance* first = Create(*model, "part_link");
    SdaiAppInstance* second = Create(*model, "part_link");
    SdaiAppInstance* third = Create(*model, "part_link");
    third->PutAttr("ref"_name, part);
    second->PutAttr("ref"_name, other);
    first->PutAttr("ref"_name, part);
    // A reference through another attribute, and one from another type.
    second->PutAttr("parent"_name, part);
    Create(*model, "configuration_item")->PutAttr("design"_name, part);
    const auto users = [&](std::vector<const SdaiEntityInstance*> targets) {
        return Visited(SdaiIterator_Of_Users(model.get(), "part_link"_name, "ref"_name, targets),
                       [&](const SdaiEntityInstance* link) {
                           const SdaiEntityInstance* used = link->GetAttr("ref"_name);
                           return std::find(targets.begin(), targets.end(), used) != targets.end();
                       });
    };
    EXPECT_EQ(users({part}), (Instances{first, third}));
    EXPECT_EQ(users({other}), Instances{second});
    EXPECT_EQ(users({other, part}), (Instances{first, second, third}));
    EXPECT_EQ(users({first}), Instances{});
    first->PutAttr("ref"_name, SdaiPrimitiveH());
    second->PutAttr("ref"_name, part);
    SdaiAppInstance* fourth = Create(*model, "part_link");
    fourth->PutAttr("ref"_name, part);
    EXPECT_EQ(users({part}), (Instances{second, third, fourth}));
    EXPECT_EQ(users({other}), Instances{});
    const SdaiEntityInstance* const targets[] = {part};
    SdaiIterator_Of_Users none(nullptr, "part_link"_name, "ref"_name, targets);
    EXPECT_FALSE(none.Next());
}

TEST(Contract, UsersAreFoundOverTwoAttributes) {
    const auto model = NewModel("AUTOMOTIVE_DESIGN");
    SdaiAppInstance* link = Create(*model, "NEXT_ASSEMBLY_USAGE_OCCURRENCE");
    SdaiAppInstance* shape = Create(*model, "PRODUCT_DEFINITION_SHAPE");
    SdaiAppInstance* used = Create(*model, "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION");
    SdaiAppInstance* unused = Create(*model, "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION");
    shape->PutAttr("DEFINITION"_name, link);
    used->PutAttr("REPRESENTED_PRODUCT_RELATION"_name, shape);
    const SdaiEntityInstance* const targets[] = {link};
    const Instances users = Visited(
        SdaiIterator_Of_Users(model.get(), "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION"_name,
                              "REPRESENTED_PRODUCT_RELATION"_name, "DEFINITION"_name, targets),
        [&](const SdaiEntityInstance* context) {
            const SdaiPrimitiveH relation = context->GetAttr("REPRESENTED_PRODUCT_RELATION"_name);
            const SdaiEntityInstance* definition = relation.GetAttr("DEFINITION"_name);
            return link->IsSameInstance(definition);
        });
    EXPECT_EQ(users, Instances{used});
    EXPECT_FALSE(unused->TestAttr("REPRESENTED_PRODUCT_RELATION"_name));
}

TEST(Contract, UsersAmongMembersComeAsOftenAsTheyAreMembers) {
    const auto model = NewModel("cdma");
    SdaiAppInstance* part = Create(*model, "part_object");
    SdaiAppInstance* link = Create(*model, "part_link");
    SdaiAppInstance* other = Create(*model, "part_link");
    link->PutAttr("ref"_name, part);
    SdaiAggrInstance links;
    links.Reserve(3);
    for (SdaiEntityInstance* each : {link, other, link}) links.Append(each);
    const auto refers = [&](const SdaiEntityInstance* each) { return each == link; };
    EXPECT_EQ(Visited(SdaiIterator_Of_Users(&links, "ref"_name, part), refers),
              (Instances{link, link}));
    EXPECT_EQ(Visited(SdaiIterator_Of_Users(&links), [](const auto*) { return true; }),
              (Instances{link, other, link}));
    EXPECT_FALSE(SdaiIterator_Of_Users(nullptr).Next());
}

// ---- Aggregates

TEST(Contract, AnAggregateOfAnInstanceIsACopy) {
    const auto model = NewModel("cdma");
    SdaiAppInstance* part = Create(*model, "part_object");
    SdaiAppInstance* link = Create(*model, "part_link");
    {
        SdaiAggrInstance links;
        links.Append(link);
        part->PutAttr("KORASS", &links);
        links.RemoveAll();
    }
    const SdaiPrimitiveH kept = part->GetAttr("KORASS");
    ASSERT_EQ(kept.GetMemberCount(), 1);
    const SdaiAggrInstance* members = kept;
    EXPECT_TRUE(members->IsMember(link));
    EXPECT_FALSE(members->IsMember(part));
    EXPECT_EQ(members->GetInstanceMember(1), nullptr);
}

TEST(Contract, AListOfRealsBelongsToTheHandlesThatTookItOver) {
    auto* list = new SdaiListClassOfSdaiReal(0, 12);
    SdaiPrimitiveH owner = SdaiPrimitiveH::TakeOver(list);
    list->Append(1.5);
    list->Append(-2.0);
    const SdaiPrimitiveH other = owner;
    owner = SdaiPrimitiveH();
    SdaiIterator_Of_SdaiReal real(static_cast<SdaiAggrInstance*>(other));
    std::vector<double> reals;
    while (real.Next()) reals.push_back(real.GetCurrentMember());
    EXPECT_EQ(reals, (std::vector<double>{1.5, -2.0}));
}

TEST(Contract, AnIteratorVisitsWhatWasThereWhenItBegan) {
    const auto model = NewModel("cdma");
    Create(*model, "part_object");
    SdaiIterator_Of_SdaiEntityInstanceH part(model->GetEntityExtent("part_object"));
    int visited = 0;
    while (part.Next()) {
        Create(*model, "part_object");
        ++visited;
    }
    EXPECT_EQ(visited, 1);
    EXPECT_FALSE(SdaiIterator_Of_SdaiEntityInstanceH(nullptr).Next());
}

// ---- Texts

TEST(Contract, ATextIsCutAndSearchedWithinItsBounds) {
    const KORUnicodeString text("S0003ORX");
    EXPECT_EQ(text.GetLengthInChar(), 8);
    EXPECT_EQ(text.SubString(5, 99), KORUnicodeString("ORX"));
    EXPECT_EQ(text.SubString(99, 1), KORUnicodeString());
    EXPECT_EQ(text.SearchSubString("ORX", 0, KORSearchForward), 5);
    EXPECT_EQ(text.SearchSubString("ORX", 6, KORSearchForward), -1);
    EXPECT_EQ(SdaiString("20260115").substr(4, 5), SdaiString("01"));
}

TEST(Contract, ComparisonTellsEqualBeginningAndOther) {
    const KORUnicodeString range("option_range");
    EXPECT_EQ(range.Compare("option_range"), 2);
    EXPECT_EQ(range.Compare("option"), 1);
    EXPECT_EQ(range.Compare("option_range_x"), 1);
    EXPECT_EQ(range.Compare("range"), 0);
    EXPECT_EQ(range.Compare(""), 0);
}

// ---- Trace

TEST(Contract, ATraceScopeWritesItsLinesWhenItsLevelIsActive) {
    const std::string path = testing::TempDir() + "contract-" + std::to_string(getpid());
    ASSERT_TRUE(KORPSNTrace::Configure(12, path.c_str()));
    EXPECT_TRUE(KORPSNTrace::LevelIsActive(12));
    {
        KORPSNTrace trace("outer ->", 12, 0);
        KORPSNTrace inner("inner ->", 12, 0);
        inner.GetLigne().GetStream() << "line\n";
        inner.Out();
    }
    KORPSNTrace::Configure(0, nullptr);
    EXPECT_FALSE(KORPSNTrace::LevelIsActive(12));
    std::vector<std::string> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    EXPECT_EQ(lines, (std::vector<std::string>{"outer -> {", "   inner -> {", "line",
                                               "   inner -> }", "outer -> }"}));
    std::remove(path.c_str());
}

// ---- Document management

TEST(Contract, RevisionsOfAFamilyAreFoundOldestFirst) {
    const KORDMInstance oldest("KORCON", "CDM", "PART", 1.0, 1.0);
    const KORDMInstance newest("KORCON", "CDM", "PART", 2.0, 1.0);
    const KORDMInstance stranger("KORCON", "CDM", "PART", 3.0, 1.0);
    KORListValKORDMInstance family;
    family.Append(oldest);
    family.Append(newest);
    KORDMStore::RemoveAll();
    KORDMStore::AddFamily(family);

    KORListValKORDMInstance revisions;
    EXPECT_EQ(newest.GetAllRevision(revisions, 0, 1, 0), 0);
    EXPECT_EQ(revisions.Locate(oldest, 1), 1);
    EXPECT_EQ(revisions.Locate(newest, 1), 2);
    EXPECT_EQ(revisions.Locate(oldest, 2), 0);
    EXPECT_NE(stranger.GetAllRevision(revisions, 0, 1, 0), 0);

    int diagnostic = -1;
    EXPECT_EQ(newest.IsNewerRevision(oldest, 1, diagnostic), 1);
    EXPECT_EQ(diagnostic, 0);
    EXPECT_EQ(oldest.IsNewerRevision(newest, 1, diagnostic), 0);
    EXPECT_EQ(diagnostic, 0);
    EXPECT_EQ(newest.IsNewerRevision(stranger, 1, diagnostic), 0);
    EXPECT_NE(diagnostic, 0);
    KORDMStore::RemoveAll();
}

TEST(Contract, IdentifiersAreHexadecimal) {
    EXPECT_EQ(KORDMNarvo::HexaToDouble("1a2B"), 6699.0);
    EXPECT_EQ(KORDMNarvo::HexaToDouble("no number"), 0.0);
}

}  // namespace
