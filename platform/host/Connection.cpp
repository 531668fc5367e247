#include "Connection.h"

#include <fcntl.h>

#include <array>
#include <atomic>

#include "Trace.h"
#include "base/Poll.h"
#include "modem/service/EmbeddedModem.h"

namespace ovix {
namespace {

using modem::UniqueFd;

std::atomic<bool> sawAbsence{false};

UniqueFd openSocket(const std::string& path) {
  UniqueFd fd = path.empty() ? UniqueFd(modem::connectEmbedded()) : connectToSocket(path);
  if (fd.isOpen()) {
    const int flags = ::fcntl(fd.get(), F_GETFL);
    ::fcntl(fd.get(), F_SETFL, flags & ~O_NONBLOCK);
  }
  return fd;
}

}  // namespace

ovix_client_error_type connectToModem(const std::string& modemPath, Purpose purpose,
                                      Connection& connection, int stopFd) {
  const modem::Hello hello{purpose, purpose == Purpose::Open && sawAbsence.exchange(false)};
  connection = {};
  connection.socket = openSocket(modemPath);
  const auto answer = connection.socket.isOpen()
                          ? greet(connection.socket.get(), hello, connection.frames, stopFd)
                          : std::nullopt;
  if (answer && answer->refusal == 0) {
    return OVIX_CLIENT_NO_ERROR;
  }
  connection = {};
  connection.isRefused = answer.has_value();
  // Who stops waiting has missed nothing.
  std::array<pollfd, 1> stop{{{stopFd, POLLIN, 0}}};
  if (stopFd < 0 || !pollUntil(stop, Clock::now())) {
    sawAbsence.store(true);
  }
  if (answer) {
    trace("the modem refuses with %d", answer->refusal);
  }
  return answer ? answer->refusal : OVIX_CLIENT_SERVICE_ERROR;
}

void noteConnectionLost() { sawAbsence.store(true); }

}  // namespace ovix
