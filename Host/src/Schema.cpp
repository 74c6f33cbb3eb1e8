// orx schema: a schema as EXPRESS, or the tables that hold its data sets.

#include <iostream>
#include <regex>

#include "Commands.h"
#include "Console.h"
#include "DataSets.h"
#include "Loading.h"

namespace host {

namespace {

// A schema in a text of several: from SCHEMA to END_SCHEMA; empty where it is not there.
std::string SchemaIn(const std::string& text, std::string_view name) {
    const auto flags = std::regex::icase | std::regex::multiline;
    const std::regex start("^[ \t]*SCHEMA\\s+" + std::string(name) + "\\b", flags);
    const std::regex end("\\bEND_SCHEMA\\s*;", flags);
    std::smatch first;
    std::smatch last;
    if (!std::regex_search(text, first, start)) return {};
    const auto begin = text.begin() + first.position();
    if (!std::regex_search(begin, text.end(), last, end)) return {};
    return std::string(begin, last[0].second) + '\n';
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
