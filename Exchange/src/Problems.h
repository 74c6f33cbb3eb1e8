// Where what is wrong with an exchange file goes: the messages of its reading, each with its place.

#ifndef EXCHANGE_PROBLEMS_H
#define EXCHANGE_PROBLEMS_H

#include <string>

#include "Exchange.h"
#include "Input.h"

namespace exchange {

// What a broken statement is left by.
struct SyntaxError {
    Place place;
    std::string text;
};

class Problems {
  public:
    Problems(const std::string& file, bool lenient, Messages& messages)
        : file_(file), lenient_(lenient), messages_(messages) {}

    // From now on what is read is the data section, which a lenient reading mends.
    void EnterData() { inData_ = true; }
    bool InData() const { return inData_; }
    // Whether errors are mended now.
    bool Mends() const { return lenient_ && inData_; }

    void Warn(Place place, std::string text) {
        messages_.AddWarning({file_, place.line, place.column, std::move(text)});
    }

    // An error; where it is mended, a warning.
    void Report(Place place, std::string text) {
        if (Mends()) {
            Warn(place, std::move(text));
        } else {
            messages_.AddError({file_, place.line, place.column, std::move(text), inData_});
        }
    }

    // What a lenient reading goes on behind; a strict one leaves the statement.
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
