#pragma once

#include <memory>

#include "platform/ComponentTypes.h"

namespace zel {

struct HandleCloser {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};

/// Owns a kernel object. Null means none: INVALID_HANDLE_VALUE must not be put in.
using UniqueHandle = std::unique_ptr<void, HandleCloser>;

}  // namespace zel
