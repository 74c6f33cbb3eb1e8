// Shows whether an instance, or its row, has changed: 64 bits for each.

#ifndef RELATIONAL_FINGERPRINT_H
#define RELATIONAL_FINGERPRINT_H

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "Database.h"
#include "Exchange.h"
#include "model/Model.h"

namespace relational {

// Of the values of an instance; references by the instances' numbers.
std::uint64_t FingerprintOf(const kor::Instance& instance);

// Of a field in a place of a row. Those of a row, and of the members of its aggregates, add up, in
// any order.
std::uint64_t FingerprintOf(const Field& field, std::uint64_t place);

// The place of a member of an aggregate.
constexpr std::uint64_t MemberPlace(std::size_t column, std::uint64_t position) {
    return (column + 1) << 40 | position;
}

// The data set as it stood in a database when it was loaded or saved.
struct Baseline {
    struct Row {
        std::uint64_t model;  // of the instance; the lowest bit: whether it is in orx_other
        std::uint64_t row;    // of the fields that are there
    };
    static std::uint64_t Marked(std::uint64_t fingerprint, bool inOther) {
        return (fingerprint & ~std::uint64_t{1}) | (inOther ? 1 : 0);
    }
    static bool IsInOther(const Row& row) { return (row.model & 1) != 0; }

    std::vector<Row> rows;            // in the order of creation
    std::vector<std::string> header;  // the rows of orx_header
    bool ordered = false;             // whether orx_order has the order
};

// What is kept of a data set, by the databases that it was loaded from or saved to.
class Databases final : public exchange::Origin {
  public:
    // Held while the data set is saved.
    std::mutex mutex;
    std::map<std::string, Baseline> baselines;
};

// The rows of orx_header.
struct HeaderRow {
    std::string section;
    std::string text;
};
std::vector<HeaderRow> HeaderRows(const exchange::Header& header,
                                  const exchange::Structure& structure);
// False when a row is none.
bool TakeHeaderRow(const HeaderRow& row, exchange::DataSet& dataSet);
std::vector<std::string> AsTexts(const std::vector<HeaderRow>& rows);

}  // namespace relational

#endif
