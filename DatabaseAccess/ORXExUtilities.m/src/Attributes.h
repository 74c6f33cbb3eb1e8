// Reading through value handles.

#ifndef ORX_ATTRIBUTES_H
#define ORX_ATTRIBUTES_H

#include <span>

#include "ORXExUtilities.h"
#include "SdaiAggrInstance.h"
#include "SdaiModel.h"
#include "SdaiUsers.h"
#include "Trace.h"

namespace orx {

// The instances of an entity type in a model; null if there is no model.
inline const SdaiAggrInstance* ExtentOf(const SdaiModel* model, const SdaiName& type) {
    return model != nullptr ? model->GetEntityExtent(type) : nullptr;
}

using Targets = std::span<const SdaiEntityInstance* const>;

// The instances of an entity type to test when searching for those that refer to a target, in the
// model's order. With tracing on, this is the whole extent, so that each instance appears in the
// trace; otherwise it is those that the platform knows to refer to the target. The caller tests
// each one, so the result is the same either way.
inline SdaiIterator_Of_Users Candidates(const Trace& trace, const SdaiModel* model,
                                        const SdaiName& type, const SdaiName& attribute,
                                        Targets targets) {
    return trace.IsActive() ? SdaiIterator_Of_Users(ExtentOf(model, type))
                            : SdaiIterator_Of_Users(model, type, attribute, targets);
}
// The same for a reference through two attributes.
inline SdaiIterator_Of_Users Candidates(const Trace& trace, const SdaiModel* model,
                                        const SdaiName& type, const SdaiName& attribute,
                                        const SdaiName& next, Targets targets) {
    return trace.IsActive() ? SdaiIterator_Of_Users(ExtentOf(model, type))
                            : SdaiIterator_Of_Users(model, type, attribute, next, targets);
}
// The same among the members of an aggregate. A member that occurs several times is visited as
// often.
inline SdaiIterator_Of_Users Candidates(const Trace& trace, const SdaiAggrInstance* members,
                                        const SdaiName& attribute,
                                        const SdaiEntityInstance* target) {
    return trace.IsActive() ? SdaiIterator_Of_Users(members)
                            : SdaiIterator_Of_Users(members, attribute, target);
}

// The instance that an attribute refers to, directly or as the value of a select; null if there is
// none, or if `instance` is null.
inline SdaiEntityInstance* ReferredBy(const SdaiEntityInstance* instance,
                                      const SdaiName& attribute) {
    if (instance == nullptr) return nullptr;
    return instance->GetAttr(attribute);
}

// The text of an attribute; empty if it is not set.
inline SdaiString TextOf(const SdaiPrimitiveH& instance, const SdaiName& attribute) {
    return TextOf(instance.GetAttr(attribute));
}

// The value of an attribute; for a SELECT, the value that it holds.
inline SdaiPrimitiveH SelectedOf(const SdaiPrimitiveH& instance, const SdaiName& attribute) {
    const SdaiPrimitiveH value = instance.GetAttr(attribute);
    return static_cast<const SdaiSelectH&>(value).getValue();
}

// The DOCUMENT_FILE that an instance refers to through a PROPERTY_DEFINITION; unset if these
// attributes refer to anything else.
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
