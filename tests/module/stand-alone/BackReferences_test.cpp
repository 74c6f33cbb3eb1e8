// The functions that search for instances return the same results with back references, over the
// whole extent, and with tracing, whatever is written between the calls.

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "KORDMInstance.h"
#include "ORXExUtilities.h"
#include "ParsedModel.h"
#include "TraceCapture.h"

namespace {

// The number of calls; the environment variable ORX_DIFFERENTIAL_CALLS overrides it.
long CallCount() {
    const char* asked = std::getenv("ORX_DIFFERENTIAL_CALLS");
    return asked != nullptr ? std::atol(asked) : 20'000;
}

// An attribute to write: of which type, and the types that it may refer to; none for a text.
struct Written {
    const char* type;
    const char* attribute;
    std::vector<const char*> targets;
    bool aggregate = false;
};

using Writes = std::span<const Written>;

const Written kDatabase[] = {
    {"part_object", "KORASS", {"part_link"}, true},
    {"part_link", "ref", {"part_object"}},
    {"configuration_item", "design", {"part_object", "part_link"}},
    {"configuration_handler", "apply", {"part_object"}},
    {"range_effectivity", "usage", {"part_link"}, true},
    {"cdma_id", "CdmaObject", {"part_object"}},
    {"part_object", "S_DESC", {}},
    {"part_link", "id", {}},
    {"configuration_item", "id", {}},
};

const Written kStep[] = {
    {"NEXT_ASSEMBLY_USAGE_OCCURRENCE", "RELATING_PRODUCT_DEFINITION", {"PRODUCT_DEFINITION"}},
    {"NEXT_ASSEMBLY_USAGE_OCCURRENCE", "RELATED_PRODUCT_DEFINITION", {"PRODUCT_DEFINITION"}},
    {"PRODUCT_DEFINITION_SHAPE",
     "DEFINITION",
     {"NEXT_ASSEMBLY_USAGE_OCCURRENCE", "PRODUCT_DEFINITION"}},
    {"PROPERTY_DEFINITION", "DEFINITION", {"PRODUCT_DEFINITION", "NEXT_ASSEMBLY_USAGE_OCCURRENCE"}},
    {"SHAPE_DEFINITION_REPRESENTATION",
     "DEFINITION",
     {"PRODUCT_DEFINITION_SHAPE", "PROPERTY_DEFINITION"}},
    {"SHAPE_DEFINITION_REPRESENTATION", "USED_REPRESENTATION", {"SHAPE_REPRESENTATION"}},
    {"CONTEXT_DEPENDENT_SHAPE_REPRESENTATION",
     "REPRESENTED_PRODUCT_RELATION",
     {"PRODUCT_DEFINITION_SHAPE"}},
    {"CONTEXT_DEPENDENT_SHAPE_REPRESENTATION",
     "REPRESENTATION_RELATION",
     {"REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION"}},
    {"REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION", "REP_1", {"SHAPE_REPRESENTATION"}},
    {"REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION", "REP_2", {"SHAPE_REPRESENTATION"}},
    {"REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION",
     "TRANSFORMATION_OPERATOR",
     {"ITEM_DEFINED_TRANSFORMATION"}},
    {"ITEM_DEFINED_TRANSFORMATION", "TRANSFORM_ITEM_1", {"AXIS2_PLACEMENT_3D"}},
    {"ITEM_DEFINED_TRANSFORMATION", "TRANSFORM_ITEM_2", {"AXIS2_PLACEMENT_3D"}},
    {"SHAPE_REPRESENTATION", "ITEMS", {"AXIS2_PLACEMENT_3D"}, true},
    {"AXIS2_PLACEMENT_3D", "LOCATION", {"CARTESIAN_POINT"}},
    {"PRODUCT_DEFINITION", "ID", {}},
    {"NEXT_ASSEMBLY_USAGE_OCCURRENCE", "NAME", {}},
};

// The records in random order: most refer to later ones.
std::string Shuffled(std::vector<std::string> records, std::mt19937_64& random) {
    std::shuffle(records.begin(), records.end(), random);
    std::string data;
    for (const std::string& record : records) data += record;
    return data;
}

// Some occurrences with recognisable placements, among instances out of order.
std::string StepData(std::mt19937_64& random) {
    std::vector<std::string> records;
    const auto add = [&records](int id, const std::string& record) {
        records.push_back('#' + std::to_string(id) + '=' + record + ';');
    };
    const auto ref = [](int id) { return '#' + std::to_string(id); };
    std::string items[4];
    const int count = 4 + static_cast<int>(random() % 5);
    for (int i = 0; i < count; ++i) {
        const int base = 900 - 100 * i;
        const int parent = 1 + static_cast<int>(random() % 2);
        const int child = 2 + static_cast<int>(random() % 3);
        add(base,
            "NEXT_ASSEMBLY_USAGE_OCCURRENCE('','',$," + ref(parent) + ',' + ref(child) + ",$)");
        add(base + 1, "PRODUCT_DEFINITION_SHAPE('',$," + ref(base) + ')');
        add(base + 2,
            "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(" + ref(base + 3) + ',' + ref(base + 1) + ')');
        add(base + 3, "(REPRESENTATION_RELATIONSHIP('',$," + ref(20 + child - 1) + ',' +
                          ref(20 + parent - 1) +
                          ")REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(" + ref(base + 4) +
                          ")SHAPE_REPRESENTATION_RELATIONSHIP())");
        add(base + 4,
            "ITEM_DEFINED_TRANSFORMATION('',$," + ref(30 + child - 1) + ',' + ref(base + 5) + ')');
        add(base + 5, "AXIS2_PLACEMENT_3D(''," + ref(base + 6) + ",$,$)");
        add(base + 6, "CARTESIAN_POINT('',(" + std::to_string(i + 1) + ".,2.,3.))");
        items[parent - 1] += ',' + ref(base + 5);
    }
    for (int part = 0; part < 4; ++part) {
        add(1 + part, "PRODUCT_DEFINITION('',$,$,$)");
        add(10 + part, "PRODUCT_DEFINITION_SHAPE('',$," + ref(1 + part) + ')');
        add(20 + part, "SHAPE_REPRESENTATION('',(" + ref(30 + part) +
                           items[static_cast<std::size_t>(part)] + "),$)");
        add(30 + part, "AXIS2_PLACEMENT_3D(''," + ref(40 + part) + ",$,$)");
        add(40 + part, "CARTESIAN_POINT('',(0.,0.," + std::to_string(part) + ".))");
        add(50 + part,
            "SHAPE_DEFINITION_REPRESENTATION(" + ref(10 + part) + ',' + ref(20 + part) + ')');
    }
    return Shuffled(records, random);
}

std::string DatabaseData(std::mt19937_64& random) {
    std::vector<std::string> records;
    const int count = 5 + static_cast<int>(random() % 5);
    const auto part = [&] {
        return "#1" + std::to_string(random() % static_cast<unsigned>(count));
    };
    for (int i = 0; i < count; ++i) {
        const std::string n = std::to_string(i);
        records.push_back("#8" + n + "=CDMA_ID(#1" + n + ",'A','" + n + "','E','T');");
        records.push_back("#1" + n + "=PART_OBJECT('P" + n + "',$,$,$,$,(#2" + n + "),$,$,$,$);");
        records.push_back("#2" + n + "=PART_LINK('L',$," + part() + ",$,$,$,$);");
        records.push_back("#7" + n + "=CONFIGURATION_HANDLER('H" + n + "'," + part() + ");");
        records.push_back("#3" + n + "=CONFIGURATION_ITEM('C" + n + "',$," + part() + ");");
        records.push_back("#4" + n + "=RANGE_EFFECTIVITY('R',(#2" + n + "),1,2);");
    }
    records.push_back("#90=CDMA_REVISION_HISTORY((#80,#81,#82));");
    records.push_back("#91=CDMA_REVISION_HISTORY((#83,#84));");
    return Shuffled(records, random);
}

// A model that is written randomly; other copies repeat the same writes.
class Copy {
  public:
    // `others` is a model of the same schema, to which all copies may refer.
    Copy(const char* schema, const std::string& data, Writes writes, const kor::Model& others)
        : model_(schema, data), others_(others), writes_(writes) {}

    kor::Model& Model() const { return model_.Model(); }

    void Write(std::mt19937_64& random) {
        const Written& written = writes_[random() % writes_.size()];
        auto* instance = static_cast<SdaiAppInstance*>(Any(random, written.type));
        if (written.targets.empty()) {
            instance->PutAttr(written.attribute, SdaiString(std::to_string(random() % 4).c_str()));
            return;
        }
        if (random() % 12 == 0 && Model().InstanceCount() < 400) {
            const char* type = written.targets[random() % written.targets.size()];
            if (SdaiEntity* entity = Model().GetEntityDefinition(type)) {
                entity->CreateEntityInstance(&Model());
            }
        }
        if (!written.aggregate) {
            instance->PutAttr(written.attribute, Target(random, written));
            return;
        }
        const SdaiPrimitiveH value = instance->GetAttr(written.attribute);
        SdaiAggrInstance* members = value;
        const std::uint64_t choice = random() % 16;
        const SdaiPrimitiveH target = Target(random, written);
        if (members == nullptr || choice == 0) {
            SdaiAggrInstance list;
            list.Append(target);
            instance->PutAttr(written.attribute, &list);
        } else if (choice == 1) {
            members->RemoveAll();
        } else if (choice == 2) {
            instance->PutAttr(written.attribute, SdaiPrimitiveH());
        } else if (choice == 3) {
            for (int i = 0; i < 60; ++i) members->Append(Target(random, written));
        } else {
            members->Append(target);
        }
    }

    SdaiEntityInstance* Any(std::mt19937_64& random, const char* type) const {
        return AnyOf(Model(), random, type);
    }

  private:
    static SdaiEntityInstance* AnyOf(const kor::Model& model, std::mt19937_64& random,
                                     const char* type) {
        const SdaiAggrInstance* extent = model.GetEntityExtent(SdaiString(type));
        const auto count = static_cast<std::uint64_t>(extent->GetMemberCount());
        return extent->GetInstanceMember(static_cast<long>(random() % count));
    }

    SdaiPrimitiveH Target(std::mt19937_64& random, const Written& written) const {
        if (random() % 10 == 0) return {};
        const char* type = written.targets[random() % written.targets.size()];
        if (random() % 200 == 0) return AnyOf(others_, random, type);
        return Any(random, type);
    }

    ParsedModel model_;
    const kor::Model& others_;
    Writes writes_;
};

// A result, exact to the last bit.
std::string Told(const SdaiPrimitiveH& result) {
    if (const SdaiEntityInstance* instance = result) {
        return '#' + std::to_string(instance->GetInstanceNameId());
    }
    std::string text(result.UnderlyingTypeName().View());
    if (const SdaiAggrInstance* members = result) {
        for (long i = 0; i < members->GetMemberCount(); ++i) {
            text += ' ' + std::to_string(std::bit_cast<std::uint64_t>(members->GetRealMember(i)));
        }
        return text;
    }
    text += ' ' + std::string(static_cast<const SdaiString&>(result).View());
    text += ' ' + std::to_string(std::bit_cast<std::uint64_t>(static_cast<double>(result)));
    return text + ' ' + std::to_string(static_cast<int>(static_cast<const SdaiLogical&>(result)));
}

// The result of one random call on a copy; every copy gets the same call.
std::string Asked(const Copy& step, const Copy& database, std::mt19937_64 random) {
    const auto any = [&](const char* type) { return SdaiPrimitiveH(database.Any(random, type)); };
    switch (random() % 10) {
        case 0: return Told(IsPartConfigurated(any("part_object")));
        case 1: {
            const SdaiPrimitiveH part = any("part_object");
            return Told(IsUsedByPart(part, any("range_effectivity")));
        }
        case 2: {
            const SdaiPrimitiveH part = any("part_object");
            return Told(ORXIdEff(part, any("range_effectivity")));
        }
        case 3: return Told(ORXIdCfg(any("configuration_item")));
        case 4: {
            const SdaiPrimitiveH root = any("part_object");
            return Told(IsInAssembly(root, any("part_object")));
        }
        case 5: {
            const SdaiPrimitiveH root = any("part_object");
            return Told(QuantifyRef(root, any("part_object")));
        }
        case 6: {
            // The state for one copy is not valid for another.
            RemoveValueVersion();
            std::string told;
            for (int i = 0; i < 3; ++i) {
                const SdaiPrimitiveH a = any("part_object");
                const SdaiPrimitiveH b = any("part_object");
                told += Told(IsNewer(a, b)) + ',' + Told(IsVersion(a, 1_h)) + ',' +
                        Told(IsVersion(b, 0_h)) + ',' + Told(IsNewer(b, a)) + ';';
            }
            RemoveValueVersion();
            return told;
        }
        case 7: {
            const SdaiPrimitiveH context(
                step.Any(random, "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION"));
            const SdaiPrimitiveH list = SdaiPrimitiveH::TakeOver(new SdaiAggrInstance);
            return Told(GetPlacement1(context, list)) + Told(list) +
                   Told(GetPlacement2(context, list)) + Told(list);
        }
        default: return Told(GetAbsPlacement(step.Any(random, "NEXT_ASSEMBLY_USAGE_OCCURRENCE")));
    }
}

}  // namespace

TEST(BackReferences, ChangeNoResultWhateverIsWrittenMeanwhile) {
    // Random writes degrade a world: most placements are found in a new one.
    constexpr long kCallsEach = 500;
    long found = 0;
    for (long seed = 1; seed <= CallCount() / kCallsEach; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937_64 random(static_cast<std::uint64_t>(seed));
        const std::string stepData = StepData(random);
        const std::string databaseData = DatabaseData(random);
        const ParsedModel otherStep("AUTOMOTIVE_DESIGN", stepData);
        const ParsedModel otherDatabase("cdma", databaseData);
        Copy step("AUTOMOTIVE_DESIGN", stepData, kStep, otherStep.Model());
        Copy database("cdma", databaseData, kDatabase, otherDatabase.Model());
        Copy walkedStep("AUTOMOTIVE_DESIGN", stepData, kStep, otherStep.Model());
        Copy walkedDatabase("cdma", databaseData, kDatabase, otherDatabase.Model());
        walkedStep.Model().ForgoRelations();
        walkedDatabase.Model().ForgoRelations();
        KORDMStore::AddFamilies(database.Model());
        testing::internal::CaptureStderr();  // messages of GetAbsPlacement about missing shapes
        for (long call = 0; call < kCallsEach; ++call) {
            const std::mt19937_64 write(random());
            const auto writeTo = [&write](Copy& copy) {
                std::mt19937_64 choices = write;
                copy.Write(choices);
            };
            if (random() % 3 == 0) {
                const bool isStep = random() % 2 == 0;
                writeTo(isStep ? step : database);
                writeTo(isStep ? walkedStep : walkedDatabase);
            }
            const std::mt19937_64 question(random());
            const std::string answer = Asked(step, database, question);
            ASSERT_EQ(Asked(walkedStep, walkedDatabase, question), answer) << call;
            found +=
                answer.find(std::to_string(std::bit_cast<std::uint64_t>(3.0))) != std::string::npos;
            if (call % 8 != 0) continue;
            const TraceCapture trace;
            ASSERT_EQ(Asked(step, database, question), answer) << call;
        }
        testing::internal::GetCapturedStderr();
        KORDMStore::RemoveAll();
    }
    // Some placements were not the default.
    EXPECT_GT(found, CallCount() / 100);
}
