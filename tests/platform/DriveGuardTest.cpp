#include "platform/DriveGuard.h"

#include <gtest/gtest.h>

#include "platform/DriveName.h"
#include "platform/FakeHost.h"

namespace zel {
namespace {

TEST(DriveName, IsALetterOrANumberedDisk) {
  struct Row {
    std::u16string path;
    std::optional<std::string> name;
    std::optional<unsigned> number = {};
  };
  for (const auto& [path, name, number] : {
           Row{u"\\\\.\\E:", "E:"},
           Row{u"\\\\.\\z:", "z:"},
           Row{u"\\\\.\\PhysicalDrive12", "PhysicalDrive12", 12},
           Row{u"\\\\.\\physicaldrive0", "physicaldrive0", 0},
           Row{u"\\\\.\\PhysicalDrive", {}},
           Row{u"\\\\.\\PhysicalDrive1x", {}},
           Row{u"\\\\.\\PhysicalDrive99999999999", {}},
           Row{u"\\\\.\\E", {}},
           Row{u"\\\\.\\7:", {}},
           Row{u"\\\\.\\ZelUsbBD-0", {}},
           Row{u"\\\\.\\\\\\.\\E:", {}},
           Row{u"E:", {}},
       }) {
    EXPECT_EQ(DriveNameOf(path), name);
    EXPECT_EQ(name ? PhysicalDriveNumber(*name) : std::nullopt, number);
  }
}

TEST(DriveName, IsFoundInAList) {
  for (const char* list : {"E", "e:", "C, E ,F", "PhysicalDrive2,E", ",,E"})
    EXPECT_TRUE(ListsDrive(list, "E:"));
  for (const char* list : {"", "F", "EE", "E:\\", "PhysicalDrive2", "all"})
    EXPECT_FALSE(ListsDrive(list, "E:"));
  EXPECT_TRUE(ListsDrive("physicaldrive2", "PhysicalDrive2"));
  EXPECT_FALSE(ListsDrive("PhysicalDrive2", "PhysicalDrive21"));
}

TEST(DriveGuard, RefusesWhatTheSystemKnowsAndSaysHowToAllowIt) {
  struct Row {
    DriveContents contents;
    bool permitted;
    const char* words;
  };
  const DriveContents file{{"holds a file system (ext4)"}, "", false};
  for (const auto& [contents, permitted, words] : {
           Row{{}, false, ""},
           Row{file, true, ""},
           Row{file, false, "E: (/x) holds a file system (ext4): nothing is written to it; E=/x! allows it"},
           Row{{{"holds a", "is b"}, "error 5", false},
               false,
               "E: (/x) holds a and is b: nothing is written to it; E=/x! allows it"},
           Row{{{}, "error 5", false},
               false,
               "E: (/x) can't be examined (error 5): nothing is written to it; E=/x! allows it"},
           Row{{{}, "error 5", false}, true, ""},
           Row{{{"is mounted at /"}, "", true},
               true,
               "E: (/x) is part of the running system: nothing is written to it"},
       }) {
    EXPECT_EQ(WriteRefusalOf(contents, {"E: (/x)", "E=/x!", permitted}), words);
  }
}

TEST(DriveGuard, AsksOnceBeforeTheFirstWrite) {
  for (const bool refuses : {false, true}) {
    int asked = 0;
    const auto drive = GuardWrites(std::make_unique<test::FakeHost>(), [&] {
      ++asked;
      return std::string(refuses ? "because" : "");
    });
    std::uint8_t sector[4]{};
    EXPECT_TRUE(drive->Seek(0).ok);
    EXPECT_TRUE(drive->Read(sector).ok);
    EXPECT_EQ(asked, 0) << "identification reads only";
    for (int n = 0; n < 2; ++n) {
      EXPECT_EQ(drive->Write(sector).error, refuses ? DriverError::WriteProtect : DriverError::NotConnected);
      EXPECT_EQ(asked, 1);
    }
    EXPECT_TRUE(drive->Read(sector).ok);
    EXPECT_EQ(drive->WriteRefusal(), refuses ? "because" : "");
  }
}

}  // namespace
}  // namespace zel
