// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Answers.h"
#include "Payloads.h"
#include "TemporaryFolder.h"
#include "modem/core/Modem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>

namespace modem::test {
namespace {

using pavo::test::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr ClientNumber firstClient = 1;
constexpr ClientNumber otherClient = 2;

Profile withApn(const std::string& apn, bool isPersistent = false) {
  Profile profile{.apn = apn};
  if (isPersistent) {
    profile.persistent = uint8_t{1};
  }
  return profile;
}

Profile everySetting() {
  return {.name = "carrier",
          .pdpType = 3u,
          .apn = "internet",
          .user = "user",
          .password = "secret",
          .auth = uint8_t{3},
          .disabled = uint8_t{7},
          .apnClass = uint8_t{2},
          .emergency = uint8_t{1},
          .maxPdnPerBlock = uint16_t{1000},
          .maxPdnTimer = uint16_t{300},
          .pdnWaitInterval = uint16_t{65535},
          .lteRoam = 2u,
          .umtsRoam = 255u,
          .overrideHome = 1u,
          .persistent = uint8_t{1},
          .apnTypes = uint64_t{0x8000000000000001},
          .clat = uint8_t{1}};
}

// This modem has two clients. The other client is registered for all events.
class ModemTest : public testing::Test {
 protected:
  void SetUp() override { startModem(4); }

  void startModem(size_t capacity, ProfilesByIndex own = {}, std::unique_ptr<Store> store = {}) {
    modem.emplace(Modem::Options{
        .capacity = capacity, .ownProfiles = std::move(own), .store = std::move(store)});
    modem->addClient(firstClient, /*sawAbsence=*/false);
    modem->addClient(otherClient, /*sawAbsence=*/false);
    modem->handle(otherClient, MessageId::IndicationRegister, registerRequest());
    modem->handle(otherClient, MessageId::ConfigureEvents, allEventsRequest());
  }

  Result send(MessageId messageId, const Payload& payload) {
    last = modem->handle(firstClient, messageId, payload);
    return resultOf(last.response);
  }

  uint8_t create(const Profile& profile) {
    EXPECT_EQ(send(MessageId::CreateProfile, createRequest(profile)), success);
    return createdIndexOf(last.response);
  }

  std::vector<std::string> lastEvents(ClientNumber of) const {
    std::vector<std::string> events;
    for (const Indication& indication : last.indications) {
      if (indication.client == of) {
        events.push_back(eventOf(indication.payload));
      }
    }
    return events;
  }

  std::optional<Modem> modem;
  Outcome last;
};

TEST_F(ModemTest, Create_Success_AnswersResultAndIdByteForByte) {
  send(MessageId::CreateProfile, createRequest({}));
  EXPECT_THAT(last.response, ElementsAre(2, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0,  //
                                         3, 5, 0, 0, 0, 0, 0, 1));
}

TEST_F(ModemTest, Create_Success_IndicatesCreateThenModify) {
  create(withApn("ims"));
  EXPECT_THAT(lastEvents(otherClient), ElementsAre("create/1", "modify/1"));
}

TEST_F(ModemTest, Create_AfterADelete_TakesTheLowestFreeIndex) {
  EXPECT_EQ(create({}), 1);
  EXPECT_EQ(create({}), 2);
  EXPECT_EQ(create({}), 3);
  send(MessageId::DeleteProfile, profileRequest(2));
  EXPECT_EQ(create({}), 2);
  EXPECT_EQ(create({}), 4);
}

TEST_F(ModemTest, Create_TableFull_IsRefusedWithoutIndications) {
  for (int i = 0; i < 4; ++i) {
    create({});
  }
  EXPECT_EQ(send(MessageId::CreateProfile, createRequest({})), failure(ErrorCode::NoResources));
  EXPECT_THAT(last.indications, IsEmpty());
}

TEST_F(ModemTest, Settings_AfterCreate_AreThoseThatWereGivenAndNoOthers) {
  create(everySetting());
  create(withApn("ims"));
  EXPECT_EQ(send(MessageId::ProfileSettings, profileRequest(1)), success);
  EXPECT_EQ(settingsOf(last.response), everySetting());
  send(MessageId::ProfileSettings, profileRequest(2));
  EXPECT_EQ(settingsOf(last.response), withApn("ims"));
}

TEST_F(ModemTest, Settings_TextsOfTheLongestLength_AreKept) {
  const Profile longest{.name = std::string(50, 'n'),
                        .apn = std::string(150, 'a'),
                        .user = std::string(127, 'u'),
                        .password = std::string(127, 'p')};
  create(longest);
  send(MessageId::ProfileSettings, profileRequest(1));
  EXPECT_EQ(settingsOf(last.response), longest);
}

TEST_F(ModemTest, Modify_SomeSettings_LeavesTheOthers) {
  create(Profile{.apn = "ims", .user = "u"});
  EXPECT_EQ(
      send(MessageId::ModifyProfile, profileRequest(1, Profile{.apn = "sos", .clat = uint8_t{5}})),
      success);
  EXPECT_EQ(*modem->profiles().find(1), (Profile{.apn = "sos", .user = "u", .clat = uint8_t{5}}));
  EXPECT_THAT(lastEvents(otherClient), ElementsAre("modify/1"));
}

TEST_F(ModemTest, Modify_Persistence_IsIgnored) {
  create(withApn("ims"));
  EXPECT_EQ(
      send(MessageId::ModifyProfile, profileRequest(1, withApn("sos", /*isPersistent=*/true))),
      success);
  EXPECT_EQ(*modem->profiles().find(1), withApn("sos"));
}

TEST_F(ModemTest, Modify_NothingGiven_SucceedsAndIndicates) {
  create({});
  EXPECT_EQ(send(MessageId::ModifyProfile, profileRequest(1)), success);
  EXPECT_THAT(lastEvents(otherClient), ElementsAre("modify/1"));
}

TEST_F(ModemTest, Modify_RefusedValue_ChangesNothing) {
  create(withApn("ims"));
  EXPECT_EQ(send(MessageId::ModifyProfile, profileRequest(1, Profile{.pdpType = 9u, .apn = "sos"})),
            failure(ErrorCode::InvalidArgument));
  EXPECT_EQ(*modem->profiles().find(1), withApn("ims"));
  EXPECT_THAT(last.indications, IsEmpty());
}

TEST_F(ModemTest, Delete_Success_RemovesAndIndicates) {
  create({});
  EXPECT_EQ(send(MessageId::DeleteProfile, profileRequest(1)), success);
  EXPECT_THAT(lastEvents(otherClient), ElementsAre("delete/1"));
  EXPECT_EQ(send(MessageId::ProfileSettings, profileRequest(1)),
            failure(ErrorCode::InvalidProfileIndex));
}

TEST_F(ModemTest, List_SomeProfiles_HasTypesIndicesAndNames) {
  create(Profile{.name = "ab"});
  create({});
  EXPECT_EQ(send(MessageId::ProfileList, listRequest()), success);
  EXPECT_THAT(last.response, ElementsAre(2, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0,  //
                                         3, 16, 0, 2, 0,                   //
                                         0, 0, 0, 0, 1, 2, 'a', 'b',       //
                                         0, 0, 0, 0, 2, 0));
}

TEST_F(ModemTest, List_LargestTableWithLongestNames_Fits) {
  startModem(255);
  for (int i = 0; i < 255; ++i) {
    create(Profile{.name = std::string(50, 'n')});
  }
  EXPECT_EQ(send(MessageId::ProfileList, {}), success);
  EXPECT_EQ(FieldReader(last.response).bytes(tagAnswer)->size(), 2u + 255u * 56u);
}

struct RefusedRequest {
  const char* name;
  MessageId messageId;
  Payload payload;
  ErrorCode error;
};

class ModemRefuses : public ModemTest, public testing::WithParamInterface<RefusedRequest> {};

TEST_P(ModemRefuses, Request_ThatIsWrong_AnswersItsErrorAndNothingElse) {
  create(withApn("ims"));
  const ProfilesByIndex before = modem->profiles().all();
  EXPECT_EQ(send(GetParam().messageId, GetParam().payload), failure(GetParam().error));
  EXPECT_EQ(last.response.size(), 11u);
  EXPECT_THAT(last.indications, IsEmpty());
  EXPECT_EQ(modem->profiles().all(), before);
}

Payload plus(Payload payload, const Payload& more) {
  payload.insert(payload.end(), more.begin(), more.end());
  return payload;
}

std::vector<RefusedRequest> refusedRequests() {
  using enum ErrorCode;
  const Payload shortId = {1, 4, 0, 0, 0, 0, 0};
  const Payload hugeList = {0x10, 2, 0, 0xFF, 0xFF};
  const Payload wrongFlag = {0x16, 2, 0, 1, 1};
  return {
      {"CreateWithoutType", MessageId::CreateProfile, {}, MalformedMessage},
      {"CreateWithNarrowType", MessageId::CreateProfile, {1, 1, 0, 0}, MalformedMessage},
      {"CreateWithWideFlag", MessageId::CreateProfile, plus(createRequest({}), wrongFlag),
       MalformedMessage},
      {"CreateWithTail", MessageId::CreateProfile, plus(createRequest({}), {0x12}),
       MalformedMessage},
      {"CreateOfOtherType", MessageId::CreateProfile, createRequest({}, 1), InvalidProfileType},
      {"CreateNameTooLong", MessageId::CreateProfile, createRequest({.name = std::string(51, 'n')}),
       ArgumentTooLong},
      {"CreateApnTooLong", MessageId::CreateProfile, createRequest({.apn = std::string(151, 'a')}),
       ArgumentTooLong},
      {"CreateUserTooLong", MessageId::CreateProfile,
       createRequest({.user = std::string(128, 'u')}), ArgumentTooLong},
      {"CreatePasswordTooLong", MessageId::CreateProfile,
       createRequest({.password = std::string(128, 'p')}), ArgumentTooLong},
      {"CreatePdpType", MessageId::CreateProfile, createRequest({.pdpType = 4u}), InvalidArgument},
      {"CreateLteRoam", MessageId::CreateProfile, createRequest({.lteRoam = 3u}), InvalidArgument},
      {"CreateUmtsRoam", MessageId::CreateProfile, createRequest({.umtsRoam = 254u}),
       InvalidArgument},
      {"CreateOverride", MessageId::CreateProfile, createRequest({.overrideHome = 256u}),
       InvalidArgument},
      {"ModifyWithoutId", MessageId::ModifyProfile, {}, MalformedMessage},
      {"ModifyWithShortId", MessageId::ModifyProfile, shortId, MalformedMessage},
      {"ModifyUnknownIndex", MessageId::ModifyProfile, profileRequest(2), InvalidProfileIndex},
      {"ModifyIndex0", MessageId::ModifyProfile, profileRequest(0), InvalidProfileIndex},
      {"ModifyOtherType", MessageId::ModifyProfile, profileRequest(1, {}, 1), InvalidProfileType},
      {"ModifyMalformedUnknownIndex", MessageId::ModifyProfile, plus(profileRequest(2), wrongFlag),
       MalformedMessage},
      {"ModifyApnTooLong", MessageId::ModifyProfile,
       profileRequest(1, {.apn = std::string(151, 'a')}), ArgumentTooLong},
      {"DeleteWithoutId", MessageId::DeleteProfile, {}, MalformedMessage},
      {"DeleteUnknownIndex", MessageId::DeleteProfile, profileRequest(255), InvalidProfileIndex},
      {"DeleteOtherType", MessageId::DeleteProfile, profileRequest(1, {}, 255), InvalidProfileType},
      {"SettingsWithoutId", MessageId::ProfileSettings, {}, MalformedMessage},
      {"SettingsUnknownIndex", MessageId::ProfileSettings, profileRequest(2), InvalidProfileIndex},
      {"SettingsOtherType", MessageId::ProfileSettings, profileRequest(1, {}, 1),
       InvalidProfileType},
      {"ListOtherType", MessageId::ProfileList, listRequest(1), InvalidProfileType},
      {"ListNarrowType", MessageId::ProfileList, {0x10, 1, 0, 0}, MalformedMessage},
      {"RegisterWideFlag", MessageId::IndicationRegister, {0x20, 2, 0, 1, 0}, MalformedMessage},
      {"EventsHugeCount", MessageId::ConfigureEvents, hugeList, MalformedMessage},
      {"EventsNoCount", MessageId::ConfigureEvents, {0x10, 1, 0, 0}, MalformedMessage},
      {"EventsOtherType", MessageId::ConfigureEvents, eventListRequest({idOf(1, 7)}),
       InvalidProfileType},
      {"BindWithoutSubscription", MessageId::BindSubscription, {}, MalformedMessage},
      {"UnknownMessage", MessageId{0x1234}, {}, NotSupported},
      {"IndicationAsRequest", MessageId::ProfileChanged, {}, NotSupported},
  };
}

INSTANTIATE_TEST_SUITE_P(Requests, ModemRefuses, testing::ValuesIn(refusedRequests()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(ModemTest, Register_OneOfTheTwoOnly_TellsNothing) {
  modem->handle(firstClient, MessageId::IndicationRegister, registerRequest());
  create({});
  EXPECT_THAT(lastEvents(firstClient), IsEmpty());
  modem->handle(firstClient, MessageId::ConfigureEvents, allEventsRequest());
  create({});
  EXPECT_THAT(lastEvents(firstClient), ElementsAre("create/2", "modify/2"));
}

TEST_F(ModemTest, Register_SwitchedOffAgain_TellsNothing) {
  modem->handle(otherClient, MessageId::IndicationRegister, registerRequest(/*isOn=*/false));
  create({});
  EXPECT_THAT(lastEvents(otherClient), IsEmpty());
}

TEST_F(ModemTest, EventList_ReportSwitchOff_TellsNothing) {
  modem->handle(otherClient, MessageId::ConfigureEvents,
                eventListRequest({idOf(profileIndexAny, profileTypeAny)}, /*isOn=*/false));
  create({});
  EXPECT_THAT(lastEvents(otherClient), IsEmpty());
}

TEST_F(ModemTest, EventList_OneIndex_TellsOfThatOneOnly) {
  modem->handle(otherClient, MessageId::ConfigureEvents, eventListRequest({idOf(2)}));
  create({});
  EXPECT_THAT(lastEvents(otherClient), IsEmpty());
  create({});
  EXPECT_THAT(lastEvents(otherClient), ElementsAre("create/2", "modify/2"));
}

TEST_F(ModemTest, EventList_RefusedOne_LeavesTheFormer) {
  modem->handle(otherClient, MessageId::ConfigureEvents, eventListRequest({idOf(1), idOf(1, 7)}));
  create({});
  create({});
  EXPECT_THAT(lastEvents(otherClient), ElementsAre("create/2", "modify/2"));
}

TEST_F(ModemTest, Bind_AnySubscription_IsAcceptedAndShown) {
  EXPECT_EQ(send(MessageId::BindSubscription, bindRequest(-1)), success);
  EXPECT_EQ(modem->clientsToJson()[0]["subscription"], -1);
}

TEST_F(ModemTest, Ready_ClientSawAbsence_IsToldOnceWhenRegistered) {
  modem->addClient(3, /*sawAbsence=*/true);
  EXPECT_THAT(modem->handle(3, MessageId::IndicationRegister, registerRequest()).indications,
              IsEmpty());
  const Outcome outcome = modem->handle(3, MessageId::ConfigureEvents, allEventsRequest());
  ASSERT_EQ(outcome.indications.size(), 1u);
  EXPECT_EQ(outcome.indications[0].client, 3u);
  EXPECT_EQ(eventOf(outcome.indications[0].payload), "ready/255");
  EXPECT_THAT(modem->handle(3, MessageId::ConfigureEvents, allEventsRequest()).indications,
              IsEmpty());
}

TEST_F(ModemTest, Ready_ClientJoinedARunningModem_IsNotTold) {
  modem->handle(firstClient, MessageId::IndicationRegister, registerRequest());
  send(MessageId::ConfigureEvents, allEventsRequest());
  EXPECT_THAT(last.indications, IsEmpty());
}

TEST_F(ModemTest, PowerCycle_MixedTable_KeepsThePersistentOnes) {
  create(withApn("a"));
  create(withApn("b", /*isPersistent=*/true));
  const uint32_t bootBefore = modem->bootNumber();
  modem->powerOff();
  EXPECT_FALSE(modem->isOn());
  modem->powerUp();
  EXPECT_NE(modem->bootNumber(), bootBefore);
  EXPECT_EQ(modem->profiles().all(), (ProfilesByIndex{{2, withApn("b", true)}}));
}

TEST_F(ModemTest, PowerCycle_Clients_AreForgotten) {
  modem->powerOff();
  modem->powerUp();
  EXPECT_THAT(modem->clientsToJson(), IsEmpty());
  EXPECT_EQ(send(MessageId::ProfileList, {}), failure(ErrorCode::NotReady));
}

TEST_F(ModemTest, PowerCycle_OwnProfiles_ComeBackAsInTheFile) {
  startModem(4, {{1, withApn("own")}, {2, withApn("factory", /*isPersistent=*/true)}});
  send(MessageId::ModifyProfile, profileRequest(1, withApn("edited")));
  send(MessageId::DeleteProfile, profileRequest(2));
  modem->powerOff();
  modem->powerUp();
  EXPECT_EQ(modem->profiles().all(), (ProfilesByIndex{{1, withApn("own")}}));
}

TEST_F(ModemTest, PowerCycle_OwnIndexTakenByAPersistentOne_MovesTheOwn) {
  startModem(2, {{1, withApn("own")}});
  send(MessageId::DeleteProfile, profileRequest(1));
  create(withApn("kept", /*isPersistent=*/true));
  modem->powerOff();
  modem->powerUp();
  EXPECT_EQ(modem->profiles().all(),
            (ProfilesByIndex{{1, withApn("kept", true)}, {2, withApn("own")}}));
}

TEST_F(ModemTest, PowerCycle_NoRoomForAnOwnProfile_LeavesItOut) {
  startModem(1, {{1, withApn("own")}});
  send(MessageId::DeleteProfile, profileRequest(1));
  create(withApn("kept", /*isPersistent=*/true));
  modem->powerOff();
  modem->powerUp();
  EXPECT_EQ(modem->profiles().all(), (ProfilesByIndex{{1, withApn("kept", true)}}));
}

class ModemWithStore : public ModemTest {
 protected:
  void SetUp() override { restart(); }

  void restart(ProfilesByIndex own = {}) {
    startModem(4, std::move(own), std::make_unique<Store>(path(), 4));
  }
  std::string path() const { return folder.file("store"); }
  ProfilesByIndex stored() const { return Store(path(), 4).load().value(); }

  TemporaryFolder folder;
};

TEST_F(ModemWithStore, Edits_OfPersistentProfiles_AreStoredBeforeTheAnswer) {
  create(withApn("a", /*isPersistent=*/true));
  EXPECT_EQ(stored(), (ProfilesByIndex{{1, withApn("a", true)}}));
  send(MessageId::ModifyProfile, profileRequest(1, withApn("b")));
  EXPECT_EQ(stored(), (ProfilesByIndex{{1, withApn("b", true)}}));
  send(MessageId::DeleteProfile, profileRequest(1));
  EXPECT_EQ(stored(), ProfilesByIndex{});
}

TEST_F(ModemWithStore, Edits_OfOtherProfiles_DoNotTouchTheStore) {
  const auto written = std::filesystem::last_write_time(path());
  std::filesystem::last_write_time(path(), written - std::chrono::hours(1));
  create(withApn("a"));
  send(MessageId::ModifyProfile, profileRequest(1, withApn("b")));
  send(MessageId::DeleteProfile, profileRequest(1));
  EXPECT_EQ(std::filesystem::last_write_time(path()), written - std::chrono::hours(1));
}

TEST_F(ModemWithStore, Restart_StoreExists_WinsOverPersistentOnesOfTheFile) {
  create(withApn("stored", /*isPersistent=*/true));
  restart({{1, withApn("factory", /*isPersistent=*/true)}, {2, withApn("own")}});
  EXPECT_EQ(modem->profiles().all(),
            (ProfilesByIndex{{1, withApn("stored", true)}, {2, withApn("own")}}));
}

TEST_F(ModemWithStore, Restart_NoStoreYet_BeginsWithThePersistentOnesOfTheFile) {
  std::filesystem::remove(path());
  restart({{3, withApn("factory", /*isPersistent=*/true)}});
  EXPECT_EQ(stored(), (ProfilesByIndex{{3, withApn("factory", true)}}));
}

TEST_F(ModemWithStore, Create_StoreCannotBeWritten_IsRefusedAndChangesNothing) {
  std::filesystem::create_directory(path() + ".new");
  EXPECT_EQ(send(MessageId::CreateProfile, createRequest(withApn("a", true))),
            failure(ErrorCode::Internal));
  EXPECT_THAT(modem->profiles().all(), IsEmpty());
  EXPECT_THAT(last.indications, IsEmpty());
  EXPECT_EQ(create(withApn("not persistent")), 1);
}

TEST_F(ModemWithStore, PowerOff_StoreIsUnreadable_ThrowsAndStaysOn) {
  std::filesystem::remove(path());
  std::filesystem::create_directory(path());
  EXPECT_THROW(modem->powerOff(), Error);
  EXPECT_TRUE(modem->isOn());
  EXPECT_EQ(modem->clientsToJson().size(), 2u);
}

}  // namespace
}  // namespace modem::test
