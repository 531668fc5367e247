// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "shell/KeyRing.h"

#include "Errors.h"
#include "session/Patience.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <utility>

namespace pavoctl {

// The state that a listener uses. The listener shares its ownership, because it may run until its
// key has gone.
class KeyRing::Bell {
 public:
  Bell() : wakeFd(::eventfd(/*initval=*/0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (wakeFd < 0) {
      throw Failure("cannot create an eventfd: " + std::string(std::strerror(errno)));
    }
  }
  Bell(const Bell&) = delete;
  Bell& operator=(const Bell&) = delete;
  ~Bell() { ::close(wakeFd); }

  void ring(Expired expired) {
    {
      const std::lock_guard lock(mutex);
      rung.push_back(expired);
    }
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(wakeFd, &one, sizeof one);
  }

  std::vector<Expired> take() {
    std::uint64_t count = 0;
    [[maybe_unused]] const auto got = ::read(wakeFd, &count, sizeof count);
    const std::lock_guard lock(mutex);
    return std::exchange(rung, {});
  }

  int fd() const { return wakeFd; }

 private:
  const int wakeFd;
  std::mutex mutex;
  std::vector<Expired> rung;
};

KeyRing::KeyRing(std::chrono::milliseconds releaseTimeout)
    : timeout(releaseTimeout), bell(std::make_shared<Bell>()) {}

KeyRing::~KeyRing() {
  const Patience patience(timeout, "the modem holds up the release of keys: profiles may be left");
  keys.clear();
}

int KeyRing::keep(Key key) {
  keys.emplace(++lastNumber, Held{std::move(key)});
  return lastNumber;
}

std::vector<KeyRing::Entry> KeyRing::entries() const {
  const Patience patience(timeout, "the modem keeps the library too busy to tell of the keys");
  std::vector<Entry> all;
  for (const auto& [number, held] : keys) {
    const auto params = pavo::Manager::getInstance().getProfile(held.key);
    all.push_back({number, held.key->getProfileId(), held.key->dump(), params.has_value(),
                   params && params->getIsPavoProfile(), held.listener});
  }
  return all;
}

std::vector<int> KeyRing::numbers() const {
  std::vector<int> all;
  for (const auto& [number, held] : keys) {
    all.push_back(number);
  }
  return all;
}

int KeyRing::profileOf(int number) const {
  const auto found = keys.find(number);
  if (found == keys.end()) {
    throw Failure("there is no key " + std::to_string(number));
  }
  return found->second.key->getProfileId();
}

KeyRing::Held& KeyRing::at(int number) {
  profileOf(number);
  return keys.at(number);
}

void KeyRing::listen(int number) {
  Held& held = at(number);
  const std::string name = "key " + std::to_string(number);
  if (held.listener != Listener::none) {
    throw Failure(name + " has its listener already");
  }
  const Patience patience(timeout, "the library does not take the listener of " + name);
  held.key->registerExpirationListener(
      [ring = bell, expired = Expired{number, held.key->getProfileId()}] { ring->ring(expired); });
  // The library silently drops a registration for a profile that has gone.
  if (!pavo::Manager::getInstance().getProfile(held.key)) {
    throw Failure(name + " is no longer known: its profile has gone or changed");
  }
  held.listener = Listener::waiting;
}

Session::Release KeyRing::release(int number) {
  const std::string name = "profile " + std::to_string(profileOf(number));
  const Patience patience(timeout,
                          "the modem holds up the release of " + name + ": it may be left there");
  auto taken = keys.extract(number);
  return Session::release(std::move(taken.mapped().key));
}

int KeyRing::fd() const { return bell->fd(); }

std::vector<KeyRing::Expired> KeyRing::takeExpired() {
  std::vector<Expired> all = bell->take();
  for (const auto& expired : all) {
    if (const auto found = keys.find(expired.number); found != keys.end()) {
      found->second.listener = Listener::called;
    }
  }
  return all;
}

}  // namespace pavoctl
