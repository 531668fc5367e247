// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// ProxyTest is the fixture of tests of the modem's client by itself.
#pragma once

#include "EventManager.h"
#include "FakePlatformTest.h"
#include "OvixWdsProxy.h"
#include "Sequence.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace pavo::test {

// The proxy runs on an event loop that the test itself turns, so all events have one order. Only
// platform.notify() announces the service.
class ProxyTest : public FakePlatformTest {
 protected:
  static constexpr int subscription = 7;

  ProxyTest() : recorder([this](const std::string& message) { onLine(message); }) {
    platform.setAnnouncement(FakePlatform::Announcement::Never);
  }

  void construct() {
    proxy.emplace(loop, subscription);
    proxy->registerProfileChangedInd([this](ProfileChangedInd ind) { received.push_back(ind); });
  }
  // Opens the client and leaves no line in the record.
  void open() {
    construct();
    platform.notify();
    loop.processEvents();
    platform.clearCalls();
  }
  void destroy() { proxy.reset(); }

  Sequence recorded() const { return sequenceOf(platform.calls()); }
  // Returns the calls and lines recorded since the last call, without the lines of the loop.
  Sequence takeRecorded() {
    Sequence sequence = withoutEventLines(recorded());
    platform.clearCalls();
    return sequence;
  }

  FakePlatform::Client client() const { return platform.clients().back(); }
  FakePlatform::Notifier notifier() const { return platform.notifiers().back(); }

  // Returns the delivered indications as text.
  Sequence deliveries() const {
    Sequence texts;
    for (const ProfileChangedInd& ind : received) {
      texts.push_back(ind.dump());
    }
    return texts;
  }

  std::function<void(const std::string&)> onLine = [](const std::string&) {};
  LogRecorder recorder;
  EventManager loop;
  std::vector<ProfileChangedInd> received;
  std::optional<OvixWdsProxy> proxy;
};

}  // namespace pavo::test
