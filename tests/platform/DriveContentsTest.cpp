// Disks of other people, as files that are mapped as drives: not one byte of them may change.
#include "platform/posix/DriveContents.h"

#include <gtest/gtest.h>
#include <sys/sysmacros.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <span>

namespace zel {
namespace {

namespace fs = std::filesystem;
using Disk = std::vector<std::uint8_t>;

constexpr std::size_t kDiskBytes = 2 << 20;  // what is smaller counts as a floppy disk, which no RAID has

void Put(Disk& disk, std::size_t at, std::string_view bytes) {
  std::memcpy(disk.data() + at, bytes.data(), bytes.size());
}

template <class Number>
void PutNumber(Disk& disk, std::size_t at, Number number) {
  std::memcpy(disk.data() + at, &number, sizeof(number));
}

std::uint32_t Crc32(std::span<const std::uint8_t> bytes) {
  std::uint32_t crc = ~0u;
  for (const std::uint8_t byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
  }
  return ~crc;
}

void MakePartitions(Disk& disk, char type) {
  Put(disk, 446, std::string_view("\0\0\2\0", 4));
  disk[450] = static_cast<std::uint8_t>(type);
  PutNumber<std::uint32_t>(disk, 454, 1);
  PutNumber<std::uint32_t>(disk, 458, kDiskBytes / 512 - 1);
  Put(disk, 510, "\x55\xAA");
}

void MakeGpt(Disk& disk) {
  MakePartitions(disk, '\xEE');
  constexpr std::size_t kHeader = 512, kHeaderBytes = 92, kEntries = 128;
  Put(disk, kHeader, std::string_view("EFI PART\0\0\1\0", 12));
  PutNumber<std::uint32_t>(disk, kHeader + 12, kHeaderBytes);
  PutNumber<std::uint64_t>(disk, kHeader + 24, 1);  // here
  PutNumber<std::uint64_t>(disk, kHeader + 32, kDiskBytes / 512 - 1);
  PutNumber<std::uint64_t>(disk, kHeader + 40, 34);
  PutNumber<std::uint64_t>(disk, kHeader + 48, kDiskBytes / 512 - 34);
  PutNumber<std::uint64_t>(disk, kHeader + 72, 2);
  PutNumber<std::uint32_t>(disk, kHeader + 80, kEntries);
  PutNumber<std::uint32_t>(disk, kHeader + 84, 128);
  PutNumber(disk, kHeader + 88, Crc32(std::span(disk).subspan(1024, kEntries * 128)));
  PutNumber(disk, kHeader + 16, Crc32(std::span(disk).subspan(kHeader, kHeaderBytes)));
}

void MakeFat(Disk& disk) {
  Put(disk, 0,
      std::string_view("\xEB\x3C\x90MSDOS5.0\x00\x02\x04\x01\x00\x02\x00\x02\x00\x10\xF8\x04\x00", 24));
  Put(disk, 54, "FAT16   ");
  Put(disk, 510, "\x55\xAA");
}

class Drive : public testing::Test {
 protected:
  Drive() {
    std::string name = (fs::current_path() / "zel-XXXXXX").string();
    folder_ = mkdtemp(name.data());
  }
  ~Drive() override {
    unsetenv("ZELCAM_DRIVES");
    fs::remove_all(folder_);
  }

  void Write(const fs::path& file, std::string_view text) const {
    fs::create_directories((folder_ / file).parent_path());
    std::ofstream(folder_ / file, std::ios::binary) << text;
  }
  Disk Contents() const {
    std::ifstream file(folder_ / "disk", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  /// What a first command to the camera in the disk's place comes to.
  DriverError Command(const std::string& mark, std::string* words) const {
    setenv("ZELCAM_DRIVES", ("e:=" + (folder_ / "disk").string() + mark).c_str(), 1);
    DriverError error = DriverError::None;
    const auto drive = SystemDriverHost().Open(
        {u"\\\\.\\E:", kAccessRead | kAccessWrite, kShareRead | kShareWrite, 0}, &error);
    if (!drive) return error;
    std::array<std::uint8_t, 512> sector{};
    EXPECT_TRUE(drive->Seek(0x20000).ok && drive->Read(sector).ok);
    sector.fill(0xC5);
    EXPECT_TRUE(drive->Seek(0x20000).ok);
    const DriverResult written = drive->Write(sector);
    *words = drive->WriteRefusal();
    return written.error;
  }

  fs::path folder_;
};

TEST_F(Drive, OfSomebodyElseIsNotWrittenToUnlessItsMappingSaysSo) {
  struct Row {
    std::function<void(Disk&)> make;
    const char* sign;  ///< null: nothing to lose
  };
  const Row rows[] = {
      {[](Disk& d) { PutNumber<std::uint16_t>(d, 1080, 0xEF53); }, "holds a file system (ext2)"},
      {MakeFat, "holds a file system (vfat)"},
      {[](Disk& d) { MakePartitions(d, '\x83'); }, "holds a partition table (dos)"},
      {MakeGpt, "holds a partition table (gpt)"},
      {[](Disk& d) { Put(d, 0, std::string_view("LUKS\xBA\xBE\0\1", 8)); }, "is encrypted (crypto_LUKS)"},
      {[](Disk& d) {
         PutNumber<std::uint32_t>(d, 4096, 0xA92B4EFC);
         PutNumber<std::uint32_t>(d, 4100, 1);
         PutNumber<std::uint64_t>(d, 4240, 8);
       },
       "is part of a RAID or a volume group (linux_raid_member)"},
      {[](Disk& d) {
         Put(d, 4086, "SWAPSPACE2");
         PutNumber<std::uint32_t>(d, 1024, 1);
         PutNumber<std::uint32_t>(d, 1028, 100);
       },
       "holds data of the system (swap)"},
      {[](Disk& d) {
         PutNumber<std::uint16_t>(d, 1080, 0xEF53);
         MakePartitions(d, '\x83');
       },
       "holds a file system (ext2) and holds a partition table (dos)"},
      {[](Disk&) {}, nullptr},
      {[](Disk& d) { std::ranges::fill(d, std::uint8_t{0x40}); }, nullptr},
      {[](Disk& d) { Put(d, 0x20000, "ORVANE"); }, nullptr},
  };
  for (const auto& [make, sign] : rows) {
    Disk disk(kDiskBytes);
    make(disk);
    Write("disk", {reinterpret_cast<const char*>(disk.data()), disk.size()});
    const std::string file = (folder_ / "disk").string();
    const std::string refusal = sign ? "E: (" + file + ") " + sign +
                                           ": nothing is written to it; ZELCAM_DRIVES=E:=" + file +
                                           "! allows it"
                                     : "";
    std::string words;
    EXPECT_EQ(Command("", &words), sign ? DriverError::WriteProtect : DriverError::None) << refusal;
    EXPECT_EQ(words, refusal);
    if (sign) {
      EXPECT_TRUE(Contents() == disk) << refusal;
      EXPECT_EQ(Command("!", &words), DriverError::None) << refusal;
      EXPECT_EQ(words, "");
    }
    std::fill_n(disk.begin() + 0x20000, 512, std::uint8_t{0xC5});
    EXPECT_TRUE(Contents() == disk) << "the sector, and nothing else";
  }
}

TEST_F(Drive, InUseIsKnownByItsNumberAndThoseOfItsPartitions) {
  Write("mounts",
        "30 24 8:16 / /media/my\\040disk rw - vfat /dev/sdb rw\n"
        "31 24 8:33 / /one rw shared:1 master:2 - ext4 /dev/sdc1 rw\n"
        "32 24 8:33 /sub /two rw - ext4 /dev/sdc1 rw\n"
        "33 24 0:50 / /other rw - btrfs /dev/none rw\n"
        "24 1 253:0 / / rw - ext4 /dev/mapper/root rw\n");
  Write("devices/8:32/sdc1/dev", "8:33\n");
  Write("devices/8:32/sdc1/partition", "1\n");
  Write("devices/8:32/queue/dev", "8:16\n");
  Write("devices/8:48/sdd1/dev", "8:49\n");
  Write("devices/8:48/sdd1/partition", "1\n");
  Write("devices/8:48/sdd1/holders/dm-0/dev", "253:0\n");
  Write("devices/8:64/holders/md0/dev", "9:0\n");
  const SystemTables tables{folder_ / "mounts", folder_ / "devices"};
  struct Row {
    unsigned minor;
    std::vector<std::string> signs;
    bool runsSystem = false;
  };
  for (const auto& [minor, signs, runsSystem] : {
           Row{0, {}},
           Row{1, {}},
           Row{16, {"is mounted at /media/my disk"}},
           Row{32, {"is mounted at /one"}},
           Row{33, {"is mounted at /one"}},
           Row{48, {"is mounted at /", "is in use by dm-0"}, true},
           Row{64, {"is in use by md0"}},
       }) {
    DriveContents contents;
    AddUses(makedev(8, minor), tables, &contents);
    EXPECT_EQ(contents.signs, signs) << minor;
    EXPECT_EQ(contents.runsSystem, runsSystem) << minor;
  }
}

}  // namespace
}  // namespace zel
