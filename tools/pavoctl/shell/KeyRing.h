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

// Keys have numbers, from 1 on, that are not used again. Main thread only; listeners run on the
// library's thread and only ring a bell.
class KeyRing {
 public:
  enum class Listener { none, waiting, called };

  struct Entry {
    int number = 0;
    int profileId = 0;
    std::string text;      // The key's own: profile and token.
    bool isKnown = false;  // To the library: the profile is still the one that the key stands for.
    bool isPavoProfile = false;  // Made by the library.
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

  // Throws Failure when the library does not know the key any more, and would not call.
  void listen(int number);
  Session::Release release(int number);

  // Readable when a listener has been called.
  int fd() const;
  // Whose listeners have been called since the last time.
  std::vector<Expired> takeExpired();

 private:
  class Bell;

  struct Held {
    Key key;
    Listener listener = Listener::none;
  };

  // Throws Failure when there is none.
  Held& at(int number);

  const std::chrono::milliseconds timeout;
  const std::shared_ptr<Bell> bell;
  std::map<int, Held> keys;
  int lastNumber = 0;
};

}  // namespace pavoctl
