// The attributes and users of an instance: the commands show and users, also in the shell.

#include "commands/Inspect.h"

#include <cstdint>
#include <iostream>
#include <memory>
#include <span>

#include "Expectation.h"
#include "commands/Commands.h"
#include "commands/Loading.h"
#include "console/Console.h"
#include "console/Display.h"
#include "console/Json.h"
#include "model/Aggregate.h"
#include "script/Evaluator.h"
#include "script/Interrupt.h"

namespace host {

namespace {

using kor::Cell;
using kor::Instance;
using kor::Tag;

// The attributes that name an instance, as paths from it; the first one with a text is used.
struct Path {
    const char* attributes[3];
};
constexpr Path kNames[] = {
    {{"NAME"}},
    {{"FORMATION", "OF_PRODUCT", "NAME"}},
    {{"OF_PRODUCT", "NAME"}},
    {{"S_DESC"}},
    {{"S_PART_NUMBER"}},
    {{"ID"}},
};

SdaiPrimitiveH Follow(const SdaiEntityInstance& instance, const Path& path) {
    SdaiPrimitiveH value(const_cast<SdaiEntityInstance*>(&instance));
    for (const char* attribute : path.attributes) {
        if (attribute != nullptr) value = value.GetAttr(SdaiString(attribute));
    }
    return value;
}

// The declared type of an attribute, "OPTIONAL LIST [1:?] OF PRODUCT"; empty in an undeclared type.
std::string TypeOf(const kor::Slot& slot) {
    if (slot.attribute == nullptr) return "";
    return (slot.derived    ? "DERIVED "
            : slot.optional ? "OPTIONAL "
                            : "") +
           calls::DeclaredType(slot.domain);
}

std::string NameOf(const kor::EntityType& entity, std::size_t slot) {
    const kor::Attribute* attribute = entity.Slots()[slot].attribute;
    return attribute != nullptr ? std::string(attribute->Name().View())
                                : '[' + std::to_string(slot + 1) + ']';
}

// Calls visit(instance) for every instance that a value is or contains.
template <class Visit>
void ForEachReference(const SdaiPrimitiveH& value, Visit visit) {
    if (const SdaiEntityInstance* instance = value) {
        visit(*instance);
    } else if (const SdaiAggrInstance* members = value) {
        for (long i = 0; i < members->GetMemberCount(); ++i) {
            ForEachReference(members->GetMember(i), visit);
        }
    }
}

// "PRODUCT 'Desk lamp'" for each instance that a value refers to, as many as fit on a line.
std::string Described(const SdaiPrimitiveH& value, const Session& session) {
    constexpr int kMost = 4;
    std::string text;
    int count = 0;
    ForEachReference(value, [&](const SdaiEntityInstance& referred) {
        if (++count > kMost) return;
        if (!text.empty()) text += ", ";
        text += Instance::Of(referred).Type().entity->Name().View();
        const std::string label = LabelOf(referred, session);
        if (!label.empty()) text += ' ' + label;
    });
    if (count > kMost) text += " and " + std::to_string(count - kMost) + " more";
    return text;
}

SdaiPrimitiveH HandleOf(const SdaiEntityInstance& instance) {
    return const_cast<SdaiEntityInstance*>(&instance);
}

void ShowAsJson(const Instance& instance, const Session& session) {
    const kor::EntityType& entity = *instance.Type().entity;
    Json json;
    json.Object([&] {
        WriteValue(json.Name("instance"), HandleOf(instance), session);
        json.Name("declared").Truth(entity.IsDeclared());
        json.Name("attributes").Array([&] {
            for (std::size_t i = 0; i < entity.Slots().size(); ++i) {
                json.Object([&] {
                    const kor::Slot& slot = entity.Slots()[i];
                    json.Name("name").Text(NameOf(entity, i));
                    if (slot.attribute != nullptr) {
                        json.Name("type").Text(calls::DeclaredType(slot.domain));
                        json.Name("optional").Truth(slot.optional);
                    }
                    WriteValue(json.Name("value"), instance.Read(i), session);
                });
            }
        });
    });
    std::cout << json.Line() << '\n';
}

// A use of the given instance.
struct Use {
    const Instance& user;
    std::size_t slot;
};

// Whether a value is the instance or contains it.
bool Refers(const Cell& cell, const SdaiEntityInstance& target) {
    switch (cell.GetTag()) {
        case Tag::Instance: return cell.Get<SdaiEntityInstance*>() == &target;
        case Tag::Typed: return Refers(cell.Get<kor::TypedValue*>()->cell, target);
        case Tag::Aggregate: {
            const SdaiAggrInstance& members = *cell.Get<SdaiAggrInstance*>();
            using Layout = kor::AggregateAccess::Layout;
            const Layout layout = kor::AggregateAccess::LayoutOf(members);
            if (layout == Layout::Reals || layout == Layout::Integers) return false;
            for (std::size_t i = 0; i < kor::AggregateAccess::Count(members); ++i) {
                if (Refers(kor::AggregateAccess::MemberCell(members, i), target)) return true;
            }
            return false;
        }
        default: return false;
    }
}

// Calls visit(Use) for every attribute that refers to the instance, in the order of the models. All
// instances are looked at: back references go by one attribute at a time, and making them for all
// of a model takes longer than a look at each value.
template <class Visit>
void ForEachUse(const SdaiEntityInstance& target, const Session& session, Visit visit) {
    for (const NamedModel& model : session.Models()) {
        model.Model().ForEachInstance([&](const Instance& user) {
            ThrowIfInterrupted();
            const std::span<const Cell> cells = user.Values();
            for (std::size_t i = 0; i < cells.size(); ++i) {
                if (Refers(cells[i], target)) visit(Use{user, i});
            }
        });
    }
}

}  // namespace

std::string LabelOf(const SdaiEntityInstance& instance, const Session& session) {
    for (const Path& path : kNames) {
        const SdaiPrimitiveH name = Follow(instance, path);
        if (TextOf(name).length() != 0) {
            return ToShown(name, session, Form::Aligned);
        }
    }
    return "";
}

void ShowInstance(const SdaiEntityInstance& shown, const Session& session, Form form) {
    const Instance& instance = Instance::Of(shown);
    if (form == Form::Json) return ShowAsJson(instance, session);
    const kor::EntityType& entity = *instance.Type().entity;
    if (form != Form::Csv) {
        std::cout << ToText(HandleOf(shown), session) << ' ' << Readable(entity.Name().View())
                  << (entity.IsDeclared() ? "" : " (not declared by the schema)") << '\n';
    }
    Columns columns(form, {"attribute", "type", "value", "refers to"});
    for (std::size_t i = 0; i < entity.Slots().size(); ++i) {
        const SdaiPrimitiveH value = instance.Read(i);
        columns.Add({NameOf(entity, i), TypeOf(entity.Slots()[i]), ToShown(value, session, form),
                     Described(value, session)});
    }
}

void ShowUsers(const SdaiEntityInstance& instance, const Session& session, Form form) {
    Columns columns(form, {"instance", "type", "attribute", "name"});
    ForEachUse(instance, session, [&](const Use& use) {
        const kor::EntityType& entity = *use.user.Type().entity;
        if (form == Form::Json) {
            Json json;
            json.Object([&] {
                WriteValue(json.Name("instance"), HandleOf(use.user), session);
                json.Name("attribute").Text(NameOf(entity, use.slot));
            });
            std::cout << json.Line() << '\n';
            return;
        }
        columns.Add({ToText(HandleOf(use.user), session), Readable(entity.Name().View()),
                     NameOf(entity, use.slot), LabelOf(use.user, session)});
    });
}

void ShowEntity(const kor::EntityType& entity, Form form) {
    std::cout << Readable(entity.Name().View())
              << (entity.IsDeclared() ? "" : ": the schema does not declare it") << '\n';
    Columns columns(form, {"  attribute", "type"});
    for (std::size_t i = 0; i < entity.Slots().size(); ++i) {
        if (entity.Slots()[i].attribute == nullptr) continue;
        columns.Add({"  " + NameOf(entity, i), TypeOf(entity.Slots()[i])});
    }
}

const SdaiEntityInstance& InstanceNamed(const std::string& name, Place place,
                                        const Session& session, const Evaluator& evaluator) {
    const bool isNumber =
        !name.empty() && name.find_first_not_of("0123456789") == std::string::npos;
    const SdaiPrimitiveH value = evaluator.ValueOf(isNumber ? '#' + name : name, place);
    const SdaiEntityInstance* instance = value;
    if (instance == nullptr) {
        throw ScriptError(place,
                          "an instance expected, such as #12, found " + ToText(value, session));
    }
    return *instance;
}

// ---- orx show, orx users

namespace {

using Show = void (*)(const SdaiEntityInstance&, const Session&, Form);

int ShowEach(const Options& options, Show show) {
    Session session;
    Load(session, options);
    const std::unique_ptr<calls::Module> module = LoadModule(options);
    const Form form = FormOf(options);
    Printer printer(session, form);
    Evaluator evaluator(*module, session, printer);
    std::uint64_t line = 0;
    int status = kDone;
    for (const std::string& name : options.expressions) {
        ++line;
        try {
            show(InstanceNamed(name, {line, 1}, session, evaluator), session, form);
        } catch (const ScriptError& error) {
            std::cout.flush();
            Complain("<command line>:" + std::to_string(error.Where().line) + ':' +
                     std::to_string(error.Where().column) + ": " + error.what());
            status = kStatementFailed;
        }
    }
    return Flush() ? status : kUnusable;
}

}  // namespace

int ShowInstances(const Options& options) { return ShowEach(options, ShowInstance); }
int Users(const Options& options) { return ShowEach(options, ShowUsers); }

}  // namespace host
