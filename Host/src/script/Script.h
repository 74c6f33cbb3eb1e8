// Scripts: the syntax of statements.
//
//     expr                                                        prints the value
//     LET name = expr
//     SET expr.attribute = expr
//     ADD expr TO expr.attribute                                  a member to an aggregate
//     EACH name IN [@model.]ENTITY_TYPE [WHERE expr]: item; item...
//     EACH name IN expr [WHERE expr]: item; item...
//
// An item is an expression, a LET, a SET or an ADD. `--` starts a remark. A statement ends with its
// line, unless the line ends in `:`, `;`, `,` or `(`.
//
//     'text' 7 1.5 .T. .F. .U. .ITEM. "0F" $ (1.,2.)       literals, as exchange files write them
//     #12  @model#12  @model  @                            instances and models
//     expr.ATTRIBUTE
//     Function(expr, ...)
//     NEW [@model.]ENTITY_TYPE(ATTRIBUTE = expr, ...)      A+B for an instance of several types
//     name                                                 what LET or EACH named so
//     expr[expr]                                           a member, counted from 1; a value of an
//                                                          instance that no schema declares
//     COUNT(expr)                                          the number of members
//     =  <>  <  <=  >  >=  NOT  AND  OR                    from the tightest to the loosest; (a OR
//     b)

#ifndef HOST_SCRIPT_H
#define HOST_SCRIPT_H

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "SdaiPrimitiveH.h"
#include "model/Place.h"

namespace host {

using kor::Place;

// The first place of a script.
inline constexpr Place kStartOfScript{1, 1};

// The characters of which names consist.
inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }
inline bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
inline bool IsWordCharacter(char c) { return IsLetter(c) || IsDigit(c); }

// What is wrong with a statement, and where.
class ScriptError : public std::runtime_error {
  public:
    ScriptError(Place place, const std::string& message)
        : std::runtime_error(message), place_(place) {}
    Place Where() const { return place_; }

  private:
    Place place_;
};

enum class Operator { Equal, NotEqual, Less, LessEqual, Greater, GreaterEqual, Not, And, Or };

struct Expression;
using ExpressionPtr = std::unique_ptr<Expression>;

// ATTRIBUTE = expr
struct Assignment {
    std::string attribute;
    Place place;
    ExpressionPtr value;
};

struct Expression {
    enum class Kind {
        Literal,    // value
        List,       // operands
        Variable,   // name
        Instance,   // id of model
        Model,      // model
        Attribute,  // name of operands[0]
        Call,       // name with operands
        New,        // name in model, assignments
        Index,      // operands[1] of operands[0]
        Operation,  // operation on operands
    };

    Kind kind;
    Place place;
    SdaiPrimitiveH value{};
    std::string name{};
    std::optional<std::string> model{};  // empty: the first
    std::uint64_t id = 0;
    Operator operation = Operator::Equal;
    std::vector<ExpressionPtr> operands{};
    std::vector<Assignment> assignments{};
    int height = 1;  // of the tree of expressions under this one
};

struct Item {
    enum class Kind { Print, Let, Set, Add } kind = Kind::Print;
    Place place;
    std::string name;      // of a LET; the attribute of a SET or an ADD
    ExpressionPtr target;  // of a SET or an ADD: the instance
    ExpressionPtr value;
    std::string text{};  // of an expression, as it is written, in one line
};

struct Statement {
    Place place;
    // One item, or an EACH with its items and what it iterates over.
    std::vector<Item> items;
    bool isEach = false;
    std::string variable;
    // For an EACH: an entity type of a model, or an expression. A single name, which could be
    // either, counts as an entity type.
    std::string entityType;
    std::optional<std::string> model;
    Place sourcePlace;
    ExpressionPtr source;
    ExpressionPtr where;
};

// Whether an incomplete statement continues in the next line, because it ends in `:`, `;`, `,` or
// `(`.
bool GoesOn(std::string_view statement);

// Reads statements one after the other. It needs the names of the models, which may contain any
// character, to find where a name ends.
class ScriptReader {
  public:
    ScriptReader(std::string_view text, Place start, std::vector<std::string> modelNames);
    ~ScriptReader();

    // The next statement; no value at the end. Throws ScriptError if it is malformed; the next call
    // then continues after it.
    std::optional<Statement> Next();

  private:
    class Parser;
    std::unique_ptr<Parser> parser_;
};

}  // namespace host

#endif
