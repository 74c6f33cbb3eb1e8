// The data that a database holds besides the tables of entity types.

#include "Stored.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "Values.h"

namespace relational {

StoredSchema ReadStoredSchema(Database& database, const Relations& relations) {
    StoredSchema stored{"cdma", false, ""};
    if (!relations.contains(kSchemaTable)) return stored;
    const auto rows = database.Read(kSchemaTable, {"name", "layout"});
    std::vector<Field> row;
    if (!rows->Next(row)) return stored;
    stored.isThere = true;
    stored.name = row[0].text;
    std::int64_t layout = 0;
    if (!WholeNumber(row[1], layout) || layout != kLayoutVersion) {
        stored.problem = "table orx_schema, column layout: " + Shown(row[1]) +
                         ", but this version knows layout " + std::to_string(kLayoutVersion);
    } else if (rows->Next(row)) {
        stored.problem = "table orx_schema has more than one row";
    }
    return stored;
}

std::vector<HeaderRow> ReadHeader(Database& database, const Relations& relations) {
    if (!relations.contains(kHeaderTable)) return {};
    std::vector<std::pair<std::int64_t, HeaderRow>> placed;
    const auto rows = database.Read(kHeaderTable, {"position", "section", "text"});
    for (std::vector<Field> row; rows->Next(row);) {
        std::int64_t position = 0;
        WholeNumber(row[0], position);
        placed.push_back({position, {std::string(row[1].text), std::string(row[2].text)}});
    }
    std::stable_sort(placed.begin(), placed.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<HeaderRow> header;
    header.reserve(placed.size());
    for (auto& [position, one] : placed) header.push_back(std::move(one));
    return header;
}

}  // namespace relational
