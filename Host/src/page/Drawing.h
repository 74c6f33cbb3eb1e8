// Drawings for a page, as unstyled SVG elements: the page's style sheet sets the colours of their
// classes.

#ifndef HOST_DRAWING_H
#define HOST_DRAWING_H

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "product/Assembly.h"
#include "product/Configurations.h"
#include "product/Shapes.h"

namespace host {

// A part at its place in space.
struct Frame {
    static constexpr std::size_t kNoParent = static_cast<std::size_t>(-1);

    std::string label;  // readable
    orx::Placement placement;
    std::size_t parent = kNoParent;  // its index among the frames
    std::size_t level = 0;
    std::size_t branch = 0;  // the component of the root that it belongs to, for its colour
    Box box;                 // that is drawn for it, in its own axes; may be empty
    Box whole;               // around the part and its components, in its own axes; may be empty
};

// Whether a frame has a position that can be drawn.
bool IsDrawable(const Frame& frame);

// Four views of the frames: isometric (x to the lower right, y to the upper right, z up) with
// labels, from the front, from above and from the right. A frame is drawn as its box or, if neither
// it nor a component has a box, as its axes. Frames that cannot be drawn are omitted. Frames at the
// same position share a label. Lengths are in `unit`, an abbreviation; empty if it is unknown.
std::string DrawFrames(std::span<const Frame> frames, const std::string& unit);

// Effectivities as bars over their dates or ranks, one below the other; an open end is drawn as an
// arrow. Effectivities without a start or end on the scale are omitted.
std::string DrawBars(std::span<const Effectivity* const> effectivities, Effectivity::Scale scale);

}  // namespace host

#endif
