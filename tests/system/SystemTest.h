// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A SystemTest uses the real library, the host's platform libraries and a modem process of its own.
#pragma once

#include <pavo/Manager.h>

#include "AndroidLog.h"
#include "Deadline.h"
#include "ModemProcess.h"
#include "ModemTable.h"
#include "Stress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace pavo::test {

using Key = std::shared_ptr<IProfileKey>;

AddProfileParams transientProfile(const std::string& apn);
AddProfileParams persistentProfile(const std::string& apn);
FilterProfileParams byApn(const std::string& apn);
FilterProfileParams byId(int profileId);

// Returns a Manager of the test's own.
std::shared_ptr<Manager> ownManager();

// Runs work(i) on count threads at once and waits for all of them.
void onThreads(int count, const std::function<void(int)>& work);

class SystemTest : public testing::Test {
 protected:
  // @param makeManager makes the Manager under test; processWideManager for the instance
  explicit SystemTest(ModemProcessOptions options = {},
                      std::shared_ptr<Manager> (*makeManager)() = ownManager);
  ~SystemTest() override;

  // Initialises the library and waits until the modem knows it. The cache is empty and stays so
  // until a refresh. A modem that has to report an absence from an earlier test to this process has
  // done so before this returns.
  void connect(int subscription = 0);
  // Waits until the modem has count clients that it sends events to.
  void awaitRegistered(int count = 1);
  // Waits until the library has handled all messages that the modem has sent it so far.
  void settle();
  // Returns how many of settle()'s own indications the library has handled since that position in
  // the log. On a busy machine settle() sends more than one.
  std::size_t fencesSince(std::size_t position) const;
  void refresh();

  // Returns the key of the only profile with this APN; ends the test when there is not exactly one.
  Key find(const std::string& apn);
  // Adds a profile, and ends the test when the library refuses.
  Key add(const AddProfileParams& params);

  nlohmann::json control(const std::string& verb,
                         const nlohmann::json& args = nlohmann::json::object()) {
    return modem.control(verb, args);
  }
  ModemTable table() { return tableOf(modem); }
  // Returns the library's view, in the form of textsOf(table()).
  std::vector<std::string> cache();
  // Returns the cache's part of Manager::dump: "<token>: <profile>" or "<token>: null" for each
  // entry.
  std::vector<std::string> dumpedEntries();
  // Settles, then compares the cache with the modem's table, the library's dump included.
  void expectCacheEqualsTable();
  // Expects that no change of the library's own still waits for its indication.
  void expectNothingPending();

  // Returns the modem's record of the requests of registered clients: the messages' names.
  std::vector<std::string> requestsSeen();
  std::vector<nlohmann::json> transcript();

  // Returns the messages of Manager::dump's log, without their stamps, from the last message on
  // that starts with the given text.
  std::vector<std::string> keptLogFrom(const std::string& start);

  AndroidLog& log;
  ModemProcess modem;
  const ModemEnvironment environment;
  std::shared_ptr<Manager> manager;

 private:
  bool wasToldOfAbsence();

  std::shared_ptr<Manager> (*const makeManager)();
  int fence = 0;
};

}  // namespace pavo::test
