#pragma once

#include <string>

#include "platform/ComponentTypes.h"

namespace zel::test {

/// Runs a program of the system without a window and waits for its end: its exit code, -1 when it can't be
/// started or does not end within a minute.
inline int RunProgram(const std::wstring& program, const std::wstring& arguments) {
  wchar_t system[MAX_PATH];
  GetSystemDirectoryW(system, MAX_PATH);
  std::wstring line = L"\"" + std::wstring(system) + L"\\" + program + L"\" " + arguments;
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr,
                      &start, &process)) {
    return -1;
  }
  DWORD code = static_cast<DWORD>(-1);
  if (WaitForSingleObject(process.hProcess, 60'000) == WAIT_OBJECT_0) {
    GetExitCodeProcess(process.hProcess, &code);
  } else {
    TerminateProcess(process.hProcess, code);
  }
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return static_cast<int>(code);
}

}  // namespace zel::test
