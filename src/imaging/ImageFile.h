#pragma once

#include <cstdint>
#include <span>

#include "platform/ComponentTypes.h"

namespace zel {

/// Picture files. All writers create or replace the file and return false when it cannot be created or
/// written to its end; an unfinished file is removed. Pixels are blue, green, red (and a fourth byte), top
/// row first.

/// Writes `pixels` as the caller asks. `bitCount` 24 means three bytes per pixel, anything else four; a
/// `stride` below 1 means rows without gaps (24-bit rows end at a multiple of four bytes). `format` 1 is
/// JPEG; any other a bitmap, bottom row first in the file: 24 or 32 bits, or with `gray` non-zero the blue
/// bytes with a grey palette, rows not padded although the header says so. Also false for null pixels, sizes
/// below 1, a JPEG above 65500 x 65500 or a bitmap of 4 GiB or more.
bool SavePicture(const OLECHAR* path, const void* pixels, LONG width, LONG height, LONG bitCount, LONG stride,
                 LONG format, LONG gray);

/// Writes a 32-bit bitmap, top row first in the file, with 66 black rows above and below the picture. False
/// without a file for pictures wider than 6644 pixels.
bool SaveBandedBitmap(const OLECHAR* path, const std::uint8_t* bgra, LONG width, LONG height,
                      LONG strideBytes);

/// Writes, by the last three letters of the path in any case: "raw" the raw samples as they are, "bmp" the
/// 24-bit output (rows of 3 x width bytes) as a bitmap. False without a file for every other path.
bool SaveRawOrBitmap(const OLECHAR* path, std::span<const std::uint8_t> raw, const std::uint8_t* bgr,
                     LONG width, LONG height);

}  // namespace zel
