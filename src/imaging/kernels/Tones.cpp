#include "imaging/kernels/Tones.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/Tones.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

/// A gain as a whole multiple of eight and a rest below it, so that both products fit into 16 bits.
struct Gain {
  explicit Gain(std::int32_t gain)
      : whole(hn::Set(Words(), static_cast<std::int16_t>((gain >> 15) * 8))),
        rest(hn::Set(Words(), static_cast<std::int16_t>(gain & 0x7FFF))) {}

  HWY_INLINE WordsV Apply(WordsV v) const {
    // The product in 1/2^15 rounds to nearest: eight times v by the rest in 1/4096.
    const auto rounded = hn::MulFixedPoint15(hn::ShiftLeft<3>(v), rest);
    return hn::Min(hn::SaturatedAdd(hn::Mul(v, whole), rounded), hn::Set(Words(), 255));
  }

  WordsV whole, rest;
};

/// Factors of one column of a matrix: what makes one colour of the three.
struct MatrixColumn {
  MatrixColumn(const FixedColorMatrix& matrix, int column)
      : redGreen(Pair(matrix.c[0][column], matrix.c[1][column])),
        blue(Pair(matrix.c[2][column], 0)),
        offset(hn::Set(Dwords(), matrix.c[3][column] + 32)) {}

  HWY_INLINE DwordsV Sum(WordsV redGreenPairs, WordsV bluePairs) const {
    const auto sum = AddPairProducts(AddPairProducts(offset, redGreenPairs, redGreen), bluePairs, blue);
    return hn::ShiftRight<6>(sum);
  }

  WordsV redGreen, blue;
  DwordsV offset;
};

struct Matrix {
  explicit Matrix(const FixedColorMatrix& matrix) : red(matrix, 0), green(matrix, 1), blue(matrix, 2) {}

  HWY_INLINE void Apply(WordsV& r, WordsV& g, WordsV& b) const {
    const auto zero = hn::Zero(Words());
    const auto rg0 = hn::InterleaveLower(Words(), r, g), rg1 = hn::InterleaveUpper(Words(), r, g);
    const auto b0 = hn::InterleaveLower(Words(), b, zero), b1 = hn::InterleaveUpper(Words(), b, zero);
    const auto mix = [&](const MatrixColumn& column) HWY_ATTR {
      return Limit(hn::ReorderDemote2To(Words(), column.Sum(rg0, b0), column.Sum(rg1, b1)));
    };
    r = mix(red);
    g = mix(green);
    b = mix(blue);
  }

  MatrixColumn red, green, blue;
};

template <bool kMatrix>
void GainsAndMatrix(const PlaneRow& row, int width, const PixelTones& tones) {
  static constexpr FixedColorMatrix kNone;
  const Matrix matrix(kMatrix ? *tones.matrix : kNone);
  const Gain red(tones.gains.r), green(tones.gains.g), blue(tones.gains.b);
  for (int i = 0; i < width; i += static_cast<int>(hn::Lanes(Bytes()))) {
    const auto r = hn::LoadU(Bytes(), row.red + i), g = hn::LoadU(Bytes(), row.green + i),
               b = hn::LoadU(Bytes(), row.blue + i);
    auto r0 = red.Apply(Evens(r)), g0 = green.Apply(Evens(g)), b0 = blue.Apply(Evens(b));
    auto r1 = red.Apply(Odds(r)), g1 = green.Apply(Odds(g)), b1 = blue.Apply(Odds(b));
    if constexpr (kMatrix) {
      matrix.Apply(r0, g0, b0);
      matrix.Apply(r1, g1, b1);
    }
    hn::StoreU(Merge(r0, r1), Bytes(), row.red + i);
    hn::StoreU(Merge(g0, g1), Bytes(), row.green + i);
    hn::StoreU(Merge(b0, b1), Bytes(), row.blue + i);
  }
}

void ApplyTones(const PlaneRow& row, int width, const PixelTones& tones) {
  if (tones.matrix) {
    GainsAndMatrix<true>(row, width, tones);
  } else if (tones.gains != PlaneGains{}) {
    GainsAndMatrix<false>(row, width, tones);
  }
  if (!tones.gamma) return;
  const ByteTable table(tones.gamma);
  for (std::uint8_t* plane : {row.red, row.green, row.blue}) {
    for (int i = 0; i < width; i += static_cast<int>(hn::Lanes(Bytes()))) {
      hn::StoreU(table.At(hn::LoadU(Bytes(), plane + i)), Bytes(), plane + i);
    }
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace zel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zel {

HWY_EXPORT(ApplyTones);

void ApplyTones(const PlaneRow& row, int width, const PixelTones& tones) {
  HWY_DYNAMIC_DISPATCH(ApplyTones)(row, width, tones);
}

}  // namespace zel
#endif
