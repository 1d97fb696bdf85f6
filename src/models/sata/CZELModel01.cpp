#include <algorithm>

#include "common/BytePacking.h"
#include "models/FinalDevice.h"
#include "models/ModelProperty.h"
#include "transport/sata/CZELDeviceImplSATA.h"
#include "transport/sata/CZELDevicePropertyImplSATA.h"

namespace zel {
namespace {

// The volume: room for the largest frame at two bytes per sample (12288 sectors) in each image area.
constexpr SataSectors kSectors{.command = 0x100, .areaA = 0x1000, .areaB = 0x5000};

constexpr LONG kSensorWidth = 2048;
constexpr LONG kSensorHeight = 1536;
constexpr LONG kSmallestWindow = 3;

// Sensor registers, 16 bits each.
constexpr std::uint8_t kRowStart = 0x01;
constexpr std::uint8_t kColumnStart = 0x02;
constexpr std::uint8_t kRowSize = 0x03;     // rows - 1, odd
constexpr std::uint8_t kColumnSize = 0x04;  // columns - 1, odd
constexpr std::uint8_t kHorBlanking = 0x05;
constexpr std::uint8_t kVerBlanking = 0x06;
constexpr std::uint8_t kShutterHigh = 0x08;
constexpr std::uint8_t kShutterLines = 0x09;
constexpr std::uint8_t kReadMode1 = 0x1E;
constexpr std::uint8_t kReadMode2 = 0x20;
constexpr std::uint8_t kRowMode = 0x22;
constexpr std::uint8_t kColumnMode = 0x23;
constexpr std::uint8_t kGain = 0x35;
constexpr std::uint8_t kHold = 0xAF;  // 0: what is written next takes effect

constexpr LONG kFirstRow = 20;  // dark rows and columns before the picture
constexpr LONG kFirstColumn = 32;
constexpr std::uint8_t kHorBlankingClocks = 21;
constexpr std::uint8_t kVerBlankingRows = 3;

constexpr std::uint8_t kTriggerBit = 0x01;        // of the high byte of kReadMode1
constexpr std::uint8_t kStrobeBit = 0x02;         // the same
constexpr std::uint8_t kMirrorRowsBit = 0x80;     // of the high byte of kReadMode2
constexpr std::uint8_t kMirrorColumnsBit = 0x40;  // the same
constexpr std::uint8_t kModeOthers = 0xC0;        // of the low byte of the two modes: not sub-sampling

constexpr std::uint8_t SwitchBit(std::uint8_t byte, std::uint8_t bit, bool on) {
  return static_cast<std::uint8_t>(on ? byte | bit : byte & ~bit);
}

}  // namespace

/// 2048 x 1536 sensor with 16-bit registers, behind SATA.
class CZELModel01 : public CZELDeviceImplSATA {
 public:
  static constexpr LONG kType = 1;

  class CPropertyImpl : public ModelProperty<CZELDevicePropertyImplSATA> {
   public:
    CPropertyImpl() : ModelProperty(kType) {
      sectors_ = kSectors;
      for (const LONG id : {kHorMirror, kVerMirror, kExtTrigger, kStrobe}) OfferSwitch(id);
    }

    /// The sensor's window starts on even pixels and has even sizes; the stored window is what was asked for,
    /// moved into the sensor. A window below 3 x 3 changes nothing. Acts from the next `Play` on.
    HRESULT SetROI(LONG x, LONG y, LONG width, LONG height) override {
      if (width < kSmallestWindow || height < kSmallestWindow) return S_OK;
      y = std::clamp<LONG>(y, 0, kSensorHeight - kSmallestWindow);
      x = std::clamp<LONG>(x, 0, kSensorWidth - kSmallestWindow);
      windowRow_ = y & ~1;
      windowColumn_ = x & ~1;
      height = std::min(height, kSensorHeight - y);
      width = std::min(width, kSensorWidth - x);
      windowRows_ = OddSize(height);
      windowColumns_ = OddSize(width);
      CZELDevicePropertyImplSATA::SetROI(x, y, width, height);
      return S_OK;
    }

    /// The sensor's window has even start and size whatever the stored one has.
    LONG UpdateDerivedSizes() override {
      const LONG rows = Record(kVerMirror).current != 0 ? 1 : 0;
      const LONG columns = Record(kHorMirror).current != 0 ? 2 : 0;
      return settings_.baseBayerPhase ^ rows ^ columns;
    }

   protected:
    LONG ApplyPostPrepare() override {
      std::uint8_t high = 0;
      std::uint8_t low = 0;
      if (!ReadRegister8(kReadMode1, &high, &low)) return E_FAIL;
      Settle();
      if (!WriteRegister8(kReadMode1, SwitchBit(high, kTriggerBit, IsOn(kExtTrigger)), low)) return E_FAIL;
      Settle();
      return 1;
    }

    LONG ApplyWindow() override {
      const struct {
        std::uint8_t address;
        LONG value;
      } writes[] = {{kRowStart, windowRow_ + kFirstRow},
                    {kColumnStart, windowColumn_ + kFirstColumn},
                    {kRowSize, windowRows_},
                    {kColumnSize, windowColumns_},
                    {kHorBlanking, kHorBlankingClocks},
                    {kVerBlanking, kVerBlankingRows}};
      for (const auto& write : writes) {
        WriteRegister8(write.address, ByteOf(write.value, 1), ByteOf(write.value, 0));
        Settle();
      }
      return 1;
    }

    LONG ApplySubSampling() override {
      std::uint8_t rowHigh = 0;
      std::uint8_t rowLow = 0;
      std::uint8_t columnHigh = 0;
      std::uint8_t columnLow = 0;
      // What could not be read can't be written back.
      const bool rowsKnown = ReadRegister8(kRowMode, &rowHigh, &rowLow);
      Settle();
      const bool columnsKnown = ReadRegister8(kColumnMode, &columnHigh, &columnLow);
      Settle();
      if (rowsKnown) WriteRegister8(kRowMode, rowHigh, SubSamplingByte(kSubSampleY, rowLow));
      Settle();
      if (columnsKnown) WriteRegister8(kColumnMode, columnHigh, SubSamplingByte(kSubSampleX, columnLow));
      Settle();
      return 1;
    }

    LONG ApplyGain() override {
      WriteRegister8(kHold, 0, 0);
      Settle();
      WriteRegister8(kGain, 0, ByteOf(Record(kDigitalGlobalGain).current, 0));
      return 1;
    }

    LONG ApplyShutter() override {
      std::uint8_t high = 0;
      std::uint8_t low = 0;
      ReadRegister8(kShutterHigh, &high, &low);
      Settle();
      ReadRegister8(kShutterLines, &high, &low);
      Settle();
      WriteRegister8(kHold, 0, 0);
      Settle();
      const LONG lines = Record(kShutter).current;
      WriteRegister8(kShutterLines, ByteOf(lines, 1), ByteOf(lines, 0));
      return 1;
    }

    LONG ApplyVerMirror() override { return ApplyMirror(kMirrorRowsBit, kVerMirror); }
    LONG ApplyHorMirror() override { return ApplyMirror(kMirrorColumnsBit, kHorMirror); }

    LONG ApplyStrobe() override {
      std::uint8_t high = 0;
      std::uint8_t low = 0;
      const bool known = ReadRegister8(kReadMode1, &high, &low);
      Settle();
      if (known) WriteRegister8(kReadMode1, SwitchBit(high, kStrobeBit, IsOn(kStrobe)), low);
      Settle();
      ReadRegister8(kReadMode1, &high, &low);
      return 1;
    }

   private:
    static constexpr LONG OddSize(LONG size) { return size % 2 == 0 ? size - 1 : size; }
    bool IsOn(LONG id) const { return Record(id).current != 0; }

    /// A value replaces the whole byte, no sub-sampling only its own bits.
    std::uint8_t SubSamplingByte(LONG id, std::uint8_t before) const {
      const LONG value = Record(id).current;
      return value != 0 ? ByteOf(value, 0) : static_cast<std::uint8_t>(before & kModeOthers);
    }

    LONG ApplyMirror(std::uint8_t bit, LONG id) {
      std::uint8_t high = 0;
      std::uint8_t low = 0;
      if (!ReadRegister8(kReadMode2, &high, &low)) return E_FAIL;
      if (!WriteRegister8(kReadMode2, SwitchBit(high, bit, IsOn(id)), low)) return E_FAIL;
      return ReadRegister8(kReadMode2, &high, &low) ? 1 : E_FAIL;
    }

    // As the sensor has it: starts even, sizes odd.
    LONG windowColumn_ = 0;
    LONG windowRow_ = 0;
    LONG windowColumns_ = kSensorWidth - 1;
    LONG windowRows_ = kSensorHeight - 1;
  };

 protected:
  CPropertyImpl property_;
};

CZELDevice* CreateModel01() {
  return NewDevice<CZELModel01>();
}

}  // namespace zel
