#include "imaging/kernels/Tones.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/kernels/Tones.cpp"
#include <hwy/foreach_target.h>

#include "imaging/kernels/Lanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zel {
namespace HWY_NAMESPACE {
namespace {

/// A gain as a multiple of eight, which is 0 unless `kLarge`, and a rest below it, so that both products fit
/// into 16 bits.
template <bool kLarge>
struct Gain {
  explicit Gain(std::int32_t gain)
      : whole(hn::Set(Words(), static_cast<std::int16_t>((gain >> 15) * 8))),
        rest(hn::Set(Words(), static_cast<std::int16_t>(gain & 0x7FFF))) {}

  HWY_INLINE WordsV Apply(WordsV v) const {
    // The product in 1/2^15 rounds to nearest: eight times v by the rest in 1/4096.
    auto product = hn::MulFixedPoint15(hn::ShiftLeft<3>(v), rest);
    if constexpr (kLarge) product = hn::SaturatedAdd(hn::Mul(v, whole), product);
    return hn::Min(product, hn::Set(Words(), 255));
  }

  WordsV whole, rest;
};

bool IsLarge(std::int32_t gain) {
  return gain >= 1 << 15;
}

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

  /// The results are still to be limited.
  HWY_INLINE void Apply(WordsV& r, WordsV& g, WordsV& b) const {
    const auto zero = hn::Zero(Words());
    const auto rg0 = hn::InterleaveLower(Words(), r, g), rg1 = hn::InterleaveUpper(Words(), r, g);
    const auto b0 = hn::InterleaveLower(Words(), b, zero), b1 = hn::InterleaveUpper(Words(), b, zero);
    const auto mix = [&](const MatrixColumn& column) HWY_ATTR {
      return hn::ReorderDemote2To(Words(), column.Sum(rg0, b0), column.Sum(rg1, b1));
    };
    r = mix(red);
    g = mix(green);
    b = mix(blue);
  }

  MatrixColumn red, green, blue;
};

struct Colors {
  BytesV red, green, blue;
};

/// Calls `change(colors)` for all colours of a row.
template <class Change>
HWY_INLINE void ForColors(const PlaneRow& row, int width, Change change) {
  for (int i = 0; i < width; i += static_cast<int>(hn::Lanes(Bytes()))) {
    const Colors colors = change(Colors{hn::LoadU(Bytes(), row.red + i), hn::LoadU(Bytes(), row.green + i),
                                        hn::LoadU(Bytes(), row.blue + i)});
    hn::StoreU(colors.red, Bytes(), row.red + i);
    hn::StoreU(colors.green, Bytes(), row.green + i);
    hn::StoreU(colors.blue, Bytes(), row.blue + i);
  }
}

template <bool kLarge, bool kMatrix, bool kGamma>
void ChangeRow(const PlaneRow& row, int width, const PixelTones& tones) {
  static constexpr FixedColorMatrix kNoMatrix;
  static constexpr std::uint8_t kNoTable[256] = {};
  const Gain<kLarge> red(tones.gains.r), green(tones.gains.g), blue(tones.gains.b);
  const Matrix matrix(kMatrix ? *tones.matrix : kNoMatrix);
  const ByteTable table(kGamma ? tones.gamma : kNoTable);
  ForColors(row, width, [&](const Colors& c) HWY_ATTR {
    auto r0 = red.Apply(Evens(c.red)), g0 = green.Apply(Evens(c.green)), b0 = blue.Apply(Evens(c.blue));
    auto r1 = red.Apply(Odds(c.red)), g1 = green.Apply(Odds(c.green)), b1 = blue.Apply(Odds(c.blue));
    if constexpr (kMatrix) {
      matrix.Apply(r0, g0, b0);
      matrix.Apply(r1, g1, b1);
    }
    const Colors mixed{MergeLimited(r0, r1), MergeLimited(g0, g1), MergeLimited(b0, b1)};
    if constexpr (!kGamma) return mixed;
    return Colors{table.At(mixed.red), table.At(mixed.green), table.At(mixed.blue)};
  });
}

void ApplyTones(const PlaneRow& row, int width, const PixelTones& tones) {
  const bool large = IsLarge(tones.gains.r) || IsLarge(tones.gains.g) || IsLarge(tones.gains.b);
  const bool matrix = tones.matrix, gamma = tones.gamma;
  if (!matrix && tones.gains == PlaneGains{}) {
    if (!gamma) return;
    const ByteTable table(tones.gamma);
    ForColors(row, width, [&](const Colors& c) HWY_ATTR {
      return Colors{table.At(c.red), table.At(c.green), table.At(c.blue)};
    });
    return;
  }
  using Change = void (*)(const PlaneRow&, int, const PixelTones&);
  constexpr Change kChanges[2][2][2] = {{{ChangeRow<false, false, false>, ChangeRow<false, false, true>},
                                         {ChangeRow<false, true, false>, ChangeRow<false, true, true>}},
                                        {{ChangeRow<true, false, false>, ChangeRow<true, false, true>},
                                         {ChangeRow<true, true, false>, ChangeRow<true, true, true>}}};
  kChanges[large][matrix][gamma](row, width, tones);
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
