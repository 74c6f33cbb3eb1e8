// What may have been meant by a name that no function has, for an engine's messages.

#ifndef ORXSUGGESTION_H
#define ORXSUGGESTION_H

#include <array>
#include <cstddef>
#include <string_view>

#include "ORXExportTable.h"

namespace orx {

// The function whose name is the fewest edits away from another name, for a message about that:
// empty if none is near enough to be a slip of the pen.
inline std::string_view NearestExport(std::string_view name) {
    const auto distance = [](std::string_view a, std::string_view b) {
        std::array<std::size_t, 32> row{};  // longer than any name
        for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
        for (std::size_t i = 0; i < a.size(); ++i) {
            std::size_t diagonal = row[0]++;
            for (std::size_t j = 0; j < b.size(); ++j) {
                const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
                diagonal = row[j + 1];
                const std::size_t inserted = row[j] < diagonal ? row[j] : diagonal;
                row[j + 1] = replaced < inserted + 1 ? replaced : inserted + 1;
            }
        }
        return row[b.size()];
    };
    std::string_view nearest;
    std::size_t least = name.size() / 3 + 2;
    for (const Export& row : kExports) {
        const std::size_t edits = distance(name, row.name);
        if (edits >= least) continue;
        least = edits;
        nearest = row.name;
    }
    return nearest;
}

}  // namespace orx

#endif
