// Turns C structures into encoded messages and back, by the tables of a service object. Pure
// functions of their arguments; any thread may call them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "ServiceObject.h"

namespace ovix {

// Appends the encoded message to encoded. The result is empty, or the reason why the structure
// does not fit the layout; then encoded is left with part of a message. structure has
// layout.size bytes.
std::string encodeMessage(const Layout& layout, const void* structure,
                          std::vector<uint8_t>& encoded);

// How a message above the bounds of its structure is taken. A platform that trusts its modem hands
// the structure on as the modem's message would have it: a text without its terminator, a count
// above the elements. Never is more written than the structure holds.
enum class Bounds { Judged, Trusted };

// Fills the structure, layout.size bytes, with zero where the message holds nothing. The result
// is empty, or the reason why the message does not fit the layout; then the structure is all
// zero. A text is taken as it comes and terminated; unknown tags are skipped.
std::string decodeMessage(const Layout& layout, std::span<const uint8_t> encoded, void* structure,
                          Bounds bounds = Bounds::Judged);

}  // namespace ovix
