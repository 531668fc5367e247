// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/core/Messages.h"

#include <array>
#include <cstdio>

namespace modem {

namespace {

constexpr std::array<MessageName, 9> allMessageNames = {{
    {MessageId::IndicationRegister, "indication-register"},
    {MessageId::CreateProfile, "create-profile"},
    {MessageId::ModifyProfile, "modify-profile"},
    {MessageId::DeleteProfile, "delete-profile"},
    {MessageId::ProfileList, "profile-list"},
    {MessageId::ProfileSettings, "profile-settings"},
    {MessageId::ConfigureEvents, "configure-events"},
    {MessageId::BindSubscription, "bind-subscription"},
    {MessageId::ProfileChanged, "profile-changed"},
}};

constexpr std::array<EventName, 5> allEventNames = {{
    {eventCreate, "create"},
    {eventDelete, "delete"},
    {eventModify, "modify"},
    {eventSubscriptionChange, "subscription-change"},
    {eventReady, "ready"},
}};

// The position is the error code.
constexpr std::array<std::string_view, 10> allErrorNames = {"none",
                                                            "malformed message",
                                                            "internal",
                                                            "no resources",
                                                            "invalid profile index",
                                                            "invalid profile type",
                                                            "argument too long",
                                                            "invalid argument",
                                                            "not supported",
                                                            "not ready"};

}  // namespace

std::span<const EventName> eventNames() { return allEventNames; }

std::span<const MessageName> messageNames() { return allMessageNames; }

std::string messageName(MessageId id) {
  for (const MessageName& known : allMessageNames) {
    if (known.id == id) {
      return std::string(known.name);
    }
  }
  char number[8];
  std::snprintf(number, sizeof number, "0x%04X", static_cast<unsigned>(numberOf(id)));
  return number;
}

std::optional<MessageId> messageIdOf(std::string_view name) {
  for (const MessageName& known : allMessageNames) {
    if (known.name == name) {
      return known.id;
    }
  }
  return std::nullopt;
}

std::string_view errorName(ErrorCode code) {
  const auto number = static_cast<size_t>(code);
  return number < allErrorNames.size() ? allErrorNames[number] : "unknown";
}

}  // namespace modem
