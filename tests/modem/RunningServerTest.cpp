// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/program/RunningServer.h"
#include "modem/service/Service.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

namespace modem::test {
namespace {

constexpr int noDescriptor = -1;

void (*handlerOf(int signal))(int) {
  struct sigaction action = {};
  sigaction(signal, nullptr, &action);
  return action.sa_handler;
}

// Ends the process with code 0 when the signal handler was removed.
void runAndRaiseAfterwards(int signal) {
  {
    Server server(Server::Options{});
    Service service({}, server);
    server.stop();
    runServer(server, service, "a path", noDescriptor);
  }
  // A handler that was still installed would stop a server that no longer exists.
  const bool isIgnored = handlerOf(signal) == SIG_IGN;
  std::raise(signal);
  std::_Exit(isIgnored ? 0 : 1);
}

class RunningServerSignal : public testing::TestWithParam<int> {};

TEST_P(RunningServerSignal, Signal_AfterTheRun_ReachesNoServer) {
  EXPECT_EXIT(runAndRaiseAfterwards(GetParam()), testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(Signals, RunningServerSignal, testing::Values(SIGTERM, SIGINT));

}  // namespace
}  // namespace modem::test
