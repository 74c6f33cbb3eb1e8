// Reads by name, type tests, and the functions that walk over the instances of a type. Their time
// is given for each instance visited.

#include <map>
#include <memory>

#include "KORDMInstance.h"
#include "Modules.h"
#include "Plain.h"
#include "SdaiIterator.h"
#include "Table.h"
#include "TypicalCalls.h"

namespace bench {

namespace {

using namespace sdai_names;

constexpr Target kWalk{4.0, 12.0};

// 1000 as "1,000".
std::string Grouped(long number) {
    std::string text = std::to_string(number);
    for (std::size_t i = text.size(); i > 3; i -= 3) text.insert(i - 3, ",");
    return text;
}

// ---- Items and handlers of parts

constexpr std::size_t kItems = 1'000'000;

// An item, handler or record as a plain struct, with nothing but its contents.
struct PlainReference {
    const char* id;
    const char* name;
    const PlainPart* part;
};

// A million items and as many handlers. Most belong to one of a thousand parts. Those at a position
// in kCounts belong to a part of their own, so that a search for it visits all before them.
class Items {
  public:
    Items() : model_(exchange::BuiltInSchema("cdma")), parts_(1000), plain_(kItems) {
        const auto create = [this](const char* type) {
            return model_.FindEntity(std::string_view(type))->CreateEntityInstance(&model_);
        };
        std::vector<SdaiAppInstance*> parts;
        for (std::size_t i = 0; i < parts_.size(); ++i) parts.push_back(create("part_object"));
        for (const std::size_t count : kCounts) found_[count].part = create("part_object");
        for (std::size_t i = 0; i < kItems; ++i) {
            const auto found = found_.find(i + 1);
            SdaiAppInstance* part =
                found != found_.end() ? found->second.part : parts[i % parts.size()];
            SdaiAppInstance* item = create("configuration_item");
            item->PutAttr("id"_name, SdaiString("CFG-0001"));
            item->PutAttr("design"_name, part);
            SdaiAppInstance* handler = create("configuration_handler");
            handler->PutAttr("id"_name, SdaiString("HANDLER-0001"));
            handler->PutAttr("apply"_name, part);
            plain_[i] = {"CFG-0001", "", &parts_[i % parts_.size()]};
            if (found == found_.end()) continue;
            found->second.item = item;
            plain_[i].part = &found->second.plain;
        }
        effectivity_ = create("range_effectivity");
    }

    static constexpr std::size_t kCounts[] = {1'000, 10'000, 100'000, kItems};

    // The part whose item and handler are at position `count`, and that item.
    SdaiPrimitiveH Part(std::size_t count) const { return found_.at(count).part; }
    SdaiPrimitiveH Item(std::size_t count) const { return found_.at(count).item; }
    const PlainPart* PlainOf(std::size_t count) const { return &found_.at(count).plain; }
    SdaiPrimitiveH Effectivity() const { return effectivity_; }

    const SdaiAggrInstance* Extent() const {
        return model_.GetEntityExtent("configuration_item"_name);
    }
    const std::vector<PlainReference>& Plain() const { return plain_; }

    [[gnu::noinline]] const PlainReference* Find(const PlainPart* part) const {
        for (const PlainReference& item : plain_) {
            if (item.part == part) return &item;
        }
        return nullptr;
    }

  private:
    struct Found {
        SdaiAppInstance* part = nullptr;
        SdaiAppInstance* item = nullptr;
        PlainPart plain{};
    };

    kor::Model model_;
    std::vector<PlainPart> parts_;
    std::vector<PlainReference> plain_;
    std::map<std::size_t, Found> found_;
    SdaiAppInstance* effectivity_;
};

// ---- Reads and tests of an instance

void AddReads(Table& table, const Items& items) {
    constexpr std::size_t kCount = 1000;
    const auto forEach = [&items](auto read) {
        return Repeat([&items, read] {
            const SdaiAggrInstance* extent = items.Extent();
            long count = 0;
            for (std::size_t i = 0; i < kCount; ++i) {
                count += read(extent->GetInstanceMember(static_cast<long>(i)));
            }
            return count;
        });
    };
    const auto forEachPlain = [&items](auto read) {
        return Repeat([&items, read] {
            long count = 0;
            for (std::size_t i = 0; i < kCount; ++i) count += read(items.Plain()[i]);
            return count;
        });
    };
    // Whether the attribute has a value: of a struct, whether the pointer is set.
    const auto plainRead = forEachPlain([](const PlainReference& item) {
        benchmark::DoNotOptimize(item.part);
        return item.part != nullptr;
    });
    const std::string section = "Reads and tests";
    table.Measure({.section = section,
                   .name = "GetAttr by a constant name",
                   .unit = "ns/read",
                   .target = {.time = 15.0}},
                  kCount, forEach([](const SdaiEntityInstance* item) {
                      return item->GetAttr("design"_name).exists();
                  }),
                  plainRead);
    table.Measure({.section = section,
                   .name = "GetAttr by a text",
                   .unit = "ns/read",
                   .target = {.time = 15.0}},
                  kCount, forEach([name = SdaiString("design")](const SdaiEntityInstance* item) {
                      return item->GetAttr(name).exists();
                  }),
                  plainRead);
    table.Measure({.section = section,
                   .name = "TestAttr by a constant name",
                   .unit = "ns/test",
                   .target = {.time = 15.0}},
                  kCount, forEach([](const SdaiEntityInstance* item) {
                      return item->TestAttr("design"_name);
                  }),
                  plainRead);
    const auto plainTest = forEachPlain([](const PlainReference& item) {
        benchmark::DoNotOptimize(item.id);
        return item.id != nullptr;
    });
    table.Measure({.section = section,
                   .name = "IsKindOf by a constant name",
                   .unit = "ns/test",
                   .target = {.time = 15.0}},
                  kCount, forEach([](const SdaiEntityInstance* item) {
                      return item->IsKindOf("configuration_item"_name);
                  }),
                  plainTest);
    table.Measure(
        {.section = section,
         .name = "IsKindOf by a text",
         .unit = "ns/test",
         .target = {.time = 15.0}},
        kCount, forEach([name = SdaiString("configuration_item")](const SdaiEntityInstance* item) {
            return item->IsKindOf(name);
        }),
        plainTest);
}

// ---- Walks

void AddWalks(Table& table, const Items& items) {
    const std::string section = "Walks, for each instance visited";
    const std::string unit = "ns/instance";
    const auto walkPlain = [&items](std::size_t count) {
        return Repeat([&items, part = items.PlainOf(count)] { return items.Find(part); });
    };

    table.Measure({.section = section, .name = "Extent of 1,000,000, by GetAttr", .unit = unit},
                  kItems, Repeat([&items, sought = items.Part(kItems)] {
                      const SdaiEntityInstance* part = sought;
                      SdaiIterator_Of_SdaiEntityInstanceH item(items.Extent());
                      while (item.Next()) {
                          const SdaiPrimitiveH design =
                              item.GetCurrentMember()->GetAttr("design"_name);
                          if (part->IsSameInstance(design)) return true;
                      }
                      return false;
                  }),
                  walkPlain(kItems));

    using Handle = const SdaiPrimitiveH&;
    auto* isConfigurated = TheModule().Find<SdaiPrimitiveH(Handle)>("IsPartConfigurated");
    auto* idEff = TheModule().Find<SdaiPrimitiveH(Handle, Handle)>("ORXIdEff");
    auto* idCfg = TheModule().Find<SdaiPrimitiveH(Handle)>("ORXIdCfg");
    // The function also builds the identifier of an item.
    const auto identifier = [&items](std::size_t count, const char* rest) {
        return Repeat([&items, part = items.PlainOf(count), rest] {
            const std::string_view id = items.Find(part)->id;
            std::string text;
            text.reserve(64);
            return text.append("S0003ORXS0008").append(id).append(rest);
        });
    };
    for (const std::size_t count : Items::kCounts) {
        const std::string of = ", the last of " + Grouped(static_cast<long>(count));
        const auto visited = static_cast<double>(count);
        table.Measure(
            {.section = section, .name = "IsPartConfigurated" + of, .unit = unit, .target = kWalk},
            visited, Repeat([=, part = items.Part(count)] { return isConfigurated(part); }),
            walkPlain(count));
        table.Measure({.section = section, .name = "ORXIdEff" + of, .unit = unit, .target = kWalk},
                      visited,
                      Repeat([=, part = items.Part(count), effectivity = items.Effectivity()] {
                          return idEff(part, effectivity);
                      }),
                      identifier(count, "S0017range_effectivity"));
        table.Measure({.section = section, .name = "ORXIdCfg" + of, .unit = unit, .target = kWalk},
                      visited, Repeat([=, item = items.Item(count)] { return idCfg(item); }),
                      identifier(count, "S0012HANDLER-0001"));
    }
}

// ---- Placements of the occurrences of an assembly

void AddPlacements(Table& table) {
    for (const long count : {100L, 1'000L, 10'000L}) {
        static std::deque<exchange::DataSet> dataSets;
        static std::deque<PlainAssembly> assemblies;
        dataSets.push_back(
            ReadData(exchange::BuiltInSchema("AUTOMOTIVE_DESIGN"), AssemblyData(count)));
        assemblies.emplace_back(count);
        const SdaiPrimitiveH link =
            dataSets.back().model->Find(static_cast<std::uint64_t>(20 * count + 12));
        auto* placement =
            TheModule().Find<SdaiPrimitiveH(const SdaiPrimitiveH&)>("GetAbsPlacement");
        // The contexts of all occurrences, and the shapes of the assembly and of all components.
        const auto visited = static_cast<double>(2 * count + 1);
        table.Measure({.section = "Walks, for each instance visited",
                       .name = "GetAbsPlacement, the last of " + Grouped(count),
                       .unit = "ns/instance",
                       .target = kWalk},
                      visited, Repeat([=] { return placement(link); }),
                      Repeat([&assembly = assemblies.back()] {
                          return assembly.PlacementOf(&assembly.occurrences.back());
                      }));
    }
}

// ---- Identities of parts

constexpr std::size_t kRecords = 100'000;

class Records {
  public:
    Records() : model_(exchange::BuiltInSchema("cdma")), parts_(kRecords) {
        const auto create = [this](const char* type) {
            return model_.FindEntity(std::string_view(type))->CreateEntityInstance(&model_);
        };
        auto* family = new SdaiAggrInstance;
        const SdaiPrimitiveH revisions = SdaiPrimitiveH::TakeOver(family);
        for (std::size_t i = 0; i < kRecords; ++i) {
            SdaiAppInstance* part = create("part_object");
            SdaiAppInstance* record = create("cdma_id");
            record->PutAttr("CdmaObject"_name, part);
            record->PutAttr("Coid"_name, SdaiString("1A2B3C"));
            record->PutAttr("Compid"_name, SdaiString(std::to_string(i).c_str()));
            record->PutAttr("Caenv"_name, SdaiString("PRODUCTION"));
            record->PutAttr("Catab"_name, SdaiString("PARTS"));
            plain_.push_back({&parts_[i], "1A2B3C", std::to_string(i), "PRODUCTION", "PARTS"});
            if (i + 2 < kRecords) continue;
            family->Append(record);
            (i + 1 < kRecords ? older_ : newer_) = part;
        }
        create("cdma_revision_history")->PutAttr("Revisions"_name, revisions);
        KORDMStore::AddFamilies(model_);
    }

    SdaiPrimitiveH Older() const { return older_; }
    SdaiPrimitiveH Newer() const { return newer_; }
    const PlainPart* PlainOlder() const { return &parts_[kRecords - 2]; }
    const PlainPart* PlainNewer() const { return &parts_[kRecords - 1]; }
    const std::vector<PlainRecord>& Plain() const { return plain_; }

  private:
    kor::Model model_;
    std::vector<PlainPart> parts_;
    std::vector<PlainRecord> plain_;
    SdaiAppInstance* older_ = nullptr;
    SdaiAppInstance* newer_ = nullptr;
};

void AddVersions(Table& table, const Records& records) {
    using Handle = const SdaiPrimitiveH&;
    auto* isNewer = TheModule().Find<SdaiPrimitiveH(Handle, Handle)>("IsNewer");
    auto* isVersion = TheModule().Find<SdaiPrimitiveH(Handle, Handle)>("IsVersion");
    const std::string section = "Walks, for each instance visited";
    const std::string of = ", the last of " + Grouped(kRecords);
    table.Measure(
        {.section = section, .name = "IsNewer" + of, .unit = "ns/record", .target = kWalk},
        kRecords, Repeat([=, newer = records.Newer(), older = records.Older()] {
            return isNewer(newer, older);
        }),
        Repeat([&records] {
            const PlainRecord* newer = nullptr;
            const PlainRecord* older = nullptr;
            for (const PlainRecord& record : records.Plain()) {
                if (record.part == records.PlainNewer()) newer = &record;
                if (record.part == records.PlainOlder()) older = &record;
                if (newer != nullptr && older != nullptr) break;
            }
            return newer->Identity() == older->Identity();
        }));
    // IsVersion always visits all records.
    table.Measure(
        {.section = section, .name = "IsVersion" + of, .unit = "ns/record", .target = kWalk},
        kRecords, Repeat([=, part = records.Newer(), flag = SdaiPrimitiveH(1)] {
            return isVersion(part, flag);
        }),
        Repeat([&records] {
            long found = 0;
            for (const PlainRecord& record : records.Plain()) {
                if (record.part != records.PlainNewer()) continue;
                const PlainIdentity identity = record.Identity();
                benchmark::DoNotOptimize(identity);
                ++found;
            }
            return found;
        }));
}

}  // namespace

void AddScans(Table& table) {
    static const Items items;
    static const Records records;
    AddReads(table, items);
    AddWalks(table, items);
    AddPlacements(table);
    AddVersions(table, records);
}

}  // namespace bench
