// What each platform under test supplies besides the contract, which does not cover how models are
// created, nor what only data sets of other programs contain: numbers in any order, instances of
// several types at once, and types that the schema does not declare.

#ifndef TESTS_PLATFORMMODELS_H
#define TESTS_PLATFORMMODELS_H

#include <memory>
#include <string>
#include <vector>

#include "PlainTables.h"
#include "SdaiModel.h"

namespace platform {

// An empty model of a schema.
std::unique_ptr<SdaiModel> NewModel(const tables::Schema& schema);

// Creates an instance of an entity type, which the schema need not declare, or of several declared
// ones at once, with a number that is not in use. Null if one of several is not declared.
SdaiAppInstance* Create(SdaiModel& model, const std::vector<std::string>& types,
                        unsigned long number);

}  // namespace platform

#endif
