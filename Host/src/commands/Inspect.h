// An instance with its attributes, and who refers to it.

#ifndef HOST_INSPECT_H
#define HOST_INSPECT_H

#include <string>

#include "console/Columns.h"
#include "script/Evaluator.h"
#include "script/Session.h"

namespace host {

// Prints the entity type and, for each attribute, its declared type, its value and the names of the
// instances that it refers to; as JSON, one object.
void ShowInstance(const SdaiEntityInstance& instance, const Session& session, Form form);

// Prints every attribute, in any model, that refers to the instance directly, through an aggregate
// or through a select: the referring instance, its type, the attribute, and the name that the data
// give it.
void ShowUsers(const SdaiEntityInstance& instance, const Session& session, Form form);

// Prints the attributes of an entity type with their declared types.
void ShowEntity(const kor::EntityType& entity, Form form);

// The instance named by a text: #12, 12, @model#12, or an expression that evaluates to one. Throws
// ScriptError if there is none.
const SdaiEntityInstance& InstanceNamed(const std::string& name, Place place,
                                        const Session& session, const Evaluator& evaluator);

// The name that the data give an instance: 'Desk lamp'. Empty if there is none.
std::string LabelOf(const SdaiEntityInstance& instance, const Session& session);

}  // namespace host

#endif
