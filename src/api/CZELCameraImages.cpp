// Drawing, scaling and saving of pictures that the application holds: no device takes part.
#include <algorithm>

#include "api/CZELCamera.h"
#include "api/VariantPixels.h"
#include "api/server/Drawing.h"
#include "imaging/ImageFile.h"
#include "imaging/kernels/Resample.h"

namespace zel {
namespace {

constexpr std::int64_t kBytesPerPixel = 4;

/// Whether the memory holds a 32-bit picture; none does one below 1 x 1.
bool HoldsPicture(const PixelMemory& memory, LONG width, LONG height) {
  const std::int64_t rowBytes = width * kBytesPerPixel;
  return memory.HoldsRows(height, rowBytes, rowBytes);
}

}  // namespace

const BITMAPINFOHEADER& CZELCamera::DescribeBits(LONG width, LONG height) {
  bitmapHeader_.biWidth = width;
  bitmapHeader_.biHeight = height;
  bitmapHeader_.biSizeImage = static_cast<DWORD>(width * kBytesPerPixel * std::max(height, -height));
  return bitmapHeader_;
}

HRESULT CZELCamera::StretchDIBits(LONG hDC, LONG Width, LONG Height, VARIANT vtBits) {
  return Guarded([&]() -> HRESULT {
    const PixelMemory pixels = ArrayOf(vtBits);
    if (HoldsPicture(pixels, Width, Height)) {
      DrawStretched(hDC, DescribeBits(Width, Height), pixels.data);
    }
    return kDrawingResult;
  });
}

HRESULT CZELCamera::SetDIBits(LONG hDC, LONG Width, LONG Height, VARIANT vtBits) {
  return Guarded([&]() -> HRESULT {
    const PixelMemory pixels = ArrayOf(vtBits);
    if (HoldsPicture(pixels, Width, Height)) {
      DrawUnscaled(hDC, DescribeBits(Width, -Height), pixels.data);
    }
    return kDrawingResult;
  });
}

HRESULT CZELCamera::Resample(VARIANT vtSrc, LONG lSrcWidth, LONG lSrcHeight, VARIANT vtDst, LONG lDstWidth,
                             LONG lDstHeight, LONG) {
  return Guarded([&]() -> HRESULT {
    const PixelMemory source = ArrayOf(vtSrc);
    const PixelMemory destination = WritableArrayOf(vtDst);
    if (HoldsPicture(source, lSrcWidth, lSrcHeight) && HoldsPicture(destination, lDstWidth, lDstHeight)) {
      ResampleBilinear(source.data, lSrcWidth, lSrcHeight, destination.data, lDstWidth, lDstHeight);
    }
    return S_OK;
  });
}

HRESULT CZELCamera::SaveImage(BSTR bstrFilename, VARIANT vtBits, LONG lWidth, LONG lHeight, LONG lBitCount,
                              LONG lStride, LONG lFormat, LONG lGray) {
  return Guarded([&]() -> HRESULT {
    if (!bstrFilename || lWidth < 1 || lHeight < 1) return E_FAIL;
    const std::int64_t meaningful = std::int64_t{lWidth} * (lBitCount == 24 ? 3 : kBytesPerPixel);
    const std::int64_t stride = lStride < 1 ? (meaningful + 3) / 4 * 4 : lStride;
    const PixelMemory pixels = ArrayOf(vtBits);
    if (!pixels.HoldsRows(lHeight, stride, meaningful)) return E_FAIL;
    const bool saved =
        SavePicture(bstrFilename, pixels.data, lWidth, lHeight, lBitCount, lStride, lFormat, lGray);
    return saved ? S_OK : E_FAIL;
  });
}

}  // namespace zel
