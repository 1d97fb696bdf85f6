#include "api/server/Drawing.h"

namespace zel {

HRESULT DrawStretched(LONG, const BITMAPINFOHEADER&, const void*) {
  return S_OK;
}
HRESULT DrawUnscaled(LONG, const BITMAPINFOHEADER&, const void*) {
  return S_OK;
}

}  // namespace zel
