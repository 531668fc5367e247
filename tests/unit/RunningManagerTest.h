// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// RunningManagerTest is the fixture of tests that check the log and the effects of a manager in
// operation.
#pragma once

#include <pavo/Manager.h>

#include "Aliases.h"
#include "CapturingLogWriter.h"
#include "MessageBytes.h"
#include "StartedManagerTest.h"

#include <algorithm>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace pavo::test {

// Returns the token in a key's text. Tokens are counted per process, so no test knows them
// beforehand.
inline unsigned long long tokenOf(const Key& key) {
  const std::string text = key->dump();
  return std::stoull(text.substr(text.find("token=") + 6));
}

// A CacheDump holds the cache's part of Manager::dump, split at its two headings.
struct CacheDump {
  Lines cache;
  Lines pending;

  static CacheDump of(const Lines& lines) {
    const auto pendingAt = std::find(lines.begin(), lines.end(), "Pending:");
    const auto end = std::find(pendingAt, lines.end(), "");
    EXPECT_FALSE(lines.empty());
    EXPECT_NE(pendingAt, lines.end());
    EXPECT_NE(end, lines.end());
    if (lines.empty() || pendingAt == lines.end()) {
      return {};
    }
    EXPECT_EQ(lines.front(), "Cache:");
    return {Lines(lines.begin() + 1, pendingAt), Lines(pendingAt + 1, end)};
  }
};

// This fixture captures the library's own log, whose levels distinguish High from Info.
class RunningManagerTest : public StartedManagerTest {
 protected:
  RunningManagerTest() : log(std::make_unique<CapturingLogWriter>()) {}

  // Returns the High and Error lines since the last call, the Error lines with "Error: " in front.
  Lines takeKeptLines() {
    Lines kept;
    for (const CapturedLine& line : log->lines()) {
      EXPECT_EQ(line.tag, "PAVO");
      if (line.level == LogLevel::High) {
        kept.push_back(line.message);
      } else if (line.level == LogLevel::Error) {
        kept.push_back("Error: " + line.message);
      }
    }
    log->clear();
    return kept;
  }

  std::size_t lineCount(const std::string& message) const {
    const Lines messages = log->messages();
    return static_cast<std::size_t>(std::count(messages.begin(), messages.end(), message));
  }

  bool waitForLine(const std::string& message, std::size_t atLeast = 1) const {
    return waitUntil([&] { return lineCount(message) >= atLeast; });
  }

  // Raises an indication and waits until the worker has handled it.
  void indicate(std::uint8_t index, std::int32_t event) {
    const std::string queueIsEmpty = "OvixWdsProxy: handleIndication indQueue.size[0]";
    const std::size_t before = lineCount(queueIsEmpty);
    ASSERT_TRUE(platform.indicateProfileChanged(index, event));
    ASSERT_TRUE(waitForLine(queueIsEmpty, before + 1));
  }

  // Adds a profile and returns its key after its indications have been handled.
  Key addConfirmed(const std::string& apnName, bool isPersistent = false) {
    Key key = add(apnName, isPersistent);
    if (key == nullptr) {
      ADD_FAILURE() << "the profile was not created";
      return key;
    }
    const auto index = static_cast<std::uint8_t>(key->getProfileId());
    indicate(index, WDS_PROFILE_EVENT_CREATE_V01);
    indicate(index, WDS_PROFILE_EVENT_MODIFY_V01);
    const std::string ownPrefix = "  " + std::to_string(index) + " ";
    for (const std::string& line : pending()) {
      EXPECT_FALSE(line.starts_with(ownPrefix)) << line;
    }
    return key;
  }

  // Puts a profile on the modem that the library has not made.
  void setModemProfile(std::uint8_t index, const MessageBytes& settings) {
    platform.setProfile(index, settings.as<wds_get_profile_settings_resp_msg_v01>());
  }
  void setModemProfile(std::uint8_t index, const std::string& apnName) {
    setModemProfile(index, emptySettings().u8(84, 1).text(85, apnName));
  }

  // Returns a key for each profile in the cache with that modem index.
  std::list<Key> keysOf(int index) {
    FilterProfileParams filter;
    filter.setFilterByProfileId(index);
    return manager.filter(filter);
  }
  Key keyOf(int index) {
    const std::list<Key> keys = keysOf(index);
    EXPECT_EQ(keys.size(), 1U) << "profiles with index " << index;
    return keys.empty() ? nullptr : keys.front();
  }

  Lines cached() { return CacheDump::of(manager.dump()).cache; }
  Lines pending() { return CacheDump::of(manager.dump()).pending; }

  std::unique_ptr<CapturingLogWriter> log;
};

// Returns a line of the cache's dump.
inline std::string entryLine(const Key& key, const std::string& profile) {
  return "  " + std::to_string(tokenOf(key)) + ": " + profile;
}

}  // namespace pavo::test
