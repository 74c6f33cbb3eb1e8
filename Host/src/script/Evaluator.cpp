// Execution of statements.

#include "script/Evaluator.h"

#include <algorithm>

#include "Arguments.h"
#include "Expectation.h"
#include "SdaiIterator.h"
#include "Signature.h"
#include "model/Aggregate.h"
#include "model/Cell.h"
#include "model/NameTable.h"
#include "script/Interrupt.h"
#include "script/Operators.h"

namespace host {

namespace {

// "unknown ... 'name'", with the nearest of the names that known() gives.
template <class Known>
[[noreturn]] void Unknown(Session& session, Place place, const std::string& what,
                          const std::string& name, Known known) {
    throw ScriptError(place,
                      "unknown " + what + " '" + name + "'" + session.suggestions.For(name, known));
}

// Lists are nested no deeper than in exchange files. They are copied whole, so that repeatedly
// putting a list into itself would otherwise cost more and more.
constexpr int kDeepestList = 100;

void CheckNesting(const SdaiPrimitiveH& value, int depth, Place place) {
    const SdaiAggrInstance* members = value;
    if (members == nullptr) return;
    if (depth >= kDeepestList) {
        throw ScriptError(place,
                          "lists nested more than " + std::to_string(kDeepestList) + " deep");
    }
    const long count = members->GetMemberCount();
    for (long i = 0; i < count; ++i) CheckNesting(members->GetMember(i), depth + 1, place);
}

}  // namespace

// ---- Statements

void Evaluator::Run(const Statement& statement) {
    toldMisfit_ = false;
    if (statement.isEach) {
        RunEach(statement);
    } else if (const auto value = RunItem(statement.items.front())) {
        printer_.Print(statement.place, *value);
    }
}

void Evaluator::RunEach(const Statement& statement) {
    SdaiPrimitiveH owner;
    SdaiIterInstance members(Members(statement, owner));
    // Restores the previous value of the name at the end, without allocating.
    struct Scope {
        Scope(Variables& all, const std::string& variable)
            : variables(all), name(variable), hidden(all.extract(variable)) {}
        ~Scope() {
            variables.erase(name);
            variables.insert(std::move(hidden));
        }
        Variables& variables;
        const std::string& name;
        Variables::node_type hidden;
    } scope(variables_, statement.variable);
    struct Rows {
        Rows(Printer& all, const Statement& each) : printer(all) { printer.Begin(each); }
        ~Rows() { printer.End(); }
        Printer& printer;
    } rows(printer_, statement);
    while (members.Next()) {
        const SdaiPrimitiveH member = members.GetCurrentValue();
        variables_[statement.variable] = member;
        try {
            RunMember(statement, member);
        } catch (const ScriptError& error) {
            const bool isInstance = static_cast<SdaiEntityInstance*>(member) != nullptr;
            const std::string message =
                (isInstance ? ToText(member, session_) + ": " : "") + error.what();
            if (!leniency_.skip) throw ScriptError(error.Where(), message);
            leniency_.skip({error.Where(), message});
        }
    }
}

void Evaluator::RunMember(const Statement& statement, const SdaiPrimitiveH& member) {
    if (statement.where != nullptr && Truth(*statement.where, "WHERE") != sdaiLTRUE) return;
    std::vector<SdaiPrimitiveH> values;
    for (const Item& item : statement.items) {
        if (auto value = RunItem(item)) values.push_back(std::move(*value));
    }
    if (!values.empty()) printer_.Print(statement.place, member, values);
}

// The members that an EACH visits; the owner keeps an aggregate that belongs to no model.
const SdaiAggrInstance* Evaluator::Members(const Statement& statement,
                                           SdaiPrimitiveH& owner) const {
    const auto variable = variables_.find(statement.entityType);
    if (statement.source != nullptr) {
        owner = Evaluate(*statement.source);
    } else if (!statement.model.has_value() && variable != variables_.end()) {
        owner = variable->second;
    } else {
        const kor::Model& model = ModelNamed(statement.model, statement.sourcePlace).Model();
        if (model.FindEntity(std::string_view(statement.entityType)) == nullptr) {
            Unknown(session_, statement.sourcePlace, "entity type", statement.entityType,
                    [&] { return EntityNames(model); });
        }
        return model.Extent(std::string_view(statement.entityType));
    }
    const SdaiAggrInstance* members = owner;
    if (members == nullptr && owner.exists()) {
        throw ScriptError(statement.sourcePlace, "EACH walks an entity type or an aggregate, not " +
                                                     ToText(owner, session_));
    }
    return members;
}

std::optional<SdaiPrimitiveH> Evaluator::RunItem(const Item& item) {
    switch (item.kind) {
        case Item::Kind::Let: variables_[item.name] = Evaluate(*item.value); return std::nullopt;
        case Item::Kind::Set: Set(item); return std::nullopt;
        case Item::Kind::Add: Add(item); return std::nullopt;
        case Item::Kind::Print: break;
    }
    return Evaluate(*item.value);
}

void Evaluator::Set(const Item& item) const {
    SdaiEntityInstance& instance = TargetOf(item);
    Put(instance, item.name, item.place, Evaluate(*item.value));
}

// The first member creates the aggregate. A member is stored as the attribute's domain says.
void Evaluator::Add(const Item& item) const {
    const SdaiPrimitiveH value = Evaluate(*item.value);
    CheckNesting(value, 1, item.place);
    SdaiEntityInstance& instance = TargetOf(item);
    const SdaiPrimitiveH present = instance.GetAttr(SdaiString(std::string_view(item.name)));
    if (SdaiAggrInstance* members = present) {
        const kor::EntityType& entity = *kor::Instance::Of(instance).Type().entity;
        const kor::Index slot = entity.SlotOf(std::string_view(item.name));
        const kor::Domain* domain = entity.Slots()[*slot].domain;
        const kor::Domain* element = domain != nullptr ? domain->element : nullptr;
        CheckKind(value, element, item.name, item.place);
        CheckItem(value, element, item.name, item.place);
        const kor::CellHolder member(kor::ToCell(value, element));
        members->Append(kor::ToHandle(member.Get(), element != nullptr && element->IsSelect()));
        session_.NoteChange(instance.FindEntityInstanceModel());
    } else if (present.exists()) {
        throw ScriptError(item.place,
                          "'" + item.name + "' is no aggregate but " + ToText(present, session_));
    } else {
        SdaiAggrInstance first;
        first.Append(value);
        Put(instance, item.name, item.place, SdaiPrimitiveH(&first));
    }
}

// The instance with the attribute that a SET or an ADD writes.
SdaiEntityInstance& Evaluator::TargetOf(const Item& item) const {
    const SdaiPrimitiveH target = Evaluate(*item.target);
    SdaiEntityInstance* instance = target;
    if (instance == nullptr) {
        throw ScriptError(item.target->place,
                          "an instance expected, found " + ToText(target, session_));
    }
    return *instance;
}

// ---- Expressions

SdaiPrimitiveH Evaluator::ValueOf(std::string_view expression, Place place) const {
    ScriptReader reader(expression, place, session_.ModelNames());
    const std::optional<Statement> statement = reader.Next();
    if (!statement.has_value() || statement->isEach ||
        statement->items.front().kind != Item::Kind::Print) {
        throw ScriptError(place, "an expression expected");
    }
    return Evaluate(*statement->items.front().value);
}

std::vector<std::string> Evaluator::VariableNames() const {
    std::vector<std::string> names;
    for (const auto& [name, value] : variables_) names.push_back(name);
    return names;
}

SdaiPrimitiveH Evaluator::Evaluate(const Expression& expression) const {
    ThrowIfInterrupted();
    switch (expression.kind) {
        case Expression::Kind::Literal: return expression.value;
        case Expression::Kind::List: return MakeList(expression);
        case Expression::Kind::Variable: return FindVariable(expression);
        case Expression::Kind::Instance: return FindInstance(expression);
        case Expression::Kind::Attribute: return ReadAttribute(expression);
        case Expression::Kind::Call: return CallFunction(expression);
        case Expression::Kind::New: return NewInstance(expression);
        case Expression::Kind::Index: return MemberAt(expression);
        case Expression::Kind::Operation: return Operate(expression);
        case Expression::Kind::Model: break;
    }
    ModelNamed(expression.model, expression.place);
    throw ScriptError(expression.place, "a value expected, found a model");
}

calls::Argument Evaluator::EvaluateArgument(const Expression& expression) const {
    if (expression.kind != Expression::Kind::Model) return {Evaluate(expression)};
    return {{}, &ModelNamed(expression.model, expression.place).Model()};
}

SdaiPrimitiveH Evaluator::MakeList(const Expression& expression) const {
    std::vector<SdaiPrimitiveH> members;
    for (const ExpressionPtr& operand : expression.operands) {
        members.push_back(Evaluate(*operand));
        CheckNesting(members.back(), 1, expression.place);
    }
    return calls::LiteralList(members);
}

SdaiPrimitiveH Evaluator::FindVariable(const Expression& expression) const {
    const auto found = variables_.find(expression.name);
    if (found != variables_.end()) return found->second;
    if (const orx::Export* function = orx::FindExport(expression.name)) {
        throw ScriptError(expression.place, expression.name + " is a function, called as " +
                                                calls::Signature(*function));
    }
    const std::string nearest = session_.suggestions.For(expression.name, [this] {
        std::vector<std::string> known = calls::FunctionNames();
        for (std::string& name : VariableNames()) known.push_back(std::move(name));
        return known;
    });
    throw ScriptError(
        expression.place,
        "unknown name '" + expression.name + "'" +
            (nearest.empty() ? " (a text stands between single quotes: '" + expression.name + "')"
                             : nearest));
}

SdaiPrimitiveH Evaluator::FindInstance(const Expression& expression) const {
    const NamedModel& model = ModelNamed(expression.model, expression.place);
    SdaiEntityInstance* instance = model.Model().Find(expression.id);
    if (instance == nullptr) {
        throw ScriptError(expression.place, "there is no instance #" +
                                                std::to_string(expression.id) + " in model '" +
                                                model.name + "'");
    }
    return instance;
}

SdaiPrimitiveH Evaluator::ReadAttribute(const Expression& expression) const {
    const SdaiPrimitiveH owner = Evaluate(*expression.operands.front());
    if (!owner.exists()) return {};
    const SdaiEntityInstance* instance = owner;
    if (instance == nullptr) {
        throw ScriptError(expression.place, "an attribute is asked of " + ToText(owner, session_) +
                                                ", which is no instance");
    }
    const kor::Instance& asked = kor::Instance::Of(*instance);
    if (const kor::Index slot = asked.SlotOf(std::string_view(expression.name))) {
        return asked.Read(slot);
    }
    const kor::EntityType& entity = *asked.Type().entity;
    FailUnlessLenient(
        {expression.place,
         ToText(owner, session_) + " is of type " + std::string(entity.Name().View()) +
             ", which has no attribute '" + expression.name + "'" +
             session_.suggestions.For(expression.name, [&] { return entity.AttributeNames(); })});
    return {};
}

// Throws the error, or warns of it where data are read leniently.
void Evaluator::FailUnlessLenient(const ScriptError& error) const {
    if (!leniency_.warn) throw error;
    leniency_.warn(error);
}

// ---- Operators

SdaiPrimitiveH Evaluator::Operate(const Expression& expression) const {
    const Expression& first = *expression.operands.front();
    switch (expression.operation) {
        case Operator::Not: return !Truth(first, "NOT");
        case Operator::And: {
            const SdaiLogical left = Truth(first, "AND");
            if (left == sdaiLFALSE) return left;
            return left && Truth(*expression.operands.back(), "AND");
        }
        case Operator::Or: {
            const SdaiLogical left = Truth(first, "OR");
            if (left == sdaiLTRUE) return left;
            return left || Truth(*expression.operands.back(), "OR");
        }
        default: break;
    }
    const SdaiPrimitiveH left = Evaluate(first);
    const SdaiPrimitiveH right = Evaluate(*expression.operands.back());
    const auto result = Compare(expression.operation, left, right);
    if (!result.has_value()) {
        throw ScriptError(expression.place, ToText(left, session_) + " and " +
                                                ToText(right, session_) +
                                                " have no order to each other");
    }
    return *result;
}

// The truth value of an operand; of one in parentheses, too.
SdaiLogical Evaluator::Truth(const Expression& expression, const char* what) const {
    if (expression.kind == Expression::Kind::List && expression.operands.size() == 1) {
        return Truth(*expression.operands.front(), what);
    }
    const SdaiPrimitiveH value = Evaluate(expression);
    const auto truth = TruthOf(value);
    if (!truth.has_value()) {
        throw ScriptError(expression.place,
                          std::string(what) + " takes a logical, found " + ToText(value, session_));
    }
    return *truth;
}

SdaiPrimitiveH Evaluator::MemberAt(const Expression& expression) const {
    const SdaiPrimitiveH owner = Evaluate(*expression.operands.front());
    const Expression& at = *expression.operands.back();
    const SdaiPrimitiveH index = Evaluate(at);
    if (index.UnderlyingTypeName().View() != "INTEGER") {
        throw ScriptError(at.place,
                          "the number of a member expected, found " + ToText(index, session_));
    }
    if (!owner.exists()) return {};
    const long position = index;
    long count = 0;
    if (const SdaiAggrInstance* members = owner) {
        count = members->GetMemberCount();
        if (position >= 1 && position <= count) return members->GetMember(position - 1);
    } else if (const SdaiEntityInstance* instance = owner) {
        const kor::Instance& asked = kor::Instance::Of(*instance);
        const kor::EntityType& entity = *asked.Type().entity;
        if (entity.IsDeclared()) {
            throw ScriptError(expression.place, ToText(owner, session_) + " is of type " +
                                                    std::string(entity.Name().View()) +
                                                    ", whose attributes have names");
        }
        count = std::ssize(entity.Slots());
        if (position >= 1 && position <= count) {
            return asked.Read(static_cast<std::size_t>(position - 1));
        }
    } else {
        throw ScriptError(expression.place,
                          "a member is asked of " + ToText(owner, session_) + ", which is no list");
    }
    throw ScriptError(at.place, "there is no member " + std::to_string(position) +
                                    ": the list has " + std::to_string(count));
}

SdaiPrimitiveH Evaluator::Count(const Expression& expression) const {
    if (expression.operands.size() != 1) {
        throw ScriptError(expression.place, "COUNT takes 1 argument, found " +
                                                std::to_string(expression.operands.size()));
    }
    const SdaiPrimitiveH list = Evaluate(*expression.operands.front());
    if (list.exists() && static_cast<SdaiAggrInstance*>(list) == nullptr) {
        throw ScriptError(expression.operands.front()->place,
                          "COUNT takes a list, found " + ToText(list, session_));
    }
    return list.GetMemberCount();
}

SdaiPrimitiveH Evaluator::CallFunction(const Expression& expression) const {
    if (expression.name == "COUNT") return Count(expression);
    const orx::Export* function = orx::FindExport(expression.name);
    if (function == nullptr) {
        Unknown(session_, expression.place, "function", expression.name, calls::FunctionNames);
    }
    const std::size_t count = function->ArgumentCount();
    if (expression.operands.size() != count) {
        throw ScriptError(expression.place, expression.name + " takes " + std::to_string(count) +
                                                (count == 1 ? " argument" : " arguments") +
                                                ", found " +
                                                std::to_string(expression.operands.size()));
    }
    std::vector<calls::Argument> arguments;
    for (std::size_t i = 0; i < count; ++i) {
        const Expression& operand = *expression.operands[i];
        const calls::Argument& argument = arguments.emplace_back(EvaluateArgument(operand));
        if (const char* misfit = calls::Misfit(function->arguments[i], argument)) {
            throw ScriptError(operand.place, misfit);
        }
        if (leniency_.misfit && !toldMisfit_) {
            CheckKind(*function, i, argument.handle, operand.place);
        }
    }
    if (trace_ != nullptr && trace_->IsOn()) Announce(expression, arguments);
    // A list of a model, filled by the function.
    if (function->result == orx::Nothing && kor::HandleAccess::KindOf(arguments.back().handle) ==
                                                kor::HandleAccess::Kind::ModelAggregate) {
        session_.NoteChange(nullptr);
    }
    return module_.Call(*function, arguments);
}

void Evaluator::CheckKind(const orx::Export& function, std::size_t argument,
                          const SdaiPrimitiveH& value, Place place) const {
    const orx::Kind taken = function.arguments[argument];
    const orx::Kind kind = calls::KindOf(value);
    if (calls::Takes(taken, kind)) return;
    toldMisfit_ = true;
    leniency_.misfit({place, "argument " + std::to_string(argument + 1) + " is " +
                                 calls::KindPhrase(kind) + ", " + std::string(function.name) +
                                 " takes " + calls::KindPhrase(taken)});
}

void Evaluator::Announce(const Expression& call,
                         const std::vector<calls::Argument>& arguments) const {
    constexpr std::size_t kLongest = 100;
    std::string header = "== " + std::to_string(call.place.line) + ':' +
                         std::to_string(call.place.column) + ' ' + call.name + '(';
    for (const calls::Argument& argument : arguments) {
        if (&argument != arguments.data()) header += ", ";
        const NamedModel* model = session_.Holding(argument.model);
        std::string text = model != nullptr ? '@' + model->name : ToText(argument.handle, session_);
        if (text.size() > kLongest) text.replace(kLongest - 3, std::string::npos, "...");
        header += text;
    }
    trace_->Announce(header + ')');
}

SdaiPrimitiveH Evaluator::NewInstance(const Expression& expression) const {
    kor::Model& model = ModelNamed(expression.model, expression.place).Model();
    const kor::EntityType& entity = EntityNamed(expression, model);
    // Values first: the instance is created only if all of them exist and fit.
    std::vector<SdaiPrimitiveH> values;
    for (const Assignment& assignment : expression.assignments) {
        values.push_back(Evaluate(*assignment.value));
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Assignment& assignment = expression.assignments[i];
        CheckPut(entity, assignment.attribute, assignment.place, values[i]);
    }
    SdaiEntityInstance* instance = entity.CreateEntityInstance(&model);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Assignment& assignment = expression.assignments[i];
        static_cast<SdaiAppInstance*>(instance)->PutAttr(
            SdaiString(std::string_view(assignment.attribute)), values[i]);
    }
    return instance;
}

// The entity type of a NEW: a type of the schema, or several joined by "+".
const kor::EntityType& Evaluator::EntityNamed(const Expression& expression,
                                              kor::Model& model) const {
    std::vector<const kor::EntityType*> parts;
    std::string_view rest = expression.name;
    while (!rest.empty()) {
        const std::string name(rest.substr(0, rest.find('+')));
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        parts.push_back(model.GetSchema().FindEntity(std::string_view(name)));
        if (parts.back() == nullptr) {
            Unknown(session_, expression.place, "entity type", name,
                    [&] { return model.GetSchema().EntityNames(); });
        }
    }
    if (parts.size() == 1) return *parts.front();
    std::sort(parts.begin(), parts.end(),
              [](const auto* a, const auto* b) { return a->FoldedName() < b->FoldedName(); });
    parts.erase(std::unique(parts.begin(), parts.end()), parts.end());
    const kor::EntityType* entity = model.ComplexEntity(parts);
    if (entity == nullptr) {
        throw ScriptError(expression.place, "too many combinations of entity types");
    }
    return *entity;
}

void Evaluator::Put(SdaiEntityInstance& instance, const std::string& attribute, Place place,
                    const SdaiPrimitiveH& value) const {
    CheckPut(*kor::Instance::Of(instance).Type().entity, attribute, place, value);
    static_cast<SdaiAppInstance&>(instance).PutAttr(SdaiString(std::string_view(attribute)), value);
    session_.NoteChange(instance.FindEntityInstanceModel());
}

void Evaluator::CheckPut(const kor::EntityType& entity, const std::string& attribute, Place place,
                         const SdaiPrimitiveH& value) const {
    const kor::Index slot = entity.SlotOf(std::string_view(attribute));
    if (!slot) {
        Unknown(session_, place, "attribute", attribute, [&] { return entity.AttributeNames(); });
    }
    const kor::Slot& definition = entity.Slots()[*slot];
    if (definition.derived) {
        throw ScriptError(place, "attribute '" + attribute + "' is derived from others");
    }
    CheckKind(value, definition.domain, attribute, place);
    CheckItem(value, definition.domain, attribute, place);
}

void Evaluator::CheckItem(const SdaiPrimitiveH& value, const kor::Domain* domain,
                          const std::string& attribute, Place place) const {
    if (const auto item = kor::WrongItem(value, domain)) {
        std::string known;
        if (domain != nullptr) {
            known = session_.suggestions.For(*item, [&] { return domain->items; });
        }
        throw ScriptError(place, "'" + Readable(*item) + "' is not an item of the enumeration " +
                                     "of attribute '" + attribute + "'" + known);
    }
}

void Evaluator::CheckKind(const SdaiPrimitiveH& value, const kor::Domain* domain,
                          const std::string& attribute, Place place) const {
    if (calls::Fits(value, domain)) return;
    FailUnlessLenient({place, "attribute '" + attribute + "' takes " + calls::Expectation(*domain) +
                                  ", found " + ToText(value, session_)});
}

const NamedModel& Evaluator::ModelNamed(const std::optional<std::string>& name, Place place) const {
    if (!name.has_value() || name->empty()) {
        if (session_.Models().empty()) {
            throw ScriptError(
                place,
                "there is no model (--model FILE gives one, --new NAME=SCHEMA an empty one)");
        }
        return session_.Models().front();
    }
    const NamedModel* model = session_.Find(*name);
    if (model == nullptr) {
        throw ScriptError(place, "unknown model '" + *name + "'" + session_.KnownModels());
    }
    return *model;
}

}  // namespace host
