// A function returns the same results from C++, `orx`, SQL and Python, for thousands of calls on
// the same data sets.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>
#include <regex>
#include <set>

#include "Exchange.h"
#include "ExchangeText.h"
#include "Orx.h"
#include "TypicalCalls.h"

namespace {

using Json = nlohmann::json;

// ---- The data sets

struct Named {
    std::string name;
    kor::Model* model;
    std::string file;
};

// ---- Calls

struct Argument {
    enum class Kind { Unset, Instance, Attribute, Text, Integer, Real, List, Model };

    Kind kind = Kind::Unset;
    const Named* model = nullptr;
    std::uint64_t id = 0;
    KORUnicodeString text{};  // also the name of an attribute
    long integer = 0;
    double real = 0;
    std::vector<double> members{};
};

struct Call {
    const orx::Export* function;
    std::vector<Argument> arguments;
};

std::string Utf8(const Argument& argument) { return argument.text.ToUtf8(); }

SdaiPrimitiveH HandleOf(const Argument& argument) {
    switch (argument.kind) {
        case Argument::Kind::Unset: return {};
        case Argument::Kind::Instance: return argument.model->model->Find(argument.id);
        case Argument::Kind::Attribute:
            return SdaiPrimitiveH(argument.model->model->Find(argument.id))
                .GetAttr(SdaiString(argument.text));
        case Argument::Kind::Text: return SdaiPrimitiveH(SdaiString(argument.text));
        case Argument::Kind::Integer: return argument.integer;
        case Argument::Kind::Real: return argument.real;
        case Argument::Kind::List: {
            auto* list = new SdaiListClassOfSdaiReal(0, 0);
            SdaiPrimitiveH handle = SdaiPrimitiveH::TakeOver(list);
            for (const double member : argument.members) list->Append(member);
            return handle;
        }
        // In WithCall, an instance represents its model.
        case Argument::Kind::Model:
            return argument.model->model->Extent(std::string_view("PRODUCT_DEFINITION"))
                ->GetMember(0);
    }
    return {};
}

std::string ForOrx(const Argument& argument) {
    std::string text;
    switch (argument.kind) {
        case Argument::Kind::Unset: return "$";
        case Argument::Kind::Instance:
            return '@' + argument.model->name + '#' + std::to_string(argument.id);
        case Argument::Kind::Attribute:
            return '@' + argument.model->name + '#' + std::to_string(argument.id) + '.' +
                   Utf8(argument);
        case Argument::Kind::Text: exchange::AppendString(text, argument.text); return text;
        case Argument::Kind::Integer: return std::to_string(argument.integer);
        case Argument::Kind::Real: exchange::AppendReal(text, argument.real); return text;
        case Argument::Kind::List:
            for (const double member : argument.members) {
                text += text.empty() ? '(' : ',';
                exchange::AppendReal(text, member);
            }
            return text.empty() ? "()" : text + ')';
        case Argument::Kind::Model: return '@' + argument.model->name;
    }
    return "";
}

std::string ForSql(const Argument& argument) {
    switch (argument.kind) {
        case Argument::Kind::Unset: return "NULL";
        case Argument::Kind::Instance:
            return "'@" + argument.model->name + '#' + std::to_string(argument.id) + '\'';
        case Argument::Kind::Attribute: {
            const SdaiEntityInstance& instance = *argument.model->model->Find(argument.id);
            return "(SELECT " + Utf8(argument) + " FROM " + argument.model->name + ".\"" +
                   kor::Instance::Of(instance).Type().entity->FoldedName() +
                   "\" WHERE instance = " + std::to_string(argument.id) + ')';
        }
        case Argument::Kind::Text: {
            std::string text = "'";
            for (const char c : Utf8(argument)) text.append(c == '\'' ? 2 : 1, c);
            return text + '\'';
        }
        case Argument::Kind::Integer: return std::to_string(argument.integer);
        case Argument::Kind::Real: return Json(argument.real).dump();
        default: return '\'' + Json(argument.members).dump() + '\'';
    }
}

Json ForPython(const Argument& argument) {
    switch (argument.kind) {
        case Argument::Kind::Unset: return nullptr;
        case Argument::Kind::Instance: return {{"instance", {argument.model->name, argument.id}}};
        case Argument::Kind::Attribute:
            return {{"attribute", {argument.model->name, argument.id, Utf8(argument)}}};
        case Argument::Kind::Text: return {{"text", Utf8(argument)}};
        case Argument::Kind::Integer: return {{"integer", argument.integer}};
        case Argument::Kind::Real: return {{"real", argument.real}};
        case Argument::Kind::List: return {{"list", argument.members}};
        case Argument::Kind::Model: return {{"model", argument.model->name}};
    }
    return nullptr;
}

std::string Written(const Call& call, std::string (*form)(const Argument&)) {
    std::string text;
    for (const Argument& argument : call.arguments) {
        if (!text.empty()) text += ", ";
        text += form(argument);
    }
    return std::string(call.function->name) + '(' + text + ')';
}

// A unique identifier differs each time.
Json WithoutIdentifiers(const Json& json) {
    static const std::regex kUuid(
        "[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
    return Json::parse(std::regex_replace(json.dump(), kUuid, "UUID"));
}

class SameResults : public testing::Test {
  protected:
    SameResults() {
        folder.Write("documents.exp", std::string(typical::kDocumentSchema));
        Add("step", data.Step(1));
        Add("db", data.Database(1));
        Add("documents", data.Documents(1));
        Add("target", data.Anchor());
        MakeCalls();
    }

    void Add(const std::string& name, const SdaiPrimitiveH& instance) {
        kor::Model& model = kor::Model::Of(*instance.FindEntityInstanceModel());
        exchange::Messages messages;
        const std::string file = folder / (name + ".stp");
        exchange::WriteDataSet(exchange::NewHeader(model.GetSchema(), name), {}, model, file,
                               messages);
        EXPECT_EQ(messages.ErrorCount(), 0U);
        models.push_back({name, &model, file});
    }

    const Named* Holding(const SdaiModel* model) const {
        for (const Named& named : models) {
            if (named.model == model) return &named;
        }
        return nullptr;
    }

    // ---- The calls

    void MakeCalls() {
        constexpr int kRandom = 25;  // of each function
        calls.push_back({orx::FindExport("RemoveValueVersion"), {}});
        for (const bool creating : {false, true}) {  // last, so that the data stay the same
            for (const orx::Export& row : orx::kExports) {
                if (IsCreating(row) != creating) continue;
                calls.push_back(Typical(row));
                for (int i = 0; i < kRandom; ++i) calls.push_back(Random(row));
            }
        }
        calls.push_back({orx::FindExport("RemoveValueVersion"), {}});
    }

    static bool IsCreating(const orx::Export& row) {
        return row.name == "GetStartDate" || row.name == "GetEndDate" ||
               row.name == "BuildDatedEff";
    }

    Call Typical(const orx::Export& row) {
        Call call{&row, {}};
        const TypicalArguments handles = ArgumentsOf(row, data);
        for (std::size_t i = 0; i < row.ArgumentCount(); ++i) {
            call.arguments.push_back(Read(handles[i], row.arguments[i]));
        }
        return call;
    }

    Argument Read(const SdaiPrimitiveH& handle, orx::Kind kind) const {
        Argument argument;
        const std::string name(handle.UnderlyingTypeName().View());
        if (kind == orx::Model) {
            argument = {Argument::Kind::Model, Holding(handle.FindEntityInstanceModel())};
        } else if (const SdaiEntityInstance* instance = handle) {
            argument = {Argument::Kind::Instance, Holding(handle.FindEntityInstanceModel()),
                        instance->GetInstanceNameId()};
        } else if (name == "STRING") {
            argument.kind = Argument::Kind::Text;
            argument.text = static_cast<const SdaiString&>(handle);
        } else if (name == "INTEGER") {
            argument.kind = Argument::Kind::Integer;
            argument.integer = handle;
        } else if (name == "REAL") {
            argument.kind = Argument::Kind::Real;
            argument.real = handle;
        } else if (name == "AGGREGATE" && handle.GetMemberCount() == 0) {
            argument.kind = Argument::Kind::List;
        } else if (name == "AGGREGATE") {  // the one for GetMemberCount
            argument = {Argument::Kind::Attribute, &models[1], 1, KORUnicodeString("KORASS")};
        }
        return argument;
    }

    Call Random(const orx::Export& row) {
        Call call{&row, {}};
        for (std::size_t i = 0; i < row.ArgumentCount(); ++i) {
            call.arguments.push_back(RandomOf(row.arguments[i]));
        }
        return call;
    }

    template <class T>
    const T& OneOf(const std::vector<T>& choices) {
        return choices[random() % choices.size()];
    }

    Argument RandomOf(orx::Kind kind) {
        Argument argument;
        if (kind == orx::RealList) {
            argument.kind = Argument::Kind::List;
        } else if (kind == orx::Model) {
            argument = {Argument::Kind::Model, &models[3]};
        } else if (random() % 10 == 0) {
            return argument;
        } else if (kind == orx::Instance || kind == orx::Select) {
            const Named& named = models[random() % 8 == 0 ? random() % 4 : random() % 2];
            // Each type with the same probability.
            const auto& types = named.model->Types();
            const kor::ModelType& type = types[random() % types.size()];
            std::vector<std::uint64_t> ids;
            type.ForEachInstance(
                [&](const kor::Instance& instance) { ids.push_back(instance.Id()); });
            argument = {Argument::Kind::Instance, &named, OneOf(ids)};
        } else if (kind == orx::Integer) {
            argument.kind = Argument::Kind::Integer;
            argument.integer = OneOf<long>({-1, 0, 1, 2, 3, 4, 20, 4'000'000'000});
        } else if (kind == orx::Real) {
            argument.kind = Argument::Kind::Real;
            argument.real = OneOf<double>({0.1, -2.5, 1e300, 1e-7, 3.0});
        } else if (kind == orx::Aggregate) {
            argument.kind = Argument::Kind::List;
            for (std::uint64_t i = random() % 14; i > 0; --i) {
                argument.members.push_back(static_cast<double>(random() % 100) / 8);
            }
        } else {
            static const std::vector<std::string_view> kTexts{"",
                                                              "NAME",
                                                              "ITEMS",
                                                              "DEFINITION",
                                                              "S_PART_NUMBER",
                                                              "REP_1",
                                                              "KORASS",
                                                              "it's",
                                                              "12312099235959",
                                                              "S0003ABCI00017",
                                                              "250",
                                                              typical::kKey,
                                                              typical::kEffectivityId,
                                                              typical::kConfigurationId,
                                                              typical::kEffectivityAttributes,
                                                              typical::kModelId,
                                                              typical::kDocumentKey,
                                                              typical::kModelFile,
                                                              typical::kDocumentFile};
            argument.kind = Argument::Kind::Text;
            argument.text = random() % 12 == 0
                                ? KORUnicodeString(std::u32string_view(U"S0002\u0141\u00E9"))
                                : KORUnicodeString(OneOf(kTexts));
        }
        return argument;
    }

    // ---- Results in the form of `orx --json`

    Json JsonOf(const SdaiPrimitiveH& value) const {
        const std::string kind(value.UnderlyingTypeName().View());
        if (!value.exists() || kind.empty()) return nullptr;
        if (kind == "INTEGER") return static_cast<long>(value);
        if (kind == "REAL") return static_cast<double>(value);
        if (kind == "LOGICAL" || kind == "BOOLEAN") {
            const SdaiLogical& logical = value;
            if (logical == SdaiLogical()) return "UNKNOWN";
            return static_cast<bool>(logical == sdaiLTRUE);
        }
        if (kind == "STRING") return static_cast<const SdaiString&>(value).ToUtf8();
        if (kind == "ENUMERATION" || kind == "BINARY") {
            return {{kind == "BINARY" ? "binary" : "enumeration",
                     static_cast<const SdaiString&>(value).ToUtf8()}};
        }
        if (kind == "AGGREGATE") {
            Json list = Json::array();
            const SdaiAggrInstance& members = *static_cast<SdaiAggrInstance*>(value);
            for (long i = 0; i < members.GetMemberCount(); ++i) {
                list.push_back(JsonOf(members.GetMember(i)));
            }
            return list;
        }
        const SdaiEntityInstance& instance = *static_cast<SdaiEntityInstance*>(value);
        const Named& named = *Holding(value.FindEntityInstanceModel());
        return {{"instance", (&named == models.data() ? "" : '@' + named.name) + '#' +
                                 std::to_string(instance.GetInstanceNameId())},
                {"type", kind}};
    }

    // The same in the form of SQL.
    static Json InSql(const Json& json) {
        if (json.is_boolean()) return json.get<bool>() ? 1 : 0;
        if (json == "UNKNOWN") return nullptr;
        if (json.is_array()) {
            Json list = Json::array();
            for (const Json& member : json) list.push_back(InMember(member));
            return list;
        }
        return InMember(json);
    }
    static Json InMember(const Json& json) {
        if (json.is_array()) return InSql(json);
        if (!json.is_object()) return json;
        if (json.contains("enumeration")) return json["enumeration"];
        if (json.contains("binary")) return '"' + json["binary"].get<std::string>() + '"';
        const std::string name = json["instance"];
        return name.starts_with('#') ? Json(std::stol(name.substr(1))) : Json(name);
    }

    std::vector<Json> FromCpp() const {
        void* module = dlopen(MODULE_LIBRARY, RTLD_NOW);
        std::vector<Json> results;
        for (const Call& call : calls) {
            TypicalArguments arguments;
            for (std::size_t i = 0; i < call.arguments.size(); ++i) {
                arguments[i] = HandleOf(call.arguments[i]);
            }
            SdaiPrimitiveH result;
            void* address = dlsym(module, std::string(call.function->name).c_str());
            WithCall(*call.function, address, arguments,
                     [&](auto function) { result = function(); });
            if (call.function->result == orx::Nothing) result = arguments[2];
            results.push_back(WithoutIdentifiers(JsonOf(result)));
        }
        dlclose(module);
        return results;
    }

    std::vector<Json> Lines(const std::string& text) const {
        std::vector<Json> lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(WithoutIdentifiers(Json::parse(line, nullptr, false)));
        }
        return lines;
    }

    std::vector<std::string> Options() const {
        std::vector<std::string> options{"-s", folder / "documents.exp", "--json"};
        for (const Named& named : models) {
            options.insert(options.end(), {"-m", named.name + '=' + named.file});
        }
        return options;
    }

    TypicalData data;
    TemporaryDirectory folder;
    std::vector<Named> models;
    std::vector<Call> calls;
    std::mt19937_64 random{73};
};

TEST_F(SameResults, ComeFromOrxSqlAndPython) {
    // The programs that read the files run first: calls in this process create instances.
    std::string script;
    for (const Call& call : calls) script += Written(call, ForOrx) + '\n';
    std::vector<std::string> arguments = Options();
    arguments.insert(arguments.begin(), {"run", "--keep-going", "--quiet"});
    arguments.emplace_back("-");
    const OrxResult orx = RunOrx(arguments, script);
    EXPECT_EQ(orx.err, "");
    const std::vector<Json> fromOrx = Lines(orx.out);

    std::string queries;
    for (const Call& call : calls) {
        if (!IsCreating(*call.function))
            queries += "SELECT " + Written(call, ForSql) + " AS value;\n";
    }
    arguments = Options();
    arguments.insert(arguments.begin(), "sql");
    arguments.emplace_back("-");
    const OrxResult sql = RunOrx(arguments, queries);
    EXPECT_EQ(sql.err, "");
    const std::vector<Json> fromSql = Lines(sql.out);

    const std::vector<Json> expected = FromCpp();
    ASSERT_EQ(fromOrx.size(), calls.size());
    std::size_t row = 0;
    std::set<std::string> kinds;
    for (std::size_t i = 0; i < calls.size(); ++i) {
        SCOPED_TRACE(Written(calls[i], ForOrx));
        EXPECT_EQ(fromOrx[i].at("value"), expected[i]);
        kinds.insert(expected[i].type_name());
        if (IsCreating(*calls[i].function)) continue;
        ASSERT_LT(row, fromSql.size());
        Json value = fromSql[row++].at("value");
        if (expected[i].is_array()) value = Json::parse(value.get<std::string>());
        EXPECT_EQ(value, InSql(expected[i]));
    }
    EXPECT_EQ(row, fromSql.size());
    // The calls have various results.
    EXPECT_GT(kinds.size(), 5U);

#ifdef PYTHON_COMMAND
    Json work{{"schemas", {folder / "documents.exp"}},
              {"models", Json::array()},
              {"calls", Json::array()}};
    for (const Named& named : models) work["models"].push_back({named.name, named.file});
    for (const Call& call : calls) {
        Json given = Json::array();
        for (const Argument& argument : call.arguments) given.push_back(ForPython(argument));
        work["calls"].push_back({call.function->name, given});
    }
    const std::string command = std::string(PYTHON_COMMAND) + ' ' +
                                folder.Write("calls.json", work.dump()) + " > " +
                                (folder / "results");
    ASSERT_EQ(std::system(command.c_str()), 0);
    const std::vector<Json> fromPython = Lines(ReadFile(folder / "results"));
    ASSERT_EQ(fromPython.size(), calls.size());
    for (std::size_t i = 0; i < calls.size(); ++i) {
        SCOPED_TRACE(Written(calls[i], ForOrx));
        EXPECT_EQ(fromPython[i], expected[i]);
    }
#endif
}

}  // namespace
