#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cmath>
#include <cstring>
#include <memory>
#include <numeric>
#include <random>
#include <thread>

#include "imaging/COrvaneImageImpl24.h"
#include "imaging/COrvaneImageImpl32.h"
#include "imaging/GuardedBytes.h"
#include "imaging/kernels/Samples.h"
#include "imaging/reference/DemosaicReference.h"
#include "imaging/reference/FilterReference.h"

namespace zel {
namespace {

using reference::Bytes;
using reference::RandomBytes;
using reference::SamePicture;

void SetSize(COrvaneImageImpl& image, LONG width, LONG height) {
  image.SetWidth(width);
  image.SetHeight(height);
  image.SetSourceWidth(width);
  image.SetSourceHeight(height);
}

/// An image object of the class that the engine takes for an output format.
std::unique_ptr<COrvaneImageImpl> NewImage(LONG output, LONG width, LONG height) {
  std::unique_ptr<COrvaneImageImpl> image = std::make_unique<COrvaneImageImpl32>(1);
  if (output == 4) image = std::make_unique<COrvaneImageImpl24>(1);
  EXPECT_TRUE(image->SetOutputFormat(output));
  SetSize(*image, width, height);
  return image;
}

Bytes Output(COrvaneImageImpl& image) {
  return {image.GetBuffer(), image.GetBuffer() + image.GetStride() * image.GetHeight()};
}

Bytes RawCopy(COrvaneImageImpl& image) {
  return {image.GetRawBuffer(), image.GetRawBuffer() + image.GetRawSize()};
}

/// The frame lies between pages nobody may touch, now at the one, now at the other.
void Convert(COrvaneImageImpl& image, const Bytes& bytes) {
  image.AllocateBuffers();
  GuardedBytes behind(bytes), before(bytes, GuardedBytes::Guard::Before);
  image.ProcessFrame(behind.data());
  image.AllocateBuffers();
  image.ProcessFrame(before.data());
}

TEST(ImageObject, BuffersByFormat) {
  static_assert(sizeof(COrvaneImageImpl32) < std::size_t{1} << 20);
  for (const LONG format : {-1, 2, 3, 6}) EXPECT_FALSE(COrvaneImageImpl32(1).SetOutputFormat(format));
  const struct {
    LONG input, output, eightBit, stride, rawStride, imageSize;
  } kRows[] = {{0, 0, 1, 7, 7, 35},    {0, 0, 0, 14, 14, 35},  {0, 4, 1, 21, 7, 105},
               {0, 1, 0, 28, 14, 140}, {0, 5, 1, 28, 7, 140},  {4, 4, 1, 21, 4, 105},
               {4, 5, 0, 28, 4, 140},  {6, 5, 1, 28, 14, 140}, {3, 5, 1, 28, 0, 140}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.input << " to " << row.output);
    const auto image = NewImage(row.output, 7, 5);
    image->SetInputFormat(row.input);
    image->Set8BitTransfer(row.eightBit != 0);
    image->AllocateBuffers();
    EXPECT_EQ(image->GetStride(), row.stride);
    EXPECT_EQ(image->GetRawStride(), row.rawStride);
    EXPECT_EQ(image->GetRawSize(), static_cast<DWORD>(5 * row.rawStride));
    EXPECT_EQ(image->GetRawBuffer(), image->GetBuffer());
    if (row.output != 0) {
      EXPECT_EQ(Output(*image), Bytes(std::size_t(5 * row.stride), 255));
    }
    const BITMAPINFOHEADER expected{40, 7, 5, 1, 32, 0, static_cast<DWORD>(row.imageSize), 3780, 3780, 0, 0};
    EXPECT_EQ(std::memcmp(image->GetBitmapInfoHeader(), &expected, 40), 0);
    image->FreeBuffers();
    EXPECT_EQ(image->GetBuffer(), nullptr);
    EXPECT_EQ(image->GetRawSize(), 0u);
    EXPECT_EQ(image->GetBitmapInfoHeader()->biSize, 0u);
  }
}

TEST(ImageObject, ImpossibleSizesLeaveNoBuffer) {
  const LONG kSizes[][2] = {{0, 5},
                            {5, 0},
                            {-4, 4},
                            {INT_MAX, 1},
                            {1, INT_MAX},
                            {40000, 40000},
                            {INT_MAX, INT_MAX},
                            {INT_MIN, INT_MIN}};
  for (const auto& [width, height] : kSizes) {
    const auto image = NewImage(5, width, height);
    Convert(*image, Bytes(64, 9));
    EXPECT_EQ(image->GetBuffer(), nullptr) << width << " x " << height;
    EXPECT_EQ(image->GetMeanLuminance(), 0u);
    SetSize(*image, 8, 8);
    Convert(*image, Bytes(64, 9));
    image->ProcessFrame(nullptr);
    EXPECT_EQ(image->GetMeanLuminance(), 9u);
  }
}

TEST(ImageObject, RawAndPackedFramesPassThrough) {
  // 6 x 3 of a source with longer rows: bytes of its rows, and how many of them arrive.
  const struct {
    LONG input, output, eightBit, sourceWidth;
    std::ptrdiff_t pitch, outBytes, rawBytes;
  } kRows[] = {
      {0, 0, 1, 8, 8, 6, 6}, {0, 0, 0, 8, 16, 12, 12}, {4, 4, 1, 20, 20, 18, 4}, {4, 5, 1, 20, 20, 18, 4}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.input << " to " << row.output);
    const auto image = NewImage(row.output, 6, 3);
    image->SetSourceWidth(row.sourceWidth);
    image->SetInputFormat(row.input);
    image->Set8BitTransfer(row.eightBit != 0);
    image->SetContrast(row.eightBit ? 0 : 40);  // two-byte raw samples stay as read
    image->SetKeepRaw(1);
    const Bytes frame = RandomBytes(static_cast<std::size_t>(3 * row.pitch), 5);
    Bytes output, raw;
    for (auto p = frame.begin(); p != frame.end(); p += row.pitch) {
      raw.insert(raw.end(), p, p + row.rawBytes);
      for (std::ptrdiff_t i = 0; i < row.outBytes; ++i) {
        output.push_back(p[i]);
        if (row.output == 5 && i % 3 == 2) output.push_back(255);
      }
    }
    Convert(*image, frame);
    EXPECT_EQ(Output(*image), output);
    EXPECT_EQ(RawCopy(*image), raw);
  }
}

TEST(ImageObject, MonochromeExpansions) {
  Bytes frame(36);
  std::iota(frame.begin(), frame.end(), std::uint8_t{0});
  const auto image = NewImage(1, 6, 3);
  image->SetColorful(0);
  const auto pixels = [&](int row, int column, int count) {
    const unsigned char* p = image->GetBuffer() + row * 24 + column * 4;
    return Bytes(p, p + 4 * count);
  };
  Convert(*image, frame);
  EXPECT_EQ(pixels(2, 3, 1), (Bytes{15, 15, 15, 0}));
  EXPECT_EQ(pixels(2, 4, 2), Bytes(8, 255));  // only whole groups of four

  // YUV: odd output rows start two-tap samples into the next input row.
  image->SetInputFormat(6);
  image->SetTwoTap(2);
  Convert(*image, frame);
  EXPECT_EQ(pixels(0, 1, 1), (Bytes{1, 1, 1, 255}));
  EXPECT_EQ(pixels(1, 0, 1), (Bytes{8, 8, 8, 255}));
  EXPECT_EQ(pixels(2, 0, 1), (Bytes{6, 6, 6, 255}));
  image->SetTwoTap(-7);  // row 1 would start before the frame
  Convert(*image, frame);
  EXPECT_EQ(pixels(1, 0, 6), Bytes(24, 255));
}

// Contrast, and the way of two-byte samples to one byte, told by uniform frames.
TEST(ImageObject, UniformFrames) {
  const struct {
    LONG output, eightBit, twoTap, contrast;
    int low, high, expected;
  } kRows[] = {{5, 1, 0, 0, 37, 37, 37},      {5, 1, 0, 10, 10, 10, 0},      {5, 1, 0, 10, 11, 11, 1},
               {5, 1, 0, 10, 245, 245, 255},  {5, 1, 0, 127, 128, 128, 128}, {5, 1, 0, 127, 129, 129, 255},
               {5, 1, 0, 128, 255, 255, 0},   {5, 1, 0, 1000, 200, 200, 0},  {5, 1, 0, -50, 0, 0, 36},
               {5, 1, 0, INT_MIN, 9, 9, 128}, {5, 0, 0, 0, 0x92, 2, 0xA4},   {5, 0, 0, 20, 0x92, 2, 171},
               {4, 0, 0, 0, 0x92, 2, 0x92},   {4, 0, 0, 20, 0x92, 2, 149},   {5, 0, 1, 20, 85, 85, 85}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << "row " << &row - kRows);
    const auto image = NewImage(row.output, 10, 9);
    image->Set8BitTransfer(row.eightBit != 0);
    image->SetTwoTap(row.twoTap);
    image->SetContrast(row.contrast);
    Bytes frame(180), expected(270, static_cast<std::uint8_t>(row.expected));
    for (std::size_t i = 0; i < 180; ++i) frame[i] = static_cast<std::uint8_t>(i % 2 ? row.high : row.low);
    Convert(*image, frame);
    EXPECT_TRUE(SamePicture(image->GetBuffer(), row.output - 1, expected, 10, 9, 0));
  }
}

// Which of the kernels a frame goes through, and with what, by the settings.
TEST(ImageObject, ConversionsAsReference) {
  const int width = 19, height = 44, pitch = 22;  // several bands
  for (int mode = 0; mode < 4; ++mode) {
    const Bytes frame = RandomBytes(std::size_t{pitch} * height, unsigned(mode));
    Bytes sorted = frame, scratch(std::size_t{pitch});
    for (int row = 0; row < height; ++row)
      SortTwoTapRow(&sorted[static_cast<std::size_t>(row) * pitch], pitch, 1, scratch.data());
    const auto gradient = [&](const Bytes& from, std::array<double, 3> gains) {
      reference::Padded padded(from, pitch, width, height);
      return reference::Gradient(padded, width, height, mode, gains, nullptr, nullptr);
    };
    const std::array<double, 3> gains{180 / 128.0, 100 / 128.0, 77 / 128.0};
    // 180 and 77 times 1.28, rounded, against 163.84.
    const std::array<double, 3> gains24{230 * 25 / 4096.0, 100 / 128.0, 99 * 25 / 4096.0};
    reference::Padded padded(frame, pitch, width, height);
    const Bytes grey = reference::GradientGrey(padded, width, height, mode);
    const ColorGains direct{180, 100, 77};
    const struct {
      LONG output, method, colorful, twoTap;
      Bytes expected;
    } kRows[] = {{5, 0, 1, 0, gradient(frame, gains)},
                 {5, 0, 1, 1, gradient(sorted, gains)},
                 {5, 0, 0, 0, grey},
                 {5, 1, 1, 0, reference::Direct(frame, pitch, width, height, mode, direct, false)},
                 {5, 1, 0, 0, reference::Direct(frame, pitch, width, height, mode, direct, true)},
                 {4, 1, 1, 0, gradient(frame, gains24)},
                 {4, 0, 0, 0, grey}};
    for (const auto& row : kRows) {
      SCOPED_TRACE(testing::Message() << "row " << &row - kRows);
      const auto image = NewImage(row.output, width, height);
      image->SetSourceWidth(pitch);
      image->SetBayerMode(mode);
      image->SetBayerDecodingMethod(row.method);
      image->SetColorful(row.colorful != 0);
      image->SetTwoTap(row.twoTap);
      image->SetColorGainR(180);
      image->SetColorGainG(100);
      image->SetColorGainB(77);
      if (row.method != 0) {  // these act on the 32-bit table-driven kernels alone
        image->SetGamma(60);
        image->SetBrightness(30);
        image->SetHue(40);
      }
      Convert(*image, frame);
      ASSERT_TRUE(SamePicture(image->GetBuffer(), row.output - 1, row.expected, width, height, mode));
    }
  }
}

// Everything at once, over several bands.
TEST(ImageObject, WholeChainAsReference) {
  for (unsigned seed = 0; seed < 48; ++seed) {
    const int mode = static_cast<int>(seed % 4), width = 8 + static_cast<int>(seed * 7 % 60),
              height = 9 + static_cast<int>(seed * 5 % 60), pitch = width + static_cast<int>(seed % 3);
    SCOPED_TRACE(testing::Message() << width << " x " << height << ", mode " << mode);
    const auto image = NewImage(5, width, height);
    image->SetSourceWidth(pitch);
    image->Set8BitTransfer(0);
    image->SetBayerMode(mode);
    image->SetAutoWhiteBalance(static_cast<LONG>(seed / 4 % 3));
    image->SetContrast(seed % 5 == 0 ? 9 : 0);
    image->SetDotFilterEnabled(seed % 2);
    image->SetDotFilterThreshold(90);
    image->SetWhitePixelCanceling(seed % 8 < 4, 60);
    image->SetColorGainR(60);  // which the balance replaces before defects are looked for
    image->SetSaturation(3);
    image->SetGamma(70);
    image->SetSharpness(seed % 3 == 0 ? 0 : 7);

    Bytes frame = RandomBytes(2 * std::size_t(pitch * height), seed), packed;
    for (std::size_t i = 0; i < frame.size(); i += 2) {
      packed.push_back(static_cast<std::uint8_t>(frame[i] / 4 + frame[i + 1] % 4 * 64));
      if (seed % 5 == 0) {
        const int v = packed.back();
        packed.back() = v < 9 ? 0 : v > 246 ? 255 : reference::Byte((v - 9) * 256 / 238.0);
      }
    }
    if (seed % 2) reference::DotFilter(packed, pitch, width, height, 90);
    CFilterBayer filter;
    ASSERT_TRUE(filter.Allocate(width, height));
    filter.PrepareFrame(packed.data(), pitch);
    ColorGains gains{.r = 60};
    if (const int balance = static_cast<int>(seed / 4 % 3)) filter.ComputeGains(balance - 1, mode, gains);
    if (seed % 8 < 4) reference::CancelWhitePixels(packed, pitch, height, 60, mode, gains);
    filter.Matrix().SetSaturation(3);
    const FixedColorMatrix matrix = filter.Matrix().Product();
    Bytes gamma(256);
    for (int i = 0; i < 256; ++i) gamma[std::size_t(i)] = reference::Byte(255 * std::pow(i / 255.0, 0.7));
    reference::Padded padded(packed, pitch, width, height);
    const Bytes colors =
        reference::Gradient(padded, width, height, mode, {gains.r / 128.0, gains.g / 128.0, gains.b / 128.0},
                            &matrix, gamma.data());

    Convert(*image, frame);
    EXPECT_EQ(image->GetColorGainR(), gains.r);
    EXPECT_EQ(image->GetColorGainB(), gains.b);
    ASSERT_TRUE(SamePicture(image->GetBuffer(), 4,
                            reference::Sharpen(colors, width, height, seed % 3 == 0 ? 0 : 7), width, height,
                            mode));
  }
}

TEST(ImageObject, AutomaticGainsAreUsedAndStored) {
  for (const LONG output : {4, 5}) {
    const auto image = NewImage(output, 16, 16);
    image->SetAutoWhiteBalance(1);
    Bytes frame;
    for (int i = 0; i < 256; ++i) {
      const char color = reference::ColorAt(0, i / 16, i % 16);
      frame.push_back(color == 'R' ? 50 : color == 'G' ? 100 : 200);
    }
    Convert(*image, frame);
    EXPECT_EQ(image->GetColorGainR(), 256);
    EXPECT_EQ(image->GetColorGainB(), 64);
    EXPECT_TRUE(SamePicture(image->GetBuffer(), output - 1, Bytes(768, 100), 16, 16, 0));
    EXPECT_EQ(image->GetMeanLuminance(), 100u);
  }
}

// Two-byte samples of a reddish white, and then a frame without any white.
TEST(ImageObject, TheWhitePointIsFoundInTwoByteSamples) {
  const auto image = NewImage(4, 16, 12);
  image->Set8BitTransfer(0);
  image->SetAutoWhiteBalance(2);
  const struct {
    int red, green, blue;
    LONG gainR, gainG, gainB;
  } kRows[] = {{240, 230, 220, 123, 128, 134}, {90, 90, 90, 128, 100, 128}};
  for (const auto& row : kRows) {
    Bytes frame;
    for (int i = 0; i < 192; ++i) {
      const char color = reference::ColorAt(0, i / 16, i % 16);
      frame.push_back(static_cast<std::uint8_t>(color == 'R'   ? row.red
                                                : color == 'G' ? row.green
                                                               : row.blue));
      frame.push_back(0);
    }
    Convert(*image, frame);
    EXPECT_EQ(image->GetColorGainR(), row.gainR);
    EXPECT_EQ(image->GetColorGainG(), row.gainG);
    EXPECT_EQ(image->GetColorGainB(), row.gainB);
  }
}

TEST(ImageObject, DefectsAreGoneOnBothDemosaicPaths) {
  for (int i = 0; i < 4; ++i) {
    const auto image = NewImage(5, 20, 20);
    image->SetBayerDecodingMethod(i % 2);
    image->SetWhitePixelCanceling(i / 2, 50);
    image->SetDotFilterEnabled(1 - i / 2);
    image->SetDotFilterThreshold(50);
    Bytes frame(400, 80);
    frame[9 * 20 + 8] = 255;
    Convert(*image, frame);
    EXPECT_TRUE(SamePicture(image->GetBuffer(), 4, Bytes(1200, 80), 20, 20, 0));
  }
}

// Into copies that never had a raw buffer, have one, and have one too many.
TEST(ImageObject, CopiesTakeFormatAndPicture) {
  const struct {
    LONG width, keepRaw;
  } kSteps[] = {{9, 0}, {9, 0}, {9, 1}, {9, 1}, {9, 0}, {12, 1}, {12, 0}, {9, 0}};
  for (const LONG output : {0, 4, 5}) {
    const auto image = NewImage(output, 3, 3);
    COrvaneImageImpl32 copy(0);
    image->CopyTo(&copy);  // nothing to copy yet
    for (const auto& [width, keepRaw] : kSteps) {
      SCOPED_TRACE(testing::Message() << output << ", step " << &width - &kSteps[0].width);
      SetSize(*image, width, 8);
      image->SetBayerMode(2);
      image->SetKeepRaw(keepRaw != 0);
      Convert(*image, RandomBytes(8 * static_cast<std::size_t>(width), unsigned(width + keepRaw)));
      image->CopyTo(&copy);
      EXPECT_EQ(Output(copy), Output(*image));
      EXPECT_EQ(RawCopy(copy), RawCopy(*image));
      EXPECT_EQ(copy.GetRawBuffer() == copy.GetBuffer(), keepRaw == 0);
      EXPECT_EQ(copy.GetBayerMode(), 2);
      EXPECT_EQ(std::memcmp(copy.GetBitmapInfoHeader(), image->GetBitmapInfoHeader(), 40), 0);
    }
  }
}

// Every path, with frames between pages nobody may touch. What counts as converted does not depend on what
// the output held before.
TEST(ImageObject, NothingOutsideTheFrame) {
  std::mt19937 random(3);
  const auto pick = [&](unsigned choices) { return static_cast<LONG>(random() % choices); };
  for (unsigned round = 0; round < 6000; ++round) {
    const LONG input = std::array<LONG, 3>{0, 4, 6}[round % 3];
    const LONG output = std::array<LONG, 4>{0, 1, 4, 5}[round / 3 % 4];
    const LONG width = 1 + pick(9), height = 1 + pick(9);
    const LONG sourceWidth = width - 2 + pick(5), sourceHeight = pick(4) ? height - 3 + pick(6) : 1 + pick(9);
    const bool eightBit = pick(2) != 0, colorful = pick(4) != 0, cancel = pick(2) != 0;
    const LONG twoTap = pick(2), mode = pick(4), method = pick(2), balance = pick(4);
    const auto samples =
        static_cast<std::size_t>(std::max<LONG>(sourceWidth, 0) * std::max<LONG>(sourceHeight, 0));
    const Bytes bytes = RandomBytes(samples * (input == 6 || !eightBit ? 2 : 1), round);
    constexpr LONG kExtremes[] = {INT_MIN, -80'000'000, -1, 0, 80'000'000, INT_MAX};
    LONG tones[6];
    for (LONG& tone : tones) tone = pick(2) ? pick(300) : kExtremes[pick(std::size(kExtremes))];
    bool filled = false;
    Bytes pictures[2];
    for (const bool second : {false, true}) {
      const auto image = NewImage(output, width, height);
      image->SetSourceWidth(sourceWidth);
      image->SetSourceHeight(sourceHeight);
      image->SetInputFormat(input);
      image->Set8BitTransfer(eightBit);
      image->SetTwoTap(twoTap);
      image->SetBayerMode(mode);
      image->SetBayerDecodingMethod(method);
      image->SetColorful(colorful);
      image->SetAutoWhiteBalance(balance);
      image->SetWhitePixelCanceling(cancel, 10);
      image->SetDotFilterEnabled(1);
      image->SetDotFilterThreshold(10);
      image->SetSharpness(100);
      image->SetContrast(20);
      image->SetColorGainR(tones[0]);
      image->SetColorGainG(tones[1]);
      image->SetColorGainB(tones[2]);
      image->SetSaturation(tones[3]);
      image->SetBrightness(tones[4]);
      image->SetHue(tones[5]);
      image->SetKeepRaw(1);
      image->AllocateBuffers();
      ASSERT_NE(image->GetBuffer(), nullptr);
      std::fill_n(image->GetBuffer(), image->GetStride() * height, second ? 0x55 : 0xAA);
      GuardedBytes frame(bytes, second ? GuardedBytes::Guard::Before : GuardedBytes::Guard::Behind);
      filled = image->ProcessFrame(frame.data());
      pictures[second] = Output(*image);
      // Alpha bytes, and what is behind the last group of four grey samples, come from the allocation.
      for (std::size_t i = 0; output % 4 == 1 && i < pictures[second].size(); ++i) {
        if (i % 4 == 3 || (!colorful && i / 4 % std::size_t(width) >= std::size_t(width) / 4 * 4))
          pictures[second][i] = 0;
      }
      if (input != 6) image->ConvertComplementary(frame.data());
      image->SetOutputFormat(output == 4 ? 5 : 4);  // larger or smaller pixels: of the next allocation
      EXPECT_EQ(image->ProcessFrame(frame.data()), filled);
    }
    if (filled) {
      ASSERT_EQ(pictures[0], pictures[1]) << "round " << round;
    }
  }
}

TEST(ImageObject, TellsWhetherAFrameFillsTheOutput) {
  // Of 8 x 8 pixels, by input: what the outputs 0, 1, 4 and 5 make of it, in the class for 24 and that for 32
  // bits.
  const struct {
    LONG input;
    bool in24[4], in32[4];
  } kRows[] = {{0, {true, false, true, false}, {true, true, false, true}},
               {4, {false, false, true, true}, {false, false, true, true}},
               {6, {false, true, false, true}, {false, true, false, true}},
               {3, {}, {}}};
  for (const auto& row : kRows) {
    for (int n = 0; n < 8; ++n) {
      const LONG output = std::array<LONG, 4>{0, 1, 4, 5}[std::size_t(n % 4)];
      std::unique_ptr<COrvaneImageImpl> image = std::make_unique<COrvaneImageImpl32>(1);
      if (n < 4) image = std::make_unique<COrvaneImageImpl24>(1);
      image->SetOutputFormat(output);
      image->SetInputFormat(row.input);
      SetSize(*image, 8, 8);
      image->SetSourceWidth(24);
      image->AllocateBuffers();
      Bytes frame(24 * 8 * 2);
      EXPECT_EQ(image->ProcessFrame(frame.data()), n < 4 ? row.in24[n] : row.in32[n - 4])
          << row.input << " to " << output << ", class " << n / 4;
      EXPECT_FALSE(image->ProcessFrame(nullptr));
      image->SetSourceHeight(row.input == 6 ? 2 : 7);  // the last row is missing
      image->AllocateBuffers();
      EXPECT_FALSE(image->ProcessFrame(frame.data())) << row.input << " to " << output;
    }
  }
  // The direct kernels begin at 5 x 5.
  for (const LONG size : {4, 5}) {
    const auto image = NewImage(5, 5, size);
    image->SetBayerDecodingMethod(1);
    image->AllocateBuffers();
    Bytes frame(25);
    EXPECT_EQ(image->ProcessFrame(frame.data()), size == 5);
  }
}

// Settings arrive from the application while frames are converted; ThreadSanitizer is the judge.
TEST(ImageObject, SettersDuringConversion) {
  CZELCritSec lock;
  const auto image = NewImage(5, 40, 32);
  image->SetLock(&lock);
  image->AllocateBuffers();
  std::thread application([&] {
    using Setter = void (COrvaneImage::*)(LONG);
    const Setter kSetters[] = {&COrvaneImage::SetGamma,
                               &COrvaneImage::SetContrast,
                               &COrvaneImage::SetBrightness,
                               &COrvaneImage::SetSaturation,
                               &COrvaneImage::SetHue,
                               &COrvaneImage::SetColorCorrection,
                               &COrvaneImage::SetColorGainR,
                               &COrvaneImage::SetAutoWhiteBalance,
                               &COrvaneImage::SetBayerMode,
                               &COrvaneImage::SetTwoTap,
                               &COrvaneImage::SetBayerDecodingMethod};
    for (LONG i = 0; i < 200; ++i) {
      for (const Setter set : kSetters) (*image.*set)(i % 23 % 4 == 3 ? i : i % 4);
      image->SetSharpness(i);
      image->SetColorful(i % 3 != 0);
      image->SetWhitePixelCanceling(1, 50);
    }
  });
  Bytes frame = RandomBytes(1280, 1);
  for (int i = 0; i < 100; ++i) image->ProcessFrame(frame.data());
  application.join();
  EXPECT_EQ(image->GetSharpness(), 199);
}

}  // namespace
}  // namespace zel
