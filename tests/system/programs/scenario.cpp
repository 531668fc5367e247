// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This program runs a session of the library with a modem that its environment selects. The steps
// are the same each time. At the end it writes the library's log to the standard output: first the
// caller's lines, then the worker's. It leaves out the lines of other threads, because their order
// depends on timing. It also leaves out addresses and the lines of the event loop and of the queue,
// because those report how many events came in one go.
//
// The modem must lose the answer to the second create request, and lose its power instead of
// answering the first modify request. Nothing else is required of it.
#include <pavo/Manager.h>

#include "Deadline.h"

#include <android/log.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <list>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using pavo::Manager;
using Key = std::shared_ptr<pavo::IProfileKey>;

struct Line {
  std::thread::id thread;
  std::string text;
};

// The log is never destroyed, because the library logs until the very end of the process.
struct Log {
  std::mutex mutex;
  std::vector<Line> lines;

  static Log& instance() {
    static Log& log = *new Log;
    return log;
  }
  std::vector<Line> all() {
    const std::lock_guard lock(mutex);
    return lines;
  }
};

std::size_t countOf(const std::string& start) {
  std::size_t count = 0;
  for (const Line& line : Log::instance().all()) {
    count += line.text.starts_with(start) ? 1 : 0;
  }
  return count;
}

// Waits until there are that many lines that start with this text.
void await(const std::string& start, std::size_t count) {
  if (!pavo::test::waitUntil([&] { return countOf(start) >= count; })) {
    throw std::runtime_error("missing in the log: " + start);
  }
}

pavo::AddProfileParams profile(const std::string& apn, bool isPersistent) {
  pavo::AddProfileParams params(isPersistent, /*isIAProfile=*/false);
  params.setApnName(apn);
  params.setUserName("someone");
  return params;
}

Key find(Manager& manager, const std::string& apn) {
  pavo::FilterProfileParams params;
  params.setApnName(apn);
  const std::list<Key> found = manager.filter(params);
  return found.empty() ? nullptr : found.front();
}

const char* const confirmed = "ProfileCache: pending transaction confirmed";
const char* const updating = "ProfileCache: updating cache due to indication!";
const char* const registered = "OvixWdsProxy config register request successful!";

void runSession(Manager& manager) {
  manager.init(/*subscription=*/1, /*useAndroidLog=*/true);
  await(registered, 1);
  manager.refresh(pavo::PDC_REFRESH_COMPLETED);
  Key lasting = manager.addProfile(profile("lasting", /*isPersistent=*/true));
  await(confirmed, 2);

  // The library learns of this profile through indications only.
  const Key lost = manager.addProfile(profile("lost", /*isPersistent=*/false));
  await(updating, 2);
  Key found = find(manager, "lost");
  manager.getProfile(found);
  manager.deleteProfile(found);
  await(confirmed, 3);

  // The modem comes back, and indicates that it is ready.
  pavo::ModifyProfileParams change;
  change.setApnName("changed");
  manager.modifyProfile(change, lasting);
  await(registered, 2);
  await("Refreshed Profiles:", 2);

  const Key passing = manager.addProfile(profile("passing", /*isPersistent=*/false));
  await(confirmed, 5);
  manager.refresh(pavo::PDC_REFRESH_COMPLETED);
  manager.filter(pavo::FilterProfileParams());
}

bool isOfTheLoop(const std::string& text) {
  for (const char* start : {"EventManager", "there are ", "processing event number",
                            "file descriptor '", "OvixWdsProxy: handleIndication indQueue"}) {
    if (text.starts_with(start)) {
      return true;
    }
  }
  return false;
}

void printLinesOf(std::thread::id thread) {
  for (const Line& line : Log::instance().all()) {
    if (line.thread == thread && !isOfTheLoop(line.text)) {
      std::cout << line.text << "\n";
    }
  }
}

std::thread::id workersThread() {
  for (const Line& line : Log::instance().all()) {
    if (line.text == "PAVO thread started") {
      return line.thread;
    }
  }
  throw std::runtime_error("no worker");
}

}  // namespace

int __android_log_print(int /*prio*/, const char* /*tag*/, const char* fmt, ...) {
  char text[2048];
  std::va_list arguments;
  va_start(arguments, fmt);
  const int length = std::vsnprintf(text, sizeof text, fmt, arguments);
  va_end(arguments);
  Log& log = Log::instance();
  const std::lock_guard lock(log.mutex);
  log.lines.push_back({std::this_thread::get_id(), text});
  return length;
}

int main() {
  try {
    {
      Manager manager;
      runSession(manager);
    }
    std::cout << "== the caller\n";
    printLinesOf(std::this_thread::get_id());
    std::cout << "== the worker\n";
    printLinesOf(workersThread());
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::cerr << error.what() << std::endl;
    for (const Line& line : Log::instance().all()) {
      std::cerr << line.text << "\n";
    }
    return EXIT_FAILURE;
  }
}
