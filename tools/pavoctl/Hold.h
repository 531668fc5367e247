// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Keeps the keys that a verb is to hold.
#pragma once

#include "CommandLine.h"
#include "Context.h"

#include <vector>

namespace pavoctl {

// A process that runs one verb waits until it is stopped. Then it releases the keys one by one, and
// reports each profile that stays on the modem. A shell keeps the keys. Construct this before the
// library starts.
class Hold {
 public:
  // The keys are held only when the command line asks for it.
  Hold(const CommandLine& commandLine, Context& surroundings);

  void keep(Key key);
  // Releases a key that is not to be held. Returns false when its profile should have been deleted
  // and was not.
  bool letGo(Key key);
  // To be called when the verb has written all its output. Returns false when a profile should have
  // been deleted and was not.
  bool finish();

 private:
  bool releaseAll();

  const CommandLine& line;
  Context& context;
  StopSignal* stop = nullptr;
  std::vector<Key> keys;
};

// Returns the message for a profile that should have been deleted with its last key.
std::string couldNotDelete(const std::string& name);

}  // namespace pavoctl
