#include "platform/Console.h"
#include "tools/Tool.h"

int main(int argc, char** argv) {
  zel::PrepareConsole();
  std::vector<std::string> arguments = zel::Utf8Arguments(argc, argv);
  if (!arguments.empty()) arguments.erase(arguments.begin());
  return zel::tool::RunTool(arguments);
}
