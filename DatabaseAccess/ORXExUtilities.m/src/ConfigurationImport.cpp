// Effectivities and configurations, imported from STEP into the database.

#include <array>

#include "ConfigurationStrings.h"
#include "Function.h"
#include "KORLocale.h"

using namespace orx;
using namespace sdai_names;

SdaiPrimitiveH GetValue(const SdaiPrimitiveH& text) {
    return Function<"GetValue">(0L, [&](Trace& trace, long& result) {
        if (text.exists()) {
            trace.Line("String exists : OK ");
            long number;
            if (KORLocale::sConvertStringToNum(TextOf(text), &number) == 1) {
                result = number;
            }
        } else {
            trace.Line("KO : String doesn't exist => Infinite Value");
        }
        trace.Line(">> la valeur retournee est : ", result, " <<");
    });
}

namespace {

// Whether a component of a date or time is set; traces a line if it is.
bool IsSet(Trace& trace, const SdaiPrimitiveH& owner, const SdaiName& component, const char* line) {
    const bool set = static_cast<bool>(owner.TestAttr(component));
    if (set) trace.Line(line);
    return set;
}

template <class Number>
void Append(KORUnicodeString& text, Number number, const char* format) {
    KORUnicodeString digits;
    digits.BuildFromNum(number, format);
    text.Append(digits);
}

// Appends the month, day and year of a DATE_AND_TIME; false if one of them is missing.
bool AppendDate(Trace& trace, const SdaiPrimitiveH& dateTime, KORUnicodeString& text) {
    if (!dateTime.TestAttr("DATE_COMPONENT"_name)) {
        trace.Line(" -> DATE_COMPONENT attribute does not exist");
        return false;
    }
    const SdaiPrimitiveH date = dateTime.GetAttr("DATE_COMPONENT"_name);
    const bool hasYear = IsSet(trace, date, "YEAR_COMPONENT"_name, "Y. OK");
    const bool hasMonth = IsSet(trace, date, "MONTH_COMPONENT"_name, "Mo. OK");
    const bool hasDay = IsSet(trace, date, "DAY_COMPONENT"_name, "D. OK");
    if (!hasYear || !hasMonth || !hasDay) {
        trace.Line(" -> DATE_COMPONENT is incomplete ");
        return false;
    }
    Append(text, static_cast<long>(date.GetAttr("MONTH_COMPONENT"_name)), "%02d");
    Append(text, static_cast<long>(date.GetAttr("DAY_COMPONENT"_name)), "%02d");
    Append(text, static_cast<long>(date.GetAttr("YEAR_COMPONENT"_name)), "%04d");
    return true;
}

// Appends the hour, minute and second of a DATE_AND_TIME; false if the hour is missing.
bool AppendTime(Trace& trace, const SdaiPrimitiveH& dateTime, KORUnicodeString& text) {
    if (!dateTime.TestAttr("TIME_COMPONENT"_name)) {
        trace.Line(" -> TIME_COMPONENT attribute does not exist");
        return false;
    }
    const SdaiPrimitiveH time = dateTime.GetAttr("TIME_COMPONENT"_name);
    const bool hasHour = IsSet(trace, time, "HOUR_COMPONENT"_name, "H. OK");
    const bool hasMinute = IsSet(trace, time, "MINUTE_COMPONENT"_name, "Mi. OK");
    const bool hasSecond = IsSet(trace, time, "SECOND_COMPONENT"_name, "S. OK");
    if (!hasHour) {
        trace.Line(" -> TIME_COMPONENT is incomplete ");
        return false;
    }
    Append(text, static_cast<long>(time.GetAttr("HOUR_COMPONENT"_name)), "%02d");
    if (hasMinute) {
        trace.Line("Mi. OK");
        Append(text, static_cast<long>(time.GetAttr("MINUTE_COMPONENT"_name)), "%02d");
    } else {
        trace.Line("Mi. unset : OK ");
        text.Append("00");
    }
    if (hasSecond) {
        trace.Line("S. OK");
        Append(text, static_cast<double>(time.GetAttr("SECOND_COMPONENT"_name)), "%02g");
    } else {
        trace.Line("S. unset : OK ");
        text.Append("01");  // unlike an unset minute
    }
    return true;
}

}  // namespace

SdaiPrimitiveH GetDate(const SdaiPrimitiveH& select) {
    return Function<"GetDate">(SdaiString(kOpenDate), [&](Trace& trace, SdaiString& result) {
        if (!select.exists()) {
            trace.Line("KO : Select Entity doesn't exist => infinite value");
            return trace.Line(">> la valeur retournee est : ", result, " <<");
        }
        trace.Line("Select Entity exists : OK ");
        if (trace.IsActive()) trace.Line("Type of input entity :", select.UnderlyingTypeName());
        const SdaiPrimitiveH dateTime = static_cast<const SdaiSelectH&>(select).getValue();
        KORUnicodeString text;
        // A date without a time is ignored.
        if (!AppendDate(trace, dateTime, text) || !AppendTime(trace, dateTime, text)) return;
        result = text;
        trace.Line(">> la valeur retournee est : ", result, " <<");
    });
}

SdaiPrimitiveH ExtractEFFType(const SdaiPrimitiveH& text, const SdaiPrimitiveH& mode) {
    return Function<"ExtractEFFType">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (text.exists() && mode.exists()) {
            trace.Line("The attibute ID & InputFlag exist : OK ");
            const KORUnicodeString& encoded = TextOf(text);
            const long flag = mode;
            static constexpr std::array kAccepted{"range", "date", "option_range", "option_date"};
            if (flag < 1 || flag > static_cast<long>(kAccepted.size())) {
                trace.Line(" >> Invalid search mode : ", flag, " << ");
                return;
            }
            if (IsTextAt(encoded, 0, "S")) {
                const char* accepted = kAccepted[static_cast<std::size_t>(flag - 1)];
                result = SdaiBoolean(FieldAt(encoded, 0).Compare(accepted) == 2);
            }
        } else {
            trace.Line("KO : At least one of the entities doesn't exist");
        }
        trace.Line(result ? ">> IS A CORRECT TYPE <<" : ">> NOT A CORRECT TYPE<<");
    });
}

SdaiPrimitiveH DecodeEFF(const SdaiPrimitiveH& text, const SdaiPrimitiveH& mode) {
    return Function<"DecodeEFF">(kEmptyValue, [&](Trace& trace, SdaiString& result) {
        if (text.exists() && mode.exists()) {
            trace.Line("The attibute ID & InputFlag exist : OK ");
            const KORUnicodeString& encoded = TextOf(text);
            const long flag = mode;
            trace.Line(" -> InputFlag = ", flag);
            if (flag != 1 && flag != 2) return trace.Line(" >> Invalid search mode << ");
            if (IsTextAt(encoded, 0, "S")) {
                const FieldAt first(encoded, 0);
                const bool isOption = first.Compare("range") != 2 && first.Compare("date") != 2;
                if (!isOption && flag == 2) {
                    trace.Line(" >> Incompatible search mode with Input Value << ");
                    return trace.Line(" >> Eff type : ", encoded, " << ");
                }
                long position = first.Next();
                const auto isString = [&] {
                    if (IsTextAt(encoded, position, "S")) return true;
                    trace.Line(" >> Incorrect encoded string << ");
                    return false;
                };
                if (!isString()) return;
                // The id of the effectivity follows that of its option.
                if (isOption && flag == 1) {
                    position = FieldAt(encoded, position).Next();
                    if (!isString()) return;
                }
                result = FieldAt(encoded, position).Value();
            }
        } else {
            trace.Line("KO : At least one of the entities doesn't exist");
        }
        trace.Line(">> la valeur retournee est : ", result, " <<");
    });
}

SdaiPrimitiveH IsAORXCfg(const SdaiPrimitiveH& item) {
    return Function<"IsAORXCfg">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        const SdaiPrimitiveH description = DescriptionOf(trace, item);
        if (description.exists()) {
            const KORUnicodeString& text = TextOf(description);
            const int length = text.GetLengthInChar();
            if (length < kOrxTagLength) {
                return trace.Line("NOT a ORX DESCRIPTION : length = ", length);
            }
            result = SdaiBoolean(IsTextAt(text, 0, "S") && LengthAt(text, 1) == 3 &&
                                 IsTextAt(text, kFieldHead, "ORX"));
        }
        trace.Line(result ? ">> ORX DESCRIPTION OK <<" : ">> NO ORX DESCRIPTION <<");
    });
}
