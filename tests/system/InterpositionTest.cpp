// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This test runs a program that defines the platform's functions itself, with the real libpavor.so.
#include "SystemTest.h"

namespace pavo::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

class InterpositionTest : public SystemTest {
 protected:
  InterpositionTest() : child({PAVO_SYSTEM_INTERPOSER_PROGRAM}) {
    const auto exit = child.waitForExit();
    EXPECT_TRUE(exit && exit->code == 0) << child.output() << child.errors();
  }

  ChildProcess child;
};

TEST_F(InterpositionTest, Messaging_OfTheProgram_IsUsed) {
  const std::string output = child.output();
  EXPECT_THAT(output, HasSubstr("service 1 257 6\nnotify\n"));
  EXPECT_THAT(output, HasSubstr("send 175 4 8 1000\nsend 3 408 8 1000\nsend 167 2052 8 1000\n"));
  EXPECT_THAT(output, HasSubstr("send 39 3256 24 1000\nindex 77\n"));
  EXPECT_THAT(output, HasSubstr("release client\n"));
}

TEST_F(InterpositionTest, Logs_OfTheProgram_AreUsed) {
  EXPECT_THAT(child.output(), HasSubstr("\nandroid lines\n"));
  EXPECT_THAT(child.output(), HasSubstr("diag init\n"));
  EXPECT_THAT(child.output(), HasSubstr("\ndiag lines\n"));
}

TEST_F(InterpositionTest, HostLibrary_IsNeverAsked) {
  for (const json& entry : transcript()) {
    EXPECT_NE(entry["kind"], "hello");
  }
}

}  // namespace
}  // namespace pavo::test
