// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "CapturingLogWriter.h"
#include "Deadline.h"
#include "EventManager.h"
#include "FdLimit.h"
#include "LogLines.h"
#include "Sequence.h"
#include "WakeFd.h"
#include "WatchedByKernel.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace pavo::test {
namespace {

// If this is not empty, epoll_wait returns it next on this thread. It serves for combinations of
// events that the kernel does not make on request.
thread_local std::vector<epoll_event> scriptedEvents;

}  // namespace
}  // namespace pavo::test

extern "C" {

int __real_epoll_wait(int fd, epoll_event* events, int count, int timeout);

int __wrap_epoll_wait(int fd, epoll_event* events, int count, int timeout);
int __wrap_epoll_wait(int fd, epoll_event* events, int count, int timeout) {
  std::vector<epoll_event>& scripted = pavo::test::scriptedEvents;
  if (scripted.empty()) {
    return __real_epoll_wait(fd, events, count, timeout);
  }
  const int ready = std::min(count, static_cast<int>(scripted.size()));
  std::copy_n(scripted.begin(), ready, events);
  scripted.clear();
  return ready;
}
}

namespace pavo::test {
namespace {

bool isOpen(int fd) { return fcntl(fd, F_GETFD) != -1; }

int makeEventFd(unsigned int value = 0) { return eventfd(value, EFD_NONBLOCK | EFD_CLOEXEC); }

std::string pointerText(void (*function)(int, void*)) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", reinterpret_cast<void*>(function));
  return text;
}

std::string pointerText(const void* pointer) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", pointer);
  return text;
}

epoll_event eventOn(int fd, unsigned int events) {
  epoll_event event{};
  event.events = events;
  event.data.fd = fd;
  return event;
}

// Records the descriptors that were called back, in order.
struct Calls {
  std::vector<int> events;
  std::vector<int> closes;
};

void onEvent(int fd, void* data) {
  EventManager::clearRead(fd, nullptr);
  static_cast<Calls*>(data)->events.push_back(fd);
}

void onClose(int fd, void* data) { static_cast<Calls*>(data)->closes.push_back(fd); }

class EventManagerTest : public testing::Test {
 protected:
  EventManagerTest() {
    readNumber("V EventManager::addEventHandler(int ", wakeFd);
    readNumber("V EventManager is ready. epollFd:", epollFd);
    log.clear();
  }
  ~EventManagerTest() override {
    for (const int fd : owned) {
      close(fd);
    }
  }

  void readNumber(const std::string& before, int& number) {
    for (const std::string& line : sequenceOf(log.lines())) {
      if (line.rfind(before, 0) == 0) {
        number = std::atoi(line.c_str() + before.size());
      }
    }
  }

  // Closes the descriptor at the end of the test.
  int own(int fd) {
    owned.push_back(fd);
    return fd;
  }
  int readyFd() { return own(makeEventFd(/*value=*/1)); }

  bool add(int fd, int events = EPOLLIN) {
    return loop.addEventHandler(fd, onEvent, &calls, onClose, events);
  }

  Sequence logged() const { return sequenceOf(log.lines()); }

  CapturingLogWriter log;
  EventManager loop;
  Calls calls;
  int wakeFd = -1;
  int epollFd = -1;
  std::vector<int> owned;
};

Sequence eventLines(int fd, unsigned int events, int number = 0, int pending = 1) {
  return {"V there are " + std::to_string(pending) + " file descriptor(s) with events pending",
          "V processing event number: " + std::to_string(number) + ", handling " +
              std::to_string(static_cast<int>(events)) + " for " + std::to_string(fd)};
}

std::string dispatchLine(int fd, void (*callback)(int, void*), const void* data) {
  return "V file descriptor '" + std::to_string(fd) +
         "' is processing events [callback:" + pointerText(callback) +
         ", data:" + pointerText(data) + "]";
}

TEST(EventManagerConstructionTest, Construct_Always_WakeHandlerThenReadyLine) {
  const CapturingLogWriter log;
  const EventManager loop;
  Sequence lines;
  for (const std::string& line : sequenceOf(log.lines())) {
    lines.push_back(masked(line));
  }
  EXPECT_EQ(lines, (Sequence{"V EventManager::addEventHandler(int #, EventCallback 0x#, void* "
                             "(nil), CloseCallback (nil), events 17) EX",
                             "V EventManager is ready. epollFd:#"}));
}

TEST(EventManagerConstructionTest, Construct_Always_EveryLineHasTheTag) {
  const CapturingLogWriter log;
  const EventManager loop;
  for (const CapturedLine& line : log.lines()) {
    EXPECT_EQ(line.tag, "PAVO") << line.message;
  }
}

TEST(EventManagerDeathTest, Construct_NoDescriptorForEpoll_ErrorAndAbort) {
  EXPECT_EXIT(
      {
        logToStandardError();
        allowMoreFds(0);
        const EventManager loop;
      },
      testing::KilledBySignal(SIGABRT), testing::Eq("I limited\nE Cannot create epoll instance\n"));
}

TEST(EventManagerDeathTest, Construct_NoDescriptorForWakeUp_ErrorAndAbort) {
  EXPECT_EXIT(
      {
        logToStandardError();
        allowMoreFds(1);
        const EventManager loop;
      },
      testing::KilledBySignal(SIGABRT),
      testing::Eq("I limited\nE Cannot create eventfd instance\n"));
}

TEST_F(EventManagerTest, Construct_Always_DescriptorsCloseOnExec) {
  EXPECT_EQ(fcntl(epollFd, F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(fcntl(wakeFd, F_GETFD), FD_CLOEXEC);
  EXPECT_NE(fcntl(wakeFd, F_GETFL) & O_NONBLOCK, 0);
  EXPECT_TRUE(EventManager::isApprovedFd(wakeFd));
}

// Fills the part of the stack where the next function has its variables with bytes other than 0.
[[gnu::noinline]] void soilStack() {
  volatile unsigned char soil[8192];
  for (volatile unsigned char& byte : soil) {
    byte = 0xA5;
  }
}

TEST_F(EventManagerTest, AddEventHandler_AnyFd_NoByteGivenToTheKernelIsLeftToChance) {
  const int fd = own(makeEventFd());
  givenEvent.fill(0xFF);
  soilStack();
  ASSERT_TRUE(loop.addEventHandler(fd, onEvent, &calls, onClose, EPOLLIN));
  std::array<unsigned char, sizeof(epoll_event)> expected{};
  const unsigned int events = EPOLLIN;
  std::memcpy(expected.data() + offsetof(epoll_event, events), &events, sizeof events);
  std::memcpy(expected.data() + offsetof(epoll_event, data), &fd, sizeof fd);
  EXPECT_EQ(givenEvent, expected);
  loop.removeEventHandler(fd);
}

TEST_F(EventManagerTest, AddEventHandler_NewFd_ApprovedAndLogged) {
  const int fd = own(makeEventFd());
  EXPECT_FALSE(EventManager::isApprovedFd(fd));
  EXPECT_TRUE(add(fd));
  EXPECT_TRUE(EventManager::isApprovedFd(fd));
  EXPECT_EQ(logged(),
            (Sequence{"V EventManager::addEventHandler(int " + std::to_string(fd) +
                      ", EventCallback " + pointerText(onEvent) + ", void* " + pointerText(&calls) +
                      ", CloseCallback " + pointerText(onClose) + ", events 1) EX"}));
  loop.removeEventHandler(fd);
}

TEST_F(EventManagerTest, AddEventHandler_RegisteredFd_RefusedAndFirstOneKept) {
  const int fd = readyFd();
  Calls second;
  add(fd);
  log.clear();
  EXPECT_FALSE(loop.addEventHandler(fd, onEvent, &second, nullptr, EPOLLIN));
  const Sequence lines = logged();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[1], "I fd=" + std::to_string(fd) + " is already in handlers");

  loop.processEvents();
  EXPECT_EQ(calls.events, std::vector{fd});
  EXPECT_EQ(second.events, std::vector<int>());
  loop.removeEventHandler(fd);
  EXPECT_EQ(calls.closes, std::vector{fd});
}

TEST_F(EventManagerTest, AddEventHandler_NotPollable_ErrorYetStored) {
  const int fd = 1 << 20;
  ASSERT_FALSE(isOpen(fd));
  EXPECT_TRUE(add(fd));
  EXPECT_TRUE(EventManager::isApprovedFd(fd));
  EXPECT_EQ(logged().back(), "E Cannot add event handler");
  EXPECT_FALSE(add(fd));

  log.clear();
  loop.removeEventHandler(fd);
  EXPECT_EQ(logged(), (Sequence{line::removingHandler, "E Cannot remove event handler"}));
  EXPECT_EQ(calls.closes, std::vector{fd});
  EXPECT_FALSE(EventManager::isApprovedFd(fd));
}

TEST_F(EventManagerTest, RemoveEventHandler_RegisteredFd_ClosedOnceButStillOpen) {
  const int fd = readyFd();
  add(fd);
  log.clear();
  loop.removeEventHandler(fd);
  EXPECT_EQ(logged(), Sequence{line::removingHandler});
  EXPECT_EQ(calls.closes, std::vector{fd});
  EXPECT_TRUE(isOpen(fd));
  EXPECT_FALSE(EventManager::isApprovedFd(fd));
  // The entry is gone: the descriptor can be registered again.
  EXPECT_TRUE(add(fd));
  loop.removeEventHandler(fd);
}

TEST_F(EventManagerTest, RemoveEventHandler_UnknownFd_ErrorAndNoEntryLeft) {
  const int fd = own(makeEventFd());
  EventManager::addApprovedFd(fd);
  loop.removeEventHandler(fd);
  EXPECT_EQ(logged(), (Sequence{line::removingHandler, "E Cannot remove event handler"}));
  EXPECT_EQ(calls.closes, std::vector<int>());
  EXPECT_FALSE(EventManager::isApprovedFd(fd));
  EXPECT_TRUE(add(fd));
  loop.removeEventHandler(fd);
}

struct SelfRemover {
  EventManager* loop;
  int closes = 0;
};

TEST_F(EventManagerTest, RemoveEventHandler_CloseCallbackRemovesToo_CalledOnceAndLogged) {
  const int fd = own(makeEventFd());
  SelfRemover remover{&loop};
  const auto remove = [](int closed, void* data) {
    auto& self = *static_cast<SelfRemover*>(data);
    if (++self.closes == 1) {
      self.loop->removeEventHandler(closed);
    }
  };
  loop.addEventHandler(fd, onEvent, &remover, remove, EPOLLIN);
  log.clear();
  loop.removeEventHandler(fd);
  EXPECT_EQ(remover.closes, 1);
  EXPECT_EQ(logged(),
            (Sequence{line::removingHandler, line::removingHandler, "E Cannot remove event handler",
                      "E handlers.erase for fd " + std::to_string(fd) + ", returned 0!"}));
  EXPECT_FALSE(EventManager::isApprovedFd(fd));
}

TEST_F(EventManagerTest, ClearRead_PendingCount_Drained) {
  const int fd = readyFd();
  EventManager::clearRead(fd, nullptr);
  std::uint64_t value = 0;
  EXPECT_EQ(read(fd, &value, sizeof value), -1);
  EXPECT_EQ(logged(), Sequence());
}

TEST_F(EventManagerTest, ClearRead_PeerGone_Ends) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  close(ends[1]);
  EventManager::clearRead(own(ends[0]), nullptr);
  EXPECT_EQ(logged(), Sequence());
}

TEST_F(EventManagerTest, ClearRead_ReadFails_InfoLine) {
  EventManager::clearRead(-1, nullptr);
  EXPECT_EQ(logged(), Sequence{"I Error while clearing the read buffer on fd -1"});
}

TEST_F(EventManagerTest, ProcessEvents_ReadyFd_CallbackWithItsData) {
  const int fd = readyFd();
  add(fd);
  log.clear();
  loop.processEvents();
  EXPECT_EQ(calls.events, std::vector{fd});
  EXPECT_EQ(logged(), eventLines(fd, EPOLLIN) + Sequence{dispatchLine(fd, onEvent, &calls)});
  loop.removeEventHandler(fd);
}

TEST_F(EventManagerTest, ProcessEvents_FiveReady_FourThenTheFifth) {
  std::vector<int> fds;
  for (int i = 0; i < 5; ++i) {
    fds.push_back(readyFd());
    add(fds.back());
  }
  log.clear();
  loop.processEvents();
  const std::vector first(fds.begin(), fds.end() - 1);
  EXPECT_EQ(calls.events, first);
  Sequence expected;
  for (int i = 0; i < 4; ++i) {
    const int fd = first[static_cast<std::size_t>(i)];
    expected =
        expected + eventLines(fd, EPOLLIN, i, 4 - i) + Sequence{dispatchLine(fd, onEvent, &calls)};
  }
  EXPECT_EQ(logged(), expected);

  log.clear();
  loop.processEvents();
  EXPECT_EQ(calls.events, fds);
  EXPECT_EQ(logged(),
            eventLines(fds.back(), EPOLLIN) + Sequence{dispatchLine(fds.back(), onEvent, &calls)});
  for (const int fd : fds) {
    loop.removeEventHandler(fd);
  }
}

TEST_F(EventManagerTest, ProcessEvents_WaitFails_ErrorAndReturn) {
  // An ordinary file stands in place of the epoll instance.
  const int file = own(open("/dev/null", O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(dup2(file, epollFd), epollFd);
  loop.processEvents();
  EXPECT_EQ(logged(), Sequence{"E epoll_wait error"});
}

TEST_F(EventManagerTest, ProcessEvents_InterruptedBySignal_ErrorAndReturn) {
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = [](int) {};
  ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0);
  std::atomic<bool> returned{false};
  std::thread thread([&] {
    loop.processEvents();
    returned = true;
  });
  EXPECT_TRUE(waitUntil([&] {
    if (!returned) {
      pthread_kill(thread.native_handle(), SIGUSR1);
    }
    return returned.load();
  }));
  thread.join();
  sigaction(SIGUSR1, &before, nullptr);
  EXPECT_EQ(logged(), Sequence{"E epoll_wait error"});
}

TEST_F(EventManagerTest, ProcessEvents_RemovedWhileReady_NotServed) {
  const int fd = readyFd();
  add(fd);
  loop.removeEventHandler(fd);
  loop.wake();
  log.clear();
  loop.processEvents();
  EXPECT_EQ(calls.events, std::vector<int>());
  EXPECT_EQ(logged(), eventLines(wakeFd, EPOLLIN) +
                          Sequence{dispatchLine(wakeFd, EventManager::clearRead, nullptr)});
}

TEST_F(EventManagerTest, ProcessEvents_HangUpWithData_RemovedClosedNotDispatched) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_NONBLOCK | O_CLOEXEC), 0);
  ASSERT_EQ(write(ends[1], "x", 1), 1);
  close(ends[1]);
  add(ends[0]);
  log.clear();
  loop.processEvents();
  EXPECT_EQ(logged(), eventLines(ends[0], EPOLLIN | EPOLLHUP) +
                          Sequence({"I file descriptor '" + std::to_string(ends[0]) + "' sent HUP.",
                                    line::removingHandler}));
  EXPECT_EQ(calls.events, std::vector<int>());
  EXPECT_EQ(calls.closes, std::vector{ends[0]});
  EXPECT_FALSE(isOpen(ends[0]));
  EXPECT_FALSE(EventManager::isApprovedFd(ends[0]));
}

TEST_F(EventManagerTest, ProcessEvents_ApprovalTakenBack_RemovedAndClosed) {
  const int fd = makeEventFd(/*value=*/1);
  add(fd);
  EventManager::remApprovedFd(fd);
  log.clear();
  loop.processEvents();
  EXPECT_EQ(logged(), eventLines(fd, EPOLLIN) +
                          Sequence({"I file descriptor " + std::to_string(fd) +
                                        " is not on the approved list, cannot process event",
                                    line::removingHandler}));
  EXPECT_EQ(calls.events, std::vector<int>());
  EXPECT_EQ(calls.closes, std::vector{fd});
  EXPECT_FALSE(isOpen(fd));
}

TEST_F(EventManagerTest, ProcessEvents_ApprovedWithoutHandler_InfoLineOnly) {
  const int fd = readyFd();
  EventManager::addApprovedFd(fd);
  scriptedEvents = {eventOn(fd, EPOLLIN)};
  loop.processEvents();
  EXPECT_EQ(logged(),
            eventLines(fd, EPOLLIN) + Sequence{"I file descriptor '" + std::to_string(fd) +
                                               "' does not have an event handler registered"});
  EXPECT_TRUE(isOpen(fd));
  EventManager::remApprovedFd(fd);
}

TEST_F(EventManagerTest, ProcessEvents_NullCallback_Error) {
  const int fd = readyFd();
  loop.addEventHandler(fd, nullptr, &calls, nullptr, EPOLLIN);
  log.clear();
  loop.processEvents();
  EXPECT_EQ(logged(), eventLines(fd, EPOLLIN) + Sequence({dispatchLine(fd, nullptr, &calls),
                                                          "E no callback registered"}));
  loop.removeEventHandler(fd);
}

TEST_F(EventManagerTest, ProcessEvents_NeitherHangUpNorReadable_NamesInOrderAndOctalMask) {
  struct Case {
    unsigned int events;
    const char* line;
  };
  const Case cases[] = {
      {0xeU | EPOLLET,
       "I Unhandled epoll event: EPOLLOUT EPOLLPRI EPOLLERR EPOLLET  [flags 020000000016]"},
      {0x4, "I Unhandled epoll event: EPOLLOUT  [flags 04]"},
      {0x2, "I Unhandled epoll event: EPOLLPRI  [flags 02]"},
      {0x8, "I Unhandled epoll event: EPOLLERR  [flags 010]"},
      {EPOLLET, "I Unhandled epoll event: EPOLLET  [flags 020000000000]"},
      {0x2000, "I Unhandled epoll event:  [flags 020000]"},
  };
  const int fd = readyFd();
  add(fd);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.line);
    log.clear();
    scriptedEvents = {eventOn(fd, c.events)};
    loop.processEvents();
    EXPECT_EQ(logged(), eventLines(fd, c.events) + Sequence{c.line});
  }
  EXPECT_EQ(calls.events, std::vector<int>());
  EXPECT_EQ(calls.closes, std::vector<int>());
  loop.removeEventHandler(fd);
}

TEST_F(EventManagerTest, ProcessEvents_WritablePipe_ReportedByTheKernelAlike) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_NONBLOCK | O_CLOEXEC), 0);
  own(ends[0]);
  const int writer = own(ends[1]);
  add(writer, EPOLLOUT);
  log.clear();
  loop.processEvents();
  EXPECT_EQ(logged(), eventLines(writer, EPOLLOUT) +
                          Sequence{"I Unhandled epoll event: EPOLLOUT  [flags 04]"});
  loop.removeEventHandler(writer);
}

TEST_F(EventManagerTest, ProcessEvents_ReadableWithError_Dispatched) {
  const int fd = readyFd();
  add(fd);
  log.clear();
  scriptedEvents = {eventOn(fd, EPOLLIN | EPOLLERR)};
  loop.processEvents();
  EXPECT_EQ(calls.events, std::vector{fd});
  EXPECT_EQ(logged(),
            eventLines(fd, EPOLLIN | EPOLLERR) + Sequence{dispatchLine(fd, onEvent, &calls)});
  loop.removeEventHandler(fd);
}

TEST_F(EventManagerTest, ProcessEvents_CallbackRequestsStop_OtherEventsOfTheWaitStayUnserved) {
  struct Counter {
    EventManager* loop;
    int served = 0;
  } counter{&loop};
  const auto requestStop = [](int, void* data) {
    auto& self = *static_cast<Counter*>(data);
    ++self.served;
    self.loop->requestStop();
  };
  const int first = readyFd();
  const int second = makeEventFd(/*value=*/1);
  loop.addEventHandler(first, requestStop, &counter, nullptr, EPOLLIN);
  loop.addEventHandler(second, requestStop, &counter, nullptr, EPOLLIN);
  loop.processEvents();
  EXPECT_EQ(counter.served, 1);
  loop.removeEventHandler(first);
  loop.removeEventHandler(second);
  close(second);
}

TEST_F(EventManagerTest, ProcessEvents_CallbackRemovesItself_Served) {
  const int fd = readyFd();
  const auto removeSelf = [](int ready, void* data) {
    static_cast<EventManager*>(data)->removeEventHandler(ready);
  };
  loop.addEventHandler(fd, removeSelf, &loop, nullptr, EPOLLIN);
  loop.processEvents();
  EXPECT_FALSE(EventManager::isApprovedFd(fd));
  EXPECT_TRUE(add(fd));
  loop.removeEventHandler(fd);
}

// The first handler of a batch closes the second's descriptor, and its number is given to another
// descriptor.
struct Replacer {
  EventManager* loop;
  int victim;
  int newcomer = -1;
};

TEST_F(EventManagerTest, ProcessEvents_StaleEventOfAReusedNumber_NewOwnerKeepsItsDescriptor) {
  const int first = readyFd();
  const int second = makeEventFd(/*value=*/1);
  Replacer replacer{&loop, second};
  const auto replace = [](int ready, void* data) {
    EventManager::clearRead(ready, nullptr);
    auto& self = *static_cast<Replacer*>(data);
    self.loop->removeEventHandler(self.victim);
    close(self.victim);
    self.newcomer = makeEventFd(/*value=*/5);
  };
  loop.addEventHandler(first, replace, &replacer, nullptr, EPOLLIN);
  add(second);
  log.clear();
  loop.processEvents();

  ASSERT_EQ(replacer.newcomer, second) << "the number was not reused";
  EXPECT_EQ(calls.events, std::vector<int>());
  const Sequence stale = eventLines(second, EPOLLIN, /*number=*/1, /*pending=*/1) +
                         Sequence({"I file descriptor " + std::to_string(second) +
                                       " is not on the approved list, cannot process event",
                                   line::removingHandler, "E Cannot remove event handler"});
  EXPECT_EQ(logged(),
            eventLines(first, EPOLLIN, /*number=*/0, /*pending=*/2) +
                Sequence({dispatchLine(first, replace, &replacer), line::removingHandler}) + stale);
  std::uint64_t value = 0;
  EXPECT_EQ(read(replacer.newcomer, &value, sizeof value), 8) << "the newcomer was closed";
  EXPECT_EQ(value, 5U);
  close(replacer.newcomer);
  loop.removeEventHandler(first);
}

TEST_F(EventManagerTest, Wake_WaitOnAnotherThread_ReturnsAfterDraining) {
  std::thread thread([&] { loop.processEvents(); });
  loop.wake();
  thread.join();
  EXPECT_THAT(logged(), testing::Contains("V EventManager::wake() EX").Times(1));
  EXPECT_EQ(logged().back(), dispatchLine(wakeFd, EventManager::clearRead, nullptr));
  std::uint64_t value = 0;
  EXPECT_EQ(read(wakeFd, &value, sizeof value), -1);
}

TEST_F(EventManagerTest, Wake_SeveralTimes_OneEvent) {
  loop.wake();
  loop.wake();
  loop.wake();
  log.clear();
  loop.processEvents();
  EXPECT_EQ(logged(), eventLines(wakeFd, EPOLLIN) +
                          Sequence{dispatchLine(wakeFd, EventManager::clearRead, nullptr)});
  // The wake-up has been read completely, so the next wait is for another event.
  const int fd = readyFd();
  add(fd);
  log.clear();
  loop.processEvents();
  EXPECT_EQ(logged(), eventLines(fd, EPOLLIN) + Sequence{dispatchLine(fd, onEvent, &calls)});
  loop.removeEventHandler(fd);
}

TEST_F(EventManagerTest, Wake_CounterFull_InfoLine) {
  const std::uint64_t most = 0xfffffffffffffffe;
  ASSERT_EQ(write(wakeFd, &most, sizeof most), 8);
  loop.wake();
  EXPECT_EQ(logged(),
            (Sequence{"V EventManager::wake() EX",
                      "I Error in writing rv: -1, error: Resource temporarily unavailable"}));
}

// A program may make its streams throw exceptions. A worker that ends must not end the program
// through them.
TEST_F(EventManagerTest, Wake_StandardOutputThrows_WokenAllTheSame) {
  const std::ios_base::iostate asked = std::cout.exceptions();
  std::cout.setstate(std::ios_base::badbit);
  EXPECT_THROW(std::cout.exceptions(std::ios_base::badbit), std::ios_base::failure);
  loop.wake();
  std::cout.exceptions(std::ios_base::goodbit);
  std::cout.clear();
  std::cout.exceptions(asked);
  std::uint64_t value = 0;
  EXPECT_EQ(read(wakeFd, &value, sizeof value), 8);
}

TEST_F(EventManagerTest, Wake_Always_LineOnStandardOutputFlushed) {
  std::cout.flush();
  const int terminal = own(dup(STDOUT_FILENO));
  const int file = own(memfd_create("stdout", MFD_CLOEXEC));
  ASSERT_EQ(dup2(file, STDOUT_FILENO), STDOUT_FILENO);
  loop.wake();
  char text[64] = {};
  const ssize_t length = pread(file, text, sizeof text - 1, 0);
  dup2(terminal, STDOUT_FILENO);
  EXPECT_EQ(length, 7);
  EXPECT_STREQ(text, "wake()\n");
}

TEST_F(EventManagerTest, Approve_Twice_OnceRemovedIsEnough) {
  const int fd = own(makeEventFd());
  EventManager::addApprovedFd(fd);
  EventManager::addApprovedFd(fd);
  EXPECT_TRUE(EventManager::isApprovedFd(fd));
  EventManager::remApprovedFd(fd);
  EXPECT_FALSE(EventManager::isApprovedFd(fd));
  EventManager::remApprovedFd(fd);
  EXPECT_FALSE(EventManager::isApprovedFd(fd));
}

TEST(EventManagerDestructionTest, Destroy_HandlerLeft_OwnDescriptorsClosedNoCloseCallback) {
  CapturingLogWriter log;
  Calls calls;
  const int fd = makeEventFd();
  int epollFd = -1;
  int wakeFd = -1;
  {
    EventManager loop;
    const std::vector<std::string> lines = log.messages();
    ASSERT_EQ(lines.size(), 2U);
    ASSERT_EQ(std::sscanf(lines[0].c_str(), "EventManager::addEventHandler(int %d", &wakeFd), 1);
    ASSERT_EQ(std::sscanf(lines[1].c_str(), "EventManager is ready. epollFd:%d", &epollFd), 1);
    loop.addEventHandler(fd, onEvent, &calls, onClose, EPOLLIN);
    log.clear();
  }
  EXPECT_EQ(sequenceOf(log.lines()), Sequence{line::removingHandler});
  EXPECT_EQ(calls.closes, std::vector<int>());
  EXPECT_FALSE(isOpen(epollFd));
  EXPECT_FALSE(isOpen(wakeFd));
  EXPECT_TRUE(isOpen(fd));
  EXPECT_FALSE(EventManager::isApprovedFd(wakeFd));
  EventManager::remApprovedFd(fd);
  close(fd);
}

// This test is for the thread sanitizer: handlers are registered and removed while the loop
// dispatches, on two loops that share the approved descriptors.
TEST(EventManagerThreadsTest, AddAndRemove_WhileLoopsDispatch_NoEventLost) {
  constexpr int rounds = 100;
  struct Side {
    EventManager loop;
    std::atomic<int> served{0};
    std::atomic<bool> stop{false};
    std::thread thread{[this] {
      while (!stop) {
        loop.processEvents();
      }
    }};
  };
  const auto serve = [](int fd, void* data) {
    EventManager::clearRead(fd, nullptr);
    ++static_cast<Side*>(data)->served;
  };
  Side sides[2];
  for (int round = 1; round <= rounds; ++round) {
    int fds[2];
    for (int i = 0; i < 2; ++i) {
      fds[i] = makeEventFd(/*value=*/1);
      ASSERT_TRUE(sides[i].loop.addEventHandler(fds[i], serve, &sides[i], nullptr, EPOLLIN));
    }
    for (int i = 0; i < 2; ++i) {
      ASSERT_TRUE(waitUntil([&] { return sides[i].served == round; })) << "round " << round;
      sides[i].loop.removeEventHandler(fds[i]);
      close(fds[i]);
    }
  }
  for (Side& side : sides) {
    side.stop = true;
    side.loop.wake();
    side.thread.join();
  }
}

}  // namespace
}  // namespace pavo::test
