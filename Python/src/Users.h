// References between instances, as far as the package looks at them.

#ifndef PYTHON_USERS_H
#define PYTHON_USERS_H

#include <string_view>
#include <vector>

#include "Model.h"

namespace python {

// The instances of an entity type that refer to an instance through an attribute, directly or by a
// member of an aggregate, in extent order. Where the attribute cannot be an aggregate they are
// found by the back references of the platform, else by a walk over the extent.
std::vector<SdaiEntityInstance*> UsersOf(const SdaiEntityInstance& instance,
                                         const kor::Model& model, const kor::EntityType& entity,
                                         std::string_view attribute);

// Whether every instance that a value holds is one of the model.
bool RefersOnlyTo(const kor::Model& model, const SdaiPrimitiveH& value);

}  // namespace python

#endif
