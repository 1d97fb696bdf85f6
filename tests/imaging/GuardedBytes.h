#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zel {

/// Bytes that border on a page nobody may touch, behind their end or before their beginning: a kernel that
/// reads or writes outside crashes the test.
class GuardedBytes {
 public:
  enum class Guard { Behind, Before };

  explicit GuardedBytes(const std::vector<std::uint8_t>& bytes, Guard guard = Guard::Behind);
  ~GuardedBytes();
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;

  std::uint8_t* data() { return data_; }
  std::vector<std::uint8_t> Copy() const { return {data_, data_ + size_}; }

 private:
  static constexpr std::size_t kPage = 4096;
  /// Pages of which the first and the last cannot be touched.
  static std::uint8_t* Map(std::size_t bytes);
  static void Unmap(std::uint8_t* pages, std::size_t bytes);

  std::size_t size_, mapped_;
  std::uint8_t* pages_;
  std::uint8_t* data_;
};

inline GuardedBytes::GuardedBytes(const std::vector<std::uint8_t>& bytes, Guard guard)
    : size_(bytes.size()),
      mapped_((bytes.size() + kPage - 1) / kPage * kPage + 2 * kPage),
      pages_(Map(mapped_)),
      data_(guard == Guard::Before ? pages_ + kPage : pages_ + mapped_ - kPage - size_) {
  std::copy(bytes.begin(), bytes.end(), data_);
}

inline GuardedBytes::~GuardedBytes() {
  Unmap(pages_, mapped_);
}

}  // namespace zel
