// The models of the second platform, for the module's tests.

#include "PlatformModels.h"

#include "SecondPlatform.h"

std::unique_ptr<SdaiModel> platform::NewModel(const tables::Schema& schema) {
    return second::NewModel(schema);
}

SdaiAppInstance* platform::Create(SdaiModel& model, const std::vector<std::string>& types,
                                  unsigned long number) {
    return second::Create(model, types, number);
}
