#include "platform/posix/DriveContents.h"

#include <blkid.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "platform/posix/FileDescriptor.h"

namespace zel {
namespace {

struct ProbeCloser {
  void operator()(blkid_probe probe) const { blkid_free_probe(probe); }
};
using Probe = std::unique_ptr<std::remove_pointer_t<blkid_probe>, ProbeCloser>;

/// Empty when the probe has no such value.
std::string Value(const Probe& probe, const char* name) {
  const char* text = nullptr;
  return blkid_probe_lookup_value(probe.get(), name, &text, nullptr) == 0 ? text : "";
}

std::string SignFound(const Probe& probe) {
  if (const std::string table = Value(probe, "PTTYPE"); !table.empty())
    return "holds a partition table (" + table + ')';
  static constexpr struct {
    const char *usage, *meaning;
  } kUsages[] = {{"filesystem", "holds a file system"},
                 {"raid", "is part of a RAID or a volume group"},
                 {"crypto", "is encrypted"}};
  const std::string usage = Value(probe, "USAGE");
  const char* meaning = "holds data of the system";  // swap space, journals, caches
  for (const auto& row : kUsages)
    if (usage == row.usage) meaning = row.meaning;
  return std::string(meaning) + " (" + Value(probe, "TYPE") + ')';
}

/// One sign for each superblock and partition table.
void AddSignatures(int file, DriveContents* contents) {
  const Probe probe(blkid_new_probe());
  errno = 0;
  if (!probe || blkid_probe_set_device(probe.get(), file, 0, 0) != 0) {
    contents->unreadable = std::strerror(errno != 0 ? errno : EIO);
    return;
  }
  blkid_probe_enable_superblocks(probe.get(), 1);
  blkid_probe_set_superblocks_flags(probe.get(), BLKID_SUBLKS_TYPE | BLKID_SUBLKS_USAGE);
  blkid_probe_enable_partitions(probe.get(), 1);
  int found = 0;
  while ((found = blkid_do_probe(probe.get())) == 0) contents->signs.push_back(SignFound(probe));
  if (found < 0) contents->unreadable = std::strerror(errno != 0 ? errno : EIO);
}

}  // namespace

DriveContents ExamineDrive(int file) {
  DriveContents contents;
  struct stat about;
  // A descriptor of its own, as that of a camera needs aligned memory.
  const FileDescriptor own(open(("/proc/self/fd/" + std::to_string(file)).c_str(), O_RDONLY | O_CLOEXEC));
  if (!own.IsOpen() || fstat(*own, &about) != 0) {
    contents.unreadable = std::strerror(errno);
    return contents;
  }
  AddSignatures(*own, &contents);
  if (S_ISBLK(about.st_mode)) AddUses(about.st_rdev, SystemTables(), &contents);
  return contents;
}

}  // namespace zel
