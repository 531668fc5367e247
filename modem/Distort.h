// Makes messages wrong. Pure functions on the encoded form, so that whatever a broken modem could
// send can be sent; a message that is no sequence of fields to begin with is left as it is where
// the effect is about its fields.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Fault.h"
#include "wire/Frame.h"

namespace modem {

using wire::Frame;
using wire::FrameKind;

// An answer or an indication under the effect; as it was when the effect is not about its content.
Frame distorted(Frame frame, const Effect& effect);

// A request, or a settings answer, with these settings in the place of its own.
std::vector<uint8_t> withSettings(std::span<const uint8_t> payload, const Profile& settings);

}  // namespace modem
