#pragma once

#include <string>
#include <vector>

/// Programs and the text around them.
namespace zel {

/// The program's arguments in UTF-8, the program's name first.
std::vector<std::string> Utf8Arguments(int argc, char** argv);

/// Standard output and error carry bytes as they are written (no line-end translation), shown as UTF-8.
void PrepareConsole();

/// One line for whoever looks for what went wrong: to standard error, and where the system collects such
/// lines.
void WriteLogLine(const std::string& line);

/// Whether standard error is a terminal that a line can be rewritten on.
bool IsErrorTerminal();

}  // namespace zel
