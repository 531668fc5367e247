// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What a fault can take effect on: a request, an indication or a hello.
#pragma once

#include <cstdint>
#include <optional>

namespace modem {

struct Subject {
  enum class Kind { Message, Indication, Service };
  Kind kind;
  uint32_t code;  // a request's message id, an indication's event, a hello's purpose
};

struct Selector {
  Subject::Kind kind = Subject::Kind::Message;
  std::optional<uint32_t> code = {};  // empty: any
};

}  // namespace modem
