#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "device/CZELDevice.h"
#include "device/CZELObserver.h"
#include "device/CameraTrouble.h"
#include "device/CaptureStatistics.h"
#include "device/ObserverGate.h"
#include "device/ReadTurn.h"
#include "platform/CZELCritSec.h"
#include "platform/Threads.h"
#include "property/CaptureLink.h"

namespace zel {

struct CaptureRun;
class CZELDevicePropertyImpl;

/// Where the picture lies in one transfer of the camera. Set by the model in its `PrepareCapture`.
struct FrameGeometry {
  LONG transferPixels = 0;  ///< pixels of one whole transfer, padding included
  LONG headerPixels = 0;    ///< pixels before the picture
  LONG width = 0;           ///< of the picture
  LONG height = 0;
  LONG sourceWidth = 0;  ///< row pitch in pixels
  LONG sourceHeight = 0;
};

/// A successful `ReadFrame` that left its buffer as it was: nobody is shown the old picture again, the read
/// is repeated.
constexpr LONG kReadWithoutFrame = 2;

/// The generic camera: state machine, lock, observer and the capture engine. Transports add the enumeration,
/// the handles and the reading of frames; models their number, their settings and the geometry.
///
/// Threads. `OpenCamera`, `Play`, `Pause` and `Stop` exclude each other: a second thread waits for the first;
/// a call from inside one of them (an observer of its state change, a window message while it waits) answers
/// 0, and so does a call from an observer on the processing worker while another thread stops the capture.
/// Everything but `OpenCamera` may be called from an observer. `Stop` waits for a running observer without
/// limit, for the driver at most 2 s; a read that takes longer ends later, and the next capture's first read
/// waits for it.
///
/// The most derived object must call `Shutdown` in its destructor (the factory's wrapper does), because the
/// workers call virtual operations until they have ended. Not from an observer.
class CZELDeviceImpl : public CZELDevice, public CaptureLink {
 public:
  CZELDeviceImpl();
  ~CZELDeviceImpl() override;

  LONG OpenCamera(LONG index) override;
  LONG GetCameraIndex() override;
  LONG GetCameraID() override;
  void SetObserver(CZELObserver* observer) override;
  LONG SetBufferSamples(LONG value) override;
  LONG GetBufferSamples() override;
  LONG SetKeepRawData(LONG value) override;
  LONG GetKeepRawData() override;
  COrvaneImage* GetImage() override;
  HRESULT GetData(const FrameDestination& destination, LONG variantType) override;
  LONG GetBitmapInfo(BITMAPINFOHEADER* header) override;
  LONG GetStatus() override;
  LONG Play() override;
  LONG Pause() override;
  LONG Stop() override;

  // What a transport supplies.
  virtual LONG OpenDevice() = 0;             ///< open the handle of the stored index
  virtual LONG CloseDevice(LONG index) = 0;  ///< close whatever is open
  virtual LONG PrepareCapture() = 0;         ///< buffers, frame geometry, streaming start
  virtual LONG EndCapture() = 0;
  /// One whole raw frame; 1 when all of it came, `kReadWithoutFrame` when nothing failed but nothing came.
  virtual LONG ReadFrame(unsigned char* buffer) = 0;
  virtual LONG ReadFrameAlt(unsigned char* buffer);  ///< the triggered loop's read
  virtual void AbortTransfer();
  virtual const OLECHAR* GetDriverName() = 0;  ///< prefix of the device path

  // The engine.
  virtual HRESULT GetDataQueued(const FrameDestination& destination);
  virtual HRESULT GetDataDirect(const FrameDestination& destination);
  /// Converts one raw frame and delivers it by the mode.
  virtual void ProcessFrame(unsigned char* raw);
  virtual void OnFrameHook(unsigned char* raw);  ///< a model's look at the raw frame
  virtual void SendThreadCommand(LONG command);
  virtual void SendExitCommand();
  virtual DWORD CaptureThreadProc();
  virtual DWORD ProcessThreadProc();

  std::shared_ptr<COrvaneImageImpl> HoldImage() override;
  void ClearFrameQueue() override;
  /// Of the capture that runs or ran last; any thread.
  CaptureStatistics Statistics() const;
  /// Stops and waits for every worker, also for one that outlived `Stop`; no capture starts any more.
  /// Idempotent.
  void Shutdown();

  CZELCritSec& Lock() { return lock_; }
  /// Of the last `OpenCamera` or `Play` and what came after it.
  CameraTrouble& Trouble() { return trouble_; }
  /// The store behind `GetProperty`, for the engine and the transports.
  virtual CZELDevicePropertyImpl& PropertyStore() = 0;

 protected:
  void SetState(LONG state, LONG param);
  void NotifyObserver(LONG event, void* param) { observer_.Notify(event, param, this); }
  /// Replaces the three raw buffers of the capture being prepared by zeroed ones of this many bytes; false
  /// when memory is short, the size is not positive or nothing is being prepared.
  bool AllocateRawBuffers(std::int64_t bytes);
  /// The third raw buffer, for a read whose frame is thrown away; null unless capturing.
  unsigned char* SpareRawBuffer();
  /// Gives the image object of the capture being prepared the sizes in `geometry_`.
  void ApplyFrameGeometry();
  /// What every transport's `ProcessFrame` does: the hook, conversion of the picture behind the header,
  /// autofocus, delivery. Event 0 delivers nothing to the observer.
  void DeliverFrame(unsigned char* raw, std::size_t headerBytes, LONG frameEvent);
  /// What a read brought of a frame: true when it is all of it; part of one counts as an incomplete frame.
  bool NoteReceived(std::size_t receivedBytes, std::size_t frameBytes);
  bool IsEightBitTransfer() const { return eightBitTransfer_; }
  /// For transports that carry one byte per sample in either transfer mode; before `ApplyFrameGeometry`.
  void UseOneByteSamples();

  FrameGeometry geometry_;

 private:
  class Transition;

  bool BeginTransition(bool mayStop);
  void EndTransition();

  std::shared_ptr<CaptureRun> MakeRun();
  std::unique_ptr<COrvaneImage> CopyOf(COrvaneImage& image);
  void StartWorkers(const std::shared_ptr<CaptureRun>& run);
  bool StartCapture();
  void StopCapture();
  void Dismiss(CaptureRun& run);  ///< every thread of it ends as soon as it is out of the driver
  void JoinEndedWorkers();
  void AwaitReaders();  ///< until no thread is in the driver or works for an earlier capture

  std::shared_ptr<CaptureRun> Run() const;           ///< from the preparation in `Play` to the end of `Stop`
  std::shared_ptr<CaptureRun> PublishedRun() const;  ///< only when the preparation is done
  std::shared_ptr<CaptureRun> RunOfThisThread() const;
  LONG Read(CaptureRun& run, unsigned char* buffer);
  /// The same, but reads without a frame are tried again until the time is over or the capture; true with
  /// one.
  bool ReadInTime(CaptureRun& run, unsigned char* buffer, std::uint32_t milliseconds);
  /// The output buffer, or null when the frame can't be converted.
  unsigned char* Convert(CaptureRun& run, unsigned char* raw, std::size_t headerBytes);
  std::uint32_t FrameTimeoutMs();

  mutable CZELCritSec lock_;  ///< guards the fields up to `retired_`
  LONG cameraIndex_ = 0;
  LONG state_ = kStateClosed;
  LONG bufferSamples_ = kDeliverCallback;
  LONG keepRaw_ = 0;
  bool shutDown_ = false;
  bool inTransition_ = false;
  bool transitionMayStop_ = false;
  std::thread::id transitionThread_;
  std::shared_ptr<CaptureRun> run_;
  std::shared_ptr<CaptureCounters> counters_;
  std::vector<std::unique_ptr<Worker>> retired_;  ///< workers that `Stop` could not wait for

  std::atomic<bool> eightBitTransfer_ = true;
  std::atomic<bool> incompleteFrame_ = false;  ///< seen by the read under way
  CameraTrouble trouble_;
  Event transitionOver_;
  ObserverGate observer_;
  ReadTurn readTurn_;
};

}  // namespace zel
