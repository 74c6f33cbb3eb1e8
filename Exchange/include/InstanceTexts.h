// Single instances and values as exchange files (ISO 10303-21) write them, for places other than
// exchange files that keep some of them as texts. A real that is not finite is nan, inf or -inf
// there.

#ifndef INSTANCETEXTS_H
#define INSTANCETEXTS_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Exchange.h"
#include "model/Model.h"

namespace exchange {

// Writes them. What is returned is valid until the next call.
class InstanceWriter {
  public:
    // `structure`: that of the data set, which has the addresses of external references.
    explicit InstanceWriter(const Structure& structure);
    ~InstanceWriter();

    // The instance without its name: TYPE(...), or (TYPE(...)TYPE(...)).
    std::string_view Record(const kor::Instance& instance);
    // A value of the instance.
    std::string_view Value(const kor::Instance& instance, const kor::Cell& value);

    // The first thing that the texts so far cannot hold; empty when there was none.
    const std::string& Problem() const;

  private:
    class Texts;
    std::unique_ptr<Texts> texts_;
};

// Reads them into a model. References to instances wait for them, as those of a file do: the model
// settles them at the end.
class InstanceTextReader {
  public:
    InstanceTextReader(kor::Model& model, const Structure& structure);
    ~InstanceTextReader();

    // The value of a text, where the domain is declared. False, with the error, when it is none;
    // the caller owns what the cell owns.
    bool Value(std::string_view text, const kor::Domain* domain, kor::Cell& value,
               std::string& error);

    // Makes the instance; the number must be free. Null, with the error, when the text is not that
    // of an instance.
    kor::Instance* Instance(std::uint64_t id, std::string_view text, std::string& error);

  private:
    class Texts;
    std::unique_ptr<Texts> texts_;
};

}  // namespace exchange

#endif
