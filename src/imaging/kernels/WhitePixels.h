#pragma once

#include <cstddef>
#include <cstdint>

#include "imaging/ColorGains.h"

namespace zel {

/// Replaces, in raster order and in place, samples that are `threshold` or more brighter than their
/// surroundings and strongly coloured: a defect of the sensor shows in one colour only, a real bright point
/// in all.
///
/// `fullWidth` is the row pitch in bytes; columns 2..fullWidth-3 of rows 2..height-3 are looked at. The mean
/// of the surroundings takes its fourth sample 2 * height samples further on. Where a sample that is needed
/// lies outside frame[0..frameSize), the pixel stays.
void CancelWhitePixels(std::uint8_t* frame, std::size_t frameSize, std::ptrdiff_t fullWidth, int height,
                       int threshold, int bayerMode, const ColorGains& gains);

}  // namespace zel
