#include <libyuv.h>

#include "bench/scene.h"

namespace zel::bench {
namespace {

void Yuy2ToArgb(benchmark::State& state) {
  const Bytes& yuv = Yuv();
  Bytes pixels(4 * kSamples);
  Run(state, [&] { libyuv::YUY2ToARGB(yuv.data(), 2 * kWidth, pixels.data(), 4 * kWidth, kWidth, kHeight); });
}
BENCHMARK(Yuy2ToArgb)->Name("YUV 4:2:2 to BGRA/libyuv");

void Scale(benchmark::State& state) {
  const Bytes& from = Pixels();
  Bytes to(std::size_t{4} * kScaledWidth * kScaledHeight);
  Run(state, [&] {
    libyuv::ARGBScale(from.data(), 4 * kWidth, kWidth, kHeight, to.data(), 4 * kScaledWidth, kScaledWidth,
                      kScaledHeight, libyuv::kFilterBilinear);
  });
}
BENCHMARK(Scale)->Name("Resample/libyuv bilinear");

}  // namespace
}  // namespace zel::bench
