// Texts in a page that is both HTML and well-formed XML.

#ifndef HOST_HTML_H
#define HOST_HTML_H

#include <string>
#include <string_view>

namespace host {

// A readable text (see Readable in Output.h), so that it stands for itself in content and in
// attribute values.
std::string Escaped(std::string_view text);

// A number as it is shown: at most `digits` significant digits, no exponent where it can be
// avoided.
std::string Shown(double value, int digits = 6);

// A coordinate in a drawing.
std::string Pixels(double value);

// The number of characters of a UTF-8 text; the text cut to that many, "…" in the place of the
// rest.
std::size_t Characters(std::string_view utf8);
std::string Shortened(std::string_view utf8, std::size_t most);

}  // namespace host

#endif
