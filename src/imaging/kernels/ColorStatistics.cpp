#include "imaging/kernels/ColorStatistics.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/ColorStatistics.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

constexpr int kStep = static_cast<int>(hn::MaxLanes(Words()));  // cells in a vector
constexpr int kPiece = 1 << 14;                                 // vectors whose sums fit into 32-bit lanes

/// The bytes of a table of words, each for itself.
struct WordTable {
  explicit WordTable(const std::uint16_t* table) : low_(Half(table, 0).bytes), high_(Half(table, 8).bytes) {}
  /// Words of the even and odd bytes of an index.
  HWY_INLINE void At(BytesV index, WordsV& evens, WordsV& odds) const {
    const auto lowBytes = low_.At(index), highBytes = high_.At(index);
    evens = hn::Or(Evens(lowBytes), hn::ShiftLeft<8>(Evens(highBytes)));
    odds = hn::Or(Odds(lowBytes), hn::ShiftLeft<8>(Odds(highBytes)));
  }

 private:
  struct Half {
    Half(const std::uint16_t* table, int shift) {
      for (int i = 0; i < 256; ++i) bytes[i] = static_cast<std::uint8_t>(table[i] >> shift);
    }
    std::uint8_t bytes[256];
  };

  ByteTable low_, high_;
};

struct LaneSums {
  LaneSums() : red(hn::Zero(Dwords())), green(red), blue(red), count(red) {}
  DwordsV red, green, blue, count;

  HWY_INLINE void Add(WordsV r, WordsV g, WordsV b, WordsV excluded) {
    const auto one = hn::Set(Words(), 1);
    red = AddPairProducts(red, hn::AndNot(excluded, r), one);
    green = AddPairProducts(green, hn::AndNot(excluded, g), one);
    blue = AddPairProducts(blue, hn::AndNot(excluded, b), one);
    count = AddPairProducts(count, hn::AndNot(excluded, one), one);
  }

  static std::uint64_t Total(DwordsV v) {
    alignas(64) std::int32_t lanes[HWY_MAX_BYTES / 4];
    hn::Store(v, Dwords(), lanes);
    std::uint64_t total = 0;
    for (std::size_t i = 0; i < hn::Lanes(Dwords()); ++i) total += static_cast<std::uint32_t>(lanes[i]);
    return total;
  }
  void AddTo(CellSums& sums) const {
    sums.light[0] += Total(red);
    sums.light[1] += Total(green);
    sums.light[2] += Total(blue);
    sums.count += Total(count);
  }
};

struct Coordinate {
  explicit Coordinate(const std::int16_t (&weights)[3])
      : redGreen(Pair(weights[0], weights[1])), blue(Pair(weights[2], 0)) {}
  HWY_INLINE DwordsV Of(WordsV redGreenPairs, WordsV bluePairs) const {
    const auto sum = AddPairProducts(hn::Zero(Dwords()), redGreenPairs, redGreen);
    return hn::ShiftRight<15>(AddPairProducts(sum, bluePairs, blue));
  }
  WordsV redGreen, blue;
};

CellSums SumCells(const CellGrid& grid, const ColorSpace& space, const CellLimits& limits) {
  const WordTable light(space.light);
  const Coordinate x(space.weights[0]), y(space.weights[1]), z(space.weights[2]);
  const auto darkest = hn::Set(Dwords(), limits.darkestY), maxX = hn::Set(Dwords(), limits.brightest[0]),
             maxY = hn::Set(Dwords(), limits.brightest[1]), maxZ = hn::Set(Dwords(), limits.brightest[2]);
  const auto isOut = [&](WordsV redGreen, WordsV blue) HWY_ATTR {
    const auto vx = x.Of(redGreen, blue), vy = y.Of(redGreen, blue), vz = z.Of(redGreen, blue);
    const auto tooBright = hn::Or(hn::Gt(vx, maxX), hn::Or(hn::Gt(vy, maxY), hn::Gt(vz, maxZ)));
    return hn::VecFromMask(Dwords(), hn::Or(tooBright, hn::Lt(vy, darkest)));
  };

  CellSums sums;
  // Red lies in one of a cell's rows, left or right, blue opposite.
  const std::ptrdiff_t redRow = grid.phase.row ? grid.stride : 0, blueRow = grid.stride - redRow;
  const bool redIsLeft = grid.phase.column;
  for (int row = 0; row < grid.rows; ++row) {
    const std::uint8_t* p = grid.samples + 4 * std::ptrdiff_t{row} * grid.stride;
    for (int first = 0; first < grid.columns; first += kPiece * kStep) {
      LaneSums lanes;
      for (int i = first; i < std::min(first + kPiece * kStep, grid.columns); i += kStep) {
        const auto above = hn::LoadU(Bytes(), p + redRow + 2 * std::ptrdiff_t{i}),
                   below = hn::LoadU(Bytes(), p + blueRow + 2 * std::ptrdiff_t{i});
        const auto redByte = redIsLeft ? Evens(above) : Odds(above);
        const auto blueByte = redIsLeft ? Odds(below) : Evens(below);
        const auto greens = hn::AverageRound(hn::BitCast(Bytes(), redIsLeft ? Odds(above) : Evens(above)),
                                             hn::BitCast(Bytes(), redIsLeft ? Evens(below) : Odds(below)));
        WordsV r, g, b, unused;
        light.At(Merge(redByte, blueByte), r, b);
        light.At(greens, g, unused);
        // Cells behind the last are black, which is too dark to count.
        const auto inside = hn::FirstN(Words(), static_cast<std::size_t>(std::min(kStep, grid.columns - i)));
        r = hn::IfThenElseZero(inside, r);
        g = hn::IfThenElseZero(inside, g);
        b = hn::IfThenElseZero(inside, b);
        const auto zero = hn::Zero(Words());
        const auto low = isOut(hn::InterleaveLower(Words(), r, g), hn::InterleaveLower(Words(), b, zero));
        const auto high = isOut(hn::InterleaveUpper(Words(), r, g), hn::InterleaveUpper(Words(), b, zero));
        lanes.Add(r, g, b, hn::ReorderDemote2To(Words(), low, high));
      }
      lanes.AddTo(sums);
    }
  }
  return sums;
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(SumCells);

CellSums SumCells(const CellGrid& grid, const ColorSpace& space, const CellLimits& limits) {
  return HWY_DYNAMIC_DISPATCH(SumCells)(grid, space, limits);
}

}  // namespace zel
#endif
