#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include "device/ThreadPlacement.h"

namespace zel {

std::string ThreadPlacement() {
  cpu_set_t processors;
  CPU_ZERO(&processors);
  sched_getaffinity(0, sizeof processors, &processors);
  std::string text = "nice " + std::to_string(getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()))) + " on";
  for (std::size_t n = 0; n < 64; ++n) {
    if (CPU_ISSET(n, &processors)) text += " " + std::to_string(n);
  }
  return text;
}

}  // namespace zel
