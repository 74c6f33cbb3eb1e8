// The assembly as1, written by a CAD system, with known placements.

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "ORXExUtilities.h"
#include "ParsedModel.h"

using testing::SizeIs;

namespace {

const std::string kData = std::string(SHARED_DATA) + "/data/as1-oc-214.stp";
const std::string kPlacements = std::string(SHARED_DATA) + "/data/as1-oc-214.placements.txt";

// A component in its parent.
struct Occurrence {
    std::string parent;
    std::string component;
    std::vector<double> placement;
};

void PrintTo(const Occurrence& occurrence, std::ostream* stream) {
    *stream << occurrence.parent << " <- " << occurrence.component << ":";
    for (const double value : occurrence.placement) *stream << ' ' << value;
}

bool IsNearly(const std::vector<double>& a, const std::vector<double>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](double x, double y) { return std::abs(x - y) <= 1e-6; });
}

// Lines "parent <- component : nine values | three values"; "#" begins a comment.
std::vector<Occurrence> ReadOccurrences(const std::string& path) {
    std::vector<Occurrence> occurrences;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::replace(line.begin(), line.end(), '|', ' ');
        std::istringstream stream(line);
        Occurrence occurrence;
        std::string separator;
        stream >> occurrence.parent >> separator >> occurrence.component >> separator;
        for (double value = 0; stream >> value;) occurrence.placement.push_back(value);
        occurrences.push_back(occurrence);
    }
    return occurrences;
}

std::string ProductName(const SdaiPrimitiveH& definition) {
    return TextIn(definition.GetAttr("FORMATION").GetAttr("OF_PRODUCT").GetAttr("NAME"));
}

// Reads the data with the built-in schema, or with that of a file.
class RealAssembly : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        const std::string schemaFile = std::string(SHARED_DATA) + "/schemas/" + GetParam();
        const bool builtIn = *GetParam() == '\0';
        for (const std::string& path : {kData, kPlacements, builtIn ? kData : schemaFile}) {
            if (!std::filesystem::exists(path)) GTEST_SKIP() << "there is no " << path;
        }
        exchange::SchemaCatalog schemas;
        exchange::Messages messages;
        if (!builtIn) {
            const auto read = exchange::ReadSchemas(schemaFile, messages);
            ASSERT_THAT(read, SizeIs(1));
            schemas.Add(read.front());
        }
        dataSet_ = exchange::ReadDataSet(kData, schemas, {}, messages);
        ASSERT_EQ(messages.ErrorCount(), 0U);
        ASSERT_NE(dataSet_.model, nullptr);
    }

    std::vector<SdaiPrimitiveH> Extent(const char* type) const {
        std::vector<SdaiPrimitiveH> instances;
        const SdaiAggrInstance* extent = dataSet_.model->GetEntityExtent(SdaiString(type));
        for (long i = 0; i < extent->GetMemberCount(); ++i) {
            instances.push_back(extent->GetMember(i));
        }
        return instances;
    }

  private:
    exchange::DataSet dataSet_;
};

INSTANTIATE_TEST_SUITE_P(Schemas, RealAssembly, testing::Values("", "AP214E3_2010.exp"),
                         [](const auto& schema) {
                             return *schema.param == '\0' ? "BuiltIn" : "OfItsStandard";
                         });

}  // namespace

TEST_P(RealAssembly, HasThePlacementsThatItWasBuiltWith) {
    std::vector<Occurrence> expected = ReadOccurrences(kPlacements);
    ASSERT_THAT(expected, SizeIs(13));
    for (const SdaiPrimitiveH& link : Extent("NEXT_ASSEMBLY_USAGE_OCCURRENCE")) {
        const Occurrence found{ProductName(link.GetAttr("RELATING_PRODUCT_DEFINITION")),
                               ProductName(link.GetAttr("RELATED_PRODUCT_DEFINITION")),
                               RealsIn(GetAbsPlacement(link))};
        const auto match = std::find_if(expected.begin(), expected.end(), [&](const auto& other) {
            return other.parent == found.parent && other.component == found.component &&
                   IsNearly(other.placement, found.placement);
        });
        if (match == expected.end()) {
            ADD_FAILURE() << "not expected: " << testing::PrintToString(found);
        } else {
            expected.erase(match);
        }
    }
    EXPECT_THAT(expected, SizeIs(0)) << "not found";
}

// In this file the component's shape is REP_1 and contains the first placement, so both shapes lead
// to the placement of the link.
TEST_P(RealAssembly, HasTheSamePlacementsSeenFromEachShape) {
    const auto contexts = Extent("CONTEXT_DEPENDENT_SHAPE_REPRESENTATION");
    ASSERT_THAT(contexts, SizeIs(13));
    for (const SdaiPrimitiveH& context : contexts) {
        const SdaiPrimitiveH link =
            context.GetAttr("REPRESENTED_PRODUCT_RELATION").GetAttr("DEFINITION");
        const auto expected = RealsIn(GetAbsPlacement(link));
        for (const auto function : {GetPlacement1, GetPlacement2}) {
            SdaiListClassOfSdaiReal list(0, 12);
            function(context, &list);
            EXPECT_TRUE(IsNearly(RealsIn(&list), expected));
        }
    }
}

TEST_P(RealAssembly, HasOneLinkOneParentShapeAndOneComponentShapeForEachContext) {
    const auto links = Extent("NEXT_ASSEMBLY_USAGE_OCCURRENCE");
    const auto shapes = Extent("SHAPE_DEFINITION_REPRESENTATION");
    ASSERT_THAT(links, SizeIs(13));
    ASSERT_THAT(shapes, SizeIs(9));
    for (const SdaiPrimitiveH& context : Extent("CONTEXT_DEPENDENT_SHAPE_REPRESENTATION")) {
        const SdaiPrimitiveH* link = nullptr;
        for (const SdaiPrimitiveH& candidate : links) {
            if (!IsTrue(IsSameNAUO(candidate, context))) continue;
            EXPECT_EQ(link, nullptr) << "a second link";
            link = &candidate;
        }
        ASSERT_NE(link, nullptr);

        int parents = 0;
        int components = 0;
        for (const SdaiPrimitiveH& shape : shapes) {
            const bool isParent = IsTrue(IsSameRelating(shape, context));
            const bool isComponent = IsTrue(IsSameRelated(shape, context));
            parents += isParent;
            components += isComponent;
            EXPECT_EQ(IsTrue(IsSamePart(link->GetAttr("RELATING_PRODUCT_DEFINITION"), shape)),
                      isParent);
            EXPECT_EQ(IsTrue(IsSamePart(link->GetAttr("RELATED_PRODUCT_DEFINITION"), shape)),
                      isComponent);
            EXPECT_EQ(IsTrue(IsSameShapeRep1(shape, context)), isComponent);
        }
        EXPECT_EQ(parents, 1);
        EXPECT_EQ(components, 1);
    }
}

TEST_P(RealAssembly, HasOneTransformationForEachRelationship) {
    const auto transformations = Extent("ITEM_DEFINED_TRANSFORMATION");
    const auto relationships = Extent("REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION");
    ASSERT_THAT(transformations, SizeIs(13));
    ASSERT_THAT(relationships, SizeIs(13));
    for (std::size_t i = 0; i < transformations.size(); ++i) {
        for (std::size_t j = 0; j < relationships.size(); ++j) {
            EXPECT_EQ(IsTrue(IsSameIDT(transformations[i], relationships[j])), i == j);
        }
    }
}
