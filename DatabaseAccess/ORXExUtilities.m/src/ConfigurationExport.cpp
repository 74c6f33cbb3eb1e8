// Effectivities and configurations, exported from the database to STEP.

#include <array>
#include <initializer_list>
#include <optional>

#include "Attributes.h"
#include "ConfigurationStrings.h"
#include "Identity.h"
#include "KORLocale.h"
#include "SdaiIterator.h"

using namespace orx;
using namespace sdai_names;

// ---- Kinds of effectivities

namespace {

// A family of effectivities: instances of an entity type, and option effectivities of that type.
struct Family {
    const SdaiName& entity;
    const char* option;
    const char* entityLine;
    const char* optionLine;
};

constexpr Family kRange{"range_effectivity"_name, "option_range", " -> Range Effectivity Type ",
                        " -> Option Range Effectivity Type "};
constexpr Family kDate{"date_effectivity"_name, "option_date", " -> Date Effectivity Type ",
                       " -> Option Date Effectivity Type "};

// Whether the effectivity belongs to one of the families. Entity types are tested before option
// types.
bool IsOfFamily(Trace& trace, const SdaiPrimitiveH& effectivity,
                std::initializer_list<const Family*> families) {
    if (!effectivity.exists()) {
        trace.Line("KO : Effectivity doesn't exist");
        return false;
    }
    trace.Line("Effectivity exists : OK ");
    for (const Family* family : families) {
        if (effectivity.IsKindOf(family->entity)) {
            trace.Line(family->entityLine);
            return true;
        }
    }
    if (!effectivity.IsKindOf("option_effectivity"_name)) return false;
    const SdaiPrimitiveH option = effectivity.GetAttr("option_type"_name);
    for (const Family* family : families) {
        if (TextOf(option) == family->option) {
            trace.Line(family->optionLine);
            return true;
        }
    }
    return false;
}

}  // namespace

SdaiPrimitiveH IsRangeOrDateEffectivity(const SdaiPrimitiveH& effectivity) {
    return Function<"IsRangeOrDateEffectivity">(sdaiLFALSE, [&](Trace& trace, auto& result) {
        result = SdaiBoolean(IsOfFamily(trace, effectivity, {&kRange, &kDate}));
        trace.Line(result ? ">> Effectivity IS a date or range type <<"
                          : ">> Effectivity IS NOT a date or range type <<");
    });
}

SdaiPrimitiveH IsRangeType(const SdaiPrimitiveH& effectivity) {
    return Function<"IsRangeType">(sdaiLFALSE, [&](Trace& trace, auto& result) {
        result = SdaiBoolean(IsOfFamily(trace, effectivity, {&kRange}));
        trace.Line(result ? ">> Effectivity IS range type <<"
                          : ">> Effectivity IS NOT a range type <<");
    });
}

SdaiPrimitiveH IsDateType(const SdaiPrimitiveH& effectivity) {
    return Function<"IsDateType">(sdaiLFALSE, [&](Trace& trace, auto& result) {
        result = SdaiBoolean(IsOfFamily(trace, effectivity, {&kDate}));
        trace.Line(result ? ">> Effectivity IS date type <<"
                          : ">> Effectivity IS NOT a date type <<");
    });
}

SdaiPrimitiveH GetIDEff(const SdaiPrimitiveH& effectivity) {
    return Function<"GetIDEff">(kEmptyValue, [&](Trace& trace, SdaiString& result) {
        if (effectivity.exists()) {
            trace.Line("Effectivity exists : OK ");
            if (effectivity.IsKindOf("option_effectivity"_name) &&
                effectivity.TestAttr("option_id"_name)) {
                result = TextOf(effectivity, "option_id"_name);
            }
            if ((effectivity.IsKindOf(kRange.entity) || effectivity.IsKindOf(kDate.entity)) &&
                effectivity.TestAttr("id"_name)) {
                result = TextOf(effectivity, "id"_name);
            }
        } else {
            trace.Line("KO : Effectivity doesn't exist");
        }
        trace.Line(">> la valeur retournee est : ", result, " <<");
    });
}

SdaiPrimitiveH ExtractCFGType(const SdaiPrimitiveH& identifier, const SdaiPrimitiveH& mode) {
    return Function<"ExtractCFGType">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (identifier.exists() && mode.exists()) {
            trace.Line("The ATTRIBUTE VALUE exists : OK ");
            const KORUnicodeString& text = TextOf(identifier);
            const long flag = mode;
            trace.Line(" -> InputFlag = ", flag);
            static constexpr std::array kAccepted{"range_effectivity", "date_effectivity",
                                                  "option_range", "option_date"};
            if (flag < 1 || flag > static_cast<long>(kAccepted.size())) {
                trace.Line(" >> Invalid search mode << ");
                return;
            }
            const FieldAt item(text, kOrxTagLength);
            const FieldAt type(text, item.Next());
            const char* accepted = kAccepted[static_cast<std::size_t>(flag - 1)];
            // The texts need not be equal: one may be a prefix of the other.
            result = SdaiBoolean(type.Compare(accepted) != 0);
        } else {
            trace.Line("KO : At least one of the entities doesn't exist");
        }
        trace.Line(result ? ">> IS A RIGHT TYPE <<" : ">> NOT A RIGHT TYPE <<");
    });
}

// ---- Bounds and dates

SdaiPrimitiveH GetRangeValue(const SdaiPrimitiveH& effectivity, const SdaiPrimitiveH& bound) {
    return Function<"GetRangeValue">(SdaiString(), [&](Trace& trace, SdaiString& result) {
        if (!effectivity.exists() || !bound.exists()) {
            trace.Line("KO : At least one of the entities doesn't exist");
            return trace.Line(">> la valeur retournee est : ", result, " <<");
        }
        trace.Line("Effectivity && Flag exist : OK ");
        const long flag = bound;
        trace.Line(" -> InputFlag = ", flag);
        if (flag != 1 && flag != 2) {
            trace.Line("      Input Flag UNKNOWN ");
            return;
        }
        const SdaiName* attribute = nullptr;
        if (effectivity.IsKindOf("range_effectivity"_name)) {
            attribute = flag == 1 ? &"start_range"_name : &"end_range"_name;
        } else if (effectivity.IsKindOf("option_effectivity"_name)) {
            attribute = flag == 1 ? &"option_start_range"_name : &"option_end_range"_name;
        } else {
            trace.Line("la valeur retournee est : ", result);
            return;
        }
        const SdaiPrimitiveH value = effectivity.GetAttr(*attribute);
        if (value.exists()) result = KORLocale::sConvertNumToString(static_cast<long>(value));
        trace.Line(">> la valeur retournee est : ", result, " <<");
    });
}

SdaiPrimitiveH IsInfiniteRank(const SdaiPrimitiveH& effectivity) {
    return Function<"IsInfiniteRank">(sdaiLTRUE, [&](Trace& trace, SdaiLogical& result) {
        if (effectivity.exists()) trace.Line("Effectivity exists : OK ");
        const auto endsAt = [&](const SdaiName& entity, const SdaiName& attribute) {
            return effectivity.IsKindOf(entity) &&
                   static_cast<long>(effectivity.GetAttr(attribute)) > 0;
        };
        if (endsAt("range_effectivity"_name, "end_range"_name)) result = sdaiLFALSE;
        if (endsAt("option_effectivity"_name, "option_end_range"_name)) result = sdaiLFALSE;
        trace.Line("Valeur Retournee :", result);
    });
}

SdaiPrimitiveH IsInfiniteDate(const SdaiPrimitiveH& effectivity) {
    return Function<"IsInfiniteDate">(sdaiLTRUE, [&](Trace& trace, SdaiLogical& result) {
        if (effectivity.exists()) trace.Line("Effectivity exists : OK ");
        const auto endsAt = [&](const SdaiName& entity, const SdaiName& attribute) {
            const SdaiPrimitiveH end = effectivity.GetAttr(attribute);
            return effectivity.IsKindOf(entity) && end.exists() && !(TextOf(end) == kOpenDate);
        };
        if (endsAt("date_effectivity"_name, "end_date"_name)) result = sdaiLFALSE;
        if (endsAt("option_effectivity"_name, "option_end_date"_name)) result = sdaiLFALSE;
        trace.Line("Valeur Retournee :", result);
    });
}

namespace {

// The attribute with the start or end of an effectivity's validity; null if the effectivity has no
// dates.
const SdaiName* DateAttribute(const SdaiPrimitiveH& effectivity, const SdaiName& ofDate,
                              const SdaiName& ofOption) {
    if (effectivity.IsKindOf("date_effectivity"_name)) return &ofDate;
    return effectivity.IsKindOf("option_effectivity"_name) ? &ofOption : nullptr;
}

}  // namespace

SdaiPrimitiveH GetStartDate(const SdaiPrimitiveH& effectivity, const SdaiPrimitiveH& anchor) {
    return Function<"GetStartDate">(SdaiPrimitiveH(), [&](Trace& trace, SdaiPrimitiveH& result) {
        if (!effectivity.exists() || !anchor.exists()) {
            trace.Line("KO : At least one of the entities doesn't exist");
            return;
        }
        trace.Line("Effectivity && EntityModel exist : OK ");
        // The start is read without testing whether it is set.
        SdaiString date;
        const SdaiName* attribute =
            DateAttribute(effectivity, "start_date"_name, "option_start_date"_name);
        if (attribute != nullptr) date = TextOf(effectivity, *attribute);
        result = BuildDatedEff(date, anchor.FindEntityInstanceModel());
    });
}

SdaiPrimitiveH GetEndDate(const SdaiPrimitiveH& effectivity, const SdaiPrimitiveH& anchor) {
    return Function<"GetEndDate">(SdaiPrimitiveH(), [&](Trace& trace, SdaiPrimitiveH& result) {
        if (!effectivity.exists() || !anchor.exists()) {
            trace.Line("KO : At least one of the entities doesn't exist");
            return;
        }
        trace.Line("Effectivity && EntityModel exist : OK ");
        const SdaiName* attribute =
            DateAttribute(effectivity, "end_date"_name, "option_end_date"_name);
        if (attribute == nullptr || !effectivity.TestAttr(*attribute)) {
            trace.Line("No END VALUE : return NULL");
            return;
        }
        result = BuildDatedEff(TextOf(effectivity, *attribute), anchor.FindEntityInstanceModel());
    });
}

namespace {

// The value of the leading digits of a text; 0 if there are none.
long LeadingNumber(const SdaiString& text) {
    long number = 0;
    for (const char c : text.View()) {
        if (c < '0' || c > '9') break;
        number = 10 * number + (c - '0');
    }
    return number;
}

}  // namespace

SdaiEntityInstance* BuildDatedEff(SdaiString date, SdaiModel* model) {
    SdaiEntityInstance* result = nullptr;
    Procedure<"BuildDatedEff">([&](Trace& trace) {
        trace.Line("Depiautage de la date: [", date, "]");
        const long month = LeadingNumber(date.substr(0, 1));
        const long day = LeadingNumber(date.substr(2, 3));
        const long year = LeadingNumber(date.substr(4, 7));
        const long hour = LeadingNumber(date.substr(8, 9));
        const long minute = LeadingNumber(date.substr(10, 11));
        const long second = LeadingNumber(date.substr(12, 13));
        trace.Line("Annee  : ", year);
        trace.Line("Mois   : ", month);
        trace.Line("Jour   : ", day);
        trace.Line("Heure  : ", hour);
        trace.Line("Minute : ", minute);
        trace.Line("Seconde: ", second);

        if (model == nullptr) return;
        // Only types that the schema declares: a model may also contain instances of undeclared
        // types, but these have none of the attributes.
        const auto typeOf = [model](const SdaiName& entity, const SdaiName& attribute) {
            const SdaiEntity* type = model->GetEntityDefinition(entity);
            return type != nullptr && type->AttrDefinition(attribute) != nullptr ? type : nullptr;
        };
        const SdaiEntity* timeType = typeOf("LOCAL_TIME"_name, "ZONE"_name);
        const SdaiEntity* offsetType =
            typeOf("COORDINATED_UNIVERSAL_TIME_OFFSET"_name, "HOUR_OFFSET"_name);
        const SdaiEntity* dateType = typeOf("CALENDAR_DATE"_name, "YEAR_COMPONENT"_name);
        const SdaiEntity* dateTimeType = typeOf("DATE_AND_TIME"_name, "TIME_COMPONENT"_name);
        if (!offsetType || !timeType || !dateType || !dateTimeType) return;

        // The offset has no values; it only fills the mandatory ZONE.
        SdaiAppInstance* offset = offsetType->CreateEntityInstance(model);
        SdaiAppInstance* time = timeType->CreateEntityInstance(model);
        time->PutAttr("HOUR_COMPONENT"_name, hour);
        time->PutAttr("MINUTE_COMPONENT"_name, minute);
        time->PutAttr("SECOND_COMPONENT"_name, static_cast<double>(second));
        time->PutAttr("ZONE"_name, offset);
        SdaiAppInstance* calendarDate = dateType->CreateEntityInstance(model);
        calendarDate->PutAttr("YEAR_COMPONENT"_name, year);
        calendarDate->PutAttr("DAY_COMPONENT"_name, day);
        calendarDate->PutAttr("MONTH_COMPONENT"_name, month);
        SdaiAppInstance* dateTime = dateTimeType->CreateEntityInstance(model);
        dateTime->PutAttr("DATE_COMPONENT"_name, calendarDate);
        dateTime->PutAttr("TIME_COMPONENT"_name, time);
        result = dateTime;
    });
    return result;
}

// ---- Configuration items and handlers

namespace {

// The first instance of a type, in the model's order, whose attribute refers to the part; null if
// there is none.
SdaiEntityInstance* FirstUserOf(Trace& trace, SdaiEntityInstance* part, const SdaiName& entity,
                                const SdaiName& attribute) {
    if (part == nullptr) return nullptr;
    const SdaiEntityInstance* const parts[] = {part};
    SdaiIterator_Of_Users user =
        Candidates(trace, part->FindEntityInstanceModel(), entity, attribute, parts);
    while (user.Next()) {
        const SdaiEntityInstance* instance = user.GetCurrentMember();
        // A value that is set but is not an instance is traced as well; it never matches.
        SdaiEntityInstance* referred = ReferredBy(instance, attribute);
        if (referred == nullptr && trace.IsActive() && !instance->TestAttr(attribute)) {
            trace.Line("NO design on the current configuration_item");
        } else if (IsSame0Of(part, referred, [&] { return instance->GetAttr(attribute); })) {
            trace.Line(" The same Part has just been retrieved : OK ");
            break;
        }
    }
    return user.GetCurrentMember();
}

}  // namespace

SdaiPrimitiveH IsPartInCfgitm(const SdaiPrimitiveH& part, const SdaiPrimitiveH& item) {
    return Function<"IsPartInCfgitm">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (part.exists() && item.exists()) {
            trace.Line("Part & CfgItem exist : OK ");
            if (item.TestAttr("design"_name)) {
                result =
                    static_cast<const SdaiLogical&>(IsSame0(part, item.GetAttr("design"_name)));
            } else {
                trace.Line("NO design on the configuration_item");
            }
        } else {
            trace.Line("KO : At least one of the entities doesn't exist");
        }
        trace.Line(result ? ">> Part IS IN CfgItem <<" : ">> Part NOT IN CfgItem <<");
    });
}

SdaiPrimitiveH IsPartConfigurated(const SdaiPrimitiveH& part) {
    return Function<"IsPartConfigurated">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        if (!part.exists()) {
            trace.Line("KO : Part doesn't exist");
            return trace.Line(">> Part IS NOT configurated <<");
        }
        trace.Line("Part exists : OK ");
        trace.Line("Get the configuration_item entities in schema cdma : OK ");
        if (FirstUserOf(trace, part, "configuration_item"_name, "design"_name) != nullptr) {
            trace.Line(" >> PART IS CONFIGURATED << ");
            result = sdaiLTRUE;
        } else {
            trace.Line(">> Part IS NOT configurated <<");
        }
    });
}

SdaiPrimitiveH IsUsedByPart(const SdaiPrimitiveH& part, const SdaiPrimitiveH& effectivity) {
    return Function<"IsUsedByPart">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        const auto cannotBeUsed = [&trace](const char* reason) {
            trace.Line(reason);
            trace.Line(">> Effectivity CANNOT BE USED by Part <<");
        };
        if (part.exists() && effectivity.exists()) {
            trace.Line("Part & Effectivity exist : OK ");
            if (!static_cast<const SdaiLogical&>(IsPartConfigurated(part))) {
                return cannotBeUsed("Part not configurated !");
            }
            if (!part.TestAttr("KORASS"_name)) {
                return cannotBeUsed("NO KORASS under the Part !");
            }
            const SdaiPrimitiveH links = part.GetAttr("KORASS"_name);
            if (links.GetMemberCount() == 0) {
                return cannotBeUsed("NO Link FOUND under the Part !!! Very Strange case");
            }
            trace.Line(links.GetMemberCount(), " link(s) found in part KORASS");
            if (!effectivity.TestAttr("usage"_name)) {
                return cannotBeUsed("NO usage for this effectivity ");
            }
            const SdaiPrimitiveH usage = effectivity.GetAttr("usage"_name);
            if (usage.GetMemberCount() == 0) {
                return cannotBeUsed("NO link found in usage effectivity !!! Very Strange case");
            }
            trace.Line(usage.GetMemberCount(), " link(s) found in effectivity usage");

            // Every link is tested, even after a match.
            const SdaiAggrInstance* governed = usage;
            SdaiIterator_Of_SdaiEntityInstanceH link(static_cast<SdaiAggrInstance*>(links));
            while (link.Next()) {
                if (governed->IsMember(link.GetCurrentMember())) {
                    trace.Line("ONE LINK FOUND");
                    result = sdaiLTRUE;
                }
            }
        } else {
            trace.Line("KO : At least one of the entities doesn't exist");
        }
        trace.Line(result ? ">> Effectivity USED by Part<<" : ">> Effectivity NOT USED by Part <<");
    });
}

// ---- Identifiers

namespace {

// The last instance of a type in the model of a part; null if there is none.
SdaiEntityInstance* LastOf(const SdaiPrimitiveH& part, const SdaiName& entity) {
    const SdaiAggrInstance* extent = ExtentOf(part.FindEntityInstanceModel(), entity);
    if (extent == nullptr) return nullptr;
    return extent->GetInstanceMember(extent->GetMemberCount() - 1);
}

}  // namespace

SdaiPrimitiveH ORXIdEff(const SdaiPrimitiveH& part, const SdaiPrimitiveH& effectivity) {
    return Function<"ORXIdEff">(kEmptyValue, [&](Trace& trace, SdaiString& result) {
        if (part.exists() && effectivity.exists()) {
            trace.Line("Part & Effectivity exist : OK ");
            trace.Line("Get the configuration_item entities in schema cdma : OK ");
            // The part's item or, if it has none, the last item of the model.
            SdaiPrimitiveH item(FirstUserOf(trace, part, "configuration_item"_name, "design"_name));
            if (!item.exists()) item = LastOf(part, "configuration_item"_name);
            SdaiString type("UNDEFINED");
            if (effectivity.IsKindOf("option_effectivity"_name)) {
                if (effectivity.TestAttr("option_type"_name)) {
                    type = TextOf(effectivity, "option_type"_name);
                }
            } else if (effectivity.IsKindOf("range_effectivity"_name)) {
                type = "range_effectivity";
            } else if (effectivity.IsKindOf("date_effectivity"_name)) {
                type = "date_effectivity";
            }
            result = EncodeFields({kOrxTag, {'S', TextOf(item, "id"_name)}, {'S', type}});
        } else {
            trace.Line("KO : At least one of the entities doesn't exist");
        }
        trace.Line(">> la valeur retournee est : ", result, " <<");
    });
}

SdaiPrimitiveH ORXIdCfg(const SdaiPrimitiveH& item) {
    return Function<"ORXIdCfg">(kEmptyValue, [&](Trace& trace, SdaiString& result) {
        if (!item.exists()) {
            trace.Line("KO : Configuration Item doesn't exist");
            return;
        }
        trace.Line("Configuration Item exists : OK ");
        const SdaiString id = TextOf(item, "id"_name);
        const SdaiPrimitiveH design = item.GetAttr("design"_name);
        trace.Line("Get the configuration_handelr entities in schema cdma : OK ");
        const SdaiPrimitiveH handler(
            FirstUserOf(trace, design, "configuration_handler"_name, "apply"_name));
        if (handler.exists()) {
            result = EncodeFields({kOrxTag, {'S', id}, {'S', TextOf(handler, "id"_name)}});
        } else {
            result = EncodeFields({kOrxTag, {'S', id}});
        }
        trace.Line(">> la valeur retournee est : ", result, " <<");
    });
}

SdaiPrimitiveH ConcatEffAtb(const SdaiPrimitiveH& effectivity) {
    return Function<"ConcatEffAtb">(kEmptyValue, [&](Trace& trace, SdaiString& result) {
        if (!effectivity.exists()) {
            trace.Line("KO : Effectivity doesn't exist");
            return;
        }
        trace.Line("Effectivity exists : OK ");
        const SdaiString id = TextOf(effectivity, "id"_name);
        if (effectivity.IsKindOf("option_effectivity"_name)) {
            result = EncodeFields({{'S', TextOf(effectivity, "option_type"_name)},
                                   {'S', TextOf(effectivity, "option_id"_name)},
                                   {'S', id}});
        } else if (effectivity.IsKindOf("range_effectivity"_name)) {
            result = EncodeFields({{'S', "range"}, {'S', id}});
        } else if (effectivity.IsKindOf("date_effectivity"_name)) {
            result = EncodeFields({{'S', "date"}, {'S', id}});
        } else {
            trace.Line("UNKNOWN Effectivity", result, " <<");
            return;
        }
        trace.Line(">> la valeur retournee est : ", result, " <<");
    });
}

SdaiPrimitiveH HasAORXValue(const SdaiPrimitiveH& item) {
    return Function<"HasAORXValue">(sdaiLFALSE, [&](Trace& trace, SdaiLogical& result) {
        const SdaiPrimitiveH description = DescriptionOf(trace, item);
        if (description.exists()) {
            const KORUnicodeString& text = TextOf(description);
            const long end = text.GetLengthInChar();
            if (end < kOrxTagLength) return trace.Line("NOT a ORX DESCRIPTION : length = ", end);
            long position = 0;
            for (int field = 0; field < 3; ++field) {
                if (position > end) return trace.Line("On se moque");
                if (!IsTextAt(text, position, "S")) return trace.Line("NOT a good format");
                const std::optional<long> length = LengthAt(text, position + 1);
                if (!length.has_value()) return trace.Line("On se moque encore");
                position += kFieldHead + *length;
            }
            if (position != end) return trace.Line("j'abandonne");
            result = sdaiLTRUE;
        }
        trace.Line(result ? ">> ORX DESCRIPTION OK <<" : ">> NO ORX DESCRIPTION <<");
    });
}
