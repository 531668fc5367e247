// A client of the installed package: before init the library has an empty cache and no log.
#include <pavo/Manager.h>

#include <iostream>
#include <string>
#include <vector>

int main() {
  const std::vector<std::string> dump = pavo::Manager::getInstance().dump();
  for (const std::string& line : dump) {
    std::cout << '"' << line << "\"\n";
  }
  const bool isAsExpected = dump.size() >= 2 && dump[0].empty() && dump[1] == "Logs:";
  return isAsExpected ? 0 : 1;
}
