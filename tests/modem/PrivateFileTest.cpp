// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "FileMode.h"
#include "TemporaryFolder.h"
#include "base/PrivateFile.h"
#include "modem/common/File.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

namespace pavo {
namespace {

using modem::readFile;
using pavo::test::modeOf;
using pavo::test::TemporaryFolder;
using pavo::test::writeWithMode;
using testing::HasSubstr;

class PrivateFileTest : public testing::Test {
 protected:
  static void write(const PrivateFile& file, const std::string& text) {
    EXPECT_EQ(file.problem, "");
    EXPECT_EQ(::write(file.fd.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }

  TemporaryFolder folder;
  const std::string path = folder.file("private");
  const std::string victim = folder.file("victim");
};

TEST_F(PrivateFileTest, Open_NoFile_MakesOneForItsOwnerOnly) {
  write(openPrivateFile(path), "new");
  EXPECT_EQ(readFile(path), "new");
  EXPECT_EQ(modeOf(path), 0600u);
}

TEST_F(PrivateFileTest, Open_FileThatOthersMayRead_TakesTheirRightsAndAppends) {
  writeWithMode(path, "old", 0666);
  write(openPrivateFile(path), "new");
  EXPECT_EQ(readFile(path), "oldnew");
  EXPECT_EQ(modeOf(path), 0600u);
}

TEST_F(PrivateFileTest, Open_SymbolicLink_IsRefused) {
  writeWithMode(victim, "precious", 0644);
  std::filesystem::create_symlink(victim, path);
  const PrivateFile file = openPrivateFile(path);
  EXPECT_FALSE(file.fd.isOpen());
  EXPECT_EQ(file.problem, "it is a symbolic link, which is not followed");
  EXPECT_EQ(modeOf(victim), 0644u);
}

TEST_F(PrivateFileTest, Open_SecondNameOfAFile_IsRefused) {
  writeWithMode(victim, "precious", 0644);
  std::filesystem::create_hard_link(victim, path);
  EXPECT_THAT(openPrivateFile(path).problem, HasSubstr("a second name"));
  EXPECT_EQ(modeOf(victim), 0644u);
}

TEST_F(PrivateFileTest, Open_FileOfAnotherUser_IsRefused) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can make one";
  }
  writeWithMode(path, "theirs", 0666);
  ASSERT_EQ(chown(path.c_str(), /*owner=*/65534, /*group=*/65534), 0);
  EXPECT_THAT(openPrivateFile(path).problem, HasSubstr("another user"));
  EXPECT_EQ(modeOf(path), 0666u);
}

TEST_F(PrivateFileTest, Open_Pipe_IsRefusedWithAndWithoutAReader) {
  ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
  EXPECT_FALSE(openPrivateFile(path).fd.isOpen());
  const UniqueFd reader(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  EXPECT_THAT(openPrivateFile(path).problem, HasSubstr("neither a file nor"));
}

TEST_F(PrivateFileTest, Open_NullDevice_IsUsedAndKeepsItsMode) {
  const auto before = modeOf("/dev/null");
  write(openPrivateFile("/dev/null"), "gone");
  EXPECT_EQ(modeOf("/dev/null"), before);
}

TEST_F(PrivateFileTest, Open_NoFolder_TellsWhy) {
  EXPECT_EQ(openPrivateFile(folder.file("none/private")).problem, "No such file or directory");
}

TEST_F(PrivateFileTest, Create_LeftOverFileThatOthersMayRead_IsReplaced) {
  writeWithMode(path, "a longer text", 0666);
  write(createPrivateFile(path), "new");
  EXPECT_EQ(readFile(path), "new");
  EXPECT_EQ(modeOf(path), 0600u);
}

TEST_F(PrivateFileTest, Create_LeftOverLink_IsReplacedAndItsTargetKept) {
  writeWithMode(victim, "precious", 0644);
  std::filesystem::create_symlink(victim, path);
  write(createPrivateFile(path), "new");
  EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(path)));
  EXPECT_EQ(readFile(path), "new");
  EXPECT_EQ(readFile(victim), "precious");
}

TEST_F(PrivateFileTest, Create_LinkPlacedMeanwhile_IsNotFollowed) {
  writeWithMode(victim, "precious", 0644);
  std::atomic<bool> isOver = false;
  std::thread other([&] {
    while (!isOver) {
      static_cast<void>(symlink(victim.c_str(), path.c_str()));
    }
  });
  for (int i = 0; i < 2000; ++i) {
    const PrivateFile file = createPrivateFile(path);
    EXPECT_NE(file.fd.isOpen(), !file.problem.empty());
  }
  isOver = true;
  other.join();
  EXPECT_EQ(readFile(victim), "precious");
}

TEST_F(PrivateFileTest, Create_LeftOverFolder_IsAProblem) {
  std::filesystem::create_directory(path);
  EXPECT_NE(createPrivateFile(path).problem, "");
}

TEST_F(PrivateFileTest, MakePrivate_FileAndLink_ChangesTheFileOnly) {
  writeWithMode(path, "text", 0644);
  writeWithMode(victim, "precious", 0644);
  std::filesystem::create_symlink(victim, folder.file("link"));
  makePrivate(path);
  makePrivate(folder.file("link"));
  makePrivate(folder.file("none"));
  EXPECT_EQ(modeOf(path), 0600u);
  EXPECT_EQ(modeOf(victim), 0644u);
}

}  // namespace
}  // namespace pavo
