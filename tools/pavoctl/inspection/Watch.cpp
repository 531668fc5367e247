// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "inspection/Watch.h"

#include "Errors.h"
#include "Table.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>

namespace pavoctl {
namespace {

using pavo::Manager;

constexpr int lookIntervalMs = 50;
constexpr std::chrono::milliseconds retryIntervalFirst{500};
constexpr std::chrono::milliseconds retryIntervalMax{60'000};

std::shared_ptr<int> makeWakeFd() {
  const int fd = ::eventfd(/*initval=*/0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (fd < 0) {
    throw Failure("cannot create an eventfd: " + std::string(std::strerror(errno)));
  }
  return {new int(fd), [](const int* owned) {
            ::close(*owned);
            delete owned;
          }};
}

// Returns the time in UTC, as in 2026-11-21T03:00:00.123Z.
std::string timeNow() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  std::tm utc{};
  ::gmtime_r(&seconds, &utc);
  char date[32];
  std::strftime(date, sizeof date, "%FT%T", &utc);
  char text[48];
  std::snprintf(text, sizeof text, "%s.%03dZ", date, static_cast<int>(milliseconds));
  return text;
}

}  // namespace

// The state that a listener uses. The listener shares its ownership, because it may run until its
// key has gone.
class Watch::Alarm {
 public:
  explicit Alarm(std::shared_ptr<int> fd) : wakeFd(std::move(fd)) {}

  void ring() {
    isRung = true;
    const std::uint64_t one = 1;
    // The write fails only when the counter is full of wake-ups that have not been read yet.
    [[maybe_unused]] const auto written = ::write(*wakeFd, &one, sizeof one);
  }
  bool hasRung() const { return isRung; }

 private:
  const std::shared_ptr<int> wakeFd;
  std::atomic<bool> isRung = false;
};

Watch::Watch(Session& watched, Output& out, bool asJson, Secrets secretsShown)
    : session(watched), output(out), isJson(asJson), secrets(secretsShown), wakeFd(makeWakeFd()) {}

Watch::~Watch() = default;

void Watch::run(StopSignal& stop) {
  const Dump start = Session::dump();
  lastWaiting = start.lastLine(message::waitingForService);
  lastRefreshed = start.lastLine(message::refreshed);
  while (!collect(seen)) {
    session.readAll();
  }
  Json profiles = Json::array();
  for (const auto& [id, known] : seen) {
    profiles.push_back(toJson(known.profile, secrets));
  }
  print(Json{{"event", "watching"}, {"profiles", profiles}},
        "watching " + counted(seen.size(), "profile"));
  noticeUnreadable(Session::dump());
  while (!stop.waitFor(*wakeFd, lookIntervalMs)) {
    look();
  }
}

void Watch::look() {
  std::uint64_t count = 0;
  if (::read(*wakeFd, &count, sizeof count) == sizeof count) {
    isScanDue = true;
  }
  const Dump dump = Session::dump();
  notice(dump);
  noticeUnreadable(dump);
  if (dump.cache != scannedCache) {
    isScanDue = true;
  }
  const bool isRetryDue = unreadable > 0 && std::chrono::steady_clock::now() >= retryTime;
  if (dump.hasLostList() || (isCurrent && isRetryDue)) {
    // The modem is there but has not answered. The library does not try again by itself.
    Manager::getInstance().refresh(pavo::PDC_REFRESH_COMPLETED);
    retryInterval = std::min(2 * retryInterval, retryIntervalMax);
    retryTime = std::chrono::steady_clock::now() + retryInterval;
  } else if (isScanDue && isCurrent) {
    isScanDue = !scan();
    scannedCache = dump.cache;
  }
}

void Watch::notice(const Dump& dump) {
  const auto isNew = [&](std::string& last, std::string_view start) {
    const std::string_view line = dump.lastLine(start);
    const bool isChanged = !line.empty() && line != last;
    if (isChanged) {
      last = line;
    }
    return isChanged;
  };
  if (isNew(lastWaiting, message::waitingForService)) {
    print(Json{{"event", "modem-lost"}}, "the modem is lost, waiting for it");
  }
  // Reading a long list pushes the line about the list out of the log. Then new contents of the
  // cache show that the list was read.
  const bool isNewCache = !dump.cache.empty() && dump.cache != scannedCache;
  const bool wasCurrent = isCurrent;
  isCurrent = dump.hasModemsProfiles().value_or(isCurrent || isNewCache);
  if (isCurrent && (isNew(lastRefreshed, message::refreshed) || !wasCurrent)) {
    isScanDue = true;
    print(Json{{"event", "refreshed"}}, "all profiles have been read from the modem again");
  }
}

void Watch::noticeUnreadable(const Dump& dump) {
  const std::size_t count = dump.unreadable();
  if (count > 0 && unreadable == 0) {
    retryInterval = retryIntervalFirst;
    retryTime = std::chrono::steady_clock::now() + retryInterval;
  }
  if (count > unreadable) {
    print(Json{{"event", "unreadable"}, {"count", count}},
          std::to_string(count) + " of the modem's profiles could not be read, trying again");
  }
  unreadable = count;
}

bool Watch::scan() {
  SeenById now;
  if (!collect(now)) {
    return false;
  }
  const Dump dump = Session::dump();
  // A list that was collected while the modem went away may be incomplete.
  if (!dump.hasModemsProfiles().value_or(true)) {
    return false;
  }
  if (dump.unreadable() > 0) {
    now.insert(seen.begin(), seen.end());
  }
  compare(now);
  seen = std::move(now);
  return true;
}

bool Watch::collect(SeenById& now) {
  for (const auto& key : Manager::getInstance().filter(pavo::FilterProfileParams())) {
    const int id = key->getProfileId();
    const auto known = seen.find(id);
    if (known != seen.end() && !known->second.alarm->hasRung() &&
        known->second.key->dump() == key->dump()) {
      now[id] = known->second;
      continue;
    }
    // The listener is registered before the contents are read, so a change in between rings the
    // alarm.
    const auto alarm = std::make_shared<Alarm>(wakeFd);
    key->registerExpirationListener([alarm] { alarm->ring(); });
    auto params = Manager::getInstance().getProfile(key);
    if (!params) {
      return false;
    }
    now[id] = Seen{{id, std::move(*params)}, key, alarm};
  }
  return true;
}

void Watch::compare(const SeenById& now) {
  for (const auto& [id, before] : seen) {
    if (!now.contains(id)) {
      const Json profile = toJson(before.profile, secrets);
      print(Json{{"event", "deleted"}, {"id", id}, {"before", profile}},
            "profile " + std::to_string(id) +
                " deleted: " + changesText(changes(before.profile, Profile{id, {}}, secrets)));
    }
  }
  for (const auto& [id, after] : now) {
    const auto before = seen.find(id);
    if (before == seen.end()) {
      print(Json{{"event", "created"}, {"id", id}, {"after", toJson(after.profile, secrets)}},
            "profile " + std::to_string(id) +
                " created: " + changesText(changes(Profile{id, {}}, after.profile, secrets)));
      continue;
    }
    const Json change = changes(before->second.profile, after.profile, secrets);
    if (!change.empty()) {
      print(Json{{"event", "changed"},
                 {"id", id},
                 {"changes", change},
                 {"before", toJson(before->second.profile, secrets)},
                 {"after", toJson(after.profile, secrets)}},
            "profile " + std::to_string(id) + " changed: " + changesText(change));
    }
  }
}

void Watch::print(const Json& event, const std::string& text) {
  if (!isJson) {
    output.line(timeNow() + " " + text);
    return;
  }
  Json stamped{{"time", timeNow()}};
  stamped.update(event);
  output.line(dumpJson(stamped));
}

}  // namespace pavoctl
