// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A second library in this process, with a cache of its own: the modem's own word.
#pragma once

#include "session/Session.h"
#include "session/Snapshot.h"

#include <string>

namespace pavoctl {

class FreshLibrary {
 public:
  explicit FreshLibrary(const Session::Options& sessionOptions);

  // Reads all profiles from the modem. Throws NoAnswer when that cannot be done in time; a wait
  // for longer ends the process.
  Snapshot read();

 private:
  std::string lateText() const;

  const Session::Options options;
  pavo::Manager manager;
};

}  // namespace pavoctl
