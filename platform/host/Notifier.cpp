// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Notifier.h"

#include "ModemConnection.h"
#include "ServiceObject.h"
#include "base/EventFd.h"
#include "base/Poll.h"
#include "base/Thread.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <system_error>

namespace ovix {

namespace {

constexpr int retryFirstMs = 5;
constexpr int retryLastMs = 100;
static_assert(retryFirstMs < retryLastMs);

pavo::UniqueFd makeStopFd() {
  pavo::UniqueFd fd = pavo::makeEventFd();
  if (!fd.isOpen()) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
  return fd;
}

// Returns when the modem has ended the connection or stopFd is readable.
void waitForEnd(int socket, int stopFd) {
  std::array<uint8_t, 512> ignored;
  while (true) {
    std::array<pollfd, 2> fds{{{socket, POLLIN, 0}, {stopFd, POLLIN, 0}}};
    pavo::pollForever(fds);
    if (fds[1].revents != 0) {
      return;
    }
    const ssize_t count = ::recv(socket, ignored.data(), ignored.size(), MSG_DONTWAIT);
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) {
      return;
    }
  }
}

}  // namespace

Notifier::Notifier(ovix_service_object_type serviceObject)
    : service(serviceObject), stopFd(makeStopFd()) {}

Notifier::~Notifier() { stop(); }

void Notifier::setCallback(ovix_client_type ownHandle, ovix_client_notify_cb newCallback,
                           void* data) {
  const pavo::MutexLock lock(mutex);
  if (isStopping) {
    return;
  }
  handle = ownHandle;
  callback = newCallback;
  callbackData = data;
  if (!isWatching) {
    callbacks.start();
    watcher = pavo::startThread("ovix-watcher", [this] { watch(); });
    isWatching = true;
  } else if (isPresent) {
    post(OVIX_CLIENT_SERVICE_AVAILABLE);
  }
}

void Notifier::stop() {
  std::thread ended;
  {
    const pavo::MutexLock lock(mutex);
    isStopping = true;
    ended.swap(watcher);
  }
  pavo::notifyFd(stopFd.get());
  callbacks.stop();
  if (ended.joinable()) {
    ended.join();
  }
}

void Notifier::watch() {
  int retryMs = retryFirstMs;
  while (!isStopRequested(/*waitMs=*/0)) {
    ModemConnection connection;
    if (connectToModem(service->modemPath, wire::Purpose::Watch, connection, stopFd.get()) ==
        OVIX_CLIENT_NO_ERROR) {
      announce(OVIX_CLIENT_SERVICE_AVAILABLE);
      waitForEnd(connection.socket.get(), stopFd.get());
      if (isStopRequested(/*waitMs=*/0)) {
        return;
      }
      noteConnectionLost();
      announce(OVIX_CLIENT_SERVICE_GONE);
      retryMs = retryFirstMs;
    }
    if (isStopRequested(retryMs)) {
      return;
    }
    retryMs = std::min(2 * retryMs, retryLastMs);
  }
}

void Notifier::announce(ovix_client_service_event event) {
  const pavo::MutexLock lock(mutex);
  isPresent = event == OVIX_CLIENT_SERVICE_AVAILABLE;
  post(event);
}

void Notifier::post(ovix_client_service_event event) {
  callbacks.post([callback = callback, handle = handle, service = service, event,
                  data = callbackData] { callback(handle, service, event, data); });
}

bool Notifier::isStopRequested(int waitMs) const {
  std::array<pollfd, 1> fds{{{stopFd.get(), POLLIN, 0}}};
  return pavo::pollUntil(fds, pavo::Clock::now() + std::chrono::milliseconds(waitMs));
}

}  // namespace ovix
