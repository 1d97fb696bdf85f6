#pragma once

#include "platform/ComponentTypes.h"

namespace zel {

/// Turns one frame as it comes off the camera into the picture handed to the application.
///
/// Formats. Output: 0 raw samples, 1 and 5 32-bit, 4 24-bit pixels (blue, green, red, alpha; top row first).
/// Input: 0 mosaic or monochrome samples, 4 packed 24-bit colour, 6 YUV 4:2:2. Gains: 128 is unity.
/// Threads: setters may be called while another thread runs `ProcessFrame`. Those of sizes, formats and two
/// taps count from the next `AllocateBuffers` on; that and `FreeBuffers` only while no frame is processed or
/// read.
class COrvaneImage {
 public:
  virtual ~COrvaneImage() = default;
  virtual LONG GetOutputFormat() = 0;
  virtual bool SetOutputFormat(LONG format) = 0;  ///< 0, 1, 4, 5; false and unchanged otherwise
  virtual LONG GetWidth() = 0;
  virtual LONG GetHeight() = 0;
  virtual LONG GetStride() = 0;            ///< bytes of one output row
  virtual unsigned char* GetBuffer() = 0;  ///< stride x height bytes, or null before `AllocateBuffers`
  virtual BITMAPINFOHEADER* GetBitmapInfoHeader() = 0;
  virtual bool IsReady() = 0;
  virtual DWORD GetRawSize() = 0;             ///< bytes
  virtual LONG GetRawStride() = 0;            ///< bytes
  virtual unsigned char* GetRawBuffer() = 0;  ///< the raw copy if one exists, else the output buffer
  virtual void FreeBuffers() = 0;
  virtual bool SaveToFile(const OLECHAR* path) = 0;
  virtual void CopyTo(COrvaneImage* destination) = 0;
  virtual void SetHeight(LONG height) = 0;
  virtual void SetWidth(LONG width) = 0;
  virtual void SetSourceHeight(LONG height) = 0;         ///< rows of the input frame
  virtual void SetSourceWidth(LONG width) = 0;           ///< row pitch of the input frame, in samples
  virtual void SetBayerDecodingMethod(LONG method) = 0;  ///< 0 table-driven kernels, else direct. Locked
  virtual bool SetInputFormat(LONG format) = 0;
  virtual void SetColorful(unsigned char colorful) = 0;
  virtual void SetGamma(LONG gamma) = 0;  ///< 0 none, else exponent in hundredths. Locked
  /// Converts a frame, which it may change. False when the output was not, or not wholly, filled from it.
  virtual bool ProcessFrame(unsigned char* frame) = 0;
  virtual void AllocateBuffers() = 0;
  virtual void SetBayerMode(LONG mode) = 0;         ///< 0..3. Locked
  virtual void SetAutoWhiteBalance(LONG mode) = 0;  ///< 0..3. Locked
  virtual void SetColorGainR(LONG gain) = 0;        ///< Locked
  virtual void SetColorGainG(LONG gain) = 0;        ///< Locked
  virtual void SetColorGainB(LONG gain) = 0;        ///< Locked
  virtual void SetContrast(LONG contrast) = 0;      ///< Locked
  virtual void SetBrightness(LONG brightness) = 0;  ///< Locked
  virtual void SetSaturation(LONG saturation) = 0;  ///< Locked
  virtual void SetHue(LONG degrees) = 0;            ///< Locked
  virtual void SetColorCorrection(LONG on) = 0;     ///< Locked
  virtual LONG GetInputFormat() = 0;
  virtual void SetTwoTap(LONG twoTap) = 0;
  virtual LONG GetTwoTap() = 0;
};

}  // namespace zel
