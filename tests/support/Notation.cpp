// Reads tables from text.

#include "Notation.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace tables {

namespace {

std::string Upper(std::string_view text) {
    std::string upper(text);
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return upper;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsWord(char c) { return c == '_' || std::isalnum(static_cast<unsigned char>(c)) != 0; }

// Reads words and signs from the front of a text; blanks and comments are skipped.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : rest_(text) { SkipBlanks(); }

    bool AtEnd() const { return rest_.empty(); }
    char Peek() const { return rest_.empty() ? '\0' : rest_.front(); }

    char TakeCharacter() {
        if (rest_.empty()) throw std::runtime_error("the text ends too early");
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }
    bool Take(char sign) {
        if (Peek() != sign) return false;
        rest_.remove_prefix(1);
        SkipBlanks();
        return true;
    }
    void Expect(char sign) {
        if (!Take(sign)) Fail(std::string("'") + sign + "'");
    }

    // The characters up to the first for which `isPart` does not hold.
    template <class IsPart>
    std::string TakeWhile(IsPart isPart) {
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), isPart);
        const std::string taken(rest_.begin(), end);
        rest_.remove_prefix(taken.size());
        SkipBlanks();
        return taken;
    }
    std::string Word() {
        std::string word = TakeWhile(IsWord);
        if (word.empty()) Fail("a word");
        return word;
    }
    // Reads a word if it is this one, in any letter case.
    bool TakeWord(std::string_view word) {
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), IsWord);
        if (Upper(std::string(rest_.begin(), end)) != word) return false;
        TakeWhile(IsWord);
        return true;
    }
    std::vector<std::string> WordsInParentheses() {
        std::vector<std::string> words;
        Expect('(');
        do {
            words.push_back(Word());
        } while (Take(','));
        Expect(')');
        return words;
    }
    void SkipTo(char sign) {
        TakeWhile([sign](char c) { return c != sign; });
        Expect(sign);
    }
    void SkipBlanks() {
        for (;;) {
            const auto text = rest_.find_first_not_of(" \t\r\n");
            rest_.remove_prefix(std::min(text, rest_.size()));
            const bool line = rest_.starts_with("--");
            if (!line && !rest_.starts_with("/*") && !rest_.starts_with("(*")) return;
            const auto end = line                      ? rest_.find('\n')
                             : rest_.starts_with("/*") ? rest_.find("*/") + 2
                                                       : rest_.find("*)") + 2;
            rest_.remove_prefix(std::min(end, rest_.size()));
        }
    }

    [[noreturn]] void Fail(const std::string& expected) const {
        throw std::runtime_error(expected +
                                 " expected before: " + std::string(rest_.substr(0, 60)));
    }

  private:
    std::string_view rest_;
};

// ---- Schemas

Domain ReadDomain(Scanner& text) {
    static const std::map<std::string, Domain::Kind> kSimple{
        {"INTEGER", Domain::Kind::Integer}, {"REAL", Domain::Kind::Real},
        {"NUMBER", Domain::Kind::Number},   {"STRING", Domain::Kind::String},
        {"BOOLEAN", Domain::Kind::Boolean}, {"LOGICAL", Domain::Kind::Logical},
        {"BINARY", Domain::Kind::Binary},   {"GENERIC", Domain::Kind::Any},
    };
    while (text.TakeWord("OPTIONAL") || text.TakeWord("UNIQUE")) {
    }
    const std::string word = text.Word();
    const std::string folded = Upper(word);
    if (const auto simple = kSimple.find(folded); simple != kSimple.end()) {
        if (text.Take('(')) text.SkipTo(')');
        text.TakeWord("FIXED");
        return {simple->second, {}, nullptr};
    }
    if (folded == "LIST" || folded == "SET" || folded == "BAG" || folded == "ARRAY") {
        if (text.Take('[')) text.SkipTo(']');
        if (!text.TakeWord("OF")) text.Fail("OF");
        return {Domain::Kind::Aggregate, {}, std::make_shared<const Domain>(ReadDomain(text))};
    }
    if (folded == "ENUMERATION" || folded == "SELECT") {
        text.TakeWord("OF");
        return {folded == "SELECT" ? Domain::Kind::Select : Domain::Kind::Enumeration,
                text.WordsInParentheses(), nullptr};
    }
    return {Domain::Kind::Named, {word}, nullptr};
}

// "id, name : OPTIONAL STRING;" or "SELF\entity.attribute : type := value;".
void ReadAttributes(Scanner& text, bool derived, Entity& entity) {
    std::vector<std::string> names;
    std::string redeclaredOf;
    do {
        names.push_back(text.Word());
        if (text.Take('\\')) {
            redeclaredOf = text.Word();
            text.Expect('.');
            names.back() = text.Word();
        }
    } while (text.Take(','));
    text.Expect(':');
    const Domain domain = ReadDomain(text);
    text.SkipTo(';');
    for (const std::string& name : names) {
        // A derived attribute that is not inherited is not part of a data set.
        if (derived && redeclaredOf.empty()) continue;
        entity.attributes.push_back({name, domain, redeclaredOf, derived});
    }
}

Entity ReadEntity(Scanner& text) {
    Entity entity;
    entity.name = text.Word();
    text.TakeWord("ABSTRACT");
    if (text.TakeWord("SUPERTYPE") && text.TakeWord("OF")) {
        int depth = 0;
        do {
            depth += text.Take('(') ? 1 : text.Take(')') ? -1 : 0;
            if (depth > 0 && text.Peek() != '(' && text.Peek() != ')') text.TakeCharacter();
            text.SkipBlanks();
        } while (depth > 0);
    }
    if (text.TakeWord("SUBTYPE")) {
        if (!text.TakeWord("OF")) text.Fail("OF");
        entity.supertypes = text.WordsInParentheses();
    }
    text.Expect(';');
    bool derived = false;
    bool rules = false;
    while (!text.TakeWord("END_ENTITY")) {
        if (text.TakeWord("DERIVE")) {
            derived = true;
        } else if (text.TakeWord("INVERSE") || text.TakeWord("UNIQUE") || text.TakeWord("WHERE")) {
            rules = true;
        } else if (rules) {
            text.SkipTo(';');
        } else {
            ReadAttributes(text, derived, entity);
        }
    }
    text.Expect(';');
    return entity;
}

}  // namespace

Schema ReadSchema(const std::string& express) {
    Scanner text(express);
    Schema schema;
    if (!text.TakeWord("SCHEMA")) text.Fail("SCHEMA");
    schema.name = text.Word();
    text.Expect(';');
    while (!text.TakeWord("END_SCHEMA")) {
        if (text.TakeWord("ENTITY")) {
            schema.entities.push_back(ReadEntity(text));
        } else if (text.TakeWord("TYPE")) {
            const std::string name = Upper(text.Word());
            text.Expect('=');
            schema.types[name] = ReadDomain(text);
            while (!text.TakeWord("END_TYPE")) text.SkipTo(';');
            text.Expect(';');
        } else {
            text.Fail("ENTITY or TYPE");
        }
    }
    return schema;
}

const Schema& BuiltInSchema(const std::string& name) {
    // The parts of each built-in schema.
    static const std::map<std::string, std::vector<const char*>> kParts{
        {"CDMA", {"cdma"}},
        {"CONFIG_CONTROL_DESIGN", {"resources", "config_control_design", "named_area_units"}},
        {"AUTOMOTIVE_DESIGN", {"resources", "later_editions", "derived_area_units"}},
        {"PDM_SCHEMA", {"resources", "later_editions", "named_area_units"}},
        {"AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF",
         {"resources", "later_editions", "derived_area_units"}},
        {"AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF",
         {"resources", "later_editions", "derived_area_units"}},
    };
    static std::map<std::string, Schema> read;
    const auto parts = kParts.find(Upper(name));
    if (parts == kParts.end()) throw std::runtime_error("there is no schema " + name);
    Schema& schema = read[parts->first];
    if (schema.name.empty()) {
        std::string express = "SCHEMA " + name + ";\n";
        for (const char* part : parts->second) {
            std::ifstream file(std::string(SCHEMA_DIRECTORY "/") + part + ".exp");
            express.append(std::istreambuf_iterator<char>(file), {});
        }
        schema = ReadSchema(express + "END_SCHEMA;");
    }
    return schema;
}

// ---- Data sets

namespace {

const Entity* Find(const Schema& schema, const std::string& name) {
    const auto isIt = [&](const Entity& entity) { return Upper(entity.name) == Upper(name); };
    const auto found = std::find_if(schema.entities.begin(), schema.entities.end(), isIt);
    return found != schema.entities.end() ? &*found : nullptr;
}

// The names of the attributes that an entity type declares itself.
std::vector<std::string> OwnAttributes(const Entity& entity) {
    std::vector<std::string> names;
    for (const Attribute& attribute : entity.attributes) {
        if (attribute.redeclaredOf.empty()) names.push_back(attribute.name);
    }
    return names;
}

// The same with inherited ones, which come first; an attribute inherited twice occurs once.
void AddAttributes(const Schema& schema, const Entity& entity, std::vector<const Entity*>& seen,
                   std::vector<std::string>& names) {
    if (std::find(seen.begin(), seen.end(), &entity) != seen.end()) return;
    seen.push_back(&entity);
    for (const std::string& supertype : entity.supertypes) {
        const Entity* inherited = Find(schema, supertype);
        if (inherited == nullptr) throw std::runtime_error("there is no entity " + supertype);
        AddAttributes(schema, *inherited, seen, names);
    }
    for (const std::string& name : OwnAttributes(entity)) names.push_back(name);
}

// The characters of a text in a test: UTF-8 or, if it is not valid UTF-8, ISO 8859-1.
class Characters {
  public:
    static std::u32string Of(const std::string& bytes) {
        std::u32string characters;
        for (std::size_t i = 0; i < bytes.size();) {
            const auto at = [&](std::size_t k) { return static_cast<unsigned char>(bytes[k]); };
            const std::size_t length = at(i) < 0x80 ? 1 : at(i) >= 0xF0 ? 4 : at(i) >= 0xE0 ? 3 : 2;
            char32_t character = length == 1 ? at(i) : at(i) & (0xFFU >> (length + 1));
            bool good = at(i) < 0x80 || (at(i) >= 0xC2 && i + length <= bytes.size());
            for (std::size_t k = 1; good && k < length; ++k) {
                good = (at(i + k) & 0xC0) == 0x80;
                character = character << 6 | (at(i + k) & 0x3F);
            }
            if (!good) return {bytes.begin(), bytes.end()};
            characters += character;
            i += length;
        }
        return characters;
    }
};

// Replaces the directives of a string: \X\E9, \S\i, \X2\0141\X0\, \X4\0001F600\X0\ and \\.
std::u32string WithoutDirectives(const std::u32string& text) {
    const auto number = [&text](std::size_t at, std::size_t digits) {
        const std::string hexadecimal(text.begin() + static_cast<long>(at),
                                      text.begin() + static_cast<long>(at + digits));
        return static_cast<char32_t>(std::stoul(hexadecimal, nullptr, 16));
    };
    std::u32string characters;
    for (std::size_t i = 0; i < text.size();) {
        const std::u32string_view rest = std::u32string_view(text).substr(i);
        if (rest.starts_with(U"\\X2\\") || rest.starts_with(U"\\X4\\")) {
            const std::size_t digits = rest[2] == U'2' ? 4U : 8U;
            for (i += 4; text.compare(i, 4, U"\\X0\\") != 0; i += digits) {
                characters += number(i, digits);
            }
            i += 4;
        } else if (rest.starts_with(U"\\X\\")) {
            characters += number(i + 3, 2);
            i += 5;
        } else if (rest.starts_with(U"\\S\\")) {
            characters += rest[3] + 128;
            i += 4;
        } else {
            characters += rest[0];
            i += rest.starts_with(U"\\\\") ? 2U : 1U;
        }
    }
    return characters;
}

std::string ReadQuoted(Scanner& text, char quote) {
    std::string quoted;
    text.TakeCharacter();
    for (;;) {
        const char c = text.TakeCharacter();
        if (c == quote) {
            if (text.Peek() != quote) break;
            text.TakeCharacter();
        }
        quoted += c;
    }
    text.SkipBlanks();
    return quoted;
}

Value ReadValue(Scanner& text);

std::vector<Value> ReadValues(Scanner& text) {
    std::vector<Value> values;
    text.Expect('(');
    while (!text.Take(')')) {
        values.push_back(ReadValue(text));
        text.Take(',');
    }
    return values;
}

Value ReadNumber(Scanner& text) {
    const std::string number = text.TakeWhile([](char c) {
        return IsDigit(c) || std::string_view("+-.eE").find(c) != std::string::npos;
    });
    if (number.find_first_of(".eE") == std::string::npos) return {std::stol(number)};
    return {std::stod(number)};
}

Value ReadValue(Scanner& text) {
    switch (text.Peek()) {
        case '$':
        case '*':
            text.TakeCharacter();
            text.SkipBlanks();
            return {};
        case '\'': return {Text{WithoutDirectives(Characters::Of(ReadQuoted(text, '\'')))}};
        case '"': return {Bits{ReadQuoted(text, '"')}};
        case '(': return {ReadValues(text)};
        case '#': text.Take('#'); return {Reference{std::stoul(text.TakeWhile(IsDigit))}};
        case '.': {
            const std::string item = ReadQuoted(text, '.');
            static const std::map<std::string, Truth> kTruths{
                {"T", Truth::True}, {"F", Truth::False}, {"U", Truth::Unknown}};
            const auto truth = kTruths.find(item);
            return truth != kTruths.end() ? Value{truth->second} : Value{Item{item}};
        }
        default: break;
    }
    if (IsDigit(text.Peek()) || text.Peek() == '-' || text.Peek() == '+') return ReadNumber(text);
    Typed typed;
    typed.type = Upper(text.Word());
    text.Expect('(');
    typed.value = std::make_shared<const Value>(ReadValue(text));
    text.Expect(')');
    return {typed};
}

// "PRODUCT('p','Part',$,())". Values of a type that the schema does not declare have no names.
void ReadRecord(Scanner& text, const Schema& schema, bool complex, Instance& instance) {
    instance.types.push_back(text.Word());
    const Entity* entity = Find(schema, instance.types.back());
    if (entity == nullptr) {
        ReadValues(text);
        return;
    }
    std::vector<std::string> names = OwnAttributes(*entity);
    if (!complex) {
        std::vector<const Entity*> seen;
        names.clear();
        AddAttributes(schema, *entity, seen, names);
    }
    const std::vector<Value> values = ReadValues(text);
    if (values.size() != names.size()) {
        text.Fail(std::to_string(names.size()) + " values of " + instance.types.back());
    }
    for (std::size_t i = 0; i < names.size(); ++i)
        instance.values.emplace_back(names[i], values[i]);
}

}  // namespace

DataSet ReadData(const Schema& schema, const std::string& data) {
    Scanner text(data);
    DataSet instances;
    while (!text.AtEnd()) {
        Instance instance;
        text.Expect('#');
        instance.number = std::stoul(text.TakeWhile(IsDigit));
        text.Expect('=');
        const bool complex = text.Take('(');
        do {
            ReadRecord(text, schema, complex, instance);
        } while (complex && text.Peek() != ')');
        if (complex) text.Expect(')');
        text.Expect(';');
        instances.push_back(instance);
    }
    return instances;
}

}  // namespace tables
