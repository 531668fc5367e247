// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The verb watch: prints every change of the modem's profiles as the library sees it.
#pragma once

#include "Output.h"
#include "StopSignal.h"
#include "profiles/Profile.h"
#include "session/Session.h"

#include <chrono>
#include <map>
#include <memory>
#include <string>

namespace pavoctl {

// Two things tell that something has changed. Expiration listeners run when a profile that is known
// goes or changes; they run on the library's worker thread, must not call the library, and only
// wake the main thread. For a profile that is new there is no listener yet, so the cache's dump is
// looked at now and then: that asks neither the worker nor the modem, writes no log line and takes
// no key. Either way the profiles are then listed again and compared with what was there before.
class Watch {
 public:
  Watch(Session& watched, Output& out, bool asJson, Secrets secretsShown);
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  ~Watch();

  // Until a signal comes.
  void run(StopSignal& stop);

 private:
  class Alarm;

  struct Seen {
    Profile profile;
    Key key;
    std::shared_ptr<Alarm> alarm;  // Rings when the profile that key stands for has expired.
  };
  using SeenById = std::map<int, Seen>;

  void look();
  void notice(const Dump& dump);
  void noticeUnreadable(const Dump& dump);
  // False when the profiles changed meanwhile: it has to be done again.
  bool scan();
  bool collect(SeenById& now);
  void compare(const SeenById& now);
  void print(const Json& event, const std::string& text);

  Session& session;
  Output& output;
  const bool isJson;
  const Secrets secrets;
  const std::shared_ptr<int> wakeFd;

  SeenById seen;
  std::vector<std::string> scannedCache;
  bool isScanDue = true;
  // Between the modem's loss and the next list of profiles the cache says nothing about the modem.
  bool isCurrent = true;
  // The library does not try again to read a profile that it could not read; it does with a
  // refresh.
  std::size_t unreadable = 0;
  std::chrono::milliseconds retryInterval{0};
  std::chrono::steady_clock::time_point retryTime{};
  std::string lastWaiting;
  std::string lastRefreshed;
};

}  // namespace pavoctl
