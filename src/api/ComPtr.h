#pragma once

#include <utility>

namespace zel {

/// Holds one reference to a component object.
template <class Interface>
class ComPtr {
 public:
  ComPtr() = default;
  /// Adds a reference.
  explicit ComPtr(Interface* object) : object_(object) {
    if (object_) object_->AddRef();
  }
  ComPtr(ComPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ComPtr& operator=(ComPtr&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ComPtr() {
    if (object_) object_->Release();
  }

  /// Takes over a reference that the caller holds.
  static ComPtr Adopt(Interface* object) {
    ComPtr pointer;
    pointer.object_ = object;
    return pointer;
  }
  /// Hands the reference to the caller.
  Interface* Detach() { return std::exchange(object_, nullptr); }

  Interface* Get() const { return object_; }
  Interface* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  Interface* object_ = nullptr;
};

}  // namespace zel
