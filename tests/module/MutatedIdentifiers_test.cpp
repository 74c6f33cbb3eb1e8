// Damaged identifiers: every reader of keys and identifier strings follows its rules exactly on
// every prefix of valid strings and on every string that differs from a valid one in one byte.
//
// These are some 6,000 strings, each for every reader: no table could list what to expect. So the
// rules are stated again here, as simply as possible, on std::string; each reader must return the
// same result and trace the same messages as its rules.

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <optional>
#include <set>
#include <sstream>

#include "ORXExUtilities.h"
#include "TestModel.h"
#include "TraceCapture.h"

namespace {

// ---- The strings

const std::string kGood[] = {
    // Effectivity attributes.
    "S0005rangeS0003R12",
    "S0004dateS0000",
    "S0012option_rangeS0002O1S0003E07",
    "S0011option_dateS0000S0006S0001X",
    "S0000S0000S0000",
    // Effectivity identifiers.
    "S0003ORXS0004CFG1S0017range_effectivity",
    "S0003ORXS0000S0016date_effectivity",
    "S0003ORXS0005S0000S0012option_range",
    "S0003ORXS0010CFG 123456S0011option_date",
    "S0003ORXS0001CS0009UNDEFINED",
    // Configuration identifiers.
    "S0003ORX",
    "S0003ORXS0004CFG1",
    "S0003ORXS0004CFG1S0002H7",
    "S0003ORXS0000S0012S0003ORXS00A",
    // Keys with numbers.
    "S0002ABI000242R00031.5S0000",
};

// The replacement bytes, in addition to the neighbours of each byte.
constexpr char kBytes[] = {'0', '2', '9', 'S', 's', 'I', 'R', 'X', ' ', '+', '-', '\0', '\xE9'};

// All prefixes, all strings with one byte changed, and all with one byte appended.
const std::set<std::string>& Mutants() {
    static const std::set<std::string> mutants = [] {
        std::set<std::string> made;
        for (const std::string& good : kGood) {
            for (std::size_t at = 0; at <= good.size(); ++at) {
                made.insert(good.substr(0, at));
                std::string bytes(std::begin(kBytes), std::end(kBytes));
                if (at < good.size()) {
                    bytes += static_cast<char>(good[at] + 1);
                    bytes += static_cast<char>(good[at] - 1);
                }
                for (const char byte : bytes) {
                    std::string changed = good;
                    if (at < good.size()) {
                        changed[at] = byte;
                    } else {
                        changed += byte;
                    }
                    made.insert(changed);
                }
            }
        }
        return made;
    }();
    return mutants;
}

// ---- The rules

// The result of a reader, as text, and its messages.
struct Answer {
    std::string value;
    std::vector<std::string> messages;
    bool traced = true;  // false if the messages do not matter
};

Answer Yes(std::vector<std::string> messages) { return {"TRUE", std::move(messages)}; }
Answer No(std::vector<std::string> messages) { return {"FALSE", std::move(messages)}; }

// The characters of a text from a position, as far as they exist. A length below 0 can lead to
// positions before the text, which count as its start.
std::string Cut(const std::string& text, long start, long length) {
    const auto first = static_cast<std::size_t>(std::max(start, 0L));
    if (length <= 0 || first >= text.size()) return "";
    return text.substr(first, static_cast<std::size_t>(length));
}

std::string Trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// An integer: digits with an optional sign, and blanks around them.
std::optional<long> Integer(const std::string& text) {
    const std::string number = Trimmed(text);
    const bool hasSign = !number.empty() && (number[0] == '+' || number[0] == '-');
    const std::string digits = number.substr(hasSign ? 1 : 0);
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) return {};
    if (digits.size() > 18) throw std::logic_error("no string here holds so large a number");
    const long value = std::stol(digits);
    return number[0] == '-' ? -value : value;
}

// A length that is not a number counts as 0.
long Length(const std::string& text, long at) { return Integer(Cut(text, at, 4)).value_or(0); }

Answer CFGType(const std::string& text, long mode) {
    const std::string types[] = {"range_effectivity", "date_effectivity", "option_range",
                                 "option_date"};
    const std::string exists = "The ATTRIBUTE VALUE exists : OK ";
    const std::string flag = " -> InputFlag = " + std::to_string(mode);
    if (mode < 1 || mode > 4) return No({exists, flag, " >> Invalid search mode << "});
    const long second = Length(text, 9) + 14;
    const std::string found = Cut(text, second + 4, Length(text, second));
    const std::string& wanted = types[mode - 1];
    const std::size_t common = std::min(found.size(), wanted.size());
    if (common > 0 && found.substr(0, common) == wanted.substr(0, common)) {
        return Yes({exists, flag, ">> IS A RIGHT TYPE <<"});
    }
    return No({exists, flag, ">> NOT A RIGHT TYPE <<"});
}

Answer EFFType(const std::string& text, long mode) {
    const std::string types[] = {"range", "date", "option_range", "option_date"};
    const std::string exists = "The attibute ID & InputFlag exist : OK ";
    if (mode < 1 || mode > 4) {
        return No({exists, " >> Invalid search mode : " + std::to_string(mode) + " << "});
    }
    if (Cut(text, 0, 1) == "S" && Cut(text, 5, Length(text, 1)) == types[mode - 1]) {
        return Yes({exists, ">> IS A CORRECT TYPE <<"});
    }
    return No({exists, ">> NOT A CORRECT TYPE<<"});
}

Answer EFFValue(const std::string& text, long mode) {
    const std::string empty = "EMPTY VALUE";
    std::vector<std::string> messages{"The attibute ID & InputFlag exist : OK ",
                                      " -> InputFlag = " + std::to_string(mode)};
    const auto stop = [&](const std::string& reason) {
        messages.push_back(reason);
        return Answer{empty, messages};
    };
    const auto give = [&](const std::string& value) {
        messages.push_back(">> la valeur retournee est : " + value + " <<");
        return Answer{value, messages};
    };
    const std::string incorrect = " >> Incorrect encoded string << ";

    if (mode != 1 && mode != 2) return stop(" >> Invalid search mode << ");
    if (Cut(text, 0, 1) != "S") return give(empty);
    const std::string type = Cut(text, 5, Length(text, 1));
    const bool hasOption = type != "range" && type != "date";
    long at = 5 + Length(text, 1);
    if (!hasOption && mode == 2) {
        messages.emplace_back(" >> Incompatible search mode with Input Value << ");
        return stop(" >> Eff type : " + text + " << ");
    }
    if (Cut(text, at, 1) != "S") return stop(incorrect);
    const std::string second = Cut(text, at + 5, Length(text, at + 1));
    at += 5 + Length(text, at + 1);
    if (!hasOption || mode == 2) return give(second);
    if (Cut(text, at, 1) != "S") return stop(incorrect);
    return give(Cut(text, at + 5, Length(text, at + 1)));
}

Answer HasThreeFields(const std::string& text, long) {
    const std::string exists = "CONFIGURATION_ITEM exists : OK ";
    const auto length = static_cast<long>(text.size());
    if (length < 8) {
        return No({exists, "NOT a ORX DESCRIPTION : length = " + std::to_string(length)});
    }
    long at = 0;
    for (int field = 0; field < 3; ++field) {
        if (at > length) return No({exists, "On se moque"});
        if (Cut(text, at, 1) != "S") return No({exists, "NOT a good format"});
        const std::optional<long> size = Integer(Cut(text, at + 1, 4));
        if (!size) return No({exists, "On se moque encore"});
        at += 5 + *size;
    }
    if (at != length) return No({exists, "j'abandonne"});
    return Yes({exists, ">> ORX DESCRIPTION OK <<"});
}

Answer HasTag(const std::string& text, long) {
    const std::string exists = "CONFIGURATION_ITEM exists : OK ";
    if (text.size() < 8) {
        return No({exists, "NOT a ORX DESCRIPTION : length = " + std::to_string(text.size())});
    }
    if (Cut(text, 0, 1) == "S" && Integer(Cut(text, 1, 4)) == 3 && Cut(text, 5, 3) == "ORX") {
        return Yes({exists, ">> ORX DESCRIPTION OK <<"});
    }
    return No({exists, ">> NO ORX DESCRIPTION <<"});
}

// A length below 0 makes a key malformed.
Answer IsKey(const std::string& text, long) {
    std::vector<std::string> messages;
    const auto give = [&](bool answer) {
        messages.push_back(std::string("IsEncodedKey retourne: ") + (answer ? "TRUE" : "FALSE"));
        return answer ? Yes(messages) : No(messages);
    };
    const auto length = static_cast<long>(text.size());
    for (long at = 0; at < length;) {
        const std::string letter = Cut(text, at, 1);
        const std::optional<long> size = Integer(Cut(text, at + 1, 4));
        messages.push_back("StartIndex = " + std::to_string(at + 1));
        messages.push_back("Type a lire: " + letter);
        if (letter != "S" && letter != "I" && letter != "R") return give(false);
        if (!size || *size < 0) return give(false);
        at += 5 + *size;
    }
    return give(length > 0);
}

std::string ShownReal(double value) {
    std::array<char, 40> shown{};
    std::snprintf(shown.data(), shown.size(), "REAL %.17g", value);
    return shown.data();
}

std::string ShownInteger(long value) { return "INTEGER " + std::to_string(value); }

double RealOf(const std::string& text) {
    const std::string number = Trimmed(text);
    char* end = nullptr;
    const double value = std::strtod(number.c_str(), &end);
    return !number.empty() && end == number.c_str() + number.size() ? value : 0.0;
}

std::string TracedReal(double value) {
    std::ostringstream traced;
    traced << value;
    return traced.str();
}

// A length below 0 ends a key.
Answer KeyField(const std::string& text, long place) {
    std::vector<std::string> messages{"TheEncodedKey = " + text,
                                      "ThePlacement = " + std::to_string(place)};
    const auto give = [&](const std::string& value, const std::string& reason) {
        messages.push_back(reason);
        return Answer{value, messages};
    };
    const auto length = static_cast<long>(text.size());
    if (place <= 0) return {"unset", messages};
    long at = 0;
    for (long field = 1;; ++field) {
        const std::string letter = Cut(text, at, 1);
        const long size = Length(text, at + 1);
        at += 5;
        messages.insert(
            messages.end(),
            {"CurrPlacement = " + std::to_string(field), "Type a lire: " + letter,
             "Index de debut : " + std::to_string(at), "Longueur a lire: " + std::to_string(size)});
        if (size < 0) return {"STRING EMPTY VALUE", {}, false};
        if (field == place) {
            messages.emplace_back("on a trouve a priori le bon placement");
            const std::string value = Cut(text, at, size);
            const long integer = Integer(value).value_or(letter == "I" ? 0 : -1);
            if (letter == "S") {
                return give("STRING " + value,
                            "Lecture de la chaine de caracteres: [" + value + "]");
            }
            if (letter == "I") {
                return give(ShownInteger(integer),
                            "Lecture de la valeur entiere: [" + std::to_string(integer) + "]");
            }
            if (letter == "R") {
                return give(ShownReal(RealOf(value)),
                            "Lecture de la valeur reelle: [" + TracedReal(RealOf(value)) + "]");
            }
            return give(ShownInteger(integer), "Valeur forcee a [WRONG TYPE ENCODING]");
        }
        messages.emplace_back("on saute la valeur lue et on continue");
        at += size;
        if (length <= at) {
            return give("STRING EMPTY VALUE", "on sort car la place demandee est inconnue");
        }
    }
}

// ---- The readers

// The contents of a handle, in the form of the rules.
std::string ShownLogical(const SdaiPrimitiveH& handle) { return IsTrue(handle) ? "TRUE" : "FALSE"; }

std::string Shown(const SdaiPrimitiveH& handle) {
    const std::string type(handle.UnderlyingTypeName());
    if (type.empty()) return "unset";
    if (type == "INTEGER") return ShownInteger(IntegerIn(handle));
    if (type == "REAL") return ShownReal(RealIn(handle));
    return type + " " + TextIn(handle);
}

// A CONFIGURATION_ITEM with a description.
class Item {
  public:
    SdaiPrimitiveH With(const std::string& description) const {
        item_->PutAttr("DESCRIPTION", Handle(description));
        return item_;
    }

  private:
    const TestModel model_{"CONFIG_CONTROL_DESIGN", "#1=CONFIGURATION_ITEM('C','',$,$,$);"};
    SdaiAppInstance* const item_ = static_cast<SdaiAppInstance*>(InstanceIn(model_[1]));
};

const Item& TheItem() {
    static const Item item;
    return item;
}

struct Reader {
    const char* name;
    const char* label;
    std::string (*read)(const std::string& text, long mode);
    Answer (*rules)(const std::string& text, long mode);
    std::vector<long> modes;
};

void PrintTo(const Reader& reader, std::ostream* stream) { *stream << reader.name; }

const Reader kReaders[] = {
    {"ExtractCFGType",
     "SdaiPrimitiveH ExtractCFGType ->",
     [](const std::string& text, long mode) {
         return ShownLogical(ExtractCFGType(Handle(text), Handle(mode)));
     },
     CFGType,
     {0, 1, 2, 3, 4, 5}},
    {"ExtractEFFType",
     "SdaiPrimitiveH ExtractEFFType ->",
     [](const std::string& text, long mode) {
         return ShownLogical(ExtractEFFType(Handle(text), Handle(mode)));
     },
     EFFType,
     {0, 1, 2, 3, 4, 5}},
    {"DecodeEFF",
     "SdaiPrimitiveH DecodeEFF ->",
     [](const std::string& text, long mode) {
         return TextIn(DecodeEFF(Handle(text), Handle(mode)));
     },
     EFFValue,
     {0, 1, 2, 3}},
    {"HasAORXValue",
     "SdaiPrimitiveH HasAORXValue ->",
     [](const std::string& text, long) { return ShownLogical(HasAORXValue(TheItem().With(text))); },
     HasThreeFields,
     {0}},
    {"IsAORXCfg",
     "SdaiPrimitiveH IsAORXCfg ->",
     [](const std::string& text, long) { return ShownLogical(IsAORXCfg(TheItem().With(text))); },
     HasTag,
     {0}},
    {"IsEncodedKey",
     "SdaiPrimitiveH IsEncodeKey ->",
     [](const std::string& text, long) { return ShownLogical(IsEncodedKey(Handle(text))); },
     IsKey,
     {0}},
    {"DecodeKey",
     "SdaiPrimitiveH DecodeKey ->",
     [](const std::string& text, long place) {
         return Shown(DecodeKey(Handle(text), Handle(place)));
     },
     KeyField,
     {0, 1, 2, 3, LONG_MAX}},
};

class MutatedIdentifiers : public testing::TestWithParam<Reader> {
  protected:
    // Enough failures to see what is wrong.
    static constexpr int kFailures = 10;
};

TEST_P(MutatedIdentifiers, AreReadByTheRules) {
    const Reader& reader = GetParam();
    int failures = 0;
    for (const std::string& text : Mutants()) {
        for (const long mode : reader.modes) {
            const std::string read = reader.read(text, mode);
            const std::string expected = reader.rules(text, mode).value;
            EXPECT_EQ(read, expected) << testing::PrintToString(text) << ", mode " << mode;
            if (read != expected && ++failures == kFailures) FAIL() << "and so on";
        }
    }
}

TEST_P(MutatedIdentifiers, AreTracedByTheRules) {
    const Reader& reader = GetParam();
    std::vector<std::string> expected;
    std::vector<std::string> texts;  // for each message, the string that it is about
    TraceCapture trace;
    for (const std::string& text : Mutants()) {
        // A message ends at a NUL.
        if (text.find('\0') != std::string::npos) continue;
        for (const long mode : reader.modes) {
            const Answer answer = reader.rules(text, mode);
            if (!answer.traced) continue;
            EXPECT_EQ(reader.read(text, mode), answer.value) << testing::PrintToString(text);
            for (const std::string& message : answer.messages) {
                expected.push_back(message);
                texts.push_back(text);
            }
        }
    }
    const std::vector<std::string> messages = trace.Messages(reader.label);
    for (std::size_t i = 0; i < std::min(messages.size(), expected.size()); ++i) {
        ASSERT_EQ(messages[i], expected[i]) << testing::PrintToString(texts[i]);
    }
    EXPECT_EQ(messages.size(), expected.size());
}

INSTANTIATE_TEST_SUITE_P(Readers, MutatedIdentifiers, testing::ValuesIn(kReaders),
                         [](const auto& reader) { return reader.param.name; });

}  // namespace
