#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "imaging/PictureReader.h"

namespace zel {

constexpr int kMaxJpegSide = 65500;  ///< pixels

/// Compresses a picture of (blue, green, red[, anything]) pixels, at most `kMaxJpegSide` on each side, with
/// the library's own default parameters. False when writing fails; part of it may then be in the file.
bool WriteJpeg(std::FILE* file, const std::uint8_t* pixels, int width, int height, std::ptrdiff_t strideBytes,
               int bytesPerPixel);

/// Reads the JPEG that begins at the file's position. False with the reason in `error` when it is damaged,
/// ends too early or is too large; `picture` is then incomplete.
bool ReadJpeg(std::FILE* file, Picture* picture, std::string* error);

}  // namespace zel
