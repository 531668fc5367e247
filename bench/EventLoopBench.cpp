// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This benchmark waits for and dispatches n ready descriptors without a log writer. It compares the
// loop with epoll alone.
#include "EventManager.h"
#include "LogWrapper.h"
#include "base/UniqueFd.h"

#include <benchmark/benchmark.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>

#include <vector>

namespace pavo::bench {
namespace {

constexpr int eventsPerWaitMax = 4;

int dispatched = 0;

// The callback leaves the descriptor readable, so that the next wait finds it again.
void count(int /*fd*/, void* /*data*/) { ++dispatched; }

std::vector<UniqueFd> readyFds(long number) {
  std::vector<UniqueFd> fds;
  for (long i = 0; i < number; ++i) {
    fds.emplace_back(::eventfd(/*initval=*/1, EFD_NONBLOCK | EFD_CLOEXEC));
  }
  return fds;
}

void dispatchEvents(benchmark::State& state) {
  LogWrapper::getInstance().setLogWriter(nullptr);
  EventManager eventManager;
  const std::vector<UniqueFd> fds = readyFds(state.range(0));
  for (const UniqueFd& fd : fds) {
    eventManager.addEventHandler(fd.get(), count, /*data=*/nullptr, /*closeCallback=*/nullptr,
                                 EPOLLIN);
  }
  for (auto _ : state) {
    eventManager.processEvents();
  }
  benchmark::DoNotOptimize(dispatched);
}
BENCHMARK(dispatchEvents)->Name("Dispatch")->Arg(1)->Arg(4);

void bareEpoll(benchmark::State& state) {
  const UniqueFd epollFd(::epoll_create1(EPOLL_CLOEXEC));
  const std::vector<UniqueFd> fds = readyFds(state.range(0));
  for (const UniqueFd& fd : fds) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = fd.get();
    ::epoll_ctl(epollFd.get(), EPOLL_CTL_ADD, fd.get(), &event);
  }
  void (*volatile callback)(int, void*) = count;
  for (auto _ : state) {
    epoll_event events[eventsPerWaitMax];
    const int ready = ::epoll_wait(epollFd.get(), events, eventsPerWaitMax, /*timeout=*/-1);
    for (int i = 0; i < ready; ++i) {
      callback(events[i].data.fd, nullptr);
    }
  }
  benchmark::DoNotOptimize(dispatched);
}
BENCHMARK(bareEpoll)->Name("BareEpoll")->Arg(1)->Arg(4);

}  // namespace
}  // namespace pavo::bench
