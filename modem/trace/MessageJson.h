// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Decodes messages to JSON, for transcripts and traces.
#pragma once

#include "modem/server/ClientHandler.h"

#include <nlohmann/json.hpp>

#include <string_view>

namespace modem {

using wire::Frame;
using wire::FrameKind;

// Sets "fields", and "result" in a response. Sets "malformed" if the message cannot be decoded.
void decodeInto(nlohmann::json& out, Direction direction, const Frame& frame);

// Returns the name of a kind, such as "request".
std::string_view kindName(FrameKind kind);

}  // namespace modem
