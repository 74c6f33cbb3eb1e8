// What a program needs on the second platform besides the contract, which does not cover how models
// are created and filled with the data of other programs.

#ifndef SECONDPLATFORM_H
#define SECONDPLATFORM_H

#include <memory>
#include <string>
#include <vector>

#include "PlainTables.h"
#include "SdaiModel.h"

namespace second {

// An empty model of a schema.
KOR_API std::unique_ptr<SdaiModel> NewModel(const tables::Schema& schema);

// Creates an instance of an entity type, which the schema need not declare, or of several declared
// ones at once, with a number that is not in use; null if one of several is not declared.
KOR_API SdaiAppInstance* Create(SdaiModel& model, const std::vector<std::string>& types,
                                unsigned long number);

}  // namespace second

#endif
