// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The keys that a shell keeps between its commands.
#pragma once

#include "session/Session.h"

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace pavoctl {

// The keys have numbers from 1 on. A number is never used again. The ring is for the main thread
// only. The listeners run on the library's thread and only ring a bell.
class KeyRing {
 public:
  enum class Listener { none, waiting, called };

  struct Entry {
    int number = 0;
    int profileId = 0;
    std::string text;  // the key's own text: profile and token
    // The library knows the key: the profile is still the one that the key stands for.
    bool isKnown = false;
    bool isPavoProfile = false;  // The library made the profile.
    Listener listener = Listener::none;
  };

  struct Expired {
    int number = 0;
    int profileId = 0;
  };

  explicit KeyRing(std::chrono::milliseconds releaseTimeout);
  KeyRing(const KeyRing&) = delete;
  KeyRing& operator=(const KeyRing&) = delete;
  ~KeyRing();

  int keep(Key key);
  std::vector<Entry> entries() const;
  std::vector<int> numbers() const;
  int profileOf(int number) const;

  // Throws Failure when the library no longer knows the key, because it would never call the
  // listener.
  void listen(int number);
  Session::Release release(int number);

  // The descriptor is readable when a listener has been called.
  int fd() const;
  // Returns the keys whose listeners have been called since the last call.
  std::vector<Expired> takeExpired();

 private:
  class Bell;

  struct Held {
    Key key;
    Listener listener = Listener::none;
  };

  // Throws Failure when no key has that number.
  Held& at(int number);

  const std::chrono::milliseconds timeout;
  const std::shared_ptr<Bell> bell;
  std::map<int, Held> keys;
  int lastNumber = 0;
};

}  // namespace pavoctl
