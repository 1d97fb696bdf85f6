#pragma once

#include "platform/ComponentTypes.h"

namespace zel {

/// Registers of the FPGA between the sensor and the controller of FX3 cameras, 8 bits each.
enum FpgaRegister : LONG {
  kFpgaPort = 7,             ///< inputs and outputs of the I/O socket
  kFpgaBytesPerSample = 60,  ///< 1 or 2
  kFpgaHeightLow = 64,
  kFpgaHeightHigh = 65,
  kFpgaWidthLow = 68,
  kFpgaWidthHigh = 69,
  kFpgaFirstLane = 72,  ///< 72, 73, 76 and 77 reset the four lanes of the picture's way
  kFpgaSecondLane = 73,
  kFpgaThirdLane = 76,
  kFpgaFourthLane = 77,
  kFpgaReset = 108,  ///< 1 holds the FPGA in reset
  kFpgaFocus = 120,  ///< position of the focus drive, 0..255
};

}  // namespace zel
