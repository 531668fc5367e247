// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ModemConnection.h"

#include "DebugLine.h"
#include "base/Poll.h"
#include "modem/service/EmbeddedModem.h"

#include <fcntl.h>

#include <array>
#include <atomic>

namespace ovix {

namespace {

std::atomic<bool> sawAbsence{false};

pavo::UniqueFd openBlockingSocket(const std::string& path) {
  pavo::UniqueFd fd = path.empty() ? pavo::UniqueFd(modem::connectEmbedded()) : openSocket(path);
  if (fd.isOpen()) {
    const int flags = ::fcntl(fd.get(), F_GETFL);
    ::fcntl(fd.get(), F_SETFL, flags & ~O_NONBLOCK);
  }
  return fd;
}

}  // namespace

ovix_client_error_type connectToModem(const std::string& modemPath, wire::Purpose purpose,
                                      ModemConnection& connection, int stopFd) {
  const wire::Hello hello{purpose, purpose == wire::Purpose::Open && sawAbsence.exchange(false)};
  connection = {};
  connection.socket = openBlockingSocket(modemPath);
  const auto answer = connection.socket.isOpen() ? exchangeHellos(connection.socket.get(), hello,
                                                                  connection.frames, stopFd)
                                                 : std::nullopt;
  if (answer && answer->refusal == 0) {
    return OVIX_CLIENT_NO_ERROR;
  }
  connection = {};
  connection.isRefused = answer.has_value();
  // A caller that was stopped has not observed an absence of the modem.
  std::array<pollfd, 1> stop{{{stopFd, POLLIN, 0}}};
  if (stopFd < 0 || !pavo::pollUntil(stop, pavo::Clock::now())) {
    sawAbsence.store(true);
  }
  if (answer) {
    writeDebugLine("the modem refuses with %d", answer->refusal);
  }
  return answer ? answer->refusal : OVIX_CLIENT_SERVICE_ERROR;
}

void noteConnectionLost() { sawAbsence.store(true); }

}  // namespace ovix
