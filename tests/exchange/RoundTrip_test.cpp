// Models written and read again are the same models, and their files have the same text.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "Exchange.h"
#include "Orx.h"
#include "ParsedModel.h"

namespace {

using exchange::DataSet;
using exchange::Messages;

const std::string kSchema = R"(SCHEMA random_schema;
TYPE label = STRING; END_TYPE;
TYPE length_measure = REAL; END_TYPE;
TYPE count_measure = INTEGER; END_TYPE;
TYPE amount = NUMBER; END_TYPE;
TYPE colour = ENUMERATION OF (red, green, blue); END_TYPE;
TYPE truth = LOGICAL; END_TYPE;
TYPE numbers = LIST OF REAL; END_TYPE;
TYPE inner_choice = SELECT (truth, count_measure, amount, node); END_TYPE;
TYPE choice = SELECT (label, length_measure, inner_choice, colour, node, numbers); END_TYPE;
ENTITY node;
  a_text : OPTIONAL STRING;
  an_integer : OPTIONAL INTEGER;
  a_real : OPTIONAL REAL;
  a_number : OPTIONAL NUMBER;
  a_boolean : OPTIONAL BOOLEAN;
  a_logical : OPTIONAL LOGICAL;
  a_binary : OPTIONAL BINARY;
  a_colour : OPTIONAL colour;
  a_node : OPTIONAL node;
  a_choice : OPTIONAL choice;
  texts : OPTIONAL LIST OF label;
  integers : OPTIONAL BAG OF INTEGER;
  reals : OPTIONAL ARRAY [1:9] OF OPTIONAL REAL;
  colours : OPTIONAL SET OF colour;
  nodes : OPTIONAL SET OF node;
  choices : OPTIONAL LIST OF choice;
  grid : OPTIONAL LIST OF LIST OF REAL;
  cube : OPTIONAL LIST OF LIST OF LIST OF choice;
END_ENTITY;
ENTITY round_node SUBTYPE OF (node); radius : OPTIONAL REAL; END_ENTITY;
ENTITY red_node SUBTYPE OF (node);
  red : OPTIONAL STRING;
DERIVE
  SELF\node.a_colour : colour := red;
END_ENTITY;
ENTITY big_node SUBTYPE OF (node); big : OPTIONAL choice; END_ENTITY;
END_SCHEMA;)";

exchange::SchemaPtr TestSchema() {
    static const exchange::SchemaPtr schema = [] {
        Messages messages;
        return exchange::ParseSchemas(kSchema, "schema", messages).at(0);
    }();
    return schema;
}

DataSet Parse(const std::string& text) {
    exchange::SchemaCatalog schemas;
    schemas.Add(TestSchema());
    Messages messages;
    DataSet dataSet = exchange::ParseDataSet(text, "file", schemas, {}, messages);
    for (const auto& error : messages.Errors()) ADD_FAILURE() << error.ToString();
    for (const auto& warning : messages.Warnings()) ADD_FAILURE() << warning.ToString();
    return dataSet;
}

// A value as text, without using the writer.
std::string Told(const SdaiPrimitiveH& value) {
    if (!value.exists()) return "unset";
    const std::string kind(value.UnderlyingTypeName().View());
    const std::string type(static_cast<const SdaiSelectH&>(value).DefinedType().View());
    std::string told = type.empty() ? kind + " " : type + " " + kind + " ";
    if (kind == "INTEGER") return told + std::to_string(static_cast<long>(value));
    if (kind == "REAL") {
        char text[64];
        std::snprintf(text, sizeof text, "%a", static_cast<double>(value));
        return told + text;
    }
    if (kind == "STRING" || kind == "ENUMERATION" || kind == "BINARY") {
        return told + kor::HandleAccess::TextOf(kor::HandleAccess::Held(value)).ToUtf8();
    }
    if (kind == "LOGICAL" || kind == "BOOLEAN") {
        const SdaiLogical truth = static_cast<const SdaiLogical&>(value);
        return told + (truth == sdaiLTRUE ? "T" : truth == sdaiLFALSE ? "F" : "U");
    }
    if (kind == "AGGREGATE") {
        const SdaiAggrInstance* members = value;
        for (long i = 0; i < members->GetMemberCount(); ++i) {
            told += "[" + Told(members->GetMember(i)) + "]";
        }
        return told;
    }
    return told + "#" + std::to_string(InstanceIn(value)->GetInstanceNameId());
}

// Every instance of a model with its values.
std::vector<std::string> Told(const kor::Model& model) {
    std::vector<std::string> told;
    model.ForEachInstance([&told](const kor::Instance& instance) {
        std::string line = "#" + std::to_string(instance.Id()) + " " +
                           std::string(instance.GetInstanceType()->Name().View());
        const auto& slots = instance.Type().entity->Slots();
        for (std::size_t i = 0; i < slots.size(); ++i) {
            line += "|" + Told(kor::ToHandle(instance.Cells()[i], slots[i].IsSelect()));
        }
        told.push_back(line);
    });
    return told;
}

// ---- Random models

class RandomModel {
  public:
    RandomModel(unsigned seed, std::size_t count)
        : random_(seed), dataSet_(exchange::NewDataSet(TestSchema(), "random")) {
        for (std::size_t i = 0; i < count; ++i) NewInstance();
        for (kor::Instance* instance : instances_) Fill(*instance);
    }

    const DataSet& Get() const { return dataSet_; }

  private:
    std::size_t Below(std::size_t limit) { return random_() % limit; }
    bool Often() { return Below(4) != 0; }

    void NewInstance() {
        kor::Model& model = *dataSet_.model;
        const auto entity = [&model](std::string_view name) { return model.FindEntity(name); };
        const kor::EntityType* type = nullptr;
        switch (Below(8)) {
            case 0: type = model.UndeclaredEntity("CURVE", Below(5)); break;
            case 1: type = model.UndeclaredEntity("!USER_DEFINED", 2); break;
            case 2:
                type =
                    model.ComplexEntity({entity("BIG_NODE"), entity("NODE"), entity("ROUND_NODE")});
                break;
            case 3:
                type = model.ComplexEntity({entity("BIG_NODE"), entity("NODE"), entity("RED_NODE"),
                                            model.UndeclaredEntity("ZED", Below(3))});
                break;
            default: {
                const char* const names[] = {"NODE", "ROUND_NODE", "RED_NODE", "BIG_NODE"};
                type = entity(names[Below(4)]);
            }
        }
        instances_.push_back(&model.Create(*model.TypeOf(*type)));
    }

    SdaiString Text() {
        std::u32string text;
        // Lengths around the 14 characters that a model stores inline, and longer.
        for (std::size_t length = Below(3) == 0 ? Below(200) : Below(18); length > 0; --length) {
            switch (Below(12)) {
                case 0: text += static_cast<char32_t>(1 + Below(255)); break;
                case 1: text += U'\''; break;
                case 2: text += U'\\'; break;
                case 3: text += Below(2) == 0 ? U"α" : U"😀"; break;
                case 4: text += U"\\X2\\03B1\\X0\\"; break;  // as plain characters
                default: text += static_cast<char32_t>('a' + Below(26));
            }
        }
        return KORUnicodeString(std::u32string_view(text));
    }
    long Integer() {
        const auto bits = static_cast<long>(random_());
        return Below(2) == 0 ? bits : bits % 1000;
    }
    double Real() {
        for (;;) {
            const double real = Below(2) == 0 ? std::bit_cast<double>(random_())
                                              : static_cast<double>(Integer() % 100000) / 1000;
            if (std::isfinite(real)) return real;
        }
    }
    SdaiPrimitiveH Number() {
        if (Below(2) == 0) return Integer();
        return Real();
    }
    SdaiPrimitiveH Colour() {
        const char* const colours[] = {"RED", "GREEN", "BLUE"};
        return SdaiPrimitiveH::Enumeration(colours[Below(3)]);
    }
    SdaiPrimitiveH Logical() {
        const SdaiLogical values[] = {sdaiLTRUE, sdaiLFALSE, SdaiLogical()};
        return values[Below(3)];
    }
    SdaiPrimitiveH Binary() {
        std::string digits(1, static_cast<char>('0' + Below(4)));
        for (std::size_t length = 1 + Below(20); length > 0; --length) {
            digits += "0123456789ABCDEF"[Below(16)];
        }
        return SdaiPrimitiveH::Binary(SdaiString(std::string_view(digits)));
    }
    SdaiPrimitiveH Node() {
        for (;;) {
            kor::Instance* instance = instances_[Below(instances_.size())];
            if (instance->IsKindOf("NODE")) return instance;
        }
    }
    template <class Member>
    SdaiPrimitiveH List(Member member) {
        auto* list = new SdaiAggrInstance;
        const SdaiPrimitiveH handle = SdaiPrimitiveH::TakeOver(list);
        for (std::size_t length = Below(6); length > 0; --length) list->Append(member());
        return handle;
    }
    SdaiPrimitiveH Choice() {
        const auto select = [](const char* type, const SdaiPrimitiveH& value) {
            return SdaiPrimitiveH(SdaiSelectH(type, value));
        };
        switch (Below(8)) {
            case 0: return select("LABEL", Text());
            case 1: return select("LENGTH_MEASURE", Real());
            case 2: return select("COUNT_MEASURE", Integer());
            case 3: return select("AMOUNT", Number());
            case 4: return select("COLOUR", Colour());
            case 5: return select("TRUTH", Logical());
            case 6: return select("NUMBERS", List([this] { return Real(); }));
            default: return Node();
        }
    }
    // A value as types that no schema declares hold it.
    SdaiPrimitiveH Any(int depth = 0) {
        switch (Below(depth < 3 ? 8 : 6)) {
            case 0: return Text();
            case 1: return Integer();
            case 2: return Real();
            case 3: return Binary();
            case 4: return instances_[Below(instances_.size())];
            case 5: return Colour();
            case 6: return List([this, depth] { return Any(depth + 1); });
            default: return {};
        }
    }

    void Fill(kor::Instance& instance) {
        const auto put = [this, &instance](const char* name, auto value) {
            if (Often()) instance.PutAttr(SdaiString(name), value());
        };
        put("A_TEXT", [this] { return Text(); });
        put("AN_INTEGER", [this] { return Integer(); });
        put("A_REAL", [this] { return Real(); });
        put("A_NUMBER", [this] { return Number(); });
        put("A_BOOLEAN", [this] { return SdaiBoolean(Below(2) == 0); });
        put("A_LOGICAL", [this] { return Logical(); });
        put("A_BINARY", [this] { return Binary(); });
        put("A_COLOUR", [this] { return Colour(); });
        put("A_NODE", [this] { return Node(); });
        put("A_CHOICE", [this] { return Choice(); });
        put("TEXTS", [this] { return List([this] { return Text(); }); });
        put("INTEGERS", [this] { return List([this] { return Integer(); }); });
        put("REALS", [this] {
            return List([this] { return Often() ? SdaiPrimitiveH(Real()) : SdaiPrimitiveH(); });
        });
        put("COLOURS", [this] { return List([this] { return Colour(); }); });
        put("NODES", [this] { return List([this] { return Node(); }); });
        put("CHOICES", [this] { return List([this] { return Choice(); }); });
        put("GRID", [this] { return List([this] { return List([this] { return Real(); }); }); });
        put("CUBE", [this] {
            return List(
                [this] { return List([this] { return List([this] { return Choice(); }); }); });
        });
        put("RADIUS", [this] { return Real(); });
        put("RED", [this] { return Text(); });
        put("BIG", [this] { return Choice(); });
        const auto& slots = instance.Type().entity->Slots();
        for (std::size_t i = 0; i < slots.size(); ++i) {
            if (slots[i].attribute == nullptr) instance.Cells()[i] = kor::ToCell(Any(), nullptr);
        }
    }

    std::mt19937_64 random_;
    DataSet dataSet_;
    std::vector<kor::Instance*> instances_;
};

TEST(RoundTrip, GivesTheSameValuesAndTheSameText) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        const RandomModel original(seed, 60);
        const std::string text = exchange::ToExchangeText(original.Get());
        const DataSet again = Parse(text);
        ASSERT_NE(again.model, nullptr) << text;
        EXPECT_EQ(Told(*again.model), Told(*original.Get().model));
        EXPECT_EQ(exchange::ToExchangeText(again), text);
    }
}

TEST(RoundTrip, GivesTheSameThroughAFile) {
    const TemporaryDirectory directory;
    const RandomModel original(99, 3000);
    Messages messages;
    const std::string path = directory / "random.stp";
    ASSERT_TRUE(exchange::WriteDataSet(original.Get(), path, messages));
    exchange::SchemaCatalog schemas;
    schemas.Add(TestSchema());
    const DataSet again = exchange::ReadDataSet(path, schemas, {}, messages);
    for (const auto& error : messages.Errors()) ADD_FAILURE() << error.ToString();
    EXPECT_EQ(messages.WarningCount(), 0U);
    ASSERT_NE(again.model, nullptr);
    EXPECT_TRUE(Told(*again.model) == Told(*original.Get().model));
    EXPECT_TRUE(exchange::ToExchangeText(again) == exchange::ToExchangeText(original.Get()));
}

TEST(RoundTrip, ALenientReaderReadsTheSame) {
    const RandomModel original(7, 200);
    const std::string text = exchange::ToExchangeText(original.Get());
    exchange::SchemaCatalog schemas;
    schemas.Add(TestSchema());
    Messages messages;
    const DataSet again = exchange::ParseDataSet(text, "file", schemas, {true, {}}, messages);
    EXPECT_EQ(messages.WarningCount(), 0U);
    ASSERT_NE(again.model, nullptr);
    EXPECT_EQ(Told(*again.model), Told(*original.Get().model));
}

TEST(RoundTrip, RealsAreExact) {
    std::mt19937_64 random(20240607);
    std::vector<double> reals;
    while (reals.size() < 100000) {
        const double real = std::bit_cast<double>(random());
        if (std::isfinite(real)) reals.push_back(real);
    }
    using Limits = std::numeric_limits<double>;
    for (const double real : {0.0, -0.0, Limits::min(), Limits::max(), Limits::denorm_min(),
                              -Limits::max(), 1e22, 1e23, 5e-324, 0.1, 1e-5, 1e15, 1e17}) {
        reals.push_back(real);
    }
    const DataSet dataSet = exchange::NewDataSet(TestSchema(), "reals");
    SdaiAggrInstance list;
    for (const double real : reals) list.Append(real);
    dataSet.model->GetEntityDefinition("NODE")
        ->CreateEntityInstance(dataSet.model.get())
        ->PutAttr("REALS", &list);
    const DataSet again = Parse(exchange::ToExchangeText(dataSet));
    ASSERT_NE(again.model, nullptr);
    const std::vector<double> read = RealsIn(again.model->Find(1)->GetAttr("REALS"));
    ASSERT_EQ(read.size(), reals.size());
    for (std::size_t i = 0; i < reals.size(); ++i) {
        ASSERT_EQ(std::bit_cast<std::uint64_t>(read[i]), std::bit_cast<std::uint64_t>(reals[i]))
            << reals[i];
    }
}

// ---- Any values

// Any value, of any kind and shape, whether an exchange file can contain it or not.
class AnyValue {
  public:
    AnyValue(std::uint64_t seed, const DataSet& dataSet) : random_(seed), dataSet_(dataSet) {}

    std::size_t Below(std::size_t count) { return random_() % count; }

    SdaiPrimitiveH Make(int depth = 0) {
        switch (Below(depth > 6 ? 8 : 12)) {
            case 0: return SdaiString(std::string_view(Text(256)));
            case 1: return static_cast<long>(random_()) >> Below(64);
            case 2: return std::bit_cast<double>(random_());
            case 3: return static_cast<double>(Below(1000)) / 8;
            case 4: return Below(2) == 0 ? SdaiPrimitiveH(sdaiTRUE) : SdaiPrimitiveH(SdaiLogical());
            case 5: return SdaiPrimitiveH::Enumeration(SdaiString(std::string_view(Word())));
            case 6:
                return SdaiPrimitiveH::Binary(
                    SdaiString(std::string_view(Below(9) != 0 ? "1A0" : Text(256))));
            case 7: return dataSet_.model->Find(1 + Below(5));
            case 8: return SdaiSelectH(SdaiString(std::string_view(Word())), Make(depth + 1));
            case 9: {
                // Deeply nested, sometimes too deeply.
                SdaiPrimitiveH value = Make(depth + 1);
                for (std::size_t i = Below(120); i > 0; --i) {
                    value =
                        Below(2) == 0 ? ListOf({value}) : SdaiPrimitiveH(SdaiSelectH("T", value));
                }
                return value;
            }
            default: {
                std::vector<SdaiPrimitiveH> members;
                for (std::size_t i = Below(4); i > 0; --i) members.push_back(Make(depth + 1));
                return ListOf(members);
            }
        }
    }

  private:
    static SdaiPrimitiveH ListOf(const std::vector<SdaiPrimitiveH>& members) {
        auto* list = new SdaiAggrInstance;
        SdaiPrimitiveH handle = SdaiPrimitiveH::TakeOver(list);
        for (const SdaiPrimitiveH& member : members) list->Append(member);
        return handle;
    }

    std::string Text(std::size_t characters) {
        std::string text;
        for (std::size_t i = Below(30); i > 0; --i) text += static_cast<char>(Below(characters));
        return text;
    }

    // Usually a name.
    std::string Word() {
        if (Below(20) == 0) return Text(128);
        const char* const words[] = {"LABEL", "length_measure", "RED", "T", "A_1", "!OWN"};
        return words[Below(std::size(words))];
    }

    std::mt19937_64 random_;
    const DataSet& dataSet_;
};

// What is written can be read; what no exchange file can contain is reported.
TEST(RoundTrip, GivesWhateverWasPutOrTellsWhyNot) {
    int written = 0;
    int told = 0;
    for (std::uint64_t seed = 0; seed < 500; ++seed) {
        SCOPED_TRACE(seed);
        const DataSet dataSet = exchange::NewDataSet(TestSchema(), "any");
        kor::Model& model = *dataSet.model;
        for (const char* type : {"NODE", "ROUND_NODE", "BIG_NODE", "NODE"}) {
            model.GetEntityDefinition(type)->CreateEntityInstance(&model);
        }
        model.Create(*model.TypeOf(*model.UndeclaredEntity("OWN_TYPE", 3)));
        AnyValue values(seed, dataSet);
        for (std::size_t i = values.Below(12); i > 0; --i) {
            auto& instance = kor::Instance::Of(*model.Find(1 + values.Below(5)));
            const std::size_t slots = instance.Type().slotCount;
            instance.Write(static_cast<int>(values.Below(slots)), values.Make());
        }
        std::string problem;
        const std::string text = exchange::ToExchangeText(dataSet, &problem);
        if (!problem.empty()) {
            ++told;
            EXPECT_EQ(problem.front(), '#');
            continue;
        }
        ++written;
        // A value of another kind than declared is kept, with a warning.
        exchange::SchemaCatalog schemas;
        schemas.Add(TestSchema());
        Messages messages;
        const DataSet again = exchange::ParseDataSet(text, "file", schemas, {}, messages);
        ASSERT_NE(again.model, nullptr) << text;
        EXPECT_EQ(exchange::ToExchangeText(again), text);
    }
    EXPECT_GT(written, 100);
    EXPECT_GT(told, 50);
}

}  // namespace
