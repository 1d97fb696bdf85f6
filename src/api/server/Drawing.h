#pragma once

#include "platform/ComponentTypes.h"

namespace zel {

/// Both draw 32-bit pixels on a device context given as the 32-bit value of its handle; `header` describes
/// the pixels. They always answer S_OK. Where there are no device contexts nothing is drawn.

/// Scaled to the client area of the context's window, or to the whole bitmap of a memory context.
HRESULT DrawStretched(LONG deviceContext, const BITMAPINFOHEADER& header, const void* pixels);
/// At the origin, unscaled.
HRESULT DrawUnscaled(LONG deviceContext, const BITMAPINFOHEADER& header, const void* pixels);

}  // namespace zel
