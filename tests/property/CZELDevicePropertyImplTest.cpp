#include "property/CZELDevicePropertyImpl.h"

#include <gmock/gmock.h>

#include <climits>

namespace zel {
namespace {

/// A store that tests may configure like a model does.
class Store : public CZELDevicePropertyImpl {
 public:
  using CZELDevicePropertyImpl::Edit;
  using CZELDevicePropertyImpl::settings_;
};

TEST(PropertyStore, StartsWithTheGenericRecords) {
  struct Row {
    LONG first, last, minimum, maximum, value, supported;
  };
  const Row rows[] = {
      {0, 1, 0, 0, 0, 1},        {2, 3, 3, 0, 0, 1},         {4, 5, 0, 12, 0, 0},
      {6, 10, 0, 0, 0, 0},       {11, 11, 0, 65535, 800, 0}, {12, 12, 0, 65535, 800, 1},
      {13, 13, 0, 1800, 300, 1}, {14, 16, 0, 300, 128, 1},   {17, 20, 0, 255, 128, 0},
      {21, 24, 0, 400, 128, 0},  {25, 28, 0, 0, 0, 0},       {29, 30, 0, 1, 1, 1},
      {31, 36, 0, 0, 0, 0},      {37, 37, -10, 10, 0, 1},    {38, 38, -255, 255, 0, 1},
      {39, 39, -127, 127, 0, 1}, {40, 40, 0, 359, 0, 1},     {41, 41, 0, 200, 0, 1},
      {42, 56, 0, 0, 0, 0},      {57, 57, 0, 1, 1, 1},       {58, 59, 0, 0, 0, 0},
      {60, 61, 0, 1, 0, 0},      {62, 62, 1, 255, 15, 1},    {63, 63, 0, 1, 0, 1},
      {64, 64, 0, 256, 0, 1},
  };
  Store store;
  LONG seen = 0;
  for (const Row& row : rows) {
    for (LONG id = row.first; id <= row.last; ++id, ++seen) {
      SCOPED_TRACE(id);
      PropertyRecord record{9, 9, 9, 9, 9, 9};
      EXPECT_EQ(store.GetPropertyInfo(id, &record), row.supported ? S_OK : E_NOTIMPL);
      EXPECT_EQ(record.minimum, row.minimum);
      EXPECT_EQ(record.maximum, row.maximum);
      EXPECT_EQ(record.defaultValue, row.value);
      EXPECT_EQ(record.current, row.value);
      EXPECT_EQ(record.supported, row.supported);
      EXPECT_EQ(record.spare, 0);
    }
  }
  EXPECT_EQ(seen, 65);
}

using Setter = HRESULT (CZELDeviceProperty::*)(LONG);
using Getter = HRESULT (CZELDeviceProperty::*)(LONG*);

/// What a setter answers and whether it stores, by [supported][value in range].
struct Answer {
  HRESULT result;
  bool stored;
};
using Pattern = Answer[2][2];
constexpr Answer kOk{S_OK, true}, kNo{E_NOTIMPL, false}, kBad{E_INVALIDARG, false};
constexpr Pattern kRanged = {{kNo, kNo}, {kBad, kOk}};
constexpr Pattern kFlag = {{kNo, kNo}, {kOk, kOk}};
constexpr Pattern kRangeOnly = {{kBad, kOk}, {kBad, kOk}};
constexpr Pattern kStoreThenSupport = {{kBad, {E_NOTIMPL, true}}, {kBad, kOk}};
constexpr Pattern kUnchecked = {{kOk, kOk}, {kOk, kOk}};

struct Operation {
  LONG id;
  const Pattern& pattern;
  Setter set;
  Getter get;
};

#define BOTH(name) &CZELDeviceProperty::Set##name, &CZELDeviceProperty::Get##name
#define OP(id, pattern, name) \
  Operation {                 \
    id, pattern, BOTH(name)   \
  }

const Operation kOperations[] = {
    OP(8, kFlag, ExtTrigger),
    OP(9, kFlag, HalfClock),
    OP(10, kFlag, Strobe),
    OP(11, kRanged, AnalogGlobalGain),
    OP(12, kRanged, DigitalGlobalGain),
    OP(13, kRanged, Shutter),
    OP(25, kRanged, Thresh),
    OP(26, kRanged, AutoThresh),
    OP(27, kRanged, NoGainDep),
    OP(28, kRanged, CalCtrl),
    OP(29, kRanged, AuxValue1),
    OP(30, kRanged, AuxValue2),
    OP(31, kRanged, WhitePixelCanceling),
    OP(32, kRanged, BlackPixelCanceling),
    OP(33, kRanged, Denoise),
    OP(34, kRanged, NightMode),
    OP(35, kRanged, EdgeEnhance),
    OP(36, kRanged, LensCorrection),
    OP(37, kRangeOnly, Saturation),
    OP(38, kRangeOnly, Brightness),
    OP(39, kRangeOnly, Contrast),
    OP(40, kRangeOnly, Hue),
    OP(41, kRanged, Gamma),
    OP(57, kRangeOnly, ColorCorrection),
    OP(60, kStoreThenSupport, AuxValue3),
    OP(61, kStoreThenSupport, AuxValue4),
    OP(62, kUnchecked, DotFilterThreshold),
    OP(63, kUnchecked, DotFilterEnabled),
    OP(64, kRangeOnly, Sharpness),
};

TEST(PropertyStore, SettersAndGettersFollowTheirPatterns) {
  for (const Operation& operation : kOperations) {
    for (const bool supported : {false, true}) {
      for (const LONG value : {-6, -5, 0, 7, 8}) {
        SCOPED_TRACE(testing::Message() << operation.id << " := " << value << " supported " << supported);
        Store store;
        store.Edit(operation.id) = {-5, 7, 1, 2, supported, 0};
        const Answer expected = operation.pattern[supported][value >= -5 && value <= 7];
        EXPECT_EQ((store.*operation.set)(value), expected.result);
        LONG read = 99;
        EXPECT_EQ((store.*operation.get)(&read), supported ? S_OK : E_NOTIMPL);
        EXPECT_EQ(read, expected.stored ? value : 2);
        EXPECT_EQ((store.*operation.get)(nullptr), supported ? S_OK : E_NOTIMPL);
      }
    }
  }
}

TEST(PropertyStore, RangesAndDefaultsAreThoseOfTheRecord) {
  for (const bool supported : {false, true}) {
    Store store;
    for (LONG id = 0; id < kPropertyCount; ++id) store.Edit(id) = {id, id + 50, id + 7, id + 9, supported, 0};
    LONG low[6] = {}, high[6] = {}, start[4] = {};
    const HRESULT results[] = {store.GetAnalogGlobalGainRange(&low[0], &high[0]),
                               store.GetDigitalGlobalGainRange(&low[1], &high[1]),
                               store.GetShutterRange(&low[2], &high[2]),
                               store.GetThreshRange(&low[3], &high[3]),
                               store.GetColorGainRange(15, &low[4], &high[4]),
                               store.GetColorOffsetRange(19, &low[5], &high[5]),
                               store.GetShutterDefault(&start[0]),
                               store.GetThreshDefault(&start[1]),
                               store.GetColorGainDefault(15, &start[2]),
                               store.GetColorOffsetDefault(19, &start[3]),
                               store.GetShutterRange(nullptr, nullptr),
                               store.GetShutterDefault(nullptr)};
    for (const HRESULT result : results) EXPECT_EQ(result, supported ? S_OK : E_NOTIMPL);
    EXPECT_THAT(low, testing::ElementsAre(11, 12, 13, 25, 15, 19));
    EXPECT_THAT(high, testing::ElementsAre(61, 62, 63, 75, 65, 69));
    EXPECT_THAT(start, testing::ElementsAre(20, 32, 22, 26));
  }
}

TEST(PropertyStore, RefusesIdsOutsideTheTable) {
  for (const LONG id : {-1, 65, INT_MIN, INT_MAX}) {
    Store store;
    LONG a = 5, b = 6;
    PropertyRecord record;
    const HRESULT results[] = {store.IsPropertySupported(id),       store.SetProperty(id, 0),
                               store.GetPropertyInfo(id, &record),  store.SetColorGain(id, 0),
                               store.GetColorGain(id, &a),          store.GetColorGainRange(id, &a, &b),
                               store.GetColorGainDefault(id, &a),   store.SetColorOffset(id, 0),
                               store.GetColorOffset(id, &a),        store.GetColorOffsetRange(id, &a, &b),
                               store.GetColorOffsetDefault(id, &a), store.SetProgrammableGamma(id, 0),
                               store.GetProgrammableGamma(id, &a)};
    EXPECT_THAT(results, testing::Each(E_NOTIMPL)) << id;
    EXPECT_EQ(a, 5);
    EXPECT_EQ(b, 6);
  }
  EXPECT_EQ(Store().GetPropertyInfo(5, nullptr), E_INVALIDARG);
}

TEST(PropertyStore, PropertiesByNumberAndByChannel) {
  Store store;
  EXPECT_EQ(store.SetProperty(kShutter, 1801), E_INVALIDARG);
  EXPECT_EQ(store.SetProperty(kShutter, 1800), S_OK);
  EXPECT_EQ(store.IsPropertySupported(13), S_OK);
  EXPECT_EQ(store.IsPropertySupported(11), E_NOTIMPL);
  store.Edit(kColorGainGreen).supported = 0;  // gains have no support check
  EXPECT_EQ(store.SetColorGain(15, 301), E_INVALIDARG);
  EXPECT_EQ(store.SetColorGain(15, 300), S_OK);
  LONG value = 0;
  EXPECT_EQ(store.GetColorGain(15, &value), S_OK);
  EXPECT_EQ(value, 300);
  EXPECT_EQ(store.SetColorOffset(17, 1), E_NOTIMPL);
  store.Edit(17).supported = 1;
  EXPECT_EQ(store.SetColorOffset(17, 255), S_OK);
  store.Edit(45) = {0, 9, 0, 0, 0, 0};
  EXPECT_EQ(store.SetProgrammableGamma(45, 10), E_INVALIDARG);
  EXPECT_EQ(store.SetProgrammableGamma(45, 9), E_NOTIMPL);
  EXPECT_EQ(store.GetProgrammableGamma(45, &value), E_NOTIMPL);
  EXPECT_EQ(value, 9);
}

TEST(PropertyStore, PlainSettings) {
  struct Row {
    Setter set;
    Getter get;
    LONG given;
    HRESULT result;
    LONG stored;
  };
  const Row rows[] = {
      {BOTH(TransMode), 1, S_OK, 1},
      {BOTH(TransMode), 2, E_INVALIDARG, 0},
      {BOTH(TransMode), -1, E_INVALIDARG, 0},
      {BOTH(TransBits), -7, S_OK, -7},
      {BOTH(Timeout), 12345, S_OK, 12345},
      {BOTH(OutputFormat), 77, S_OK, 77},
      {BOTH(Colorful), -3, S_OK, 1},
      {BOTH(Colorful), 0, S_OK, 0},
      {BOTH(AutoWhiteBalance), 3, S_OK, 3},
      {BOTH(BayerDecodingMethod), 7, S_OK, 1},
      {BOTH(BayerDecodingMethod), 3, S_OK, 1},
      {BOTH(BayerDecodingMethod), 2, S_OK, 2},
      {BOTH(BayerDecodingMethod), -2, S_OK, 0},
      {BOTH(BayerMode), 3, S_OK, 3},
      {BOTH(BayerMode), 4, E_INVALIDARG, 0},
      {BOTH(BayerMode), -1, E_INVALIDARG, 0},
      {BOTH(PositiveValue), 5, S_OK, 5},
      {BOTH(PositiveValue), 0, S_OK, 1},
      {BOTH(LargeFrameOption), 2, E_NOTIMPL, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    Store store;
    EXPECT_EQ((store.*row.set)(row.given), row.result);
    LONG value = 99;
    EXPECT_EQ((store.*row.get)(&value), S_OK);
    EXPECT_EQ(value, row.stored);
    EXPECT_EQ((store.*row.get)(nullptr), S_OK);
  }
  Store store;
  EXPECT_EQ(store.Settings().pairValue, (std::array<LONG, 2>{1, 0}));
  store.SetPairValue(8, -1);
  store.SetPairValue(9, 0);
  EXPECT_EQ(store.Settings().pairValue, (std::array<LONG, 2>{8, 9}));
  EXPECT_EQ(store.Settings().timeoutMs, 3000);
  EXPECT_EQ(store.Settings().outputFormat, 5);
}

TEST(PropertyStore, WindowStaysOnTheSensor) {
  Store store;
  store.Edit(kRoiLeft) = {0, 1276, 0, 0, 1, 0};
  store.Edit(kRoiTop) = {0, 1021, 0, 0, 1, 0};
  store.Edit(kRoiWidth) = {4, 1280, 1280, 1280, 1, 0};
  store.Edit(kRoiHeight) = {3, 1024, 1024, 1024, 1, 0};
  struct Row {
    LONG x, y, width, height;
    HRESULT result;
  };
  const Row rows[] = {
      {0, 0, 1280, 1024, S_OK},           {80, 24, 1200, 1000, S_OK},         {1276, 1021, 4, 3, S_OK},
      {81, 24, 1200, 1000, E_INVALIDARG}, {80, 25, 1200, 1000, E_INVALIDARG}, {-1, 0, 4, 3, E_INVALIDARG},
      {0, -1, 4, 3, E_INVALIDARG},        {0, 0, 3, 3, E_INVALIDARG},         {0, 0, 4, 2, E_INVALIDARG},
      {1277, 0, 4, 3, E_INVALIDARG},      {0, 0, INT_MAX, 3, E_INVALIDARG},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(&row - rows);
    store.SetROI(8, 6, 100, 60);
    EXPECT_EQ(store.SetROI(row.x, row.y, row.width, row.height), row.result);
    using Window = std::array<LONG, 4>;
    Window now{};
    EXPECT_EQ(store.GetROI(&now[0], &now[1], &now[2], &now[3]), S_OK);
    const Window expected =
        row.result == S_OK ? Window{row.x, row.y, row.width, row.height} : Window{8, 6, 100, 60};
    EXPECT_EQ(now, expected);
  }
  // Ranges whose sums leave 32 bits.
  store.Edit(kRoiLeft).maximum = store.Edit(kRoiWidth).maximum = INT_MAX;
  EXPECT_EQ(store.SetROI(INT_MAX, 0, INT_MAX, 3), E_INVALIDARG);
  store.Edit(kRoiWidth).maximum = 1280;

  store.SetROI(8, 6, 100, 60);
  store.Edit(kSubSampleX).current = 3;
  store.Edit(kSubSampleY) = {0, 12, 0, 2, 1, 0};
  LONG x = 9, y = 9, width = 0, height = 0;
  store.GetROI(nullptr, nullptr, &width, &height);
  EXPECT_EQ(width, 100);  // not supported, not divided
  EXPECT_EQ(height, 20);
  EXPECT_EQ(store.GetFullROI(&x, &y, &width, &height), S_OK);
  EXPECT_EQ((std::array<LONG, 4>{x, y, width, height}), (std::array<LONG, 4>{0, 0, 1280, 1024}));
}

TEST(PropertyStore, LargeFramesStartAt640x480) {
  const struct {
    LONG width, height;
    HRESULT result;
  } rows[] = {{640, 480, S_OK}, {639, 480, E_NOTIMPL}, {640, 479, E_NOTIMPL}};
  for (const auto& row : rows) {
    Store store;
    store.Edit(kRoiWidth).maximum = row.width;
    store.Edit(kRoiHeight).maximum = row.height;
    EXPECT_EQ(store.SetLargeFrameOption(2), row.result) << row.width << 'x' << row.height;
    LONG option = 9;
    store.GetLargeFrameOption(&option);
    EXPECT_EQ(option, row.result == S_OK ? 2 : 0);
  }
}

/// As cameras have one: what reaches the port by one name is read by the other.
TEST(PropertyStore, IoPortIsIo) {
  class WithPort : public Store {
   public:
    HRESULT SetIO(LONG value) override { return port = value, 5; }
    HRESULT GetIO(LONG* value) override { return *value = port, 6; }
    LONG port = 0;
  } store;
  LONG value = 0;
  EXPECT_EQ(store.SetIOPort(0xC), 5);
  EXPECT_EQ(store.port, 0xC);
  EXPECT_EQ(store.GetIOPort(&value), 6);
  EXPECT_EQ(value, 0xC);
  EXPECT_EQ(Store().SetIOPort(1), E_NOTIMPL);
}

TEST(PropertyStore, MosaicPhaseFollowsWindowAndMirrors) {
  constexpr LONG kNextRow[] = {1, 0, 2, 1};
  constexpr LONG kNextColumn[] = {2, 3, 0, 1};
  for (LONG base = 0; base < 4; ++base) {
    for (LONG bits = 0; bits < 32; ++bits) {
      SCOPED_TRACE(testing::Message() << "phase " << base << " case " << bits);
      const bool oddTop = bits & 1, oddWidth = bits & 2, oddHeight = bits & 4;
      const bool horizontal = bits & 8, vertical = bits & 16;
      Store store;
      store.settings_.baseBayerPhase = base;
      store.Edit(kRoiTop).current = 10 + oddTop;
      store.Edit(kRoiWidth).current = 100 + oddWidth;
      store.Edit(kRoiHeight).current = 60 + oddHeight;
      store.Edit(kHorMirror).current = horizontal;
      store.Edit(kVerMirror).current = vertical;
      LONG expected = base;
      if (oddTop) expected = kNextRow[expected];
      if (vertical && !oddHeight) expected = kNextRow[expected];
      if (horizontal && !oddWidth) expected = kNextColumn[expected];
      EXPECT_EQ(store.UpdateDerivedSizes(), expected);
    }
  }
}

TEST(PropertyStore, MirrorsMoveTheMosaic) {
  Store store;
  LONG mode = 9;
  EXPECT_EQ(store.SetHorMirror(1), E_NOTIMPL);
  store.Edit(kHorMirror).supported = store.Edit(kVerMirror).supported = 1;
  EXPECT_EQ(store.SetHorMirror(1), S_OK);
  store.GetBayerMode(&mode);
  EXPECT_EQ(mode, 2);
  store.SetBayerMode(3);
  EXPECT_EQ(store.SetHorMirror(1), S_OK);  // no change, nothing done
  store.GetBayerMode(&mode);
  EXPECT_EQ(mode, 3);
  EXPECT_EQ(store.SetHorMirror(0), S_OK);
  EXPECT_EQ(store.SetVerMirror(1), S_OK);
  store.GetBayerMode(&mode);
  EXPECT_EQ(mode, 1);
}

TEST(PropertyStore, ColorMatrix) {
  constexpr float kDefault[4][4] = {
      {1.36f, -0.25f, -0.1f, 0}, {-0.22f, 1.4f, -0.32f, 0}, {-0.14f, -0.15f, 1.42f, 0}, {0, 0, 0, 1}};
  Store store;
  float value = 0;
  for (LONG row = 0; row < 4; ++row) {
    for (LONG column = 0; column < 4; ++column) {
      EXPECT_EQ(store.GetColorMatrixElement(column, row, &value), S_OK);
      EXPECT_EQ(value, kDefault[row][column]);
    }
  }
  EXPECT_EQ(store.SetColorMatrixElement(1, 3, 2.5f), S_OK);
  EXPECT_EQ(store.SetColorMatrixElement(4, 0, 9.0f), S_OK);
  EXPECT_EQ(store.SetColorMatrixElement(0, -1, 9.0f), S_OK);
  store.GetColorMatrixElement(1, 3, &value);
  EXPECT_EQ(value, 2.5f);
  for (const auto& [column, row] : {std::pair<LONG, LONG>{-1, 0}, {0, -1}, {4, 0}, {0, 4}}) {
    EXPECT_EQ(store.GetColorMatrixElement(column, row, &value), E_INVALIDARG);
  }
  EXPECT_EQ(store.GetColorMatrixElement(0, 0, nullptr), S_OK);
  EXPECT_EQ(store.ApplyColorMatrix(), E_HANDLE);
}

TEST(PropertyStore, AutoFocusMovesTheFocusSetting) {
  Store store;
  store.Edit(kFocusPosition) = {0, 255, 0, 0, 1, 0};
  EXPECT_EQ(store.SetAutoFocusCurPos(140), S_OK);
  EXPECT_EQ(store.Record(kFocusPosition).current, 140);
  LONG position = 0;
  EXPECT_EQ(store.GetAutoFocusCurPos(&position), S_OK);
  EXPECT_EQ(position, 140);
  EXPECT_EQ(store.SetOperatorBlock(0, 0, 30, 30), S_OK);
  const HRESULT refused[] = {store.SetOperatorBlock(-1, 0, 30, 30), store.SetOperatorBlock(0, -1, 30, 30),
                             store.SetOperatorBlock(0, 0, 29, 30), store.SetOperatorBlock(0, 0, 30, 29)};
  EXPECT_THAT(refused, testing::Each(E_NOTIMPL));
}

}  // namespace
}  // namespace zel
