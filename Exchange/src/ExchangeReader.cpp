// The reader of exchange files (ISO 10303-21).
//
// One pass over the bytes: an instance is read into cells and goes into the model as soon as it is
// whole. A reference to an instance that comes later waits in its place in the model until the
// instance is there. What a file lacks at the end is looked for in a second pass, which finds where
// it is referred to.

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <map>
#include <optional>
#include <set>

#include "Exchange.h"
#include "ExchangeText.h"
#include "ExchangeWriter.h"
#include "Input.h"
#include "Quoted.h"

namespace exchange {

using kor::Cell;
using kor::Domain;
using kor::EntityType;
using kor::Tag;

namespace {

// ---- Characters

enum CharacterClass : unsigned char {
    kSpace = 1,  // between tokens; line breaks apart
    kDigit = 2,
    kLetter = 4,  // A to Z, a to z, _
    kQuiet = 8,   // stands for itself in a string
    kHex = 16,
    kLower = 64,
    kNoToken = 32,  // begins no token, or stands at the end of the window
};

constexpr auto kClasses = [] {
    std::array<unsigned char, 256> classes{};
    for (const char c : {' ', '\t', '\r', '\f', '\v'}) {
        classes[static_cast<unsigned char>(c)] |= kSpace;
    }
    for (unsigned c = '0'; c <= '9'; ++c) classes[c] |= kDigit | kHex;
    for (unsigned c = 'A'; c <= 'F'; ++c) classes[c] |= kHex;
    for (unsigned c = 'A'; c <= 'Z'; ++c) classes[c] |= kLetter;
    for (unsigned c = 'a'; c <= 'z'; ++c) classes[c] |= kLetter | kLower;
    classes['_'] |= kLetter;
    for (const char c : {' ', '\t', '\r', '\f', '\v', '\n', '/', '\\', '\0'}) {
        classes[static_cast<unsigned char>(c)] |= kNoToken;
    }
    for (unsigned c = ' '; c <= '~'; ++c) classes[c] |= c != '\'' && c != '\\' ? kQuiet : 0;
    return classes;
}();

bool IsDigit(char c) { return static_cast<unsigned>(c - '0') < 10; }

bool Is(char c, unsigned classes) {
    return (kClasses[static_cast<unsigned char>(c)] & classes) != 0;
}

// Powers of ten that a double holds exactly.
constexpr std::array<double, 23> kPowersOfTen{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                              1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                              1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Deeper than any schema nests aggregates.
constexpr int kDeepestNesting = 100;

// The digits of an instance name: a number of more may have no successor to number a new instance
// by.
constexpr std::ptrdiff_t kMostDigits = 18;

constexpr std::size_t kLongestString = std::size_t{1} << 30;

// What a broken statement is left by; the message has been given.
struct Broken {};

const char* NameOf(Tag tag) {
    switch (tag) {
        case Tag::Integer: return "an INTEGER";
        case Tag::Real: return "a REAL";
        case Tag::Logical: return "a LOGICAL";
        case Tag::Boolean: return "a BOOLEAN";
        case Tag::Text: return "a STRING";
        case Tag::Enumeration: return "an ENUMERATION";
        case Tag::Binary: return "a BINARY";
        case Tag::Aggregate: return "an AGGREGATE";
        case Tag::Typed: return "a typed value";
        default: return "an instance";
    }
}

const char* NameOf(Domain::Base base) {
    switch (base) {
        case Domain::Base::Integer: return "an INTEGER";
        case Domain::Base::Real: return "a REAL";
        case Domain::Base::Number: return "a NUMBER";
        case Domain::Base::String: return "a STRING";
        case Domain::Base::Boolean: return "a BOOLEAN";
        case Domain::Base::Logical: return "a LOGICAL";
        case Domain::Base::Binary: return "a BINARY";
        case Domain::Base::Enumeration: return "an ENUMERATION";
        case Domain::Base::Entity: return "an instance";
        case Domain::Base::Select: return "a select value";
        case Domain::Base::Aggregate: return "an AGGREGATE";
        default: return "a value";
    }
}

// ---- The reader

class Reader {
  public:
    Reader(Source& source, const std::string& name, const SchemaCatalog& schemas,
           const ReadOptions& options, Messages& messages)
        : source_(source),
          name_(name),
          schemas_(schemas),
          options_(options),
          messages_(messages),
          in_(source) {
        in_.progress = options.progress;
    }

    DataSet Read() {
        try {
            ReadFile();
        } catch (const Broken&) {
        }
        if (!source_.error.empty()) messages_.AddError({name_, 0, 0, source_.error});
        ReleaseCells();
        if (inData_ && (complete_ || options_.lenient)) SettleReferences();
        if (messages_.ErrorCount() != 0) dataSet_.model.reset();
        return std::move(dataSet_);
    }

  private:
    // ---- Messages

    void Warn(Place place, std::string text) {
        messages_.AddWarning({name_, place.line, place.column, std::move(text)});
    }
    // An error; in the data section of a lenient read, a warning.
    void Report(Place place, std::string text) {
        if (options_.lenient && inData_) {
            Warn(place, std::move(text));
        } else {
            messages_.AddError({name_, place.line, place.column, std::move(text), inData_});
        }
    }
    [[noreturn, gnu::cold]] void Fail(Place place, std::string text) {
        Report(place, std::move(text));
        throw Broken();
    }
    [[noreturn, gnu::cold]] void FailHere(std::string text) { Fail(Here(), std::move(text)); }
    Place Here() const { return in_.PlaceOf(in_.at); }

    // What stands here, for a message.
    std::string Found() {
        if (in_.AtEnd()) return "the end of the file";
        const char c = *in_.at;
        if (!Is(c, kLetter)) return Quoted(std::string_view(in_.at, 1));
        const char* end = in_.at;
        while (Is(*end, kLetter | kDigit)) ++end;
        return Quoted(std::string_view(in_.at, static_cast<std::size_t>(end - in_.at)));
    }

    // ---- Tokens

    // Goes to the next token: past white space, comments and print control directives.
    void Skip() {
        if (Is(*in_.at, kNoToken)) SkipNoTokens();
        in_.Ahead();
    }

    [[gnu::noinline]] void SkipNoTokens() {
        for (;;) {
            const char c = *in_.at;
            if (Is(c, kSpace)) {
                ++in_.at;
            } else if (c == '\n') {
                in_.NewLine(++in_.at);
            } else if (c == '/' || c == '\\') {
                if (!SkipOther()) break;
            } else if (c != '\0' || in_.at != in_.end || in_.AtEnd()) {
                break;
            }
        }
    }

    bool SkipOther() {
        in_.Ahead();
        const char* at = in_.at;
        if (at[0] == '/' && at[1] == '*') {
            SkipComment();
            return true;
        }
        if (at[0] == '\\' && (at[1] == 'N' || at[1] == 'F') && at[2] == '\\') {
            in_.at += 3;
            return true;
        }
        return false;
    }

    void SkipComment() {
        const Place start = Here();
        in_.at += 2;
        for (;;) {
            in_.Ahead();
            if (in_.at == in_.end) Fail(start, "a comment without an end");
            if (in_.at[0] == '*' && in_.at[1] == '/') break;
            if (*in_.at++ == '\n') in_.NewLine(in_.at);
        }
        in_.at += 2;
    }

    bool TakeIf(char c) {
        Skip();
        if (*in_.at != c) return false;
        ++in_.at;
        return true;
    }

    void Expect(char c) {
        if (!TakeIf(c)) FailExpecting(c);
    }
    [[noreturn, gnu::cold]] void FailExpecting(char c) {
        FailHere(std::string("'") + c + "' expected, found " + Found());
    }

    // A word of letters and digits; it stays in the window until the next token is asked for.
    std::string_view Word() {
        const char* start = in_.at;
        const char* at = start;
        while (Is(*at, kLetter | kDigit)) ++at;
        if (static_cast<std::size_t>(at - start) >= Input::kAhead / 2) FailHere("a word too long");
        in_.at = at;
        return {start, static_cast<std::size_t>(at - start)};
    }

    // A keyword in upper case, user-defined ones with their "!".
    std::string_view Keyword() {
        Skip();
        const char* start = in_.at;
        const char* at = start + (*start == '!' ? 1 : 0);
        if (!Is(*at, kLetter)) FailHere("a keyword expected, found " + Found());
        unsigned char classes = 0;
        for (; Is(*at, kLetter | kDigit); ++at)
            classes |= kClasses[static_cast<unsigned char>(*at)];
        const std::string_view keyword(start, static_cast<std::size_t>(at - start));
        if (keyword.size() >= Input::kAhead / 2) FailHere("a word too long");
        in_.at = at;
        if ((classes & kLower) == 0) return keyword;
        keyword_ = kor::Folded(keyword);
        return keyword_;
    }

    bool TakeWord(std::string_view word) {
        Skip();
        const std::string_view ahead(in_.at, static_cast<std::size_t>(in_.end - in_.at));
        if (!ahead.starts_with(word)) return false;
        if (Is(in_.at[word.size()], kLetter | kDigit) || in_.at[word.size()] == '-') return false;
        in_.at += word.size();
        return true;
    }

    // An instance name of many digits may begin with zeros.
    void CheckDigits(const char* end) {
        const char* first = in_.at;
        while (*first == '0') ++first;
        if (end - first > kMostDigits) FailHere("an instance name of more than 18 digits");
    }

    // The number behind a "#".
    std::uint64_t InstanceName() {
        const char* at = in_.at;
        std::uint64_t id = 0;
        for (; IsDigit(*at); ++at) id = 10 * id + static_cast<unsigned>(*at - '0');
        if (at == in_.at) FailHere("a number expected after '#', found " + Found());
        if (at - in_.at > kMostDigits) CheckDigits(at);
        in_.at = at;
        return id;
    }

    // ---- Values

    Cell Number(bool realExpected) {
        const char* const start = in_.at;
        const bool negative = *start == '-';
        const char* at = start + (negative || *start == '+' ? 1 : 0);
        if (!Is(*at, kDigit)) {
            in_.at = at;
            FailHere("a digit expected, found " + Found());
        }
        // The digits as an integer, as long as it holds them, and the power of ten behind them.
        std::uint64_t digits = 0;
        long count = 0;
        int scale = 0;
        const auto takeDigits = [&] {
            const char* first = at;
            for (; IsDigit(*at); ++at) digits = 10 * digits + static_cast<unsigned>(*at - '0');
            count += at - first;
            return static_cast<int>(at - first);
        };
        takeDigits();
        const bool isReal = *at == '.' || *at == 'E' || *at == 'e';
        if (!isReal) {
            in_.at = at;
            return Integer(start, at, realExpected);
        }
        if (*at == '.') {
            ++at;
            scale = -takeDigits();
        }
        if (*at == 'E' || *at == 'e') {
            const char* exponent = at + 1;
            const bool negativeExponent = *exponent == '-';
            if (negativeExponent || *exponent == '+') ++exponent;
            if (!Is(*exponent, kDigit)) {
                in_.at = exponent;
                FailHere("the digits of an exponent expected, found " + Found());
            }
            int value = 0;
            for (; Is(*exponent, kDigit); ++exponent) {
                if (value < 100'000) value = 10 * value + (*exponent - '0');
            }
            scale += negativeExponent ? -value : value;
            at = exponent;
        }
        TooLong(start, at);
        in_.at = at;
        // Where a double holds the digits and the power exactly, one operation gives the nearest
        // double; elsewhere the library finds it.
        constexpr std::uint64_t kExact = std::uint64_t{1} << 53;
        if (count <= 19 && digits <= kExact && scale >= -22 && scale <= 22) {
            double value = static_cast<double>(digits);
            if (scale < 0) {
                value /= kPowersOfTen[static_cast<std::size_t>(-scale)];
            } else {
                value *= kPowersOfTen[static_cast<std::size_t>(scale)];
            }
            return Cell::Of(Tag::Real, negative ? -value : value);
        }
        return Cell::Of(Tag::Real, Real(start, at));
    }

    void TooLong(const char* start, const char* at) {
        if (static_cast<std::size_t>(at - start) >= Input::kAhead / 2) {
            Fail(in_.PlaceOf(start), "a number too long");
        }
    }

    Cell Integer(const char* start, const char* end, bool realExpected) {
        TooLong(start, end);
        // A number without a point where a real is declared is a real.
        if (realExpected) return Cell::Of(Tag::Real, Real(start, end));
        long value = 0;
        const char* digits = start + (*start == '+' ? 1 : 0);
        if (std::from_chars(digits, end, value).ec != std::errc()) {
            Fail(in_.PlaceOf(start), "an integer out of range: " +
                                         Quoted({start, static_cast<std::size_t>(end - start)}));
        }
        return Cell::Of(Tag::Integer, value);
    }

    double Real(const char* start, const char* end) {
        const char* digits = start + (*start == '+' ? 1 : 0);
        double value = 0;
        if (std::from_chars(digits, end, value).ec != std::errc::result_out_of_range) return value;
        if (IsLarge(digits, end)) {
            Fail(in_.PlaceOf(start),
                 "a real out of range: " + Quoted({start, static_cast<std::size_t>(end - start)}));
        }
        return *start == '-' ? -0.0 : 0.0;  // too small for a double
    }

    // Whether a number that no double holds is too large rather than too small: whether its first
    // digit that is not 0 stands before the point, once the exponent has moved the point.
    static bool IsLarge(const char* start, const char* end) {
        const char* const exponentSign =
            std::find_if(start, end, [](char c) { return c == 'E' || c == 'e'; });
        const char* const point = std::find(start, exponentSign, '.');
        const char* const first =
            std::find_if(start, exponentSign, [](char c) { return c >= '1' && c <= '9'; });
        long exponent = 0;
        if (exponentSign != end) {
            const char* digits = exponentSign + (exponentSign[1] == '+' ? 2 : 1);
            // More digits than an exponent can have say no more than that it is large.
            if (std::from_chars(digits, end, exponent).ec == std::errc::result_out_of_range) {
                exponent = std::numeric_limits<int>::max() * (*digits == '-' ? -1L : 1L);
            }
        }
        return point - first + exponent > 0;
    }

    // A string, its opening apostrophe taken.
    Cell String() {
        const char* const start = in_.at;
        const char* at = start;
        while (Is(*at, kQuiet)) ++at;
        if (*at == '\'' && at + 1 < in_.end && at[1] != '\'') {
            in_.at = at + 1;
            return Cell::OfText(Tag::Text, {start, static_cast<std::size_t>(at - start)});
        }
        return EncodedString(start);
    }

    // A string that is long or holds more than plain characters.
    Cell EncodedString(const char* start) {
        const Place place = in_.PlaceOf(start - 1);
        for (;;) {
            while (in_.at != in_.end && *in_.at != '\'') ++in_.at;
            start = in_.AheadKeeping(start);
            if (in_.at == in_.end) Fail(place, "a string without an end");
            if (*in_.at != '\'') continue;
            if (in_.at[1] != '\'') break;
            in_.at += 2;
        }
        const std::string_view encoded(start, static_cast<std::size_t>(in_.at - start));
        if (encoded.size() > kLongestString) Fail(place, "a string of more than 1 GiB");
        const DecodedString decoded = DecodeString(encoded);
        const char* const error = start + (decoded.error != nullptr ? decoded.errorAt : 0);
        in_.NewLines(start, error);
        const Place errorPlace = in_.PlaceOf(error);
        in_.NewLines(error, in_.at);
        ++in_.at;
        if (decoded.error != nullptr) {
            Report(errorPlace, decoded.error);
            if (!options_.lenient) throw Broken();
        }
        return Cell::OfText(Tag::Text, decoded.text);
    }

    // A binary value, its opening quotation mark taken.
    Cell Binary() {
        const Place place = in_.PlaceOf(in_.at - 1);
        const char* start = in_.at;
        for (;;) {
            start = in_.AheadKeeping(start);
            if (!Is(*in_.at, kHex)) break;
            ++in_.at;
        }
        if (*in_.at != '"') Fail(place, "a binary value may hold hexadecimal digits only");
        const std::string_view digits(start, static_cast<std::size_t>(in_.at - start));
        if (digits.empty() || digits.front() > '3') {
            Fail(place, "a binary value begins with a digit from 0 to 3");
        }
        ++in_.at;
        return Cell::OfText(Tag::Binary, digits);
    }

    // An enumeration item, its first point taken. T, F and U are truth values, unless the schema
    // declares an enumeration.
    Cell Enumeration(const Domain* domain) {
        const Place place = in_.PlaceOf(in_.at - 1);
        const std::string_view name = Word();
        if (name.empty() || *in_.at != '.') {
            Fail(place, "an enumeration value is a name between two points");
        }
        ++in_.at;
        const Domain::Base base = domain != nullptr ? domain->base : Domain::Base::Generic;
        if (name.size() == 1 && base != Domain::Base::Enumeration) {
            const bool boolean = base == Domain::Base::Boolean;
            switch (name.front()) {
                case 'T':
                    return Cell::Of(boolean ? Tag::Boolean : Tag::Logical, SdaiLogical(sdaiTRUE));
                case 'F':
                    return Cell::Of(boolean ? Tag::Boolean : Tag::Logical, SdaiLogical(sdaiFALSE));
                case 'U': return Cell::Of(Tag::Logical, SdaiLogical());
                default: break;
            }
        }
        return Cell::OfText(Tag::Enumeration, name);
    }

    // A value with the name of its type: KEYWORD(value).
    Cell TypedValue(const Domain* domain, int depth) {
        CheckDepth(depth);
        const Place place = Here();
        const std::string name(Keyword());
        const Domain* choice = nullptr;
        if (domain != nullptr && domain->IsSelect()) {
            choice = domain->Choice(name);
            if (choice == nullptr) {
                Warn(place, name + " is not among the types of the select" + Context());
            }
        }
        Expect('(');
        kor::CellHolder value(Value(choice, depth + 1));
        Expect(')');
        if (value.Get().GetTag() == Tag::Pending) {
            const auto id = value.Get().Get<std::uint64_t>();
            const Cell typed = Model().NewTyped(SdaiString(name), Cell());
            Model().AddPending(typed, id);
            return typed;
        }
        return Model().NewTyped(SdaiString(name), value.Take());
    }

    void CheckDepth(int depth) {
        if (depth > kDeepestNesting) {
            FailHere("values nested more than " + std::to_string(kDeepestNesting) + " deep");
        }
    }

    Cell List(const Domain* domain, int depth) {
        CheckDepth(depth);
        const Domain* element = domain != nullptr && domain->base == Domain::Base::Aggregate
                                    ? domain->element
                                    : nullptr;
        const std::size_t first = cells_.size();
        if (!TakeIf(')')) {
            do {
                cells_.push_back(Value(element, depth + 1));
            } while (TakeIf(','));
            Expect(')');
        }
        const std::span<const Cell> members(cells_.data() + first, cells_.size() - first);
        const Cell list = Model().NewAggregate(members, element != nullptr && element->IsSelect());
        cells_.resize(first);
        return list;
    }

    // Warns when a value of that kind may not stand where the domain is declared.
    void Check(const char* value, const Domain* domain, Tag tag) {
        if (domain != nullptr && !domain->admitted.Has(tag)) WarnOfKind(value, *domain, tag);
    }
    [[gnu::cold]] void WarnOfKind(const char* value, const Domain& domain, Tag tag) {
        Warn(in_.PlaceOf(value),
             std::string(NameOf(domain.base)) + " expected, found " + NameOf(tag) + Context());
    }

    Cell Value(const Domain* domain, int depth) {
        Skip();
        const char* const start = in_.at;
        switch (*start) {
            case '\'':
                Check(start, domain, Tag::Text);
                ++in_.at;
                return String();
            case '#':
                if (!inData_) FailHere("a reference to an instance in the header");
                Check(start, domain, Tag::Instance);
                ++in_.at;
                return Model().Reference(InstanceName());
            case '$': ++in_.at; return {};
            case '*': ++in_.at; return Cell::Of(Tag::Derived, 0);
            case '.': {
                ++in_.at;
                const Cell item = Enumeration(domain);
                Check(start, domain, item.GetTag());
                return item;
            }
            case '(':
                Check(start, domain, Tag::Aggregate);
                ++in_.at;
                return List(domain, depth);
            case '"':
                Check(start, domain, Tag::Binary);
                ++in_.at;
                return Binary();
            case '+':
            case '-':
            case '0':
            case '1':
            case '2':
            case '3':
            case '4':
            case '5':
            case '6':
            case '7':
            case '8':
            case '9': {
                const Cell number = Number(domain != nullptr && domain->base == Domain::Base::Real);
                Check(start, domain, number.GetTag());
                return number;
            }
            default:
                if (!Is(*start, kLetter) && *start != '!') {
                    FailHere("a value expected, found " + Found());
                }
                Check(start, domain, Tag::Typed);
                return TypedValue(domain, depth);
        }
    }

    // ---- Instances

    // Where a value stands, for a message.
    std::string Context() const {
        if (slot_ == nullptr || slot_->attribute == nullptr) return "";
        return " (attribute " + slot_->attribute->folded + ")";
    }

    // The parameters of a record, into cells_: the first `(` has been taken. The slots say what is
    // expected; there are none for a type that is not declared.
    void Parameters(std::span<const kor::Slot> slots) {
        const std::size_t first = cells_.size();
        if (TakeIf(')')) return;
        do {
            const std::size_t index = cells_.size() - first;
            slot_ = index < slots.size() ? &slots[index] : nullptr;
            cells_.push_back(Value(slot_ != nullptr ? slot_->domain : nullptr, 0));
        } while (TakeIf(','));
        slot_ = nullptr;
        Expect(')');
    }

    // Makes as many values of the cells from `first` on as the type declares.
    void CheckCount(Place place, const EntityType& entity, std::size_t first,
                    std::size_t expected) {
        const std::size_t count = cells_.size() - first;
        if (count == expected) return;
        Report(place, std::string(entity.Name().View()) + " has " + std::to_string(expected) +
                          " attributes, found " + std::to_string(count) + " values");
        if (!options_.lenient) throw Broken();
        while (cells_.size() > first + expected) {
            ReleaseCell(cells_.back());
            cells_.pop_back();
        }
        cells_.resize(first + expected);
    }

    // A type that the model made for itself, if it would.
    const EntityType& Own(Place place, const EntityType* entity) {
        if (entity == nullptr) {
            Fail(place, "more entity types that the schema does not declare than any schema has");
        }
        return *entity;
    }

    const EntityType& Undeclared(Place place, std::string_view keyword, std::size_t count) {
        return Own(place, Model().UndeclaredEntity(keyword, count));
    }

    const EntityType& SimpleInstance() {
        const Place place = Here();
        const std::string_view keyword = Keyword();
        const EntityType* declared = Model().GetSchema().FindEntity(keyword);
        if (declared == nullptr) {
            const std::string kept(keyword);  // the window may move before it is needed
            Expect('(');
            Parameters({});
            return Undeclared(place, kept, cells_.size());
        }
        Expect('(');
        Parameters(declared->Slots());
        CheckCount(place, *declared, 0, declared->Slots().size());
        return *declared;
    }

    // #1=(A(...)B(...)): the parts in any order, made alphabetical.
    const EntityType& ComplexInstance() {
        struct Part {
            const EntityType* entity;
            std::size_t first;
            std::size_t count;
        };
        const Place start = Here();
        std::vector<Part> parts;
        while (!TakeIf(')')) {
            Skip();
            const Place place = Here();
            const std::string keyword(Keyword());
            const EntityType* entity = Model().GetSchema().FindEntity(std::string_view(keyword));
            const std::size_t first = cells_.size();
            Expect('(');
            if (entity != nullptr) {
                Parameters(entity->OwnSlots());
                CheckCount(place, *entity, first, entity->OwnSlots().size());
            } else {
                Parameters({});
                entity = &Undeclared(place, keyword, cells_.size() - first);
            }
            parts.push_back({entity, first, cells_.size() - first});
        }
        if (parts.empty()) Fail(start, "an instance without a type");
        std::sort(parts.begin(), parts.end(), [](const Part& a, const Part& b) {
            return a.entity->FoldedName() < b.entity->FoldedName();
        });
        std::vector<const EntityType*> entities;
        std::vector<Cell> ordered;
        for (const Part& part : parts) {
            if (!entities.empty() && entities.back()->FoldedName() == part.entity->FoldedName()) {
                Fail(start, "an instance that is " + part.entity->FoldedName() + " twice");
            }
            entities.push_back(part.entity);
            const auto values = cells_.begin() + static_cast<long>(part.first);
            ordered.insert(ordered.end(), values, values + static_cast<long>(part.count));
        }
        cells_.swap(ordered);
        return Own(start, Model().ComplexEntity(entities));
    }

    // A statement of the data section; its "#" has been taken.
    void Instance(int depth = 0) {
        const Place place = in_.PlaceOf(in_.at - 1);
        const std::uint64_t id = InstanceName();
        current_ = id;
        Expect('=');
        if (TakeIf('&')) Scope(id, depth);
        const EntityType& entity = TakeIf('(') ? ComplexInstance() : SimpleInstance();
        if (Model().Find(id) != nullptr) Fail(place, "a second instance #" + std::to_string(id));
        Expect(';');
        Model().Create(*Model().TypeOf(entity), id, cells_);
        cells_.clear();
        current_.reset();
    }

    // &SCOPE #2=...; ENDSCOPE /#2/: the instances that belong to instance `id`, which itself
    // follows, and those of them that others may use (first edition only). In a model they are like
    // others.
    void Scope(std::uint64_t id, int depth) {
        CheckDepth(depth);
        if (!TakeWord("SCOPE")) FailHere("SCOPE expected, found " + Found());
        while (TakeIf('#')) Instance(depth + 1);
        if (!TakeWord("ENDSCOPE")) FailHere("ENDSCOPE expected, found " + Found());
        current_ = id;
        if (!TakeIf('/')) return;
        do {
            Expect('#');
            InstanceName();
        } while (TakeIf(','));
        Expect('/');
    }

    void ReleaseCells() {
        for (const Cell& cell : cells_) ReleaseCell(cell);
        cells_.clear();
        slot_ = nullptr;
    }

    // After a broken statement, goes on behind the next ";" that a new statement follows.
    void Resynchronise() {
        ReleaseCells();
        while (!in_.AtEnd()) {
            in_.Ahead();
            const char c = *in_.at++;
            if (c == '\n') in_.NewLine(in_.at);
            if (c != ';') continue;
            Skip();
            if (*in_.at == '#' || *in_.at == 'E') return;
        }
    }

    // ---- Sections

    void ReadFile() {
        if (in_.AtEnd()) Fail({1, 1}, "the file is empty");
        if (std::string_view(in_.at, static_cast<std::size_t>(in_.end - in_.at))
                .starts_with("\xEF\xBB\xBF")) {
            in_.at += 3;
        }
        if (!TakeWord("ISO-10303-21")) {
            Fail(Here(), "this is no exchange file: it does not begin with ISO-10303-21;");
        }
        Expect(';');
        if (!TakeWord("HEADER")) FailHere("HEADER expected, found " + Found());
        Expect(';');
        Header();
        while (TakeWord("ANCHOR") || TakeWord("REFERENCE")) SkipSection();
        if (!TakeWord("DATA")) FailHere("DATA expected, found " + Found());
        do {
            DataSection();
        } while (TakeWord("DATA"));
        if (!TakeWord("END-ISO-10303-21")) {
            FailHere("END-ISO-10303-21 expected, found " + Found());
        }
        Expect(';');
        complete_ = true;
        while (TakeWord("SIGNATURE")) SkipSection();
        Skip();
        if (!in_.AtEnd()) Warn(Here(), "what follows the end of the exchange file is skipped");
    }

    // Past an ENDSEC; at which a section ends whose content says nothing here.
    void SkipSection() {
        const Place start = Here();
        for (;;) {
            Skip();
            if (in_.AtEnd()) Fail(start, "a section without ENDSEC;");
            const char c = *in_.at;
            if (c == '\'') {
                SkipPast('\'');
            } else if (c == '<') {
                SkipPast('>');  // an address
            } else if (TakeWord("ENDSEC")) {
                if (TakeIf(';')) return;
            } else if (Is(c, kLetter | kDigit)) {
                for (; Is(*in_.at, kLetter | kDigit); in_.Ahead()) ++in_.at;
            } else {
                ++in_.at;
            }
        }
    }

    // Past what stands between this character and the next one that is `end`. A doubled apostrophe
    // in a string ends one string and begins another, for all that matters.
    void SkipPast(char end) {
        const Place start = Here();
        for (;;) {
            ++in_.at;
            in_.Ahead();
            if (in_.AtEnd()) Fail(start, std::string("there is no ") + end + " to this");
            if (*in_.at == '\n') in_.NewLine(in_.at + 1);
            if (*in_.at == end) break;
        }
        ++in_.at;
    }

    void Header() {
        // The header's values are no part of a model; this one holds them while they are read.
        static const SchemaPtr kNoSchema = [] {
            std::vector<kor::Diagnostic> errors;
            return kor::Schema::Make({}, errors);
        }();
        dataSet_.model = std::make_unique<kor::Model>(kNoSchema);
        SchemaPtr schema;
        while (!TakeWord("ENDSEC")) {
            Skip();
            const Place place = Here();
            std::string keyword(Keyword());
            Expect('(');
            Parameters({});
            Expect(';');
            if (keyword == "FILE_SCHEMA") schema = SchemaOf(place);
            dataSet_.header.push_back({std::move(keyword), ParametersText(cells_)});
            ReleaseCells();
        }
        Expect(';');
        if (schema == nullptr) Fail(Here(), "the header has no FILE_SCHEMA");
        dataSet_.model = std::make_unique<kor::Model>(std::move(schema));
        inData_ = true;
    }

    // The schema that the parameters of FILE_SCHEMA name: the first of the list, up to the first
    // blank.
    SchemaPtr SchemaOf(Place place) {
        const SdaiPrimitiveH list = cells_.empty() ? SdaiPrimitiveH() : ToHandle(cells_[0], false);
        const SdaiAggrInstance* names = list;
        const SdaiPrimitiveH first = names != nullptr ? names->GetMember(0) : SdaiPrimitiveH();
        const std::string_view whole = static_cast<const SdaiString&>(first).View();
        const std::string name(whole.substr(0, whole.find(' ')));
        if (name.empty()) Fail(place, "FILE_SCHEMA names no schema");
        SchemaPtr schema = schemas_.Find(name);
        if (schema == nullptr) {
            Fail(place, "unknown schema " + Quoted(name) + kor::DidYouMean(name, schemas_.Names()) +
                            " (give its EXPRESS file with --schema)");
        }
        return schema;
    }

    void DataSection() {
        if (TakeIf('(')) {
            Parameters({});
            ReleaseCells();
        }
        Expect(';');
        for (;;) {
            try {
                if (TakeIf('#')) {
                    Instance();
                } else if (TakeWord("ENDSEC")) {
                    Expect(';');
                    return;
                } else {
                    FailHere("an instance or ENDSEC expected, found " + Found());
                }
            } catch (const Broken&) {
                if (current_.has_value()) broken_.insert(*current_);
                current_.reset();
                Resynchronise();
                if (in_.AtEnd()) throw;
            }
        }
    }

    // ---- References

    void SettleReferences() {
        std::vector<std::uint64_t> missing = Model().SettleReferences();
        // What refers to a broken instance is sound itself.
        if (!options_.lenient)
            std::erase_if(missing, [&](auto id) { return broken_.contains(id); });
        if (missing.empty()) return;
        // Where they stand is not kept while reading: sound files need not pay for it.
        in_.progress = nullptr;
        in_.Rewind();
        FindReferences(missing);
    }

    void FindReferences(const std::vector<std::uint64_t>& missing) {
        try {
            for (;;) {
                Skip();
                if (in_.AtEnd()) return;
                if (*in_.at == '\'') {
                    SkipPast('\'');
                } else if (*in_.at == '#') {
                    const Place place = Here();
                    ++in_.at;
                    const std::uint64_t id = InstanceName();
                    Skip();
                    if (*in_.at != '=' && std::binary_search(missing.begin(), missing.end(), id)) {
                        Report(place, "there is no instance #" + std::to_string(id));
                    }
                } else {
                    ++in_.at;
                }
            }
        } catch (const Broken&) {
        }
    }

    kor::Model& Model() { return *dataSet_.model; }

    Source& source_;
    const std::string& name_;
    const SchemaCatalog& schemas_;
    const ReadOptions& options_;
    Messages& messages_;
    Input in_;
    DataSet dataSet_;

    std::vector<Cell> cells_;          // the values of the instance that is being read
    const kor::Slot* slot_ = nullptr;  // of the value that is being read
    std::string keyword_;
    std::optional<std::uint64_t> current_;  // the instance that is being read
    std::set<std::uint64_t> broken_;
    bool inData_ = false;
    bool complete_ = false;  // the end of the exchange file has been seen
};

}  // namespace

DataSet ReadDataSet(const std::string& path, const SchemaCatalog& schemas,
                    const ReadOptions& options, Messages& messages) {
    std::string error;
    const std::unique_ptr<Source> source = Source::Open(path, error);
    if (source == nullptr) {
        messages.AddError({path, 0, 0, error});
        return {};
    }
    return Reader(*source, path, schemas, options, messages).Read();
}

DataSet ParseDataSet(std::string_view text, const std::string& name, const SchemaCatalog& schemas,
                     const ReadOptions& options, Messages& messages) {
    const std::unique_ptr<Source> source = Source::Of(text);
    return Reader(*source, name, schemas, options, messages).Read();
}

}  // namespace exchange
