// The sections of a page about the structure of a data set, as HTML that is also well-formed XML.

#ifndef HOST_SECTIONS_H
#define HOST_SECTIONS_H

#include <string>

#include "Module.h"
#include "product/Assembly.h"
#include "product/Shapes.h"

namespace host {

// The tree of the parts as nested lists. A large one is collapsed below its second level and has a
// field to filter it, for which the page needs its script. `id` is that of the list in the page.
std::string PartTree(const Assembly& assembly, const std::string& id);

// The parts of the assemblies at their positions, and parts with geometry: four views and a table.
// Empty if there is nothing of the kind.
std::string PartsInSpace(const Assembly& assembly, const Shapes& shapes,
                         const calls::Module& module);

}  // namespace host

#endif
