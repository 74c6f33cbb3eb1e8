// What a query that is being typed may go on with.

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Connection.h"
#include "Signature.h"
#include "console/Display.h"
#include "model/NameTable.h"
#include "script/Script.h"
#include "script/SqlQuery.h"

namespace host {

namespace {

constexpr std::array kWords{
    "AND",   "AS",    "ASC",   "BY",     "CASE",  "COUNT(", "DESC",      "DISTINCT", "ELSE",
    "END",   "FROM",  "GROUP", "HAVING", "IN",    "IS",     "JOIN",      "LEFT",     "LIKE",
    "LIMIT", "NOT",   "NULL",  "ON",     "OR",    "ORDER",  "RECURSIVE", "SELECT",   "SUM(",
    "THEN",  "UNION", "USING", "WHEN",   "WHERE", "WITH",
};

// A name in SQL may have any character that is not ASCII.
bool IsSqlWordCharacter(char c) { return IsWordCharacter(c) || (c & 0x80) != 0; }

std::vector<std::string_view> WordsOf(std::string_view text) {
    std::vector<std::string_view> words;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = at;
        while (end < text.size() && IsSqlWordCharacter(text[end])) ++end;
        if (end != at) words.push_back(text.substr(at, end - at));
        at = std::max(end, at + 1);
    }
    return words;
}

bool Equal(std::string_view a, std::string_view b) { return kor::Folded(a) == kor::Folded(b); }

class SqlCompleter {
  public:
    SqlCompleter(std::string_view query, const Session& session)
        : query_(query), session_(session), words_(WordsOf(query)) {}

    Completion Complete() {
        std::size_t start = query_.size();
        while (start > 0 && IsSqlWordCharacter(query_[start - 1])) --start;
        const std::string_view before = query_.substr(0, start);
        if (std::count(before.begin(), before.end(), '\'') % 2 != 0) return {start, {}};
        if (before.ends_with('.')) {
            const auto owners = WordsOf(before);
            if (!owners.empty()) AddMembersOf(owners.back());
        } else {
            AddAll();
        }
        return Chosen(start);
    }

  private:
    void Add(std::vector<std::string> names) {
        std::move(names.begin(), names.end(), std::back_inserter(candidates_));
    }

    void AddAll() {
        for (const std::string& function : calls::FunctionNames()) Add({function + '('});
        Add({kWords.begin(), kWords.end()});
        for (const NamedModel& model : session_.Models()) {
            Add({NameToUtf8(model.name)});
            Add(sql::TableNames(model.Model()));
            for (const std::string_view word : words_) AddColumns(model, word);
        }
    }

    void AddColumns(const NamedModel& model, std::string_view table) {
        Add(sql::ColumnNames(model.Model(), table));
    }

    // The tables of a model, or the columns of a table: the one of that name, or the one that the
    // query gives that name: TABLE name, TABLE AS name.
    void AddMembersOf(std::string_view owner) {
        for (const NamedModel& model : session_.Models()) {
            if (Equal(NameToUtf8(model.name), owner)) Add(sql::TableNames(model.Model()));
            AddColumns(model, owner);
            for (std::size_t i = 1; i < words_.size(); ++i) {
                if (!Equal(words_[i], owner)) continue;
                const bool hasAs = i > 1 && Equal(words_[i - 1], "AS");
                AddColumns(model, words_[hasAs ? i - 2 : i - 1]);
            }
        }
    }

    // Those that begin with what is typed.
    Completion Chosen(std::size_t start) {
        const std::string typed = kor::Folded(query_.substr(start));
        std::erase_if(candidates_, [&](const std::string& name) {
            return !kor::Folded(name).starts_with(typed);
        });
        std::sort(candidates_.begin(), candidates_.end());
        candidates_.erase(std::unique(candidates_.begin(), candidates_.end()), candidates_.end());
        return {start, std::move(candidates_)};
    }

    const std::string_view query_;
    const Session& session_;
    const std::vector<std::string_view> words_;
    std::vector<std::string> candidates_;
};

}  // namespace

Completion CompleteSql(std::string_view query, const Session& session) {
    return SqlCompleter(query, session).Complete();
}

}  // namespace host
