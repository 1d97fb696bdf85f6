#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "imaging/PictureReader.h"
#include "sim/FrameCode.h"

// What a programmer gets: installed into an empty folder, and programs outside the tree built with it as the
// README says. They run on a simulated camera.
namespace zel {
namespace {

namespace fs = std::filesystem;

const fs::path kWork = fs::path(ZELCAM_BUILD) / "outside";
const fs::path kPrefix = kWork / "installed";
const fs::path kSource = ZELCAM_SOURCE;
const std::string kLibraries = kPrefix / ZELCAM_LIBDIR;
const std::string kLibrary = kLibraries + "/libZELCam.so";
const std::string kUse =
    "export PKG_CONFIG_PATH=" + kLibraries + "/pkgconfig LD_LIBRARY_PATH=" + kLibraries + "; ";

std::string Text(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

void Write(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path) << text;
}

/// Runs a shell command in a folder; its output is shown when it fails.
::testing::AssertionResult Runs(const fs::path& folder, const std::string& command) {
  fs::create_directories(folder);
  const std::string log = kWork / "log";
  const int status =
      std::system(("cd '" + folder.string() + "' && { " + command + "; } >" + log + " 2>&1").c_str());
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << command << "\n" << Text(log);
}

/// The first match of a pattern's first group.
std::string Find(const std::string& text, const std::string& pattern) {
  std::smatch found;
  return std::regex_search(text, found, std::regex(pattern)) ? found[1].str() : std::string();
}

class Installation : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    fs::remove_all(kWork);
    ASSERT_TRUE(Runs(kWork, CMAKE_PROGRAM " --install " ZELCAM_BUILD " --prefix " + kPrefix.string()));
  }

  const std::string readme_ = Text(kSource / "README.md");
  const std::string one_line_ = kUse + Find(readme_, "\n    (g\\+\\+ program.cpp .*)");
  const std::string project_ = Find(readme_, "```cmake\n([^`]*)```");

  /// The program's folder after it was built and run.
  fs::path BuildAndRun(const std::string& way, const std::string& program) {
    static int count = 0;
    const fs::path folder = kWork / (way + std::to_string(++count));
    Write(folder / "program.cpp", program);
    if (way == "cmake") {
      Write(folder / "CMakeLists.txt",
            "cmake_minimum_required(VERSION 3.25)\nproject(program CXX)\n" + project_);
      EXPECT_TRUE(Runs(folder, CMAKE_PROGRAM " -G Ninja . -DCMAKE_PREFIX_PATH=" + kPrefix.string() +
                                   " && " CMAKE_PROGRAM " --build ."));
    } else {
      EXPECT_TRUE(Runs(folder, one_line_));
    }
    EXPECT_TRUE(Runs(folder, kUse + "ZELCAM_SIM=13 ./program"));
    return folder;
  }

  static void ExpectFrame(const fs::path& path) {
    Picture picture;
    std::string error;
    ASSERT_TRUE(ReadPicture(path, &picture, &error)) << error;
    EXPECT_EQ(picture.width, 1280);
    EXPECT_EQ(picture.height, 1024);
    EXPECT_TRUE(ReadFrameNumber(picture.rgb.data(), picture.width, picture.height, picture.width * 3, 3))
        << path << " shows no whole frame of the test chart";
  }
};

TEST_F(Installation, HoldsWhatAProgramNeedsAndNothingElse) {
  std::set<std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(kPrefix)) {
    if (!entry.is_directory()) files.insert(entry.path().lexically_relative(kPrefix));
  }
  const std::string lib = ZELCAM_LIBDIR;
  const std::string version = ZELCAM_VERSION;
  const std::string package = lib + "/cmake/ZELCam/ZELCam";
  const std::set<std::string> expected = {
      "bin/zelcam",
      "include/zelcam/ZELCam.h",
      "include/zelcam/ZELCam.idl",
      "include/zelcam/ZELCam_i.h",
      "include/zelcam/platform/ComponentTypes.h",
      "include/zelcam/platform/posix/ComponentTypesPosix.h",
      package + "Config.cmake",
      package + "ConfigVersion.cmake",
      package + "Targets.cmake",
      package + "Targets-release.cmake",
      lib + "/libZELCam.so",
      lib + "/libZELCam.so." + version,
      lib + "/libZELCam.so." + version.substr(0, version.find('.')),
      lib + "/pkgconfig/zelcam.pc",
      "lib/udev/rules.d/70-zelcam.rules",
      "share/doc/zelcam/LICENSE",
  };
  EXPECT_EQ(files, expected);
  EXPECT_TRUE(Runs(kWork, (kPrefix / "bin/zelcam").string() + " --sim 13 list"));
}

TEST_F(Installation, HeadersCompileAloneAndLeaveOtherNamesAlone) {
  Write(kWork / "header.cpp", "#include <ZELCam.h>\nstruct Descriptor { int interface; };\n");
  EXPECT_TRUE(
      Runs(kWork, "g++ -std=c++17 -Wall -Wextra -Wpedantic -Wshadow -Werror -fsyntax-only header.cpp -I " +
                      (kPrefix / "include/zelcam").string()));
}

TEST_F(Installation, LibraryExportsWhatItsHeadersDeclare) {
  const std::string headers = Text(kPrefix / "include/zelcam/ZELCam.h") +
                              Text(kPrefix / "include/zelcam/platform/posix/ComponentTypesPosix.h");
  const std::regex declaration("\n(?:ZELCAM_API )?\\w+\\*? ((?:ZEL|Sys|Variant|SafeArray)\\w+)\\(");
  std::set<std::string> declared;
  for (std::sregex_iterator found(headers.begin(), headers.end(), declaration), end; found != end; ++found) {
    declared.insert((*found)[1]);
  }
  ASSERT_TRUE(Runs(kWork, "nm --dynamic --defined-only --format=just-symbols " + kLibrary + " >symbols"));
  std::ifstream symbols(kWork / "symbols");
  const std::set<std::string> exported{std::istream_iterator<std::string>(symbols), {}};
  EXPECT_EQ(exported, declared);
}

TEST_F(Installation, ProgramsOutsideTakePicturesBothWays) {
  const std::string shown = Find(readme_, "```cpp\n([^`]*)```");
  for (const std::string way : {"cmake", "pkg-config"}) {
    SCOPED_TRACE(way);
    BuildAndRun(way, shown);
    ExpectFrame(BuildAndRun(way, Text(kSource / "examples/capture.cpp")) / "capture.jpg");
  }
}

TEST_F(Installation, ProgramMayHaveFunctionsOfTheSameName) {
  const std::string own = "#include <cstdlib>\nHRESULT SafeArrayDestroy(SAFEARRAY*) { std::abort(); }\n";
  ExpectFrame(BuildAndRun("pkg-config", Text(kSource / "examples/capture.cpp") + own) / "capture.jpg");
}

}  // namespace
}  // namespace zel
