#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <fstream>

#include "TemporaryFolder.h"
#include "tools/Tool.h"
#include "tools/support/Interrupt.h"
#include "tools/support/OutputFiles.h"
#include "tools/support/PictureFile.h"
#include "tools/support/Progress.h"
#include "tools/support/ToolError.h"

namespace zel::tool {
namespace {

namespace fs = std::filesystem;

FilePattern Pattern(std::string_view text) {
  return {text, {FileFormat::Bitmap, FileFormat::Jpeg, FileFormat::Raw}};
}

/// An empty folder for one test, of a name.
class Folder {
 public:
  explicit Folder(const char* name) : path_(own_.Path() / name) { fs::create_directories(path_); }
  std::string File(std::string_view name) const { return ToText(path_ / ToPath(name)); }
  void Touch(std::string_view name) const { std::ofstream(ToPath(File(name))) << "old"; }
  std::size_t Count() const { return std::distance(fs::directory_iterator(path_), fs::directory_iterator()); }

 private:
  test::TemporaryFolder own_;
  fs::path path_;
};

TEST(FilePattern, NamesFrames) {
  struct Row {
    const char* pattern;
    std::int64_t frame;
    const char* name;
    FileFormat format;
  };
  const Row rows[] = {
      {"a.bmp", 7, "a.bmp", FileFormat::Bitmap},
      {"out/f-{frame:06}.JPG", 7, "out/f-000007.JPG", FileFormat::Jpeg},
      {"{frame}x.jpeg", 12, "12x.jpeg", FileFormat::Jpeg},
      {"{frame:02}.raw", 123, "123.raw", FileFormat::Raw},
      {"\xC3\xA4\xE2\x82\xAC{frame}.bmp", 1,
       "\xC3\xA4\xE2\x82\xAC"
       "1.bmp",
       FileFormat::Bitmap},
  };
  for (const Row& row : rows) {
    const FilePattern pattern = Pattern(row.pattern);
    EXPECT_EQ(pattern.PathOf(row.frame), ToPath(row.name));
    EXPECT_EQ(pattern.Format(), row.format) << row.pattern;
  }
}

TEST(FilePattern, RefusesWhatItCantFill) {
  for (const char* const text :
       {"", "a", "a.png", "a.bgra", "{time}.bmp", "{frame.bmp", "{frame:}.bmp", "{frame:6}.bmp",
        "{frame:0x}.bmp", "{frame:099}.bmp", "{frame}{frame}.bmp"}) {
    EXPECT_THROW(Pattern(text), ToolError) << text;
  }
}

TEST(FilePattern, CoversExactlyItsSeries) {
  const FilePattern pattern = Pattern("f-{frame:03}.bmp");
  for (const char* const name : {"f-001.bmp", "f-020.bmp"}) EXPECT_TRUE(pattern.Covers(name, 20)) << name;
  for (const char* const name : {"f-000.bmp", "f-021.bmp", "f-1.bmp", "f-0001.bmp", "f-.bmp", "f-01x.bmp",
                                 "g-001.bmp", "f-001.jpg", "f--01.bmp"}) {
    EXPECT_FALSE(pattern.Covers(name, 20)) << name;
  }
}

TEST(FilePattern, ChecksBeforeAnythingIsCaptured) {
  const Folder folder("check");
  folder.Touch("f-3.bmp");
  const auto codeOf = [](const std::string& pattern, std::int64_t last, bool overwrite) -> int {
    try {
      Pattern(pattern).CheckWritable(last, overwrite);
      return kExitDone;
    } catch (const ToolError& error) {
      return error.Code();
    }
  };
  EXPECT_EQ(codeOf(folder.File("f-{frame}.bmp"), 2, false), kExitDone);
  EXPECT_EQ(codeOf(folder.File("f-{frame}.bmp"), 3, false), kExitUsage);
  EXPECT_EQ(codeOf(folder.File("f-{frame}.bmp"), 3, true), kExitDone);
  EXPECT_EQ(codeOf(folder.File("missing/a.bmp"), 1, true), kExitUsage);
  fs::create_directory(ToPath(folder.File("a.bmp")));
  EXPECT_EQ(codeOf(folder.File("a.bmp"), 1, true), kExitUsage);
  EXPECT_EQ(folder.Count(), 2u) << "the check left something behind";
}

TEST(PictureFile, AppearsWholeOrNotAtAll) {
  const Folder folder("whole");
  const std::uint8_t pixels[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  PictureView picture{
      .pixels = pixels, .width = 1, .height = 2, .strideBytes = 8, .bitCount = 32, .raw = {pixels, 5}};
  const auto write = [&](const char* name, FileFormat format) {
    WritePicture(picture, format, ToPath(folder.File(name)));
    return fs::file_size(ToPath(folder.File(name)));
  };
  EXPECT_EQ(write("a.bgra", FileFormat::Bgra), 16u);
  EXPECT_EQ(write("a.raw", FileFormat::Raw), 5u);
  EXPECT_EQ(write("a.bmp", FileFormat::Bitmap), 54u + 8u);
  EXPECT_GT(write("\xC3\xA4\xE2\x82\xAC.jpg", FileFormat::Jpeg), 100u) << "a name beyond ASCII";
  EXPECT_EQ(folder.Count(), 4u);

  folder.Touch("b.bmp");
  picture.width = 0;
  EXPECT_THROW(write("b.bmp", FileFormat::Bitmap), ToolError);
  EXPECT_EQ(fs::file_size(ToPath(folder.File("b.bmp"))), 3u) << "the old file must stay";
  picture.bitCount = 0;
  EXPECT_THROW(write("c.jpg", FileFormat::Jpeg), ToolError) << "raw samples";
  EXPECT_EQ(folder.Count(), 5u);
}

TEST(Progress, Lines) {
  const Progress::Counts counts{.frames = 250, .dropped = 3, .bytes = 65'536'000, .ns = 10'000'000'000};
  EXPECT_EQ(Progress::RunningText(counts, 1000), "250/1000  25.0 fps  6.55 MB/s  dropped 3  0:10");
  EXPECT_EQ(Progress::RunningText({.frames = 1, .ns = 125'900'000'000}, 0),
            "1  0.0 fps  0.00 MB/s  dropped 0  2:05");
  EXPECT_EQ(Progress::RunningText({}, 0), "0  0.0 fps  0.00 MB/s  dropped 0  0:00");
  EXPECT_EQ(Progress::FinalText(counts), "250 frames in 10.0 s, 25.0 fps, dropped 3");
}

TEST(Interrupt, SecondEndsAtOnce) {
  EXPECT_EXIT(
      {
        WatchForInterrupt();
        std::raise(SIGINT);
        if (WasInterrupted()) std::raise(SIGINT);
        std::_Exit(1);
      },
      ::testing::ExitedWithCode(kExitInterrupted), "");
}

}  // namespace
}  // namespace zel::tool
