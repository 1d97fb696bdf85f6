#include "platform/ComponentTypes.h"
// SetupAPI's header needs windows.h first.
#include <setupapi.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "platform/DriveGuard.h"
#include "platform/DriveName.h"
#include "platform/Environment.h"
#include "platform/Threads.h"
#include "platform/windows/WindowsDriveContents.h"
#include "platform/windows/WindowsDriverHandle.h"

namespace zel {
namespace {

static_assert(kAccessRead == GENERIC_READ && kAccessWrite == GENERIC_WRITE && kShareRead == FILE_SHARE_READ &&
              kShareWrite == FILE_SHARE_WRITE && kOpenOverlapped == FILE_FLAG_OVERLAPPED);
static_assert(sizeof(wchar_t) == sizeof(char16_t));

constexpr const char* kPermissionVariable = "ZELCAM_ALLOW_VOLUME";

struct DeviceListCloser {
  void operator()(HDEVINFO list) const { SetupDiDestroyDeviceInfoList(list); }
};

std::string WriteRefusalOfDrive(const std::string& drive) {
  const bool isLetter = !PhysicalDriveNumber(drive);
  const DrivePermission permission{
      .drive = drive,
      .setting = std::string(kPermissionVariable) + '=' + (isLetter ? drive.substr(0, 1) : drive),
      .given = ListsDrive(GetEnvironment(kPermissionVariable).value_or(""), drive)};
  return WriteRefusalOf(ExamineWindowsDrive(drive), permission);
}

class WindowsDriverHost : public DriverHost {
 public:
  std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) override {
    const HANDLE device = CreateFileW(reinterpret_cast<const wchar_t*>(request.path.c_str()), request.access,
                                      request.share, nullptr, OPEN_EXISTING, request.flags, nullptr);
    if (device == INVALID_HANDLE_VALUE || !device) {
      *error = WindowsDriverError(GetLastError());
      return nullptr;
    }
    auto handle = MakeWindowsDriverHandle(UniqueHandle(device));
    const std::optional<std::string> drive = DriveNameOf(request.path);
    return drive ? GuardWrites(std::move(handle), [drive] { return WriteRefusalOfDrive(*drive); })
                 : std::move(handle);
  }

  std::optional<std::u16string> InterfacePath(const GUID& interfaceClass, std::uint32_t index) override {
    const HDEVINFO opened =
        SetupDiGetClassDevsW(&interfaceClass, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    if (opened == INVALID_HANDLE_VALUE) return std::nullopt;
    const std::unique_ptr<void, DeviceListCloser> list(opened);

    SP_DEVICE_INTERFACE_DATA device{};
    device.cbSize = sizeof device;
    if (!SetupDiEnumDeviceInterfaces(list.get(), nullptr, &interfaceClass, index, &device))
      return std::nullopt;
    DWORD bytes = 0;
    SetupDiGetDeviceInterfaceDetailW(list.get(), &device, nullptr, 0, &bytes, nullptr);
    if (bytes < sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W)) return std::nullopt;
    std::vector<std::byte> memory(bytes);
    auto* const detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(memory.data());
    detail->cbSize = sizeof *detail;
    if (!SetupDiGetDeviceInterfaceDetailW(list.get(), &device, detail, bytes, nullptr, nullptr))
      return std::nullopt;
    return std::u16string(reinterpret_cast<const char16_t*>(detail->DevicePath));
  }

  void Sleep(std::uint32_t milliseconds) override { ::Sleep(milliseconds); }
  std::uint64_t Milliseconds() override { return NowNs() / 1'000'000; }

  void ShowMessage(std::u16string_view text) override {
    MessageBoxW(nullptr, reinterpret_cast<const wchar_t*>(std::u16string(text).c_str()), nullptr, MB_OK);
  }
};

}  // namespace

DriverHost& SystemDriverHost() {
  static DriverHost& host = *new WindowsDriverHost;  // never destroyed: workers may outlive static objects
  return host;
}

}  // namespace zel
