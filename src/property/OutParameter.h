#pragma once

namespace zel {

/// Writes through an out pointer that callers may leave null.
template <class Value>
void Put(Value* out, Value value) {
  if (out != nullptr) *out = value;
}

}  // namespace zel
