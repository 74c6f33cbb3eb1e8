// The EXPRESS texts in Exchange/schemas, one constant per file.

#ifndef EXCHANGE_SCHEMATEXTS_H
#define EXCHANGE_SCHEMATEXTS_H

namespace exchange {

extern const char* const k_cdma;
extern const char* const k_config_control_design;
extern const char* const k_derived_area_units;
extern const char* const k_later_editions;
extern const char* const k_named_area_units;
extern const char* const k_resources;

}  // namespace exchange

#endif
