#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <stdlib.h>

#include "platform/ComponentTypes.h"
// Needs windows.h first.
#include <shellapi.h>

#include "platform/Console.h"

namespace zel {
namespace {

std::string Narrow(const wchar_t* text) {
  // With -1 the size includes the terminating zero.
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (size <= 1) return {};
  std::string narrow(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), size, nullptr, nullptr);
  narrow.pop_back();
  return narrow;
}

}  // namespace

std::vector<std::string> Utf8Arguments(int argc, char** argv) {
  int count = 0;
  wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
  if (wide == nullptr) return {argv, argv + argc};
  std::vector<std::string> arguments;
  for (int n = 0; n < count; ++n) arguments.push_back(Narrow(wide[n]));
  LocalFree(wide);
  return arguments;
}

void PrepareConsole() {
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
  SetConsoleOutputCP(CP_UTF8);
}

void WriteLogLine(const std::string& line) {
  fprintf(stderr, "%s\n", line.c_str());
  fflush(stderr);
  // A program with windows has no standard error that anybody sees.
  OutputDebugStringA((line + "\n").c_str());
}

bool IsErrorTerminal() {
  // _isatty would also take the null device for a terminal.
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

}  // namespace zel
