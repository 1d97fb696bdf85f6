#include "common/BytePacking.h"

#include <gtest/gtest.h>

#include <array>

namespace zel {
namespace {

TEST(BytePacking, IsLowByteFirstAndSignExtended) {
  struct Case {
    std::uint32_t value;
    std::array<std::uint8_t, 4> bytes;
  };
  for (const auto& [value, bytes] :
       {Case{0x01020384, {0x84, 3, 2, 1}}, Case{0xFFFFFFFE, {0xFE, 255, 255, 255}},
        Case{0x8000FF00, {0, 255, 0, 0x80}}}) {
    std::array<std::uint8_t, 4> stored{};
    StoreLittle32(stored.data(), value);
    EXPECT_EQ(stored, bytes);
    EXPECT_EQ(LoadLittle32(bytes.data()), value);
    EXPECT_EQ(FromBytes16(bytes[0], bytes[1]), value & 0xFFFF);
    for (unsigned n = 0; n < 4; ++n) EXPECT_EQ(ByteOf(static_cast<std::int32_t>(value), n), bytes[n]);
  }
  EXPECT_EQ(ByteOf(std::int8_t{-1}, 7), 0xFF);
  for (const auto& [value, rounded] : {std::pair{0, 0}, {1, 512}, {512, 512}, {1000 * 1000, 1000448}}) {
    EXPECT_EQ(RoundUp(value, 512), rounded);
  }
}

}  // namespace
}  // namespace zel
