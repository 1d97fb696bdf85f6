#include "tools/support/PictureFile.h"

#include <fmt/format.h>

#include <fstream>

#include "imaging/ImageFile.h"
#include "platform/Text.h"
#include "tools/support/ToolError.h"

namespace zel::tool {
namespace {

bool WriteBytes(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  return file.good();
}

bool WritePixels(const std::filesystem::path& path, const PictureView& picture, FileFormat format) {
  constexpr LONG kSaveJpeg = 1, kSaveBitmap = 0, kInColor = 0;
  const std::u16string name = ToUtf16(ToText(path));
  return SavePicture(reinterpret_cast<const OLECHAR*>(name.c_str()), picture.pixels, picture.width,
                     picture.height, picture.bitCount, picture.strideBytes,
                     format == FileFormat::Jpeg ? kSaveJpeg : kSaveBitmap, kInColor);
}

}  // namespace

LONG BitCountOf(LONG outputFormat) {
  switch (outputFormat) {
    case 1:
    case 5:
      return 32;
    case 4:
      return 24;
    default:
      return 0;
  }
}

void WritePicture(const PictureView& picture, FileFormat format, const std::filesystem::path& path) {
  const bool isPicture = format == FileFormat::Bitmap || format == FileFormat::Jpeg;
  if (isPicture && picture.bitCount == 0) {
    throw ToolError(kExitUsage,
                    fmt::format("'{}': raw samples are no picture; save them as .raw", ToText(path)));
  }
  OutputFile file(path);
  bool written = false;
  if (isPicture) {
    written = WritePixels(file.TemporaryPath(), picture, format);
  } else if (format == FileFormat::Raw) {
    written = WriteBytes(file.TemporaryPath(), picture.raw);
  } else {
    const auto bytes =
        static_cast<std::size_t>(picture.strideBytes) * static_cast<std::size_t>(picture.height);
    written = WriteBytes(file.TemporaryPath(), {picture.pixels, bytes});
  }
  if (!written) throw ToolError(kExitFailed, fmt::format("'{}' can't be written", ToText(path)));
  file.Commit();
}

}  // namespace zel::tool
