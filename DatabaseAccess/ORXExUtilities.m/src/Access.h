// Reading through value handles.

#ifndef ORX_ACCESS_H
#define ORX_ACCESS_H

#include <span>

#include "ORXExUtilities.h"
#include "SdaiAggrInstance.h"
#include "SdaiModel.h"

namespace orx {

// The instances of an entity type in a model, in the model's order; none without a model. For loops
// that may visit many: none of them creates an instance.
inline std::span<SdaiEntityInstance* const> ExtentOf(const SdaiModel* model, const SdaiName& type) {
    if (model == nullptr) return {};
    return model->GetEntityExtent(type)->ExtentMembers();
}

// The text of an attribute; empty when it is not set.
inline SdaiString TextOf(const SdaiPrimitiveH& instance, const SdaiName& attribute) {
    return static_cast<const SdaiString&>(instance.GetAttr(attribute));
}

// The value of an attribute, taken out of its SELECT.
inline SdaiPrimitiveH SelectedOf(const SdaiPrimitiveH& instance, const SdaiName& attribute) {
    const SdaiPrimitiveH value = instance.GetAttr(attribute);
    return static_cast<const SdaiSelectH&>(value).getValue();
}

// The DOCUMENT_FILE reached from an instance over the DEFINITION of a PROPERTY_DEFINITION; unset
// when the way leads elsewhere.
inline SdaiPrimitiveH DocumentFileOf(const SdaiPrimitiveH& instance) {
    using namespace sdai_names;
    const SdaiPrimitiveH definition(SdaiString("DEFINITION"));
    const SdaiPrimitiveH property = GetInst(instance, definition);
    if (!property.IsKindOf("PROPERTY_DEFINITION"_name)) return {};
    const SdaiPrimitiveH file = GetInst(property, definition);
    return file.IsKindOf("DOCUMENT_FILE"_name) ? file : SdaiPrimitiveH();
}

}  // namespace orx

#endif
