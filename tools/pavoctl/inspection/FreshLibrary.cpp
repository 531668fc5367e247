// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "inspection/FreshLibrary.h"

namespace pavoctl {

FreshLibrary::FreshLibrary(const Session::Options& sessionOptions) : options(sessionOptions) {
  const Patience patience(options.timeout, lateText());
  manager.init(options.subscription, options.useAndroidLog);
}

Snapshot FreshLibrary::read() {
  const Patience patience(options.timeout, lateText());
  Session::readAll(manager, options.timeout, lateText());
  return Snapshot::takeOf(manager);
}

std::string FreshLibrary::lateText() const {
  return "the modem could not be read afresh: " + Session::noAnswerText(options.timeout);
}

}  // namespace pavoctl
