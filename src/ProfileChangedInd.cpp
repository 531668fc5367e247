// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ProfileChangedInd.h"

#include "DumpText.h"
#include "NamedValue.h"

namespace pavo {

void appendValue(std::string& text, ProfileChangedEvent event) {
  static constexpr const char* names[] = {"Create", "Delete", "Modify", "SubscriptionChange",
                                          "ProfileReady"};
  appendNamed(text, event, names);
}

std::ostream& operator<<(std::ostream& out, ProfileChangedEvent event) {
  return streamText(out, event);
}

std::string ProfileChangedInd::dump() const {
  std::string text;
  appendValue(text, profileId);
  text += ' ';
  appendValue(text, event);
  return text;
}

}  // namespace pavo
