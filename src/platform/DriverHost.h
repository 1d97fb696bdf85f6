#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/ComponentTypes.h"

/// The one place where hardware begins: every byte to or from a camera passes these classes. They speak the
/// Windows words (paths, control codes, access masks), so that what a transport does stays visible in a
/// trace.
namespace zel {

/// Why a driver call failed, in Win32 numbers on every target.
enum class DriverError : std::uint32_t {
  None = 0,
  FileNotFound = 2,
  AccessDenied = 5,
  InvalidHandle = 6,
  WriteProtect = 19,
  GeneralFailure = 31,
  SharingViolation = 32,
  NotSupported = 50,
  InvalidParameter = 87,
  Timeout = 121,
  Aborted = 995,
  Pending = 997,
  NotConnected = 1167,
};

/// "access denied", "not connected", ...; for messages.
const char* DriverErrorText(DriverError error);

struct [[nodiscard]] DriverResult {
  bool ok = false;
  std::uint32_t bytes = 0;  ///< bytes moved; what the driver reported, not what was asked
  DriverError error = DriverError::GeneralFailure;

  static DriverResult Done(std::uint32_t bytes) { return {true, bytes, DriverError::None}; }
  static DriverResult Failed(DriverError error) { return {false, 0, error}; }
};

/// Access, share mode and flags of `DriverHost::Open`: the values of `CreateFileW`.
constexpr std::uint32_t kAccessRead = 0x80000000u;
constexpr std::uint32_t kAccessWrite = 0x40000000u;
constexpr std::uint32_t kShareRead = 1;
constexpr std::uint32_t kShareWrite = 2;
constexpr std::uint32_t kOpenOverlapped = 0x40000000u;

struct OpenRequest {
  std::u16string path;
  std::uint32_t access = 0;
  std::uint32_t share = 0;
  std::uint32_t flags = 0;  ///< the device must exist already: there is no creation
};

/// A control transfer under way on a handle opened with `kOpenOverlapped`. Its buffers and the
/// handle must outlive it; destruction cancels it and waits until the driver has let go of them.
class PendingControl {
 public:
  enum class Waited { Done, Timeout, Failed };

  virtual ~PendingControl() = default;
  virtual Waited Wait(std::uint32_t milliseconds) = 0;
  virtual DriverResult Finish() = 0;  ///< does not wait; error Pending when not done
  virtual void Cancel() = 0;
};

/// An open device; destruction closes it. One thread at a time may use a handle.
class DriverHandle {
 public:
  virtual ~DriverHandle() = default;

  /// `DeviceIoControl`. For the direct transfer methods `out` is the data area in both directions.
  virtual DriverResult Control(std::uint32_t code, std::span<const std::uint8_t> in,
                               std::span<std::uint8_t> out) = 0;
  /// Starts an overlapped control transfer; null when it was refused, with the reason in `error`.
  virtual std::unique_ptr<PendingControl> BeginControl(std::uint32_t code, std::span<const std::uint8_t> in,
                                                       std::span<std::uint8_t> out, DriverError* error) = 0;
  /// Position from the start of the device, in bytes.
  virtual DriverResult Seek(std::uint64_t position) = 0;
  virtual DriverResult Read(std::span<std::uint8_t> out) = 0;
  virtual DriverResult Write(std::span<const std::uint8_t> in) = 0;
  /// Why writes are answered WriteProtect, in words for the user; empty when they are not, or nobody knows.
  virtual std::string WriteRefusal() const { return {}; }
};

/// What the operating system (or a simulation of it) offers to the transports. All operations may be called
/// from any thread.
class DriverHost {
 public:
  enum class RegisterAccess { Read, Write };

  virtual ~DriverHost() = default;

  /// Opens an existing device; null when that failed, with the reason in `error` (never null).
  virtual std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) = 0;
  /// Path of the n-th present device of an interface class, or nothing.
  virtual std::optional<std::u16string> InterfacePath(const GUID& interfaceClass, std::uint32_t index) = 0;
  /// Waits that belong to hardware timing come here, so that a test host can run on virtual time.
  virtual void Sleep(std::uint32_t milliseconds) = 0;
  /// Milliseconds of a clock that never goes back.
  virtual std::uint64_t Milliseconds() = 0;
  /// Tells the user something that has no other way to reach him. Must not wait for him under a test host.
  virtual void ShowMessage(std::u16string_view text) = 0;
  /// Puts a line into the log (standard error; on Windows the debugger's output, too), once in the life of
  /// the process: what is wrong is often come past again. Empty lines are nothing. Never waits for the user.
  virtual void TellOnce(std::string_view line);
  /// Told of every sensor register access of a property object after it happened; only tracers listen.
  virtual void NoteRegister(RegisterAccess, std::uint32_t /*address*/, std::uint32_t /*value*/) {}
};

/// The operating system's own host. Lives until the process ends.
DriverHost& SystemDriverHost();

/// The host that transports use now: the system's unless another one was installed.
DriverHost& CurrentDriverHost();

/// Installs a host for the process (null: the system's again) and returns the one before. The host must
/// outlive every handle opened through it.
DriverHost* InstallDriverHost(DriverHost* host);

/// Installs a host for a scope: tests, tracing.
class ScopedDriverHost {
 public:
  explicit ScopedDriverHost(DriverHost& host) : previous_(InstallDriverHost(&host)) {}
  ~ScopedDriverHost() { InstallDriverHost(previous_); }
  ScopedDriverHost(const ScopedDriverHost&) = delete;
  ScopedDriverHost& operator=(const ScopedDriverHost&) = delete;

 private:
  DriverHost* previous_;
};

}  // namespace zel
