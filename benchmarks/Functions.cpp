// Every function of the export table on typical data, and plain code with the same result.

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "KORSystem.h"
#include "Modules.h"
#include "ORXExportTable.h"
#include "Plain.h"
#include "Table.h"
#include "TypicalCalls.h"

namespace bench {

namespace {

using namespace typical;

// ---- The typical data as plain structs

struct PlainModel {
    std::string typeRep = "3D";
    long next = 7;
    std::string revision = "A";
    std::string nickname = "wheel left";
    std::string softVersion = "V5 R19 SP3";
};

struct PlainDocument {
    std::string typeRep = "DOC";
    std::string name = "Wheel front left";
    std::string notes = "Released for production";
    std::string format = "PDF";
};

struct PlainEffectivity {
    enum Kind { Range, Date, Option } kind;
    std::string id;
    std::vector<const PlainLink*> usage;
    long start = 0;
    long end = 0;
    std::string startDate{};
    std::string endDate{};
    std::string optionType{};
    std::string optionId{};
};

struct PlainOffset {
    long hour;
};
struct PlainTime {
    long hour;
    long minute;
    double second;
    const PlainOffset* zone;
};
struct PlainDate {
    long year;
    long day;
    long month;
};
struct PlainDateTime {
    const PlainDate* date;
    const PlainTime* time;
};

struct PlainFile {
    std::string id{kModelFile};
};
struct PlainProperty {
    const PlainFile* definition;
};
struct PlainFormation {
    std::string id;
};

struct Plain {
    Plain() {
        for (int i = 1; i <= 10; ++i) {
            parts[i] = {"ABC-123456-0" + std::to_string(i), "A", 1, "PART", {}, {}, {}, {}};
            links[i - 1].ref = &parts[i];
        }
        parts[0] = {"ABC-123456-01", "A", 12, "PART", {}, {}, {}, {&document}};
        for (int i = 0; i < 10; ++i) {
            parts[0].links.push_back(&links[i]);
            const PlainPart* part = i < 9 ? &parts[i + 1] : &parts[0];
            items.push_back({"CFG-0000" + std::to_string(51 + i), part});
            handlers.push_back({"HANDLER-0" + std::to_string(61 + i), part});
            records.push_back({part, "1A2B", std::to_string(71 + i), "ENV", "TAB"});
        }
        revisions = {records[8].Identity(), records[9].Identity()};
        range.usage = {&links[0], &links[9]};
        option.usage = {&links[9]};
    }
    Plain(const Plain&) = delete;
    Plain& operator=(const Plain&) = delete;

    const PlainPart& Root() const { return parts[0]; }
    const PlainPart& Leaf() const { return parts[10]; }
    const PlainContext& Context() const { return assembly.contexts.back(); }
    const PlainOccurrence& Occurrence() const { return assembly.occurrences.back(); }
    const PlainShape& Shape() const { return assembly.shapes.back(); }

    std::string key{kKey};
    std::string effectivityId{kEffectivityId};
    std::string configurationId{kConfigurationId};
    std::string effectivityAttributes{kEffectivityAttributes};
    std::string modelId{kModelId};
    std::string documentKey{kDocumentKey};
    std::string name{kName};
    std::string modelFile{kModelFile};
    std::string documentFile{kDocumentFile};
    std::string dateText{kDate};
    std::string number = "250";
    std::string version = "A";
    double real = 2.5;
    std::size_t place = 4;

    PlainPart parts[11];
    PlainLink links[10];
    PlainModel model;
    PlainDocument document;
    PlainEffectivity range{PlainEffectivity::Range, "EFFECTIVITY-00002", {}, 100, 250};
    PlainEffectivity date{PlainEffectivity::Date, "EFFECTIVITY-00003", {}, 0, 0,
                          "01012024000000",       "12312024235959"};
    PlainEffectivity option{PlainEffectivity::Option,
                            "EFFECTIVITY-00001",
                            {},
                            1,
                            20,
                            "01012024000000",
                            "12312024235959",
                            "option_date",
                            "OPTION-LEFT-HAND"};
    std::vector<PlainItem> items;
    std::vector<PlainItem> handlers;
    std::vector<PlainRecord> records;
    std::vector<PlainIdentity> revisions;
    PlainOffset offset{0};
    PlainTime time{23, 59, 59, &offset};
    PlainDate day{2024, 31, 12};
    PlainDateTime dateTime{&day, &time};
    PlainFile file;
    PlainProperty property{&file};
    PlainFormation formation{"A"};
    const PlainFormation* ofDefinition = &formation;
    const PlainFormation* ofAssociation = &formation;
    PlainAssembly assembly{10};

    // The output of the calls.
    mutable Reals list{};
    mutable std::deque<PlainOffset> offsets;
    mutable std::deque<PlainTime> times;
    mutable std::deque<PlainDate> dates;
    mutable std::deque<PlainDateTime> dateTimes;
    mutable std::vector<const PlainPart*> seen;
};

// ---- Plain code for texts

// The fields of a key, in order.
class Fields {
  public:
    explicit Fields(std::string_view text) : rest_(text) {}

    bool AtEnd() const { return rest_.empty(); }

    // Advances to the next field; false if there is none or it is malformed.
    bool Next() {
        if (rest_.size() < 5 || (rest_[0] != 'S' && rest_[0] != 'I' && rest_[0] != 'R')) {
            return false;
        }
        std::size_t length = 0;
        const auto [end, error] = std::from_chars(rest_.data() + 1, rest_.data() + 5, length);
        if (error != std::errc() || end != rest_.data() + 5) return false;
        letter = rest_[0];
        value = rest_.substr(5, length);
        rest_.remove_prefix(5 + value.size());
        return true;
    }

    char letter = 0;
    std::string_view value;

  private:
    std::string_view rest_;
};

bool IsKey(std::string_view text) {
    if (text.empty()) return false;
    Fields fields(text);
    while (!fields.AtEnd()) {
        if (!fields.Next()) return false;
    }
    return true;
}

std::string_view FieldOf(std::string_view text, std::size_t place) {
    Fields fields(text);
    for (std::size_t i = 0; i < place; ++i) {
        if (!fields.Next()) return "EMPTY VALUE";
    }
    return fields.value;
}

struct PlainField {
    char letter;
    std::string_view value;
};

std::string Encode(std::initializer_list<PlainField> fields, std::string_view prefix = {}) {
    std::size_t size = prefix.size();
    for (const PlainField& field : fields) size += 5 + field.value.size();
    std::string text;
    text.reserve(size);
    text += prefix;
    for (const auto& [letter, value] : fields) {
        const std::size_t n = value.size();
        const char head[] = {letter, static_cast<char>('0' + n / 1000),
                             static_cast<char>('0' + n / 100 % 10),
                             static_cast<char>('0' + n / 10 % 10), static_cast<char>('0' + n % 10)};
        text.append(head, sizeof head);
        text += value;
    }
    return text;
}

// An integer as text.
struct Digits {
    explicit Digits(long number)
        : size(static_cast<std::size_t>(
              std::to_chars(characters, std::end(characters), number).ptr - characters)) {}
    operator std::string_view() const { return {characters, size}; }

    char characters[20];
    std::size_t size;
};

std::string Replaced(std::string_view text, char from, char to, std::string_view ending = {}) {
    std::string replaced;
    replaced.reserve(text.size() + ending.size());
    replaced += text;
    std::replace(replaced.begin(), replaced.end(), from, to);
    replaced += ending;
    return replaced;
}

constexpr char kFileBlank = '\xB1';
constexpr std::string_view kTag = "_ORXExchangedRep_";
constexpr std::string_view kTag2 = "_ORXExchangedRep2_";

bool IsModelFile(std::string_view name) {
    const std::size_t model = name.find(".model", std::min(name.find('.'), name.size()));
    return model != std::string_view::npos && model + 6 == name.size();
}

std::string_view V5Extension(std::string_view name) {
    const std::size_t dot = name.find('.');
    if (dot == std::string_view::npos) return {};
    const std::string_view extension = name.substr(dot + 1);
    return extension.size() > 3 && extension.starts_with("KOR") ? extension : std::string_view();
}

std::string DocumentKey(const PlainDocument& document, std::string_view prefix = {}) {
    return Encode({{'S', document.typeRep},
                   {'S', document.name},
                   {'S', document.notes},
                   {'S', document.format}},
                  prefix);
}

// ---- Plain code for walks

const PlainItem* ItemOf(const std::vector<PlainItem>& items, const PlainPart& part) {
    for (const PlainItem& item : items) {
        if (item.part == &part) return &item;
    }
    return nullptr;
}

long Uses(const PlainPart& root, const PlainPart& leaf) {
    long uses = 0;
    for (const PlainLink* link : root.links) uses += link->ref == &leaf;
    return uses;
}

const PlainDateTime* NewDateTime(const Plain& p, std::string_view date) {
    const auto number = [date](std::size_t from, std::size_t length) {
        long value = 0;
        std::from_chars(date.data() + from, date.data() + from + length, value);
        return value;
    };
    p.offsets.push_back({0});
    p.times.push_back(
        {number(8, 2), number(10, 2), static_cast<double>(number(12, 2)), &p.offsets.back()});
    p.dates.push_back({number(4, 4), number(2, 2), number(0, 2)});
    p.dateTimes.push_back({&p.dates.back(), &p.times.back()});
    return &p.dateTimes.back();
}

Reals PlacementIn(const PlainContext& context, bool onRep2) {
    const auto& [rep1, rep2, transformation] = *context.relationship;
    const auto& [item1, item2] = *transformation;
    const PlainRepresentation& side = onRep2 ? *rep2 : *rep1;
    if (onRep2 && side.Has(item2)) return Compose(*item1, *item2);
    if (!side.Has(item1)) return {};
    return onRep2 ? Compose(*item2, *item1) : Compose(*item1, *item2);
}

// ---- The floors

// A result, for comparing a function with its floor.
std::string Show(bool value) { return value ? "TRUE" : "FALSE"; }
std::string Show(long value) { return std::to_string(value); }
std::string Show(double value) { return std::to_string(value); }
std::string Show(const std::string& value) { return value; }
std::string Show(const void* value) { return value != nullptr ? "an instance" : "nothing"; }
std::string Show(const Reals& values) {
    std::string text;
    for (const double value : values) text += std::to_string(value) + ' ';
    return text;
}
std::string Show(const SdaiPrimitiveH& value) {
    const std::string kind(value.UnderlyingTypeName().View());
    if (const SdaiAggrInstance* members = value) {
        std::string text;
        for (long i = 0; i < members->GetMemberCount(); ++i) {
            text += std::to_string(members->GetRealMember(i)) + ' ';
        }
        return text;
    }
    if (kind == "STRING") return std::string(static_cast<const SdaiString&>(value).View());
    if (kind == "INTEGER") return Show(static_cast<long>(value));
    if (kind == "REAL") return Show(static_cast<double>(value));
    if (kind == "LOGICAL") {
        return Show(static_cast<bool>(static_cast<const SdaiLogical&>(value) == sdaiLTRUE));
    }
    return Show(static_cast<const void*>(static_cast<SdaiEntityInstance*>(value)));
}

// Keys and identifiers may cost at most four times as much as plain code.
constexpr Target kKeys{4.0, {}};
constexpr Target kNone{};

struct FunctionRow {
    std::string_view function;
    Target target;
    void (*time)(benchmark::State&, const Plain&);
    std::string (*answer)(const Plain&);
};

template <class Floor>
constexpr FunctionRow F(std::string_view function, Target target, Floor) {
    return {function, target,
            [](benchmark::State& state, const Plain& plain) {
                Repeat([&plain] { return Floor()(plain); })(state);
            },
            [](const Plain& plain) { return Show(Floor()(plain)); }};
}

using P = const Plain&;

// clang-format off
constexpr std::array kFloors{
    F("IsEncodedKey", kKeys, [](P p) { return IsKey(p.key); }),
    F("DecodeKey", kKeys, [](P p) { return std::string(FieldOf(p.key, p.place)); }),
    F("ConcatModelAtb", kKeys, [](P p) {
        return Encode({{'S', p.model.typeRep}, {'I', Digits(p.model.next)},
                       {'S', p.model.revision}, {'S', p.model.nickname}});
    }),
    F("ConcatDocAtb", kKeys, [](P p) { return DocumentKey(p.document); }),
    F("ConcatPartAtb", kKeys, [](P p) {
        return Encode({{'S', p.Root().number}, {'S', p.Root().change},
                       {'I', Digits(p.Root().version)}, {'S', p.Root().type}});
    }),
    F("IsPartInCfgitm", kNone, [](P p) { return p.items[9].part == &p.Root(); }),
    F("IsRangeOrDateEffectivity", kNone, [](P p) {
        return p.option.kind != PlainEffectivity::Option ||
               p.option.optionType == "option_range" || p.option.optionType == "option_date";
    }),
    F("GetIDEff", kKeys, [](P p) {
        return p.option.kind == PlainEffectivity::Option ? p.option.optionId : p.option.id;
    }),
    F("IsRangeType", kNone, [](P p) { return p.range.kind == PlainEffectivity::Range; }),
    F("GetRangeValue", kNone, [](P p) { return std::string(Digits(p.range.end)); }),
    F("IsInfiniteRank", kNone, [](P p) { return p.range.end <= 0; }),
    F("IsDateType", kNone, [](P p) { return p.date.kind == PlainEffectivity::Date; }),
    F("GetStartDate", kNone, [](P p) { return static_cast<const void*>(NewDateTime(p, p.date.startDate)); }),
    F("IsInfiniteDate", kNone, [](P p) { return p.date.endDate == "00000000000000"; }),
    F("GetEndDate", kNone, [](P p) { return static_cast<const void*>(NewDateTime(p, p.date.endDate)); }),
    F("BuildDatedEff", kNone, [](P p) { return static_cast<const void*>(NewDateTime(p, p.dateText)); }),
    F("IsPartConfigurated", kNone, [](P p) { return ItemOf(p.items, p.Root()) != nullptr; }),
    F("IsUsedByPart", kNone, [](P p) {
        bool used = false;
        if (ItemOf(p.items, p.Root()) == nullptr) return false;
        for (const PlainLink* link : p.Root().links) {
            used |= std::find(p.option.usage.begin(), p.option.usage.end(), link) != p.option.usage.end();
        }
        return used;
    }),
    F("ORXIdEff", kKeys, [](P p) {
        const PlainItem* item = ItemOf(p.items, p.Root());
        return Encode({{'S', "ORX"}, {'S', item->id}, {'S', p.option.optionType}});
    }),
    F("HasAORXValue", kKeys, [](P p) {
        Fields fields(p.configurationId);
        for (int i = 0; i < 3; ++i) {
            if (!fields.Next() || fields.letter != 'S') return false;
        }
        return fields.AtEnd();
    }),
    F("ExtractCFGType", kKeys, [](P p) {
        return FieldOf(p.effectivityId, 3).starts_with("option_date");
    }),
    F("ORXIdCfg", kKeys, [](P p) {
        const PlainItem* handler = ItemOf(p.handlers, *p.items[9].part);
        return Encode({{'S', "ORX"}, {'S', p.items[9].id}, {'S', handler->id}});
    }),
    F("ConcatEffAtb", kKeys, [](P p) {
        return Encode({{'S', p.option.optionType}, {'S', p.option.optionId}, {'S', p.option.id}});
    }),
    F("GetValue", kNone, [](P p) {
        long value = 0;
        std::from_chars(p.number.data(), p.number.data() + p.number.size(), value);
        return value;
    }),
    F("GetDate", kNone, [](P p) {
        std::string text;
        const auto append = [&text](long number, long digits) {
            for (; digits > 0; digits /= 10) text += static_cast<char>('0' + number / digits % 10);
        };
        append(p.dateTime.date->month, 10);
        append(p.dateTime.date->day, 10);
        append(p.dateTime.date->year, 1000);
        append(p.dateTime.time->hour, 10);
        append(p.dateTime.time->minute, 10);
        append(std::lround(p.dateTime.time->second), 10);
        return text;
    }),
    F("ExtractEFFType", kKeys, [](P p) {
        return FieldOf(p.effectivityAttributes, 1) == "option_date";
    }),
    F("IsAORXCfg", kKeys, [](P p) { return FieldOf(p.configurationId, 1) == "ORX"; }),
    F("DecodeEFF", kKeys, [](P p) {
        const std::string_view type = FieldOf(p.effectivityAttributes, 1);
        const bool isOption = type != "range" && type != "date";
        return std::string(FieldOf(p.effectivityAttributes, isOption ? 3 : 2));
    }),
    F("GetExternalName", kNone, [](P p) {
        return Replaced(std::string_view(p.modelFile).substr(0, p.modelFile.size() - 6), kFileBlank, ' ');
    }),
    F("GetInst", kNone, [](P p) { return static_cast<const void*>(p.property.definition); }),
    F("GetItem", kNone, [](P p) {
        return static_cast<const void*>(p.Context().relationship->transformation->item2);
    }),
    F("GetMemberCount", kNone, [](P p) { return static_cast<long>(p.Root().links.size()); }),
    F("ComputeABSPlacement", kNone, [](P p) {
        const auto& [item1, item2] = *p.Context().relationship->transformation;
        return p.list = Compose(*item1, *item2);
    }),
    F("GetPlacement0", kNone, [](P p) { return p.list = PlacementIn(p.Context(), false); }),
    F("GetPlacement1", kNone, [](P p) {
        p.list = PlacementIn(p.Context(), false);
        return std::string("GetPlacement1 done");
    }),
    F("GetPlacement2", kNone, [](P p) {
        p.list = PlacementIn(p.Context(), true);
        return std::string("GetPlacement2 done");
    }),
    F("Minus", kNone, [](P p) { return -p.real; }),
    F("GetAbsPlacement", kNone, [](P p) { return p.assembly.PlacementOf(&p.Occurrence()); }),
    F("GetRepFromProperty", kNone, [](P p) { return static_cast<const void*>(p.property.definition); }),
    F("GetUniqId", kKeys, [](P) {
        const char* logname = std::getenv("LOGNAME");
        char uuid[KORUuid::kTextLength + 1];
        KORUuid().UUID_to_chaine(uuid);
        std::string id;
        id.reserve(80);
        return id.append(logname != nullptr ? logname : "RZ/ORX").append("-").append(uuid);
    }),
    F("IsAnAssembly", kNone, [](P p) { return !p.Root().links.empty(); }),
    F("IsFree", kNone, [](P p) { return p.property.definition == nullptr; }),
    F("PRDDFN_IsIn", kNone, [](P p) {
        return p.assembly.representations.front().Has(p.Context().relationship->transformation->item2);
    }),
    F("IsInAssembly", kNone, [](P p) {
        return std::any_of(p.Root().links.begin(), p.Root().links.end(),
                           [&p](const PlainLink* link) { return link->ref == &p.Leaf(); });
    }),
    F("IsModelDocLinked", kNone, [](P p) {
        return !p.Root().models.empty() || !p.Root().docs1.empty() || !p.Root().docs2.empty();
    }),
    F("IsSame0", kNone, [](P p) { return p.items[9].part == &p.Root(); }),
    F("IsSamePart", kNone, [](P p) { return p.Shape().definition->definition == p.Occurrence().related; }),
    F("IsSameRelating", kNone, [](P p) {
        const auto* link = static_cast<const PlainOccurrence*>(p.Context().product->definition);
        return p.assembly.shapes.front().definition->definition == link->relating;
    }),
    F("IsSameRelated", kNone, [](P p) {
        const auto* link = static_cast<const PlainOccurrence*>(p.Context().product->definition);
        return p.Shape().definition->definition == link->related;
    }),
    F("IsSameNAUO", kNone, [](P p) { return p.Context().product->definition == &p.Occurrence(); }),
    F("IsSameShapeRep1", kNone, [](P p) { return p.Shape().representation == p.Context().relationship->rep1; }),
    F("IsSameIDT", kNone, [](P p) {
        return p.Context().relationship->transformation == &p.assembly.transformations.back();
    }),
    F("IsSameDocVersion", kNone, [](P p) { return p.ofDefinition == p.ofAssociation; }),
    F("IsaNARVOModel", kNone, [](P p) { return IsModelFile(p.modelFile); }),
    F("IsaNARVORepProperty", kNone, [](P p) { return IsModelFile(p.property.definition->id); }),
    F("IsaNARVOV5Doc", kNone, [](P p) { return !V5Extension(p.documentFile).empty(); }),
    F("GetNARVOV5Ext", kNone, [](P p) { return std::string(V5Extension(p.documentFile)); }),
    F("QuantifyRef", kNone, [](P p) { return static_cast<double>(Uses(p.Root(), p.Leaf())); }),
    F("ReadMandatory", kNone, [](P p) { return p.name.empty() ? std::string("ORX") : p.name; }),
    F("ReadPartVersion", kNone, [](P p) { return p.version.size() - 1 < 3 ? p.version : std::string("A"); }),
    F("EncodeNARVOV5Doc", kKeys, [](P p) { return DocumentKey(p.document, "_ORX_"); }),
    F("IsEncodedNARVOV5", kKeys, [](P p) { return p.documentKey.starts_with("_ORX_"); }),
    F("DecodeNARVOV5", kKeys, [](P p) {
        return std::string(FieldOf(std::string_view(p.documentKey).substr(5), 2));
    }),
    F("ORXTrunc", kNone, [](P p) { return p.documentKey.substr(0, 20); }),
    F("ORX_GetDocName", kNone, [](P p) { return Replaced(p.name, ' ', kFileBlank); }),
    F("ORX_GetModelId_Exp", kKeys, [](P p) {
        const std::string& name = p.model.softVersion;
        std::string id;
        id.reserve(2 * name.size() + kTag2.size());
        id += name;
        std::replace(id.begin(), id.end(), ' ', kFileBlank);
        return id.append(kTag2).append(name);
    }),
    F("ORX_GetModelId_Imp1", kKeys, [](P p) {
        return Replaced(std::string_view(p.modelId).substr(0, p.modelId.find(kTag)), kFileBlank, ' ');
    }),
    F("ORX_GetModelId_Imp2", kKeys, [](P p) {
        const std::size_t from = p.modelId.find(kTag) + kTag.size();
        const std::size_t to = p.modelId.find(kTag2, from);
        long number = 0;
        std::from_chars(p.modelId.data() + from, p.modelId.data() + to, number);
        return number;
    }),
    F("ORX_GetModelId_Imp3", kKeys, [](P p) {
        return Replaced(std::string_view(p.modelId).substr(p.modelId.find(kTag2) + kTag2.size()),
                        kFileBlank, ' ');
    }),
    F("ORX_GetModelName", kNone, [](P p) { return Replaced(p.name, ' ', kFileBlank, ".model"); }),
    F("IsNewer", kNone, [](P p) {
        const PlainRecord* a = nullptr;
        const PlainRecord* b = nullptr;
        for (const PlainRecord& record : p.records) {
            if (record.part == p.items[9].part) a = &record;
            if (record.part == p.items[8].part) b = &record;
            if (a != nullptr && b != nullptr) break;
        }
        const auto first = p.revisions.begin();
        return std::find(first, p.revisions.end(), a->Identity()) -
                   std::find(first, p.revisions.end(), b->Identity()) == 1;
    }),
    F("IsVersion", kNone, [](P p) {
        const PlainPart* representative = nullptr;
        for (const PlainRecord& record : p.records) {
            if (record.part != &p.Root()) continue;
            const auto found = std::find(p.revisions.begin(), p.revisions.end(), record.Identity());
            if (found != p.revisions.end()) representative = &p.Root();
        }
        return static_cast<const void*>(representative);
    }),
    F("RemoveValueVersion", kNone, [](P p) {
        p.seen.clear();
        return true;
    }),
};
// clang-format on

// Each function has a floor, in the order of the table.
static_assert(std::ranges::equal(kFloors, orx::kExports, {}, &FunctionRow::function,
                                 &orx::Export::name));

// The data that the benchmarks of this file use, for as long as the program runs.
struct World {
    World() {
        for (const orx::Export& function : orx::kExports) {
            arguments.push_back(ArgumentsOf(function, data));
        }
    }

    TypicalData data;
    Plain plain;
    std::vector<TypicalArguments> arguments;
};

// Calls function number i of a module as often as the state requires. IsVersion has seen nothing
// yet.
void TimeCalls(benchmark::State& state, const Module& module, const World& world, std::size_t i) {
    const orx::Export& function = orx::kExports[i];
    module.Find<SdaiPrimitiveH()>("RemoveValueVersion")();
    WithCall(function, module.Find(function.name), world.arguments[i],
             [&state](auto call) { Repeat(call)(state); });
}

// The floor must return what the function returns.
void CheckAnswer(const World& world, std::size_t i) {
    const orx::Export& function = orx::kExports[i];
    if (function.name == "GetUniqId") return;  // different on each call
    TheModule().Find<SdaiPrimitiveH()>("RemoveValueVersion")();
    std::string answer;
    WithCall(function, TheModule().Find(function.name), world.arguments[i], [&](auto call) {
        const SdaiPrimitiveH result = call();
        answer = Show(function.result == orx::Nothing ? world.arguments[i][2] : result);
    });
    const std::string floor = kFloors[i].answer(world.plain);
    if (answer != floor) {
        throw std::runtime_error(std::string(function.name) + " gives '" + answer +
                                 "', its floor '" + floor + "'");
    }
}

}  // namespace

void AddFunctions(Table& table) {
    static const World world;
    for (std::size_t i = 0; i < orx::kExports.size(); ++i) {
        CheckAnswer(world, i);
        table.Measure(
            {.section = "Every function on typical data, tracing off",
             .name = std::string(kFloors[i].function),
             .unit = "ns/call",
             .target = kFloors[i].target},
            1, [i](benchmark::State& state) { TimeCalls(state, TheModule(), world, i); },
            [i](benchmark::State& state) { kFloors[i].time(state, world.plain); });
    }
    // The same calls without a trace service: a trivial function, nested calls, a text, walks.
    for (const std::string_view name : {"Minus", "IsSame0", "IsEncodedNARVOV5", "ConcatPartAtb",
                                        "IsPartConfigurated", "GetAbsPlacement"}) {
        const auto i = static_cast<std::size_t>(orx::FindExport(name) - orx::kExports.data());
        table.Measure(
            {.section = "Tracing off, over a platform without a trace",
             .name = std::string(name),
             .unit = "ns/call"},
            1, [i](benchmark::State& state) { TimeCalls(state, TheModule(), world, i); },
            [i](benchmark::State& state) { TimeCalls(state, UntracedModule(), world, i); });
    }
}

}  // namespace bench
