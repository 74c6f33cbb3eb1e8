// References between instances.

#ifndef PYTHON_USERS_H
#define PYTHON_USERS_H

#include <string_view>
#include <vector>

#include "model/Model.h"

namespace python {

// The instances of an entity type that refer to an instance through an attribute, directly or in an
// aggregate, in extent order. They are found by the platform's back references or, if the attribute
// can be an aggregate, by searching the extent.
std::vector<SdaiEntityInstance*> UsersOf(const SdaiEntityInstance& instance,
                                         const kor::Model& model, const kor::EntityType& entity,
                                         std::string_view attribute);

// Whether every instance in a value belongs to the model.
bool RefersOnlyTo(const kor::Model& model, const SdaiPrimitiveH& value);

}  // namespace python

#endif
