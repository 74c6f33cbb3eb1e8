// Texts for a page that is both HTML and well-formed XML.

#ifndef HOST_HTML_H
#define HOST_HTML_H

#include <string>
#include <string_view>

namespace host {

// A readable text (see Readable in Output.h), escaped for content and attribute values.
std::string Escaped(std::string_view text);

// A number for display: at most `digits` significant digits, without an exponent if possible.
std::string Shown(double value, int digits = 6);

// A coordinate in a drawing.
std::string Pixels(double value);

// The number of characters of a UTF-8 text; the text shortened to that many, with "…" instead of
// the rest.
std::size_t Characters(std::string_view utf8);
std::string Shortened(std::string_view utf8, std::size_t most);

}  // namespace host

#endif
