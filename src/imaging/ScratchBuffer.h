#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace zel {

/// Bytes, beginning with a cache line, that are had or not, without an exception.
class ScratchBuffer {
 public:
  /// Makes room for at least `bytes`; false, and empty, without memory. Contents are undefined where the
  /// buffer had to grow.
  [[nodiscard]] bool Reserve(std::size_t bytes) {
    if (bytes <= size_) return true;
    Free();
    bytes_.reset(new (kAlignment, std::nothrow) std::uint8_t[bytes]);
    if (bytes_) size_ = bytes;
    return bytes_ != nullptr;
  }

  void Free() {
    bytes_.reset();
    size_ = 0;
  }

  std::uint8_t* Data() const { return bytes_.get(); }
  std::size_t Size() const { return size_; }

 private:
  static constexpr std::align_val_t kAlignment{64};
  struct Delete {
    void operator()(std::uint8_t* bytes) const { ::operator delete[](bytes, kAlignment); }
  };

  std::unique_ptr<std::uint8_t[], Delete> bytes_;
  std::size_t size_ = 0;
};

}  // namespace zel
