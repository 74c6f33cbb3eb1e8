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

namespace host {

// A part at its place in space.
struct Frame {
    static constexpr std::size_t kNoParent = static_cast<std::size_t>(-1);

    std::string label;  // readable
    Placement placement;
    std::size_t parent = kNoParent;  // its index among the frames
    std::size_t level = 0;
};

// Whether a frame has a position that can be drawn.
bool IsDrawable(const Frame& frame);

// The frames in isometric projection: x to the lower right, y to the upper right, z up. Frames that
// cannot be drawn are omitted. Frames at the same position share a label.
std::string DrawFrames(std::span<const Frame> frames);

// Effectivities as bars over their dates or ranks, one below the other; an open end is drawn as an
// arrow. Effectivities without a start or end on the scale are omitted.
std::string DrawBars(std::span<const Effectivity* const> effectivities, Effectivity::Scale scale);

}  // namespace host

#endif
