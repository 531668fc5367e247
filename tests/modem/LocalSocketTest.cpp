// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "FileMode.h"
#include "TemporaryFolder.h"
#include "wire/LocalSocket.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace wire {
namespace {

using pavo::UniqueFd;
using pavo::test::modeOf;
using pavo::test::TemporaryFolder;

TEST(LocalSocket, MayConnect_OwnUserAndRoot_NobodyElse) {
  EXPECT_TRUE(mayConnect(/*peer=*/1000, /*server=*/1000));
  EXPECT_TRUE(mayConnect(/*peer=*/0, /*server=*/1000));
  EXPECT_TRUE(mayConnect(/*peer=*/0, /*server=*/0));
  EXPECT_FALSE(mayConnect(/*peer=*/1001, /*server=*/1000));
  EXPECT_FALSE(mayConnect(/*peer=*/1000, /*server=*/0));
}

TEST(LocalSocket, PeerOf_OwnConnection_IsThisUser) {
  const TemporaryFolder folder;
  const ListeningSocket listener(folder.file("modem"));
  EXPECT_EQ(peerOf(connectToSocket(folder.file("modem")).get()), geteuid());
}

TEST(LocalSocket, PeerOf_NoSocket_IsUnknown) { EXPECT_EQ(peerOf(-1), std::nullopt); }

class ListenUnderUmask : public testing::TestWithParam<mode_t> {};

TEST_P(ListenUnderUmask, Listen_AnyUmask_SocketIsItsOwnersOnly) {
  const TemporaryFolder folder;
  const mode_t before = umask(GetParam());
  {
    const ListeningSocket listener(folder.file("modem"));
    EXPECT_EQ(modeOf(folder.file("modem")), 0600u);
  }
  umask(before);
}

INSTANTIATE_TEST_SUITE_P(Umasks, ListenUnderUmask, testing::Values(0, 022, 077));

TEST(LocalSocket, Listen_DirectoryStaysLocked_GivesUpAndNamesIt) {
  const TemporaryFolder folder;
  const std::string directory = folder.path().string();
  const UniqueFd holder(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  ASSERT_EQ(flock(holder.get(), LOCK_EX), 0);
  try {
    const ListeningSocket listener(folder.file("modem"));
    ADD_FAILURE() << "it listens";
  } catch (const SocketError& error) {
    EXPECT_EQ(error.what(), folder.file("modem") + ": another process keeps the directory " +
                                directory + " locked");
  }
  EXPECT_FALSE(std::filesystem::exists(folder.file("modem")));
}

}  // namespace
}  // namespace wire
