// The models of the second platform, for the contract's tests.

#include "Models.h"
#include "Notation.h"
#include "SecondPlatform.h"

std::unique_ptr<SdaiModel> NewModel(const char* schema) {
    return second::NewModel(tables::BuiltInSchema(schema));
}
