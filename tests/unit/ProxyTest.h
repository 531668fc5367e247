// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The fixture of tests of the modem's client by itself.
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

// A proxy on an event loop that the test itself turns, so that everything happens in one order.
// The service is announced by platform.notify() only.
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
  // Without a word in the record.
  void open() {
    construct();
    platform.notify();
    loop.processEvents();
    platform.clearCalls();
  }
  void destroy() { proxy.reset(); }

  Sequence recorded() const { return sequenceOf(platform.calls()); }
  // What has been recorded since the last call, without the lines of the loop.
  Sequence takeRecorded() {
    Sequence sequence = withoutEventLines(recorded());
    platform.clearCalls();
    return sequence;
  }

  FakePlatform::Client client() const { return platform.clients().back(); }
  FakePlatform::Notifier notifier() const { return platform.notifiers().back(); }

  // The indications that came through, as text.
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
