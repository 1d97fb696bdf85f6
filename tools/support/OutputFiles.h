#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>

namespace zel::tool {

enum class FileFormat { Bitmap, Jpeg, Raw, Bgra };

std::filesystem::path ToPath(std::string_view utf8);
std::string ToText(const std::filesystem::path& path);

/// The name of a picture, or of a series of them: `{frame}` or `{frame:06}` in the file's name stands for the
/// number of the frame.
class FilePattern {
 public:
  /// Throws a usage error for an ending that stands for none of `formats` or an unknown piece in braces.
  FilePattern(std::string_view utf8, std::initializer_list<FileFormat> formats);

  FileFormat Format() const { return format_; }
  bool IsNumbered() const { return numbered_; }
  const std::filesystem::path& Folder() const { return folder_; }
  std::filesystem::path PathOf(std::int64_t frame) const;
  /// Whether a file of this name belongs to frames 1 to `last` of the series: a picture, or the description
  /// beside a raw file.
  bool Covers(std::string_view fileName, std::int64_t last) const;

  /// Throws unless files can be written for frames 1 to `last`: a usage error for a missing folder, and for
  /// files that are there already unless `overwrite`; a failure for a folder that can't be written to.
  void CheckWritable(std::int64_t last, bool overwrite) const;

 private:
  std::string NameOf(std::int64_t frame) const;

  FileFormat format_;
  std::filesystem::path folder_;
  std::string before_, after_;  ///< of the file's name, around the number
  bool numbered_ = false;
  int digits_ = 0;  ///< at least so many, padded with zeros
};

/// A file that appears under its name only when it is whole.
class OutputFile {
 public:
  explicit OutputFile(std::filesystem::path target);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  const std::filesystem::path& TemporaryPath() const { return temporary_; }
  /// Throws when the file can't get its name.
  void Commit();

 private:
  std::filesystem::path target_, temporary_;
  bool committed_ = false;
};

}  // namespace zel::tool
