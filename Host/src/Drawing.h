// Drawings for a page, as SVG elements without a style of their own: the page's style sheet gives
// colours to their classes.

#ifndef HOST_DRAWING_H
#define HOST_DRAWING_H

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "Assembly.h"
#include "Configurations.h"

namespace host {

// A part at its place in space.
struct Frame {
    static constexpr std::size_t kNoParent = static_cast<std::size_t>(-1);

    std::string label;  // readable
    Placement placement;
    std::size_t parent = kNoParent;  // its number among the frames
    std::size_t level = 0;
};

// Whether a frame has a place that can be drawn.
bool IsDrawable(const Frame& frame);

// The frames in isometric projection: x to the lower right, y to the upper right, z upwards. Those
// that cannot be drawn are left out. Frames that fall together have one label.
std::string DrawFrames(std::span<const Frame> frames);

// Effectivities as bars over their dates or ranks, one below the other; an open end goes on in an
// arrow. Those without a start or end that is a number on the scale are left out.
std::string DrawBars(std::span<const Effectivity* const> effectivities, Effectivity::Scale scale);

}  // namespace host

#endif
