// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A second instance of the library in this process. Its own cache shows the modem's present state.
#pragma once

#include "session/Session.h"
#include "session/Snapshot.h"

#include <string>

namespace pavoctl {

class FreshLibrary {
 public:
  explicit FreshLibrary(const Session::Options& sessionOptions);

  // Reads all profiles from the modem. Throws NoAnswer when the library cannot read them in time. A
  // call that blocks for longer ends the process.
  Snapshot read();

 private:
  std::string lateText() const;

  const Session::Options options;
  pavo::Manager manager;
};

}  // namespace pavoctl
