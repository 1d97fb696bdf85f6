#pragma once

#include <pthread.h>

#include <mutex>

namespace zel {

/// A standard mutex that returns what the system attached to it. MinGW's gives each locked mutex some memory,
/// and an event once two threads have met at it, and its own destructor keeps both: a lock that comes and
/// goes with a camera would leak. Usable wherever a std::mutex is.
template <class Standard>
class ReturningMutex : public Standard {
 public:
  ReturningMutex() = default;
  ~ReturningMutex() { pthread_mutex_destroy(this->native_handle()); }
};

using Mutex = ReturningMutex<std::mutex>;
using RecursiveMutex = ReturningMutex<std::recursive_mutex>;

}  // namespace zel
