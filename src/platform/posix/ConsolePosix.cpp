#include <unistd.h>

#include "platform/Console.h"

namespace zel {

std::vector<std::string> Utf8Arguments(int argc, char** argv) {
  return {argv, argv + argc};
}

void PrepareConsole() {}

bool IsErrorTerminal() {
  return isatty(STDERR_FILENO) == 1;
}

}  // namespace zel
