// A second library in this process, with a cache of its own: the modem's own word.
#pragma once

#include "session/Session.h"
#include "session/Snapshot.h"

namespace pavoctl {

class FreshLibrary {
 public:
  explicit FreshLibrary(const Session::Options& sessionOptions);

  // Reads all profiles from the modem. Throws Failure when that cannot be done in time.
  Snapshot read();

 private:
  const Session::Options options;
  pavo::Manager manager;
};

}  // namespace pavoctl
