// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A ServedModem is a modem that a thread of the test serves, reached through socket pairs.
#pragma once

#include "RawClient.h"
#include "modem/client/ControlClient.h"
#include "modem/server/Server.h"
#include "modem/service/Service.h"

#include <thread>
#include <utility>

namespace modem::test {

class ServedModem {
 public:
  explicit ServedModem(Service::Options options = {});
  ~ServedModem();

  static std::pair<UniqueFd, UniqueFd> makePair();
  void adopt(UniqueFd socket) { server.adopt(std::move(socket)); }
  UniqueFd connect();
  // Returns a client that has exchanged hellos.
  RawClient newClient(bool sawAbsence = false);
  ControlClient newControl() { return ControlClient(connect().release()); }

 private:
  Server server{Server::Options{}};
  Service service;
  std::thread thread;
};

}  // namespace modem::test
