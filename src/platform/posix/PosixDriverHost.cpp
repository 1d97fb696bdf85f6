#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <thread>
#include <utility>

#include "platform/DriveGuard.h"
#include "platform/DriveName.h"
#include "platform/Text.h"
#include "platform/Threads.h"
#include "platform/posix/DriveContents.h"
#include "platform/posix/DriveMap.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/posix/UsbCameraHost.h"

namespace zel {
namespace {

constexpr const char* kMappingVariable = "ZELCAM_DRIVES";
constexpr const char* kBlockFolder = "/sys/block";
constexpr std::size_t kAlignment = 4096;       // enough for direct access to any disk
constexpr std::size_t kBounceBytes = 1 << 20;  // multiple of every sector size
constexpr std::uint64_t kFileSector = 512;     // what a plain file pretends to have

DriverError ErrorOf(int number) {
  switch (number) {
    case ENOENT:
    case ENOTDIR:
      return DriverError::FileNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
      return DriverError::AccessDenied;
    case EBUSY:
    case EWOULDBLOCK:
      return DriverError::SharingViolation;
    case ENODEV:
    case ENXIO:
    case ENOMEDIUM:
      return DriverError::NotConnected;
    case EBADF:
      return DriverError::InvalidHandle;
    case EINVAL:
      return DriverError::InvalidParameter;
    case ETIMEDOUT:
      return DriverError::Timeout;
    case ECANCELED:
      return DriverError::Aborted;
    default:
      return DriverError::GeneralFailure;
  }
}

struct AlignedDelete {
  void operator()(std::uint8_t* memory) const { operator delete[](memory, std::align_val_t(kAlignment)); }
};

/// A disk, or a plain file in its place, read and written past the system's cache: what the camera has now,
/// not what it had when somebody looked last.
class DriveHandle : public DriverHandle {
 public:
  DriveHandle(FileDescriptor file, std::uint32_t access, std::uint64_t sectorBytes, bool isPlainFile)
      : file_(std::move(file)), access_(access), sectorBytes_(sectorBytes), isPlainFile_(isPlainFile) {}

  DriverResult Control(std::uint32_t, std::span<const std::uint8_t>, std::span<std::uint8_t>) override {
    return DriverResult::Failed(DriverError::NotSupported);
  }

  std::unique_ptr<PendingControl> BeginControl(std::uint32_t, std::span<const std::uint8_t>,
                                               std::span<std::uint8_t>, DriverError* error) override {
    *error = DriverError::NotSupported;
    return nullptr;
  }

  DriverResult Seek(std::uint64_t position) override {
    if (position % sectorBytes_ != 0 || position > kHighestPosition) {
      return DriverResult::Failed(DriverError::InvalidParameter);
    }
    position_ = position;
    return DriverResult::Done(0);
  }

  DriverResult Read(std::span<std::uint8_t> out) override {
    return Transfer(out.data(), out.size(), kAccessRead, [this](std::uint8_t* at, std::size_t bytes) {
      if (IsAligned(at)) return pread(*file_, at, bytes, Offset());
      bytes = std::min(bytes, kBounceBytes);
      const ssize_t moved = pread(*file_, Bounce(), bytes, Offset());
      if (moved > 0) std::memcpy(at, Bounce(), static_cast<std::size_t>(moved));
      return moved;
    });
  }

  DriverResult Write(std::span<const std::uint8_t> in) override {
    return Transfer(in.data(), in.size(), kAccessWrite, [this](const std::uint8_t* at, std::size_t bytes) {
      if (IsAligned(at)) return pwrite(*file_, at, bytes, Offset());
      bytes = std::min(bytes, kBounceBytes);
      std::memcpy(Bounce(), at, bytes);
      return pwrite(*file_, Bounce(), bytes, Offset());
    });
  }

 private:
  static constexpr std::uint64_t kHighestPosition = 0x7FFFFFFFFFFFFFFF - 0xFFFFFFFF;

  static bool IsAligned(const std::uint8_t* at) {
    return reinterpret_cast<std::uintptr_t>(at) % kAlignment == 0;
  }

  off_t Offset() const { return static_cast<off_t>(position_); }

  std::uint8_t* Bounce() {
    if (!bounce_) bounce_.reset(new (std::align_val_t(kAlignment)) std::uint8_t[kBounceBytes]);
    return bounce_.get();
  }

  /// Moves whole sectors at the position, which advances; fewer than asked only at the end of the disk.
  template <class Byte, class Step>
  DriverResult Transfer(Byte* data, std::size_t size, std::uint32_t access, Step step) {
    if (!(access_ & access)) return DriverResult::Failed(DriverError::AccessDenied);
    // Like a raw disk: no parts of sectors.
    if (size % sectorBytes_ != 0 || position_ % sectorBytes_ != 0 || size > 0xFFFFFFFFu) {
      return DriverResult::Failed(DriverError::InvalidParameter);
    }
    std::uint32_t done = 0;
    while (done < size) {
      const ssize_t moved = step(data + done, size - done);
      if (moved < 0) {
        if (errno == EINTR || (errno == EINVAL && GiveUpDirectAccess())) continue;
        return {false, done, ErrorOf(errno)};
      }
      if (moved == 0) break;
      done += static_cast<std::uint32_t>(moved);
      position_ += static_cast<std::uint64_t>(moved);
    }
    return DriverResult::Done(done);
  }

  /// A plain file may lie on a disk with larger sectors than it pretends to have.
  bool GiveUpDirectAccess() {
    const int flags = fcntl(*file_, F_GETFL);
    return isPlainFile_ && flags >= 0 && (flags & O_DIRECT) && fcntl(*file_, F_SETFL, flags & ~O_DIRECT) == 0;
  }

  const FileDescriptor file_;
  const std::uint32_t access_;
  const std::uint64_t sectorBytes_;
  const bool isPlainFile_;
  std::uint64_t position_ = 0;
  std::unique_ptr<std::uint8_t[], AlignedDelete> bounce_;
};

FileDescriptor OpenDirect(const std::string& path, int flags) {
  FileDescriptor file(open(path.c_str(), flags | O_DIRECT));
  // Some file systems have no direct access.
  if (!file.IsOpen() && errno == EINVAL) file = FileDescriptor(open(path.c_str(), flags));
  return file;
}

int OpenFlags(std::uint32_t access) {
  const bool reads = access & kAccessRead, writes = access & kAccessWrite;
  return O_CLOEXEC | (reads && writes ? O_RDWR : writes ? O_WRONLY : O_RDONLY);
}

/// Whoever does not share what he does has the disk alone. The others hold a shared lock, so that he notices
/// them. Only programs that lock take part; a file system without locks lets everybody in.
bool LockAsShared(int file, const OpenRequest& request) {
  const bool keepsReading = (request.access & kAccessRead) && !(request.share & kShareRead);
  const bool keepsWriting = (request.access & kAccessWrite) && !(request.share & kShareWrite);
  const int kind = keepsReading || keepsWriting ? LOCK_EX : LOCK_SH;
  return flock(file, kind | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

/// Disks and volumes as block devices, USB cameras by libusb.
class PosixDriverHost : public DriverHost {
 public:
  std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) override {
    if (IsUsbCameraPath(request.path)) {
      std::string problem;
      auto camera = OpenUsbCamera(request.path, error, &problem);
      TellOnce(problem);
      return camera;
    }
    const std::optional<std::string> name = DriveNameOf(request.path);
    if (!name) {
      *error = DriverError::FileNotFound;
      return nullptr;
    }
    return OpenDrive(*name, request, error);
  }

  std::optional<std::u16string> InterfacePath(const GUID& interfaceClass, std::uint32_t index) override {
    std::string problem;
    auto path = FindUsbInterface(interfaceClass, index, &problem);
    TellOnce(problem);
    return path;
  }

  void Sleep(std::uint32_t milliseconds) override {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }

  std::uint64_t Milliseconds() override { return NowNs() / 1'000'000; }

  void ShowMessage(std::u16string_view text) override { std::fprintf(stderr, "%s\n", ToUtf8(text).c_str()); }

 private:
  std::unique_ptr<DriverHandle> OpenDrive(const std::string& name, const OpenRequest& request,
                                          DriverError* error) {
    const DriveLookup drive = FindDrive(name, std::getenv(kMappingVariable), kBlockFolder);
    if (!drive.file) {
      if (!drive.problem.empty()) TellOnce(std::string(kMappingVariable) + ": " + drive.problem);
      *error = drive.problem.empty() ? DriverError::FileNotFound : DriverError::InvalidParameter;
      return nullptr;
    }
    struct stat about;
    if (stat(drive.file->c_str(), &about) != 0) {
      *error = ErrorOf(errno);
      return nullptr;
    }
    // Opening anything else might wait, a pipe for its other end.
    if (!S_ISBLK(about.st_mode) && !S_ISREG(about.st_mode)) {
      *error = DriverError::InvalidParameter;
      return nullptr;
    }
    FileDescriptor file = OpenDirect(*drive.file, OpenFlags(request.access));
    int sectorBytes = kFileSector;
    if (!file.IsOpen() || (S_ISBLK(about.st_mode) && ioctl(*file, BLKSSZGET, &sectorBytes) != 0)) {
      *error = ErrorOf(errno);
      return nullptr;
    }
    if (!LockAsShared(*file, request)) {
      *error = DriverError::SharingViolation;
      return nullptr;
    }
    const DrivePermission permission{
        .drive = name + " (" + *drive.file + ')',
        .setting = std::string(kMappingVariable) + '=' + name + '=' + *drive.file + '!',
        .given = drive.mayWrite};
    const int number = *file;  // open as long as the handle, which the guard has
    return GuardWrites(
        std::make_unique<DriveHandle>(std::move(file), request.access,
                                      static_cast<std::uint64_t>(sectorBytes), S_ISREG(about.st_mode)),
        [number, permission] { return WriteRefusalOf(ExamineDrive(number), permission); });
  }
};

}  // namespace

DriverHost& SystemDriverHost() {
  static DriverHost& host = *new PosixDriverHost;  // never destroyed: workers may outlive static objects
  return host;
}

}  // namespace zel
