#include "api/LibraryStart.h"

#include <cstdio>
#include <string>

#include "sim/SimEnvironment.h"

namespace zel {

bool StartLibrary() {
  static const bool started = [] {
    std::string error;
    InstallSimulatedHostFromEnvironment(&error);
    if (!error.empty()) std::fprintf(stderr, "ZELCam: %s\n", error.c_str());
    return error.empty();
  }();
  return started;
}

}  // namespace zel
