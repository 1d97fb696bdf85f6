#include "imaging/ImageFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "TemporaryFolder.h"
#include "imaging/COrvaneImageImpl24.h"
#include "imaging/COrvaneImageImpl32.h"
#include "imaging/GuardedBytes.h"
#include "imaging/PictureReader.h"

namespace zel {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

class ImageFile : public testing::Test {
 protected:
  fs::path In(const char* name) const { return folder_ / name; }
  static std::basic_string<OLECHAR> Wide(const fs::path& path) {
    const std::u16string text = path.u16string();
    return {text.begin(), text.end()};
  }
  static Bytes Contents(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
  }
  static void Write(const fs::path& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
  }
  static Bytes Part(const Bytes& all, std::size_t from, std::size_t count) {
    if (from + count > all.size()) return {};
    return Bytes(all.begin() + std::ptrdiff_t(from), all.begin() + std::ptrdiff_t(from + count));
  }
  bool Save(const char* name, const Bytes& pixels, LONG width, LONG height, LONG bits, LONG stride,
            LONG format, LONG gray) const {
    // The last row ends with its last pixel.
    GuardedBytes guarded(pixels);
    return SavePicture(Wide(In(name)).c_str(), guarded.data(), width, height, bits, stride, format, gray);
  }
  // A smooth picture, as a JPEG keeps it, of three or four bytes per pixel.
  static Bytes Ramp(int width, int height, int step, int stride) {
    Bytes bytes(std::size_t(stride) * height, 0xEE);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        std::uint8_t* p = &bytes[std::size_t(y * stride + x * step)];
        p[0] = std::uint8_t(40 + 2 * x + y);
        p[1] = std::uint8_t(200 - 2 * y);
        p[2] = std::uint8_t(90 + x + y);
      }
    }
    return bytes;
  }

  const test::TemporaryFolder own_;
  const fs::path folder_ = own_.Path();
};

TEST_F(ImageFile, Bitmap24) {
  const Bytes pixels = {1, 2, 3, 4, 5, 6, 0xAA, 0xAA, 11, 12, 13, 14, 15, 16};
  const Bytes expected = {
      'B', 'M', 70, 0,  0,    0,    0, 0, 0,    0,    54, 0, 0, 0,                     // file
      40,  0,   0,  0,  2,    0,    0, 0, 2,    0,    0,  0, 1, 0, 24, 0, 0, 0, 0, 0,  // size, planes, bits
      16,  0,   0,  0,  0xC4, 0x0E, 0, 0, 0xC4, 0x0E, 0,  0, 0, 0, 0,  0, 0, 0, 0, 0,
      11,  12,  13, 14, 15,   16,   0, 0, 1,    2,    3,  4, 5, 6, 0,  0};
  ASSERT_TRUE(Save("small.bmp", pixels, 2, 2, 24, 0, 0, 0));
  EXPECT_EQ(Contents(In("small.bmp")), expected);
  // The other writer of the same file knows rows without gaps only.
  const Bytes packed = {1, 2, 3, 4, 5, 6, 11, 12, 13, 14, 15, 16};
  ASSERT_TRUE(SaveRawOrBitmap(Wide(In("other.BMP")).c_str(), {}, packed.data(), 2, 2));
  EXPECT_EQ(Contents(In("other.BMP")), expected);
}

TEST_F(ImageFile, PartsOfOtherBitmaps) {
  const Bytes pixels = {1, 2, 3, 4, 0xAA, 5, 6, 7, 8, 0xAA};
  ASSERT_TRUE(Save("16 bits", pixels, 1, 2, 16, 5, 7, 0));
  ASSERT_TRUE(Save("grey", Ramp(10, 2, 4, 40), 10, 2, 32, 0, 0, 1));
  ASSERT_TRUE(SaveBandedBitmap(Wide(In("banded")).c_str(), pixels.data(), 1, 2, 5));
  ASSERT_TRUE(SaveRawOrBitmap(Wide(In("x.rAw")).c_str(), pixels, nullptr, 1, 1));
  struct Case {
    const char* name;
    std::size_t size, offset;
    Bytes expected;
  };
  const Case cases[] = {{"16 bits", 62, 26, {1, 0, 32, 0}},
                        {"16 bits", 62, 54, {5, 6, 7, 8, 1, 2, 3, 4}},
                        {"grey", 1098, 2, {78, 4, 0, 0}},  // announces rows of 12 bytes, holds rows of 10
                        {"grey", 1098, 10, {54, 4, 0, 0}},
                        {"grey", 1098, 28, {8, 0, 0, 0, 0, 0, 24, 0, 0, 0}},
                        {"grey", 1098, 46, {0, 1, 0, 0, 0, 1, 0, 0}},
                        {"grey", 1098, 54 + 4 * 200, {200, 200, 200, 255}},
                        {"grey", 1098, 1078, {41, 43, 45, 47, 49, 51, 53, 55, 57, 59, 40, 42}},
                        {"banded", 590, 2, {0x4E, 2, 0, 0}},
                        {"banded", 590, 18, {1, 0, 0, 0, 0x7A, 0xFF, 0xFF, 0xFF}},  // -134 rows
                        {"banded", 590, 54, Bytes(264, 0)},
                        {"banded", 590, 318, {1, 2, 3, 4, 5, 6, 7, 8}},
                        {"banded", 590, 326, Bytes(264, 0)},
                        {"x.rAw", 10, 0, pixels}};
  for (const Case& c : cases) {
    const Bytes file = Contents(In(c.name));
    EXPECT_EQ(file.size(), c.size) << c.name;
    EXPECT_EQ(Part(file, c.offset, c.expected.size()), c.expected) << c.name << " at " << c.offset;
  }
}

/// An image object of 2 x 2 pixels that holds packed colour.
template <class Image>
std::unique_ptr<Image> Holding(LONG output, bool keepRaw, Bytes packed) {
  auto image = std::make_unique<Image>(1);
  image->SetOutputFormat(output);
  image->SetInputFormat(4);
  image->SetWidth(2);
  image->SetHeight(2);
  image->SetSourceWidth(6);
  image->SetSourceHeight(2);
  image->SetKeepRaw(keepRaw);
  image->AllocateBuffers();
  EXPECT_TRUE(image->ProcessFrame(packed.data()));
  return image;
}

TEST_F(ImageFile, OfImageObjectsByteByByte) {
  const Bytes packed = {1, 2, 3, 4, 5, 6, 11, 12, 13, 14, 15, 16};
  const Bytes bitmap = {'B', 'M', 70, 0,  0,    0,    0, 0, 0,    0,    54, 0, 0, 0,                     //
                        40,  0,   0,  0,  2,    0,    0, 0, 2,    0,    0,  0, 1, 0, 24, 0, 0, 0, 0, 0,  //
                        16,  0,   0,  0,  0xC4, 0x0E, 0, 0, 0xC4, 0x0E, 0,  0, 0, 0, 0,  0, 0, 0, 0, 0,
                        11,  12,  13, 14, 15,   16,   0, 0, 1,    2,    3,  4, 5, 6, 0,  0};
  // 2 x (2 + 132) pixels of 4 bytes behind 54 of headers, the height negative: the top row comes first.
  Bytes banded = {'B',  'M', 0x66, 4, 0,    0,    0, 0, 0,    0,    54,   0,    0, 0,                     //
                  40,   0,   0,    0, 2,    0,    0, 0, 0x7A, 0xFF, 0xFF, 0xFF, 1, 0, 32, 0, 0, 0, 0, 0,  //
                  0x30, 4,   0,    0, 0xC4, 0x0E, 0, 0, 0xC4, 0x0E, 0,    0,    0, 0, 0,  0, 0, 0, 0, 0};
  banded.resize(54 + 66 * 8);
  banded.insert(banded.end(), {1, 2, 3, 255, 4, 5, 6, 255, 11, 12, 13, 255, 14, 15, 16, 255});
  banded.resize(54 + 134 * 8);
  struct Case {
    const char* name;
    bool is24, keepRaw;
    Bytes expected;  ///< none: no file
  };
  const Case cases[] = {
      {"a.bmp", true, false, bitmap},
      {"b.BMP", true, true, bitmap},
      {"c.raw", true, false, packed},
      {"d.Raw", true, true, {1, 2, 3, 4, 11, 12, 13, 14}},  // raw rows of packed colour are cut
      {"e.tif", true, false, {}},
      {"f.any", false, true, banded}};
  for (const Case& c : cases) {
    std::unique_ptr<COrvaneImageImpl> image;
    if (c.is24) {
      image = Holding<COrvaneImageImpl24>(4, c.keepRaw, packed);
    } else {
      image = Holding<COrvaneImageImpl32>(5, c.keepRaw, packed);
    }
    EXPECT_EQ(image->SaveToFile(Wide(In(c.name)).c_str()), !c.expected.empty()) << c.name;
    EXPECT_EQ(fs::exists(In(c.name)), !c.expected.empty()) << c.name;
    EXPECT_EQ(Contents(In(c.name)), c.expected) << c.name;
    EXPECT_FALSE(image->SaveToFile(nullptr));
    image->FreeBuffers();
    EXPECT_FALSE(image->SaveToFile(Wide(In("free.bmp")).c_str())) << c.name;
    EXPECT_FALSE(fs::exists(In("free.bmp"))) << c.name;
  }
}

TEST_F(ImageFile, BoundsOfTheImageObjectsFiles) {
  const Bytes widest(6645 * 4);
  EXPECT_TRUE(SaveBandedBitmap(Wide(In("banded")).c_str(), widest.data(), 6644, 1, 6644 * 4));
  EXPECT_FALSE(SaveBandedBitmap(Wide(In("wide")).c_str(), widest.data(), 6645, 1, 6645 * 4));
  for (const char* name : {"x.png", "aw"}) {
    EXPECT_FALSE(SaveRawOrBitmap(Wide(In(name)).c_str(), widest, widest.data(), 1, 1));
    EXPECT_FALSE(fs::exists(In(name)));
  }
  EXPECT_FALSE(fs::exists(In("wide")));
}

TEST_F(ImageFile, JpegReadsBackAsItWas) {
  for (int step : {3, 4}) {
    const int width = 61, height = 47, stride = width * step + 5;
    const Bytes pixels = Ramp(width, height, step, stride);
    const fs::path path = folder_ / u8"Größe.jpg";
    ASSERT_TRUE(SavePicture(Wide(path).c_str(), pixels.data(), width, height, step * 8, stride, 1, 1));
    Picture picture;
    std::string error;
    ASSERT_TRUE(ReadPicture(path, &picture, &error)) << error;
    ASSERT_EQ(picture.width, width);
    ASSERT_EQ(picture.height, height);
    int worst = 0;
    for (int i = 0; i < width * height; ++i) {
      const std::uint8_t* p = &pixels[std::size_t(i / width * stride + i % width * step)];
      for (int c = 0; c < 3; ++c)
        worst = std::max(worst, std::abs(p[2 - c] - picture.rgb[std::size_t(3 * i + c)]));
    }
    EXPECT_LE(worst, 12);
    // First step of the first quantisation table: 16 scaled to the default quality of 75.
    EXPECT_EQ(Part(Contents(path), 20, 6), (Bytes{0xFF, 0xDB, 0, 67, 0, 8}));
  }
}

TEST_F(ImageFile, RefusedWritesLeaveNothing) {
  const Bytes pixels(400);
  const fs::path kept = In("kept");
  Write(kept, {1, 2, 3});
  struct Case {
    const char* what;
    fs::path path;
    const void* data;
    LONG width, height, format;
  };
  const Case cases[] = {{"no pixels", kept, nullptr, 10, 10, 0},
                        {"no columns", kept, pixels.data(), 0, 10, 0},
                        {"negative height", kept, pixels.data(), 10, -10, 1},
                        {"more than a JPEG can hold", kept, pixels.data(), 65501, 1, 1},
                        {"more than a bitmap can state", kept, pixels.data(), 40000, 40000, 0},
                        {"no such folder, bitmap", In("none") / "a.bmp", pixels.data(), 10, 10, 0},
                        {"no such folder, JPEG", In("none") / "a.jpg", pixels.data(), 10, 10, 1},
                        {"a folder", folder_, pixels.data(), 10, 10, 1}};
  for (const Case& c : cases) {
    EXPECT_FALSE(SavePicture(Wide(c.path).c_str(), c.data, c.width, c.height, 32, 0, c.format, 0)) << c.what;
  }
  EXPECT_EQ(Contents(kept), (Bytes{1, 2, 3}));

  const fs::path full = "/dev/full";  // where there is one, writing to it fails
  if (fs::exists(full)) {
    for (LONG format : {0, 1})
      EXPECT_FALSE(SavePicture(Wide(full).c_str(), pixels.data(), 10, 10, 32, 0, format, 0));
    EXPECT_TRUE(fs::exists(full));
  }
}

TEST_F(ImageFile, BitmapsReadBack) {
  const Bytes pixels = Ramp(8, 3, 4, 32);
  ASSERT_TRUE(Save("32", pixels, 8, 3, 32, 0, 0, 0));
  ASSERT_TRUE(Save("24", Ramp(8, 3, 3, 24), 8, 3, 24, 0, 0, 0));
  ASSERT_TRUE(Save("grey", pixels, 8, 3, 32, 0, 0, 1));
  ASSERT_TRUE(SaveBandedBitmap(Wide(In("banded")).c_str(), pixels.data(), 8, 3, 32));
  struct Case {
    const char* name;
    std::size_t row;  // that the picture starts at
    Bytes first, last;
  };
  for (const Case& c :
       {Case{"32", 0, {90, 200, 40}, {99, 196, 56}}, Case{"24", 0, {90, 200, 40}, {99, 196, 56}},
        Case{"grey", 0, {40, 40, 40}, {56, 56, 56}}, Case{"banded", 66, {90, 200, 40}, {99, 196, 56}}}) {
    Picture picture;
    std::string error;
    ASSERT_TRUE(ReadPicture(In(c.name), &picture, &error)) << error;
    EXPECT_EQ(Part(picture.rgb, c.row * 24, 3), c.first) << c.name;
    EXPECT_EQ(Part(picture.rgb, (c.row + 2) * 24 + 21, 3), c.last) << c.name;
  }
}

TEST_F(ImageFile, DamagedPicturesAreRefusedInWords) {
  const Bytes pixels = Ramp(40, 30, 4, 160);
  ASSERT_TRUE(Save("good.jpg", pixels, 40, 30, 32, 0, 1, 0));
  ASSERT_TRUE(Save("good.bmp", pixels, 40, 30, 32, 0, 0, 0));
  const Bytes jpeg = Contents(In("good.jpg")), bitmap = Contents(In("good.bmp"));
  const auto with = [](Bytes bytes, std::size_t at, const Bytes& values) {
    std::copy(values.begin(), values.end(), bytes.begin() + std::ptrdiff_t(at));
    return bytes;
  };
  const Bytes marker = {0xFF, 0xC0};
  const auto frame =
      std::size_t(std::search(jpeg.begin(), jpeg.end(), marker.begin(), marker.end()) - jpeg.begin());
  struct Case {
    Bytes bytes;
    const char* expected;
  };
  const Case cases[] = {
      {{}, "bad: neither JPEG nor BMP"},
      {{0x89, 'P', 'N', 'G', 13, 10}, "bad: neither JPEG nor BMP"},
      {Part(jpeg, 0, jpeg.size() - 30), "bad: the JPEG ends too early or is damaged"},
      {with(jpeg, frame + 5, {0xFF, 0xDC, 0xFF, 0xDC}),
       "bad: 65500 x 65500 pixels, more than 100 megapixels"},
      {Part(bitmap, 0, bitmap.size() - 1), "bad: the bitmap ends too early"},
      {Part(bitmap, 0, 30), "bad: the bitmap ends too early"},
      {with(bitmap, 10, {0xFF, 0xFF, 0xFF, 0xFF}), "bad: the bitmap ends too early"},
      {with(bitmap, 18, {0, 0, 0, 0x80}), "bad: the picture is empty"},
      {with(bitmap, 22, {0, 0, 0, 0x80}), "bad: 40 x 2147483648 pixels, more than 100 megapixels"},
      {with(bitmap, 28, {4}), "bad: only uncompressed bitmaps of 8, 24 or 32 bits per pixel can be read"},
  };
  for (const Case& c : cases) {
    Write(In("bad"), c.bytes);
    Picture picture{1, 2, {3}};
    std::string error;
    EXPECT_FALSE(ReadPicture(In("bad"), &picture, &error));
    EXPECT_TRUE(error.ends_with(c.expected)) << error << ", expected " << c.expected;
    EXPECT_EQ(picture.height, 2);
  }
  Picture picture;
  std::string error;
  EXPECT_FALSE(ReadPicture(In("none.jpg"), &picture, &error));
  EXPECT_TRUE(error.ends_with("none.jpg: cannot be opened")) << error;

  // Any damage at all: a picture or a reason, a crash never.
  std::mt19937 random(7);
  for (int i = 0; i < 400; ++i) {
    Bytes bytes = i % 2 ? jpeg : Part(bitmap, 0, 200);
    for (int n = 0; n < 4; ++n) bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
    Write(In("bad"), bytes);
    error.clear();
    const bool isRead = ReadPicture(In("bad"), &picture, &error);
    EXPECT_EQ(isRead, error.empty());
  }
}

}  // namespace
}  // namespace zel
