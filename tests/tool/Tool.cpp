// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Tool.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace pavo::test {
namespace {

ModemProcessOptions ownProfiles() {
  ModemProcessOptions options;
  options.profiles = nlohmann::json::parse(R"({"profiles": [
    {"index": 1, "apn": "internet", "pdpType": "V4V6", "apnTypes": 17,
     "user": "me", "password": "hush,AuthType=PAP,hush", "auth": 3},
    {"index": 2, "apn": "ims", "pdpType": "V6", "apnTypes": 2, "class": 1}]})");
  return options;
}

// When the tool gives up on the library, it deliberately ends without joining threads. A race
// detector would report them as leaks. It would also delay the end of each process by a second.
std::vector<std::string> environmentOf(const std::string& modemSocket) {
  const char* options = std::getenv("TSAN_OPTIONS");
  return {"OVIX_MODEM=" + modemSocket,
          "TSAN_OPTIONS=" + std::string(options != nullptr ? options : "") +
              ":report_thread_leaks=0:atexit_sleep_ms=50"};
}

}  // namespace

nlohmann::json ToolResult::json() const {
  return nlohmann::json::parse(output, /*cb=*/nullptr, /*allow_exceptions=*/false);
}

std::ostream& operator<<(std::ostream& out, const ToolResult& result) {
  return out << "exit " << result.exit.code << " signal " << result.exit.signal << "\noutput:\n"
             << result.output << "errors:\n"
             << result.errors;
}

std::unique_ptr<ChildProcess> startTool(const std::string& modemSocket, const Arguments& arguments,
                                        const std::string& input) {
  Arguments command{PAVOCTL_PROGRAM};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return std::make_unique<ChildProcess>(
      command, ChildProcessOptions{
                   .environment = environmentOf(modemSocket), .workingFolder = {}, .input = input});
}

ToolResult finish(ChildProcess& process) {
  const auto exit = process.waitForExit();
  if (!exit) {
    throw std::runtime_error("pavoctl has not ended; it wrote: " + process.output() +
                             process.errors());
  }
  return {*exit, process.output(), process.errors()};
}

ToolResult runTool(const std::string& modemSocket, const Arguments& arguments,
                   const std::string& input) {
  return finish(*startTool(modemSocket, arguments, input));
}

std::unique_ptr<TerminalProcess> startToolOnTerminal(const std::string& modemSocket,
                                                     const Arguments& arguments) {
  Arguments command{PAVOCTL_PROGRAM};
  command.insert(command.end(), arguments.begin(), arguments.end());
  std::vector<std::string> environment = environmentOf(modemSocket);
  // The user who runs the tests may have configured the line editor differently.
  environment.emplace_back("EDITRC=/dev/null");
  return std::make_unique<TerminalProcess>(command, environment);
}

std::string writeFile(const TemporaryFolder& folder, const std::string& name,
                      const std::string& text) {
  const std::string path = folder.file(name);
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

ToolTest::ToolTest() : modem(ownProfiles()) {}

nlohmann::json ToolTest::profileOnModem(int index) {
  const nlohmann::json table = modem.control("show");
  for (const auto& profile : table["profiles"]) {
    if (profile["index"] == index) {
      return profile;
    }
  }
  return nullptr;
}

}  // namespace pavo::test
