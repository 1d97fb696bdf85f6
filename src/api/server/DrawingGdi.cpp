#include <cstdlib>

#include "api/server/Drawing.h"

namespace zel {
namespace {

HDC ContextOf(LONG value) {
  return reinterpret_cast<HDC>(static_cast<INT_PTR>(value));
}

const BITMAPINFO* InfoOf(const BITMAPINFOHEADER& header) {
  return reinterpret_cast<const BITMAPINFO*>(&header);
}

SIZE TargetSize(HDC context) {
  RECT client{};
  if (const HWND window = WindowFromDC(context); window && GetClientRect(window, &client)) {
    return {client.right, client.bottom};
  }
  BITMAP bitmap{};
  if (GetObjectW(GetCurrentObject(context, OBJ_BITMAP), sizeof bitmap, &bitmap)) {
    return {bitmap.bmWidth, bitmap.bmHeight};
  }
  return {GetDeviceCaps(context, HORZRES), GetDeviceCaps(context, VERTRES)};
}

}  // namespace

const HRESULT kDrawingResult = S_OK;

void DrawStretched(LONG deviceContext, const BITMAPINFOHEADER& header, const void* pixels) {
  const HDC context = ContextOf(deviceContext);
  const SIZE target = TargetSize(context);
  StretchDIBits(context, 0, 0, target.cx, target.cy, 0, 0, header.biWidth, std::abs(header.biHeight), pixels,
                InfoOf(header), DIB_RGB_COLORS, SRCCOPY);
}

void DrawUnscaled(LONG deviceContext, const BITMAPINFOHEADER& header, const void* pixels) {
  const auto width = static_cast<DWORD>(header.biWidth);
  const auto height = static_cast<DWORD>(std::abs(header.biHeight));
  SetDIBitsToDevice(ContextOf(deviceContext), 0, 0, width, height, 0, 0, 0, height, pixels, InfoOf(header),
                    DIB_RGB_COLORS);
}

}  // namespace zel
