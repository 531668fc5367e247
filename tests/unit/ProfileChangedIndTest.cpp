// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ProfileChangedInd.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>

namespace pavo::test {
namespace {

TEST(ProfileChangedIndTest, Dump_AnyEvent_IdAndName) {
  struct Case {
    int profileId;
    std::int32_t event;
    const char* text;
  };
  const Case cases[] = {
      {3, 0, "3 Create"},       {0, 1, "0 Delete"},
      {255, 2, "255 Modify"},   {1, 3, "1 SubscriptionChange"},
      {2, 4, "2 ProfileReady"}, {2, 5, "2 5"},
      {-1, -7, "-1 -7"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const ProfileChangedInd ind{c.profileId, static_cast<ProfileChangedEvent>(c.event)};
    EXPECT_EQ(ind.dump(), c.text);
  }
}

TEST(ProfileChangedIndTest, Stream_AnyEvent_ItsName) {
  std::ostringstream out;
  out << ProfileChangedEvent::Delete << ' ' << ProfileChangedEvent::ProfileReady << ' '
      << static_cast<ProfileChangedEvent>(9);
  EXPECT_EQ(out.str(), "Delete ProfileReady 9");
}

}  // namespace
}  // namespace pavo::test
