// Random models and calls.

#include "RandomWorld.h"

#include <limits>

#include "KORDMInstance.h"
#include "console/Display.h"

namespace {

// The types and attributes that the functions read.
constexpr const char* kStepTypes[] = {
    "PRODUCT_DEFINITION",
    "NEXT_ASSEMBLY_USAGE_OCCURRENCE",
    "PRODUCT_DEFINITION_SHAPE",
    "SHAPE_REPRESENTATION",
    "SHAPE_DEFINITION_REPRESENTATION",
    "AXIS2_PLACEMENT_3D",
    "CARTESIAN_POINT",
    "DIRECTION",
    "ITEM_DEFINED_TRANSFORMATION",
    "CONTEXT_DEPENDENT_SHAPE_REPRESENTATION",
    "REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION",
    "PROPERTY_DEFINITION",
    "PROPERTY_DEFINITION_REPRESENTATION",
    "DOCUMENT_FILE",
    "CONFIGURATION_ITEM",
    "DATE_AND_TIME",
    "LOCAL_TIME",
    "CALENDAR_DATE",
    "COORDINATED_UNIVERSAL_TIME_OFFSET",
    "DATED_EFFECTIVITY",
    "PRODUCT",
    "PRODUCT_DEFINITION_FORMATION",
    "EXTERNAL_SOURCE",
    "APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT",
};
constexpr const char* kDatabaseTypes[] = {
    "part_object",
    "part_link",
    "model_object",
    "CDM_DOCUMENT",
    "CDM_DOCCAD",
    "CDM_DOCNOTE",
    "configuration_item",
    "configuration_handler",
    "range_effectivity",
    "date_effectivity",
    "option_effectivity",
    "cdma_id",
    "cdma_revision_history",
};

// Attribute names for arguments, and pieces of the strings that the functions build and read.
constexpr const char* kPieces[] = {
    "DEFINITION",
    "REP_1",
    "REP_2",
    "TRANSFORM_ITEM_1",
    "ITEMS",
    "S_NAME",
    "S",
    "I",
    "R",
    "X",
    "0000",
    "0001",
    "0003",
    "0005",
    "-001",
    "9999",
    "S0003ORX",
    "S0005range",
    "S0004date",
    "S0012option_range",
    "S0000",
    "S0002O1",
    "_ORX_",
    "_ORXExchangedRep_",
    "_ORXExchangedRep2_",
    ".model",
    ".KORShape",
    " ",
    "\xB1",
    "\xE9",
    "1A",
    "FF",
    "12",
    "1.5",
    "12312099235959",
    "a name",
    "apply",
    "design",
    "2001-07-03",
    "a text that is longer than others",
};

// The same with characters beyond ISO 8859-1, as UTF-8.
constexpr const char* kWidePieces[] = {
    "Łódź", "S0004Łódź", "ź.model", "齿轮.KORźShape", "Б", "_ORX_Ł", "Άξων", "S0003ORXS0001Ł", "😀",
};

}  // namespace

RandomWorld::RandomWorld(Choices& choices, std::size_t instanceCount) : choices_(choices) {
    AddModel("db", "cdma", kDatabaseTypes, instanceCount);
    AddModel("step", "AUTOMOTIVE_DESIGN", kStepTypes, instanceCount);
}

RandomWorld::~RandomWorld() { KORDMStore::RemoveAll(); }

void RandomWorld::AddModel(const char* name, const char* schema, std::span<const char* const> types,
                           std::size_t instanceCount) {
    exchange::DataSet dataSet = exchange::NewDataSet(exchange::BuiltInSchema(schema), name);
    dataSet.header.clear();  // it contains the time
    kor::Model& model = *dataSet.model;
    const std::size_t first = instances_.size();
    for (std::size_t i = 0; i < instanceCount; ++i) {
        const kor::EntityType* entity =
            model.FindEntity(std::string_view(types[choices_.Below(types.size())]));
        instances_.push_back(&model.Create(*model.TypeOf(*entity)));
    }
    for (std::size_t i = first; i < instances_.size(); ++i) {
        auto& instance = static_cast<SdaiAppInstance&>(*instances_[i]);
        for (const kor::Slot& slot : kor::Instance::Of(instance).Type().entity->Slots()) {
            instance.PutAttr(slot.attribute->Name(), ValueOf(slot.domain, 0));
        }
    }
    session_.Add({name, "", std::move(dataSet)});
}

// ---- Values

long RandomWorld::Integer() {
    constexpr long kLeast = std::numeric_limits<long>::min();
    constexpr long kGreatest = std::numeric_limits<long>::max();
    return OneOf({0L, 1L, 2L, 3L, 4L, 7L, 12L, 59L, 100L, 2001L, -1L, -7L, 1L << 32, kLeast,
                  kGreatest, static_cast<long>(choices_.Below(10'000))});
}

double RandomWorld::Real() {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    return OneOf({0., -0., 1., -1., 1.5, 0.1, 25., 1e-7, 1e9, -1e300, 5e-324, kInfinity,
                  std::numeric_limits<double>::quiet_NaN(),
                  static_cast<double>(choices_.Below(10'000)) / 8.});
}

SdaiString RandomWorld::Text() {
    std::string text;
    for (std::size_t pieces = choices_.Below(6); pieces > 0; --pieces) text += OneOf(kPieces);
    if (Seldom()) text += static_cast<char>(choices_.Below(256));
    KORUnicodeString whole{std::string_view(text)};
    if (Seldom()) whole.Append(KORUnicodeString::FromUtf8(OneOf(kWidePieces)));
    return SdaiString(whole);
}

SdaiPrimitiveH RandomWorld::Truth() {
    return OneOf({SdaiPrimitiveH(sdaiLTRUE), SdaiPrimitiveH(sdaiLFALSE),
                  SdaiPrimitiveH(SdaiLogical()), SdaiPrimitiveH(sdaiTRUE)});
}

SdaiPrimitiveH RandomWorld::InstanceOf(const kor::EntityType* entity) {
    if (instances_.empty()) return {};
    SdaiEntityInstance* instance = nullptr;
    for (int attempt = 0; attempt < 8; ++attempt) {
        instance = instances_[choices_.Below(instances_.size())];
        if (entity == nullptr || instance->IsKindOf(entity->Name())) break;
    }
    return instance;
}

SdaiPrimitiveH RandomWorld::List(const kor::Domain* element, int depth) {
    auto* list = Seldom() ? new SdaiListClassOfSdaiReal(0, 12) : new SdaiAggrInstance;
    SdaiPrimitiveH owner = SdaiPrimitiveH::TakeOver(list);
    for (std::size_t count = choices_.Below(5); count > 0; --count) {
        list->Append(ValueOf(element, depth + 1));
    }
    return owner;
}

SdaiPrimitiveH RandomWorld::Select() {
    const SdaiPrimitiveH value = AnyValue();
    if (choices_.Below(2) == 0) return SdaiSelectH(value);
    return SdaiSelectH(SdaiString(OneOf({"LENGTH_MEASURE", "IDENTIFIER", "COUNT_MEASURE"})), value);
}

SdaiPrimitiveH RandomWorld::AnyValue() {
    constexpr orx::Kind kKinds[] = {orx::String,   orx::Integer, orx::Real,   orx::Logical,
                                    orx::Instance, orx::Unset,   orx::Select, orx::Aggregate};
    return Argument(OneOf(kKinds));
}

SdaiPrimitiveH RandomWorld::ValueOf(const kor::Domain* domain, int depth) {
    using kor::Base;
    if (depth > 3 || Seldom()) return {};
    if (domain == nullptr) return depth > 2 ? SdaiPrimitiveH(Integer()) : AnyValue();
    if (Seldom()) return AnyValue();
    switch (domain->base) {
        case Base::Integer: return Integer();
        case Base::Real:
        case Base::Number: return Real();
        case Base::Boolean:
        case Base::Logical: return Truth();
        case Base::Binary: return SdaiPrimitiveH::Binary("0FF");
        case Base::Enumeration: return SdaiPrimitiveH::Enumeration("AHEAD");
        case Base::Entity: return InstanceOf(domain->entity);
        case Base::Aggregate: return List(domain->element, depth);
        case Base::Select:
            if (!domain->entities.empty()) {
                return InstanceOf(domain->entities[choices_.Below(domain->entities.size())]);
            }
            return Select();
        case Base::String:
        case Base::Generic: break;
    }
    return Text();
}

SdaiPrimitiveH RandomWorld::Argument(orx::Kind kind) {
    switch (kind) {
        case orx::String: return Text();
        case orx::Integer: return Integer();
        case orx::Real: return Real();
        case orx::Logical: return Truth();
        case orx::Instance: return InstanceOf(nullptr);
        case orx::Aggregate: {
            // Members are instances or numbers.
            kor::Domain element;
            element.base = choices_.Below(2) == 0 ? kor::Base::Real : kor::Base::Entity;
            return List(&element, 0);
        }
        case orx::Select: return Seldom() ? SdaiPrimitiveH(SdaiSelectH()) : InstanceOf(nullptr);
        default: return {};
    }
}

// ---- Calls

RandomCall RandomWorld::CallOf(const orx::Export& function) {
    RandomCall call{&function, {}};
    for (std::size_t i = 0; i < function.ArgumentCount(); ++i) {
        calls::Argument& argument = call.arguments.emplace_back();
        const orx::Kind kind = function.arguments[i];
        if (kind == orx::Model) {
            const auto& models = session_.Models();
            argument.model = &models[choices_.Below(models.size())].Model();
        } else if (kind == orx::RealList) {
            argument.handle = SdaiPrimitiveH::TakeOver(new SdaiListClassOfSdaiReal(0, 12));
        } else {
            argument.handle = kind == orx::Any || Seldom() ? AnyValue() : Argument(kind);
        }
    }
    return call;
}

RandomCall RandomWorld::AnyCall() {
    return CallOf(orx::kExports[choices_.Below(orx::kExports.size())]);
}

std::string RandomCall::ToText(const host::Session& session) const {
    std::string text(function->name);
    text += '(';
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (i != 0) text += ", ";
        text += arguments[i].model != nullptr ? "@" : host::ToText(arguments[i].handle, session);
    }
    return text + ')';
}

std::string RandomWorld::Content() const {
    std::string content;
    for (const host::NamedModel& model : session_.Models()) {
        content += exchange::ToExchangeText(model.dataSet);
    }
    return content;
}

orx::Kind KindOf(const SdaiPrimitiveH& value) {
    if (!value.exists()) return orx::Unset;
    if (static_cast<SdaiEntityInstance*>(value) != nullptr) return orx::Instance;
    const std::string name(value.UnderlyingTypeName());
    if (name == "STRING") return orx::String;
    if (name == "INTEGER") return orx::Integer;
    if (name == "REAL") return orx::Real;
    if (name == "LOGICAL") return orx::Logical;
    if (name == "AGGREGATE") return orx::Aggregate;
    return orx::Any;
}
