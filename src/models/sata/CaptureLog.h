#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace zel {

/// The log is begun anew when it has grown to this many bytes.
constexpr std::uintmax_t kCaptureLogLimit = 64 * 1024;

/// "ZELCam39.log" in `DebugFolder()`.
std::filesystem::path CaptureLogPath();

/// Appends a line with the time (UTC) to the log. Nothing happens when the file can't be written: the log is
/// for support and must not cost a capture. Any thread.
void LogCapture(std::string_view what) noexcept;

}  // namespace zel
