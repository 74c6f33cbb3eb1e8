// The display of results: in the notation of exchange files (ISO 10303-21), or as JSON.

#ifndef HOST_DISPLAY_H
#define HOST_DISPLAY_H

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "SdaiPrimitiveH.h"
#include "commands/Options.h"
#include "console/Columns.h"
#include "console/Json.h"
#include "script/Script.h"
#include "script/Session.h"

namespace host {

// The value as text: 'text' 12 1.5 .T. #12 (1.,0.,0.) $; an instance of a model other than the
// first as @name#12.
std::string ToText(const SdaiPrimitiveH& value, const Session& session);

// The value for a reader: as above, but with the printable characters of texts instead of
// directives; for CSV, a text without its quotes, and nothing for unset.
std::string ToShown(const SdaiPrimitiveH& value, const Session& session, Form form);

// The value as JSON.
void WriteValue(Json& json, const SdaiPrimitiveH& value, const Session& session);

// A text of the data for a reader, as printable UTF-8 (see Printable.h).
std::string Readable(std::string_view utf8);

// The name of a file or model, as the system has it (normally UTF-8, otherwise ISO 8859-1), as
// UTF-8; and the same for a reader.
std::string NameToUtf8(std::string_view name);
std::string ReadableName(std::string_view name);

// The format of results that the command line selects: by default, columns on a terminal and tabs
// otherwise.
Form FormOf(const Options& options);

// Prints results to the standard output.
class Printer {
  public:
    Printer(const Session& session, Form form) : session_(session), form_(form) {}

    // The result of a statement.
    void Print(Place place, const SdaiPrimitiveH& value);

    // The results of an EACH: between Begin and End, those of its items for one member after the
    // other.
    void Begin(const Statement& each);
    void Print(Place place, const SdaiPrimitiveH& member, std::span<const SdaiPrimitiveH> values);
    void End();

    // An error in a script, if results are objects.
    void PrintError(const std::string& source, const ScriptError& error);

  private:
    const Session& session_;
    const Form form_;
    std::vector<std::string> names_;  // of the items of an EACH
    std::unique_ptr<Columns> rows_;
};

}  // namespace host

#endif
