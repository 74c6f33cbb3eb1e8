// Completion of statements.

#include "script/Completion.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "SdaiAggrInstance.h"
#include "Signature.h"
#include "model/NameTable.h"
#include "script/Script.h"
#include "script/SqlQuery.h"

namespace host {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n'; }

// The last word of a text, ignoring trailing blanks.
std::string_view LastWord(std::string_view text) {
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    std::size_t start = text.size();
    while (start > 0 && IsWordCharacter(text[start - 1])) --start;
    return text.substr(start);
}

class Completer {
  public:
    Completer(std::string_view text, const Session& session, const Evaluator& evaluator)
        : text_(text), session_(session), evaluator_(evaluator), start_(text.size()) {}

    Completion Complete() {
        const std::size_t lineStart = text_.rfind('\n') + 1;  // 0 if there is none
        const std::string_view line = text_.substr(lineStart);
        if (std::count(line.begin(), line.end(), '\'') % 2 != 0) return {start_, {}};
        if (CompleteModelName()) return Chosen();
        start_ -= LastWord(IsBlankAtEnd() ? "" : text_).size();
        const std::string_view before = text_.substr(0, start_);
        if (before.ends_with('.')) {
            CompleteAfterPoint(before.substr(0, before.size() - 1));
            return Chosen();
        }
        if (before.ends_with('#')) return {start_, {}};
        const std::string_view keyword = LastWord(before);
        if (keyword == "NEW" || keyword == "IN" || before.ends_with('+')) {
            if (!session_.Models().empty()) Add(EntityNames(session_.Models().front().Model()));
            if (keyword == "IN") Add(evaluator_.VariableNames());
        } else if (IsArgumentOf("help ") || IsArgumentOf("trace only ")) {
            Add(calls::FunctionNames());
            for (const NamedModel& model : session_.Models()) Add(EntityNames(model.Model()));
        } else {
            for (const std::string& function : calls::FunctionNames()) Add({function + '('});
            Add(evaluator_.VariableNames());
            if (start_ == 0) Add({"help", "new", "open", "quit", "save", "show", "trace", "users"});
            Add({"ADD", "AND", "COUNT(", "EACH", "LET", "NEW", "NOT", "OR", "SET", "IN", "TO",
                 "WHERE"});
            if (const auto each = FindEach()) Add({each->variable});
        }
        return Chosen();
    }

  private:
    bool IsBlankAtEnd() const { return text_.empty() || IsBlank(text_.back()); }

    void Add(const std::vector<std::string>& names) {
        candidates_.insert(candidates_.end(), names.begin(), names.end());
    }

    bool IsArgumentOf(std::string_view command) const {
        return text_.substr(0, start_).starts_with(command);
    }

    // The candidates that begin with the typed text.
    Completion Chosen() {
        const std::string typed = kor::Folded(text_.substr(start_));
        std::erase_if(candidates_, [&](const std::string& name) {
            return !kor::Folded(name).starts_with(typed);
        });
        std::sort(candidates_.begin(), candidates_.end());
        candidates_.erase(std::unique(candidates_.begin(), candidates_.end()), candidates_.end());
        return {start_, std::move(candidates_)};
    }

    // After "@", while the text may be a model's name.
    bool CompleteModelName() {
        const std::size_t sign = text_.rfind('@');
        if (sign == std::string_view::npos) return false;
        const std::string_view typed = text_.substr(sign + 1);
        for (const std::string& name : session_.ModelNames()) {
            if (name.starts_with(typed)) candidates_.push_back(name);
        }
        if (!candidates_.empty()) start_ = sign + 1;
        return !candidates_.empty();
    }

    void CompleteAfterPoint(std::string_view owner) {
        for (const NamedModel& model : session_.Models()) {
            if (owner.ends_with('@' + model.name)) {
                Add(EntityNames(model.Model()));
                return;
            }
        }
        const std::size_t start = owner.find_last_of(" \t\n(),;:=") + 1;
        const SdaiPrimitiveH value = ValueOf(owner.substr(start));
        if (const SdaiEntityInstance* instance = value) {
            Add(kor::Instance::Of(*instance).Type().entity->AttributeNames());
            return;
        }
        for (const NamedModel& model : session_.Models()) {
            for (const kor::EntityType* entity : model.Model().GetSchema().Entities()) {
                Add(entity->AttributeNames());
            }
        }
    }

    // The value of a path of attributes; unset for any other expression.
    SdaiPrimitiveH ValueOf(std::string_view path) const {
        try {
            const auto statement = ScriptReader(path, kStartOfScript, session_.ModelNames()).Next();
            if (!statement.has_value() || statement->isEach) return {};
            const Item& item = statement->items.front();
            return item.kind == Item::Kind::Print ? ValueOf(*item.value) : SdaiPrimitiveH();
        } catch (const ScriptError&) {
            return {};
        }
    }

    // Functions are not called and instances are not created.
    SdaiPrimitiveH ValueOf(const Expression& expression) const {
        switch (expression.kind) {
            case Expression::Kind::Attribute:
                return ValueOf(*expression.operands.front())
                    .GetAttr(SdaiString(std::string_view(expression.name)));
            case Expression::Kind::Variable: {
                const auto each = FindEach();
                if (each.has_value() && each->variable == expression.name) return each->first;
                return evaluator_.Evaluate(expression);
            }
            case Expression::Kind::Instance: return evaluator_.Evaluate(expression);
            default: return {};
        }
    }

    // The variable of the EACH being typed, and its first instance.
    struct Each {
        std::string variable;
        SdaiPrimitiveH first;
    };
    std::optional<Each> FindEach() const {
        if (!text_.starts_with("EACH ")) return std::nullopt;
        const std::size_t colon = text_.find(':');
        const std::size_t where = text_.find(" WHERE");
        const std::string head(text_.substr(0, std::min(colon, where)));
        try {
            // The head with an empty body is a statement.
            const std::string whole = head + ": $";
            const auto statement =
                ScriptReader(whole, kStartOfScript, session_.ModelNames()).Next();
            if (!statement.has_value()) return std::nullopt;
            Each each{statement->variable, {}};
            const NamedModel* model = statement->model.has_value()
                                          ? session_.Find(*statement->model)
                                          : session_.Models().data();
            if (model != nullptr && !statement->entityType.empty()) {
                each.first =
                    model->Model().Extent(std::string_view(statement->entityType))->GetMember(0);
            }
            return each;
        } catch (const ScriptError&) {
            return std::nullopt;
        }
    }

    const std::string_view text_;
    const Session& session_;
    const Evaluator& evaluator_;
    std::size_t start_;
    std::vector<std::string> candidates_;
};

}  // namespace

Completion Complete(std::string_view statement, const Session& session,
                    const Evaluator& evaluator) {
    constexpr std::string_view kSql = ".sql ";
    if (statement.starts_with(kSql)) {
        Completion completion = CompleteSql(statement.substr(kSql.size()), session);
        completion.start += kSql.size();
        return completion;
    }
    return Completer(statement, session, evaluator).Complete();
}

}  // namespace host
