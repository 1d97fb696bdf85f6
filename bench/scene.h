#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace zel::bench {

constexpr int kWidth = 2560, kHeight = 1920;
constexpr std::size_t kSamples = std::size_t{kWidth} * kHeight;
constexpr int kScaledWidth = 1920, kScaledHeight = 1440;

using Bytes = std::vector<std::uint8_t>;

/// A mosaic (phase of mode 0) of smooth colours, edges, noise of a few steps and one defect in a thousand
/// samples.
const Bytes& Mosaic();
/// The same as ten-bit samples of two bytes.
const Bytes& TenBitMosaic();
/// Pixels of four bytes, and YUV 4:2:2, of the same scene.
const Bytes& Pixels();
const Bytes& Yuv();

/// Times `work(frame)` on a copy of `original` that is made anew, untimed, before each run.
template <class Work>
void RunOnFreshCopy(benchmark::State& state, const Bytes& original, Work work) {
  Bytes frame = original;
  for (auto _ : state) {
    state.PauseTiming();
    std::copy(original.begin(), original.end(), frame.begin());
    state.ResumeTiming();
    work(frame.data());
    benchmark::ClobberMemory();
  }
}

template <class Work>
void Run(benchmark::State& state, Work work) {
  for (auto _ : state) {
    work();
    benchmark::ClobberMemory();
  }
}

}  // namespace zel::bench
