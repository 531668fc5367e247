// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/core/Modem.h"

#include "modem/core/Refusal.h"

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <utility>

namespace modem {

using nlohmann::json;

namespace {

Bytes eventPayload(const ProfileEvent& event) {
  Bytes value;
  FieldWriter::appendNumber(value, profileType3gpp);
  FieldWriter::appendNumber(value, event.index);
  FieldWriter::appendNumber(value, event.event);
  FieldWriter fields;
  fields.bytes(tagChangedProfile, value);
  return fields.take();
}

Bytes refusalPayload(ErrorCode code) {
  FieldWriter fields;
  fields.result(resultFailure, static_cast<int32_t>(code));
  return fields.take();
}

template <typename Value>
Value required(const std::optional<Value>& value, uint8_t tag) {
  if (!value) {
    throw Refusal(ErrorCode::MalformedMessage, fieldName(tag) + " is missing");
  }
  return *value;
}

void requireType3gpp(uint64_t type) {
  if (type != profileType3gpp) {
    throw Refusal(ErrorCode::InvalidProfileType,
                  "profile type " + std::to_string(type) + " is not 3GPP");
  }
}

bool isConfiguration(MessageId messageId) {
  return messageId == MessageId::IndicationRegister || messageId == MessageId::ConfigureEvents ||
         messageId == MessageId::BindSubscription;
}

bool isEdit(MessageId messageId) {
  return messageId == MessageId::CreateProfile || messageId == MessageId::ModifyProfile ||
         messageId == MessageId::DeleteProfile;
}

}  // namespace

Modem::Modem(Options options)
    : ownProfiles(std::move(options.ownProfiles)),
      store(std::move(options.store)),
      table(options.capacity),
      // powerUp() increments it for the first time.
      boot((options.boot ? *options.boot : std::random_device{}()) - 1) {
  remembered = store ? loadStore() : persistentOf(ownProfiles);
  powerUp();
}

void Modem::addClient(ClientNumber client, bool sawAbsence) {
  clients[client].readyIsDue = sawAbsence;
}

void Modem::removeClient(ClientNumber client) { clients.erase(client); }

json Modem::clientsToJson() const {
  json list = json::array();
  for (const auto& [number, client] : clients) {
    json entry = {{"client", number},
                  {"registered", client.isRegistered()},
                  {"selections", client.selections.size()}};
    if (client.subscription) {
      entry["subscription"] = *client.subscription;
    }
    list.push_back(std::move(entry));
  }
  return list;
}

Outcome Modem::handle(ClientNumber number, MessageId messageId, ByteView payload) {
  Outcome outcome;
  const auto found = clients.find(number);
  if (!on || found == clients.end()) {
    outcome.response = refusalPayload(ErrorCode::NotReady);
    return outcome;
  }
  Client& client = found->second;
  try {
    FieldWriter answer;
    answer.result(resultSuccess, static_cast<int32_t>(ErrorCode::None));
    dispatch(client, messageId, FieldReader(payload), answer, outcome.indications);
    outcome.response = answer.take();
  } catch (const Refusal& refusal) {
    outcome.indications.clear();
    outcome.response = refusalPayload(refusal.code);
  }
  if (client.readyIsDue && client.isRegistered()) {
    client.readyIsDue = false;
    outcome.indications.push_back(
        {number, eventReady, eventPayload({.event = eventReady, .index = profileIndexAny})});
  }
  return outcome;
}

Modem::Created Modem::create(Profile profile) {
  checkSettings(profile);
  const auto index = table.lowestFreeIndex();
  if (!index) {
    throw Refusal(ErrorCode::NoResources,
                  "all " + std::to_string(table.capacity()) + " profiles are taken");
  }
  ProfileTable changed = table;
  const bool isPersistent = profile.isPersistent();
  changed.put(*index, std::move(profile));
  commit(std::move(changed), isPersistent);
  const std::array<ProfileEvent, 2> events = {
      {{.event = eventCreate, .index = *index}, {.event = eventModify, .index = *index}}};
  return {*index, raiseAll(events)};
}

std::vector<Indication> Modem::modify(uint8_t index, const Profile& changes) {
  requireProfile(index);
  checkSettings(changes);
  ProfileTable changed = table;
  Profile& profile = *changed.find(index);
  mergeSettings(profile, changes);
  const bool isPersistent = profile.isPersistent();
  commit(std::move(changed), isPersistent);
  return raise({.event = eventModify, .index = index});
}

std::vector<Indication> Modem::erase(uint8_t index) {
  requireProfile(index);
  ProfileTable changed = table;
  const bool isPersistent = changed.find(index)->isPersistent();
  changed.erase(index);
  commit(std::move(changed), isPersistent);
  return raise({.event = eventDelete, .index = index});
}

std::vector<Indication> Modem::raise(ProfileEvent event) const { return raiseAll({&event, 1}); }

void Modem::powerOff() {
  remembered = store ? loadStore() : persistentOf(table.all());
  table.clear();
  clients.clear();
  on = false;
}

void Modem::powerUp() {
  ProfileTable fresh(table.capacity());
  for (const auto& [index, profile] : remembered) {
    fresh.put(index, profile);
  }
  for (const auto& [index, profile] : ownProfiles) {
    if (profile.isPersistent()) {
      continue;
    }
    // If a persistent profile has taken the index, the modem's own profile gets another one. It is
    // omitted if the table is full.
    const auto free = fresh.isFree(index) ? std::optional(index) : fresh.lowestFreeIndex();
    if (free) {
      fresh.put(*free, profile);
    }
  }
  table = std::move(fresh);
  ++boot;
  on = true;
}

bool Modem::Client::wants(const ProfileEvent& event) const {
  if (!isRegistered()) {
    return false;
  }
  // A ready event concerns all profiles, so every client with a selection gets it.
  return event.event == eventReady ||
         std::ranges::any_of(selections, [&event](const Selection& selection) {
           return selection.index == profileIndexAny || selection.index == event.index;
         });
}

void Modem::dispatch(Client& client, MessageId messageId, const FieldReader& fields,
                     FieldWriter& answer, std::vector<Indication>& indications) {
  if (isConfiguration(messageId)) {
    configureClient(client, messageId, fields);
  } else if (isEdit(messageId)) {
    editProfile(messageId, fields, answer, indications);
  } else if (messageId == MessageId::ProfileList) {
    writeList(fields, answer);
  } else if (messageId == MessageId::ProfileSettings) {
    writeSettings(answer, *table.find(readProfileIndex(fields)));
  } else {
    throw Refusal(ErrorCode::NotSupported, "no message " + messageName(messageId));
  }
}

void Modem::configureClient(Client& client, MessageId messageId, const FieldReader& fields) {
  if (messageId == MessageId::BindSubscription) {
    client.subscription = required(fields.i32(tagBindSubscription), tagBindSubscription);
    return;
  }
  if (messageId == MessageId::IndicationRegister) {
    client.eventsOn = fields.number<uint8_t>(tagReportEvents).value_or(client.eventsOn) != 0;
    return;
  }
  const auto reportSwitch = fields.number<uint8_t>(tagReportSwitch);
  if (const auto list = fields.bytes(tagEventList)) {
    if (list->size() < 2 || list->size() != 2 + numberFrom(list->first(2)) * profileIdBytes) {
      throw Refusal(ErrorCode::MalformedMessage, "the event list has a wrong length");
    }
    std::vector<Selection> selections;
    for (size_t at = 2; at < list->size(); at += profileIdBytes) {
      const uint64_t type = numberFrom(list->subspan(at, 4));
      if (type != profileTypeAny) {
        requireType3gpp(type);
      }
      selections.push_back({static_cast<uint32_t>(type), (*list)[at + 4]});
    }
    client.selections = std::move(selections);
  }
  client.reportOn = reportSwitch.value_or(client.reportOn) != 0;
}

void Modem::editProfile(MessageId messageId, const FieldReader& fields, FieldWriter& answer,
                        std::vector<Indication>& indications) {
  // All values are read before the id is checked, because "malformed" comes before a wrong id.
  Profile settings = messageId == MessageId::DeleteProfile ? Profile{} : readSettings(fields);
  if (messageId == MessageId::CreateProfile) {
    requireType3gpp(required(fields.number<uint32_t>(tagProfile), tagProfile));
    Created created = create(std::move(settings));
    Bytes id;
    FieldWriter::appendNumber(id, profileType3gpp);
    FieldWriter::appendNumber(id, created.index);
    answer.bytes(tagAnswer, id);
    indications = std::move(created.indications);
    return;
  }
  const uint8_t index = readProfileIndex(fields);
  indications = messageId == MessageId::ModifyProfile ? modify(index, settings) : erase(index);
}

void Modem::writeList(const FieldReader& fields, FieldWriter& answer) const {
  requireType3gpp(fields.number<uint32_t>(tagListType).value_or(profileType3gpp));
  Bytes list;
  FieldWriter::appendNumber(list, static_cast<uint16_t>(table.all().size()));
  for (const auto& [index, profile] : table.all()) {
    const std::string name = profile.name.value_or("");
    FieldWriter::appendNumber(list, profileType3gpp);
    FieldWriter::appendNumber(list, index);
    FieldWriter::appendNumber(list, static_cast<uint8_t>(name.size()));
    list.insert(list.end(), name.begin(), name.end());
  }
  answer.bytes(tagAnswer, list);
}

void Modem::requireProfile(uint8_t index) const {
  if (table.find(index) == nullptr) {
    throw Refusal(ErrorCode::InvalidProfileIndex, "there is no profile " + std::to_string(index));
  }
}

uint8_t Modem::readProfileIndex(const FieldReader& fields) const {
  const auto id = required(fields.bytes(tagProfile), tagProfile);
  if (id.size() != profileIdBytes) {
    throw Refusal(ErrorCode::MalformedMessage, "a profile id has a wrong length");
  }
  requireType3gpp(numberFrom(id.first(4)));
  requireProfile(id[4]);
  return id[4];
}

std::vector<Indication> Modem::raiseAll(std::span<const ProfileEvent> events) const {
  std::vector<Indication> indications;
  for (const ProfileEvent& event : events) {
    for (const auto& [number, client] : clients) {
      if (client.wants(event)) {
        indications.push_back({number, event.event, eventPayload(event)});
      }
    }
  }
  return indications;
}

ProfilesByIndex Modem::loadStore() const {
  if (auto stored = store->load()) {
    return std::move(*stored);
  }
  ProfilesByIndex initial = persistentOf(ownProfiles);
  store->save(initial);
  return initial;
}

void Modem::commit(ProfileTable changed, bool isPersistentChange) {
  if (store && isPersistentChange) {
    try {
      store->save(persistentOf(changed.all()));
    } catch (const Error& error) {
      throw Refusal(ErrorCode::Internal, error.what());
    }
  }
  table = std::move(changed);
}

}  // namespace modem
