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
  switch (code) {
    case ErrorCode::None:
      return "none";
    case ErrorCode::MalformedMessage:
      return "malformed message";
    case ErrorCode::Internal:
      return "internal";
    case ErrorCode::NoResources:
      return "no resources";
    case ErrorCode::InvalidProfileIndex:
      return "invalid profile index";
    case ErrorCode::InvalidProfileType:
      return "invalid profile type";
    case ErrorCode::ArgumentTooLong:
      return "argument too long";
    case ErrorCode::InvalidArgument:
      return "invalid argument";
    case ErrorCode::NotSupported:
      return "not supported";
    case ErrorCode::NotReady:
      return "not ready";
  }
  return "unknown";
}

}  // namespace modem
