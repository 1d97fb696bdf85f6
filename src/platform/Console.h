#pragma once

#include <string>
#include <vector>

/// What a command-line program needs from the system around it.
namespace zel {

/// The program's arguments in UTF-8, the program's name first.
std::vector<std::string> Utf8Arguments(int argc, char** argv);

/// Standard output and error carry bytes as they are written (no line-end translation), shown as UTF-8.
void PrepareConsole();

/// Whether standard error is a terminal that a line can be rewritten on.
bool IsErrorTerminal();

}  // namespace zel
