#pragma once

#include "platform/ComponentTypes.h"

namespace zel {

/// Colour gains (100 is unity) for light of 2000..7000 kelvin, in steps of 10 kelvin. Outside: 100 each and
/// false.
bool GainsFromTemperature(LONG kelvin, LONG* r, LONG* g, LONG* b);

/// Linear RGB of daylight of a colour temperature (above 0 kelvin), its largest component scaled to 1.
void WhitePointFromTemperature(double kelvin, double* r, double* g, double* b);

}  // namespace zel
