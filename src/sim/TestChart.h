#pragma once

#include <memory>

#include "sim/Scene.h"

namespace zel {

/// The test chart, drawn for a sensor of width x height pixels: 24 colour patches, a grey ramp in steps and
/// without, slanted edges, line gratings of 2 to 5 pixels, a focus star, marks that tell up, right and the
/// top left corner, and a marker that walks along the bottom. Room is left at top and bottom for the frame
/// code.
std::unique_ptr<Scene> MakeTestChart(int width, int height);

}  // namespace zel
