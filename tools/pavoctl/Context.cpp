// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Context.h"

#include "profiles/Profile.h"
#include "shell/KeyRing.h"

namespace pavoctl {

StopSignal& Context::stopSignal() {
  if (!stop) {
    stop.emplace();
  }
  return *stop;
}

void Context::obeySignals() {
  if (keys == nullptr) {
    Patience::obey(stopSignal());
  }
}

Session& Context::session(const Session::Options& options) {
  if (running) {
    running->resume(options);
  } else {
    running.emplace(options);
  }
  return *running;
}

void Context::keepKey(Key key, bool isJson) const {
  const int profile = key->getProfileId();
  const int number = keys->keep(std::move(key));
  output.line(isJson
                  ? dumpJson(Json{{"key", number}, {"profile", profile}})
                  : "key " + std::to_string(number) + " holds profile " + std::to_string(profile));
}

}  // namespace pavoctl
