// orx schema: a schema as EXPRESS, or the tables that hold its data sets.

#include <algorithm>
#include <iostream>
#include <string>
#include <string_view>

#include "DataSets.h"
#include "commands/Commands.h"
#include "commands/Loading.h"
#include "console/Console.h"
#include "services/Suggestions.h"

namespace host {

namespace {

// Whether only blanks precede the position in its line.
bool BeginsLine(std::string_view text, std::size_t at) {
    const std::size_t before = text.substr(0, at).find_last_not_of(" \t");
    return before == std::string_view::npos || text[before] == '\n' || text[before] == '\r';
}

// A schema in a text of several: from SCHEMA to END_SCHEMA; empty where it is not there.
std::string SchemaIn(const std::string& text, std::string_view name) {
    const std::string folded = kor::Folded(text);
    const std::string wanted = kor::Folded(name);
    static constexpr std::string_view kSchema = "SCHEMA";
    std::size_t at = folded.find(kSchema);
    for (; at != std::string::npos; at = folded.find(kSchema, at + 1)) {
        const std::size_t after = at + kSchema.size();
        const std::size_t word = folded.find_first_not_of(" \t\r\n", after);
        if (word == std::string::npos) return {};
        const std::size_t end = std::min(folded.find_first_of("; \t\r\n", word), folded.size());
        if (word == after || folded.substr(word, end - word) != wanted || !BeginsLine(text, at)) {
            continue;
        }
        const std::size_t last = folded.find(';', folded.find("END_SCHEMA", end));
        return last == std::string::npos ? "" : text.substr(at, last + 1 - at) + '\n';
    }
    return {};
}

}  // namespace

int PrintSchema(const Options& options) {
    Session session;
    Load(session, options);
    const exchange::SchemaPtr schema = session.schemas.Find(options.schemaName);
    if (schema == nullptr) {
        Refuse("unknown schema '" + options.schemaName + "'" +
               kor::DidYouMean(options.schemaName, session.schemas.Names()) +
               " (give its EXPRESS file with --schema)");
    }
    if (!options.sql.empty()) {
        const std::string tables = relational::TablesAsSql(*schema, options.sql);
        if (tables.empty()) {
            Refuse("--sql takes sqlite or postgresql, found '" + options.sql + "'" +
                   kor::DidYouMean(options.sql, relational::DatabaseKinds()));
        }
        std::cout << tables;
        return Flush() ? kDone : kUnusable;
    }
    std::string text;
    for (const std::string& file : options.schemas) {
        if (text.empty()) text = SchemaIn(ReadText(file), schema->Name().View());
    }
    std::cout << (text.empty() ? exchange::BuiltInSchemaText(options.schemaName) : text);
    return Flush() ? kDone : kUnusable;
}

}  // namespace host
