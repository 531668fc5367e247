// The modem itself: its profiles, its clients' registrations and its power.
//
// It knows messages and no sockets: payloads of requests go in, payloads of responses and
// indications come out. One thread uses it.
//
//            powerOff()                       powerUp()
//   on  ----------------->  off (no clients) ----------->  on, with another boot number
//
// Persistent profiles live in the store, or without one in memory; the others end with the power.
// The profile file gives the modem its own profiles: the non-persistent ones come back as in the
// file at every power-up, the persistent ones are what a store without a file begins with.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <vector>

#include "modem/core/FieldReader.h"
#include "modem/core/Messages.h"
#include "modem/core/ProfileTable.h"
#include "modem/core/Store.h"
#include "modem/server/ClientHandler.h"

namespace modem {

struct ProfileEvent {
  uint32_t event;
  uint8_t index;
};

// A profile-changed indication on its way to one client.
struct Indication {
  ClientNumber client;
  uint32_t event;
  Bytes payload;
};

// What a request led to; the response goes out before the indications.
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

  // Powers up. Throws Error when the store cannot be read or written.
  explicit Modem(Options options);

  bool isOn() const { return on; }
  uint32_t bootNumber() const { return boot; }
  const ProfileTable& profiles() const { return table; }

  // sawAbsence: the client lived through a time without a modem and wants to be told, once it has
  // registered, that the profiles are ready.
  void addClient(ClientNumber client, bool sawAbsence);
  void removeClient(ClientNumber client);
  // Every client by number, with what it has registered for.
  nlohmann::json clientsToJson() const;

  Outcome handle(ClientNumber number, MessageId messageId, ByteView payload);

  // Edits by somebody who is no client; all registered clients are told. They throw Refusal.
  struct Created {
    uint8_t index;
    std::vector<Indication> indications;
  };
  Created create(Profile profile);
  std::vector<Indication> modify(uint8_t index, const Profile& changes);
  std::vector<Indication> erase(uint8_t index);
  // Tells of an event that need not have happened.
  std::vector<Indication> raise(ProfileEvent event) const;

  // Forgets all clients and what is not persistent. When the store cannot be read it throws
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
  // Stores what is persistent in changed, then makes it the table.
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
