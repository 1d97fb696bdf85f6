#include "tools/support/OutputFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <fstream>

#include "tools/support/ToolError.h"

namespace zel::tool {
namespace {

namespace fs = std::filesystem;

struct Ending {
  std::string_view text;
  FileFormat format;
};
constexpr Ending kEndings[] = {{".bmp", FileFormat::Bitmap},
                               {".jpg", FileFormat::Jpeg},
                               {".jpeg", FileFormat::Jpeg},
                               {".raw", FileFormat::Raw},
                               {".bgra", FileFormat::Bgra}};

FileFormat FormatOf(std::string_view name, std::initializer_list<FileFormat> formats) {
  const std::size_t dot = name.rfind('.');
  std::string ending(dot == std::string_view::npos ? "" : name.substr(dot));
  std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return std::tolower(c); });
  std::string known;
  for (const auto& [text, format] : kEndings) {
    if (std::ranges::find(formats, format) == formats.end()) continue;
    if (ending == text) return format;
    known += fmt::format("{}{}", known.empty() ? "" : ", ", text);
  }
  throw ToolError(kExitUsage, fmt::format("'{}' ends in none of {}", name, known));
}

}  // namespace

fs::path ToPath(std::string_view utf8) {
  return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string ToText(const fs::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

FilePattern::FilePattern(std::string_view utf8, std::initializer_list<FileFormat> formats) {
  const fs::path path = ToPath(utf8);
  folder_ = path.parent_path();
  const std::string name = ToText(path.filename());
  format_ = FormatOf(name, formats);
  const std::size_t open = name.find('{');
  before_ = name.substr(0, open);
  if (open == std::string::npos) return;

  const std::size_t close = name.find('}', open);
  const std::string inside = name.substr(open + 1, close == std::string::npos ? close : close - open - 1);
  numbered_ = inside == "frame";
  constexpr std::string_view kPadded = "frame:0";
  if (inside.starts_with(kPadded)) {
    const char* end = inside.data() + inside.size();
    const auto [stop, error] = std::from_chars(inside.data() + kPadded.size(), end, digits_);
    numbered_ = error == std::errc{} && stop == end && digits_ >= 1 && digits_ <= 18;
  }
  if (close == std::string::npos || !numbered_) {
    throw ToolError(kExitUsage,
                    fmt::format("'{}': only {{frame}} and {{frame:06}} can stand in braces", utf8));
  }
  after_ = name.substr(close + 1);
  if (after_.find('{') != std::string::npos) {
    throw ToolError(kExitUsage, fmt::format("'{}': {{frame}} can stand only once", utf8));
  }
}

std::string FilePattern::NameOf(std::int64_t frame) const {
  return numbered_ ? fmt::format("{}{:0{}}{}", before_, frame, digits_, after_) : before_;
}

fs::path FilePattern::PathOf(std::int64_t frame) const {
  return folder_ / ToPath(NameOf(frame));
}

bool FilePattern::Covers(std::string_view fileName, std::int64_t last) const {
  constexpr std::string_view kDescription = ".json";
  if (format_ == FileFormat::Raw && fileName.ends_with(kDescription))
    fileName.remove_suffix(kDescription.size());
  if (!numbered_) return fileName == before_;
  if (fileName.size() <= before_.size() + after_.size()) return false;
  const std::string_view number =
      fileName.substr(before_.size(), fileName.size() - before_.size() - after_.size());
  std::int64_t frame = 0;
  const auto [stop, error] = std::from_chars(number.data(), number.data() + number.size(), frame);
  // Comparing with the whole name also refuses other paddings, which would be other files.
  return error == std::errc{} && stop == number.data() + number.size() && frame >= 1 && frame <= last &&
         fileName == NameOf(frame);
}

void FilePattern::CheckWritable(std::int64_t last, bool overwrite) const {
  const fs::path folder = folder_.empty() ? fs::path(".") : folder_;
  std::error_code error;
  if (!fs::is_directory(folder, error)) {
    throw ToolError(kExitUsage, fmt::format("folder '{}' does not exist", ToText(folder)));
  }
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    const std::string name = ToText(entry.path().filename());
    if (!Covers(name, last)) continue;
    if (entry.is_directory(error)) {
      throw ToolError(kExitUsage, fmt::format("'{}' is a folder", ToText(folder_ / ToPath(name))));
    }
    if (!overwrite) {
      throw ToolError(kExitUsage, fmt::format("'{}' exists already", ToText(folder_ / ToPath(name))),
                      "--force overwrites it");
    }
  }
  // Found out now, not after the capture. The file object removes it again.
  const OutputFile probe(PathOf(1));
  if (!std::ofstream(probe.TemporaryPath(), std::ios::binary)) {
    throw ToolError(kExitFailed, fmt::format("'{}' can't be written", ToText(PathOf(1))));
  }
}

OutputFile::OutputFile(fs::path target) : target_(std::move(target)), temporary_(target_) {
  temporary_ += ".part";
}

OutputFile::~OutputFile() {
  std::error_code ignored;
  if (!committed_) fs::remove(temporary_, ignored);
}

void OutputFile::Commit() {
  std::error_code error;
  fs::rename(temporary_, target_, error);
  if (error)
    throw ToolError(kExitFailed, fmt::format("'{}' can't be written: {}", ToText(target_), error.message()));
  committed_ = true;
}

}  // namespace zel::tool
