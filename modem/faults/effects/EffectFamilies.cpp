// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/faults/effects/EffectFamilies.h"

#include "modem/common/Json.h"

namespace modem {

using nlohmann::json;

void IncomingEffect::onOutgoing(Outgoing& outgoing) const { outgoing.send(); }

void OutgoingEffect::onIncoming(Incoming& incoming) const { incoming.carryOutWithEffect(); }

void ContentEffect::onOutgoing(Outgoing& outgoing) const {
  change(outgoing.frame);
  outgoing.send();
}

void requireTrue(const json& args, std::string_view name) {
  if (args[std::string(name)] != true) {
    throw Error(std::string(name) + " has to be true");
  }
}

uint64_t numberArgument(const json& args, std::string_view name, uint64_t max) {
  return numberFromJson(args[std::string(name)], max, std::string(name));
}

size_t wordArgument(const json& args, std::string_view name,
                    std::span<const std::string_view> words) {
  std::string known;
  for (size_t i = 0; i < words.size(); ++i) {
    if (args[std::string(name)] == words[i]) {
      return i;
    }
    appendName(known, words[i]);
  }
  throw Error(std::string(name) + " has to be one of " + known);
}

}  // namespace modem
