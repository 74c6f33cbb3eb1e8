// What the reader needs of the writer.

#ifndef EXCHANGE_WRITER_H
#define EXCHANGE_WRITER_H

#include <span>
#include <string>
#include <string_view>

#include "Cell.h"

namespace exchange {

// Deeper than any schema nests values; neither read nor written.
constexpr int kDeepestNesting = 100;

// The name of an external reference, which is not empty, without the zeros that its number may
// begin with.
std::string ExternalName(std::string_view written);

// Values in parentheses, as an exchange file writes the parameters of a record.
std::string ParametersText(std::span<const kor::Cell> cells);

}  // namespace exchange

#endif
