// Executes statements.

#ifndef HOST_EVALUATOR_H
#define HOST_EVALUATOR_H

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Module.h"
#include "console/Display.h"
#include "script/Script.h"
#include "script/Session.h"
#include "script/TraceView.h"

namespace host {

// How errors are handled.
struct Leniency {
    // Called for an attribute that an instance does not have, which then counts as unset, and for a
    // value of another kind than declared, which then is kept. If empty, both are errors.
    std::function<void(const ScriptError&)> warn;
    // Called for a member of an EACH that fails; the EACH continues with the next one. If empty,
    // the EACH ends.
    std::function<void(const ScriptError&)> skip;
    // Called once a statement for an argument of another kind than the function takes, which keeps
    // its result. May throw.
    std::function<void(const ScriptError&)> misfit;
};

class Evaluator {
  public:
    Evaluator(const calls::Module& module, Session& session, Printer& printer,
              Leniency leniency = {}, TraceView* trace = nullptr)
        : module_(module),
          session_(session),
          printer_(printer),
          leniency_(std::move(leniency)),
          trace_(trace) {}

    // Throws ScriptError if the statement fails; its effects up to that point remain.
    void Run(const Statement& statement);

    // A value; a model is an error.
    SdaiPrimitiveH Evaluate(const Expression& expression) const;

    // The value of an expression given as text. Throws ScriptError if it is not an expression.
    SdaiPrimitiveH ValueOf(std::string_view expression, Place place) const;

    // The variables defined by LET.
    std::vector<std::string> VariableNames() const;

  private:
    using Variables = std::map<std::string, SdaiPrimitiveH, std::less<>>;

    void RunEach(const Statement& statement);
    void RunMember(const Statement& statement, const SdaiPrimitiveH& member);
    const SdaiAggrInstance* Members(const Statement& statement, SdaiPrimitiveH& owner) const;
    // The value of an item that prints one.
    std::optional<SdaiPrimitiveH> RunItem(const Item& item);
    void Set(const Item& item) const;
    void Add(const Item& item) const;
    SdaiEntityInstance& TargetOf(const Item& item) const;

    calls::Argument EvaluateArgument(const Expression& expression) const;

    SdaiPrimitiveH MakeList(const Expression& expression) const;
    SdaiPrimitiveH FindVariable(const Expression& expression) const;
    SdaiPrimitiveH FindInstance(const Expression& expression) const;
    SdaiPrimitiveH ReadAttribute(const Expression& expression) const;
    SdaiPrimitiveH CallFunction(const Expression& expression) const;
    void CheckKind(const orx::Export& function, std::size_t argument, const SdaiPrimitiveH& value,
                   Place place) const;
    void Announce(const Expression& call, const std::vector<calls::Argument>& arguments) const;
    SdaiPrimitiveH Count(const Expression& expression) const;
    SdaiPrimitiveH MemberAt(const Expression& expression) const;
    SdaiPrimitiveH Operate(const Expression& expression) const;
    SdaiLogical Truth(const Expression& expression, const char* what) const;
    SdaiPrimitiveH NewInstance(const Expression& expression) const;
    const kor::EntityType& EntityNamed(const Expression& expression, kor::Model& model) const;
    void Put(SdaiEntityInstance& instance, const std::string& attribute, Place place,
             const SdaiPrimitiveH& value) const;
    // Throw if the attribute does not accept the value.
    void CheckPut(const kor::EntityType& entity, const std::string& attribute, Place place,
                  const SdaiPrimitiveH& value) const;
    void CheckKind(const SdaiPrimitiveH& value, const kor::Domain* domain,
                   const std::string& attribute, Place place) const;
    void CheckItem(const SdaiPrimitiveH& value, const kor::Domain* domain,
                   const std::string& attribute, Place place) const;
    void FailUnlessLenient(const ScriptError& error) const;

    const NamedModel& ModelNamed(const std::optional<std::string>& name, Place place) const;

    const calls::Module& module_;
    Session& session_;
    Printer& printer_;
    const Leniency leniency_;
    mutable bool toldMisfit_ = false;  // in the statement that is carried out
    TraceView* const trace_;           // notified of each call; may be null
    Variables variables_;
};

}  // namespace host

#endif
