// An instance with its attributes, and who refers to it.

#ifndef HOST_INSPECT_H
#define HOST_INSPECT_H

#include <string>

#include "Columns.h"
#include "Evaluator.h"
#include "Session.h"

namespace host {

// Prints the entity type and, for each attribute, its declared type, its value and the names of
// what it refers to; as JSON, one object.
void ShowInstance(const SdaiEntityInstance& instance, const Session& session, Form form);

// Prints each attribute of an instance of any model that refers to the instance, itself, through an
// aggregate or through a select: the instance, its type, the attribute, and how data name it.
void ShowUsers(const SdaiEntityInstance& instance, const Session& session, Form form);

// Prints the attributes of an entity type with their declared types.
void ShowEntity(const kor::EntityType& entity, Form form);

// The instance that a text names: #12, 12, @model#12, or an expression that leads to one. Throws
// ScriptError where there is none.
const SdaiEntityInstance& InstanceNamed(const std::string& name, Position position,
                                        const Session& session, const Evaluator& evaluator);

// How data name an instance: 'Desk lamp'. Empty where they do not.
std::string LabelOf(const SdaiEntityInstance& instance, const Session& session);

}  // namespace host

#endif
