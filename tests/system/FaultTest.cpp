// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "FaultTest.h"

namespace pavo::test {

namespace {

using nlohmann::json;

json ownProfile() {
  return {{"index", ownIndex},    {"name", "operator"}, {"apn", "internet"},  {"user", "someone"},
          {"password", "secret"}, {"pdpType", "V4V6"},  {"persistent", true}, {"apnTypes", 1}};
}

}  // namespace

FaultTest::FaultTest()
    : SystemTest({.profiles = {{"profiles", {ownProfile()}}}, .arguments = {}}) {}

void FaultTest::initAgain() {
  manager->init(0, /*useAndroidLog=*/true);
  awaitRegistered();
}

void FaultTest::recover(bool comesBack) {
  clearFaults(modem);
  ASSERT_TRUE(waitUntil([&] { return control("show")["on"] == true; }));
  if (comesBack) {
    awaitRegistered();
  } else {
    initAgain();
  }
  settle();
  refresh();
  expectCacheEqualsTable();
}

void FaultTest::deleteOthers() {
  for (const auto& [index, profile] : table()) {
    if (index != ownIndex) {
      control("delete", {{"index", index}});
    }
  }
  settle();
  refresh();
}

}  // namespace pavo::test
