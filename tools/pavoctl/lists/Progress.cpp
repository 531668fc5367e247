// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "lists/Progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace pavoctl {
namespace {

// The interval is short enough to show progress and long enough not to slow the work down.
constexpr std::chrono::milliseconds interval{100};

}  // namespace

Progress::Progress(std::string taskName, std::size_t totalCount)
    : task(std::move(taskName)), total(totalCount), isTerminal(::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() { clear(); }

void Progress::show(std::size_t done) {
  const auto now = std::chrono::steady_clock::now();
  if (!isTerminal || now < nextTime) {
    return;
  }
  nextTime = now + interval;
  isShown = true;
  std::fprintf(stderr, "\r%s: %zu of %zu", task.c_str(), done, total);
}

void Progress::clear() {
  if (isShown) {
    isShown = false;
    std::fputs("\r\033[K", stderr);
  }
}

}  // namespace pavoctl
