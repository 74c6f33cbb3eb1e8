// Every operation of the contract, as used by a client: each must compile, return the expected type
// and have the documented effect.

#include <gtest/gtest.h>

#include <climits>
#include <concepts>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "KORDMInstance.h"
#include "KORDMMappingText.h"
#include "KORDMNarvo.h"
#include "KORLocale.h"
#include "KORMath.h"
#include "KORMemory.h"
#include "KORPSNTrace.h"
#include "KORString.h"
#include "KORSystem.h"
#include "KORUnicodeString.h"
#include "Models.h"
#include "SdaiAggrInstance.h"
#include "SdaiEntityInstance.h"
#include "SdaiIterator.h"
#include "SdaiLogical.h"
#include "SdaiModel.h"
#include "SdaiPrimitiveH.h"
#include "SdaiString.h"

namespace {

// Whether an expression has a type, apart from references and const.
template <class Wanted, class Given>
constexpr bool Gives(const Given&) {
    return std::same_as<Wanted, Given>;
}

std::string Written(const auto& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

class Use : public testing::Test {
  protected:
    SdaiAppInstance* New(const char* type) {
        SdaiEntity* entity = model->GetEntityDefinition(SdaiString(type));
        return entity->CreateEntityInstance(model.get());
    }

    std::unique_ptr<SdaiModel> model = NewModel("AUTOMOTIVE_DESIGN");
};

}  // namespace

// ---- Names that are constants

TEST_F(Use, ANameThatIsAConstantIsAsGoodAsAText) {
    using namespace sdai_names;
    SdaiEntity* entity = model->GetEntityDefinition("product"_name);
    ASSERT_NE(entity, nullptr);
    EXPECT_EQ(entity, model->GetEntityDefinition("PRODUCT"));
    EXPECT_EQ(model->GetEntityDefinition("NO_SUCH_TYPE"_name), nullptr);
    EXPECT_NE(entity->AttrDefinition("Name"_name), nullptr);
    EXPECT_EQ(entity->AttrDefinition("NO_SUCH"_name), nullptr);
    SdaiAppInstance* product = New("PRODUCT");
    product->PutAttr("name"_name, SdaiString("Frame"));
    EXPECT_TRUE(product->TestAttr("NAME"_name));
    EXPECT_FALSE(product->TestAttr("DESCRIPTION"_name));
    const SdaiPrimitiveH handle(product);
    EXPECT_TRUE(handle.TestAttr("Name"_name));
    EXPECT_FALSE(handle.TestAttr("NO_SUCH"_name));
    const SdaiPrimitiveH name = handle.GetAttr("NAME"_name);
    EXPECT_EQ(static_cast<const SdaiString&>(name).View(), "Frame");
    EXPECT_TRUE(handle.IsKindOf("Product"_name));
    EXPECT_FALSE(handle.IsKindOf("DOCUMENT"_name));
    EXPECT_TRUE(product->IsKindOf("PRODUCT"_name));
    EXPECT_EQ(model->GetEntityExtent("product"_name)->GetInstanceMember(0), product);
    EXPECT_EQ(model->GetEntityExtent("NO_SUCH_TYPE"_name)->GetMemberCount(), 0);
}

// ---- Memory

TEST_F(Use, ALackOfMemoryIsNotedOnce) {
    KORMemory::TakeExhausted();
    KORMemory::NoteExhausted();
    EXPECT_TRUE(KORMemory::TakeExhausted());
    EXPECT_FALSE(KORMemory::TakeExhausted());
}

TEST_F(Use, ATextIsPutTogetherSearchedAndReadBack) {
    KORUnicodeString text;
    text.Reserve(40);
    for (const char* piece : {"first ", "second ", "third"}) text.Append(piece);
    EXPECT_EQ(text.View(), "first second third");
    using namespace std::string_view_literals;
    EXPECT_EQ(text.SearchSubString("second"sv, 0, KORSearchForward), 6);
    EXPECT_LT(text.SearchSubString("second"sv, 7, KORSearchForward), 0);
    EXPECT_EQ(text.ReadBack("FIRST second third").View(), "FIRST second third");
    EXPECT_EQ(text.ViewPart(6, 6), "second");
    EXPECT_EQ(text.ViewPart(13, 99), "third");
    EXPECT_FALSE(text.IsWide());
    EXPECT_TRUE(KORUnicodeString::FromUtf8("Ł").IsWide());
}

TEST_F(Use, ASelectCanBeMoved) {
    SdaiSelectH select(SdaiPrimitiveH(SdaiString("a text of more than fifteen characters")));
    const SdaiSelectH moved(std::move(select));
    const SdaiPrimitiveH value = moved.getValue();
    EXPECT_EQ(static_cast<const SdaiString&>(value).length(), 38U);
}

// ---- Values

TEST_F(Use, AHandleIsBuiltFromEveryKind) {
    SdaiEntityInstance* instance = New("PRODUCT");
    SdaiAggrInstance* aggregate = new SdaiAggrInstance;
    const SdaiPrimitiveH owner = SdaiPrimitiveH::TakeOver(aggregate);
    const SdaiString text("text");
    const char* characters = "characters";

    const SdaiPrimitiveH unset;
    SdaiPrimitiveH string(text);
    SdaiPrimitiveH integer(7L);
    SdaiPrimitiveH real(1.5);
    SdaiPrimitiveH logical(sdaiLTRUE);
    SdaiPrimitiveH entity(instance);
    SdaiPrimitiveH list(aggregate);
    SdaiPrimitiveH copy(list);
    EXPECT_FALSE(unset.exists());
    for (const SdaiPrimitiveH& handle : {string, integer, real, logical, entity, list, copy}) {
        EXPECT_TRUE(handle.exists());
    }

    string = SdaiString(characters, UINT_MAX);
    integer = 8L;
    real = 2.5;
    entity = instance;
    copy = unset;

    const SdaiString& readText = string;
    const SdaiString ownText(string);
    const SdaiString initialisedText = string;
    long readInteger = integer;
    double readReal = real;
    const SdaiLogical& readLogical = logical;
    const SdaiLogical ownLogical(logical);
    const SdaiLogical initialisedLogical = logical;
    SdaiEntityInstance* readInstance = entity;
    SdaiAggrInstance* readAggregate = list;
    EXPECT_TRUE(readText == "characters");
    EXPECT_TRUE(ownText == initialisedText);
    EXPECT_EQ(readInteger, 8);
    EXPECT_EQ(readReal, 2.5);
    EXPECT_TRUE(readLogical == sdaiLTRUE && ownLogical == initialisedLogical);
    EXPECT_EQ(readInstance, instance);
    EXPECT_EQ(readAggregate, aggregate);
    EXPECT_FALSE(copy.exists());

    SdaiString assigned;
    assigned = string;
    SdaiLogical assignedLogical;
    assignedLogical = logical;
    EXPECT_TRUE(assigned == "characters");
    EXPECT_TRUE(assignedLogical == sdaiTRUE);
}

TEST_F(Use, AHandleIsAskedForItsValue) {
    SdaiAppInstance* shape = New("PRODUCT_DEFINITION_SHAPE");
    SdaiAppInstance* definition = New("PRODUCT_DEFINITION");
    shape->PutAttr("NAME", SdaiString("shape"));
    shape->PutAttr("DEFINITION", definition);
    const SdaiString name("NAME");
    const SdaiPrimitiveH handle = shape;

    static_assert(std::same_as<decltype(handle.exists()), SdaiBoolean>);
    static_assert(std::same_as<decltype(handle.TestAttr(name)), SdaiBoolean>);
    static_assert(std::same_as<decltype(handle.IsKindOf(name)), SdaiBoolean>);
    static_assert(std::same_as<decltype(handle.GetInstanceType()), SdaiNamedType*>);
    static_assert(std::same_as<decltype(handle.UnderlyingTypeName()), SdaiString>);
    static_assert(std::same_as<decltype(handle.FindEntityInstanceModel()), SdaiModel*>);
    static_assert(std::same_as<decltype(handle == handle), SdaiLogical>);

    SdaiPrimitiveH value = handle.GetAttr(name);
    EXPECT_TRUE(value.UnderlyingTypeName() == "STRING");
    EXPECT_TRUE(handle.TestAttr("NAME") && !handle.TestAttr("DESCRIPTION"));
    EXPECT_TRUE(handle.IsKindOf("PROPERTY_DEFINITION") || handle.IsKindOf("DOCUMENT_FILE"));
    EXPECT_TRUE(handle.GetInstanceType()->Name() == "PRODUCT_DEFINITION_SHAPE");
    EXPECT_EQ(handle.GetMemberCount(), 0);
    EXPECT_EQ(handle.FindEntityInstanceModel(), model.get());
    if (!(handle == SdaiPrimitiveH(shape))) ADD_FAILURE() << "the same instance";

    value = handle.GetAttr("DEFINITION");
    const SdaiSelectH& select = value;
    const SdaiPrimitiveH selected = select.getValue();
    SdaiEntityInstance* instance = selected;
    EXPECT_EQ(instance, definition);

    std::ostringstream line;
    line << handle.exists() << ' ' << handle.TestAttr("DESCRIPTION") << ' ' << (handle == selected)
         << ' ' << (handle == SdaiPrimitiveH());
    EXPECT_EQ(line.str(), "TRUE FALSE FALSE UNKNOWN");
}

// ---- Instances, aggregates, iteration

TEST_F(Use, AnInstanceIsWrittenAndNamed) {
    SdaiAppInstance* first = New("PRODUCT");
    SdaiEntityInstance* second = New("PRODUCT");
    const SdaiString name("NAME");
    const SdaiPrimitiveH value(SdaiString("x"));
    first->PutAttr(name, value);
    EXPECT_TRUE((first->GetAttr(name) == value) == sdaiLTRUE);
    unsigned long id = first->GetInstanceNameId();
    EXPECT_EQ(id + 1, second->GetInstanceNameId());
    SdaiModel* holder = first->FindEntityInstanceModel();
    EXPECT_EQ(holder, model.get());
    EXPECT_TRUE(first->IsSameInstance(first));
    EXPECT_FALSE(first->IsSameInstance(second));
}

TEST_F(Use, AnAggregateIsFilledAndWalked) {
    SdaiAppInstance* context = New("PRODUCT_CONTEXT");
    SdaiAggrInstance contexts;
    contexts.Append(context);
    EXPECT_EQ(contexts.GetMemberCount(), 1);
    EXPECT_TRUE(contexts.IsMember(SdaiPrimitiveH(context)));

    SdaiIterInstance any(&contexts);
    any.Beginning();
    while (any.Next()) {
        const SdaiPrimitiveH member = any.GetCurrentValue();
        EXPECT_TRUE(member.IsKindOf("PRODUCT_CONTEXT"));
    }
    SdaiIterator_Of_SdaiEntityInstanceH instance(&contexts, sdaiRO);
    instance.Beginning();
    while (instance.Next()) {
        SdaiEntityInstance* member = instance.GetCurrentMember();
        EXPECT_EQ(member, context);
    }

    SdaiListClassOfSdaiReal reals(0U, 12U);
    const double one = 1.5;
    reals.Append(one);
    reals.Append(-2.0);
    SdaiIterator_Of_SdaiReal real(&reals, sdaiRO);
    real.Beginning();
    EXPECT_TRUE(real.Next());
    double member = real.GetCurrentMember();
    EXPECT_EQ(member, 1.5);
    EXPECT_TRUE(real.Next() && !real.Next());
}

// ---- Models, schemas, dictionary

TEST_F(Use, AModelAnswersForItsSchema) {
    const SdaiString schemaName = model->SchemaName();
    EXPECT_TRUE(schemaName.substr(0, 9) == "AUTOMOTIVE");
    SdaiSchema* schema = model->Underlying_schema();
    EXPECT_TRUE(schema->Name() == "AUTOMOTIVE_DESIGN");

    SdaiEntity* entity = model->GetEntityDefinition("PRODUCT");
    SdaiNamedType* type = entity;
    const SdaiString typeName = type->Name();
    EXPECT_TRUE(typeName == "PRODUCT");
    SdaiAppInstance* instance = entity->CreateEntityInstance(model.get());
    EXPECT_TRUE(entity->AttrDefinition("NAME") != nullptr);
    EXPECT_TRUE(entity->AttrDefinition("NO_SUCH_NAME") == nullptr);

    SdaiIterator_Of_SdaiEntityInstanceH byName(model->GetEntityExtent("PRODUCT"), sdaiRO);
    SdaiIterInstance byEntity(model->GetEntityExtent(entity));
    EXPECT_TRUE(byName.Next() && byEntity.Next());
    EXPECT_EQ(byName.GetCurrentMember(), instance);
    EXPECT_TRUE((byEntity.GetCurrentValue() == SdaiPrimitiveH(instance)) == sdaiLTRUE);
}

// ---- Strings

TEST(UseString, IsBuiltAssignedCutAndCompared) {
    const KORUnicodeString platformText("20260115");
    const SdaiString empty;
    const SdaiString whole("20260115", UINT_MAX);
    const SdaiString largest("20260115", static_cast<unsigned>(-1));
    const SdaiString copy(whole);
    const SdaiString converted(platformText);
    SdaiString string;
    string = "wheel.model";
    EXPECT_EQ(string.length(), 11U);
    string.remove(string.length() - 6, string.length());
    EXPECT_TRUE(string == "wheel");
    string = copy;
    string = platformText;
    static_assert(std::same_as<decltype(string == "x"), SdaiBoolean>);
    EXPECT_TRUE(string == "20260115" && string == converted && largest == whole);
    EXPECT_TRUE(string != "20260116" && string != empty);
    EXPECT_TRUE(string.substr(0, 3) == "2026");
    EXPECT_TRUE(empty + whole == whole);
    EXPECT_TRUE(string.substr(0, 1) + "," + string.substr(2, 3) == "20,26");
    const KORUnicodeString& text = string;
    const char* characters = string;
    EXPECT_STREQ(characters, "20260115");
    EXPECT_TRUE(text == characters);
    EXPECT_EQ(Written(string), "20260115");
}

TEST(UseString, StandsWhereAPlatformTextIsWanted) {
    const SdaiString string("wheel");
    const SdaiString other("tyre");
    const KORUnicodeString built(string);
    const KORUnicodeString initialised = string;
    KORUnicodeString text;
    text = string;
    EXPECT_TRUE(built == string && string == built);
    EXPECT_TRUE(text == initialised && text == string);
    EXPECT_TRUE(text != other && other != text);
    static_assert(std::same_as<decltype(text == string), bool>);
    text.Append(string);
    EXPECT_TRUE(text == "wheelwheel");
    EXPECT_EQ(text.Compare(string), 1);
    EXPECT_EQ(text.SearchSubString(string, 1, KORSearchForward), 5);
    long number = 1;
    EXPECT_EQ(KORLocale::sConvertStringToNum(string, &number), 0);
    EXPECT_EQ(KORDMNarvo::HexaToDouble(SdaiString("ff")), 255.0);
}

// ---- Logicals

TEST(UseLogical, FollowsTheThreeValuedTables) {
    const SdaiLogical unknown;
    const SdaiLogical copy(unknown);
    const SdaiLogical fromBoolean(sdaiTRUE);
    SdaiLogical assigned;
    assigned = sdaiLFALSE;
    assigned = sdaiTRUE;
    EXPECT_TRUE(copy == unknown && fromBoolean == assigned);

    static_assert(Gives<SdaiLogical>(sdaiLTRUE && sdaiLTRUE));
    static_assert(Gives<SdaiLogical>(sdaiLTRUE && sdaiTRUE));
    static_assert(Gives<SdaiLogical>(sdaiTRUE && sdaiLTRUE));
    static_assert(Gives<SdaiBoolean>(sdaiTRUE && sdaiTRUE));
    static_assert(Gives<SdaiLogical>(sdaiLTRUE || sdaiLTRUE));
    static_assert(Gives<SdaiLogical>(sdaiLTRUE || sdaiTRUE));
    static_assert(Gives<SdaiLogical>(sdaiTRUE || sdaiLTRUE));
    static_assert(Gives<SdaiBoolean>(sdaiTRUE || sdaiTRUE));
    static_assert(Gives<SdaiLogical>(!sdaiLTRUE));
    static_assert(Gives<SdaiBoolean>(!sdaiTRUE));
    static_assert(Gives<SdaiBoolean>(sdaiLTRUE == sdaiLTRUE));
    static_assert(Gives<SdaiBoolean>(sdaiLTRUE == sdaiTRUE));
    static_assert(Gives<SdaiBoolean>(sdaiTRUE == sdaiLTRUE));
    static_assert(Gives<SdaiBoolean>(sdaiTRUE == sdaiTRUE));

    // UNKNOWN combined with a boolean is not lost, on either side.
    EXPECT_EQ(Written(sdaiTRUE && unknown), "UNKNOWN");
    EXPECT_EQ(Written(unknown && sdaiTRUE), "UNKNOWN");
    EXPECT_EQ(Written(sdaiFALSE || unknown), "UNKNOWN");
    EXPECT_EQ(Written(unknown || sdaiFALSE), "UNKNOWN");
    EXPECT_EQ(Written(sdaiFALSE && unknown), "FALSE");
    EXPECT_EQ(Written(unknown && sdaiFALSE), "FALSE");
    EXPECT_EQ(Written(sdaiTRUE || unknown), "TRUE");
    EXPECT_EQ(Written(unknown || sdaiTRUE), "TRUE");
    EXPECT_TRUE(sdaiTRUE == sdaiLTRUE && sdaiLTRUE == sdaiTRUE);
    EXPECT_TRUE(sdaiTRUE != unknown && unknown != sdaiTRUE && unknown != sdaiLFALSE);

    const int nonZero = sdaiLTRUE;
    const int zero = unknown;
    const int one = sdaiTRUE;
    EXPECT_TRUE(nonZero != 0 && zero == 0 && one != 0);
    EXPECT_TRUE(sdaiLTRUE && nonZero == 1);
    if (sdaiLFALSE || unknown) ADD_FAILURE() << "UNKNOWN is not true";
    EXPECT_EQ(Written(sdaiLTRUE) + Written(sdaiFALSE), "TRUEFALSE");
    EXPECT_TRUE(KORSdaiStaticGlobalData::sdaiTRUE && KORSdaiStaticGlobalData::sdaiLTRUE);
    EXPECT_FALSE(KORSdaiStaticGlobalData::sdaiFALSE || KORSdaiStaticGlobalData::sdaiLFALSE);
}

// ---- The platform's text

TEST(UseText, IsBuiltChangedAndSearched) {
    const char* characters = "  wheel ";
    const KORUnicodeString empty;
    KORUnicodeString text(characters);
    const KORUnicodeString copy(text);
    text = copy;
    text = characters;
    int length = text.GetLengthInChar();
    EXPECT_EQ(length, text.GetLengthInByte());
    text.Strip(KORStripBoth);
    EXPECT_TRUE(text == "wheel" && text != "tyre" && text == KORUnicodeString("wheel"));
    const KORUnicodeString part = text.SubString(1, 3);
    EXPECT_TRUE(part == "hee");
    int position = text.SearchSubString(part, 0, KORSearchForward);
    EXPECT_EQ(position, 1);
    EXPECT_LT(text.SearchSubString("x", 0, KORSearchForward), 0);
    text.Append(part);
    text.Append("!");
    EXPECT_EQ(text.Compare("wheelhee!"), 2);
    EXPECT_EQ(text.Compare("x"), 0);
    // The text may contain characters beyond U+00FF, outside the part or in it.
    for (const KORUnicodeString& whole :
         {text, KORUnicodeString::FromUtf8("wheelhee!Ł"), KORUnicodeString::FromUtf8("wheelŁ")}) {
        EXPECT_EQ(whole.ComparePart(0, 5, "wheel"), 2);
        EXPECT_EQ(whole.ComparePart(0, 3, "wheel"), 1);
        EXPECT_EQ(whole.ComparePart(1, 3, "wheel"), 0);
    }
    EXPECT_EQ(KORUnicodeString::FromUtf8("wheŁl").ComparePart(0, 5, "wheel"), 0);
    const char* converted = text.ConvertToChar();
    const char* cast = text.CastToCharPtr();
    const char* implicit = text;
    EXPECT_TRUE(converted == cast && cast == implicit);
    EXPECT_EQ(Written(text), "wheelhee!");
}

TEST(UseText, IsBuiltFromNumbers) {
    KORUnicodeString text;
    int integer = 7;
    long longInteger = 12;
    double real = 5.0;
    text.BuildFromNum(integer, "%04d");
    EXPECT_TRUE(text == "0007");
    text.BuildFromNum(longInteger, "%02d");
    EXPECT_TRUE(text == "12");
    text.BuildFromNum(real, "%02g");
    EXPECT_TRUE(text == "05");
}

// ---- Other services

TEST(UseServices, NumbersBecomeTextsAndBack) {
    int integer = -7;
    EXPECT_TRUE(KORLocale::sConvertNumToString(integer) == "-7");
    EXPECT_TRUE(KORLocale::sConvertNumToString(7) == "7");
    EXPECT_TRUE(KORLocale::sConvertNumToString(7L) == "7");
    EXPECT_TRUE(KORLocale::sConvertNumToString(2.5, 10, 2) == "2.50");
    long number = 0;
    double real = 0.0;
    EXPECT_EQ(KORLocale::sConvertStringToNum(KORUnicodeString("12"), &number), 1);
    EXPECT_EQ(KORLocale::sConvertStringToNum("2.5", &real), 1);
    EXPECT_EQ(number, 12);
    EXPECT_EQ(real, 2.5);
    EXPECT_EQ(KORLocale::sConvertPartToNum("S0034x", 1, 4, &number), 1);
    EXPECT_EQ(number, 34);
    EXPECT_EQ(KORLocale::sConvertPartToNum("S0034x", 1, 5, &number), 0);
    EXPECT_EQ(number, 0);
}

TEST(UseServices, EnvironmentAndIdentifiersAreAsked) {
    const char* user = KORGetEnv("NO_SUCH_VARIABLE_OF_THE_CONTRACT");
    EXPECT_EQ(user, nullptr);
    KORUuid uuid;
    char buffer[KORUuid::kTextLength + 1];
    uuid.UUID_to_chaine(buffer);
    EXPECT_EQ(SdaiString(buffer).length(), 36U);
}

TEST(UseServices, AFunctionTraces) {
    KORPSNTrace trace("contract ->", 12, 0);
    EXPECT_EQ(trace.GetLevel(), 12);
    const KORString method = trace.GetMethod();
    const char* label = method;
    EXPECT_STREQ(label, "contract ->");
    const char* blanks = trace.Indent(trace.GetIndent() + 3);
    EXPECT_STREQ(blanks, "   ");
    if (KORPSNTrace::LevelIsActive(trace.GetLevel())) {
        trace.GetLigne().GetStream() << blanks << method << " " << SdaiString("text") << 7 << 12UL
                                     << 1.5 << sdaiLTRUE << std::endl;
        trace.Out();
    }
}

TEST(UseServices, MatricesAreBuiltInvertedAndMultiplied) {
    const KORMathVector x(1.0, 0.0, 0.0);
    const KORMathVector y(0.0, 1.0, 0.0);
    const KORMathVector z(0.0, 0.0, 1.0);
    const KORMath3x3Matrix identity;
    KORMath3x3Matrix turned(y, z, x);
    const KORMath3x3Matrix product = turned * turned.Inverse();
    for (const KORMath3x3Matrix& matrix : {identity, product}) {
        EXPECT_EQ(matrix.GetFirstColumn()[0], 1.0);
        EXPECT_EQ(matrix.GetSecondColumn()[1], 1.0);
        EXPECT_EQ(matrix.GetThirdColumn()[2], 1.0);
    }
    EXPECT_EQ(turned.GetThirdColumn().Norm(), 1.0);
}

TEST(UseServices, RevisionsAreAskedFor) {
    const SdaiString environment("CDM");
    const SdaiString table("PART");
    const KORDMMappingText mapped(environment);
    double* part = nullptr;
    char* partName = nullptr;
    KORDMInstance older("KORCON", environment, table, KORDMNarvo::HexaToDouble("1"),
                        KORDMNarvo::HexaToDouble("1"), part, partName, 0);
    KORDMInstance newer("KORCON", mapped, table, 2.0, 1.0, nullptr, nullptr, 0);
    KORListValKORDMInstance family;
    family.Append(older);
    family.Append(newer);
    KORDMStore::RemoveAll();
    KORDMStore::AddFamily(family);
    int diagnostic = 1;
    EXPECT_EQ(newer.IsNewerRevision(older, 1, diagnostic), 1);
    EXPECT_EQ(diagnostic, 0);
    KORListValKORDMInstance list;
    EXPECT_EQ(newer.GetAllRevision(list, 0, 1, 0), 0);
    KORListValKORDMInstance all;
    all.Append(list);
    EXPECT_EQ(all.Size(), 2);
    EXPECT_EQ(all.Locate(newer, 1), 2);
    all.RemoveAll();
    EXPECT_EQ(all.Size(), 0);
    KORDMStore::RemoveAll();
    const KORUnicodeString start = KORDMNarvo::GetRevVerStartValue(1, "", "", "", nullptr);
    const SdaiString startText = KORDMNarvo::GetRevVerStartValue(1, "", "", "", NULL);
    EXPECT_TRUE(start == startText);
}
