// Data sets: EXPRESS schemas (ISO 10303-11) and exchange files (ISO 10303-21), read into models of
// the stand-alone platform and written from them.
//
// The reader accepts exchange files of editions 1 to 3: several DATA sections, comments, binary
// values, complex instances, typed parameters, references in both directions. ANCHOR and REFERENCE
// sections, the names of DATA sections and nested scopes are kept; a SIGNATURE is dropped with a
// warning. Texts become ISO 8859-1; a character beyond it stays as the directive \X2\ or \X4\ that
// it is, which the writer passes through. Instances of entity types that the schema does not
// declare are kept with their values unchanged.
//
// Nothing here throws because of a file's content: problems are reported as messages, each with its
// place. Only running out of memory throws (std::bad_alloc).

#ifndef EXCHANGE_H
#define EXCHANGE_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/Dictionary.h"
#include "model/Model.h"

namespace exchange {

// ---- Messages

struct Message {
    std::string file;
    std::uint64_t line = 0;    // 0: the message is about the whole file
    std::uint64_t column = 0;  // in bytes
    std::string text;
    bool mendable = false;  // a lenient reader continues after it

    // FILE:LINE:COLUMN: text, or FILE: text
    std::string ToString() const;
};

// The messages about a file: the first of each kind, and their number.
class Messages {
  public:
    static constexpr std::size_t kKept = 20;

    void AddError(Message message) { Add(errors_, errorCount_, std::move(message)); }
    void AddWarning(Message message) { Add(warnings_, warningCount_, std::move(message)); }

    const std::vector<Message>& Errors() const { return errors_; }
    const std::vector<Message>& Warnings() const { return warnings_; }
    std::uint64_t ErrorCount() const { return errorCount_; }
    std::uint64_t WarningCount() const { return warningCount_; }

  private:
    static void Add(std::vector<Message>& kept, std::uint64_t& count, Message message) {
        if (count++ < kKept) kept.push_back(std::move(message));
    }

    std::vector<Message> errors_;
    std::vector<Message> warnings_;
    std::uint64_t errorCount_ = 0;
    std::uint64_t warningCount_ = 0;
};

// ---- Schemas

using SchemaPtr = std::shared_ptr<const kor::Schema>;

// The schemas of an EXPRESS file or text; empty on error. Entity types, their explicit attributes
// and redeclarations, and the types that they use are read; the rest of the language is skipped.
std::vector<SchemaPtr> ReadSchemas(const std::string& path, Messages& messages);
std::vector<SchemaPtr> ParseSchemas(std::string_view text, const std::string& name,
                                    Messages& messages);

// The schemas that data sets can be read with: first those added, in order, then the built-in ones.
// Names are case-insensitive.
class SchemaCatalog {
  public:
    void Add(SchemaPtr schema) { added_.push_back(std::move(schema)); }

    // Returns null if there is no schema of that name.
    SchemaPtr Find(std::string_view name) const;

    // The schema with which a file is read that names its schema so: the one of that name; a
    // built-in one with whose name it begins, as those of conformance classes and editions do
    // (AUTOMOTIVE_DESIGN_CC2); for another application protocol the latest built-in one, which has
    // the resource schemas of product structure, with a warning that says so. Null for any other
    // name.
    struct ForFile {
        SchemaPtr schema;
        std::string warning;
    };
    ForFile FindForFile(std::string_view name) const;

    std::vector<std::string> Names() const;

  private:
    std::vector<SchemaPtr> added_;
};

// The names of the built-in schemas, and a built-in schema by name; null if there is none.
std::vector<std::string> BuiltInSchemaNames();
SchemaPtr BuiltInSchema(std::string_view name);

// A built-in schema as EXPRESS; empty for a name that is none.
std::string BuiltInSchemaText(std::string_view name);

// ---- Data sets

// A record of the header section: its keyword, and its parameters as an exchange file writes them.
struct HeaderRecord {
    std::string keyword;
    std::string parameters;
};

using Header = std::vector<HeaderRecord>;

// The parts of an exchange file around its instances, kept so that they can be written again.
struct Structure {
    // A data section: its parameters in parentheses, empty if it has none, and the number of
    // instances before it. New instances belong to the last section.
    struct Section {
        std::string parameters;
        std::uint64_t first = 0;
    };
    // A scope of the first edition: the instances from `first` up to their owner, both counted from
    // 0 in the order of the model, and the names that it exports, as written in the file: "
    // /#2,#3/".
    struct Scope {
        std::uint64_t first;
        std::uint64_t owner;
        std::string exported;
    };

    std::vector<std::string> anchors;     // <name>=#1{tag:'x'}
    std::vector<std::string> references;  // #5=<address>, @5=<address>
    std::vector<Section> sections{Section()};
    std::vector<Scope> scopes;
};

// What the store that a data set was read from remembers of it, to find out later what has changed.
class Origin {
  public:
    virtual ~Origin() = default;
};

struct DataSet {
    Header header;
    std::unique_ptr<kor::Model> model;
    Structure structure;
    std::shared_ptr<Origin> origin = nullptr;  // null where nothing is kept
};

// The name of an external reference: #5 or @5, whose address is in the reference section, or #NAME
// or @NAME, a constant of the schema. In a model, an external reference is an unset select value
// whose defined type is that name. Returns "" for any other value.
std::string_view ExternalReference(const SdaiPrimitiveH& value);

struct ReadOptions {
    // Reads as much as possible of a damaged file: each error becomes a warning, a dangling
    // reference becomes an unset value, a broken instance is left out.
    bool lenient = false;
    // Called from time to time with the number of bytes read so far.
    std::function<void(std::uint64_t)> progress;
    // The maximum size of a string or binary in bytes, in the file or in memory; longer ones are
    // errors.
    std::size_t longestText = std::size_t{1} << 30;
    // How many threads may read; 0: as many as there are processors. Two are of use, for files
    // from a megabyte. The data set and the messages are the same.
    std::size_t threads = 0;
    // The offset near which a second thread begins, whatever the size; unset: in the middle.
    std::optional<std::uint64_t> secondHalf = std::nullopt;
    // The schema to read with, whatever the file names; null: the one that it names.
    SchemaPtr schema = nullptr;
};

// Reads an exchange file or text with the schema that it names (SchemaCatalog::FindForFile). On
// error, the data set has no model: a file is read completely or not at all.
DataSet ReadDataSet(const std::string& path, const SchemaCatalog& schemas,
                    const ReadOptions& options, Messages& messages);
DataSet ParseDataSet(std::string_view text, const std::string& name, const SchemaCatalog& schemas,
                     const ReadOptions& options, Messages& messages);

// The header of a new file.
Header NewHeader(const kor::Schema& schema, const std::string& name);

// An empty data set of a schema, with the header of a new file.
DataSet NewDataSet(SchemaPtr schema, const std::string& name);

// The data set as an exchange file. If it contains a value that an exchange file cannot express,
// `problem` describes it, and the text may not be readable; otherwise `problem` is empty.
std::string ToExchangeText(const DataSet& dataSet, std::string* problem = nullptr);

struct WriteOptions {
    // Overwrites the existing file, which may have further hard links, instead of replacing it.
    bool inPlace = false;
};

// Writes the data set to a temporary file that replaces the target at the end. If this fails, which
// is reported, or if the program is terminated, the target is unchanged. If the target is a
// symbolic link, the file that it leads to is written. Mode and owner are kept; a warning reports
// if the system does not allow that. A target with further hard links is refused unless it is
// written in place.
bool WriteDataSet(const DataSet& dataSet, const std::string& path, Messages& messages,
                  const WriteOptions& options = {});
bool WriteDataSet(const Header& header, const Structure& structure, const kor::Model& model,
                  const std::string& path, Messages& messages, const WriteOptions& options = {});

// Reads a whole file, or for "-" the standard input to its end. Returns false, with the reason, on
// error.
bool ReadText(const std::string& path, std::string& text, std::string& reason);

// Writes any text in the same way as a data set.
bool WriteText(std::string_view text, const std::string& path, Messages& messages,
               const WriteOptions& options = {});

}  // namespace exchange

#endif
