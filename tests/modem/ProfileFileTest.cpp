// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "FileMode.h"
#include "TemporaryFolder.h"
#include "modem/core/ProfileFile.h"
#include "modem/core/Store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace modem {
namespace {

using pavo::test::modeOf;
using pavo::test::TemporaryFolder;
using pavo::test::writeWithMode;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr size_t capacity = 4;

std::string writeFile(const TemporaryFolder& folder, const std::string& text) {
  const std::string path = folder.file("profiles.json");
  std::ofstream(path) << text;
  return path;
}

Profile persistentProfile(const std::string& apn) {
  return Profile{.apn = apn, .persistent = uint8_t{1}};
}

TEST(ProfileFile, Read_SomeWithoutIndex_FillsTheLowestFreeIndices) {
  const TemporaryFolder folder;
  const auto path =
      writeFile(folder, R"({"profiles": [{"apn": "a"}, {"index": 1, "apn": "b"}, {"apn": "c"}]})");
  const auto profiles = readProfileFile(path, capacity);
  ASSERT_TRUE(profiles);
  ASSERT_EQ(profiles->size(), 3u);
  EXPECT_EQ(profiles->at(1).apn, "b");
  EXPECT_EQ(profiles->at(2).apn, "a");
  EXPECT_EQ(profiles->at(3).apn, "c");
}

TEST(ProfileFile, Read_NoSuchFile_IsEmpty) {
  const TemporaryFolder folder;
  EXPECT_EQ(readProfileFile(folder.file("none"), capacity), std::nullopt);
}

TEST(ProfileFile, Read_Directory_IsAnError) {
  const TemporaryFolder folder;
  EXPECT_THROW(readProfileFile(folder.path().string(), capacity), Error);
}

struct BadFile {
  const char* name;
  const char* text;
  const char* error;
};

class ProfileFileBad : public testing::TestWithParam<BadFile> {};

TEST_P(ProfileFileBad, Read_BadFile_TellsFileAndPlaceInOneLine) {
  const TemporaryFolder folder;
  const auto path = writeFile(folder, GetParam().text);
  try {
    readProfileFile(path, capacity);
    FAIL() << "it was accepted";
  } catch (const Error& error) {
    EXPECT_THAT(error.what(),
                AllOf(StartsWith(path), HasSubstr(GetParam().error), Not(HasSubstr("\n"))));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Files, ProfileFileBad,
    testing::Values(
        BadFile{"Empty", "", "parse error at line 1"},
        BadFile{"Cut", "{\"profiles\": [\n{\"apn\"", "line 2"},
        BadFile{"NoList", "{}", "list \"profiles\""},
        BadFile{"ListOnly", "[]", "list \"profiles\""},
        BadFile{"OtherMember", R"({"profiles": [], "x": 1})", "other than \"profiles\""},
        BadFile{"NoObject", R"({"profiles": [1]})", "profiles[0] has to be an object"},
        BadFile{"UnknownMember", R"({"profiles": [{}, {"apm": "x"}]})",
                "profiles[1] has the unknown member \"apm\""},
        BadFile{"WrongForm", R"({"profiles": [{"apn": 1}]})", "profiles[0].apn has to be a text"},
        BadFile{"WrongEnumeration", R"({"profiles": [{"pdpType": 9}]})", "pdpType has no value 9"},
        BadFile{"Index0", R"({"profiles": [{"index": 0}]})", "profiles[0].index is 0"},
        BadFile{"IndexAboveCapacity", R"({"profiles": [{"index": 5}]})", "profiles[0].index"},
        BadFile{"IndexTwice", R"({"profiles": [{"index": 1}, {"index": 1}]})",
                "profiles[1].index 1 is that of another"},
        BadFile{"TooMany", R"({"profiles": [{}, {}, {}, {}, {}]})",
                "profiles[4] does not fit, the capacity is 4"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ProfileFile, Read_TextAboveItsBound_TellsTheBound) {
  const TemporaryFolder folder;
  const auto path =
      writeFile(folder, R"({"profiles": [{"name": ")" + std::string(51, 'n') + R"("}]})");
  EXPECT_THAT([&] { readProfileFile(path, capacity); },
              testing::ThrowsMessage<Error>(HasSubstr("at most 50")));
}

TEST(Store, Load_NothingSaved_IsEmpty) {
  const TemporaryFolder folder;
  EXPECT_EQ(Store(folder.file("store"), capacity).load(), std::nullopt);
}

TEST(Store, Load_AfterSave_GivesTheSameProfiles) {
  const TemporaryFolder folder;
  const Store store(folder.file("store"), capacity);
  ProfilesByIndex profiles = {{2, persistentProfile("ims")}, {4, persistentProfile("sos")}};
  profiles[4].name = std::string("\x00\xFE\n\"", 4);
  store.save(profiles);
  EXPECT_EQ(store.load(), profiles);
}

TEST(Store, Save_Again_ReplacesTheFileAndLeavesNothingElse) {
  const TemporaryFolder folder;
  const Store store(folder.file("store"), capacity);
  store.save({{1, persistentProfile("ims")}});
  store.save({});
  EXPECT_EQ(store.load(), ProfilesByIndex{});
  const std::filesystem::directory_iterator files(folder.path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

TEST(Store, Save_AnyState_IsForTheOwnerOnly) {
  const TemporaryFolder folder;
  Store(folder.file("store"), capacity).save({});
  EXPECT_EQ(modeOf(folder.file("store")), 0600u);
}

TEST(Store, Save_FilesThatOthersMayReadWereThere_IsForTheOwnerOnly) {
  const TemporaryFolder folder;
  writeWithMode(folder.file("store"), R"({"profiles": []})", 0644);
  writeWithMode(folder.file("store.new"), "left over", 0644);
  Store(folder.file("store"), capacity).save({});
  EXPECT_EQ(modeOf(folder.file("store")), 0600u);
}

TEST(Store, Save_LinkInThePlaceOfTheFreshFile_IsNotFollowed) {
  const TemporaryFolder folder;
  writeWithMode(folder.file("victim"), "precious", 0644);
  std::filesystem::create_symlink(folder.file("victim"), folder.file("store.new"));
  const Store store(folder.file("store"), capacity);
  store.save({{1, persistentProfile("ims")}});
  EXPECT_EQ(readFile(folder.file("victim")), "precious");
  EXPECT_FALSE(std::filesystem::is_symlink(folder.file("store")));
  EXPECT_EQ(store.load()->size(), 1u);
}

TEST(Store, Load_FileThatOthersMayRead_TakesTheirRights) {
  const TemporaryFolder folder;
  writeWithMode(folder.file("store"), R"({"profiles": []})", 0644);
  Store(folder.file("store"), capacity).load();
  EXPECT_EQ(modeOf(folder.file("store")), 0600u);
}

TEST(Store, Save_HalfWrittenFileOfADeadModem_IsOverwritten) {
  const TemporaryFolder folder;
  std::ofstream(folder.file("store.new")) << "{\"profiles\": [ and then the power went";
  const Store store(folder.file("store"), capacity);
  EXPECT_EQ(store.load(), std::nullopt);
  store.save({{1, persistentProfile("ims")}});
  EXPECT_EQ(store.load()->size(), 1u);
}

TEST(Store, Save_CannotBeWritten_ThrowsAndKeepsTheOldState) {
  const TemporaryFolder folder;
  const Store store(folder.file("store"), capacity);
  store.save({{1, persistentProfile("ims")}});
  std::filesystem::create_directory(folder.file("store.new"));
  EXPECT_THROW(store.save({}), Error);
  EXPECT_EQ(store.load()->size(), 1u);
}

TEST(Store, Load_ProfileThatIsNotPersistent_IsAnError) {
  const TemporaryFolder folder;
  const auto path = writeFile(folder, R"({"profiles": [{"index": 1, "apn": "x"}]})");
  EXPECT_THAT([&] { Store(path, capacity).load(); },
              testing::ThrowsMessage<Error>(HasSubstr("not persistent")));
}

}  // namespace
}  // namespace modem
