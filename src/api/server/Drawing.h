#pragma once

#include "platform/ComponentTypes.h"

namespace zel {

/// What the drawing calls of a camera answer, whatever came of it: S_OK; E_NOTIMPL where there are no device
/// contexts and nothing can ever be drawn.
extern const HRESULT kDrawingResult;

/// Both draw 32-bit pixels on a device context given as the 32-bit value of its handle; `header` describes
/// the pixels.

/// Scaled to the client area of the context's window, or to the whole bitmap of a memory context.
void DrawStretched(LONG deviceContext, const BITMAPINFOHEADER& header, const void* pixels);
/// At the origin, unscaled.
void DrawUnscaled(LONG deviceContext, const BITMAPINFOHEADER& header, const void* pixels);

}  // namespace zel
