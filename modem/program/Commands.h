// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The three commands of the program pavo-modem. Each returns the exit status and throws Error.
#pragma once

#include "modem/common/Error.h"
#include "modem/core/ProfileTable.h"

#include <unistd.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace modem {

inline constexpr int exitDone = 0;
inline constexpr int exitRefused = 1;
inline constexpr int exitBadUsage = 2;

class UsageError : public Error {
 public:
  using Error::Error;
};

struct ServeArguments {
  std::string socketPath;
  int readyFd = STDOUT_FILENO;
  std::string profilesPath;
  std::string storePath;
  std::string scriptPath;
  std::string tracePath;
  size_t capacity = ProfileTable::capacityDefault;
  std::optional<uint64_t> seed;
};

int serve(const ServeArguments& arguments);

struct ReplayArguments {
  std::string socketPath;
  int readyFd = STDOUT_FILENO;
  std::string tracePath;
};

// Returns exitRefused if a request differed from the trace.
int replay(const ReplayArguments& arguments);

struct ControlArguments {
  std::string socketPath;
  std::string verb;
  std::vector<std::string> words;  // key=value, a JSON object, or @FILE with one
};

int control(const ControlArguments& arguments);

}  // namespace modem
