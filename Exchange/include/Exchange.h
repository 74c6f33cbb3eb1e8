// Data sets: EXPRESS schemas (ISO 10303-11) and exchange files (ISO 10303-21), read into models of
// the stand-alone platform and written from them.
//
// Reading takes exchange files of editions 1 to 3: several DATA sections, comments, binary values,
// complex instances, typed parameters, references in both directions. ANCHOR and REFERENCE
// sections, the names of DATA sections and nested scopes are kept; a SIGNATURE is dropped with a
// warning. Texts become ISO 8859-1; a character beyond it stays as the directive \X2\ or \X4\ that
// it is, which the writer passes through. An entity type that the schema does not declare is kept
// with its values, as they are.
//
// Nothing here throws for what a file holds: what is wrong is told in messages, each with its
// place. Only a lack of memory throws (std::bad_alloc).

#ifndef EXCHANGE_H
#define EXCHANGE_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Dictionary.h"
#include "Model.h"

namespace exchange {

// ---- Messages

struct Message {
    std::string file;
    std::uint64_t line = 0;    // 0: about the file as a whole
    std::uint64_t column = 0;  // in bytes
    std::string text;
    bool mendable = false;  // a lenient reading goes on behind it

    // FILE:LINE:COLUMN: text, or FILE: text
    std::string ToString() const;
};

// What there is to say about a file: the first messages of each kind, and how many there were.
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

// The schemas of an EXPRESS file or text; empty when there is an error. Entity types, their
// explicit attributes and redeclarations, and the types that they use are taken; the rest of the
// language is skipped.
std::vector<SchemaPtr> ReadSchemas(const std::string& path, Messages& messages);
std::vector<SchemaPtr> ParseSchemas(std::string_view text, const std::string& name,
                                    Messages& messages);

// The schemas that data sets can be read with: those added, the first added first, then the
// built-in ones. Names match without regard to case.
class SchemaCatalog {
  public:
    void Add(SchemaPtr schema) { added_.push_back(std::move(schema)); }

    // Null when no schema has the name.
    SchemaPtr Find(std::string_view name) const;

    std::vector<std::string> Names() const;

  private:
    std::vector<SchemaPtr> added_;
};

// The names of the built-in schemas, and one of them; null for a name that is none.
std::vector<std::string> BuiltInSchemaNames();
SchemaPtr BuiltInSchema(std::string_view name);

// ---- Data sets

// A record of the header section: its keyword, and its parameters as an exchange file writes them.
struct HeaderRecord {
    std::string keyword;
    std::string parameters;
};

using Header = std::vector<HeaderRecord>;

// What an exchange file has around its instances, kept to be written again.
struct Structure {
    // A data section: its parameters in parentheses, empty where it has none, and how many
    // instances stand before it. New instances stand in the last section.
    struct Section {
        std::string parameters;
        std::uint64_t first = 0;
    };
    // A scope of the first edition: the instances from `first` up to the one that they belong to,
    // both counted from 0 in the order of the model, and the names of those that others may use,
    // as the file has them: " /#2,#3/".
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

struct DataSet {
    Header header;
    std::unique_ptr<kor::Model> model;
    Structure structure;
};

// The name of an external reference: #5 or @5, for which the reference section gives an address, or
// #NAME or @NAME, a constant of the schema. In a model it is a select value that holds nothing,
// whose defined type is that name. Empty for any other value.
std::string_view ExternalReference(const SdaiPrimitiveH& value);

struct ReadOptions {
    // Reads what can be read of a damaged file: each error becomes a warning, a dangling reference
    // an unset value, a broken instance is left out.
    bool lenient = false;
    // Called now and then with the number of bytes read so far.
    std::function<void(std::uint64_t)> progress;
    // A string or binary of more bytes, in the file or in memory, is refused.
    std::size_t longestText = std::size_t{1} << 30;
};

// Reads an exchange file or text, with the schema that it names. A data set without a model when
// there is an error: a file is read as a whole or not at all.
DataSet ReadDataSet(const std::string& path, const SchemaCatalog& schemas,
                    const ReadOptions& options, Messages& messages);
DataSet ParseDataSet(std::string_view text, const std::string& name, const SchemaCatalog& schemas,
                     const ReadOptions& options, Messages& messages);

// The header of a new file.
Header NewHeader(const kor::Schema& schema, const std::string& name);

// An empty data set of a schema, with the header of a new file.
DataSet NewDataSet(SchemaPtr schema, const std::string& name);

// The data set as an exchange file. What the text cannot hold is told in `problem`, which is empty
// where there is nothing of it; such a text need not be readable.
std::string ToExchangeText(const DataSet& dataSet, std::string* problem = nullptr);

struct WriteOptions {
    // Writes into the file that is there, whatever other names it has, rather than put a new one in
    // its place.
    bool inPlace = false;
};

// Writes it: to a file of its own, which takes the target's place at the end. On failure, which is
// reported, and when the program is ended meanwhile, the target is as it was. A link stays, and the
// file that it leads to is written. Mode and owner are kept; a warning says where the system does
// not allow that. A target with further hard links is refused unless it is written in place.
bool WriteDataSet(const DataSet& dataSet, const std::string& path, Messages& messages,
                  const WriteOptions& options = {});
bool WriteDataSet(const Header& header, const Structure& structure, const kor::Model& model,
                  const std::string& path, Messages& messages, const WriteOptions& options = {});

// Writes any other text in the same way.
bool WriteText(std::string_view text, const std::string& path, Messages& messages,
               const WriteOptions& options = {});

}  // namespace exchange

#endif
