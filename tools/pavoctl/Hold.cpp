// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Hold.h"

#include "session/Patience.h"

#include <utility>

namespace pavoctl {

Hold::Hold(const CommandLine& commandLine, Context& surroundings)
    : line(commandLine), context(surroundings) {
  if (line.isHeld && context.keys == nullptr) {
    stop = &context.stopSignal();
  }
}

void Hold::keep(Key key) {
  if (line.isHeld) {
    keys.push_back(std::move(key));
  }
}

bool Hold::finish() {
  bool isClean = true;
  if (stop != nullptr) {
    stop->wait();
    isClean = releaseAll();
  }
  for (auto& key : keys) {
    context.keepKey(std::move(key), line.isJson);
  }
  keys.clear();
  return isClean;
}

bool Hold::letGo(Key key) {
  const std::string name = "profile " + std::to_string(key->getProfileId());
  const Patience patience(line.session.timeout, couldNotDelete(name));
  switch (Session::release(std::move(key))) {
    case Session::Release::deleted:
      break;
    case Session::Release::kept:
      // This is not a failure: the modem or another client has changed or deleted the profile
      // meanwhile.
      complain(name +
               " was not this process's to delete any more: the modem or another client has "
               "changed or deleted it");
      break;
    case Session::Release::failed:
      complain(couldNotDelete(name));
      return false;
  }
  return true;
}

bool Hold::releaseAll() {
  bool isClean = true;
  for (auto& key : keys) {
    isClean = letGo(std::move(key)) && isClean;
  }
  keys.clear();
  return isClean;
}

std::string couldNotDelete(const std::string& name) {
  return name + " may be left on the modem: it refused to delete it or did not answer";
}

}  // namespace pavoctl
