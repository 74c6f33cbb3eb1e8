// Collects the problems of an exchange file: the reader's messages, each with its place.

#ifndef EXCHANGE_PROBLEMS_H
#define EXCHANGE_PROBLEMS_H

#include <string>
#include <utility>

#include "Exchange.h"
#include "Input.h"

namespace exchange {

// Thrown to leave a broken statement.
struct SyntaxError {
    Place place;
    std::string text;
};

class Problems {
  public:
    Problems(const std::string& file, bool lenient, Messages& messages)
        : file_(file), lenient_(lenient), messages_(messages) {}

    // The data section begins, in which a lenient reader repairs errors.
    void EnterData() { inData_ = true; }
    bool InData() const { return inData_; }
    // Whether errors are repaired at this point.
    bool Mends() const { return lenient_ && inData_; }

    void Warn(Place place, std::string text) {
        messages_.AddWarning({file_, place.line, place.column, std::move(text)});
    }

    // Reports an error, or a warning if it is repaired.
    void Report(Place place, std::string text) {
        if (Mends()) {
            Warn(place, std::move(text));
        } else {
            messages_.AddError({file_, place.line, place.column, std::move(text), inData_});
        }
    }

    // An error after which a lenient reader continues; a strict one leaves the statement.
    void Mend(Place place, std::string text) {
        if (!Mends()) throw SyntaxError{place, std::move(text)};
        Warn(place, std::move(text));
    }

  private:
    const std::string& file_;
    const bool lenient_;
    Messages& messages_;
    bool inData_ = false;
};

}  // namespace exchange

#endif
