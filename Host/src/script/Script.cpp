// The parser of scripts.

#include "script/Script.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>

#include "ExchangeText.h"
#include "console/Printable.h"
#include "services/Utf8.h"

namespace host {

namespace {

// A limit, since expressions are read, evaluated and destroyed recursively.
constexpr int kDeepestExpression = 1000;

void CheckNesting(int depth, Place place) {
    if (depth > kDeepestExpression) {
        throw ScriptError(
            place, "expressions nested more than " + std::to_string(kDeepestExpression) + " deep");
    }
}

ExpressionPtr Make(Expression&& expression) {
    const auto grow = [&expression](const ExpressionPtr& below) {
        expression.height = std::max(expression.height, below->height + 1);
    };
    for (const ExpressionPtr& operand : expression.operands) grow(operand);
    for (const Assignment& assignment : expression.assignments) grow(assignment.value);
    CheckNesting(expression.height, expression.place);
    return std::make_unique<Expression>(std::move(expression));
}

// A piece of a script without its line breaks and remarks.
std::string InOneLine(std::string_view text) {
    std::string line;
    bool isString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isString && text.substr(i).starts_with("--")) {
            i = std::min(text.find('\n', i), text.size() - 1);
        }
        if (text[i] == '\'') isString = !isString;
        const bool isBlank = !isString && static_cast<unsigned char>(text[i]) <= ' ';
        if (!isBlank) {
            line += text[i];
        } else if (!line.ends_with(' ')) {
            line += ' ';
        }
    }
    if (line.ends_with(' ')) line.pop_back();
    return line;
}

}  // namespace

bool GoesOn(std::string_view statement) {
    char last = '\0';
    for (std::size_t i = 0; i < statement.size(); ++i) {
        if (statement.substr(i).starts_with("--")) {
            i = std::min(statement.find('\n', i), statement.size());
        } else if (statement[i] == '\'') {
            // Skips a string, which must end in the same line.
            last = '\'';
            i = std::min(statement.find_first_of("'\n", i + 1), statement.size());
        } else if (static_cast<unsigned char>(statement[i]) > ' ') {
            last = statement[i];
        }
    }
    return last == ':' || last == ';' || last == ',' || last == '(';
}

class ScriptReader::Parser {
  public:
    Parser(std::string_view text, Place start, std::vector<std::string> modelNames)
        : text_(text),
          encoding_(kor::IsUtf8(text) ? exchange::Encoding::Utf8 : exchange::Encoding::Latin1),
          line_(start.line),
          lineStart_(-static_cast<long>(start.column - 1)),
          modelNames_(std::move(modelNames)) {}

    std::optional<Statement> Next() {
        SkipLines();
        if (at_ == text_.size()) return std::nullopt;
        depth_ = 0;
        try {
            Statement statement = ParseStatement();
            SkipBlanks();
            if (!AtLineEnd()) Fail("the end of the statement");
            return statement;
        } catch (...) {
            SkipStatement();
            throw;
        }
    }

  private:
    // ---- Statements

    Statement ParseStatement() {
        Statement statement;
        statement.place = Here();
        if (TakeKeyword("EACH")) {
            ParseEach(statement);
        } else {
            statement.items.push_back(ParseItem());
        }
        return statement;
    }

    void ParseEach(Statement& statement) {
        statement.isEach = true;
        statement.variable = Name("a name");
        if (!TakeKeyword("IN")) Fail("IN");
        ParseSource(statement);
        if (TakeKeyword("WHERE")) statement.where = ParseExpression();
        Expect(':');
        do {
            SkipToItem();
            statement.items.push_back(ParseItem());
        } while (Take(';'));
    }

    // [@model.]ENTITY_TYPE or an expression.
    void ParseSource(Statement& statement) {
        SkipBlanks();
        statement.sourcePlace = Here();
        const std::size_t start = at_;
        if (Peek() == '@') {
            ++at_;
            statement.model = ModelName();
            if (Peek() == '.') {
                ++at_;
                statement.entityType = Name("an entity type");
                return;
            }
        } else if (IsLetter(Peek())) {
            statement.entityType = Name("an entity type");
            SkipBlanks();
            if (Peek() != '.' && Peek() != '(' && Peek() != '[') return;
        }
        at_ = start;
        statement.model.reset();
        statement.entityType.clear();
        statement.source = ParseExpression();
    }

    Item ParseItem() {
        Item item;
        SkipBlanks();
        item.place = Here();
        if (TakeKeyword("LET")) {
            item.kind = Item::Kind::Let;
            item.name = Name("a name");
            Expect('=');
            item.value = ParseExpression();
        } else if (TakeKeyword("SET")) {
            item.kind = Item::Kind::Set;
            ParseTarget(item, "SET");
            Expect('=');
            item.value = ParseExpression();
        } else if (TakeKeyword("ADD")) {
            item.kind = Item::Kind::Add;
            item.value = ParseExpression();
            if (!TakeKeyword("TO")) Fail("TO");
            ParseTarget(item, "ADD");
        } else {
            const std::size_t start = at_;
            item.value = ParseExpression();
            item.text = InOneLine(text_.substr(start, at_ - start));
        }
        return item;
    }

    // expr.attribute, which is written, not read.
    void ParseTarget(Item& item, const std::string& statement) {
        ExpressionPtr target = ParsePostfix();
        if (target->kind != Expression::Kind::Attribute) {
            throw ScriptError(target->place, statement + " takes an attribute of an instance");
        }
        item.name = target->name;
        item.place = target->place;
        item.target = std::move(target->operands.front());
    }

    // ---- Expressions

    ExpressionPtr ParseExpression() {
        CheckNesting(++depth_, Here());
        SkipToItem();
        ExpressionPtr expression = ParseOr();
        --depth_;
        return expression;
    }

    ExpressionPtr ParseOr() {
        ExpressionPtr left = ParseAnd();
        for (Place place = NextHere(); TakeKeyword("OR"); place = NextHere()) {
            left = MakeOperation(Operator::Or, place, std::move(left), ParseAnd());
        }
        return left;
    }

    ExpressionPtr ParseAnd() {
        ExpressionPtr left = ParseNot();
        for (Place place = NextHere(); TakeKeyword("AND"); place = NextHere()) {
            left = MakeOperation(Operator::And, place, std::move(left), ParseNot());
        }
        return left;
    }

    ExpressionPtr ParseNot() {
        std::vector<Place> negations;
        for (Place place = NextHere(); TakeKeyword("NOT"); place = NextHere()) {
            negations.push_back(place);
        }
        ExpressionPtr expression = ParseComparison();
        for (; !negations.empty(); negations.pop_back()) {
            expression = MakeOperation(Operator::Not, negations.back(), std::move(expression));
        }
        return expression;
    }

    ExpressionPtr ParseComparison() {
        ExpressionPtr left = ParsePostfix();
        const Place place = NextHere();
        const std::optional<Operator> comparison = TakeComparison();
        if (!comparison.has_value()) return left;
        return MakeOperation(*comparison, place, std::move(left), ParsePostfix());
    }

    std::optional<Operator> TakeComparison() {
        struct Sign {
            std::string_view text;
            Operator operation;
        };
        // One that begins another comes after it.
        static constexpr Sign kSigns[] = {
            {"<>", Operator::NotEqual}, {"<=", Operator::LessEqual}, {">=", Operator::GreaterEqual},
            {"=", Operator::Equal},     {"<", Operator::Less},       {">", Operator::Greater},
        };
        for (const auto& [text, operation] : kSigns) {
            if (!text_.substr(at_).starts_with(text)) continue;
            at_ += text.size();
            continues_ = false;
            return operation;
        }
        return std::nullopt;
    }

    static ExpressionPtr MakeOperation(Operator operation, Place place, ExpressionPtr first,
                                       ExpressionPtr second = nullptr) {
        Expression expression{Expression::Kind::Operation, place};
        expression.operation = operation;
        expression.operands.push_back(std::move(first));
        if (second != nullptr) expression.operands.push_back(std::move(second));
        return Make(std::move(expression));
    }

    // A primary expression with its attribute and member accesses.
    ExpressionPtr ParsePostfix() {
        SkipToItem();
        ExpressionPtr expression = ParsePrimary();
        for (;;) {
            SkipBlanks();
            Expression next{Expression::Kind::Attribute, Here()};
            if (Peek() == '[') {
                ++at_;
                next.kind = Expression::Kind::Index;
                next.operands.push_back(std::move(expression));
                next.operands.push_back(ParseExpression());
                Expect(']');
            } else if (Peek() == '.' && IsLetter(Peek(1))) {
                ++at_;
                next.place = Here();
                next.name = Name("an attribute");
                next.operands.push_back(std::move(expression));
            } else {
                return expression;
            }
            expression = Make(std::move(next));
        }
    }

    ExpressionPtr ParsePrimary() {
        Expression expression{Expression::Kind::Literal, Here()};
        const char c = Peek();
        if (c == '\'') {
            expression.value = Text();
        } else if (c == '"') {
            expression.value = Binary();
        } else if (c == '$') {
            ++at_;
        } else if (c == '.') {
            expression.value = Enumeration();
        } else if (IsDigit(c) || c == '-' || c == '+') {
            expression.value = Number();
        } else if (Take('(')) {
            expression.kind = Expression::Kind::List;
            expression.operands = Operands();
            // Parentheses around a comparison only group it.
            if (expression.operands.size() == 1 &&
                expression.operands.front()->kind == Expression::Kind::Operation) {
                return std::move(expression.operands.front());
            }
        } else if (c == '#') {
            expression.kind = Expression::Kind::Instance;
            expression.id = InstanceName();
        } else if (c == '@') {
            ++at_;
            expression.model = ModelName();
            expression.kind = Expression::Kind::Model;
            if (Peek() == '#') {
                expression.kind = Expression::Kind::Instance;
                expression.id = InstanceName();
            }
        } else if (TakeKeyword("NEW")) {
            ParseNew(expression);
        } else if (IsLetter(c)) {
            expression.kind = Expression::Kind::Variable;
            expression.name = Name("a name");
            if (Take('(')) {
                expression.kind = Expression::Kind::Call;
                expression.operands = Operands();
            }
        } else {
            Fail("an expression");
        }
        return Make(std::move(expression));
    }

    void ParseNew(Expression& expression) {
        expression.kind = Expression::Kind::New;
        SkipBlanks();
        if (Peek() == '@') {
            ++at_;
            expression.model = ModelName();
            Expect('.');
        }
        SkipBlanks();
        expression.place = Here();
        expression.name = Name("an entity type");
        while (Take('+')) expression.name += '+' + Name("an entity type");
        Expect('(');
        SkipToItem();
        if (Take(')')) return;
        do {
            SkipToItem();
            Assignment assignment;
            assignment.place = Here();
            assignment.attribute = Name("an attribute");
            Expect('=');
            assignment.value = ParseExpression();
            expression.assignments.push_back(std::move(assignment));
        } while (Take(','));
        Expect(')');
    }

    // expr, expr )
    std::vector<ExpressionPtr> Operands() {
        std::vector<ExpressionPtr> operands;
        SkipToItem();
        if (Take(')')) return operands;
        do {
            operands.push_back(ParseExpression());
        } while (Take(','));
        Expect(')');
        return operands;
    }

    // ---- Literals

    SdaiPrimitiveH Text() {
        const Place place = Here();
        const std::size_t start = ++at_;
        for (;; ++at_) {
            if (AtLineEnd()) throw ScriptError(place, "a string without an end");
            if (Peek() != '\'') continue;
            if (Peek(1) != '\'') break;
            ++at_;
        }
        const exchange::DecodedString decoded =
            exchange::DecodeString(text_.substr(start, at_ - start), encoding_);
        if (decoded.error != nullptr) {
            throw ScriptError({line_, place.column + 1 + decoded.errorAt}, decoded.error);
        }
        ++at_;
        return SdaiString(decoded.text);
    }

    SdaiPrimitiveH Binary() {
        const Place place = Here();
        const std::size_t start = ++at_;
        while (IsDigit(Peek()) || (Peek() >= 'A' && Peek() <= 'F')) ++at_;
        if (Peek() != '"' || at_ == start || text_[start] > '3') {
            throw ScriptError(place, "a binary value is hexadecimal digits, the first from 0 to 3");
        }
        return SdaiPrimitiveH::Binary(SdaiString(text_.substr(start, at_++ - start)));
    }

    SdaiPrimitiveH Enumeration() {
        const Place place = Here();
        const std::size_t start = ++at_;
        while (IsWordCharacter(Peek())) ++at_;
        const std::string_view item = text_.substr(start, at_ - start);
        if (item.empty() || Peek() != '.') {
            throw ScriptError(place, "an enumeration value is a name between two points");
        }
        ++at_;
        if (item == "T") return sdaiLTRUE;
        if (item == "F") return sdaiLFALSE;
        if (item == "U") return SdaiLogical();
        return SdaiPrimitiveH::Enumeration(SdaiString(item));
    }

    SdaiPrimitiveH Number() {
        const Place place = Here();
        const std::size_t start = at_;
        if (Peek() == '-' || Peek() == '+') ++at_;
        if (!IsDigit(Peek())) Fail("a digit");
        while (IsDigit(Peek())) ++at_;
        // A point may also begin an attribute access, but numbers have no attributes.
        const bool isReal = Peek() == '.';
        if (isReal) {
            ++at_;
            while (IsDigit(Peek())) ++at_;
            if ((Peek() == 'E' || Peek() == 'e') &&
                (IsDigit(Peek(1)) || ((Peek(1) == '-' || Peek(1) == '+') && IsDigit(Peek(2))))) {
                at_ += 2;
                while (IsDigit(Peek())) ++at_;
            }
        }
        std::string_view digits = text_.substr(start, at_ - start);
        if (digits.starts_with('+')) digits.remove_prefix(1);
        const auto read = [&](auto value) -> SdaiPrimitiveH {
            const char* end = digits.data() + digits.size();
            if (std::from_chars(digits.data(), end, value).ec != std::errc()) {
                throw ScriptError(place, "a number out of range");
            }
            return value;
        };
        return isReal ? read(0.0) : read(0L);
    }

    std::uint64_t InstanceName() {
        ++at_;
        if (!IsDigit(Peek())) Fail("the number of an instance");
        std::uint64_t id = 0;
        const auto [end, error] =
            std::from_chars(text_.data() + at_, text_.data() + text_.size(), id);
        if (error != std::errc()) throw ScriptError(Here(), "a number out of range");
        at_ = static_cast<std::size_t>(end - text_.data());
        return id;
    }

    // The name of a model after "@": the longest that matches here, otherwise a word.
    std::string ModelName() {
        const std::string* longest = nullptr;
        for (const std::string& name : modelNames_) {
            if (text_.substr(at_).starts_with(name) && !IsWordCharacter(Peek(name.size())) &&
                (longest == nullptr || name.size() > longest->size())) {
                longest = &name;
            }
        }
        if (longest != nullptr) {
            at_ += longest->size();
            return *longest;
        }
        const std::size_t start = at_;
        while (IsWordCharacter(Peek()) || Peek() == '-') ++at_;
        return std::string(text_.substr(start, at_ - start));
    }

    // ---- Tokens

    char Peek(std::size_t ahead = 0) const {
        return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0';
    }
    bool AtLineEnd() const { return at_ == text_.size() || Peek() == '\n'; }

    Place Here() const {
        return {line_, static_cast<std::uint64_t>(static_cast<long>(at_) - lineStart_ + 1)};
    }

    Place NextHere() {
        SkipBlanks();
        return Here();
    }

    void NewLine() {
        ++at_;
        ++line_;
        lineStart_ = static_cast<long>(at_);
    }

    // Past blanks and a remark, within the line.
    void SkipBlanks() {
        while (Peek() == ' ' || Peek() == '\t' || Peek() == '\r') ++at_;
        if (Peek() == '-' && Peek(1) == '-') {
            while (!AtLineEnd()) ++at_;
        }
    }

    // The same over any number of lines.
    void SkipLines() {
        for (;;) {
            SkipBlanks();
            if (at_ == text_.size() || Peek() != '\n') return;
            NewLine();
        }
    }

    // Moves to the text after a `:`, `;`, `,` or `(`, in this line or in the next non-empty line.
    void SkipToItem() {
        SkipBlanks();
        if (AtLineEnd() && continues_) SkipLines();
        continues_ = false;
    }

    // Skips a malformed statement, to the end of its last line.
    void SkipStatement() {
        char last = '\0';
        for (;;) {
            SkipBlanks();
            if (at_ == text_.size()) return;
            if (Peek() == '\n') {
                const bool goesOn = last == ':' || last == ';' || last == ',' || last == '(';
                if (!goesOn) return;
                NewLine();
                continue;
            }
            last = Peek();
            ++at_;
            if (last != '\'') continue;
            while (!AtLineEnd() && Peek() != '\'') ++at_;
            if (!AtLineEnd()) ++at_;
        }
    }

    bool Take(char c) {
        SkipBlanks();
        if (Peek() != c) return false;
        ++at_;
        continues_ = c == ':' || c == ';' || c == ',' || c == '(';
        return true;
    }

    void Expect(char c) {
        if (!Take(c)) Fail(std::string("'") + c + "'");
    }

    bool TakeKeyword(std::string_view keyword) {
        SkipBlanks();
        if (!text_.substr(at_).starts_with(keyword) || IsWordCharacter(Peek(keyword.size()))) {
            return false;
        }
        at_ += keyword.size();
        continues_ = false;
        return true;
    }

    std::string Name(const char* what) {
        SkipBlanks();
        if (!IsLetter(Peek())) Fail(what);
        const std::size_t start = at_;
        while (IsWordCharacter(Peek())) ++at_;
        continues_ = false;
        return std::string(text_.substr(start, at_ - start));
    }

    [[noreturn]] void Fail(const std::string& expected) {
        SkipBlanks();
        std::string found = "the end of the line";
        if (!AtLineEnd()) {
            std::size_t end = at_ + FirstOf(text_.substr(at_)).length;
            while (IsLetter(Peek()) && end < text_.size() && IsWordCharacter(text_[end])) ++end;
            found = "'";
            found += text_.substr(at_, end - at_);
            found += '\'';
        }
        throw ScriptError(Here(), expected + " expected, found " + found);
    }

    const std::string_view text_;
    const exchange::Encoding encoding_;
    std::size_t at_ = 0;
    std::uint64_t line_;
    long lineStart_;  // where the line starts in the text; before it, for a column beyond the first
    const std::vector<std::string> modelNames_;
    bool continues_ = false;  // after the last token, the statement may continue in the next line
    int depth_ = 0;
};

// Skips the byte order mark that some editors write.
static std::string_view WithoutMark(std::string_view text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    return text.substr(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
}

ScriptReader::ScriptReader(std::string_view text, Place start, std::vector<std::string> modelNames)
    : parser_(std::make_unique<Parser>(WithoutMark(text), start, std::move(modelNames))) {}

ScriptReader::~ScriptReader() = default;

std::optional<Statement> ScriptReader::Next() { return parser_->Next(); }

}  // namespace host
