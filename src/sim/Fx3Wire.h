#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sim/SimDevice.h"

namespace zel {

/// The wire of the USB3T2 cameras: an FX3 controller behind its standard driver. Vendor requests on endpoint
/// 0 reach the bus with FPGA and sensor and start frames; endpoint 0x81 brings a 64-byte header and the
/// picture in pieces of 512 KiB and a rest. Takes only what driver and camera define; all else fails and is
/// noted as a protocol error.
///
/// The FPGA loads its program with its first reset. Each of its resets leaves the controller out of step with
/// it, until the port was reset and then the controller asked to begin anew.
///
/// The picture has the size that the FPGA was told, which must be that of the sensor's window, in rows
/// without gaps. A host may have several handles open at a time.
class Fx3Wire : public SimDevice {
 public:
  Fx3Wire(SimCameraAddress address, const SensorMap& map, std::shared_ptr<const Scene> scene,
          const SimConfiguration& configuration);

  std::u16string Path() const override;
  std::optional<GUID> InterfaceClass() const override;
  std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) override;

 private:
  class Handle;
  class BulkTransfer;
  enum class Stage { Idle, Started, Image };
  enum class Link { OutOfStep, PortReset, InStep };

  struct Setup {
    std::uint8_t type;
    std::uint8_t request;
    std::uint16_t value;
    std::uint16_t index;
  };
  struct VendorRequest {
    std::uint8_t code;
    std::uint8_t type;
    /// `data` is the 64-byte data area; returns the bytes that came back, or failure.
    DriverResult (Fx3Wire::*run)(const Setup& setup, std::span<std::uint8_t> data);
  };
  static const VendorRequest kRequests[];

  DriverResult Control(const Handle& handle, std::uint32_t code, std::span<const std::uint8_t> in,
                       std::span<std::uint8_t> out);
  DriverResult ControlTransfer(const Handle& handle, std::span<const std::uint8_t> in,
                               std::span<std::uint8_t> out);
  DriverResult ResetPort(std::span<const std::uint8_t> in, std::span<const std::uint8_t> out);
  DriverResult ChangePipe(std::uint32_t code, std::span<const std::uint8_t> in,
                          std::span<const std::uint8_t> out);
  /// Null with the reason in `error` when the driver does not take the transfer.
  std::unique_ptr<BulkTransfer> BeginBulk(std::uint32_t code, std::span<const std::uint8_t> in,
                                          std::span<std::uint8_t> out, DriverError* error);
  void Closed(const Handle& handle);

  DriverResult BusWrite(const Setup& setup, std::span<std::uint8_t> data);
  DriverResult BusRead(const Setup& setup, std::span<std::uint8_t> data);
  DriverResult BlockWrite(const Setup& setup, std::span<std::uint8_t> data);
  DriverResult ReadInformation(const Setup& setup, std::span<std::uint8_t> data);
  DriverResult ResetController(const Setup& setup, std::span<std::uint8_t> data);
  DriverResult StartFrame(const Setup& setup, std::span<std::uint8_t> data);

  DriverResult WriteFpga(std::uint8_t address, std::uint8_t value);
  void ResetFpga();
  void ResetLane(std::size_t lane, std::uint8_t before, std::uint8_t value);

  /// Fills a read of the image endpoint; nothing when the frame has not come within the time. `aborts` is the
  /// count at the transfer's start.
  std::optional<DriverResult> Serve(std::span<std::uint8_t> data, std::uint32_t milliseconds,
                                    unsigned aborts);
  DriverResult GiveHeader(const VirtualCamera::Frame& frame, std::span<std::uint8_t> data, unsigned aborts);
  DriverResult GiveImage(std::span<std::uint8_t> data);
  unsigned Aborts();

  DriverResult Refuse(DriverError error, const std::string& what);

  std::mutex mutex_;  // guards what follows; not held while a frame is awaited or exposed
  std::array<std::uint8_t, 256> fpga_{};
  std::uint8_t fpgaAddress_ = 0;     // of the next read
  std::uint16_t sensorAddress_ = 0;  // of the next read
  unsigned lanesReset_ = 0;          // one bit each, since the picture's size changed
  unsigned aborts_ = 0;
  bool isLoaded_ = false;
  Link link_ = Link::OutOfStep;
  Stage stage_ = Stage::Idle;
  const Handle* streaming_ = nullptr;  // started the frame under way
  std::vector<std::uint8_t> image_;
  std::size_t sent_ = 0, available_ = 0;  // bytes of the image
};

}  // namespace zel
