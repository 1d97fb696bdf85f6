#include "imaging/ImageFile.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "imaging/JpegFile.h"
#include "platform/Files.h"

namespace zel {

namespace {

constexpr LONG kPixelsPerMeter = 3780;  // 96 per inch
constexpr WORD kBitmapType = 0x4D42;    // "BM"
constexpr std::uint64_t kGreyColors = 256;

// Writes a file by `body(FILE*)`, which says whether all went well; what went wrong leaves no file.
template <class Body>
bool WriteFile(const OLECHAR* path, Body body) {
  FilePtr file = OpenFile(path, "wb");
  if (!file) return false;
  bool complete = false;
  try {
    complete = body(file.get());
  } catch (const std::bad_alloc&) {
    // Not complete.
  }
  // What is still buffered can fail too.
  complete = std::fclose(file.release()) == 0 && complete;
  if (!complete) RemoveFile(path);
  return complete;
}

bool Write(std::FILE* file, const void* data, std::size_t bytes) {
  return std::fwrite(data, 1, bytes, file) == bytes;
}

struct BitmapHeaders {
  BITMAPFILEHEADER file{};
  BITMAPINFOHEADER info{};

  /// `height` below 0 means that the top row comes first in the file.
  BitmapHeaders(LONG width, LONG height, WORD bitCount, std::uint64_t imageBytes, std::uint64_t colors) {
    const std::uint64_t offset = sizeof file + sizeof info + colors * sizeof(RGBQUAD);
    file.bfType = kBitmapType;
    file.bfSize = static_cast<DWORD>(offset + imageBytes);
    file.bfOffBits = static_cast<DWORD>(offset);
    info.biSize = sizeof info;
    info.biWidth = width;
    info.biHeight = height;
    info.biPlanes = 1;
    info.biBitCount = bitCount;
    info.biSizeImage = static_cast<DWORD>(imageBytes);
    info.biXPelsPerMeter = kPixelsPerMeter;
    info.biYPelsPerMeter = kPixelsPerMeter;
    info.biClrUsed = info.biClrImportant = static_cast<DWORD>(colors);
  }

  /// Sizes of 4 GiB and more do not fit into the headers.
  static bool CanHold(std::uint64_t imageBytes) {
    return imageBytes <= std::numeric_limits<DWORD>::max() - sizeof(BITMAPFILEHEADER) -
                             sizeof(BITMAPINFOHEADER) - kGreyColors * sizeof(RGBQUAD);
  }

  bool WriteTo(std::FILE* out) const {
    return Write(out, &file, sizeof file) && Write(out, &info, sizeof info);
  }
};

std::uint64_t BitmapRowBytes(LONG width, int bitCount) {
  return (static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(bitCount) + 31) / 32 * 4;
}

struct Pixels {
  const std::uint8_t* data;
  LONG width, height;
  std::ptrdiff_t stride;
  int bytesPerPixel;

  const std::uint8_t* Row(LONG row) const { return data + row * stride; }
};

bool WriteColorBitmap(std::FILE* file, const Pixels& pixels) {
  const int bitCount = pixels.bytesPerPixel * 8;
  const std::uint64_t rowBytes = BitmapRowBytes(pixels.width, bitCount);
  const BitmapHeaders headers(pixels.width, pixels.height, static_cast<WORD>(bitCount),
                              rowBytes * static_cast<std::uint64_t>(pixels.height), 0);
  std::vector<std::uint8_t> row(rowBytes);  // the bytes that fill it up to a multiple of four stay 0
  if (!headers.WriteTo(file)) return false;
  const auto used = static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.bytesPerPixel);
  for (LONG i = pixels.height - 1; i >= 0; --i) {
    std::memcpy(row.data(), pixels.Row(i), used);
    if (!Write(file, row.data(), row.size())) return false;
  }
  return true;
}

bool WriteGreyBitmap(std::FILE* file, const Pixels& pixels) {
  const std::uint64_t rowBytes = BitmapRowBytes(pixels.width, 8);
  const BitmapHeaders headers(pixels.width, pixels.height, 8,
                              rowBytes * static_cast<std::uint64_t>(pixels.height), kGreyColors);
  RGBQUAD palette[kGreyColors];
  for (std::size_t i = 0; i < kGreyColors; ++i) {
    const auto level = static_cast<BYTE>(i);
    palette[i] = {level, level, level, 255};
  }
  if (!headers.WriteTo(file) || !Write(file, palette, sizeof palette)) return false;
  // Rows follow each other without the padding that the headers count: programs read these files that way.
  std::vector<std::uint8_t> row(static_cast<std::size_t>(pixels.width));
  for (LONG i = pixels.height - 1; i >= 0; --i) {
    const std::uint8_t* blue = pixels.Row(i);
    for (std::uint8_t& value : row) {
      value = *blue;
      blue += pixels.bytesPerPixel;
    }
    if (!Write(file, row.data(), row.size())) return false;
  }
  return true;
}

bool WriteZeros(std::FILE* file, std::size_t bytes) {
  static constexpr std::uint8_t kZeros[4096] = {};
  for (; bytes > 0; bytes -= std::min(bytes, sizeof kZeros)) {
    if (!Write(file, kZeros, std::min(bytes, sizeof kZeros))) return false;
  }
  return true;
}

bool EndsWith(std::basic_string_view<OLECHAR> path, std::string_view lowerCase) {
  if (path.size() < lowerCase.size()) return false;
  path.remove_prefix(path.size() - lowerCase.size());
  return std::equal(path.begin(), path.end(), lowerCase.begin(), [](OLECHAR c, char lower) {
    return (c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c) == static_cast<OLECHAR>(lower);
  });
}

}  // namespace

bool SavePicture(const OLECHAR* path, const void* pixels, LONG width, LONG height, LONG bitCount, LONG stride,
                 LONG format, LONG gray) {
  if (path == nullptr || pixels == nullptr || width < 1 || height < 1) return false;
  const int bytesPerPixel = bitCount == 24 ? 3 : 4;
  const std::uint64_t rowBytes = BitmapRowBytes(width, bytesPerPixel * 8);
  const Pixels source{static_cast<const std::uint8_t*>(pixels), width, height,
                      stride < 1 ? static_cast<std::ptrdiff_t>(rowBytes) : stride, bytesPerPixel};
  if (format == 1) {
    if (width > kMaxJpegSide || height > kMaxJpegSide) return false;
    return WriteFile(path, [&](std::FILE* file) {
      return WriteJpeg(file, source.data, width, height, source.stride, bytesPerPixel);
    });
  }
  const std::uint64_t imageBytes =
      (gray != 0 ? BitmapRowBytes(width, 8) : rowBytes) * static_cast<std::uint64_t>(height);
  if (!BitmapHeaders::CanHold(imageBytes)) return false;
  return WriteFile(path, [&](std::FILE* file) {
    return gray != 0 ? WriteGreyBitmap(file, source) : WriteColorBitmap(file, source);
  });
}

bool SaveBandedBitmap(const OLECHAR* path, const std::uint8_t* bgra, LONG width, LONG height,
                      LONG strideBytes) {
  constexpr LONG kBandRows = 66;
  constexpr LONG kMaxWidth = 6644;  // what a band of 1754016 bytes can hold
  if (path == nullptr || bgra == nullptr || width < 1 || height < 1 || width > kMaxWidth) return false;
  const auto rowBytes = static_cast<std::size_t>(width) * 4;
  const std::uint64_t imageBytes =
      std::uint64_t{rowBytes} * (static_cast<std::uint64_t>(height) + 2 * kBandRows);
  if (!BitmapHeaders::CanHold(imageBytes)) return false;
  return WriteFile(path, [&](std::FILE* file) {
    const BitmapHeaders headers(width, -(height + 2 * kBandRows), 32, imageBytes, 0);
    if (!headers.WriteTo(file) || !WriteZeros(file, kBandRows * rowBytes)) return false;
    for (LONG i = 0; i < height; ++i) {
      if (!Write(file, bgra + static_cast<std::ptrdiff_t>(i) * strideBytes, rowBytes)) return false;
    }
    return WriteZeros(file, kBandRows * rowBytes);
  });
}

bool SaveRawOrBitmap(const OLECHAR* path, std::span<const std::uint8_t> raw, const std::uint8_t* bgr,
                     LONG width, LONG height) {
  if (path == nullptr) return false;
  if (EndsWith(path, "raw")) {
    if (raw.data() == nullptr) return false;
    return WriteFile(path, [&](std::FILE* file) { return Write(file, raw.data(), raw.size()); });
  }
  if (!EndsWith(path, "bmp") || width > std::numeric_limits<LONG>::max() / 3) return false;
  return SavePicture(path, bgr, width, height, 24, 3 * width, 0, 0);
}

}  // namespace zel
