// What a message says, as JSON: for transcripts and traces.
#pragma once

#include <nlohmann/json.hpp>
#include <string_view>

#include "modem/server/ClientHandler.h"

namespace modem {

using wire::Frame;
using wire::FrameKind;

// Sets "fields", and in a response "result"; "malformed" when the message cannot be decoded.
void decodeInto(nlohmann::json& out, Direction direction, const Frame& frame);

// "request" and so on.
std::string_view kindName(FrameKind kind);

}  // namespace modem
