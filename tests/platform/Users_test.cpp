// The users of an instance, and the members of long aggregates.

#include "SdaiUsers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "Allocations.h"
#include "ParsedModel.h"

using namespace sdai_names;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Instances = std::vector<SdaiEntityInstance*>;

// A note's owner may be a part, a part as the value of a defined type, or not a part.
const char* const kStore = R"(SCHEMA store;
TYPE label = STRING; END_TYPE;
TYPE spare = part; END_TYPE;
TYPE part_or_label = SELECT (part, spare, label); END_TYPE;
ENTITY part;
  name : OPTIONAL label;
END_ENTITY;
ENTITY note;
  owner : OPTIONAL part_or_label;
END_ENTITY;
ENTITY place;
  owner : OPTIONAL part;
END_ENTITY;
ENTITY shelf SUBTYPE OF (place);
  links : OPTIONAL LIST OF note;
END_ENTITY;
ENTITY box SUBTYPE OF (place);
DERIVE
  SELF\place.owner : part := ?;
END_ENTITY;
ENTITY crate SUBTYPE OF (place);
  SELF\place.owner RENAMED keeper : part;
END_ENTITY;
ENTITY label_holder;
  colour : OPTIONAL label;
END_ENTITY;
ENTITY visit;
  of : OPTIONAL place;
END_ENTITY;
END_SCHEMA;
)";

Instances All(SdaiIterator_Of_Users& iterator) {
    Instances found;
    while (iterator.Next()) found.push_back(iterator.GetCurrentMember());
    EXPECT_EQ(iterator.GetCurrentMember(), nullptr);
    return found;
}

// The users that an iterator of these arguments finds, however often it is told to fetch them
// first.
template <class... Arguments>
Instances UsersOf(const Arguments&... arguments) {
    SdaiIterator_Of_Users users(arguments...);
    const Instances found = All(users);
    for (int times = 1; times <= 5; ++times) {
        SdaiIterator_Of_Users fetched(arguments...);
        for (int i = 0; i < times; ++i) fetched.Fetch();
        EXPECT_EQ(All(fetched), found) << times;
    }
    return found;
}

using Targets = std::vector<const SdaiEntityInstance*>;

Instances Users(const SdaiModel& model, const SdaiName& type, const SdaiName& attribute,
                const Targets& targets) {
    return UsersOf(&model, type, attribute, targets);
}

Instances Users(const SdaiModel& model, const SdaiName& type, const SdaiName& attribute,
                const SdaiName& next, const Targets& targets) {
    return UsersOf(&model, type, attribute, next, targets);
}

// The same, found by searching the extent.
Instances Walked(const SdaiModel& model, const SdaiName& type, const SdaiName& attribute,
                 const SdaiEntityInstance* target) {
    Instances found;
    const SdaiAggrInstance* extent = model.GetEntityExtent(type);
    for (long i = 0; i < extent->GetMemberCount(); ++i) {
        SdaiEntityInstance* instance = extent->GetInstanceMember(i);
        if (static_cast<SdaiEntityInstance*>(instance->GetAttr(attribute)) == target) {
            found.push_back(instance);
        }
    }
    return found;
}

SdaiAppInstance* Create(kor::Model& model, const char* type) {
    return model.GetEntityDefinition(SdaiString(type))->CreateEntityInstance(&model);
}

SdaiAppInstance& App(const ParsedModel& model, unsigned long id) {
    return static_cast<SdaiAppInstance&>(*InstanceIn(model[id]));
}

}  // namespace

// ---- Results

TEST(Users, ComeInTheOrderOfTheExtentWhateverTheirNumbers) {
    const ParsedModel model(kStore,
                            "#9=PLACE(#5);#3=PLACE(#5);#5=PART('p');#7=PLACE(#6);"
                            "#6=PART('q');#1=PLACE(#5);");
    EXPECT_THAT(Users(model.Model(), "place"_name, "owner"_name, {InstanceIn(model[5])}),
                ElementsAre(InstanceIn(model[9]), InstanceIn(model[3]), InstanceIn(model[1])));
    EXPECT_THAT(Users(model.Model(), "PLACE"_name, "OWNER"_name, {InstanceIn(model[6])}),
                ElementsAre(InstanceIn(model[7])));
}

TEST(Users, AreOfTheTypeItsSubtypesAndComplexTypes) {
    const ParsedModel model(
        kStore,
        "#1=PART('p');#2=SHELF(#1,());#3=NOTE(#1);"
        "#4=(LABEL_HOLDER('red')PLACE(#1)SHELF(()));#5=PLACE(#1);#6=CRATE(#1);");
    const SdaiEntityInstance* part = InstanceIn(model[1]);
    EXPECT_THAT(Users(model.Model(), "place"_name, "owner"_name, {part}),
                ElementsAre(InstanceIn(model[2]), InstanceIn(model[4]), InstanceIn(model[5]),
                            InstanceIn(model[6])));
    EXPECT_THAT(Users(model.Model(), "shelf"_name, "owner"_name, {part}),
                ElementsAre(InstanceIn(model[2]), InstanceIn(model[4])));
    EXPECT_THAT(Users(model.Model(), "note"_name, "owner"_name, {part}),
                ElementsAre(InstanceIn(model[3])));
    EXPECT_THAT(Users(model.Model(), "crate"_name, "keeper"_name, {part}),
                ElementsAre(InstanceIn(model[6])));
}

TEST(Users, ReferDirectlyOrThroughASelect) {
    const ParsedModel model(kStore,
                            "#1=PART('p');#2=NOTE(#1);#3=NOTE(SPARE(#1));#4=NOTE(LABEL('p'));"
                            "#5=NOTE($);");
    EXPECT_THAT(Users(model.Model(), "note"_name, "owner"_name, {InstanceIn(model[1])}),
                ElementsAre(InstanceIn(model[2]), InstanceIn(model[3])));
}

TEST(Users, AreNotThoseWhoseAttributeIsDerivedOrUnset) {
    const ParsedModel model(kStore, "#1=PART('p');#2=BOX(*);#3=PLACE($);");
    EXPECT_THAT(Users(model.Model(), "place"_name, "owner"_name, {InstanceIn(model[1])}),
                IsEmpty());
}

TEST(Users, AreNoneOfNothing) {
    const ParsedModel model(kStore, "#1=PART('p');#2=PLACE(#1);");
    const SdaiEntityInstance* part = InstanceIn(model[1]);
    EXPECT_THAT(Users(model.Model(), "place"_name, "owner"_name, {}), IsEmpty());
    EXPECT_THAT(Users(model.Model(), "place"_name, "owner"_name, {nullptr}), IsEmpty());
    EXPECT_THAT(Users(model.Model(), "place"_name, "owner"_name, {nullptr, nullptr}), IsEmpty());
    EXPECT_THAT(Users(model.Model(), "no_such_type"_name, "owner"_name, {part}), IsEmpty());
    EXPECT_THAT(Users(model.Model(), "place"_name, "no_such_attribute"_name, {part}), IsEmpty());
    EXPECT_THAT(Users(model.Model(), "place"_name, "owner"_name, {InstanceIn(model[2])}),
                IsEmpty());
    const kor::Model* const none = nullptr;
    EXPECT_THAT(UsersOf(none, "place"_name, "owner"_name, Targets{part}), IsEmpty());
    EXPECT_THAT(UsersOf(none, "visit"_name, "of"_name, "owner"_name, Targets{part}), IsEmpty());
}

TEST(Users, OfSeveralInstancesComeInOneOrderEachOnce) {
    const ParsedModel model(kStore,
                            "#1=PART('p');#2=PART('q');#3=PART('r');#4=PLACE(#2);"
                            "#5=PLACE(#1);#6=PLACE(#3);#7=PLACE(#2);");
    EXPECT_THAT(Users(model.Model(), "place"_name, "owner"_name,
                      {InstanceIn(model[1]), nullptr, InstanceIn(model[2]), InstanceIn(model[1])}),
                ElementsAre(InstanceIn(model[4]), InstanceIn(model[5]), InstanceIn(model[7])));
}

TEST(Users, AreFoundOverTwoAttributes) {
    const ParsedModel model(kStore,
                            "#1=PART('p');#2=PART('q');#10=VISIT(#7);#11=VISIT(#6);"
                            "#6=PLACE(#1);#7=SHELF(#1,());#8=PLACE(#2);#12=VISIT(#8);"
                            "#13=VISIT(#7);#14=VISIT($);");
    const SdaiEntityInstance* p = InstanceIn(model[1]);
    const SdaiEntityInstance* q = InstanceIn(model[2]);
    EXPECT_THAT(Users(model.Model(), "visit"_name, "of"_name, "owner"_name, {p}),
                ElementsAre(InstanceIn(model[10]), InstanceIn(model[11]), InstanceIn(model[13])));
    EXPECT_THAT(Users(model.Model(), "visit"_name, "of"_name, "owner"_name, {q, p, q}),
                ElementsAre(InstanceIn(model[10]), InstanceIn(model[11]), InstanceIn(model[12]),
                            InstanceIn(model[13])));
}

TEST(Users, ManyMoreThanAFewAreFound) {
    const ParsedModel model(kStore);
    const SdaiEntityInstance* a = Create(model.Model(), "part");
    const SdaiEntityInstance* b = Create(model.Model(), "part");
    Instances places;
    Instances visits;
    for (int i = 0; i < 1000; ++i) {
        SdaiAppInstance* place = Create(model.Model(), "place");
        place->PutAttr("owner"_name, const_cast<SdaiEntityInstance*>(i % 3 == 0 ? a : b));
        places.push_back(place);
        SdaiAppInstance* visit = Create(model.Model(), "visit");
        visit->PutAttr("of"_name, place);
        visits.push_back(visit);
    }
    EXPECT_EQ(Users(model.Model(), "place"_name, "owner"_name, {a, b}), places);
    EXPECT_EQ(Users(model.Model(), "visit"_name, "of"_name, "owner"_name, {a, b}), visits);
    EXPECT_EQ(Users(model.Model(), "place"_name, "owner"_name, {a}).size(), 334U);
}

// The first instances of a type are kept otherwise than all that follow.
TEST(Users, AreFoundAmongAsManyInstancesAsThereAre) {
    constexpr std::size_t kCount = 20'000;
    std::mt19937_64 random(1);
    const ParsedModel model(kStore);
    Instances parts;
    Instances places;
    std::vector<std::size_t> owners;
    const auto create = [&](std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            parts.push_back(Create(model.Model(), "part"));
            places.push_back(Create(model.Model(), "place"));
            owners.push_back(random() % parts.size());
            static_cast<SdaiAppInstance*>(places.back())->PutAttr("owner", parts[owners.back()]);
        }
    };
    const auto expectAll = [&] {
        std::vector<Instances> users(parts.size());
        for (std::size_t i = 0; i < places.size(); ++i) users[owners[i]].push_back(places[i]);
        for (std::size_t i = 0; i < parts.size(); ++i) {
            SdaiIterator_Of_Users user(&model.Model(), "place"_name, "owner"_name,
                                       std::span<const SdaiEntityInstance* const>(&parts[i], 1));
            ASSERT_EQ(All(user), users[i]) << i;
        }
    };
    create(kCount);
    expectAll();
    create(kCount);
    for (std::size_t i = 0; i < kCount; ++i) {
        const std::size_t written = random() % places.size();
        owners[written] = random() % parts.size();
        static_cast<SdaiAppInstance*>(places[written])->PutAttr("owner", parts[owners[written]]);
    }
    expectAll();
}

TEST(Users, AreFoundForProgramsThatKnowNamesAsTexts) {
    const ParsedModel model(kStore, "#1=PART('p');#2=PLACE(#1);#3=NOTE(SPARE(#1));");
    EXPECT_THAT(model.Model().UsersOf(*InstanceIn(model[1]), "place"_name, "owner"_name),
                ElementsAre(InstanceIn(model[2])));
    EXPECT_THAT(model.Model().UsersOf(*InstanceIn(model[1]), "note"_name, "owner"_name),
                ElementsAre(InstanceIn(model[3])));
    model.Model().ForgoRelations();
    EXPECT_THAT(model.Model().UsersOf(*InstanceIn(model[1]), "note"_name, "owner"_name),
                ElementsAre(InstanceIn(model[3])));
}

// ---- Writing in between

TEST(Users, FollowWhatIsWritten) {
    const ParsedModel model(kStore, "#1=PART('p');#2=PART('q');#3=PLACE(#1);#4=NOTE(#1);");
    SdaiEntityInstance* p = InstanceIn(model[1]);
    SdaiEntityInstance* q = InstanceIn(model[2]);
    const auto ofP = [&] { return Users(model.Model(), "place"_name, "owner"_name, {p}); };
    const auto ofQ = [&] { return Users(model.Model(), "place"_name, "owner"_name, {q}); };
    EXPECT_THAT(ofP(), ElementsAre(InstanceIn(model[3])));
    App(model, 3).PutAttr("owner", q);
    EXPECT_THAT(ofP(), IsEmpty());
    EXPECT_THAT(ofQ(), ElementsAre(InstanceIn(model[3])));
    App(model, 3).PutAttr("owner", SdaiPrimitiveH());
    EXPECT_THAT(ofQ(), IsEmpty());
    App(model, 3).PutAttr("OWNER"_name, p);
    EXPECT_THAT(ofP(), ElementsAre(InstanceIn(model[3])));
    App(model, 4).PutAttr("owner", SdaiPrimitiveH(SdaiSelectH("SPARE", q)));
    EXPECT_THAT(Users(model.Model(), "note"_name, "owner"_name, {q}),
                ElementsAre(InstanceIn(model[4])));
    App(model, 4).PutAttr("owner", "a text"_h);
    EXPECT_THAT(Users(model.Model(), "note"_name, "owner"_name, {q}), IsEmpty());
}

TEST(Users, ComprehendInstancesCreatedLaterAlsoOfNewTypes) {
    const ParsedModel model(kStore, "#1=PART('p');");
    SdaiEntityInstance* part = InstanceIn(model[1]);
    const auto users = [&] { return Users(model.Model(), "place"_name, "owner"_name, {part}); };
    EXPECT_THAT(users(), IsEmpty());
    SdaiAppInstance* shelf = Create(model.Model(), "shelf");
    SdaiAppInstance* place = Create(model.Model(), "place");
    place->PutAttr("owner", part);
    EXPECT_THAT(users(), ElementsAre(place));
    shelf->PutAttr("owner", part);
    EXPECT_THAT(users(), ElementsAre(shelf, place));
}

TEST(Users, StayInOrderAndStandOnceWhenTheyLeaveAndComeBack) {
    const ParsedModel model(kStore,
                            "#1=PART('p');#2=PART('q');#3=PLACE(#1);#4=PLACE(#1);#5=PLACE(#1);"
                            "#6=PLACE(#1);#7=PLACE(#1);");
    SdaiEntityInstance* p = InstanceIn(model[1]);
    SdaiEntityInstance* q = InstanceIn(model[2]);
    const auto ofP = [&] { return Users(model.Model(), "place"_name, "owner"_name, {p}); };
    EXPECT_EQ(ofP().size(), 5U);
    App(model, 3).PutAttr("owner", q);
    App(model, 3).PutAttr("owner", p);
    App(model, 5).PutAttr("owner", q);
    App(model, 7).PutAttr("owner", q);
    App(model, 7).PutAttr("owner", p);
    EXPECT_THAT(ofP(), ElementsAre(InstanceIn(model[3]), InstanceIn(model[4]), InstanceIn(model[6]),
                                   InstanceIn(model[7])));
    for (const unsigned long id : {3UL, 4UL, 6UL, 7UL}) App(model, id).PutAttr("owner", q);
    EXPECT_THAT(ofP(), IsEmpty());
}

// Long lists are kept in two runs, which join now and then.
TEST(Users, ComeInOrderWhateverTheOrderInWhichTheyAreWritten) {
    constexpr std::size_t kCount = 600;
    std::mt19937_64 random(1);
    const ParsedModel model(kStore, "#1=PART('p');#2=PART('q');");
    SdaiEntityInstance* p = InstanceIn(model[1]);
    SdaiEntityInstance* q = InstanceIn(model[2]);
    std::vector<SdaiAppInstance*> places(kCount);
    for (SdaiAppInstance*& place : places) place = Create(model.Model(), "place");
    std::vector<std::size_t> backwards(kCount);
    std::iota(backwards.rbegin(), backwards.rend(), 0);
    std::vector<std::size_t> shuffled = backwards;
    std::shuffle(shuffled.begin(), shuffled.end(), random);
    const auto ofP = [&] { return Users(model.Model(), "place"_name, "owner"_name, {p}); };
    for (const auto& order : {backwards, shuffled}) {
        std::vector<bool> refers(kCount, false);
        const auto set = [&](std::size_t place, bool refersToP) {
            places[place]->PutAttr("owner", refersToP ? p : q);
            refers[place] = refersToP;
            Instances expected;
            for (std::size_t i = 0; i < kCount; ++i) {
                if (refers[i]) expected.push_back(places[i]);
            }
            ASSERT_EQ(ofP(), expected);
        };
        for (const std::size_t place : order) set(place, true);
        // Some leave, some of them return, while others are asked for.
        for (std::size_t i = 0; i < kCount; ++i) {
            const std::size_t place = order[random() % kCount];
            set(place, random() % 2 == 0);
        }
        for (const std::size_t place : order) set(place, false);
    }
}

TEST(Users, AreRightOnceReferencesHaveFoundTheirInstances) {
    const ParsedModel model(kStore, "#1=PART('p');");
    kor::Model& data = model.Model();
    const auto users = [&](unsigned long id) {
        return Users(data, "place"_name, "owner"_name, {InstanceIn(model[id])});
    };
    EXPECT_THAT(users(1), IsEmpty());
    const kor::ModelType& place = *data.TypeOf(*data.FindEntity(std::string_view("PLACE")));
    const kor::ModelType& part = *data.TypeOf(*data.FindEntity(std::string_view("PART")));
    const auto create = [&](std::uint64_t id, const kor::ModelType& type, kor::Cell value) {
        return &data.Create(type, id, {&value, 1});
    };
    SdaiEntityInstance* early = create(10, place, data.Reference(20));
    SdaiEntityInstance* dangling = create(11, place, data.Reference(99));
    SdaiEntityInstance* known = create(12, place, data.Reference(1));
    create(20, part, {});
    // Until references are settled, others may be visited, too.
    EXPECT_THAT(users(20), testing::Contains(early));
    EXPECT_THAT(data.SettleReferences(), ElementsAre(99));
    EXPECT_THAT(users(20), ElementsAre(early));
    EXPECT_THAT(users(1), ElementsAre(known));
    static_cast<SdaiAppInstance*>(dangling)->PutAttr("owner", model[20]);
    EXPECT_THAT(users(20), ElementsAre(early, dangling));
}

TEST(Users, OfInstancesOfOtherModelsAreFound) {
    const ParsedModel here(kStore, "#1=PLACE($);#2=VISIT(#1);#3=VISIT($);");
    const ParsedModel there(kStore, "#1=PART('p');#2=PLACE(#1);");
    const SdaiEntityInstance* part = InstanceIn(there[1]);
    const auto visits = [&] {
        return Users(here.Model(), "visit"_name, "of"_name, "owner"_name, {part});
    };
    EXPECT_THAT(visits(), IsEmpty());
    App(here, 1).PutAttr("owner", there[1]);
    EXPECT_THAT(Users(here.Model(), "place"_name, "owner"_name, {part}),
                ElementsAre(InstanceIn(here[1])));
    EXPECT_THAT(Users(there.Model(), "place"_name, "owner"_name, {part}),
                ElementsAre(InstanceIn(there[2])));
    // The second step starts from an instance of the other model.
    App(here, 3).PutAttr("of", there[2]);
    EXPECT_THAT(visits(), testing::IsSupersetOf({InstanceIn(here[2]), InstanceIn(here[3])}));
}

TEST(Users, AreFoundWhereAModelThatIsReferredToIsGone) {
    const ParsedModel here(kStore, "#1=PART('p');#2=PLACE(#1);#3=PLACE($);#4=PLACE(#1);");
    {
        const ParsedModel there(kStore, "#1=PART('p');");
        App(here, 3).PutAttr("owner", there[1]);
    }
    const auto places = [&] {
        return Users(here.Model(), "place"_name, "owner"_name, {InstanceIn(here[1])});
    };
    EXPECT_THAT(places(), ElementsAre(InstanceIn(here[2]), InstanceIn(here[4])));
    App(here, 3).PutAttr("owner", here[1]);
    EXPECT_THAT(places(),
                ElementsAre(InstanceIn(here[2]), InstanceIn(here[3]), InstanceIn(here[4])));
}

// A reference to another model matters where the first of two steps may follow it.
TEST(Users, OverTwoAttributesAreNoOthersWhileTheFirstStaysWithinTheModel) {
    const ParsedModel here(kStore,
                           "#1=PART('p');#2=PLACE(#1);#3=PLACE($);#4=VISIT(#2);#5=VISIT(#3);"
                           "#6=VISIT($);#7=CRATE($);");
    const ParsedModel there(kStore, "#1=PART('p');");
    App(here, 3).PutAttr("owner", there[1]);
    App(here, 7).PutAttr("keeper", there[1]);
    const auto visits = [&](const ParsedModel& model) {
        return Users(here.Model(), "visit"_name, "of"_name, "owner"_name, {InstanceIn(model[1])});
    };
    EXPECT_THAT(visits(here), ElementsAre(InstanceIn(here[4])));
    EXPECT_THAT(visits(there), ElementsAre(InstanceIn(here[5])));
}

TEST(Users, EqualThoseOfAWalkAfterAnyWrites) {
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937_64 random(seed);
        const auto below = [&random](std::size_t count) { return random() % count; };
        const ParsedModel model(kStore);
        static const char* const kTypes[] = {"part", "note", "place", "shelf", "crate", "visit"};
        std::vector<SdaiAppInstance*> instances;
        Instances parts;
        for (int step = 0; step < 3000; ++step) {
            if (instances.size() < 3 || below(8) == 0) {
                instances.push_back(Create(model.Model(), kTypes[below(6)]));
                if (instances.back()->IsKindOf("part")) parts.push_back(instances.back());
                continue;
            }
            SdaiAppInstance* written = instances[below(instances.size())];
            SdaiPrimitiveH value;
            // A few targets have many users.
            if (!parts.empty() && below(5) != 0) {
                value = parts[below(below(2) == 0 ? 1 + parts.size() / 8 : parts.size())];
            }
            if (below(6) == 0) value = SdaiSelectH("SPARE", value);
            written->PutAttr("owner", value);
            if (parts.empty() || below(4) != 0) continue;
            const SdaiEntityInstance* asked = parts[below(parts.size())];
            ASSERT_EQ(Users(model.Model(), "place"_name, "owner"_name, {asked}),
                      Walked(model.Model(), "place"_name, "owner"_name, asked));
            ASSERT_EQ(Users(model.Model(), "note"_name, "owner"_name, {asked}),
                      Walked(model.Model(), "note"_name, "owner"_name, asked));
        }
    }
}

TEST(Users, AreAmongThoseVisitedWhereverMemoryLacks) {
    for (long succeeding = 0; succeeding < 40; ++succeeding) {
        SCOPED_TRACE(succeeding);
        const ParsedModel model(kStore, "#1=PART('p');#2=PART('q');#3=PLACE(#1);#4=PLACE(#2);");
        SdaiEntityInstance* p = InstanceIn(model[1]);
        const SdaiEntityInstance* const targets[] = {p, InstanceIn(model[2])};
        model.Model().GetEntityExtent("place"_name);
        Instances later;
        for (int i = 0; i < 20; ++i) later.push_back(Create(model.Model(), "place"));
        Instances found;
        found.reserve(100);
        {
            const FailingAllocations failing(succeeding, FailingAllocations::Extent::FromThenOn);
            SdaiIterator_Of_Users first(&model.Model(), "place"_name, "owner"_name,
                                        std::span(targets, 1));
            while (first.Next()) found.push_back(first.GetCurrentMember());
            for (SdaiEntityInstance* place : later) {
                static_cast<SdaiAppInstance*>(place)->PutAttr("owner"_name, p);
            }
            SdaiIterator_Of_Users users(&model.Model(), "place"_name, "owner"_name, targets);
            for (long i = 0; i < succeeding % 4; ++i) users.Fetch();
            while (users.Next()) found.push_back(users.GetCurrentMember());
        }
        for (SdaiEntityInstance* place : later) EXPECT_THAT(found, testing::Contains(place));
        EXPECT_THAT(found, testing::IsSupersetOf({InstanceIn(model[3]), InstanceIn(model[4])}));
    }
}

// ---- Members of aggregates

namespace {

// A shelf with `count` notes, note i being of part i % 10.
struct Shelf {
    explicit Shelf(int count) : model(kStore) {
        for (int i = 0; i < 10; ++i) parts.push_back(Create(model.Model(), "part"));
        SdaiAggrInstance list;
        for (int i = 0; i < count; ++i) {
            notes.push_back(Create(model.Model(), "note"));
            notes.back()->PutAttr("owner", parts[static_cast<std::size_t>(i % 10)]);
            list.Append(notes.back());
        }
        shelf = Create(model.Model(), "shelf");
        shelf->PutAttr("links", &list);
    }

    SdaiAggrInstance* Links() const { return shelf->GetAttr("links"); }
    Instances UsersOf(const SdaiEntityInstance* part) const {
        SdaiIterator_Of_Users users(Links(), "owner"_name, part);
        Instances found = All(users);
        std::erase_if(found, [&](const SdaiEntityInstance* note) {
            return note == nullptr ||
                   static_cast<SdaiEntityInstance*>(note->GetAttr("owner")) != part;
        });
        return found;
    }

    ParsedModel model;
    Instances parts;
    std::vector<SdaiAppInstance*> notes;
    SdaiAppInstance* shelf;
};

}  // namespace

TEST(UsersAmongMembers, AreFoundInShortAndLongAggregates) {
    for (const int count : {0, 1, 31, 32, 33, 1000}) {
        SCOPED_TRACE(count);
        const Shelf shelf(count);
        for (std::size_t i = 0; i < shelf.parts.size(); ++i) {
            Instances expected;
            for (std::size_t n = i; n < shelf.notes.size(); n += 10) {
                expected.push_back(shelf.notes[n]);
            }
            EXPECT_THAT(shelf.UsersOf(shelf.parts[i]),
                        testing::UnorderedElementsAreArray(expected));
        }
        EXPECT_THAT(shelf.UsersOf(shelf.shelf), IsEmpty());
        EXPECT_THAT(shelf.UsersOf(nullptr), IsEmpty());
    }
    SdaiIterator_Of_Users none(nullptr, "owner"_name, nullptr);
    EXPECT_FALSE(none.Next());
}

TEST(UsersAmongMembers, StandAsOftenAsTheyAreMembers) {
    const Shelf shelf(100);
    EXPECT_EQ(shelf.UsersOf(shelf.parts[3]).size(), 10U);
    shelf.Links()->Append(shelf.notes[3]);
    shelf.Links()->Append(shelf.notes[3]);
    EXPECT_EQ(shelf.UsersOf(shelf.parts[3]).size(), 12U);
    shelf.notes[3]->PutAttr("owner", shelf.parts[4]);
    EXPECT_EQ(shelf.UsersOf(shelf.parts[3]).size(), 9U);
    EXPECT_EQ(shelf.UsersOf(shelf.parts[4]).size(), 13U);
    // A user that is not a member.
    Create(shelf.model.Model(), "note")->PutAttr("owner", shelf.parts[3]);
    EXPECT_EQ(shelf.UsersOf(shelf.parts[3]).size(), 9U);
    shelf.Links()->RemoveAll();
    EXPECT_THAT(shelf.UsersOf(shelf.parts[4]), IsEmpty());
}

TEST(UsersAmongMembers, OfSeveralModelsAreFound) {
    const Shelf shelf(100);
    const Shelf other(1);
    EXPECT_EQ(shelf.UsersOf(shelf.parts[0]).size(), 10U);
    other.notes[0]->PutAttr("owner", shelf.parts[0]);
    shelf.Links()->Append(other.notes[0]);
    EXPECT_EQ(shelf.UsersOf(shelf.parts[0]).size(), 11U);
    // The same if the aggregate is a copy.
    shelf.shelf->PutAttr("links", shelf.Links());
    EXPECT_EQ(shelf.UsersOf(shelf.parts[0]).size(), 11U);
}

TEST(LongAggregate, KnowsItsMembersAsItIsChanged) {
    const Shelf shelf(100);
    SdaiAggrInstance* links = shelf.Links();
    SdaiAppInstance* late = Create(shelf.model.Model(), "note");
    EXPECT_TRUE(links->IsMember(shelf.notes[99]));
    EXPECT_FALSE(links->IsMember(late));
    EXPECT_FALSE(links->IsMember(static_cast<SdaiEntityInstance*>(nullptr)));
    links->Append(late);
    EXPECT_TRUE(links->IsMember(late));
    EXPECT_TRUE(links->IsMember(SdaiPrimitiveH(late)));
    // A value of another kind changes how the members are stored.
    links->Append("text"_h);
    EXPECT_TRUE(links->IsMember(late));
    EXPECT_TRUE(links->IsMember("text"_h));
    EXPECT_TRUE(links->IsMember(shelf.notes[0]));
    links->Append(SdaiSelectH("SPARE", shelf.parts[0]));
    EXPECT_TRUE(links->IsMember(shelf.parts[0]));
    links->RemoveAll();
    EXPECT_FALSE(links->IsMember(late));
    for (SdaiAppInstance* note : shelf.notes) links->Append(note);
    EXPECT_FALSE(links->IsMember(late));
    EXPECT_TRUE(links->IsMember(shelf.notes[50]));
}

TEST(LongAggregate, IsSearchedWhereMemoryLacks) {
    const Shelf shelf(100);
    SdaiAggrInstance* links = shelf.Links();
    {
        const FailingAllocations failing(0, FailingAllocations::Extent::FromThenOn);
        EXPECT_TRUE(links->IsMember(shelf.notes[99]));
        EXPECT_FALSE(links->IsMember(shelf.parts[0]));
    }
    EXPECT_TRUE(links->IsMember(shelf.notes[99]));
}
