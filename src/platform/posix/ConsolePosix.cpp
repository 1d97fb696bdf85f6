#include <unistd.h>

#include <cstdio>

#include "platform/Console.h"

namespace zel {

std::vector<std::string> Utf8Arguments(int argc, char** argv) {
  return {argv, argv + argc};
}

void PrepareConsole() {}

void WriteLogLine(const std::string& line) {
  std::fprintf(stderr, "%s\n", line.c_str());
}

bool IsErrorTerminal() {
  return isatty(STDERR_FILENO) == 1;
}

}  // namespace zel
