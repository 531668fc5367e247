// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Turns C structures into encoded messages and back, by the tables of a service object. The
// functions depend on their arguments only; any thread may call them.
#pragma once

#include "ServiceObject.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ovix {

// The reason why a structure or a message does not fit its layout.
struct CodecError {
  std::string reason;  // in one line
};

// Appends the encoded message to encoded. structure has layout.size bytes. After an error encoded
// holds part of a message.
std::optional<CodecError> encodeMessage(const Layout& layout, const void* structure,
                                        std::vector<uint8_t>& encoded);

// The treatment of a message above the bounds of its structure. Judged: such a message is an error.
// Trusted: the structure gets the message's contents, for instance a text without its terminator or
// a count above the elements. A platform that trusts its modem behaves like that. No byte outside
// the structure is written in either case.
enum class Bounds { Judged, Trusted };

// Fills the layout.size bytes of the structure. A field that the message does not hold is zero.
// After an error the structure is all zero. Texts are copied unchanged and terminated. Unknown tags
// are skipped.
std::optional<CodecError> decodeMessage(const Layout& layout, std::span<const uint8_t> encoded,
                                        void* structure, Bounds bounds = Bounds::Judged);

}  // namespace ovix
