// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests kill the modem's process at any moment, under load. When the modem starts again,
// every edit that it has answered must be in its table. An edit that it had not answered must be
// there as a whole or not at all.
#include <pavo/Manager.h>

#include "SystemTest.h"
#include "modem/client/ControlClient.h"
#include "wire/LocalSocket.h"

#include <atomic>
#include <map>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace pavo::test {
namespace {

using nlohmann::json;

// A Writer is a client that creates, modifies and deletes persistent profiles of its own APN
// without a pause. It remembers the expected state of each.
class Writer {
 public:
  explicit Writer(std::string theApn) : apn(std::move(theApn)) {}

  // Edits until the modem is gone.
  void write(const std::string& socket) {
    try {
      modem::ControlClient client(socket);
      for (;;) {
        step(client);
      }
    } catch (const std::exception&) {
      // The modem was killed; the edit under way is recorded in the members.
    }
  }

  // Compares with the modem's table, and takes over the result of the edit that was under way.
  void verify(const ModemTable& table) {
    std::map<int, std::string> found;
    for (const auto& [at, profile] : table) {
      if (profile.value("apn", "") == apn) {
        found[at] = profile.value("user", "");
      }
    }
    if (found != answered) {
      EXPECT_TRUE(isUnderWay) << "nothing was under way in " << apn;
      EXPECT_EQ(found, ifDone(found)) << "neither as before the last edit nor as after it: " << apn;
    }
    answered = found;
    isUnderWay = false;
  }

  std::atomic<int> edits{0};

 private:
  void step(modem::ControlClient& client) {
    const std::string user = std::to_string(++lastUser);
    const int choice = lastUser % 4;
    verb = answered.size() < 6 && choice < 2 ? "create" : choice < 3 ? "modify" : "delete";
    json args = {{"user", user}};
    if (verb == "create") {
      args.update({{"apn", apn}, {"persistent", true}});
    } else if (answered.empty()) {
      return;
    } else {
      index = std::next(answered.begin(), lastUser % static_cast<int>(answered.size()))->first;
      args = verb == "modify" ? json{{"index", index}, {"user", user}} : json{{"index", index}};
    }
    isUnderWay = true;
    const json reply = client.call(verb, args);
    if (verb == "create" && reply["ok"] == true) {
      index = reply["index"];
    }
    if (reply["ok"] == true) {
      apply(answered, index, user);
    }
    isUnderWay = false;
    ++edits;
  }

  void apply(std::map<int, std::string>& profiles, int at, const std::string& user) const {
    if (verb == "delete") {
      profiles.erase(at);
    } else {
      profiles[at] = user;
    }
  }

  // Returns the expected table if the edit under way was carried out. The index of a create is not
  // known, so it is taken from the table found.
  std::map<int, std::string> ifDone(const std::map<int, std::string>& found) const {
    std::map<int, std::string> expected = answered;
    int at = index;
    for (const auto& [number, user] : found) {
      at = verb == "create" && answered.count(number) == 0 ? number : at;
    }
    apply(expected, at, std::to_string(lastUser));
    return expected;
  }

  const std::string apn;
  std::map<int, std::string> answered;  // user name by index
  bool isUnderWay = false;
  std::string verb;
  int index = 0;
  int lastUser = 0;
};

class PowerLossTest : public SystemTest {
 protected:
  PowerLossTest() : SystemTest({.profiles = {}, .arguments = {"--capacity", "64"}}) { connect(); }

  void runUntilKilled(std::vector<std::unique_ptr<Writer>>& writers, int edits) {
    std::vector<std::thread> threads;
    const int before = writers.front()->edits;
    for (const auto& writer : writers) {
      threads.emplace_back([&] { writer->write(modem.socketPath()); });
    }
    EXPECT_TRUE(waitUntil([&] { return writers.front()->edits >= before + edits; }));
    modem.kill();
    for (std::thread& thread : threads) {
      thread.join();
    }
  }
};

TEST_F(PowerLossTest, Kill_UnderLoadOverAndOver_WhatWasAnsweredForIsThere) {
  std::vector<std::unique_ptr<Writer>> writers;
  for (const char* const apn : {"one", "two", "three"}) {
    writers.push_back(std::make_unique<Writer>(apn));
  }
  // The library edits persistent profiles like the other clients.
  std::set<std::string> added;
  for (int round = 0; round < rounds(200); ++round) {
    const std::string apn = "own" + std::to_string(round % 8);
    if (added.count(apn) == 0 && manager->addProfile(persistentProfile(apn)) != nullptr) {
      added.insert(apn);
    }
    runUntilKilled(writers, /*edits=*/round % 7);
    modem.start();
    const ModemTable found = table();
    for (const auto& writer : writers) {
      writer->verify(found);
    }
    for (const std::string& name : added) {
      EXPECT_TRUE(std::any_of(found.begin(), found.end(), [&](const auto& entry) {
        return entry.second.value("apn", "") == name;
      })) << name;
    }
    ASSERT_FALSE(HasFailure()) << "in round " << round;
    awaitRegistered();
  }
  expectCacheEqualsTable();
}

}  // namespace
}  // namespace pavo::test
