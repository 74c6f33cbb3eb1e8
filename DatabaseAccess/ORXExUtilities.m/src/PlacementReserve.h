// The lists that placements are returned in. Each thread keeps one in reserve, so that a call can
// return a placement even if there is no memory for a new list.

#ifndef ORX_PLACEMENTRESERVE_H
#define ORX_PLACEMENTRESERVE_H

#include "SdaiAggrInstance.h"

namespace orx {

using PlacementList = SdaiListClassOfSdaiReal;

// Returns an empty list, allocated together with room for a placement, or else the thread's
// reserve, which the next call replaces. Returns null only if neither is available. The caller owns
// the list.
PlacementList* NewPlacementList();

}  // namespace orx

#endif
