#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>

// Needs <cstdio> before it.
#include <jpeglib.h>

#include "bench/scene.h"
#include "imaging/COrvaneImageImpl32.h"
#include "imaging/ImageFile.h"
#include "imaging/PictureWriter.h"
#include "imaging/kernels/DotFilter.h"
#include "imaging/kernels/MosaicSums.h"
#include "imaging/kernels/Resample.h"
#include "imaging/kernels/Yuv.h"

/// The library's side of every comparison, named <work>/zelcam.
namespace zel::bench {
namespace {

void SetTones(COrvaneImageImpl32& image) {
  image.SetColorGainR(180);
  image.SetColorGainB(210);
  image.SetSaturation(3);
  image.SetHue(8);
  image.SetBrightness(6);
  image.SetGamma(60);
}

/// A whole frame through the image object, as the processing worker does it.
void Frames(benchmark::State& state, const Bytes& frame,
            const std::function<void(COrvaneImageImpl32&)>& set) {
  COrvaneImageImpl32 image(1);
  image.SetWidth(kWidth);
  image.SetHeight(kHeight);
  image.SetSourceWidth(kWidth);
  image.SetSourceHeight(kHeight);
  set(image);
  image.AllocateBuffers();
  RunOnFreshCopy(state, frame, [&](std::uint8_t* fresh) { image.ProcessFrame(fresh); });
}

const struct {
  const char* name;
  bool tenBit;
  void (*set)(COrvaneImageImpl32&);
} kFrameWorks[] = {
    {"direct demosaic", false, [](COrvaneImageImpl32& image) { image.SetBayerDecodingMethod(1); }},
    {"5 x 5 demosaic", false, [](COrvaneImageImpl32&) {}},
    {"5 x 5 demosaic, gains, matrix, gamma", false, SetTones},
    {"whole chain", true,
     [](COrvaneImageImpl32& image) {
       SetTones(image);
       image.Set8BitTransfer(0);
       image.SetAutoWhiteBalance(1);
       image.SetSharpness(10);
     }},
    {"whole chain and dot filter", true,
     [](COrvaneImageImpl32& image) {
       SetTones(image);
       image.Set8BitTransfer(0);
       image.SetAutoWhiteBalance(1);
       image.SetSharpness(10);
       image.SetDotFilterEnabled(1);
       image.SetDotFilterThreshold(40);
     }},
    {"white balance statistics", false,
     [](COrvaneImageImpl32& image) {
       image.SetBayerDecodingMethod(1);
       image.SetAutoWhiteBalance(2);
     }},
    {"white pixel cancelling", false,
     [](COrvaneImageImpl32& image) {
       image.SetBayerDecodingMethod(1);
       image.SetWhitePixelCanceling(1, 60);
     }},
};

void DotFilterPass(benchmark::State& state) {
  RunOnFreshCopy(state, Mosaic(),
                 [](std::uint8_t* frame) { DotFilter(frame, kWidth, kWidth, kHeight, 0, kHeight, 40); });
}
BENCHMARK(DotFilterPass)->Name("dot filter/zelcam");

/// From rows of colours to sharpened pixels in memory.
void SharpnessPass(benchmark::State& state) {
  PictureWriter writer;
  Bytes pixels(4 * kSamples);
  if (!writer.Allocate(kWidth)) return state.SkipWithError("no memory");
  const PictureTarget target{pixels.data(), 4 * kWidth, kWidth, kHeight, 4, false};
  writer.Begin(target, {}, 10);
  for (int row = 0; row < 4; ++row) {  // what the held rows contain from then on
    const PlaneRow planes = writer.NextRow();
    for (std::uint8_t* plane : {planes.red, planes.green, planes.blue}) {
      std::copy_n(Mosaic().data() + row * kWidth, kWidth, plane);
    }
    writer.FinishRow();
  }
  Run(state, [&] {
    writer.Begin(target, {}, 10);
    for (int row = 0; row < kHeight; ++row) writer.FinishRow();
  });
}
BENCHMARK(SharpnessPass)->Name("sharpness/zelcam");

void YuvPass(benchmark::State& state) {
  const Bytes& yuv = Yuv();
  Bytes pixels(4 * kSamples);
  Run(state, [&] { YuvToPixels(yuv.data(), kSamples / 2, pixels.data()); });
}
BENCHMARK(YuvPass)->Name("YUV 4:2:2 to BGRA/zelcam");

void ResamplePass(benchmark::State& state) {
  const Bytes& from = Pixels();
  Bytes to(std::size_t{4} * kScaledWidth * kScaledHeight);
  Run(state, [&] { ResampleBilinear(from.data(), kWidth, kHeight, to.data(), kScaledWidth, kScaledHeight); });
}
BENCHMARK(ResamplePass)->Name("Resample/zelcam");

void GreyWorldSums(benchmark::State& state) {
  const Bytes& mosaic = Mosaic();
  Run(state, [&] { benchmark::DoNotOptimize(SumMosaic(mosaic.data(), kWidth, kWidth, kHeight)); });
}
BENCHMARK(GreyWorldSums)->Name("grey-world sums/zelcam");

std::filesystem::path JpegPath(const char* name) {
  return std::filesystem::temp_directory_path() / name;
}

void JpegByLibrary(benchmark::State& state) {
  const std::filesystem::path path = JpegPath("zelcam-bench-1.jpg");
  const Bytes& pixels = Pixels();
  const std::u16string wide = path.u16string();
  Run(state, [&] {
    if (!SavePicture(wide.c_str(), pixels.data(), kWidth, kHeight, 32, 0, 1, 0))
      state.SkipWithError("not saved");
  });
  std::filesystem::remove(path);
}
BENCHMARK(JpegByLibrary)->Name("JPEG/zelcam");

void JpegDirectly(benchmark::State& state) {
  const std::filesystem::path path = JpegPath("zelcam-bench-2.jpg");
  const Bytes& pixels = Pixels();
  Run(state, [&] {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return state.SkipWithError("no file");
    jpeg_compress_struct compress;
    jpeg_error_mgr errors;
    compress.err = jpeg_std_error(&errors);
    jpeg_create_compress(&compress);
    jpeg_stdio_dest(&compress, file);
    compress.image_width = kWidth;
    compress.image_height = kHeight;
    compress.input_components = 4;
    compress.in_color_space = JCS_EXT_BGRX;
    jpeg_set_defaults(&compress);
    jpeg_start_compress(&compress, TRUE);
    while (compress.next_scanline < compress.image_height) {
      auto* row = const_cast<JSAMPLE*>(&pixels[std::size_t{4} * kWidth * compress.next_scanline]);
      jpeg_write_scanlines(&compress, &row, 1);
    }
    jpeg_finish_compress(&compress);
    jpeg_destroy_compress(&compress);
    std::fclose(file);
  });
  std::filesystem::remove(path);
}
BENCHMARK(JpegDirectly)->Name("JPEG/libjpeg");

const bool kRegistered = [] {
  for (const auto& work : kFrameWorks) {
    benchmark::RegisterBenchmark((std::string(work.name) + "/zelcam").c_str(),
                                 [&work](benchmark::State& state) {
                                   Frames(state, work.tenBit ? TenBitMosaic() : Mosaic(), work.set);
                                 });
  }
  return true;
}();

}  // namespace
}  // namespace zel::bench
