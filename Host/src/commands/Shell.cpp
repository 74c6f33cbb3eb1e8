// orx shell: executes statements as they are typed.

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Signature.h"
#include "commands/Commands.h"
#include "commands/Inspect.h"
#include "commands/Loading.h"
#include "console/Console.h"
#include "console/Display.h"
#include "console/LineEditor.h"
#include "console/Pager.h"
#include "console/Printable.h"
#include "model/NameTable.h"
#include "page/Html.h"
#include "script/Evaluator.h"
#include "script/Interrupt.h"
#include "script/SqlQuery.h"

namespace host {

namespace {

constexpr const char* kHelp =
    "Type a statement; it is carried out at once. A line that ends in : ; , or ( goes on.\n"
    "\n"
    "  #12  @model#12  #12.NAME.NAME             an instance, an attribute of it\n"
    "  'text'  7  1.5  .T.  (1.,2.)  $           values, as exchange files write them\n"
    "  GetAbsPlacement(#12)                      a function\n"
    "  #12.ITEMS[1]  COUNT(#12.ITEMS)            a member of a list, the number of members\n"
    "  p.ID = 'x' AND NOT p.NAME <> q.NAME       comparisons: = <> < <= > >=  AND OR NOT\n"
    "  LET name = expression                     names a value\n"
    "  SET #12.NAME = expression                 sets an attribute\n"
    "  ADD expression TO #12.ITEMS               adds to an aggregate\n"
    "  NEW @model.ENTITY_TYPE(NAME = expression) makes an instance\n"
    "  EACH p IN ENTITY_TYPE [WHERE condition]: p.NAME; p.ID\n"
    "\n"
    "  show #12     the attributes of an instance, their types, what they refer to\n"
    "  users #12    who refers to it\n"
    "  .sql SELECT  a query in SQL: entity types are tables, attributes columns\n"
    "  open [NAME=]FILE, new NAME=SCHEMA, save [NAME=]FILE      models\n"
    "  trace on, off, only NAME..., depth N, all                what functions read and decide\n"
    "  help NAME    what a function takes and gives; the attributes of an entity type\n"
    "  quit         leaves, as Ctrl-D does; Ctrl-C cancels a line or a statement, Tab completes\n";

std::string Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) return "";
    return std::string(text.substr(first, text.find_last_not_of(" \t\r") - first + 1));
}

class ShellSession {
  public:
    ShellSession(Session& session, const calls::Module& module, const Options& options,
                 TraceView& trace)
        : session_(session),
          module_(module),
          trace_(trace),
          options_(options),
          form_(FormOf(options)),
          printer_(session, form_),
          evaluator_(module, session, printer_, Watch(), &trace),
          editor_([this](std::string_view line) { return CompleteLine(line); }) {}

    // Executes the input to its end. On a terminal, errors do not affect the exit status.
    int Run() {
        std::optional<InterruptsNoted> interrupts;
        if (editor_.IsInteractive()) {
            interrupts.emplace();
            Greet();
        }
        for (;;) {
            std::string line;
            const LineEditor::Result result =
                editor_.Read(statement_.empty() ? "orx> " : "...> ", line);
            if (result == LineEditor::Result::Cancelled) {
                statement_.clear();
                continue;
            }
            const bool isEnd = result == LineEditor::Result::End;
            if (isEnd && statement_.empty()) {
                if (MayLeave()) break;
                continue;
            }
            if (!isEnd) {
                ++lineNumber_;
                if (statement_.empty()) firstLine_ = lineNumber_;
                const bool isCommand = statement_.empty() && CarryOutCommand(line);
                if (std::exchange(leaving_, false) && MayLeave()) break;
                if (isCommand) continue;
                statement_ += line + '\n';
                if (GoesOn(statement_)) continue;
            }
            CarryOut();
            statement_.clear();
            if (isEnd) break;
        }
        return failed_ && !editor_.IsInteractive() ? kStatementFailed : kDone;
    }

  private:
    void Greet() const {
        std::cout << "orx " ORX_VERSION "; `help` says what can be typed, Ctrl-D leaves\n";
        for (const NamedModel& model : session_.Models()) Present(model);
    }

    static void Present(const NamedModel& model) {
        std::cout << "model " << ReadableName(model.name) << ": "
                  << model.Model().SchemaName().View() << ", " << model.Model().InstanceCount()
                  << " instances\n";
    }

    // Whether changed models were saved, or may be discarded.
    bool MayLeave() {
        if (!editor_.IsInteractive()) return true;
        std::string names;
        for (const NamedModel& model : session_.Models()) {
            const bool isSaved = std::any_of(
                options_.saves.begin(), options_.saves.end(),
                [&](const std::string& save) { return save.starts_with(model.name + '='); });
            if (isSaved || !Session::IsUnsaved(model)) continue;
            names += (names.empty() ? "" : ", ") + ReadableName(model.name);
        }
        return names.empty() || editor_.Ask("not saved: " + names + "; leave? (y/N) ");
    }

    // Runs some work that prints. An error ends the work and is reported.
    template <class Work>
    void Do(Work work) {
        std::optional<ScriptError> failure;
        bool interrupted = false;
        ForgetInterrupt();
        if (editor_.IsInteractive()) session_.suggestions.Renew();
        {
            std::optional<Pager> pager;
            if (editor_.IsInteractive()) pager.emplace();
            try {
                work();
            } catch (const ScriptError& error) {
                failure = error;
            } catch (const Interrupted&) {
                interrupted = !pager.has_value() || !pager->WasLeft();
            } catch (const Unusable&) {
                failed_ = true;  // The message has been given.
            }
        }
        std::cout.flush();
        if (interrupted) Complain("interrupted");
        if (failure.has_value()) Fail(*failure);
        std::cout.flush();
    }

    // What becomes of arguments of another kind than a function takes.
    Leniency Watch() {
        Leniency leniency;
        if (options_.strict) {
            leniency.misfit = [](const ScriptError& error) { throw error; };
        } else if (!options_.quiet) {
            leniency.misfit = [](const ScriptError& error) {
                Complain("warning: " + std::to_string(error.Where().line) + ':' +
                         std::to_string(error.Where().column) + ": " + error.what());
            };
        }
        return leniency;
    }

    void CarryOut() {
        Do([this] {
            ScriptReader reader(statement_, {firstLine_, 1}, session_.ModelNames());
            while (const auto statement = reader.Next()) evaluator_.Run(*statement);
        });
    }

    void Fail(const ScriptError& error) {
        failed_ = true;
        Complain(std::to_string(error.Where().line) + ':' + std::to_string(error.Where().column) +
                 ": " + error.what());
        printer_.PrintError("", error);
        Point(error.Where());
    }

    // Shows the line and a caret under the column.
    void Point(Place place) const {
        std::string_view rest = statement_;
        for (std::uint64_t line = firstLine_; line < place.line; ++line) {
            rest.remove_prefix(std::min(rest.find('\n') + 1, rest.size()));
        }
        const std::string_view line = rest.substr(0, rest.find('\n'));
        if (line.empty()) return;
        // A tab stays one.
        const auto piecewise = [](std::string_view text, const auto& shown) {
            std::string whole;
            for (std::size_t tab = text.find('\t'); tab != std::string_view::npos;
                 tab = text.find('\t')) {
                whole += shown(text.substr(0, tab)) + '\t';
                text.remove_prefix(tab + 1);
            }
            return whole + shown(text);
        };
        const auto blanksOf = [](std::string_view text) {
            return std::string(DisplayWidth(Printable(text)), ' ');
        };
        std::cerr << "    " << piecewise(line, Printable) << "\n    "
                  << piecewise(line.substr(0, place.column - 1), blanksOf)
                  << Coloured("^", Colour::Red, HasColours(STDERR_FILENO)) << '\n';
    }

    // ---- Commands

    struct Command {
        std::string_view name;
        void (ShellSession::*carryOut)(const std::string& argument);
    };
    static std::span<const Command> Commands() {
        static constexpr Command kCommands[] = {
            {".sql", &ShellSession::Query},  {"?", &ShellSession::Help},
            {"exit", &ShellSession::Quit},   {"help", &ShellSession::Help},
            {"quit", &ShellSession::Quit},   {"new", &ShellSession::New},
            {"open", &ShellSession::Open},   {"save", &ShellSession::Save},
            {"show", &ShellSession::Show},   {"trace", &ShellSession::Trace},
            {"users", &ShellSession::Users},
        };
        return kCommands;
    }

    // Executes a line if it is a command; returns whether it was.
    bool CarryOutCommand(const std::string& line) {
        const std::string text = Trimmed(line);
        const std::string name = text.substr(0, text.find_first_of(" \t"));
        const auto commands = Commands();
        const auto command = std::find_if(commands.begin(), commands.end(),
                                          [&](const Command& each) { return each.name == name; });
        if (command == commands.end()) return false;
        statement_ = line + '\n';
        Do([&] { (this->*command->carryOut)(Trimmed(text.substr(name.size()))); });
        statement_.clear();
        return true;
    }

    void Quit(const std::string& /*argument*/) { leaving_ = true; }

    void Open(const std::string& argument) { AddModel({false, argument}); }
    void New(const std::string& argument) { AddModel({true, argument}); }
    void AddModel(const Options::Model& model) {
        NeedArgument(model.argument, model.isNew ? "new NAME=SCHEMA" : "open [NAME=]FILE");
        // What is saved when the shell is left must not go over what is opened now.
        Options opened = options_;
        opened.models.push_back(model);
        CheckTargets(opened);
        host::AddModel(session_, model, options_);
        options_ = std::move(opened);
        if (editor_.IsInteractive()) Present(session_.Models().back());
    }

    // The only model need not be named.
    void Save(const std::string& argument) {
        NeedArgument(argument, "save [NAME=]FILE");
        const bool isNamed = argument.find('=') != std::string::npos;
        if (!isNamed && session_.Models().size() != 1) {
            Refuse("save NAME=FILE: of several models, the one that is saved is named" +
                   session_.KnownModels());
        }
        const std::string save =
            isNamed ? argument : session_.Models().front().name + '=' + argument;
        Options saving = options_;
        saving.saves = {save};
        CheckTargets(saving);
        SaveModel(session_, save, options_.inPlace);
        if (editor_.IsInteractive()) std::cout << "saved: " << ReadableName(save) << '\n';
    }

    // trace on|off, trace only NAME..., trace all, trace depth N.
    void Trace(const std::string& argument) {
        std::istringstream words(argument);
        std::string what;
        words >> what;
        std::vector<std::string> rest;
        for (std::string word; words >> word;) rest.push_back(word);
        const bool isNumber = rest.size() == 1 && rest[0].size() <= 9 &&
                              rest[0].find_first_not_of("0123456789") == std::string::npos;
        if (what == "off" && rest.empty()) return trace_.Stop();
        if (what == "only" && !rest.empty()) {
            CheckFunctions(rest);
            trace_.ShowOnly(rest);
        } else if (what == "all" && rest.empty()) {
            trace_.ShowOnly({});
            trace_.ShowDepth(0);
        } else if (what == "depth" && isNumber) {
            trace_.ShowDepth(std::stoi(rest[0]));
        } else if (what != "on" || !rest.empty()) {
            Refuse("trace on, off, only NAME..., depth N or all");
        }
        trace_.GoOn();
    }

    static void NeedArgument(const std::string& argument, const std::string& usage) {
        if (argument.empty()) Refuse(usage);
    }

    void Show(const std::string& argument) {
        ShowInstance(InstanceNamed(argument), session_, form_);
    }
    // The tables are made with the first query.
    void Query(const std::string& argument) {
        if (sql_ == nullptr) sql_ = std::make_unique<SqlSession>(session_, module_);
        sql_->Run(argument, {firstLine_, statement_.find(argument) + 1}, SqlFormOf(form_));
    }

    void Users(const std::string& argument) { ShowUsers(InstanceNamed(argument), session_, form_); }

    // The instance that is the argument of a command, the rest of its line.
    const SdaiEntityInstance& InstanceNamed(const std::string& argument) {
        const Place place{firstLine_, statement_.find(argument) + 1};
        return host::InstanceNamed(argument, place, session_, evaluator_);
    }

    void Help(const std::string& name) {
        if (name.empty()) {
            std::cout << kHelp;
            return;
        }
        std::vector<std::string> known = calls::FunctionNames();
        const auto function = std::find_if(known.begin(), known.end(), [&](const auto& candidate) {
            return kor::Folded(candidate) == kor::Folded(name);
        });
        if (function != known.end()) {
            const orx::Export& row = *orx::FindExport(*function);
            std::cout << calls::Signature(row) << " gives " << calls::KindNames(row.result)
                      << "\nsource unit " << row.unit << ", trace label \"" << row.label << "\"\n";
            return;
        }
        for (const NamedModel& model : session_.Models()) {
            if (const kor::EntityType* entity = model.Model().FindEntity(std::string_view(name))) {
                return ShowEntity(*entity, form_);
            }
            for (std::string& entity : EntityNames(model.Model())) known.push_back(entity);
        }
        failed_ = true;
        Complain("no function and no entity type is named '" + name + "'" +
                 session_.suggestions.For(name, [&] { return known; }));
    }

    Completion CompleteLine(std::string_view line) const {
        Completion completion = Complete(statement_ + std::string(line), session_, evaluator_);
        completion.start -= std::min(completion.start, statement_.size());
        return completion;
    }

    Session& session_;
    const calls::Module& module_;
    TraceView& trace_;
    Options options_;  // with the models that were opened
    const Form form_;
    Printer printer_;
    Evaluator evaluator_;
    std::unique_ptr<SqlSession> sql_;
    LineEditor editor_;
    std::string statement_;  // as far as it is typed
    std::uint64_t lineNumber_ = 0;
    std::uint64_t firstLine_ = 1;  // of the statement
    bool failed_ = false;
    bool leaving_ = false;
};

}  // namespace

int Shell(const Options& options) {
    TraceView trace;
    StartTrace(trace, options);
    Session session;
    Load(session, options);
    CheckSaves(session, options);
    const std::unique_ptr<calls::Module> module = LoadModule(options);
    const int status = ShellSession(session, *module, options, trace).Run();
    Save(session, options);
    return Flush() ? status : kUnusable;
}

}  // namespace host
