// What a platform under test supplies to the contract tests besides the contract itself, which does
// not cover the creation of models.

#ifndef TESTS_CONTRACT_MODELS_H
#define TESTS_CONTRACT_MODELS_H

#include <memory>

#include "SdaiModel.h"

// An empty model of a schema: "cdma" or "AUTOMOTIVE_DESIGN".
std::unique_ptr<SdaiModel> NewModel(const char* schema);

#endif
