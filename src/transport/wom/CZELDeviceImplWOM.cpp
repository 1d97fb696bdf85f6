#include "transport/wom/CZELDeviceImplWOM.h"

#include "common/BytePacking.h"
#include "property/CZELDevicePropertyImpl.h"
#include "transport/wom/WomFpga.h"

namespace zel {

LONG CZELDeviceImplWOM::PrepareCapture() {
  if (!PrepareBuffers(IsEightBitTransfer() ? 1 : 2)) return 0;
  for (unsigned n = 0; n < 4; ++n) {
    const LONG address = kWomTransferSize + static_cast<LONG>(n);
    if (FAILED(PropertyStore().SetFpgaRegister(address, ByteOf(geometry_.transferPixels, n)))) return 0;
  }
  return 1;
}

LONG CZELDeviceImplWOM::ReadFrame(unsigned char* buffer) {
  return ReadTransfer(buffer, geometry_.transferPixels, UsbTransferKind::Alternative);
}

}  // namespace zel
