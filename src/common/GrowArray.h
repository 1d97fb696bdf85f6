#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

#include "common/Assert.h"

namespace zel {

/// A growable array that is counted in 32-bit signed integers, as the interfaces are, and checks every
/// access: a wrong index or length aborts with the condition that was broken. Not for several threads at a
/// time.
template <class Element>
class GrowArray {
  static_assert(!std::is_same_v<Element, bool>, "its elements must be objects of their own");

 public:
  using Length = std::int32_t;

  GrowArray() = default;
  explicit GrowArray(Length length) { Resize(length); }

  Length Size() const { return static_cast<Length>(elements_.size()); }
  bool IsEmpty() const { return elements_.empty(); }

  Element& operator[](Length i) { return elements_[Checked(i)]; }
  const Element& operator[](Length i) const { return elements_[Checked(i)]; }

  /// New elements are value-initialised. References stay valid only when the array does not grow. Throws
  /// std::bad_alloc.
  void Resize(Length length) {
    constexpr Length kLongMax = std::numeric_limits<Length>::max();
    Assert(length >= 0 && length <= (kLongMax - 1), "length >= 0 && length <= (LONG_MAX - 1)");
    elements_.resize(static_cast<std::size_t>(length));
  }

  /// Amortised constant time. `element` may be one of the array's own.
  Element& Append(Element element) {
    Resize(Size() + 1);
    return elements_.back() = std::move(element);
  }

  void Clear() { elements_.clear(); }

  Element* begin() { return elements_.data(); }
  Element* end() { return elements_.data() + elements_.size(); }
  const Element* begin() const { return elements_.data(); }
  const Element* end() const { return elements_.data() + elements_.size(); }

 private:
  std::size_t Checked(Length i) const {
    const Length m_Size = Size();
    Assert(i >= 0 && i < m_Size, "i >= 0 && i < m_Size");
    return static_cast<std::size_t>(i);
  }

  std::vector<Element> elements_;
};

}  // namespace zel
