// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What becomes of keys that a verb is to hold.
#pragma once

#include "CommandLine.h"
#include "Context.h"

#include <vector>

namespace pavoctl {

// A process that runs one verb stays until it is stopped and then lets go of the keys, one by one,
// and says of which the modem's profile stays. A shell keeps them. Make it before the library
// starts.
class Hold {
 public:
  // Nothing is held unless the command line says so.
  Hold(const CommandLine& commandLine, Context& surroundings);

  void keep(Key key);
  // Releases a key that is not to be held. Whether its profile went when it should have gone.
  bool letGo(Key key);
  // When all that the verb has to say is written. Whether everything went as it should.
  bool finish();

 private:
  bool releaseAll();

  const CommandLine& line;
  Context& context;
  StopSignal* stop = nullptr;
  std::vector<Key> keys;
};

// What to say when a profile should have gone with its last key.
std::string couldNotDelete(const std::string& name);

}  // namespace pavoctl
