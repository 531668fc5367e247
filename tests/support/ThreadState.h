// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header reads the kernel's state of this process's threads.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace pavo::test {

// Returns whether the thread of that id (gettid) is asleep. Tests that a thread must not continue
// use it: they wait until the thread either has continued or is asleep.
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
