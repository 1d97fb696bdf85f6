#pragma once

#include <memory>

#include "imaging/COrvaneImageImpl.h"

namespace zel {

class CAutoFocus;
class CZELDevicePropertyImpl;

/// The image object of a capture with the store's settings in it, but without sizes and buffers. Throws
/// std::bad_alloc.
std::unique_ptr<COrvaneImageImpl> MakePlayImage(CZELDevicePropertyImpl& store, bool eightBitTransfer,
                                                bool keepRaw, CZELCritSec& lock);

/// Makes the autofocus look at the pictures of this image object, once its buffers are there; at none when
/// they are not 32-bit.
void FitAutoFocus(CAutoFocus& autoFocus, COrvaneImageImpl& image);

}  // namespace zel
