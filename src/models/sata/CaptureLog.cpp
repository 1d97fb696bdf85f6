#include "models/sata/CaptureLog.h"

#include <chrono>
#include <cstdio>
#include <mutex>
#include <string>

#include "platform/Files.h"

namespace zel {
namespace {

std::string TimeText(std::chrono::system_clock::time_point now) {
  const auto day = std::chrono::floor<std::chrono::days>(now);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(std::chrono::floor<std::chrono::milliseconds>(now - day));
  char text[64];
  std::snprintf(text, sizeof(text), "%04d-%02u-%02u %02d:%02d:%02d.%03d", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                static_cast<int>(time.seconds().count()), static_cast<int>(time.subseconds().count()));
  return text;
}

}  // namespace

std::filesystem::path CaptureLogPath() {
  return DebugFolder() / "ZELCam39.log";
}

void LogCapture(std::string_view what) noexcept try {
  static std::mutex mutex;
  const std::string line = TimeText(std::chrono::system_clock::now()) + "  " + std::string(what) + '\n';
  const std::filesystem::path path = CaptureLogPath();
  const std::lock_guard lock(mutex);
  // Anyone may put anything into the folder: what is not a plain file is left alone.
  std::error_code unknown;
  const auto kind = std::filesystem::symlink_status(path, unknown).type();
  if (kind != std::filesystem::file_type::regular && kind != std::filesystem::file_type::not_found) return;
  const std::uintmax_t size = std::filesystem::file_size(path, unknown);
  const bool anew = !unknown && size + line.size() > kCaptureLogLimit;
  if (const FilePtr file = OpenFile(path, anew ? "wb" : "ab"))
    std::fwrite(line.data(), 1, line.size(), file.get());
} catch (...) {
  // No memory for a line: the capture goes on without it.
}

}  // namespace zel
