// Rows of fields, one per line.

#ifndef HOST_COLUMNS_H
#define HOST_COLUMNS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

// Aligned: columns with headers, for a terminal. Box: the same with lines between. Tabs: fields
// separated by tabs, without headers. Csv: RFC 4180, with headers. Json: objects instead of rows,
// written by the caller.
enum class Form { Aligned, Tabs, Box, Csv, Json };

class Columns {
  public:
    // Writes to the standard output.
    Columns(Form form, std::vector<std::string> headers)
        : form_(form), headers_(std::move(headers)) {}
    Columns(const Columns&) = delete;
    Columns& operator=(const Columns&) = delete;
    // Writes the pending rows.
    ~Columns();

    // Writes the headers of Csv, which otherwise come with the first row.
    void Begin();

    // Adds a row of printable UTF-8. Aligned rows are held back until the widths are known, which
    // are those of the first thousand rows.
    void Add(std::vector<std::string> fields);

  private:
    void Release();
    void WriteAligned(const std::vector<std::string>& fields, bool isHeader) const;
    void WriteBoxed(const std::vector<std::string>& fields) const;
    void WriteRule(const char* left, const char* middle, const char* right) const;
    void WriteFitted(const std::vector<std::string>& fields, bool isHeader) const;

    const Form form_;
    const std::vector<std::string> headers_;
    std::vector<std::vector<std::string>> waiting_;
    std::vector<std::size_t> widths_;  // once they are known
    bool begun_ = false;
};

// A CSV field for the standard output: in double quotes if it contains a comma, a quote or a line
// break, or begins or ends with a blank. On a terminal it is made printable; anywhere else a text
// keeps every character.
std::string CsvField(std::string_view text);

}  // namespace host

#endif
