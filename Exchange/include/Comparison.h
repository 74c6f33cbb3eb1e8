// Compares two data sets by content, regardless of instance numbers and the order of instances.
//
// Each instance of one data set is paired with one of the other: first instances with equal
// content, including what they refer to; then those of the same type with the same first text; then
// those that paired instances refer to in the same place. Paired instances are compared attribute
// by attribute; references are equal if they lead to paired instances. Two data sets without
// differences therefore contain the same instances, connected in the same way.
//
// Attributes are compared by name; one that only one of the schemas declares counts as unset in the
// other. A list or array is compared in order, a set or bag in any order. Reals are equal if they
// have the same bits or differ by at most the tolerance.

#ifndef COMPARISON_H
#define COMPARISON_H

#include <cstdint>
#include <functional>
#include <string>

#include "model/Model.h"

namespace exchange {

// A difference, in UTF-8. For an instance that only one data set has, the attribute is empty and
// that side's value is the instance number.
struct Difference {
    std::string entity;
    std::string label;  // identifies the instance to a reader: its first text, or what it connects
    std::string attribute;
    std::string left;
    std::string right;
};

// Calls `tell` for each difference, in the order of the left data set's instances, and returns the
// number of differences.
std::uint64_t CompareModels(const kor::Model& left, const kor::Model& right, double tolerance,
                            const std::function<void(const Difference&)>& tell);

}  // namespace exchange

#endif
