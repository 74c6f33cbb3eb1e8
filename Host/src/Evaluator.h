// Carries out statements.

#ifndef HOST_EVALUATOR_H
#define HOST_EVALUATOR_H

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Module.h"
#include "Output.h"
#include "Script.h"
#include "Session.h"
#include "TraceView.h"

namespace host {

// What becomes of what is wrong.
struct Leniency {
    // Told of an attribute that an instance lacks, which then is unset, and of a value of another
    // kind than the schema declares, which then is kept. Where it is empty, either is an error.
    std::function<void(const ScriptError&)> warn;
    // Told of a member of an EACH that fails; the next one follows. Where it is empty, the EACH
    // ends.
    std::function<void(const ScriptError&)> skip;
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

    // Throws ScriptError when the statement fails; what it did before that stays done.
    void Run(const Statement& statement);

    // A value; a model is an error.
    SdaiPrimitiveH Evaluate(const Expression& expression) const;

    // The value of an expression that is text by itself. Throws ScriptError where it is none.
    SdaiPrimitiveH ValueOf(std::string_view expression, Position position) const;

    // What LET has named.
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
    void Announce(const Expression& call, const std::vector<calls::Argument>& arguments) const;
    SdaiPrimitiveH Count(const Expression& expression) const;
    SdaiPrimitiveH MemberAt(const Expression& expression) const;
    SdaiPrimitiveH Operate(const Expression& expression) const;
    SdaiLogical Truth(const Expression& expression, const char* what) const;
    SdaiPrimitiveH NewInstance(const Expression& expression) const;
    const kor::EntityType& EntityNamed(const Expression& expression, kor::Model& model) const;
    void Put(SdaiEntityInstance& instance, const std::string& attribute, Position position,
             const SdaiPrimitiveH& value) const;
    // Throw where the value may not become that of the attribute.
    void CheckPut(const kor::EntityType& entity, const std::string& attribute, Position position,
                  const SdaiPrimitiveH& value) const;
    void CheckKind(const SdaiPrimitiveH& value, const kor::Domain* domain,
                   const std::string& attribute, Position position) const;
    static void CheckItem(const SdaiPrimitiveH& value, const kor::Domain* domain,
                          const std::string& attribute, Position position);
    void FailUnlessLenient(const ScriptError& error) const;

    const NamedModel& ModelNamed(const std::optional<std::string>& name, Position position) const;

    const calls::Module& module_;
    Session& session_;
    Printer& printer_;
    const Leniency leniency_;
    TraceView* const trace_;  // is told of each call; may be null
    Variables variables_;
};

}  // namespace host

#endif
