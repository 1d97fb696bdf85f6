#include "models/sata/SataModelProperty.h"

#include <algorithm>

#include "common/BytePacking.h"

namespace zel {
namespace {

constexpr LONG OddSize(LONG size) {
  return size % 2 == 0 ? size - 1 : size;
}

}  // namespace

SataModelProperty::SataModelProperty(LONG type, const SataSectors& volume) : ModelProperty(type) {
  sectors_ = volume;
  OfferSwitch(kExtTrigger);
  window_.lastColumn = OddSize(Current(kRoiWidth));
  window_.lastRow = OddSize(Current(kRoiHeight));
}

// ---- window

HRESULT SataModelProperty::SetROI(LONG x, LONG y, LONG width, LONG height) {
  if (width < Record(kRoiWidth).minimum || height < Record(kRoiHeight).minimum) return S_OK;
  x = Clamped(kRoiLeft, x);
  y = Clamped(kRoiTop, y);
  width = std::min(width, Record(kRoiWidth).maximum - x);
  height = std::min(height, Record(kRoiHeight).maximum - y);
  window_ = {.column = x & ~1, .row = y & ~1, .lastColumn = OddSize(width), .lastRow = OddSize(height)};
  CZELDevicePropertyImplSATA::SetROI(x, y, width, height);
  return S_OK;
}

HRESULT SataModelProperty::GetSensorRoi(LONG* x, LONG* y, LONG* width, LONG* height, LONG codeX,
                                        LONG codeY) const {
  Put(x, window_.column);
  Put(y, window_.row);
  Put(width, (window_.lastColumn + 1) >> codeX);
  Put(height, (window_.lastRow + 1) >> codeY);
  return S_OK;
}

LONG SataModelProperty::UpdateDerivedSizes() {
  return settings_.baseBayerPhase ^ (IsOn(kVerMirror) ? 1 : 0) ^ (IsOn(kHorMirror) ? 2 : 0);
}

// ---- registers

bool SataModelProperty::Write(LONG address, LONG value) {
  return WriteRegister8(ByteOf(address, 0), ByteOf(value, 1), ByteOf(value, 0));
}

bool SataModelProperty::Read(LONG address, LONG* value) {
  std::uint8_t high = 0;
  std::uint8_t low = 0;
  const bool done = ReadRegister8(ByteOf(address, 0), &high, &low);
  *value = FromBytes16(low, high);
  return done;
}

void SataModelProperty::WriteAndSettle(LONG address, LONG value) {
  Write(address, value);
  Settle();
}

void SataModelProperty::WriteWindow(const WindowRegisters& registers) {
  WriteAndSettle(registers.rowStart, window_.row + registers.firstRow);
  WriteAndSettle(registers.columnStart, window_.column + registers.firstColumn);
  WriteAndSettle(registers.rowSize, window_.lastRow + registers.sizeOffset);
  WriteAndSettle(registers.columnSize, window_.lastColumn + registers.sizeOffset);
}

void SataModelProperty::WriteWindowAhead(const WindowRegisters& registers) {
  if (!IsStreaming()) WriteWindow(registers);
}

LONG SataModelProperty::ApplyTriggerBit(LONG address, LONG bit) {
  LONG mode = 0;
  if (!Read(address, &mode)) return E_FAIL;
  Settle();
  if (!Write(address, WithBits(mode, bit, IsOn(kExtTrigger)))) return E_FAIL;
  Settle();
  return 1;
}

LONG SataModelProperty::ApplyMirrorBit(LONG address, LONG bit, LONG id) {
  LONG mode = 0;
  if (!Read(address, &mode) || !Write(address, WithBits(mode, bit, IsOn(id)))) return E_FAIL;
  return Read(address, &mode) ? 1 : E_FAIL;
}

// ---- settings

bool SataModelProperty::WriteSettingsWithWindow(SataRun run) {
  if (!IsStreaming()) windowSent_ = window_;
  SataSettings settings = WantedSettings();
  settings.left = windowSent_.column;
  settings.top = windowSent_.row;
  return SendSettings(settings, run);
}

}  // namespace zel
