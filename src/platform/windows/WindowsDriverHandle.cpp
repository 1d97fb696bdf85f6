#include "platform/windows/WindowsDriverHandle.h"

#include <cstddef>
#include <utility>

namespace zel {
namespace {

/// The result of a call that has just returned.
DriverResult ResultOf(BOOL ok, DWORD bytes) {
  if (ok) return DriverResult::Done(bytes);
  return {false, bytes, WindowsDriverError(GetLastError())};
}

bool FitsDword(std::size_t size) {
  return size <= 0xFFFFFFFFu;
}

class WindowsPendingControl : public PendingControl {
 public:
  WindowsPendingControl(HANDLE device, UniqueHandle event) : device_(device), event_(std::move(event)) {
    overlapped_.hEvent = event_.get();
  }

  ~WindowsPendingControl() override {
    if (!started_) return;
    CancelIoEx(device_, &overlapped_);
    DWORD bytes = 0;
    GetOverlappedResult(device_, &overlapped_, &bytes, TRUE);
  }

  DriverError Start(std::uint32_t code, std::span<const std::uint8_t> in, std::span<std::uint8_t> out) {
    started_ =
        DeviceIoControl(device_, code, const_cast<std::uint8_t*>(in.data()), static_cast<DWORD>(in.size()),
                        out.data(), static_cast<DWORD>(out.size()), nullptr, &overlapped_) ||
        GetLastError() == ERROR_IO_PENDING;
    return started_ ? DriverError::None : WindowsDriverError(GetLastError());
  }

  Waited Wait(std::uint32_t milliseconds) override {
    switch (WaitForSingleObject(event_.get(), milliseconds)) {
      case WAIT_OBJECT_0:
        return Waited::Done;
      case WAIT_TIMEOUT:
        return Waited::Timeout;
      default:
        return Waited::Failed;
    }
  }

  DriverResult Finish() override {
    DWORD bytes = 0;
    const BOOL ok = GetOverlappedResult(device_, &overlapped_, &bytes, FALSE);
    return ResultOf(ok, bytes);
  }

  void Cancel() override { CancelIoEx(device_, &overlapped_); }

 private:
  const HANDLE device_;
  const UniqueHandle event_;
  OVERLAPPED overlapped_{};
  bool started_ = false;
};

class WindowsDriverHandle : public DriverHandle {
 public:
  explicit WindowsDriverHandle(UniqueHandle device) : device_(std::move(device)) {}

  DriverResult Control(std::uint32_t code, std::span<const std::uint8_t> in,
                       std::span<std::uint8_t> out) override {
    if (!FitsDword(in.size()) || !FitsDword(out.size()))
      return DriverResult::Failed(DriverError::InvalidParameter);
    DWORD bytes = 0;
    const BOOL ok = DeviceIoControl(device_.get(), code, const_cast<std::uint8_t*>(in.data()),
                                    static_cast<DWORD>(in.size()), out.data(), static_cast<DWORD>(out.size()),
                                    &bytes, nullptr);
    return ResultOf(ok, bytes);
  }

  std::unique_ptr<PendingControl> BeginControl(std::uint32_t code, std::span<const std::uint8_t> in,
                                               std::span<std::uint8_t> out, DriverError* error) override {
    UniqueHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    *error = DriverError::GeneralFailure;
    if (!event || !FitsDword(in.size()) || !FitsDword(out.size())) return nullptr;
    auto control = std::make_unique<WindowsPendingControl>(device_.get(), std::move(event));
    *error = control->Start(code, in, out);
    if (*error != DriverError::None) return nullptr;
    return control;
  }

  DriverResult Seek(std::uint64_t position) override {
    LARGE_INTEGER offset;
    offset.QuadPart = static_cast<LONGLONG>(position);
    return ResultOf(SetFilePointerEx(device_.get(), offset, nullptr, FILE_BEGIN), 0);
  }

  DriverResult Read(std::span<std::uint8_t> out) override {
    if (!FitsDword(out.size())) return DriverResult::Failed(DriverError::InvalidParameter);
    DWORD bytes = 0;
    const BOOL ok = ReadFile(device_.get(), out.data(), static_cast<DWORD>(out.size()), &bytes, nullptr);
    return ResultOf(ok, bytes);
  }

  DriverResult Write(std::span<const std::uint8_t> in) override {
    if (!FitsDword(in.size())) return DriverResult::Failed(DriverError::InvalidParameter);
    DWORD bytes = 0;
    const BOOL ok = WriteFile(device_.get(), in.data(), static_cast<DWORD>(in.size()), &bytes, nullptr);
    return ResultOf(ok, bytes);
  }

 private:
  const UniqueHandle device_;
};

}  // namespace

DriverError WindowsDriverError(DWORD number) {
  switch (number) {
    case ERROR_SUCCESS:
    case ERROR_FILE_NOT_FOUND:
    case ERROR_ACCESS_DENIED:
    case ERROR_INVALID_HANDLE:
    case ERROR_WRITE_PROTECT:
    case ERROR_SHARING_VIOLATION:
    case ERROR_NOT_SUPPORTED:
    case ERROR_INVALID_PARAMETER:
    case ERROR_SEM_TIMEOUT:
    case ERROR_OPERATION_ABORTED:
    case ERROR_IO_PENDING:
    case ERROR_DEVICE_NOT_CONNECTED:
      return static_cast<DriverError>(number);
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
      return DriverError::FileNotFound;
    case ERROR_LOCK_VIOLATION:
    case ERROR_BUSY:
      return DriverError::SharingViolation;
    case ERROR_NEGATIVE_SEEK:
      return DriverError::InvalidParameter;
    case ERROR_INVALID_FUNCTION:
    case ERROR_CALL_NOT_IMPLEMENTED:
      return DriverError::NotSupported;
    case ERROR_TIMEOUT:
    case WAIT_TIMEOUT:
      return DriverError::Timeout;
    case ERROR_IO_INCOMPLETE:
      return DriverError::Pending;
    case ERROR_NOT_READY:
    case ERROR_DEV_NOT_EXIST:
    case 433:  // ERROR_NO_SUCH_DEVICE, which MinGW's headers lack
    case ERROR_DEVICE_REMOVED:
      return DriverError::NotConnected;
    default:
      return DriverError::GeneralFailure;
  }
}

std::unique_ptr<DriverHandle> MakeWindowsDriverHandle(UniqueHandle device) {
  return std::make_unique<WindowsDriverHandle>(std::move(device));
}

}  // namespace zel
