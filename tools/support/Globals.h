#pragma once

#include <string>

namespace zel::tool {

/// The options that every verb has.
struct Globals {
  std::string camera;  ///< "TYPE" or "TYPE@INDEX"; empty: the only one that answers
  bool json = false;
  bool quiet = false;
  bool verbose = false;
};

}  // namespace zel::tool
