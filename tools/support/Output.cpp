#include "tools/support/Output.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "tools/support/ToolError.h"
#include "tools/support/Words.h"

namespace zel::tool {

void PrintLine(std::string_view line) {
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
  if (std::fflush(stdout) != 0) throw ToolError(kExitFailed, "standard output can't be written");
}

void PrintJson(const Json& value) {
  // Names of files need not be proper UTF-8.
  PrintLine(value.dump(-1, ' ', false, Json::error_handler_t::replace));
}

void PrintJsonArray(const std::vector<Json>& elements) {
  std::string text = "[";
  for (std::size_t n = 0; n < elements.size(); ++n) text += (n == 0 ? "\n" : ",\n") + elements[n].dump();
  PrintLine(text + (elements.empty() ? "]" : "\n]"));
}

void PrintTable(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], row[c].size());
  }
  std::vector<bool> isNumber(widths.size(), true);
  for (std::size_t r = 1; r < rows.size(); ++r) {
    for (std::size_t c = 0; c < rows[r].size(); ++c) {
      const std::string& cell = rows[r][c];
      if (!cell.empty() && cell != "-" && !ParseNumber(cell)) isNumber[c] = false;
    }
  }
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t c = 0; c < row.size(); ++c) {
      line +=
          isNumber[c] ? fmt::format("{:>{}}", row[c], widths[c]) : fmt::format("{:<{}}", row[c], widths[c]);
      line += "  ";
    }
    line.erase(line.find_last_not_of(' ') + 1);
    PrintLine(line);
  }
}

void PrintWarning(const Globals& globals, std::string_view text) {
  if (!globals.quiet) fmt::print(stderr, "zelcam: warning: {}\n", text);
}

std::string ResultText(std::int32_t result) {
  return fmt::format("0x{:08X}", static_cast<std::uint32_t>(result));
}

}  // namespace zel::tool
