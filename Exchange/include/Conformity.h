// Holding a data set against its schema: attributes that are mandatory, the kinds of values, the
// number of members of aggregates and that those of a set differ.

#ifndef CONFORMITY_H
#define CONFORMITY_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "Model.h"

namespace exchange {

// What is wrong with a value, in UTF-8.
struct Violation {
    const kor::Instance* instance;
    std::string attribute;
    std::string text;
};

struct Conformity {
    std::uint64_t violations = 0;
    // The instances of entity types that the schema does not declare, by type: they are not
    // checked.
    std::map<std::string, std::uint64_t> undeclared;
};

// Calls `tell` for each value that the schema of the model does not allow, in the model's order.
Conformity CheckModel(const kor::Model& model, const std::function<void(const Violation&)>& tell);

}  // namespace exchange

#endif
