// What the reader needs of the writer.

#ifndef EXCHANGE_WRITER_H
#define EXCHANGE_WRITER_H

#include <span>
#include <string>

#include "Cell.h"

namespace exchange {

// Deeper than any schema nests values; neither read nor written.
constexpr int kDeepestNesting = 100;

// Values in parentheses, as an exchange file writes the parameters of a record.
std::string ParametersText(std::span<const kor::Cell> cells);

}  // namespace exchange

#endif
