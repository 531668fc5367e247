// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Errors.h"
#include "TemporaryFolder.h"
#include "Tool.h"
#include "policies/ProfileList.h"

#include <gmock/gmock.h>

namespace pavoctl {
namespace {

using pavo::test::TemporaryFolder;
using pavo::test::writeFile;
using testing::EndsWith;
using testing::ThrowsMessage;

class ProfileListTest : public testing::Test {
 protected:
  std::list<pavo::ProfileParams> read(const std::string& text) {
    return readProfileList(writeFile(folder, "list.json", text));
  }

  const TemporaryFolder folder;
};

// Returns an attribute whose value is that many nested arrays. The list and the profile add two
// more levels.
std::string nested(std::size_t arrays) {
  return "[\n{\"apnName\":" + std::string(arrays, '[') + std::string(arrays, ']') + "}]";
}

TEST_F(ProfileListTest, Read_NestedTooDeep_RefusedWithFileAndLine) {
  EXPECT_THAT([&] { read(nested(62)); },
              ThrowsMessage<UsageError>(EndsWith("apnName: an array is not a value for it")));
  for (const std::string& text : {nested(63), nested(400000), "\n" + std::string(400000, '[')}) {
    EXPECT_THAT([&] { read(text); },
                ThrowsMessage<UsageError>(EndsWith("/list.json:2: values nested too deep")));
  }
  std::string objects = "[";
  for (int i = 0; i < 100000; ++i) {
    objects += "{\"a\":";
  }
  EXPECT_THAT([&] { read(objects); },
              ThrowsMessage<UsageError>(EndsWith("/list.json:1: values nested too deep")));
}

TEST_F(ProfileListTest, Read_BracketsThatDoNotNest_AreNoHarm) {
  const std::string brackets(100, '[');
  EXPECT_EQ(read(R"([{"apnName": "\")" + brackets + R"(\\"}])").front().getApnName(),
            "\"" + brackets + "\\");
  std::string many = "[{}";
  for (int i = 0; i < 100; ++i) {
    many += R"(,{"apnTypesMask": ["MMS"]})";
  }
  EXPECT_EQ(read(many + "]").size(), 101U);
}

TEST_F(ProfileListTest, Read_ValueOfAnotherKind_NamedByItsKindOnly) {
  struct Case {
    const char* text;
    const char* complaint;
  };
  for (const Case& c : {
           Case{R"([{"password": 12345}])", "password: a number is not a value for it"},
           Case{R"([{"password": 12345.5}])", "password: a number is not a value for it"},
           Case{R"([{"password": true}])", "password: true or false is not a value for it"},
           Case{R"([{"password": null}])", "password: null is not a value for it"},
           Case{R"([{"password": ["hunter2"]}])", "password: an array is not a value for it"},
           Case{R"([{"password": {"hunter2": 1}}])", "password: an object is not a value for it"},
           Case{R"([{"isClatEnabled": 1}])", "isClatEnabled: a number is not a value for it"},
           Case{R"([{"apnTypesMask": ["MMS", 3]}])",
                "apnTypesMask: an array is not a value for it"},
           Case{R"([{"pasword": "hunter2"}])", "'pasword' is not an attribute of a profile"},
           Case{R"(["hunter2"])", "a profile is an object, as in {\"apnName\": \"internet\"}"},
       }) {
    SCOPED_TRACE(c.text);
    EXPECT_THAT([&] { read(c.text); },
                ThrowsMessage<UsageError>(EndsWith(std::string("element 1: ") + c.complaint)));
  }
}

}  // namespace
}  // namespace pavoctl
