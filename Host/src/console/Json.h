// JSON (RFC 8259), written sequentially into a text, so that results of any size need no more
// memory than their text.

#ifndef HOST_JSON_H
#define HOST_JSON_H

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

class Json {
  public:
    // {...} and [...] around the output of write().
    template <class Write>
    Json& Object(Write write) {
        Begin('{');
        write();
        text_ += '}';
        return *this;
    }
    template <class Write>
    Json& Array(Write write) {
        Begin('[');
        write();
        text_ += ']';
        return *this;
    }

    // The name of the next member of an object.
    Json& Name(std::string_view name);

    // Values. Texts are UTF-8: control characters (see IsControl) are escaped, and U+FFFD replaces
    // invalid bytes. A real that is not finite becomes a text: "nan", "inf", "-inf".
    Json& Text(std::string_view utf8);
    Json& Integer(std::int64_t value);
    Json& Count(std::uint64_t value);
    Json& Real(double value);
    Json& Truth(bool value);
    Json& Null();

    // The text, one line.
    const std::string& Line() const { return text_; }

  private:
    // Separates a value from the previous one.
    void Separate();
    void Begin(char bracket);
    void Quote(std::string_view utf8);

    std::string text_;
};

}  // namespace host

#endif
