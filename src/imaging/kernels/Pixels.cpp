#include "imaging/kernels/Pixels.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/Pixels.cpp"
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

/// `alpha` is the same in all lanes.
template <bool kStreaming = false>
HWY_INLINE void Interleave4(BytesV b, BytesV g, BytesV r, BytesV alpha, std::uint8_t* out) {
  const Pixels pixels = Interleaved(b, g, r, alpha);
  for (const BytesV& part : pixels.part) {
    if constexpr (kStreaming) {
      hn::Stream(part, Bytes(), out);
    } else {
      hn::StoreU(part, Bytes(), out);
    }
    out += hn::MaxLanes(Bytes());
  }
}

/// Stores by way of a buffer of whole vectors what is less than they hold.
template <int kPixelBytes>
HWY_INLINE void StorePart(const PlaneRow& row, int first, int count, std::uint8_t* out) {
  alignas(64) std::uint8_t part[kPixelBytes * HWY_MAX_BYTES];
  const auto b = hn::LoadU(Bytes(), row.blue + first), g = hn::LoadU(Bytes(), row.green + first),
             r = hn::LoadU(Bytes(), row.red + first);
  if constexpr (kPixelBytes == 4) {
    Interleave4(b, g, r, hn::Set(Bytes(), 255), part);
  } else {
    hn::StoreInterleaved3(b, g, r, Bytes(), part);
  }
  std::memcpy(out, part, static_cast<std::size_t>(count) * kPixelBytes);
}

template <int kPixelBytes, bool kStreaming>
void StoreRow(const PlaneRow& row, int width, std::uint8_t* out) {
  constexpr int kStep = static_cast<int>(hn::MaxLanes(Bytes()));
  const auto alpha = hn::Set(Bytes(), 255);
  int i = 0;
  if constexpr (kStreaming) {
    // Up to the first whole cache line.
    const auto past = static_cast<int>(reinterpret_cast<std::uintptr_t>(out) % 64 / 4);
    if (past != 0) {
      i = std::min(16 - past, width);
      StorePart<kPixelBytes>(row, 0, i, out);
    }
  }
  for (; i + kStep <= width; i += kStep) {
    const auto b = hn::LoadU(Bytes(), row.blue + i), g = hn::LoadU(Bytes(), row.green + i),
               r = hn::LoadU(Bytes(), row.red + i);
    std::uint8_t* pixels = out + std::ptrdiff_t{i} * kPixelBytes;
    if constexpr (kPixelBytes == 3) {
      hn::StoreInterleaved3(b, g, r, Bytes(), pixels);
    } else {
      Interleave4<kStreaming>(b, g, r, alpha, pixels);
    }
  }
  if (i < width) StorePart<kPixelBytes>(row, i, width - i, out + std::ptrdiff_t{i} * kPixelBytes);
}

void StorePixels(const PlaneRow& row, int width, int pixelBytes, bool streaming, std::uint8_t* out) {
  const auto store = pixelBytes == 3 ? StoreRow<3, false>
                     : streaming     ? StoreRow<4, true>
                                     : StoreRow<4, false>;
  store(row, width, out);
}

void ExpandGrey(const std::uint8_t* grey, std::size_t pixels, std::uint8_t alpha, std::uint8_t* bgra) {
  const std::size_t step = hn::Lanes(Bytes());
  std::size_t i = 0;
  for (; i + step <= pixels; i += step) {
    const auto v = hn::LoadU(Bytes(), grey + i);
    Interleave4(v, v, v, hn::Set(Bytes(), alpha), bgra + 4 * i);
  }
  for (; i < pixels; ++i) {
    std::memset(bgra + 4 * i, grey[i], 3);
    bgra[4 * i + 3] = alpha;
  }
}

void ExpandPacked(const std::uint8_t* bgr, std::size_t pixels, std::uint8_t* bgra) {
  const std::size_t step = hn::Lanes(Bytes());
  std::size_t i = 0;
  for (; i + step <= pixels; i += step) {
    BytesV b, g, r;
    hn::LoadInterleaved3(Bytes(), bgr + 3 * i, b, g, r);
    Interleave4(b, g, r, hn::Set(Bytes(), 255), bgra + 4 * i);
  }
  for (; i < pixels; ++i) {
    std::memcpy(bgra + 4 * i, bgr + 3 * i, 3);
    bgra[4 * i + 3] = 255;
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(StorePixels);
HWY_EXPORT(ExpandGrey);
HWY_EXPORT(ExpandPacked);

void StorePixels(const PlaneRow& row, int width, int pixelBytes, bool streaming, std::uint8_t* out) {
  HWY_DYNAMIC_DISPATCH(StorePixels)(row, width, pixelBytes, streaming, out);
}

void FinishStreaming() {
  hwy::FlushStream();
}

void ExpandGrey(const std::uint8_t* grey, std::size_t pixels, std::uint8_t alpha, std::uint8_t* bgra) {
  HWY_DYNAMIC_DISPATCH(ExpandGrey)(grey, pixels, alpha, bgra);
}

void ExpandPacked(const std::uint8_t* bgr, std::size_t pixels, std::uint8_t* bgra) {
  HWY_DYNAMIC_DISPATCH(ExpandPacked)(bgr, pixels, bgra);
}

}  // namespace zel
#endif
