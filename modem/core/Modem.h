// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The modem: its profiles, its clients' registrations and its power.
//
// It takes the payloads of requests and returns the payloads of responses and indications; sockets
// are not its concern. One thread uses it.
//
//            powerOff()                       powerUp()
//   on  ----------------->  off (no clients) ----------->  on, with another boot number
//
// Persistent profiles are kept in the store or, without one, in memory. The others end with the
// power. The profile file gives the modem its own profiles. The non-persistent ones are restored at
// every power-up; the persistent ones are the initial content of a store without a file.
#pragma once

#include "modem/core/FieldReader.h"
#include "modem/core/Messages.h"
#include "modem/core/ProfileTable.h"
#include "modem/core/Store.h"
#include "modem/server/ClientHandler.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace modem {

struct ProfileEvent {
  uint32_t event;
  uint8_t index;
};

// A profile-changed indication to one client.
struct Indication {
  ClientNumber client;
  uint32_t event;
  Bytes payload;
};

// The result of a request. The response is sent before the indications.
struct Outcome {
  Bytes response;
  std::vector<Indication> indications;
};

class Modem {
 public:
  struct Options {
    size_t capacity = ProfileTable::capacityDefault;
    ProfilesByIndex ownProfiles;        // of the profile file
    std::unique_ptr<Store> store;       // null: persistent profiles are kept in memory
    std::optional<uint32_t> boot = {};  // the first boot number; empty: a random one
  };

  // Powers up. Throws Error if the store cannot be read or written.
  explicit Modem(Options options);

  bool isOn() const { return on; }
  uint32_t bootNumber() const { return boot; }
  const ProfileTable& profiles() const { return table; }

  // sawAbsence: the client was without a modem for a time, and gets a ready indication when it has
  // registered.
  void addClient(ClientNumber client, bool sawAbsence);
  void removeClient(ClientNumber client);
  // Returns all clients by number, with their registrations.
  nlohmann::json clientsToJson() const;

  Outcome handle(ClientNumber number, MessageId messageId, ByteView payload);

  // Edits over the control channel, which are indicated to all registered clients. They throw
  // Refusal.
  struct Created {
    uint8_t index;
    std::vector<Indication> indications;
  };
  Created create(Profile profile);
  std::vector<Indication> modify(uint8_t index, const Profile& changes);
  std::vector<Indication> erase(uint8_t index);
  // Returns the indications of an event, whether or not it has happened.
  std::vector<Indication> raise(ProfileEvent event) const;

  // Removes all clients and all non-persistent profiles. If the store cannot be read it throws
  // Error and the modem stays on.
  void powerOff();
  void powerUp();

 private:
  struct Selection {
    uint32_t type;
    uint8_t index;
  };
  struct Client {
    bool readyIsDue = false;
    bool eventsOn = false;
    bool reportOn = false;
    std::vector<Selection> selections;
    std::optional<int32_t> subscription;

    bool isRegistered() const { return eventsOn && reportOn && !selections.empty(); }
    bool wants(const ProfileEvent& event) const;
  };

  void dispatch(Client& client, MessageId messageId, const FieldReader& fields, FieldWriter& answer,
                std::vector<Indication>& indications);
  void configureClient(Client& client, MessageId messageId, const FieldReader& fields);
  void editProfile(MessageId messageId, const FieldReader& fields, FieldWriter& answer,
                   std::vector<Indication>& indications);
  void writeList(const FieldReader& fields, FieldWriter& answer) const;
  void requireProfile(uint8_t index) const;
  uint8_t readProfileIndex(const FieldReader& fields) const;
  std::vector<Indication> raiseAll(std::span<const ProfileEvent> events) const;
  ProfilesByIndex loadStore() const;
  // Stores the persistent profiles of `changed` and then makes it the table.
  void commit(ProfileTable changed, bool isPersistentChange);

  const ProfilesByIndex ownProfiles;
  const std::unique_ptr<Store> store;
  ProfilesByIndex remembered;  // the persistent profiles that the next power-up begins with
  ProfileTable table;
  std::map<ClientNumber, Client> clients;
  uint32_t boot;
  bool on = false;
};

}  // namespace modem
