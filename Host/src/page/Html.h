// Texts for a page that is both HTML and well-formed XML.

#ifndef HOST_HTML_H
#define HOST_HTML_H

#include <string>
#include <string_view>
#include <vector>

namespace host {

// A readable text (see Readable in Display.h), escaped for content and attribute values.
std::string Escaped(std::string_view text);

// A number for display: at most `digits` significant digits, without an exponent if possible.
std::string Shown(double value, int digits = 6);

// A coordinate in a drawing.
std::string Pixels(double value);

// "3 parts", "1 part".
std::string Plural(std::size_t count, const std::string& what);

// A faint paragraph of escaped text.
std::string Paragraph(const std::string& text);

// A table; columns without any text are omitted.
struct Column {
    std::string title;               // escaped, as the cells
    std::vector<std::string> cells;  // as many as in every other column
    bool numeric = false;
};
std::string Table(const std::vector<Column>& columns);

}  // namespace host

#endif
