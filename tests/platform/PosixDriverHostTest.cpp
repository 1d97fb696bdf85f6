#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <vector>

#include "platform/DriverHost.h"
#include "platform/posix/DriveMap.h"

namespace zel {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kReadWrite = kAccessRead | kAccessWrite;
constexpr std::uint32_t kShareBoth = kShareRead | kShareWrite;

class PosixDriverHost : public testing::Test {
 public:
  ~PosixDriverHost() override {
    unsetenv("ZELCAM_DRIVES");
    fs::remove_all(folder_);
  }

 protected:
  PosixDriverHost() {
    // The build folder rather than /tmp: a memory file system has no direct access to test.
    std::string name = (fs::current_path() / "zel-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    disk_ = folder_ / "disk";
    std::vector<char> content(64 * 512);
    for (std::size_t n = 0; n < content.size(); ++n) content[n] = static_cast<char>(n / 512);
    std::ofstream(disk_, std::ios::binary).write(content.data(), std::ssize(content));
    std::string drives = "PhysicalDrive2=";
    drives.append(disk_).append(",Z:=").append(folder_);
    setenv("ZELCAM_DRIVES", drives.c_str(), 1);
  }
  std::unique_ptr<DriverHandle> Open(std::uint32_t access, std::uint32_t share = kShareBoth,
                                     std::u16string path = u"\\\\.\\PhysicalDrive2") {
    return SystemDriverHost().Open({std::move(path), access, share, 0}, &error_);
  }

  /// Whether the one handle on the disk goes past the system's cache.
  bool IsDirect() const {
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
      std::error_code gone;
      if (fs::read_symlink(entry, gone) == disk_) {
        return fcntl(std::stoi(entry.path().filename()), F_GETFL) & O_DIRECT;
      }
    }
    return false;
  }

  fs::path folder_, disk_;
  DriverError error_ = DriverError::None;
};

TEST_F(PosixDriverHost, FindsTheFileBehindAPath) {
  for (const char* name : {"sdb", "sdaa", "loop0", "sda", "nvme0n1"}) std::ofstream(folder_ / name);
  const char* const kMappings = "PhysicalDrive2=/dev/sdx!,e:=/dev/sdy,PHYSICALDRIVE0=/dev/a=b";
  struct Case {
    const char* name;
    const char* mappings;
    std::optional<std::string> file = {};
    bool mayWrite = false;
    std::string problem = {};
  };
  for (const auto& [name, mappings, file, mayWrite, problem] : {
           Case{"PhysicalDrive0", nullptr, "/dev/sda"},
           Case{"physicaldrive2", nullptr, "/dev/sdaa"},
           Case{"PhysicalDrive3", nullptr},
           Case{"E:", nullptr},
           Case{"E:", kMappings, "/dev/sdy"},
           Case{"PhysicalDrive0", kMappings, "/dev/a=b"},
           Case{"PhysicalDrive1", kMappings, "/dev/sdb"},
           Case{"PhysicalDrive2", kMappings, "/dev/sdx", true},
           Case{"C:", "C:=/dev/sda,E:=!", std::nullopt, false,
                "'E:=!' at position 12 is not of the form PhysicalDriveN=FILE or X:=FILE"},
       }) {
    const DriveLookup found = FindDrive(name, mappings, folder_.string());
    EXPECT_EQ(found.file, file);
    EXPECT_EQ(found.mayWrite, mayWrite);
    EXPECT_EQ(found.problem, problem);
  }
  EXPECT_EQ(FindDrive("PhysicalDrive0", nullptr, "/nowhere").file, std::nullopt);
}

TEST_F(PosixDriverHost, ReadsAndWritesAtItsPositionIntoAnyBuffer) {
  const auto handle = Open(kReadWrite);
  ASSERT_NE(handle, nullptr) << DriverErrorText(error_);
  alignas(4096) static std::uint8_t memory[2 * 4096];
  bool wasDirect = false;
  for (const std::size_t misalignment : {0, 1, 512}) {
    const std::span buffer(memory + misalignment, 1024);
    const auto mark = static_cast<std::uint8_t>(100 + misalignment % 100);
    ASSERT_TRUE(handle->Seek(5 * 512).ok);
    ASSERT_EQ(handle->Read(buffer).bytes, 1024u);
    EXPECT_EQ(buffer[511], 5);
    EXPECT_EQ(buffer[512], 6);
    std::ranges::fill(buffer, mark);
    ASSERT_EQ(handle->Write(buffer).bytes, 1024u) << "sectors 7 and 8";
    ASSERT_EQ(handle->Read(buffer).bytes, 1024u);
    EXPECT_EQ(buffer[0], 9);
    ASSERT_TRUE(handle->Seek(8 * 512).ok);
    ASSERT_EQ(handle->Read(buffer).bytes, 1024u);
    EXPECT_EQ(buffer[511], mark);
    EXPECT_EQ(buffer[512], 9);
    if (misalignment == 0) wasDirect = IsDirect();  // where the file system can
    EXPECT_EQ(IsDirect(), wasDirect);
  }
}

TEST_F(PosixDriverHost, MovesMoreThanItsBounceBufferAndStopsAtTheEnd) {
  constexpr std::uint32_t kDiskBytes = (5 << 20) / 2;
  const auto handle = Open(kReadWrite);
  std::vector<std::uint8_t> written(kDiskBytes + 1), read(3 << 20 | 1);
  for (std::size_t n = 0; n < written.size(); ++n) written[n] = static_cast<std::uint8_t>(n % 251);
  ASSERT_EQ(handle->Write(std::span(written).subspan(1)).bytes, kDiskBytes);
  ASSERT_TRUE(handle->Seek(0).ok);
  EXPECT_EQ(handle->Read(std::span(read).subspan(1)).bytes, kDiskBytes);
  EXPECT_TRUE(std::equal(written.begin() + 1, written.end(), read.begin() + 1));
}

TEST_F(PosixDriverHost, RefusesWhatARawDiskRefuses) {
  const auto handle = Open(kAccessRead);
  std::vector<std::uint8_t> buffer(1024);
  EXPECT_EQ(handle->Seek(100).error, DriverError::InvalidParameter);
  EXPECT_EQ(handle->Seek(~0ull << 9).error, DriverError::InvalidParameter);
  EXPECT_EQ(handle->Read(std::span(buffer).first(100)).error, DriverError::InvalidParameter);
  EXPECT_EQ(handle->Write(buffer).error, DriverError::AccessDenied);
  EXPECT_EQ(Open(kAccessWrite)->Read(buffer).error, DriverError::AccessDenied);
  EXPECT_EQ(handle->Control(0x222051, buffer, buffer).error, DriverError::NotSupported);
  EXPECT_EQ(handle->BeginControl(0x222051, buffer, buffer, &error_), nullptr);
  EXPECT_EQ(error_, DriverError::NotSupported);
}

TEST_F(PosixDriverHost, SaysWhyItDidNotOpen) {
  EXPECT_EQ(Open(kReadWrite, kShareBoth, u"\\\\.\\ZelUsbBD-0"), nullptr);
  EXPECT_EQ(error_, DriverError::FileNotFound);
  EXPECT_EQ(Open(kReadWrite, kShareBoth, u"\\\\.\\Z:"), nullptr);
  EXPECT_EQ(error_, DriverError::InvalidParameter) << "a folder";
  const auto shared = Open(kReadWrite);
  EXPECT_NE(Open(kReadWrite), nullptr);
  EXPECT_EQ(Open(kReadWrite, kShareRead), nullptr);
  EXPECT_EQ(error_, DriverError::SharingViolation);
  EXPECT_NE(Open(kAccessRead, kShareRead), nullptr) << "shares all that it does";
  fs::remove(disk_);
  EXPECT_EQ(Open(kReadWrite), nullptr);
  EXPECT_EQ(error_, DriverError::FileNotFound);
  const std::string nonsense = folder_.filename();  // a new text, as the same one is told once in a process
  setenv("ZELCAM_DRIVES", nonsense.c_str(), 1);
  testing::internal::CaptureStderr();
  for (int n = 0; n < 2; ++n) {
    EXPECT_EQ(Open(kReadWrite), nullptr);
    EXPECT_EQ(error_, DriverError::InvalidParameter);
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            std::string("ZELCAM_DRIVES: '") + nonsense +
                "' at position 0 is not of the form PhysicalDriveN=FILE or X:=FILE\n");
}

TEST_F(PosixDriverHost, NeedsTheRights) {
  constexpr unsigned kNobody = 65534;
  const auto tryAsUser = [this] {
    // Root may open anything: give the rights up, in a process of its own. From inside the folder, as those
    // above it may be closed to others.
    setenv("ZELCAM_DRIVES", "PhysicalDrive2=disk", 1);
    const bool isUser =
        chdir(folder_.c_str()) == 0 && (geteuid() != 0 || (chown("disk", kNobody, kNobody) == 0 &&
                                                           chmod(".", 0755) == 0 && setuid(kNobody) == 0));
    if (!isUser) _exit(1);
    if (Open(kReadWrite) || error_ != DriverError::AccessDenied) _exit(2);
    _exit(Open(kAccessRead) ? 0 : 3);
  };
  fs::permissions(disk_, fs::perms::owner_read);
  EXPECT_EXIT(tryAsUser(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace zel
