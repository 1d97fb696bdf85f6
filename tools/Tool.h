#pragma once

#include <string>
#include <vector>

namespace zel::tool {

/// The whole program: reads the command line (without the program's name, UTF-8), runs the verb, reports
/// errors on standard error and answers with the exit code.
int RunTool(const std::vector<std::string>& arguments);

}  // namespace zel::tool
