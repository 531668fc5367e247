// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/faults/Effect.h"

#include "modem/common/Json.h"
#include "modem/faults/effects/EffectFamilies.h"

#include <algorithm>

namespace modem {

using nlohmann::json;

namespace {

// Calls visit(type) for each effect, in the order in which error texts name them.
template <typename Visit>
void forEachType(const Visit& visit) {
  for (const auto& family :
       {incomingEffects(), outgoingEffects(), indicationEffects(), answerEffects()}) {
    for (const EffectType* type : family) {
      visit(*type);
    }
  }
}

}  // namespace

Effect::Effect(const EffectType& type, const json& args)
    : ownArguments(json::object()), type(type) {
  for (const auto& [name, value] : args.items()) {
    if (hasArgument(name)) {
      ownArguments[name] = value;
    }
  }
}

bool Effect::hasArgument(std::string_view argument) const {
  return argument == type.name ||
         (!argument.empty() && std::ranges::count(type.options, argument) > 0);
}

EffectPtr effectFromJson(const json& args) {
  const EffectType* asked = nullptr;
  std::string known;
  forEachType([&](const EffectType& type) {
    appendName(known, type.name);
    if (!args.contains(std::string(type.name))) {
      return;
    }
    if (asked != nullptr) {
      throw Error(std::string(asked->name) + " and " + std::string(type.name) +
                  " exclude each other");
    }
    asked = &type;
  });
  if (asked == nullptr) {
    throw Error("one of " + known + " is needed");
  }
  return asked->parse(args);
}

std::vector<std::string_view> effectNamesFor(Subject subject) {
  std::vector<std::string_view> names;
  forEachType([&](const EffectType& type) {
    if (type.fits(subject)) {
      names.push_back(type.name);
    }
  });
  return names;
}

}  // namespace modem
