#pragma once

#include "models/CcdOptions.h"
#include "models/CcdSplit.h"
#include "models/FinalDevice.h"
#include "models/SerialRegisters.h"
#include "models/wom/WomModel.h"

/// The WOM CCD cameras: the maps of their USB 2.0 kin.
namespace zel {

using WomSplitCcdProperty = ccdsplit::Property<ByteRegisters<WomProperty>>;

}  // namespace zel
