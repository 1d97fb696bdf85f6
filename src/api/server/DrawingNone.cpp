#include "api/server/Drawing.h"

namespace zel {

const HRESULT kDrawingResult = E_NOTIMPL;

void DrawStretched(LONG, const BITMAPINFOHEADER&, const void*) {}
void DrawUnscaled(LONG, const BITMAPINFOHEADER&, const void*) {}

}  // namespace zel
