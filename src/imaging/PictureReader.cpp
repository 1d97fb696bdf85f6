#include "imaging/PictureReader.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <new>
#include <utility>

#include "imaging/JpegFile.h"
#include "platform/ComponentTypes.h"
#include "platform/Files.h"

namespace zel {

namespace {

constexpr std::int64_t kMaxPixels = 100'000'000;

bool ReadExactly(std::FILE* file, void* to, std::size_t bytes) {
  return std::fread(to, 1, bytes, file) == bytes;
}

// The grey or coloured entries of an 8-bit bitmap; indexes beyond them are black.
using Palette = std::array<RGBQUAD, 256>;

void ToRgb(const std::uint8_t* row, const BITMAPINFOHEADER& info, const Palette& palette, std::uint8_t* rgb,
           int width) {
  const int step = info.biBitCount / 8;
  for (int i = 0; i < width; ++i, row += step, rgb += 3) {
    const RGBQUAD color = step == 1 ? palette[row[0]] : RGBQUAD{row[0], row[1], row[2], 0};
    rgb[0] = color.rgbRed;
    rgb[1] = color.rgbGreen;
    rgb[2] = color.rgbBlue;
  }
}

bool ReadBitmap(std::FILE* file, Picture* picture, std::string* error) {
  constexpr DWORD kLargestHeader = 124;  // of the newest version
  constexpr const char* kTooShort = "the bitmap ends too early";
  BITMAPFILEHEADER fileHeader;
  BITMAPINFOHEADER info;
  if (!ReadExactly(file, &fileHeader, sizeof fileHeader) || !ReadExactly(file, &info, sizeof info)) {
    *error = kTooShort;
    return false;
  }
  const bool known = info.biSize >= sizeof info && info.biSize <= kLargestHeader && info.biCompression == 0 &&
                     (info.biBitCount == 8 || info.biBitCount == 24 || info.biBitCount == 32);
  if (!known) {
    *error = "only uncompressed bitmaps of 8, 24 or 32 bits per pixel can be read";
    return false;
  }
  const bool topDown = info.biHeight < 0;
  const std::int64_t height = topDown ? -std::int64_t{info.biHeight} : info.biHeight;
  if (!picture->Resize(info.biWidth, height, error)) return false;

  Palette palette{};
  if (info.biBitCount == 8) {
    const std::size_t colors =
        info.biClrUsed == 0 ? palette.size() : std::min<std::size_t>(info.biClrUsed, 256);
    if (std::fseek(file, static_cast<int>(sizeof fileHeader + info.biSize), SEEK_SET) != 0 ||
        !ReadExactly(file, palette.data(), colors * sizeof palette[0])) {
      *error = kTooShort;
      return false;
    }
  }
  const std::size_t rowBytes = (static_cast<std::size_t>(info.biWidth) * info.biBitCount + 31) / 32 * 4;
  std::vector<std::uint8_t> row(rowBytes);
  if (fileHeader.bfOffBits > 0x7FFFFFFF ||
      std::fseek(file, static_cast<int>(fileHeader.bfOffBits), SEEK_SET) != 0) {
    *error = kTooShort;
    return false;
  }
  for (int i = 0; i < picture->height; ++i) {
    if (!ReadExactly(file, row.data(), rowBytes)) {
      *error = kTooShort;
      return false;
    }
    const auto target = static_cast<std::size_t>(topDown ? i : picture->height - 1 - i);
    ToRgb(row.data(), info, palette,
          picture->rgb.data() + target * static_cast<std::size_t>(picture->width) * 3, picture->width);
  }
  return true;
}

bool ReadOpened(std::FILE* file, Picture* picture, std::string* error) {
  std::array<std::uint8_t, 2> start{};
  const bool enough = ReadExactly(file, start.data(), start.size());
  std::rewind(file);
  if (enough && start[0] == 0xFF && start[1] == 0xD8) return ReadJpeg(file, picture, error);
  if (enough && start[0] == 'B' && start[1] == 'M') return ReadBitmap(file, picture, error);
  *error = "neither JPEG nor BMP";
  return false;
}

}  // namespace

bool Picture::Resize(std::int64_t newWidth, std::int64_t newHeight, std::string* error) {
  if (newWidth < 1 || newHeight < 1) {
    *error = "the picture is empty";
    return false;
  }
  if (newWidth > kMaxPixels || newHeight > kMaxPixels || newWidth * newHeight > kMaxPixels) {
    *error = std::to_string(newWidth) + " x " + std::to_string(newHeight) + " pixels, more than " +
             std::to_string(kMaxPixels / 1'000'000) + " megapixels";
    return false;
  }
  width = static_cast<int>(newWidth);
  height = static_cast<int>(newHeight);
  rgb.resize(static_cast<std::size_t>(newWidth * newHeight) * 3);
  return true;
}

bool ReadPicture(const std::filesystem::path& path, Picture* picture, std::string* error) {
  Picture found;
  std::string reason;
  try {
    const FilePtr file = OpenFile(path, "rb");
    if (!file) {
      reason = "cannot be opened";
    } else if (ReadOpened(file.get(), &found, &reason)) {
      *picture = std::move(found);
      return true;
    }
  } catch (const std::bad_alloc&) {
    reason = "not enough memory";
  }
  const std::u8string name = path.u8string();
  *error = std::string(name.begin(), name.end()) + ": " + reason;
  return false;
}

}  // namespace zel
