#include "Session.h"

#include <algorithm>
#include <cstdlib>
#include <thread>

#include "Errors.h"
#include "Text.h"

namespace pavoctl {
namespace {

using pavo::Manager;

// More refreshes than this in a row, each between two steps of one operation, are no accident.
constexpr int attemptsMax = 20;
// Growing, because every attempt writes three lines into the library's log of 200.
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

bool logged(const std::vector<std::string>& messages, std::string_view wanted) {
  return std::find(messages.begin(), messages.end(), wanted) != messages.end();
}

}  // namespace

Session::Session(const Options& sessionOptions) : options(sessionOptions) {
  Manager::getInstance().init(options.subscription, options.useAndroidLog);
  readAll();
}

void Session::readAll() {
  const auto deadline = std::chrono::steady_clock::now() + options.timeout;
  auto pollInterval = pollIntervalFirst;
  while (true) {
    Manager::getInstance().refresh(pavo::PDC_REFRESH_COMPLETED);
    const Dump now = dump();
    // Without a modem the library reads nothing and logs nothing about it. When the log no longer
    // shows where the refresh began, it has overflowed: only a long list of profiles does that.
    const auto messages = now.messagesSince("Manager::refresh > ");
    if (!messages || contains(*messages, message::listRead)) {
      return;
    }
    if (std::chrono::steady_clock::now() >= deadline) {
      throw Failure("no modem answered within " + seconds(options.timeout) + " (" + modemInUse() +
                    ")");
    }
    std::this_thread::sleep_for(pollInterval);
    pollInterval = std::min(2 * pollInterval, pollIntervalMax);
  }
}

void Session::refresh() {
  Manager::getInstance().refresh(pavo::PDC_REFRESH_STARTED);
  readAll();
}

Session::Listing Session::list(const pavo::FilterProfileParams& filter) {
  for (int attempt = 0; attempt < attemptsMax; ++attempt) {
    if (dump().hasLostList()) {
      readAll();
    }
    Listing listing;
    const auto keys = Manager::getInstance().filter(filter);
    const Dump now = dump();
    if (const auto messages = now.messagesSince("Manager::filter > ")) {
      listing.unreadable = static_cast<std::size_t>(
          std::count(messages->begin(), messages->end(), message::nullProfile));
    }
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

Key Session::keyOf(int id) {
  if (dump().hasLostList()) {
    readAll();
  }
  pavo::FilterProfileParams filter;
  filter.setFilterByProfileId(id);
  const auto keys = Manager::getInstance().filter(filter);
  if (!keys.empty()) {
    return keys.front();
  }
  const Dump now = dump();
  const auto messages = now.messagesSince("Manager::filter > ");
  const bool isUnsure = messages && contains(*messages, message::nullProfile);
  throw Failure("there is no profile " + std::to_string(id) +
                (isUnsure ? ", or it is one that could not be read from the modem" : ""));
}

std::vector<std::string> Session::onProfile(int id, const std::string& entry,
                                            const std::function<void(const Key&)>& operation) {
  for (int attempt = 0; attempt < attemptsMax; ++attempt) {
    const Key key = keyOf(id);
    operation(key);
    const Dump now = dump();
    const auto messages = now.messagesSince(entry);
    if (messages && !contains(*messages, message::expired)) {
      return {messages->begin(), messages->end()};
    }
  }
  throw Failure("profile " + std::to_string(id) + " keeps changing");
}

Profile Session::get(int id) {
  std::optional<pavo::ProfileParams> params;
  onProfile(id, "Manager::getProfile > ",
            [&](const Key& key) { params = Manager::getInstance().getProfile(key); });
  if (!params) {
    throw Failure("profile " + std::to_string(id) + " could not be read");
  }
  return {id, std::move(*params)};
}

Session::Added Session::add(const pavo::AddProfileParams& params) {
  Key key = Manager::getInstance().addProfile(params);
  if (!key) {
    throw Failure("the modem refused the new profile or did not answer");
  }
  const int id = key->getProfileId();
  auto stored = Manager::getInstance().getProfile(key);
  return {stored ? Profile{id, std::move(*stored)} : get(id), std::move(key)};
}

Session::Modified Session::modify(int id, const pavo::ModifyProfileParams& params) {
  bool isKnown = false;
  const auto messages = onProfile(id, "Manager::modifyProfile > ", [&](const Key& key) {
    isKnown = Manager::getInstance().modifyProfile(params, key);
  });
  // The library answers true also when the modem refused; the profile is then as it was.
  if (!isKnown || logged(messages, message::modifyFailed)) {
    throw Failure("the modem refused to change profile " + std::to_string(id) +
                  " or did not answer");
  }
  return {get(id), !logged(messages, message::unchanged)};
}

void Session::remove(int id) {
  bool isDeleted = false;
  onProfile(id, "Manager::deleteProfile > ",
            [&](const Key& key) { isDeleted = Manager::getInstance().deleteProfile(key); });
  if (!isDeleted) {
    throw Failure("the modem refused to delete profile " + std::to_string(id) +
                  " or did not answer");
  }
}

bool Session::release(Key key) {
  const std::string released = std::string(message::released) + std::to_string(key->getProfileId());
  key.reset();
  // Nothing else is released meanwhile, but the log may show an earlier profile of the same id.
  const Dump now = dump();
  const auto messages = now.messagesSince("ProfileCache: releaseProfile ");
  return messages && contains(*messages, released);
}

Dump Session::dump() { return Dump::parse(Manager::getInstance().dump()); }

}  // namespace pavoctl
