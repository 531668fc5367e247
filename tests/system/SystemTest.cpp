// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "SystemTest.h"

#include <algorithm>
#include <list>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>

namespace pavo::test {

namespace {

using nlohmann::json;

constexpr int eventDelete = 2;
// These indices are beyond every table of these tests.
constexpr int fenceFirst = 201;
constexpr int fenceCount = 54;
constexpr std::chrono::milliseconds fenceAgainAfter{1000};

std::string fenceHandled(int index) {
  return "ProfileCache: onIndication < " + std::to_string(index) + " Delete";
}

}  // namespace

AddProfileParams transientProfile(const std::string& apn) {
  AddProfileParams params(/*isPersistent=*/false, /*isIAProfile=*/false);
  params.setApnName(apn);
  return params;
}

AddProfileParams persistentProfile(const std::string& apn) {
  AddProfileParams params(/*isPersistent=*/true, /*isIAProfile=*/false);
  params.setApnName(apn);
  return params;
}

FilterProfileParams byApn(const std::string& apn) {
  FilterProfileParams params;
  params.setApnName(apn);
  return params;
}

FilterProfileParams byId(int profileId) {
  FilterProfileParams params;
  params.setFilterByProfileId(profileId);
  return params;
}

std::shared_ptr<Manager> ownManager() { return std::make_shared<Manager>(); }

void onThreads(int count, const std::function<void(int)>& work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back(work, i);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

SystemTest::SystemTest(ModemProcessOptions options, std::shared_ptr<Manager> (*theMaker)())
    : log(AndroidLog::instance()),
      modem(std::move(options)),
      environment(modem.socketPath()),
      manager(theMaker()),
      makeManager(theMaker) {
  log.clear();
}

SystemTest::~SystemTest() = default;

void SystemTest::connect(int subscription) {
  manager->init(subscription, /*useAndroidLog=*/true);
  awaitRegistered();
  if (wasToldOfAbsence()) {
    settle();
    manager.reset();
    manager = makeManager();
    control("clear-transcript");
    manager->init(subscription, /*useAndroidLog=*/true);
    awaitRegistered();
  }
  settle();
}

bool SystemTest::wasToldOfAbsence() {
  const std::vector<json> entries = transcript();
  return std::any_of(entries.begin(), entries.end(), [](const json& entry) {
    return entry["direction"] == "in" && entry["kind"] == "hello" && entry["fields"]["value"] == 1;
  });
}

void SystemTest::awaitRegistered(int count) {
  ASSERT_TRUE(waitUntil([&] { return control("show")["registered"] == count; }))
      << control("show").dump(2);
}

void SystemTest::settle() {
  // Indications are handled in the order in which the modem sends them. An indication for an
  // unknown profile changes nothing and leaves a line in the log.
  const int index = fenceFirst + fence++ % fenceCount;
  const std::string handled = fenceHandled(index);
  const std::size_t position = log.end();
  // The indication is sent again when it does not arrive: it may have gone to the connection of a
  // worker that has ended.
  const bool isHandled = waitUntil([&] {
    return control("indicate", {{"event", eventDelete}, {"index", index}})["told"] > 0 &&
           waitUntil([&] { return log.count(handled, position) > 0; }, fenceAgainAfter);
  });
  ASSERT_TRUE(isHandled) << control("show").dump(2);
  // A call through the worker returns only after the worker has finished that event.
  manager->getProfile(nullptr);
}

std::size_t SystemTest::fencesSince(std::size_t position) const {
  std::size_t count = 0;
  for (int index = fenceFirst; index < fenceFirst + fenceCount; ++index) {
    count += log.count(fenceHandled(index), position);
  }
  return count;
}

void SystemTest::refresh() { manager->refresh(PDC_REFRESH_COMPLETED); }

Key SystemTest::find(const std::string& apn) {
  const std::list<Key> keys = manager->filter(byApn(apn));
  if (keys.size() != 1) {
    throw std::runtime_error(std::to_string(keys.size()) + " profiles have the APN " + apn);
  }
  return keys.front();
}

Key SystemTest::add(const AddProfileParams& params) {
  Key key = manager->addProfile(params);
  if (key == nullptr) {
    throw std::runtime_error("the library has not added " + params.dump());
  }
  return key;
}

std::vector<std::string> SystemTest::cache() {
  std::vector<std::string> texts;
  for (const Key& key : manager->filter(FilterProfileParams())) {
    const std::optional<ProfileParams> params = manager->getProfile(key);
    texts.push_back(std::to_string(key->getProfileId()) + ": " +
                    (params ? textOf(*params) : "no profile"));
  }
  std::sort(texts.begin(), texts.end());
  return texts;
}

std::vector<std::string> SystemTest::dumpedEntries() {
  const std::vector<std::string> lines = manager->dump();
  EXPECT_EQ(lines.front(), "Cache:");
  return {lines.begin() + 1, std::find(lines.begin(), lines.end(), "Pending:")};
}

void SystemTest::expectCacheEqualsTable() {
  settle();
  const std::vector<std::string> expected = textsOf(table());
  EXPECT_EQ(cache(), expected);
  // Unlike filter, the dump also shows profiles that could not be read.
  EXPECT_THAT(dumpedEntries(), testing::SizeIs(expected.size()));
}

void SystemTest::expectNothingPending() {
  settle();
  const std::vector<std::string> lines = manager->dump();
  const auto pending = std::find(lines.begin(), lines.end(), "Pending:");
  ASSERT_NE(pending, lines.end());
  EXPECT_EQ(*std::next(pending), "") << testing::PrintToString(lines);
}

std::vector<json> SystemTest::transcript() { return control("transcript")["entries"]; }

std::vector<std::string> SystemTest::requestsSeen() {
  std::vector<std::string> names;
  for (const json& entry : transcript()) {
    if (entry["direction"] == "in" && entry["kind"] == "request") {
      names.push_back(entry["message"]);
    }
  }
  return names;
}

std::vector<std::string> SystemTest::keptLogFrom(const std::string& start) {
  const std::string mark = "[PAVO]";
  std::vector<std::string> messages;
  const std::vector<std::string> lines = manager->dump();
  for (auto line = std::find(lines.begin(), lines.end(), "Logs:"); line != lines.end(); ++line) {
    const auto at = line->find(mark);
    std::string message = at == std::string::npos ? "" : line->substr(at + mark.size());
    if (message.starts_with(start)) {
      messages = {std::move(message)};
    } else if (!messages.empty()) {
      messages.push_back(std::move(message));
    }
  }
  return messages;
}

}  // namespace pavo::test
