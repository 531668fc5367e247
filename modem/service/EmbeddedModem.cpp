// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/service/EmbeddedModem.h"

#include "base/Thread.h"
#include "base/UniqueFd.h"
#include "modem/server/Server.h"
#include "modem/service/Service.h"

#include <sys/socket.h>

#include <cerrno>
#include <exception>
#include <memory>
#include <utility>

namespace modem {

namespace {

// The server is never destroyed, because clients may use it in destructors that run at exit.
Server& embeddedServer() {
  static Server& server = []() -> Server& {
    auto fresh = std::make_unique<Server>(Server::Options{});
    auto service = std::make_unique<Service>(Service::Options{}, *fresh);
    pavo::startThread("pavo-modem", [&server = *fresh, &service = *service] {
      server.run(service);
    }).detach();
    static_cast<void>(service.release());
    return *fresh.release();
  }();
  return server;
}

}  // namespace

int connectEmbedded() {
  try {
    Server& server = embeddedServer();
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, /*protocol=*/0, ends) != 0) {
      return -1;
    }
    UniqueFd callersEnd(ends[0]);
    server.adopt(UniqueFd(ends[1]));
    return callersEnd.release();
  } catch (const std::exception&) {
    errno = ENOMEM;
    return -1;
  }
}

}  // namespace modem
