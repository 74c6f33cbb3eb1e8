// The strings that carry configurations and effectivities through STEP data: written on export,
// read on import. Fields.h describes their fields.
//
//     effectivity identifier          S0003ORX S(id of the configuration item) S(type)
//                                     |        ||                              ||
//                                     0        8| 13: n characters         13+n| 18+n: m characters
//                                               9: n as %04d               14+n: m as %04d
//         type: the option_type of an option effectivity, range_effectivity, date_effectivity or
//         UNDEFINED
//
//     configuration identifier        S0003ORX S(id of the item) [S(id of the handler)]
//
//     effectivity attributes          S(range) S(id)    S(date) S(id)
//         of an option effectivity    S(option_type) S(option_id) S(id)
//
//     date string                     mmddyyyyHHMMSS, fourteen zeros for an open date

#ifndef ORX_CONFIGURATIONSTRINGS_H
#define ORX_CONFIGURATIONSTRINGS_H

#include "Fields.h"
#include "Trace.h"

namespace orx {

// The field that configuration and effectivity identifiers begin with: 8 characters.
inline const KORUnicodeString kOrx("ORX");
inline const Field kOrxTag{'S', kOrx};
inline constexpr int kOrxTagLength = 8;

inline constexpr const char* kOpenDate = "00000000000000";

// The DESCRIPTION of a CONFIGURATION_ITEM, which holds the configuration identifier. If there is
// none, returns an unset handle and traces the reason.
inline SdaiPrimitiveH DescriptionOf(Trace& trace, const SdaiPrimitiveH& item) {
    using namespace sdai_names;
    if (!item.exists()) {
        trace.Line("KO : CONFIGURATION_ITEM doesn't exist");
        return {};
    }
    trace.Line("CONFIGURATION_ITEM exists : OK ");
    SdaiPrimitiveH description = item.GetAttr("DESCRIPTION"_name);
    if (!description.exists()) trace.Line("NO DESCRIPTION attribute on CONFIGURATION_ITEM");
    return description;
}

}  // namespace orx

#endif
