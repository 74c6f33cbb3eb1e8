// The reader of EXPRESS schemas (ISO 10303-11). It reads what the dictionary needs: entity types
// with their supertypes, explicit attributes and redeclarations, and defined types. Constants,
// functions, procedures, rules, constraints, derived and inverse attributes are skipped.

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "Exchange.h"
#include "Input.h"
#include "Problems.h"
#include "Quoted.h"

namespace exchange {

namespace {

using kor::AttributeDeclaration;
using kor::EntityDeclaration;
using kor::Place;
using kor::SchemaDeclaration;
using kor::TypeDeclaration;
using kor::TypeExpression;

struct Token {
    enum class Kind { Word, Number, Text, Symbol, End } kind = Kind::End;
    std::string_view text;
    Place place;
};

// ---- Tokens

class Lexer {
  public:
    explicit Lexer(std::string_view text) : text_(text) {
        constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
        if (text_.starts_with(kByteOrderMark)) at_ = kByteOrderMark.size();
    }

    Token Next() {
        SkipSpace();
        const std::size_t start = at_;
        const Place place = PlaceAt(start);
        if (at_ == text_.size()) return {Token::Kind::End, {}, place};
        Token::Kind kind = Token::Kind::Symbol;
        const char c = text_[at_++];
        if (IsLetter(c)) {
            kind = Token::Kind::Word;
            while (at_ < text_.size() && (IsLetter(text_[at_]) || IsDigit(text_[at_]))) ++at_;
        } else if (IsDigit(c)) {
            kind = Token::Kind::Number;
            while (at_ < text_.size() && (IsDigit(text_[at_]) || text_[at_] == '.')) ++at_;
        } else if (c == '\'' || c == '"') {
            kind = Token::Kind::Text;
            SkipText(c, place);
        }
        return {kind, text_.substr(start, at_ - start), place};
    }

  private:
    static bool IsDigit(char c) { return c >= '0' && c <= '9'; }
    static bool IsLetter(char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    }

    Place PlaceAt(std::size_t offset) const { return {line_, offset - lineStart_ + 1}; }

    // Skips a character. A line ends with a line feed, or with a carriage return not followed by
    // one.
    void Advance() {
        const char c = text_[at_++];
        if (c == '\n' || (c == '\r' && !Ahead("\n"))) {
            ++line_;
            lineStart_ = at_;
        }
    }

    bool Ahead(std::string_view what) const { return text_.substr(at_).starts_with(what); }

    // White space, remarks to the end of the line, and remarks (* that may contain (* others *) *).
    void SkipSpace() {
        for (;;) {
            if (at_ == text_.size()) return;
            if (Ahead("--")) {
                while (at_ < text_.size() && text_[at_] != '\n' && text_[at_] != '\r') ++at_;
            } else if (Ahead("(*")) {
                SkipRemark();
            } else if (const char c = text_[at_]; c == ' ' || (c >= '\t' && c <= '\r')) {
                Advance();
            } else {
                return;
            }
        }
    }

    void SkipRemark() {
        const Place start = PlaceAt(at_);
        int depth = 0;
        do {
            if (at_ == text_.size()) throw SyntaxError{start, "a remark without an end"};
            if (Ahead("(*")) {
                ++depth;
                at_ += 2;
            } else if (Ahead("*)")) {
                --depth;
                at_ += 2;
            } else {
                Advance();
            }
        } while (depth > 0);
    }

    // A string. A doubled apostrophe in it is read as the end of one string and the start of
    // another, which makes no difference here.
    void SkipText(char quote, Place start) {
        while (at_ < text_.size() && text_[at_] != quote) Advance();
        if (at_ == text_.size()) throw SyntaxError{start, "a string without an end"};
        ++at_;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    std::uint64_t line_ = 1;
    std::size_t lineStart_ = 0;
};

// ---- Declarations

class Parser {
  public:
    explicit Parser(std::string_view text) : lexer_(text) { Take(); }

    bool AtEnd() const { return token_.kind == Token::Kind::End; }

    SchemaDeclaration Schema() {
        SchemaDeclaration schema;
        ExpectWord("SCHEMA");
        schema.name = Identifier("the name of the schema");
        SkipTo(';');
        while (!TakeWord("END_SCHEMA")) Declaration(schema);
        ExpectSymbol(';');
        return schema;
    }

  private:
    static constexpr int kDeepestType = 100;

    void Declaration(SchemaDeclaration& schema) {
        if (TakeWord("ENTITY")) {
            schema.entities.push_back(Entity());
        } else if (TakeWord("TYPE")) {
            schema.types.push_back(Type());
        } else if (IsWord("FUNCTION") || IsWord("PROCEDURE")) {
            SkipAlgorithm();
        } else if (TakeWord("RULE")) {
            SkipPast("END_RULE");
        } else if (TakeWord("CONSTANT")) {
            SkipPast("END_CONSTANT");
        } else if (TakeWord("SUBTYPE_CONSTRAINT")) {
            SkipPast("END_SUBTYPE_CONSTRAINT");
        } else if (TakeWord("USE") || TakeWord("REFERENCE")) {
            SkipTo(';');
        } else {
            Fail("a declaration or END_SCHEMA");
        }
    }

    // ---- Types

    TypeDeclaration Type() {
        TypeDeclaration type;
        type.place = token_.place;
        type.name = Identifier("the name of the type");
        ExpectSymbol('=');
        TakeWord("EXTENSIBLE");
        TakeWord("GENERIC_ENTITY");
        if (TakeWord("SELECT")) {
            type.kind = TypeDeclaration::Kind::Select;
            Members(type);
        } else if (TakeWord("ENUMERATION")) {
            type.kind = TypeDeclaration::Kind::Enumeration;
            TakeWord("OF");
            Members(type);
        } else {
            type.alias = Expression(0);
        }
        ExpectSymbol(';');
        SkipPast("END_TYPE");
        return type;
    }

    // [BASED_ON type [WITH]] [( member, member )]
    void Members(TypeDeclaration& type) {
        if (TakeWord("BASED_ON")) {
            type.basedOn = Identifier("a type");
            TakeWord("WITH");
        }
        if (TakeSymbol('(')) type.members = Names();
    }

    // name, name )
    std::vector<std::string> Names() {
        std::vector<std::string> names;
        do {
            names.push_back(Identifier("a name"));
        } while (TakeSymbol(','));
        ExpectSymbol(')');
        return names;
    }

    TypeExpression Expression(int depth) {
        if (depth > kDeepestType) Fail("a type that is not nested so deep");
        TypeExpression type;
        type.place = token_.place;
        struct Simple {
            const char* word;
            kor::Base type;
        };
        static constexpr Simple kSimple[] = {
            {"INTEGER", kor::Base::Integer},        {"REAL", kor::Base::Real},
            {"NUMBER", kor::Base::Number},          {"STRING", kor::Base::String},
            {"BOOLEAN", kor::Base::Boolean},        {"LOGICAL", kor::Base::Logical},
            {"BINARY", kor::Base::Binary},          {"GENERIC", kor::Base::Generic},
            {"GENERIC_ENTITY", kor::Base::Generic},
        };
        for (const Simple& simple : kSimple) {
            if (!TakeWord(simple.word)) continue;
            type.simple = simple.type;
            if (IsSymbol('(')) SkipParentheses();  // the width of a string, the precision of a real
            TakeWord("FIXED");
            if (type.simple == kor::Base::Generic) SkipLabel();
            return type;
        }
        using Form = kor::AggregateForm;
        struct Aggregate {
            const char* word;
            Form::Kind kind;
        };
        static constexpr Aggregate kAggregates[] = {
            {"ARRAY", Form::Kind::Array},    {"BAG", Form::Kind::Bag},
            {"LIST", Form::Kind::List},      {"SET", Form::Kind::Set},
            {"AGGREGATE", Form::Kind::List},
        };
        for (const Aggregate& aggregate : kAggregates) {
            const bool generalised = IsWord("AGGREGATE");
            if (!TakeWord(aggregate.word)) continue;
            if (generalised) SkipLabel();
            type.form.kind = aggregate.kind;
            if (TakeSymbol('[')) Bounds(type.form);
            ExpectWord("OF");
            type.form.optionalMembers = TakeWord("OPTIONAL");
            type.form.unique = TakeWord("UNIQUE") || aggregate.kind == Form::Kind::Set;
            type.kind = TypeExpression::Kind::Aggregate;
            type.element = std::make_shared<const TypeExpression>(Expression(depth + 1));
            return type;
        }
        type.kind = TypeExpression::Kind::Named;
        type.name = Identifier("a type");
        return type;
    }

    void SkipLabel() {
        if (TakeSymbol(':')) Identifier("a label");
    }

    // lower : upper ]
    void Bounds(kor::AggregateForm& form) {
        const std::optional<std::uint64_t> lower = Bound(':');
        const std::optional<std::uint64_t> upper = Bound(']');
        if (form.kind != kor::AggregateForm::Kind::Array) {
            form.least = lower.value_or(form.least);
            form.most = upper.value_or(form.most);
        } else if (lower && upper && *lower <= *upper) {
            form.least = form.most = *upper - *lower + 1;
        }
    }

    // A bound and the symbol after it. No value if the bound is not a number: "?", or an
    // expression.
    std::optional<std::uint64_t> Bound(char end) {
        std::optional<std::uint64_t> bound;
        if (token_.kind == Token::Kind::Number) {
            std::uint64_t number = 0;
            const char* const last = token_.text.data() + token_.text.size();
            const auto [read, error] = std::from_chars(token_.text.data(), last, number);
            if (error == std::errc() && read == last) bound = number;
            Take();
        }
        for (int depth = 0; depth > 0 || !IsSymbol(end); Take()) {
            if (AtEnd()) Fail("']'");
            bound.reset();
            if (IsSymbol('[') || IsSymbol('(')) ++depth;
            if (IsSymbol(']') || IsSymbol(')')) --depth;
        }
        ExpectSymbol(end);
        return bound;
    }

    // ---- Entities

    EntityDeclaration Entity() {
        EntityDeclaration entity;
        entity.place = token_.place;
        entity.name = Identifier("the name of the entity");
        while (!TakeSymbol(';')) {
            if (TakeWord("SUBTYPE")) {
                ExpectWord("OF");
                ExpectSymbol('(');
                entity.supertypes = Names();
            } else if (TakeWord("SUPERTYPE")) {
                if (TakeWord("OF")) SkipParentheses();
            } else if (TakeWord("ABSTRACT")) {
                entity.abstract = true;
            } else {
                Fail("SUBTYPE, SUPERTYPE or ';'");
            }
        }
        while (!IsWord("DERIVE") && !IsWord("INVERSE") && !IsWord("UNIQUE") && !IsWord("WHERE") &&
               !IsWord("END_ENTITY")) {
            Explicit(entity);
        }
        if (TakeWord("DERIVE")) {
            while (!IsWord("INVERSE") && !IsWord("UNIQUE") && !IsWord("WHERE") &&
                   !IsWord("END_ENTITY")) {
                Derived(entity);
            }
        }
        SkipPast("END_ENTITY");
        return entity;
    }

    // a, b : [OPTIONAL] type ;
    void Explicit(EntityDeclaration& entity) {
        const std::size_t first = entity.attributes.size();
        do {
            entity.attributes.push_back(AttributeName());
        } while (TakeSymbol(','));
        ExpectSymbol(':');
        const bool optional = TakeWord("OPTIONAL");
        const TypeExpression type = Expression(0);
        ExpectSymbol(';');
        for (std::size_t i = first; i < entity.attributes.size(); ++i) {
            entity.attributes[i].type = type;
            entity.attributes[i].optional = optional;
        }
    }

    // a : type := expression ;
    void Derived(EntityDeclaration& entity) {
        AttributeDeclaration attribute = AttributeName();
        ExpectSymbol(':');
        attribute.type = Expression(0);
        attribute.derived = true;
        SkipTo(';');
        if (attribute.Redeclares()) entity.attributes.push_back(std::move(attribute));
    }

    // name, or SELF\entity.attribute [RENAMED name]
    AttributeDeclaration AttributeName() {
        AttributeDeclaration attribute;
        attribute.place = token_.place;
        if (TakeWord("SELF")) {
            ExpectSymbol('\\');
            attribute.redeclaredEntity = Identifier("an entity");
            ExpectSymbol('.');
            attribute.redeclaredAttribute = Identifier("an attribute");
            if (TakeWord("RENAMED")) attribute.name = Identifier("a name");
        } else {
            attribute.name = Identifier("an attribute");
        }
        return attribute;
    }

    void SkipParentheses() {
        ExpectSymbol('(');
        for (int depth = 1; depth > 0;) {
            if (AtEnd()) Fail("')'");
            if (IsSymbol('(')) ++depth;
            if (IsSymbol(')')) --depth;
            Take();
        }
    }

    // ---- What is skipped

    // A function or procedure, which may contain others.
    void SkipAlgorithm() {
        int depth = 0;
        do {
            if (AtEnd()) Fail("END_FUNCTION or END_PROCEDURE");
            if (IsWord("FUNCTION") || IsWord("PROCEDURE")) ++depth;
            if (IsWord("END_FUNCTION") || IsWord("END_PROCEDURE")) --depth;
            Take();
        } while (depth > 0);
        ExpectSymbol(';');
    }

    // Past `word ;`.
    void SkipPast(const char* word) {
        while (!TakeWord(word)) {
            if (AtEnd()) Fail(word);
            Take();
        }
        ExpectSymbol(';');
    }

    // Past the symbol.
    void SkipTo(char symbol) {
        while (!TakeSymbol(symbol)) {
            if (AtEnd()) FailExpecting(symbol);
            Take();
        }
    }

    // ---- Tokens

    void Take() { token_ = lexer_.Next(); }

    bool IsWord(std::string_view word) const {
        return token_.kind == Token::Kind::Word && kor::MatchesFolded(token_.text, word);
    }
    bool IsSymbol(char symbol) const {
        return token_.kind == Token::Kind::Symbol && token_.text.front() == symbol;
    }
    bool TakeWord(std::string_view word) {
        const bool taken = IsWord(word);
        if (taken) Take();
        return taken;
    }
    bool TakeSymbol(char symbol) {
        const bool taken = IsSymbol(symbol);
        if (taken) Take();
        return taken;
    }
    void ExpectWord(const char* word) {
        if (!TakeWord(word)) Fail(word);
    }
    void ExpectSymbol(char symbol) {
        if (!TakeSymbol(symbol)) FailExpecting(symbol);
    }
    std::string Identifier(const char* what) {
        if (token_.kind != Token::Kind::Word) Fail(what);
        std::string name(token_.text);
        Take();
        return name;
    }

    [[noreturn]] void FailExpecting(char symbol) const { Fail(std::string("'") + symbol + "'"); }
    [[noreturn]] void Fail(const std::string& expected) const {
        const std::string found = AtEnd() ? "the end of the file" : Quoted(token_.text);
        throw SyntaxError{token_.place, expected + " expected, found " + found};
    }

    Lexer lexer_;
    Token token_;
};

}  // namespace

std::vector<SchemaPtr> ParseSchemas(std::string_view text, const std::string& name,
                                    Messages& messages) {
    std::vector<SchemaPtr> schemas;
    const auto fail = [&](Place place, std::string message) {
        messages.AddError({name, place.line, place.column, std::move(message)});
    };
    try {
        Parser parser(text);
        do {
            const SchemaDeclaration declaration = parser.Schema();
            std::vector<kor::Diagnostic> errors;
            SchemaPtr schema = kor::Schema::Make(declaration, errors);
            for (kor::Diagnostic& error : errors) fail(error.place, std::move(error.message));
            if (schema != nullptr) schemas.push_back(std::move(schema));
        } while (!parser.AtEnd());
    } catch (const SyntaxError& error) {
        fail(error.place, error.text);
    }
    if (messages.ErrorCount() != 0) schemas.clear();
    return schemas;
}

std::vector<SchemaPtr> ReadSchemas(const std::string& path, Messages& messages) {
    std::string error;
    const std::unique_ptr<Source> source = Source::Open(path, error);
    std::string text;
    if (source != nullptr) {
        std::vector<char> block(std::size_t{1} << 16);
        while (const std::size_t count = source->Read(block.data(), block.size())) {
            text.append(block.data(), count);
        }
        error = source->error;
    }
    if (!error.empty()) {
        messages.AddError({path, 0, 0, error});
        return {};
    }
    return ParseSchemas(text, path, messages);
}

}  // namespace exchange
