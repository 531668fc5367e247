// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/ProfileTypes.h>

#include "DumpText.h"
#include "NamedValue.h"

namespace pavo {

std::ostream& operator<<(std::ostream& out, ApnTypes types) { return streamText(out, types); }
std::ostream& operator<<(std::ostream& out, FilterMatchType criteria) {
  return streamText(out, criteria);
}
std::ostream& operator<<(std::ostream& out, AuthType type) { return streamText(out, type); }
std::ostream& operator<<(std::ostream& out, IPType type) { return streamText(out, type); }
std::ostream& operator<<(std::ostream& out, ApnClass apnClass) { return streamText(out, apnClass); }

}  // namespace pavo
