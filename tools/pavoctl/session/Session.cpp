// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "session/Session.h"

#include "Errors.h"
#include "Text.h"
#include "session/Patience.h"

#include <algorithm>
#include <cstdlib>
#include <thread>

namespace pavoctl {
namespace {

using pavo::Manager;

// An operation is repeated when a refresh comes between two of its steps. So many in a row are no
// accident.
constexpr int attemptsMax = 20;
// The interval grows, because every attempt writes three lines into the library's log of 200.
constexpr std::chrono::milliseconds pollIntervalFirst{5};
constexpr std::chrono::milliseconds pollIntervalMax{250};

std::string seconds(std::chrono::milliseconds time) {
  std::string text = std::to_string(time.count() / 1000);
  if (const auto rest = time.count() % 1000; rest != 0) {
    std::string fraction = std::to_string(1000 + rest).substr(1);
    fraction.erase(fraction.find_last_not_of('0') + 1);
    text += "." + fraction;
  }
  return text + " s";
}

std::string modemInUse() {
  const char* socket = std::getenv("OVIX_MODEM");
  return socket == nullptr ? "OVIX_MODEM is not set, so the embedded modem was asked"
                           : "OVIX_MODEM=" + printable(socket);
}

// The library waits a second for the modem's answer, whereas a refusal arrives almost at once.
constexpr std::chrono::milliseconds refusalTimeMax{900};
// A lost connection takes at most this long to appear in the library's log.
constexpr std::chrono::milliseconds lossTimeMax{300};

bool isModemLost() {
  const auto deadline = std::chrono::steady_clock::now() + lossTimeMax;
  while (Session::dump().hasModemsProfiles().value_or(true)) {
    if (std::chrono::steady_clock::now() >= deadline) {
      return false;
    }
    std::this_thread::sleep_for(pollIntervalFirst);
  }
  return true;
}

// A change that the modem is asked for, with the messages for its failure. The library reports a
// refusal and a missing answer alike. But a modem that has not answered may have made the change.
class Change {
 public:
  Change(std::string toDo, std::string mayBeDone, std::chrono::milliseconds timeout)
      : refusal("the modem refused " + std::move(toDo) + " or did not answer"),
        uncertainty("; " + std::move(mayBeDone) + " all the same"),
        patience(timeout, "the modem did not answer within " + seconds(timeout) + uncertainty,
                 std::string(Session::signalText) + uncertainty) {}

  [[noreturn]] void fail() const {
    switch (Session::silenceAfter(std::chrono::steady_clock::now() - start)) {
      case Session::Silence::unanswered:
        throw NoAnswer("the modem did not answer" + uncertainty);
      case Session::Silence::lost:
        throw NoAnswer("the modem was lost before it answered" + uncertainty);
      case Session::Silence::none:
        throw Failure(refusal);
    }
    std::abort();
  }

 private:
  const std::string refusal;
  const std::string uncertainty;
  const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  const Patience patience;
};

}  // namespace

Session::Session(const Options& sessionOptions) : options(sessionOptions) {
  const Patience patience = waiting();
  Manager::getInstance().init(options.subscription, options.useAndroidLog);
  readAll();
}

void Session::resume(const Options& wanted) {
  if (wanted.subscription != options.subscription ||
      wanted.useAndroidLog != options.useAndroidLog) {
    throw UsageError("the library is running; --subscription and --log come too late");
  }
  options.timeout = wanted.timeout;
  if (!dump().hasModemsProfiles().value_or(true)) {
    readAll();
  }
}

void Session::readAll() const {
  const Patience patience = waiting();
  readAll(Manager::getInstance(), options.timeout, noAnswerText(options.timeout));
}

void Session::readAll(Manager& manager, std::chrono::milliseconds timeout,
                      const std::string& lateText) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  auto pollInterval = pollIntervalFirst;
  while (true) {
    manager.refresh(pavo::PDC_REFRESH_COMPLETED);
    // All instances of the library write to one log.
    const Dump now = dump();
    // Without a modem the library reads nothing and logs nothing about it. When the log no longer
    // shows the beginning of the refresh, it has overflowed. Only a long list of profiles makes it
    // overflow.
    const auto messages = now.messagesSince("Manager::refresh > ");
    if (!messages || contains(*messages, message::listRead)) {
      return;
    }
    if (std::chrono::steady_clock::now() >= deadline) {
      throw NoAnswer(lateText);
    }
    std::this_thread::sleep_for(pollInterval);
    pollInterval = std::min(2 * pollInterval, pollIntervalMax);
  }
}

void Session::refresh() const {
  const Patience patience = waiting();
  Manager::getInstance().refresh(pavo::PDC_REFRESH_STARTED);
  readAll();
}

Session::Listing Session::list(const pavo::FilterProfileParams& filter) const {
  const Patience patience = waiting();
  for (int attempt = 0; attempt < attemptsMax; ++attempt) {
    if (dump().hasLostList()) {
      readAll();
    }
    Listing listing;
    const auto keys = Manager::getInstance().filter(filter);
    listing.unreadable = dump().unreadable();
    for (const auto& key : keys) {
      if (auto params = Manager::getInstance().getProfile(key)) {
        listing.profiles.push_back({key->getProfileId(), std::move(*params)});
      }
    }
    if (listing.profiles.size() == keys.size()) {
      std::sort(listing.profiles.begin(), listing.profiles.end(),
                [](const Profile& a, const Profile& b) { return a.id < b.id; });
      return listing;
    }
  }
  throw Failure("the modem's profiles keep changing, no listing could be made");
}

Snapshot Session::snapshot() const {
  const Patience patience = waiting();
  if (dump().hasLostList()) {
    readAll();
  }
  return Snapshot::takeOf(Manager::getInstance());
}

Key Session::keyOf(int id) const {
  const Patience patience = waiting();
  if (dump().hasLostList()) {
    readAll();
  }
  pavo::FilterProfileParams filter;
  filter.setFilterByProfileId(id);
  const auto keys = Manager::getInstance().filter(filter);
  if (!keys.empty()) {
    return keys.front();
  }
  const bool isUnsure = dump().unreadable() > 0;
  throw Failure("there is no profile " + std::to_string(id) +
                (isUnsure ? ", or it is one that could not be read from the modem" : ""));
}

void Session::onProfile(int id, const std::string& entry,
                        const std::function<void(const Key&)>& operation) const {
  for (int attempt = 0; attempt < attemptsMax; ++attempt) {
    const Key key = keyOf(id);
    operation(key);
    const Dump now = dump();
    const auto messages = now.messagesSince(entry);
    if (messages && !contains(*messages, message::expired)) {
      return;
    }
  }
  throw Failure("profile " + std::to_string(id) + " keeps changing");
}

Profile Session::get(int id) const {
  const Patience patience = waiting();
  std::optional<pavo::ProfileParams> params;
  onProfile(id, "Manager::getProfile > ",
            [&](const Key& key) { params = Manager::getInstance().getProfile(key); });
  if (!params) {
    throw Failure("profile " + std::to_string(id) + " could not be read");
  }
  return {id, std::move(*params)};
}

Session::Added Session::add(const pavo::AddProfileParams& params) const {
  Key key;
  {
    const Change change("the new profile", "it may have created the profile", options.timeout);
    key = Manager::getInstance().addProfile(params);
    if (!key) {
      change.fail();
    }
  }
  const int id = key->getProfileId();
  if (auto stored = Manager::getInstance().getProfile(key)) {
    return {Profile{id, std::move(*stored)}, std::move(key)};
  }
  return {getAfter("created", id), std::move(key)};
}

Session::Modified Session::modify(int id, const pavo::ModifyProfileParams& params) const {
  auto outcome = ChangeOutcome::refused;
  {
    const std::string name = "profile " + std::to_string(id);
    const Change change("to change " + name, "it may have changed the profile", options.timeout);
    onProfile(id, "Manager::modifyProfile > ", [&](const Key& key) {
      const auto before = Snapshot::takeOne(Manager::getInstance(), key);
      const bool isKnown = Manager::getInstance().modifyProfile(params, key);
      outcome = before && isKnown ? outcomeOf(params, *before, entryOf(dump(), tokenOf(*key)))
                                  : ChangeOutcome::refused;
    });
    if (outcome == ChangeOutcome::refused) {
      change.fail();
    }
  }
  const bool isChanged = outcome == ChangeOutcome::changed;
  return {isChanged ? getAfter("changed", id) : get(id), isChanged};
}

Profile Session::getAfter(const std::string& what, int id) const {
  try {
    return get(id);
  } catch (const Failure& failure) {
    throw Failure("profile " + std::to_string(id) + " was " + what + ", but then " +
                  failure.what());
  }
}

void Session::remove(int id) const {
  const std::string name = "profile " + std::to_string(id);
  const Change change("to delete " + name, "it may have deleted the profile", options.timeout);
  bool isDeleted = false;
  onProfile(id, "Manager::deleteProfile > ",
            [&](const Key& key) { isDeleted = Manager::getInstance().deleteProfile(key); });
  if (!isDeleted) {
    change.fail();
  }
}

Session::Release Session::release(Key key) {
  const std::string released = std::string(message::released) + std::to_string(key->getProfileId());
  key.reset();
  // No other profile is released meanwhile, but the log may show an earlier profile of the same id.
  const Dump now = dump();
  const auto messages = now.messagesSince("ProfileCache: releaseProfile ");
  if (messages && contains(*messages, message::releaseFailed)) {
    return Release::failed;
  }
  return messages && contains(*messages, released) ? Release::deleted : Release::kept;
}

std::string Session::noAnswerText(std::chrono::milliseconds timeout) {
  return "no modem answered within " + seconds(timeout) + " (" + modemInUse() + ")";
}

Patience Session::waiting() const {
  return {options.timeout, noAnswerText(options.timeout), signalText};
}

Session::Silence Session::silenceAfter(std::chrono::steady_clock::duration time) {
  if (isModemLost()) {
    return Silence::lost;
  }
  return time < refusalTimeMax ? Silence::none : Silence::unanswered;
}

Dump Session::dump() { return Dump::parse(Manager::getInstance().dump()); }

}  // namespace pavoctl
