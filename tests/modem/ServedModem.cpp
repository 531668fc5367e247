// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ServedModem.h"

#include <sys/socket.h>

#include <stdexcept>
#include <utility>

namespace modem::test {

ServedModem::ServedModem(Service::Options options)
    : service(std::move(options), server), thread([this] { server.run(service); }) {}

ServedModem::~ServedModem() {
  server.stop();
  thread.join();
}

std::pair<UniqueFd, UniqueFd> ServedModem::makePair() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, /*protocol=*/0, ends) != 0) {
    throw std::runtime_error("no socket pair");
  }
  return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

UniqueFd ServedModem::connect() {
  auto [modemsEnd, callersEnd] = makePair();
  adopt(std::move(modemsEnd));
  return std::move(callersEnd);
}

RawClient ServedModem::newClient(bool sawAbsence) {
  RawClient client(connect());
  client.hello(sawAbsence);
  return client;
}

}  // namespace modem::test
