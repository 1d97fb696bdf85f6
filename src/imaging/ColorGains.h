#pragma once

namespace zel {

/// Colour gains of one frame; 128 is unity.
struct ColorGains {
  int r = 128, g = 128, b = 128;
};

}  // namespace zel
