#include "common/GrowArray.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>

namespace zel {
namespace {

using testing::HasSubstr;

TEST(GrowArray, KeepsItsElementsAndClearsNewOnes) {
  const std::string text = "long enough to lie on the heap, so that a wrong copy shows";
  GrowArray<std::string> array(1);
  array[0] = text;
  for (int n = 0; n < 100; ++n) array.Append(array[n]);
  EXPECT_EQ(array[100], text);
  array.Resize(1);
  array.Resize(2);
  EXPECT_EQ(array[0], text);
  EXPECT_EQ(array[1], "");
}

/// Counts how often elements are moved to another place.
struct Moved {
  static inline int moves = 0;
  Moved() = default;
  Moved(Moved&&) noexcept { ++moves; }
  Moved& operator=(Moved&&) noexcept { return *this; }
};

TEST(GrowArray, MovesItsElementsRarelyAndItselfWhole) {
  GrowArray<Moved> array;
  for (int n = 0; n < 10000; ++n) array.Append(Moved());
  EXPECT_LT(Moved::moves, 40000) << "growth is amortised";
  Moved::moves = 0;
  const GrowArray<Moved> other = std::move(array);
  EXPECT_EQ(other.Size(), 10000);
  EXPECT_EQ(array.Size(), 0);  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(Moved::moves, 0);
}

TEST(GrowArrayDeathTest, BrokenConditionsAbortAndAreNamed) {
  GrowArray<int> array(3);
  const GrowArray<int> empty;
  for (const int index : {-1, 3, INT_MAX, INT_MIN}) {
    EXPECT_DEATH(array[index] = 1, HasSubstr("i >= 0 && i < m_Size")) << index;
  }
  EXPECT_DEATH(static_cast<void>(empty[0]), HasSubstr("GrowArray.h"));
  for (const int length : {-1, INT_MIN, INT_MAX}) {
    EXPECT_DEATH(array.Resize(length), HasSubstr("length >= 0 && length <= (LONG_MAX - 1)")) << length;
  }
}

}  // namespace
}  // namespace zel
