// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "CapturingLogWriter.h"
#include "Sequence.h"
#include "WakeFd.h"
#include "base/ErrorText.h"
#include "base/UniqueFd.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>

namespace pavo::test {
namespace {

UniqueFd makeUniqueEventFd(unsigned int value = 0) {
  return UniqueFd(eventfd(value, EFD_NONBLOCK | EFD_CLOEXEC));
}

struct PipeEnds {
  UniqueFd reader;
  UniqueFd writer;

  PipeEnds() {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_NONBLOCK | O_CLOEXEC), 0);
    reader.reset(ends[0]);
    writer.reset(ends[1]);
  }
};

std::uint64_t valueOf(const UniqueFd& fd) {
  std::uint64_t value = 0;
  return read(fd.get(), &value, sizeof value) == sizeof value ? value : 0;
}

TEST(WakeFdTest, NotifyFd_EventFd_OneIsAdded) {
  const UniqueFd fd = makeUniqueEventFd(/*value=*/4);
  EXPECT_EQ(notifyFd(fd.get()), 8);
  EXPECT_EQ(valueOf(fd), 5U);
}

TEST(WakeFdTest, NotifyFd_CounterFull_MinusOneAndErrno) {
  const UniqueFd fd = makeUniqueEventFd();
  const std::uint64_t most = 0xfffffffffffffffe;
  ASSERT_EQ(write(fd.get(), &most, sizeof most), 8);
  EXPECT_EQ(notifyFd(fd.get()), -1);
  EXPECT_EQ(errno, EAGAIN);
}

TEST(WakeFdTest, NotifyFd_NoDescriptor_MinusOneAndErrno) {
  EXPECT_EQ(notifyFd(-1), -1);
  EXPECT_EQ(errno, EBADF);
}

TEST(WakeFdTest, DrainFd_SeveralNotifications_NothingLeftNothingLogged) {
  CapturingLogWriter log;
  const UniqueFd fd = makeUniqueEventFd();
  notifyFd(fd.get());
  notifyFd(fd.get());
  drainFd(fd.get(), LogLevel::Error);
  EXPECT_EQ(valueOf(fd), 0U);
  EXPECT_EQ(sequenceOf(log.lines()), Sequence());
}

TEST(WakeFdTest, DrainFd_MoreThanOneBuffer_AllRead) {
  CapturingLogWriter log;
  const PipeEnds ends;
  const std::string bytes(5000, 'x');
  ASSERT_EQ(write(ends.writer.get(), bytes.data(), bytes.size()), 5000);
  drainFd(ends.reader.get(), LogLevel::Error);
  char byte = 0;
  EXPECT_EQ(read(ends.reader.get(), &byte, 1), -1);
  EXPECT_EQ(sequenceOf(log.lines()), Sequence());
}

TEST(WakeFdTest, DrainFd_PeerGone_EndsWithoutALine) {
  CapturingLogWriter log;
  PipeEnds ends;
  ends.writer.reset();
  drainFd(ends.reader.get(), LogLevel::Error);
  EXPECT_EQ(sequenceOf(log.lines()), Sequence());
}

TEST(WakeFdTest, DrainFd_ReadFails_LineAtTheGivenLevel) {
  CapturingLogWriter log;
  drainFd(-1, LogLevel::Info);
  drainFd(-1, LogLevel::Error);
  EXPECT_EQ(sequenceOf(log.lines()), (Sequence{"I Error while clearing the read buffer on fd -1",
                                               "E Error while clearing the read buffer on fd -1"}));
}

TEST(WakeFdTest, ErrorText_AnyErrno_SaysWhatStrerrorSays) {
  for (const int error : {0, EAGAIN, EBADF, EINVAL, 99999}) {
    SCOPED_TRACE(error);
    EXPECT_EQ(errorText(error), std::strerror(error));
  }
}

}  // namespace
}  // namespace pavo::test
