// What the platform under test supplies to the contract tests beside the contract itself: a way to
// make models, which the contract leaves to it.

#ifndef TESTS_CONTRACT_MODELS_H
#define TESTS_CONTRACT_MODELS_H

#include <memory>

#include "SdaiModel.h"

// An empty model of a schema: "cdma" or "AUTOMOTIVE_DESIGN".
std::unique_ptr<SdaiModel> NewModel(const char* schema);

#endif
