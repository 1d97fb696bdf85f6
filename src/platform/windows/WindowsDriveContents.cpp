#include "platform/windows/WindowsDriveContents.h"

#include "platform/ComponentTypes.h"
// Needs windows.h first.
#include <winioctl.h>

#include <algorithm>
#include <cstddef>

#include "platform/DriveName.h"
#include "platform/Text.h"
#include "platform/windows/UniqueHandle.h"

namespace zel {
namespace {

struct VolumeSearchCloser {
  void operator()(HANDLE search) const { FindVolumeClose(search); }
};
using VolumeSearch = std::unique_ptr<void, VolumeSearchCloser>;

std::string Utf8(const wchar_t* text) {
  return ToUtf8(reinterpret_cast<const char16_t*>(text));
}

/// Adds what is mounted on a volume, of which `root` is the path with a backslash at its end.
void AddFileSystem(const std::wstring& root, const std::string& where, DriveContents* contents) {
  wchar_t type[MAX_PATH + 1] = L"";
  if (GetVolumeInformationW(root.c_str(), nullptr, 0, nullptr, nullptr, nullptr, type, MAX_PATH + 1)) {
    contents->signs.push_back("holds a file system (" + Utf8(type) + ')' + where);
    return;
  }
  // Any other answer may come from a file system: one that is locked or damaged.
  if (const DWORD error = GetLastError(); error != ERROR_UNRECOGNIZED_VOLUME)
    contents->unreadable = "error " + std::to_string(error);
}

/// Where the folder of the system itself lies, with a backslash at its end: as a letter, or as a volume.
std::wstring SystemRoot() {
  wchar_t folder[MAX_PATH] = L"", root[MAX_PATH] = L"";
  GetSystemWindowsDirectoryW(folder, MAX_PATH);
  GetVolumePathNameW(folder, root, MAX_PATH);
  return root;
}
std::wstring VolumeName(const std::wstring& root) {
  wchar_t volume[MAX_PATH] = L"";
  GetVolumeNameForVolumeMountPointW(root.c_str(), volume, MAX_PATH);
  return volume;
}

/// The volume's letter, " on C:", where it has one.
std::string LetterOf(const std::wstring& volume) {
  wchar_t paths[MAX_PATH] = L"";
  DWORD size = 0;
  GetVolumePathNamesForVolumeNameW(volume.c_str(), paths, MAX_PATH, &size);
  std::string path = Utf8(paths);
  if (path.ends_with('\\')) path.pop_back();
  return path.empty() ? "" : " on " + path;
}

/// Whether a part of the volume lies on the disk.
bool LiesOn(const std::wstring& volume, unsigned disk) {
  const std::wstring path = volume.substr(0, volume.size() - 1);  // with the backslash it is the root folder
  const HANDLE opened =
      CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
  if (opened == INVALID_HANDLE_VALUE) return false;
  const UniqueHandle handle(opened);
  constexpr DWORD kMostExtents = 64;
  alignas(VOLUME_DISK_EXTENTS)
      std::byte memory[sizeof(VOLUME_DISK_EXTENTS) + kMostExtents * sizeof(DISK_EXTENT)];
  DWORD bytes = 0;
  if (!DeviceIoControl(opened, IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS, nullptr, 0, memory, sizeof(memory),
                       &bytes, nullptr) &&
      GetLastError() != ERROR_MORE_DATA)
    return false;
  const auto* const extents = reinterpret_cast<const VOLUME_DISK_EXTENTS*>(memory);
  return std::any_of(extents->Extents,
                     extents->Extents + std::min(extents->NumberOfDiskExtents, kMostExtents),
                     [disk](const DISK_EXTENT& extent) { return extent.DiskNumber == disk; });
}

void AddVolumesOf(unsigned disk, DriveContents* contents) {
  wchar_t found[MAX_PATH] = L"";
  const VolumeSearch search(FindFirstVolumeW(found, MAX_PATH));
  if (search.get() == INVALID_HANDLE_VALUE) {
    contents->unreadable = "error " + std::to_string(GetLastError());
    return;
  }
  const std::wstring system = VolumeName(SystemRoot());
  do {
    const std::wstring volume = found;
    if (!LiesOn(volume, disk)) continue;
    contents->runsSystem |= volume == system;
    AddFileSystem(volume, LetterOf(volume), contents);
  } while (FindNextVolumeW(search.get(), found, MAX_PATH));
}

}  // namespace

DriveContents ExamineWindowsDrive(const std::string& name) {
  DriveContents contents;
  if (const auto disk = PhysicalDriveNumber(name)) {
    AddVolumesOf(*disk, &contents);
    return contents;
  }
  const std::wstring root{static_cast<wchar_t>(name[0]), L':', L'\\'};
  const std::wstring system = SystemRoot();
  contents.runsSystem = IsSameDrive(Utf8(root.c_str()), Utf8(system.c_str()));
  AddFileSystem(root, "", &contents);
  return contents;
}

}  // namespace zel
