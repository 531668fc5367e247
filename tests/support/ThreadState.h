// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What the kernel says of this process's threads.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace pavo::test {

// Whether the thread of that id (gettid) waits for something. For tests of what must not go on:
// they wait until it either has gone on or is asleep.
inline bool isAsleep(int thread) {
  std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
  const std::string stat{std::istreambuf_iterator<char>(file), {}};
  const auto name = stat.rfind(')');
  return name != std::string::npos && stat.substr(name, 3) == ") S";
}

inline long countEntries(const char* folder) {
  const std::filesystem::directory_iterator entries(folder);
  return std::distance(begin(entries), end(entries));
}
inline long threadCount() { return countEntries("/proc/self/task"); }
inline long descriptorCount() { return countEntries("/proc/self/fd"); }

}  // namespace pavo::test
