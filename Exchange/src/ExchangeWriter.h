// The parts of the writer that the reader uses.

#ifndef EXCHANGE_WRITER_H
#define EXCHANGE_WRITER_H

#include <span>
#include <string>
#include <string_view>

#include "model/Cell.h"

namespace exchange {

// The nesting limit of values, above that of any schema; deeper values are neither read nor
// written.
constexpr int kDeepestNesting = 100;

// The name of an external reference, which must not be empty, without leading zeros in its number.
std::string ExternalName(std::string_view written);

// Values in parentheses, like the parameters of a record.
std::string ParametersText(std::span<const kor::Cell> cells);

}  // namespace exchange

#endif
