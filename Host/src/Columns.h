// Rows of fields, one line each.

#ifndef HOST_COLUMNS_H
#define HOST_COLUMNS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// Aligned: columns of a width each, under headers, for a terminal. Tabs: the fields with tabs
// between, without headers. Csv: RFC 4180, headers first. Json: not as rows but as objects, which
// whoever has the values writes.
enum class Form { Aligned, Tabs, Csv, Json };

class Columns {
  public:
    // Writes to the standard output.
    Columns(Form form, std::vector<std::string> headers)
        : form_(form), headers_(std::move(headers)) {}
    Columns(const Columns&) = delete;
    Columns& operator=(const Columns&) = delete;
    // Writes the rows that wait.
    ~Columns();

    // Adds a row of printable UTF-8. Aligned rows wait until the widths are known: those of the
    // first thousand rows.
    void Add(std::vector<std::string> fields);

  private:
    void Release();
    void WriteAligned(const std::vector<std::string>& fields, bool isHeader) const;

    const Form form_;
    const std::vector<std::string> headers_;
    std::vector<std::vector<std::string>> waiting_;
    std::vector<std::size_t> widths_;  // once they are known
    bool begun_ = false;
};

// A field of CSV: between double quotes where it holds a comma, a quote, a line break or blanks at
// its ends.
std::string CsvField(std::string_view text);

}  // namespace host

#endif
