#pragma once

#include "common/BytePacking.h"
#include "models/Map16.h"
#include "models/sata/SataModelProperty.h"

namespace zel {

/// The sensors whose window goes with the shutter.
constexpr WindowRegisters kMap16Window{.rowStart = map16::kRowStart,
                                       .columnStart = map16::kColumnStart,
                                       .rowSize = map16::kRowSize,
                                       .columnSize = map16::kColumnSize,
                                       .firstRow = map16::kFirstRow,
                                       .firstColumn = map16::kFirstColumn};

/// Sensors with the 16-bit register map whose window, sub-sampling, gain, shutter and mirrors are programmed
/// one by one.
class SataMap16Property : public SataModelProperty {
 protected:
  static constexpr WindowRegisters kWindow{.rowStart = map16::kRowStart,
                                           .columnStart = map16::kColumnStart,
                                           .rowSize = map16::kRowSize,
                                           .columnSize = map16::kColumnSize,
                                           .firstRow = 20,
                                           .firstColumn = 32};
  static constexpr LONG kHorBlanking = Documented(0x05), kHorBlankingClocks = 21;
  static constexpr LONG kVerBlanking = Documented(0x06), kVerBlankingRows = 3;
  static constexpr LONG kShutterHigh = Documented(0x08);
  static constexpr LONG kRowMode = Documented(0x22), kColumnMode = Documented(0x23);
  static constexpr LONG kModeOthers = 0xFFC0;            // of the two modes: not sub-sampling
  static constexpr LONG kAutomatics = Documented(0xAF);  // 0: the sensor leaves gain and exposure to the host

  explicit SataMap16Property(LONG type) : SataModelProperty(type) {
    for (const LONG id : {kHorMirror, kVerMirror}) OfferSwitch(id);
  }

  LONG ApplyWindow() override {
    WriteWindow(kWindow);
    WriteAndSettle(kHorBlanking, kHorBlankingClocks);
    WriteAndSettle(kVerBlanking, kVerBlankingRows);
    return 1;
  }

  LONG ApplySubSampling() override {
    LONG rowMode = 0;
    LONG columnMode = 0;
    // What could not be read can't be written back.
    const bool rowsKnown = Read(kRowMode, &rowMode);
    Settle();
    const bool columnsKnown = Read(kColumnMode, &columnMode);
    Settle();
    if (rowsKnown) Write(kRowMode, SubSampled(rowMode, kSubSampleY));
    Settle();
    if (columnsKnown) Write(kColumnMode, SubSampled(columnMode, kSubSampleX));
    Settle();
    return 1;
  }

  LONG ApplyGain() override {
    WriteAndSettle(kAutomatics, 0);
    Write(map16::kGain, ByteOf(Current(kDigitalGlobalGain), 0));
    return 1;
  }

  LONG ApplyShutter() override {
    LONG before = 0;
    for (const LONG address : {kShutterHigh, map16::kShutterLines}) {
      Read(address, &before);
      Settle();
    }
    WriteAndSettle(kAutomatics, 0);
    Write(map16::kShutterLines, Current(kShutter));
    return 1;
  }

  LONG ApplyVerMirror() override {
    return ApplyMirrorBit(map16::kReadMode2, map16::kMirrorRowsBit, kVerMirror);
  }
  LONG ApplyHorMirror() override {
    return ApplyMirrorBit(map16::kReadMode2, map16::kMirrorColumnsBit, kHorMirror);
  }

 private:
  /// A value replaces the whole low byte, no sub-sampling only its own bits.
  LONG SubSampled(LONG mode, LONG id) const {
    const LONG code = Current(id);
    return code != 0 ? (mode & 0xFF00) | ByteOf(code, 0) : mode & kModeOthers;
  }
};

}  // namespace zel
