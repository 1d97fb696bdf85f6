#include <emmintrin.h>

#include "bench/scene.h"

/// What moving a frame's bytes costs when nothing is computed: a mosaic is read and four bytes are written
/// for each of its samples.
namespace zel::bench {
namespace {

template <bool kStreaming>
void ReadMosaicWritePixels(benchmark::State& state) {
  Bytes pixels(4 * kSamples + 64);
  auto* const out =
      reinterpret_cast<__m128i*>((reinterpret_cast<std::uintptr_t>(pixels.data()) + 63) / 64 * 64);
  RunOnFreshCopy(state, Mosaic(), [&](const std::uint8_t* mosaic) {
    for (std::size_t i = 0; i < kSamples / 16; ++i) {
      const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(mosaic) + i);
      for (std::size_t k = 0; k < 4; ++k) {
        if constexpr (kStreaming) {
          _mm_stream_si128(out + 4 * i + k, v);
        } else {
          _mm_store_si128(out + 4 * i + k, v);
        }
      }
    }
    if constexpr (kStreaming) _mm_sfence();
  });
}
BENCHMARK(ReadMosaicWritePixels<true>)->Name("memory/streaming stores");
BENCHMARK(ReadMosaicWritePixels<false>)->Name("memory/normal stores");

}  // namespace
}  // namespace zel::bench
