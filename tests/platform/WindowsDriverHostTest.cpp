#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "platform/DriverHost.h"
#include "platform/windows/WindowsDriveContents.h"
#include "platform/windows/WindowsDriverHandle.h"

namespace zel {
namespace {

constexpr std::uint32_t kReadWrite = kAccessRead | kAccessWrite;

class WindowsDriverHost : public testing::Test {
 protected:
  WindowsDriverHost() {
    wchar_t folder[MAX_PATH], path[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"zel", 0, path);
    path_ = reinterpret_cast<const char16_t*>(path);
  }
  ~WindowsDriverHost() override { DeleteFileW(reinterpret_cast<const wchar_t*>(path_.c_str())); }

  std::unique_ptr<DriverHandle> Open(const OpenRequest& request) {
    return SystemDriverHost().Open(request, &error_);
  }

  std::u16string path_;
  DriverError error_ = DriverError::None;
};

TEST_F(WindowsDriverHost, ReadsAndWritesAtItsPosition) {
  const auto handle = Open({path_, kReadWrite, 0, 0});
  ASSERT_NE(handle, nullptr) << DriverErrorText(error_);
  std::vector<std::uint8_t> bytes(1024), read(1024);
  std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
  EXPECT_TRUE(handle->Seek(0x20400).ok);
  EXPECT_EQ(handle->Write(bytes).bytes, 1024u);
  EXPECT_TRUE(handle->Seek(0x20600).ok);
  EXPECT_EQ(handle->Read(read).bytes, 512u) << "up to the end";
  EXPECT_EQ(std::memcmp(read.data(), bytes.data() + 512, 512), 0);
  EXPECT_EQ(handle->Seek(~0ull).error, DriverError::InvalidParameter);
}

TEST_F(WindowsDriverHost, SaysWhyACallFailed) {
  const auto reader = Open({path_, kAccessRead, kShareRead, 0});
  std::uint8_t byte = 0;
  EXPECT_EQ(reader->Write({&byte, 1}).error, DriverError::AccessDenied);
  EXPECT_FALSE(reader->Control(0x222051, {}, {}).ok);
  EXPECT_EQ(Open({path_, kReadWrite, kShareRead, 0}), nullptr);
  EXPECT_EQ(error_, DriverError::SharingViolation);
  for (const char16_t* path : {u"\\\\.\\ZelUsbBD-0", u"C:\\no such folder\\file"}) {
    EXPECT_EQ(Open({path, kAccessWrite, kShareWrite, 0}), nullptr);
    EXPECT_EQ(error_, DriverError::FileNotFound);
  }
  EXPECT_EQ(SystemDriverHost().InterfacePath({0x0D2B5C11, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}}, 0), std::nullopt);
}

TEST_F(WindowsDriverHost, NothingIsWrittenToAMountedVolume) {
  wchar_t folder[MAX_PATH] = L"";
  GetSystemWindowsDirectoryW(folder, MAX_PATH);
  const std::string system{static_cast<char>(folder[0]), ':'};
  DriveContents contents = ExamineWindowsDrive(system);
  EXPECT_TRUE(contents.runsSystem);
  ASSERT_EQ(contents.signs.size(), 1u) << contents.unreadable;
  EXPECT_TRUE(contents.signs[0].starts_with("holds a file system (")) << contents.signs[0];

  DWORD letters = GetLogicalDrives();
  for (char letter = 'A'; letters != 0; ++letter, letters >>= 1) {
    const std::string name{letter, ':'};
    const std::wstring root{static_cast<wchar_t>(letter), L':', L'\\'};
    if ((letters & 1) == 0 || GetDriveTypeW(root.c_str()) != DRIVE_FIXED) continue;
    contents = ExamineWindowsDrive(name);
    EXPECT_NE(WriteRefusalOf(contents, {name, "X", false}), "") << name;
    if (name == system) continue;
    EXPECT_FALSE(contents.runsSystem) << name;
    EXPECT_EQ(WriteRefusalOf(contents, {name, "X", true}), "") << name;
  }
}

TEST_F(WindowsDriverHost, GuardsDrivesAndOnlyThem) {
  wchar_t folder[MAX_PATH] = L"";
  GetSystemWindowsDirectoryW(folder, MAX_PATH);
  // Neither right nor bytes to write: what a broken guard lets through changes nothing.
  const auto drive = Open(
      {std::u16string(u"\\\\.\\") + static_cast<char16_t>(folder[0]) + u':', 0, kShareRead | kShareWrite, 0});
  ASSERT_NE(drive, nullptr) << DriverErrorText(error_);
  EXPECT_EQ(drive->Write({}).error, DriverError::WriteProtect);
  EXPECT_TRUE(drive->WriteRefusal().ends_with(" is part of the running system: nothing is written to it"))
      << drive->WriteRefusal();
  const auto file = Open({path_, kReadWrite, 0, 0});
  EXPECT_TRUE(file->Write({}).ok);
}

TEST_F(WindowsDriverHost, OverlappedControlIsUnderWayUntilTheDriverIsDone) {
  // "Wait for a client" of a pipe's server side stays under way for as long as the test likes.
  constexpr std::uint32_t kPipeListen = 0x110008;
  const auto server = MakeWindowsDriverHandle(
      UniqueHandle(CreateNamedPipeW(L"\\\\.\\pipe\\zel-overlapped", PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                    PIPE_TYPE_BYTE, 1, 64, 64, 0, nullptr)));
  const auto listen = [&] { return server->BeginControl(kPipeListen, {}, {}, &error_); };

  ASSERT_NE(listen(), nullptr) << DriverErrorText(error_);  // gone at once: cancelled, and waited for
  const auto cancelled = listen();
  EXPECT_EQ(cancelled->Wait(10), PendingControl::Waited::Timeout);
  EXPECT_EQ(cancelled->Finish().error, DriverError::Pending);
  cancelled->Cancel();
  EXPECT_EQ(cancelled->Wait(60'000), PendingControl::Waited::Done);
  EXPECT_EQ(cancelled->Finish().error, DriverError::Aborted);

  const auto done = listen();
  const auto client = Open({u"\\\\.\\pipe\\zel-overlapped", kReadWrite, 0, 0});
  EXPECT_EQ(done->Wait(60'000), PendingControl::Waited::Done);
  EXPECT_TRUE(done->Finish().ok);

  EXPECT_EQ(server->BeginControl(0x222051, {}, {}, &error_), nullptr);
  EXPECT_EQ(error_, DriverError::NotSupported);
}

}  // namespace
}  // namespace zel
