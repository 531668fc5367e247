// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests cover the library's registration with the modem.
#include <pavo/Manager.h>

#include "SystemTest.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>

namespace pavo::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

class StartTest : public SystemTest {
 protected:
  // Returns the fields of the only request of this name.
  json fieldsOf(const std::string& message) {
    json fields;
    int count = 0;
    for (const json& entry : transcript()) {
      if (entry["direction"] == "in" && entry["message"] == message) {
        fields = entry["fields"];
        ++count;
      }
    }
    EXPECT_EQ(count, 1) << message;
    return fields;
  }
};

TEST_F(StartTest, Init_ModemThere_SendsTheThreeRegistrationsInOrder) {
  connect();
  EXPECT_THAT(requestsSeen(),
              ElementsAre("bind-subscription", "indication-register", "configure-events"));
}

TEST_F(StartTest, Init_ModemThere_AsksForEventsOfEveryProfile) {
  connect();
  EXPECT_EQ(fieldsOf("indication-register"), (json{{"reportEvents", 1}}));
  EXPECT_EQ(fieldsOf("configure-events"),
            (json{{"reportSwitch", 1}, {"events", {{{"type", 255}, {"index", 255}}}}}));
}

TEST_F(StartTest, Init_AnySubscription_IsInTheBindRequest) {
  for (const int subscription :
       {0, 1, 2, 7, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(subscription);
    manager = std::make_unique<Manager>();
    control("clear-transcript");
    connect(subscription);
    EXPECT_EQ(fieldsOf("bind-subscription"), (json{{"subscription", subscription}}));
  }
}

TEST_F(StartTest, Init_ModemThere_ReadsNothing) {
  control("create", {{"apn", "operator"}});
  connect();
  EXPECT_THAT(cache(), IsEmpty());
  EXPECT_EQ(requestsSeen().size(), 3u);
}

TEST_F(StartTest, Init_ModemThere_KeepsOneConnectionOnly) {
  connect();
  EXPECT_TRUE(waitUntil([&] { return control("show")["clients"] == 1; }))
      << control("show").dump(2);
}

TEST_F(StartTest, Start_WholeSequenceOfAddModifyDelete_IsInTheTranscriptInOrder) {
  connect();
  {
    const Key key = add(transientProfile("ims"));
    ModifyProfileParams change;
    change.setApnName("other");
    manager->modifyProfile(change, key);
    refresh();
    EXPECT_TRUE(manager->deleteProfile(find("other")));
  }
  settle();
  EXPECT_THAT(requestsSeen(), ElementsAre("bind-subscription", "indication-register",
                                          "configure-events", "create-profile", "modify-profile",
                                          "profile-list", "profile-settings", "delete-profile"));
}

TEST_F(StartTest, Init_ModemThere_LogsTheStartInOrder) {
  connect();
  std::vector<std::string> started;
  for (const std::string& message : log.messagesSince(0)) {
    for (const char* start : {"Manager::init", "OvixWdsProxy service is up", "PAVO thread",
                              "ovix_client_register_error_cb", "OvixWdsProxy bind",
                              "OvixWdsProxy indication register", "OvixWdsProxy config register"}) {
      if (message.starts_with(start)) {
        started.push_back(message);
      }
    }
  }
  // Only the last start counts: an earlier absence may have caused another one before it.
  const std::size_t count = 7;
  ASSERT_GE(started.size(), count);
  started.erase(started.begin(), started.end() - static_cast<std::ptrdiff_t>(count));
  EXPECT_THAT(started, testing::UnorderedElementsAre(
                           "Manager::init(0)", "PAVO thread started",
                           "OvixWdsProxy service is up, trying to initialize svc client",
                           "ovix_client_register_error_cb result: 0",
                           "OvixWdsProxy bind register request successful!",
                           "OvixWdsProxy indication register request successful!",
                           "OvixWdsProxy config register request successful!"));
  EXPECT_EQ(started.front(), "Manager::init(0)");
  EXPECT_EQ(started.back(), "OvixWdsProxy config register request successful!");
}

TEST_F(StartTest, Init_BindRefused_GoesOnWithTheOtherRegistrations) {
  control("fail", {{"message", "bind-subscription"}, {"error", 2}});
  manager->init(0, /*useAndroidLog=*/true);
  settle();
  EXPECT_EQ(log.count("Unable send bind req message"), 1u);
  const Key key = add(transientProfile("ims"));
  expectCacheEqualsTable();
}

TEST_F(StartTest, Init_BindUnanswered_GoesOnAfterItsTimeout) {
  control("fail", {{"message", "bind-subscription"}, {"silent", true}});
  manager->init(0, /*useAndroidLog=*/true);
  settle();
  EXPECT_EQ(log.count("Unable send bind req message"), 1u);
  EXPECT_EQ(log.count("OvixWdsProxy config register request successful!"), 1u);
}

TEST_F(StartTest, Init_IndicationRegisterRefused_StillSendsTheConfiguration) {
  control("fail", {{"message", "indication-register"}, {"error", 2}});
  manager->init(0, /*useAndroidLog=*/true);
  ASSERT_TRUE(log.waitFor("OvixWdsProxy config register request successful!"));
  EXPECT_EQ(log.count("Unable send indication req message"), 1u);
  EXPECT_EQ(control("show")["registered"], 0);
}

TEST_F(StartTest, Init_ConfigurationRefused_ServesOperationsWithoutIndications) {
  control("fail", {{"message", "configure-events"}, {"error", 2}});
  manager->init(0, /*useAndroidLog=*/true);
  ASSERT_TRUE(log.waitFor("Unable send config req message"));
  const Key key = add(transientProfile("ims"));
  EXPECT_TRUE(manager->getProfile(key));
  EXPECT_EQ(table().size(), 1u);
}

TEST_F(StartTest, Init_DiagnosticChannel_WritesTheLinesThere) {
  const TemporaryFolder folder;
  const std::string file = folder.file("diag.txt");
  setenv("PAVO_DIAG_FILE", file.c_str(), /*overwrite=*/1);
  manager->init(0, /*useAndroidLog=*/false);
  awaitRegistered();
  EXPECT_EQ(manager->getProfile(nullptr), std::nullopt);
  EXPECT_EQ(log.count("OvixWdsProxy bind register request successful!"), 0u);
  manager->init(0, /*useAndroidLog=*/true);
  unsetenv("PAVO_DIAG_FILE");
  std::ifstream stream(file);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  EXPECT_THAT(text, testing::HasSubstr("Manager::getProfile < "));
  EXPECT_THAT(text, testing::HasSubstr("OvixWdsProxy bind register request successful!"));
}

TEST_F(StartTest, EveryOperation_BeforeInit_AnswersEmptyAndSendsNothing) {
  EXPECT_EQ(manager->addProfile(transientProfile("ims")), nullptr);
  EXPECT_THAT(manager->filter(FilterProfileParams()), IsEmpty());
  refresh();
  EXPECT_THAT(keptLogFrom("Manager not initialized!"), testing::SizeIs(1));
  EXPECT_THAT(requestsSeen(), IsEmpty());
}

}  // namespace
}  // namespace pavo::test
