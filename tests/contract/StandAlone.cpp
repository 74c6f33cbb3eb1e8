// The models of the stand-alone platform.

#include <stdexcept>

#include "ExchangeModels.h"
#include "Models.h"

std::unique_ptr<SdaiModel> NewModel(const char* schema) {
    std::vector<std::string> messages;
    std::unique_ptr<SdaiModel> model = exchange::NewModel(schema, messages);
    if (model == nullptr) throw std::runtime_error(messages.front());
    return model;
}
