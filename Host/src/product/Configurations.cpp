// Configuration items, effectivities and version families of a data set.

#include "product/Configurations.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <unordered_map>

#include "SdaiIterator.h"
#include "console/Display.h"

namespace host {

using namespace sdai_names;

namespace {

std::string ReadableText(const SdaiPrimitiveH& value) { return Readable(TextOf(value).ToUtf8()); }

std::string ReadableText(const SdaiPrimitiveH& owner, const SdaiName& attribute) {
    return ReadableText(owner.GetAttr(attribute));
}

// The name of a part, or of the product of a version; empty for any other instance.
std::string PartName(const SdaiPrimitiveH& part, const Assembly& assembly) {
    if (const Part* known = assembly.Find(part)) return Readable(known->name);
    const SdaiPrimitiveH formation =
        part.TestAttr("FORMATION"_name) ? part.GetAttr("FORMATION"_name) : part;
    return ReadableText(formation.GetAttr("OF_PRODUCT"_name), "NAME"_name);
}

// Calls visit(instance) for each instance of an entity type.
template <class Visit>
void ForEach(const kor::Model& model, const SdaiName& entity, Visit visit) {
    SdaiIterInstance instances(model.Extent(entity));
    while (instances.Next()) visit(instances.GetCurrentValue());
}

// ---- Bounds

int Number(std::string_view digits) {
    int value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

bool AreDigits(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// Month, day, year, hour and minute in twelve digits, then the second, which may have a fraction.
Bound DateBound(const std::string& date) {
    constexpr std::size_t kSecond = 12;
    if (date.empty() || date == "00000000000000") return {};
    Bound bound{date, std::nullopt};
    const std::string seconds = date.size() > kSecond ? date.substr(kSecond) : "";
    const std::size_t point = std::min(seconds.find('.'), seconds.size());
    if (!AreDigits(date.substr(0, kSecond)) || !AreDigits(seconds.substr(0, point)) ||
        (point == seconds.size() ? point != 2 : !AreDigits(seconds.substr(point + 1)))) {
        return bound;
    }
    using namespace std::chrono;
    const auto number = [&date](std::size_t from, std::size_t count) {
        return Number(std::string_view(date).substr(from, count));
    };
    const year_month_day day(year(number(4, 4)), month(static_cast<unsigned>(number(0, 2))),
                             std::chrono::day(static_cast<unsigned>(number(2, 2))));
    const int hour = number(8, 2);
    const int minute = number(10, 2);
    const double second = std::strtod(seconds.c_str(), nullptr);
    if (!day.ok() || hour > 24 || minute > 59 || second >= 61) return bound;
    bound.text = date.substr(4, 4) + '-' + date.substr(0, 2) + '-' + date.substr(2, 2);
    if (hour + minute + second != 0) {
        const std::string padding = point < 2 ? "0" : "";
        bound.text += ' ' + date.substr(8, 2) + ':' + date.substr(10, 2) + ':' + padding + seconds;
    }
    bound.value = static_cast<double>(sys_days(day).time_since_epoch().count()) +
                  (hour * 3600 + minute * 60 + second) / 86400;
    return bound;
}

Bound RankBound(const std::string& text) {
    double value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    constexpr double kLargest = 1e15;
    const bool isRank = error == std::errc() && stop == end && std::abs(value) <= kLargest;
    if (!isRank) return {text, std::nullopt};
    return {text, value};
}

// An end of at most 0 is open.
Bound RankEnd(const std::string& text) {
    const Bound bound = RankBound(text);
    return bound.value.value_or(1) > 0 ? bound : Bound{};
}

// ---- Effectivities

void AddUsage(Effectivity& effectivity, const SdaiPrimitiveH& link, const SdaiName& parent,
              const SdaiName& component, const Assembly& assembly) {
    if (!link.exists()) return;
    effectivity.usages.push_back(PartName(link.GetAttr(parent), assembly) + " → " +
                                 PartName(link.GetAttr(component), assembly));
}

Effectivity OfDatabase(const SdaiPrimitiveH& instance, const Assembly& assembly,
                       const calls::Module& module) {
    Effectivity effectivity;
    effectivity.id = ReadableText(instance, "id"_name);
    effectivity.option = ReadableText(instance, "option_id"_name);
    const auto holds = [&](std::string_view function) {
        const SdaiPrimitiveH result = module.Call(function, {instance});
        return static_cast<const SdaiLogical&>(result) == sdaiLTRUE;
    };
    if (holds("IsRangeType")) {
        effectivity.scale = Effectivity::Scale::Ranks;
        effectivity.start = RankBound(ReadableText(module.Call("GetRangeValue", {instance, 1})));
        if (!holds("IsInfiniteRank")) {
            effectivity.end = RankBound(ReadableText(module.Call("GetRangeValue", {instance, 2})));
        }
    } else if (holds("IsDateType")) {
        // Reads the same attributes as GetStartDate and GetEndDate, which would create instances.
        const bool hasOwn = static_cast<bool>(instance.IsKindOf("date_effectivity"_name));
        effectivity.scale = Effectivity::Scale::Dates;
        effectivity.start = DateBound(
            ReadableText(instance, hasOwn ? "start_date"_name : "option_start_date"_name));
        if (!holds("IsInfiniteDate")) {
            effectivity.end = DateBound(
                ReadableText(instance, hasOwn ? "end_date"_name : "option_end_date"_name));
        }
    }
    const SdaiPrimitiveH usage = instance.GetAttr("usage"_name);
    SdaiIterInstance links(static_cast<SdaiAggrInstance*>(usage));
    while (links.Next()) {
        AddUsage(effectivity, links.GetCurrentValue(), "parent"_name, "ref"_name, assembly);
    }
    return effectivity;
}

Effectivity OfExchangeData(const SdaiPrimitiveH& instance, const Assembly& assembly,
                           const calls::Module& module) {
    Effectivity effectivity;
    // An identifier from a database carries the database's values.
    const SdaiPrimitiveH id = instance.GetAttr("ID"_name);
    effectivity.id = ReadableText(id);
    const SdaiPrimitiveH isKey = module.Call("IsEncodedKey", {id});
    if (static_cast<const SdaiLogical&>(isKey) == sdaiLTRUE) {
        const std::string own = ReadableText(module.Call("DecodeEFF", {id, 1}));
        const std::string option = ReadableText(module.Call("DecodeEFF", {id, 2}));
        constexpr std::string_view kNone = "EMPTY VALUE";
        if (own != kNone) effectivity.id = own;
        if (option != kNone) effectivity.option = option;
    }
    if (instance.IsKindOf("SERIAL_NUMBERED_EFFECTIVITY"_name)) {
        effectivity.scale = Effectivity::Scale::Ranks;
        effectivity.start = RankBound(ReadableText(instance, "EFFECTIVITY_START_ID"_name));
        effectivity.end = RankEnd(ReadableText(instance, "EFFECTIVITY_END_ID"_name));
    } else if (instance.IsKindOf("DATED_EFFECTIVITY"_name)) {
        const auto date = [&](const SdaiName& attribute) {
            return DateBound(ReadableText(module.Call("GetDate", {instance.GetAttr(attribute)})));
        };
        effectivity.scale = Effectivity::Scale::Dates;
        effectivity.start = date("EFFECTIVITY_START_DATE"_name);
        effectivity.end = date("EFFECTIVITY_END_DATE"_name);
    }
    AddUsage(effectivity, instance.GetAttr("USAGE"_name), "RELATING_PRODUCT_DEFINITION"_name,
             "RELATED_PRODUCT_DEFINITION"_name, assembly);
    return effectivity;
}

}  // namespace

std::vector<ConfigurationItem> ConfigurationItems(const kor::Model& model,
                                                  const Assembly& assembly) {
    // The handlers of an item, by the item (exchange data) or by its design (database).
    std::unordered_map<const SdaiEntityInstance*, std::vector<std::string>> designs;
    std::unordered_map<const SdaiEntityInstance*, std::vector<std::string>> handlers;
    ForEach(model, "CONFIGURATION_DESIGN"_name, [&](const SdaiPrimitiveH& design) {
        designs[design.GetAttr("CONFIGURATION"_name)].push_back(
            PartName(design.GetAttr("DESIGN"_name), assembly));
    });
    ForEach(model, "configuration_handler"_name, [&](const SdaiPrimitiveH& handler) {
        handlers[handler.GetAttr("apply"_name)].push_back(ReadableText(handler, "id"_name));
    });
    std::vector<ConfigurationItem> items;
    ForEach(model, "CONFIGURATION_ITEM"_name, [&](const SdaiPrimitiveH& instance) {
        ConfigurationItem& item = items.emplace_back();
        item.id = ReadableText(instance, "ID"_name);
        item.name = ReadableText(instance, "NAME"_name);
        item.productConcept = ReadableText(instance.GetAttr("ITEM_CONCEPT"_name), "NAME"_name);
        item.designs = designs[instance];
        const SdaiPrimitiveH design = instance.GetAttr("design"_name);
        if (!design.exists()) return;
        item.designs.push_back(PartName(design, assembly));
        item.handlers = handlers[design];
    });
    return items;
}

std::vector<Effectivity> Effectivities(const kor::Model& model, const Assembly& assembly,
                                       const calls::Module& module) {
    std::vector<Effectivity> effectivities;
    ForEach(model, "effectivity_object"_name, [&](const SdaiPrimitiveH& instance) {
        effectivities.push_back(OfDatabase(instance, assembly, module));
    });
    ForEach(model, "EFFECTIVITY"_name, [&](const SdaiPrimitiveH& instance) {
        effectivities.push_back(OfExchangeData(instance, assembly, module));
    });
    return effectivities;
}

std::vector<VersionFamily> VersionFamilies(const kor::Model& model, const Assembly& assembly) {
    std::vector<VersionFamily> families;
    ForEach(model, "cdma_revision_history"_name, [&](const SdaiPrimitiveH& history) {
        VersionFamily& family = families.emplace_back();
        const SdaiPrimitiveH revisions = history.GetAttr("Revisions"_name);
        SdaiIterInstance identities(static_cast<SdaiAggrInstance*>(revisions));
        while (identities.Next()) {
            const SdaiPrimitiveH part = identities.GetCurrentValue().GetAttr("CdmaObject"_name);
            family.id = ReadableText(part, "S_PART_NUMBER"_name);
            family.versions.push_back(
                {ReadableText(part, "S_CHG_NUM"_name), PartName(part, assembly)});
        }
    });
    // Products with the same id are versions of one part, like the formations of one product.
    std::unordered_map<std::string, std::size_t> places;
    ForEach(model, "PRODUCT_DEFINITION_FORMATION"_name, [&](const SdaiPrimitiveH& formation) {
        // A value that is not a product is ignored.
        const SdaiPrimitiveH product = formation.GetAttr("OF_PRODUCT"_name);
        const SdaiEntityInstance* instance = product;
        if (instance == nullptr) return;
        std::string id = ReadableText(product, "ID"_name);
        if (id.empty()) id = '#' + std::to_string(instance->GetInstanceNameId());
        const auto [place, isNew] = places.emplace(id, families.size());
        if (isNew) families.push_back({id, {}});
        families[place->second].versions.push_back(
            {ReadableText(formation, "ID"_name), ReadableText(product, "NAME"_name)});
    });
    if (!assembly.IsDatabase()) {
        std::erase_if(families,
                      [](const VersionFamily& family) { return family.versions.size() < 2; });
    }
    return families;
}

}  // namespace host
