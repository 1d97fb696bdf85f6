#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "imaging/CFilterBayer.h"
#include "imaging/COrvaneImage.h"
#include "imaging/FrameSettings.h"
#include "imaging/ScratchBuffer.h"
#include "platform/CZELCritSec.h"

namespace zel {

/// The image object without its conversions to pixels: settings, buffers, raw and copied formats, YUV.
///
/// Without memory, or for sizes below 1 or above what the bitmap header can state, `AllocateBuffers` leaves
/// no buffer; `ProcessFrame` then does nothing. A frame holds sourceWidth x sourceHeight samples (twice as
/// many bytes for YUV or two-byte samples); output rows whose input lies beyond it are left as they were.
/// Conversions return whether the whole output is this frame's now.
///
/// Formats, sizes, sample size, two taps and the raw copy are the buffers' own from `AllocateBuffers` on: a
/// frame is converted, copied and described by the shape that its buffers were made for, whatever is set
/// meanwhile.
class COrvaneImageImpl : public COrvaneImage {
 public:
  /// `createFilter` 0 makes an object that only holds pictures copied into it.
  explicit COrvaneImageImpl(DWORD createFilter);
  ~COrvaneImageImpl() override = default;
  COrvaneImageImpl(const COrvaneImageImpl&) = delete;
  COrvaneImageImpl& operator=(const COrvaneImageImpl&) = delete;

  LONG GetOutputFormat() override { return Get(Shape().outputFormat); }
  bool SetOutputFormat(LONG format) override;
  LONG GetWidth() override { return Get(Shape().width); }
  LONG GetHeight() override { return Get(Shape().height); }
  LONG GetStride() override { return layout_.outputStride; }
  unsigned char* GetBuffer() override { return output_.Data(); }
  BITMAPINFOHEADER* GetBitmapInfoHeader() override { return &header_; }
  bool IsReady() override { return ready_; }
  DWORD GetRawSize() override { return rawSize_; }
  LONG GetRawStride() override { return layout_.rawStride; }
  unsigned char* GetRawBuffer() override { return rawCopy_.Data() ? rawCopy_.Data() : output_.Data(); }
  void FreeBuffers() override;
  bool SaveToFile(const OLECHAR* path) override;
  void CopyTo(COrvaneImage* destination) override;
  void SetHeight(LONG height) override { Set(format_.height, height); }
  void SetWidth(LONG width) override { Set(format_.width, width); }
  void SetSourceHeight(LONG height) override;  ///< and the full height
  void SetSourceWidth(LONG width) override;    ///< and the full width
  void SetBayerDecodingMethod(LONG method) override { Set(format_.bayerDecodingMethod, method); }
  bool SetInputFormat(LONG format) override;
  void SetColorful(unsigned char colorful) override { Set(format_.colorful, colorful != 0); }
  void SetGamma(LONG gamma) override;
  bool ProcessFrame(unsigned char* frame) override;
  void AllocateBuffers() override;
  void SetBayerMode(LONG mode) override { Set(format_.bayerMode, mode); }
  void SetAutoWhiteBalance(LONG mode) override { Set(tones_.autoWhiteBalance, mode); }
  void SetColorGainR(LONG gain) override { Set(tones_.gains.r, gain); }
  void SetColorGainG(LONG gain) override { Set(tones_.gains.g, gain); }
  void SetColorGainB(LONG gain) override { Set(tones_.gains.b, gain); }
  void SetContrast(LONG contrast) override;
  void SetBrightness(LONG brightness) override;
  void SetSaturation(LONG saturation) override;
  void SetHue(LONG degrees) override;
  void SetColorCorrection(LONG on) override;
  LONG GetInputFormat() override { return Get(Shape().inputFormat); }
  void SetTwoTap(LONG twoTap) override { Set(format_.twoTap, twoTap); }
  LONG GetTwoTap() override { return Get(Shape().twoTap); }

  /// Mosaic or monochrome samples to the pixels of this class; may change the frame in place.
  virtual bool ConvertRaw(unsigned char* frame) = 0;
  /// Decodes a mosaic of complementary colours, one byte per sample, straight into the output.
  virtual bool ConvertComplementary(unsigned char* frame) = 0;
  /// Mean of the output's luminance, 0..255; 0 without pixels.
  virtual DWORD GetMeanLuminance() = 0;

  // What the engine and the property store use beyond the interface. All take the lock.
  LONG GetBayerDecodingMethod() const { return Get(format_.bayerDecodingMethod); }
  LONG GetBayerMode() const { return Get(format_.bayerMode); }
  LONG GetAutoWhiteBalance() const { return Get(tones_.autoWhiteBalance); }
  LONG GetColorGainR() const { return Get(tones_.gains.r); }
  LONG GetColorGainG() const { return Get(tones_.gains.g); }
  LONG GetColorGainB() const { return Get(tones_.gains.b); }
  LONG GetSharpness() const { return Get(tones_.sharpness); }
  void SetDotFilterThreshold(LONG threshold) { Set(tones_.dotFilterThreshold, threshold); }
  void SetDotFilterEnabled(LONG enabled) { Set(tones_.dotFilterEnabled, enabled); }
  void SetSharpness(LONG sharpness);  ///< clamped to 0..256
  void SetWhitePixelCanceling(unsigned char enable, unsigned char threshold);
  void GetWhitePixelCanceling(unsigned char* enable, unsigned char* threshold) const;
  void SetKeepRaw(unsigned char keep) { Set(format_.keepRaw, keep != 0); }
  bool IsKeepRaw() const { return Get(Shape().keepRaw); }
  void Set8BitTransfer(unsigned char on) { Set(format_.eightBitTransfer, on != 0); }
  /// One coefficient of the user's colour correction, 0..3 each, used from the next `SetColorCorrection` on.
  void SetColorMatrixElement(LONG row, LONG column, float value);
  float GetColorMatrixElement(LONG row, LONG column) const;
  /// Gains for light of 2000..7000 K; false, and gains of 100, outside.
  bool GainsFromTemperature(LONG kelvin, LONG* r, LONG* g, LONG* b) const;
  /// Linear red, green and blue of that light, the largest 1.
  void WhitePointFromTemperature(double kelvin, double* r, double* g, double* b) const;
  /// Shares a camera's lock; null returns to the object's own. Only while no other thread uses the object.
  void SetLock(CZELCritSec* lock) { lock_ = lock ? lock : &ownLock_; }

 protected:
  /// The shape that the last allocation latched, and what follows from it.
  struct BufferLayout : FrameShape {
    LONG pixelBytes = 0;  ///< of the output; 0 for raw samples
    LONG outputStride = 0, rawStride = 0;
    bool operator==(const BufferLayout&) const = default;
  };

  /// Of the buffers; while there are none, of those to come.
  const FrameShape& Shape() const {
    return output_.Data() ? static_cast<const FrameShape&>(layout_) : format_;
  }
  FrameSettings Settings() const;
  /// The same, and makes the filter use this frame's gamma and colour matrix.
  FrameSettings BeginConversion();
  /// Rows, of at most `rows`, that lie wholly inside a frame of this many bytes.
  static LONG RowsInside(std::size_t frameBytes, std::size_t pitch, std::size_t rowBytes, LONG rows);
  /// Runs the contrast table over the one-byte samples of some of a frame's rows, as far as these exist.
  void ApplyContrast(std::uint8_t* samples, const FrameSettings& settings, LONG firstRow, LONG endRow) const;
  /// The two conversions that differ between the classes by the size of a pixel alone.
  bool DecodeComplementaryFrame(const std::uint8_t* frame, LONG pixelBytes);
  DWORD MeanLuminance(LONG pixelBytes) const;
  /// Automatic gains of a frame become the object's.
  void StoreGains(const ColorGains& gains) { Set(tones_.gains, gains); }

  template <class T>
  T Get(const T& field) const {
    const CritSecGuard guard(*lock_);
    return field;
  }
  template <class T, class V>
  void Set(T& field, V value) {
    const CritSecGuard guard(*lock_);
    field = value;
  }

  const bool createFilter_;
  CFilterBayer filter_;
  FrameFormat format_;
  ToneSettings tones_;
  std::array<std::uint8_t, 256> contrastTable_;

  BufferLayout layout_;
  ScratchBuffer output_;
  ScratchBuffer rowBuffer_;  ///< one input row while its two taps are sorted
  DWORD rawSize_ = 0;
  BITMAPINFOHEADER header_{};

 private:
  /// A frame as the camera sent it; `bytes` and `pitch` count bytes.
  struct Source {
    const std::uint8_t* data;
    std::size_t bytes, pitch;
  };

  bool Allocate();
  bool CopyRows(const Source& source, std::size_t rowBytes, std::uint8_t* out, std::size_t outStride) const;
  void KeepRaw(const Source& source, std::size_t rowBytes);
  bool ProcessSamples(std::uint8_t* frame, const FrameSettings& settings);
  bool ProcessPacked(const std::uint8_t* frame, const FrameSettings& settings);
  bool ProcessYuv(const std::uint8_t* frame, const FrameSettings& settings);

  CZELCritSec ownLock_;
  CZELCritSec* lock_ = &ownLock_;
  bool ready_ = true;
  ScratchBuffer rawCopy_;
  std::array<ScratchBuffer, 3> workPlanes_;  ///< eight bytes per pixel each, for YUV input
};

}  // namespace zel
