// How results are shown: as values of exchange files (ISO 10303-21), or as JSON.

#ifndef HOST_OUTPUT_H
#define HOST_OUTPUT_H

#include <span>
#include <string>
#include <string_view>

#include "Script.h"
#include "SdaiPrimitiveH.h"
#include "Session.h"

namespace host {

// The value as text: 'text' 12 1.5 .T. #12 (1.,0.,0.) $; an instance of another than the first
// model as @name#12.
std::string ToText(const SdaiPrimitiveH& value, const Session& session);

// A text of the data, as UTF-8, for a reader: printable (see Printable.h).
std::string Readable(std::string_view utf8);

// The name of a file or of a model, which is as the system has it (UTF-8 as a rule, else
// ISO 8859-1), as UTF-8; the same for a reader.
std::string NameToUtf8(std::string_view name);
std::string ReadableName(std::string_view name);

// Prints results to the standard output, one line each.
class Printer {
  public:
    Printer(const Session& session, bool json) : session_(session), json_(json) {}

    // The result of a statement.
    void Print(Position position, const SdaiPrimitiveH& value) const;

    // The results of the items of an EACH for one member.
    void Print(Position position, const SdaiPrimitiveH& member,
               std::span<const SdaiPrimitiveH> values) const;

  private:
    const Session& session_;
    bool json_;
};

}  // namespace host

#endif
