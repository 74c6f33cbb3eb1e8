// Checks a data set against its schema: mandatory attributes, the kinds of values, the number of
// members of aggregates, and that the members of a set are distinct.

#ifndef CONFORMITY_H
#define CONFORMITY_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "model/Model.h"

namespace exchange {

// A violation of the schema by a value, in UTF-8.
struct Violation {
    const kor::Instance* instance;
    std::string attribute;
    std::string text;
};

struct Conformity {
    std::uint64_t violations = 0;
    // The number of instances of each entity type that the schema does not declare; these are not
    // checked.
    std::map<std::string, std::uint64_t> undeclared;
};

// Calls `tell` for each value that violates the model's schema, in the model's order.
Conformity CheckModel(const kor::Model& model, const std::function<void(const Violation&)>& tell);

}  // namespace exchange

#endif
