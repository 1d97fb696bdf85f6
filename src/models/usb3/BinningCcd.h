#pragma once

#include "models/FieldWeaver.h"
#include "models/ModelProperty.h"
#include "models/usb3/DiskProperty.h"
#include "transport/usb3/CZELDeviceImplUSB3.h"

namespace zel {

/// What tells one of these CCDs from the next; its size and ranges are in the model table.
struct BinningCcdSheet {
  LONG type;
  /// Lines of a whole frame, where an exposure ends at the latest when a frame does: the shutter's range then
  /// follows the lines that are read. 0: longer exposures lengthen the frame, and the shutter stays as set.
  LONG frameLines = 0;
};

/// The disk-style CCD cameras with a timing generator that sums pixels. `SetModelValue4` and `SetModelValue5`
/// sum pairs of lines and of columns, `SetModelValue1` selects the readout variant: bit 0 field by field
/// (altPathA), bit 1 the field of the odd lines first (altPathB). All three act from the next `Play` on; the
/// pictures stay upright and whole. The cameras have no reset: opening one brings its readout back to the
/// whole frame, whatever program used it before.
class BinningCcd : public CZELDeviceImplUSB3 {
 public:
  class CProperty : public ModelProperty<DiskProperty> {
   public:
    CProperty(BinningCcd& camera, const BinningCcdSheet& sheet);

    HRESULT SetShutter(LONG lines) override;
    HRESULT SetDigitalGlobalGain(LONG gain) override;
    /// Left and top in sensor pixels; the size is that of the picture, after binning.
    HRESULT GetROI(LONG* x, LONG* y, LONG* width, LONG* height) override;
    HRESULT SetModelValue1(LONG variant) override;  ///< 0..3
    HRESULT GetModelValue1(LONG* variant) override;
    HRESULT SetModelValue4(LONG on) override { return SetBinning(&binLines_, on); }
    HRESULT GetModelValue4(LONG* on) override;
    HRESULT SetModelValue5(LONG on) override { return SetBinning(&binColumns_, on); }
    HRESULT GetModelValue5(LONG* on) override;
    LONG InitializeCamera() override;

    /// The binning's effect on the picture's size, and on the shutter where its range follows the readout.
    void UpdateReadout();
    /// Tells the camera window and binning. It knows the whole frame by itself; anything else is told every
    /// time, as it may have been unplugged meanwhile.
    bool UpdateTiming();
    /// Summed lines leave one field.
    bool HasTwoFields() const { return binLines_ == 0; }

   private:
    /// In pixels of the picture, in pixels of the sensor.
    struct Readout {
      LONG outWidth = 0;
      LONG outLines = 0;  ///< of a field
      LONG sensorWidth = 0;
      LONG sensorLines = 0;  ///< that reach the output in a frame
    };
    /// What the timing generator reads out.
    struct Timing {
      LONG left = 0;
      LONG top = 0;
      LONG columns = 0;
      LONG lines = 0;
      LONG binning = 0;

      bool operator==(const Timing&) const = default;
    };

    HRESULT SetBinning(LONG* flag, LONG on);
    /// The exposure keeps its place in the range, not its length.
    void FitShutter();
    Timing Whole() const;
    Timing Wanted() const;
    bool ProgramTiming(const Timing& timing);

    BinningCcd& camera_;
    const LONG sensorWidth_;
    const LONG sensorLines_;
    const LONG frameLines_;
    LONG binLines_ = 0;
    LONG binColumns_ = 0;
    Readout readout_;
    LONG timingDirty_ = 0;
    Timing programmed_;
  };

  LONG PrepareCapture() override;
  void OnFrameHook(unsigned char* raw) override { weaver_.Weave(raw); }

 protected:
  explicit BinningCcd(const BinningCcdSheet& sheet) : property_(*this, sheet) {}

  CProperty property_;

 private:
  LONG Variant() const;
  bool ProgramVariant(LONG variant);

  LONG altPathA_ = 0;  ///< field by field
  LONG altPathB_ = 0;  ///< the odd field first
  LONG pathPending_ = 0;
  FieldWeaver weaver_;  ///< of the capture being run
};

}  // namespace zel
