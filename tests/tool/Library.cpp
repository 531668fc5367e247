// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Library.h"

#include "Deadline.h"

#include <cstdlib>

namespace pavo::test {
namespace {

constexpr int deleteEvent = 2;

struct Process {
  ModemProcess modem{
      ModemProcessOptions{.profiles = {}, .keepsStore = false, .arguments = {"--capacity", "255"}}};
  ModemEnvironment environment{modem.socketPath()};
  pavoctl::Session session{{.timeout = patience()}};
};

Process& process() {
  // Without this file the log would go to standard error.
  ::setenv("PAVO_DIAG_FILE", "/dev/null", /*overwrite=*/0);
  static Process shared;
  return shared;
}

}  // namespace

LibraryTest::LibraryTest() : modem(process().modem), session(process().session) {}

void LibraryTest::setProfiles(const nlohmann::json& profiles) {
  const nlohmann::json present = modem.control("show")["profiles"];
  for (const auto& profile : present) {
    modem.control("delete", {{"index", profile["index"]}});
  }
  for (const auto& profile : profiles) {
    modem.control("create", profile);
  }
  settle();
  session.readAll();
}

void LibraryTest::settle() {
  // Indications are handled in the order in which they come. An indication for an unknown profile
  // changes nothing and leaves a line in the log.
  static int fence = 0;
  const int index = 250 + fence++ % 5;
  const std::string start = "ProfileCache: onIndication < " + std::to_string(index) + " Delete";
  const std::string before(pavoctl::Session::dump().lastLine(start));
  modem.control("indicate", {{"event", deleteEvent}, {"index", index}});
  ASSERT_TRUE(waitUntil([&] { return pavoctl::Session::dump().lastLine(start) != before; }));
}

}  // namespace pavo::test
