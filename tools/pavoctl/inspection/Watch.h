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

// Two sources show that something has changed. Expiration listeners run when a known profile is
// deleted or changed. They run on the library's worker thread, must not call the library, and only
// wake the main thread. A new profile has no listener yet, so the cache's dump is read at
// intervals. Reading it uses neither the worker nor the modem, writes no log line and takes no key.
// After either, the profiles are listed again and compared with the earlier list.
class Watch {
 public:
  Watch(Session& watched, Output& out, bool asJson, Secrets secretsShown);
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  ~Watch();

  // Runs until a signal comes.
  void run(StopSignal& stop);

 private:
  class Alarm;

  struct Seen {
    Profile profile;
    Key key;
    std::shared_ptr<Alarm> alarm;  // rings when the profile of the key has expired
  };
  using SeenById = std::map<int, Seen>;

  void look();
  void notice(const Dump& dump);
  void noticeUnreadable(const Dump& dump);
  // Both return false when the profiles changed or the modem was lost meanwhile. The caller then
  // repeats the call.
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
  // isCurrent is false from the loss of the modem to the next list of profiles. Meanwhile the cache
  // says nothing about the modem.
  bool isCurrent = true;
  // The number of profiles that the library could not read. It tries to read them again only at a
  // refresh.
  std::size_t unreadable = 0;
  std::chrono::milliseconds retryInterval{0};
  std::chrono::steady_clock::time_point retryTime{};
  std::string lastWaiting;
  std::string lastRefreshed;
};

}  // namespace pavoctl
