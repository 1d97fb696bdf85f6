#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace zel {

struct Picture {
  int width = 0;  ///< pixels
  int height = 0;
  std::vector<std::uint8_t> rgb;  ///< width x height x (red, green, blue), top row first

  /// Makes room; false with the reason in `error` for an empty size or more than 100 megapixels.
  bool Resize(std::int64_t newWidth, std::int64_t newHeight, std::string* error);
};

/// Reads a JPEG or an uncompressed bitmap of 8, 24 or 32 bits per pixel, up to 100 megapixels. False with a
/// sentence in `error` ("photo.png: neither JPEG nor BMP") and `picture` unchanged when that fails.
bool ReadPicture(const std::filesystem::path& path, Picture* picture, std::string* error);

}  // namespace zel
