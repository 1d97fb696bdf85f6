#pragma once

#include <string>

#include "platform/DriverHost.h"

namespace zel {

/// Installs the simulated host that the environment asks for, once in the life of the process; later calls
/// return that host. Null and nothing installed when `ZELCAM_SIM` is not set (`error` is empty) or when the
/// environment can't be read (`error` says what is wrong; never null). Any thread.
DriverHost* InstallSimulatedHostFromEnvironment(std::string* error);

}  // namespace zel
