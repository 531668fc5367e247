#include "modem/service/EmbeddedModem.h"

#include <signal.h>
#include <sys/socket.h>

#include <cerrno>
#include <exception>
#include <thread>
#include <utility>

#include "modem/UniqueFd.h"
#include "modem/server/Server.h"
#include "modem/service/Service.h"

namespace modem {

namespace {

// Starts the thread with all signals blocked, because they are for the program's own threads.
void startServing(Server& server, Service& service) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  try {
    std::thread([&server, &service] { server.run(service); }).detach();
  } catch (...) {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    throw;
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

// The server is never destroyed, because clients may use it in destructors that run at exit.
Server& embeddedServer() {
  static Server& server = []() -> Server& {
    auto fresh = std::make_unique<Server>(Server::Options{});
    auto service = std::make_unique<Service>(Service::Options{}, *fresh);
    startServing(*fresh, *service);
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
