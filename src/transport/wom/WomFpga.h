#pragma once

#include "platform/ComponentTypes.h"

/// FPGA registers of the WOM cameras, 8 bits each.
namespace zel {

constexpr LONG kWomTransferSize = 0;   ///< 0..3: pixels of one transfer, lowest byte first
constexpr LONG kWomTransferMode = 14;  ///< 0: one byte per sample, 1: two
constexpr LONG kWomHalfClock = 15;     ///< 0..5
constexpr LONG kWomMark = 128;         ///< read only

}  // namespace zel
