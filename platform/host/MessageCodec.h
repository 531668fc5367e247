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

// A structure or a message does not fit its layout.
struct CodecError {
  std::string reason;  // in one line
};

// Appends the encoded message to encoded. structure has layout.size bytes. After an error encoded
// holds part of a message.
std::optional<CodecError> encodeMessage(const Layout& layout, const void* structure,
                                        std::vector<uint8_t>& encoded);

// What becomes of a message above the bounds of its structure. Judged: it is an error. Trusted: the
// structure gets what the message says, a text without its terminator or a count above the
// elements, as on a platform that trusts its modem. No byte outside the structure is written in
// either case.
enum class Bounds { Judged, Trusted };

// Fills the structure, layout.size bytes, with zero where the message holds nothing. After an error
// the structure is all zero. Texts are copied unchanged and terminated; unknown tags are skipped.
std::optional<CodecError> decodeMessage(const Layout& layout, std::span<const uint8_t> encoded,
                                        void* structure, Bounds bounds = Bounds::Judged);

}  // namespace ovix
