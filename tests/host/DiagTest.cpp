// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "HostTest.h"
#include "diag_lsm.h"
#include "support/FileMode.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace pavo::test {
namespace {

const diag_msg_descriptor tagged{/*line=*/7, /*ss_id=*/63, /*ss_mask=*/4, "|%s| %s",
                                 "DiagTest.cpp"};

class DiagTest : public ::testing::Test {
 protected:
  std::string written() const {
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
  }

  TemporaryFolder folder;
  const std::string path = folder.file("diag");
  const ScopedVariable fileVariable{"PAVO_DIAG_FILE", path.c_str()};
};

TEST_F(DiagTest, Message_WhileOpen_IsALineInTheFile) {
  EXPECT_NE(Diag_LSM_Init(nullptr), 0);
  msg_sprintf(&tagged, "TAG", "first");
  msg_sprintf(&tagged, "TAG", "second");
  EXPECT_NE(Diag_LSM_DeInit(), 0);
  EXPECT_EQ(written(), "|TAG| first\n|TAG| second\n");
}

TEST_F(DiagTest, Message_WhileClosed_IsDropped) {
  msg_sprintf(&tagged, "TAG", "before");
  Diag_LSM_Init(nullptr);
  Diag_LSM_DeInit();
  msg_sprintf(&tagged, "TAG", "after");
  EXPECT_EQ(written(), "");
}

TEST_F(DiagTest, Init_Twice_StaysOpenUntilTheSecondDeInit) {
  Diag_LSM_Init(nullptr);
  Diag_LSM_Init(nullptr);
  Diag_LSM_DeInit();
  msg_sprintf(&tagged, "TAG", "still open");
  Diag_LSM_DeInit();
  msg_sprintf(&tagged, "TAG", "closed");
  EXPECT_EQ(written(), "|TAG| still open\n");
}

TEST_F(DiagTest, Init_FileThatExists_IsAppendedTo) {
  std::ofstream(path) << "old\n";
  Diag_LSM_Init(nullptr);
  msg_sprintf(&tagged, "TAG", "new");
  Diag_LSM_DeInit();
  EXPECT_EQ(written(), "old\n|TAG| new\n");
}

TEST_F(DiagTest, DeInit_WhileClosed_Fails) { EXPECT_EQ(Diag_LSM_DeInit(), 0); }

TEST_F(DiagTest, Message_TooLong_IsCutAndStaysOneLine) {
  Diag_LSM_Init(nullptr);
  msg_sprintf(&tagged, "TAG", std::string(5000, 'x').c_str());
  msg_sprintf(&tagged, "TAG", "next");
  Diag_LSM_DeInit();
  EXPECT_EQ(written(), "|TAG| " + std::string(2041, 'x') + "\n|TAG| next\n");
}

TEST_F(DiagTest, Message_WithoutFormat_IsDropped) {
  const diag_msg_descriptor bare{};
  Diag_LSM_Init(nullptr);
  msg_sprintf(nullptr);
  msg_sprintf(&bare);
  Diag_LSM_DeInit();
  EXPECT_EQ(written(), "");
}

TEST_F(DiagTest, Message_WithoutFile_GoesToStandardError) {
  const ScopedVariable none("PAVO_DIAG_FILE", nullptr);
  ::testing::internal::CaptureStderr();
  Diag_LSM_Init(nullptr);
  msg_sprintf(&tagged, "TAG", "seen");
  Diag_LSM_DeInit();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "|TAG| seen\n");
}

TEST_F(DiagTest, Message_FileThatCannotBe_GoesToStandardError) {
  const std::string nowhere = folder.file("missing/diag");
  const ScopedVariable variable("PAVO_DIAG_FILE", nowhere.c_str());
  ::testing::internal::CaptureStderr();
  Diag_LSM_Init(nullptr);
  msg_sprintf(&tagged, "TAG", "seen");
  Diag_LSM_DeInit();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "diag_lsm: " + nowhere +
                ": No such file or directory; its lines go to standard error\n|TAG| seen\n");
}

TEST_F(DiagTest, Message_FileIsALink_GoesToStandardErrorAndTheTargetIsKept) {
  writeWithMode(folder.file("victim"), "precious", 0644);
  std::filesystem::create_symlink(folder.file("victim"), path);
  ::testing::internal::CaptureStderr();
  Diag_LSM_Init(nullptr);
  msg_sprintf(&tagged, "TAG", "seen");
  Diag_LSM_DeInit();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "diag_lsm: " + path +
                ": it is a symbolic link, which is not followed; its lines go to standard error\n"
                "|TAG| seen\n");
  EXPECT_EQ(std::filesystem::file_size(folder.file("victim")), 8u);
  EXPECT_EQ(modeOf(folder.file("victim")), 0644u);
}

TEST_F(DiagTest, Init_NoFile_MakesOneForItsOwnerOnly) {
  Diag_LSM_Init(nullptr);
  Diag_LSM_DeInit();
  EXPECT_EQ(modeOf(path), 0600u);
}

TEST_F(DiagTest, Init_FileThatOthersMayRead_TakesTheirRights) {
  writeWithMode(path, "old\n", 0644);
  Diag_LSM_Init(nullptr);
  Diag_LSM_DeInit();
  EXPECT_EQ(modeOf(path), 0600u);
}

TEST_F(DiagTest, Message_NullDevice_IsGoneAndTheDeviceAsItWas) {
  const ScopedVariable null("PAVO_DIAG_FILE", "/dev/null");
  const mode_t before = modeOf("/dev/null");
  ::testing::internal::CaptureStderr();
  Diag_LSM_Init(nullptr);
  msg_sprintf(&tagged, "TAG", "unseen");
  Diag_LSM_DeInit();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(modeOf("/dev/null"), before);
}

TEST_F(DiagTest, Message_FromManyThreads_AreWholeLines) {
  Diag_LSM_Init(nullptr);
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([] {
      for (int line = 0; line < 100; ++line) {
        Diag_LSM_Init(nullptr);
        msg_sprintf(&tagged, "TAG", "whole");
        Diag_LSM_DeInit();
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  Diag_LSM_DeInit();
  std::string expected;
  for (int line = 0; line < 800; ++line) {
    expected += "|TAG| whole\n";
  }
  EXPECT_EQ(written(), expected);
}

}  // namespace
}  // namespace pavo::test
