// Values of a model as fields of rows, and back.

#ifndef RELATIONAL_VALUES_H
#define RELATIONAL_VALUES_H

#include <cstdint>
#include <string>
#include <string_view>

#include "Database.h"
#include "InstanceTexts.h"
#include "Layout.h"
#include "model/Cell.h"
#include "model/Model.h"

namespace relational {

// Whether a column of the kind can hold the value exactly.
bool Fits(const kor::Cell& cell, exchange::ColumnKind kind, const kor::Domain* domain,
          const Dialect& dialect);

// Whether the table of its type can hold the instance exactly.
bool Fits(const kor::Instance& instance, const Table& table, const Dialect& dialect);

// The members of an aggregate that fits.
std::size_t MemberCount(const kor::Cell& aggregate);
kor::Cell MemberOf(const kor::Cell& aggregate, std::size_t position);

// Makes fields of values that fit.
class FieldMaker {
  public:
    explicit FieldMaker(exchange::InstanceWriter& writer) : writer_(writer) {}

    // `buffer` holds the text where the cell does not; the field is valid as long as both.
    Field Make(const kor::Instance& instance, const kor::Cell& cell, exchange::ColumnKind kind,
               std::string& buffer);

  private:
    exchange::InstanceWriter& writer_;
};

// Makes values of fields.
class CellMaker {
  public:
    CellMaker(kor::Model& model, exchange::InstanceTextReader& texts)
        : model_(model), texts_(texts) {}

    // False, with the error, when the field holds no such value. The caller owns what the cell
    // owns.
    bool Make(const Field& field, exchange::ColumnKind kind, const kor::Domain* domain,
              kor::Cell& cell, std::string& error);

  private:
    bool MakeText(const Field& field, const kor::Domain* domain, kor::Cell& cell,
                  std::string& error);

    kor::Model& model_;
    exchange::InstanceTextReader& texts_;
    std::string buffer_;
};

// The whole number that a field holds, if it does.
bool WholeNumber(const Field& field, std::int64_t& number);

// What a field holds, for a message.
std::string Shown(const Field& field);

}  // namespace relational

#endif
