// Comparing two data sets by what they hold, whatever their instance numbers and the order of their
// instances.
//
// Each instance of one data set is paired with one of the other: first those whose content is
// equal, what they refer to included; then those of one type whose first text is the same; then
// those that paired instances refer to in the same place. Paired instances are compared attribute
// by attribute, a reference being equal when it leads to the paired instance. So two data sets
// without a difference hold the same instances, connected in the same way.
//
// Attributes are compared by name; one that only one of the schemas declares counts as unset in the
// other. A list or array is compared in order, a set or bag in any order. Reals are equal when they
// have the same bits, or differ by the tolerance at most.

#ifndef COMPARISON_H
#define COMPARISON_H

#include <cstdint>
#include <functional>
#include <string>

#include "Model.h"

namespace exchange {

// A difference, in UTF-8. Of an instance that only one data set has, there is no attribute, and the
// value of the side that has it is the instance's number.
struct Difference {
    std::string entity;
    std::string label;  // by what a reader knows the instance: its first text, what it connects
    std::string attribute;
    std::string left;
    std::string right;
};

// Calls `tell` for each difference, in the order of the left data set's instances, and returns how
// many there are.
std::uint64_t CompareModels(const kor::Model& left, const kor::Model& right, double tolerance,
                            const std::function<void(const Difference&)>& tell);

}  // namespace exchange

#endif
