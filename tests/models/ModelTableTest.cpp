#include "models/ModelTable.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <set>
#include <stdexcept>

#include "models/ModelProperty.h"

namespace zel {
namespace {

/// A generic store with the ranges of one type.
class RangesOf : public CZELDevicePropertyImpl {
 public:
  explicit RangesOf(LONG type) {
    ApplyModelRow(ModelOf(type), [this](LONG id) -> PropertyRecord& { return Edit(id); });
  }
};

TEST(ModelTable, EveryRowKeepsTheLaws) {
  const std::set<LONG> defaultShutterBelowMinimum{18, 19};
  std::set<std::string> names;
  std::map<std::string, int> families;
  for (LONG type = 0; type < 99; ++type) {
    SCOPED_TRACE(type);
    const ModelRow& row = ModelOf(type);
    EXPECT_EQ(row.type, type);
    names.insert(DisplayName(type));
    ++families[FamilyName(row.family)];
    const RangesOf store(type);
    EXPECT_EQ(store.Record(kRoiLeft).maximum + store.Record(kRoiWidth).minimum, row.full.width);
    EXPECT_EQ(store.Record(kRoiTop).maximum + store.Record(kRoiHeight).minimum, row.full.height);
    EXPECT_EQ(store.Record(kRoiWidth).maximum, row.full.width);
    EXPECT_EQ(store.Record(kRoiHeight).maximum, row.full.height);
    for (const LONG id : {kRoiWidth, kRoiHeight, kDigitalGlobalGain, kShutter}) {
      const PropertyRecord& record = store.Record(id);
      EXPECT_EQ(record.current, record.defaultValue);
      EXPECT_LE(record.defaultValue, record.maximum);
      if (id == kShutter && defaultShutterBelowMinimum.contains(type)) continue;
      EXPECT_GE(record.defaultValue, record.minimum);
    }
  }
  EXPECT_EQ(names.size(), 99u);
  EXPECT_EQ(families, (std::map<std::string, int>{
                          {"SATA", 11}, {"USB 2.0", 43}, {"USB 3.0", 20}, {"WOM", 15}, {"USB3T2", 10}}));
  EXPECT_THROW((void)ModelOf(99), std::out_of_range);
  EXPECT_THROW((void)ModelOf(-1), std::out_of_range);
}

/// Ranges of left, top, width, height, horizontal sub-sampling, gain and shutter; * marks what is
/// unsupported.
TEST(ModelTable, TellingRows) {
  const struct {
    LONG type;
    std::string ranges;
  } rows[] = {
      {0, "0..8180(0) 0..8180(0) 12..8192(1280) 12..8192(1024) 0..12(0)* 0..0(0)* 0..0(0)*"},
      {4, "0..1277(0) 0..1021(0) 3..1280(1280) 3..1024(1024) 0..12(0)* 0..0(0)* 1..6400(300)"},
      {7, "0..1597(0) 0..1197(0) 3..1600(1600) 3..1200(1200) 0..12(0)* 0..65535(800) 0..1800(300)"},
      {13, "0..1276(0) 0..1021(0) 4..1280(1280) 3..1024(1024) 0..12(0)* 0..127(14) 0..16383(1049)"},
      {36, "0..476(0) 0..749(0) 4..480(480) 3..752(752) 0..12(0)* 0..127(16) 0..32767(480)"},
      {42, "0..856(0)* 0..941(0)* 4..860(860)* 3..944(944)* 0..12(0)* 0..65535(800) 0..1800(300)"},
      {51, "0..4380(0) 0..3285(0) 4..4384(4384) 3..3288(3288) 0..2(0) 1..8191(14) 1..1048575(100)"},
      {88, "0..1276(0) 0..1021(0) 4..1280(1280) 3..1024(1024) 0..12(0)* 512..4096(600) 0..1080(200)"},
      {97, "0..1276(0) 0..717(0) 4..1280(1280) 3..720(720) 0..3(0) 0..63(14) 0..3(0)"},
  };
  for (const auto& row : rows) {
    const RangesOf store(row.type);
    std::string found;
    for (const LONG id : {0, 1, 2, 3, 4, 12, 13}) {
      const PropertyRecord& record = store.Record(id);
      char text[64];
      std::snprintf(text, sizeof(text), "%s%d..%d(%d)%s", found.empty() ? "" : " ", int(record.minimum),
                    int(record.maximum), int(record.defaultValue), record.supported != 0 ? "" : "*");
      found += text;
    }
    EXPECT_EQ(found, row.ranges) << "type " << row.type;
    EXPECT_EQ(store.Record(kSubSampleY).maximum, store.Record(kSubSampleX).maximum);
  }
}

TEST(ModelTable, Names) {
  const struct {
    LONG type;
    const char* display;
    std::string driver;
  } rows[] = {{0, "ZEL SATA 8192x8192 #00", "ZelSataAA"},
              {13, "ZEL USB 2.0 1280x1024 #13", "ZelUsbBD"},
              {44, "ZEL USB 3.0 3488x2616 #44", "ZelDiskEE"},
              {59, "ZEL WOM 2048x1536 #59", "ZelWomFJ"},
              {98, "ZEL USB3T2 3096x2080 #98", "ZelFxJI"}};
  for (const auto& row : rows) {
    EXPECT_EQ(DisplayName(row.type), row.display);
    const std::basic_string<OLECHAR> driver = DriverName(row.type);
    EXPECT_EQ(std::string(driver.begin(), driver.end()), row.driver);
  }
  EXPECT_EQ(DisplayNameUtf16(13), u"ZEL USB 2.0 1280x1024 #13");
}

}  // namespace
}  // namespace zel
