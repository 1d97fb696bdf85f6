#pragma once

#include <cstddef>
#include <cstdint>

namespace zel {

/// A mosaic is continued two samples beyond each edge in its own phase, and its first two rows, which sensors
/// deliver unreliably, are replaced by rows 4 and 3. Mosaics below 8 x 8 stay as they are.

bool IsContinued(int width, int height);

/// The image row whose samples stand in `row`, -2..height+1; outside the image where nothing does.
int RowBehind(int row, int width, int height);

/// Continues one row; `samples` points at its first image sample, with room for two samples on each side.
void FillSides(std::uint8_t* samples, int width, int height);

/// Continues a whole mosaic. `image` points at its top left sample, with room for two rows and two columns
/// around it.
void FillMargins(std::uint8_t* image, std::ptrdiff_t stride, int width, int height);

}  // namespace zel
