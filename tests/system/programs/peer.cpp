// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Another process that uses the library: does what its arguments say, command by command, each
// followed by its argument, and writes "done <command> <argument>" after each. It keeps the keys of
// what it adds until it ends.
//
//   refresh -            reads all profiles
//   add APN              adds a profile that is not persistent
//   modify APN=NEW       gives the profile another APN
//   delete APN
//   listen APN           registers a listener
//   await-expired APN    waits until that listener has run
//   await APN            waits until a profile with this APN is known
//   churn APN            adds, reads and drops profiles for a while
//   hold                 waits until it is killed
#include <pavo/Manager.h>

#include "../AndroidLog.h"
#include "Deadline.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <list>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using pavo::FilterProfileParams;
using pavo::Manager;
using Key = std::shared_ptr<pavo::IProfileKey>;

constexpr int churnRounds = 30;

class Peer {
 public:
  void start() {
    manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
    require(pavo::test::AndroidLog::instance().waitFor(
                "OvixWdsProxy config register request successful!"),
            "no modem");
  }

  void run(const std::string& command, const std::string& argument) {
    static const std::map<std::string, void (Peer::*)(const std::string&)> commands = {
        {"refresh", &Peer::refresh}, {"add", &Peer::keep},
        {"modify", &Peer::modify},   {"delete", &Peer::remove},
        {"listen", &Peer::listen},   {"await-expired", &Peer::awaitExpired},
        {"await", &Peer::await},     {"churn", &Peer::churn},
    };
    (this->*commands.at(command))(argument);
    std::cout << "done " << command << " " << argument << std::endl;
  }

 private:
  static void require(bool condition, const std::string& complaint) {
    if (!condition) {
      throw std::runtime_error(complaint);
    }
  }

  Key add(const std::string& apn) {
    pavo::AddProfileParams params(/*isPersistent=*/false, /*isIAProfile=*/false);
    params.setApnName(apn);
    return manager.addProfile(params);
  }

  std::list<Key> find(const std::string& apn) {
    FilterProfileParams params;
    params.setApnName(apn);
    return manager.filter(params);
  }

  Key findOne(const std::string& apn) {
    const std::list<Key> found = find(apn);
    require(found.size() == 1, std::to_string(found.size()) + " profiles named " + apn);
    return found.front();
  }

  void refresh(const std::string&) { manager.refresh(pavo::PDC_REFRESH_COMPLETED); }

  void keep(const std::string& apn) {
    keys.push_back(add(apn));
    require(keys.back() != nullptr, "not added");
  }

  void modify(const std::string& change) {
    const auto equals = change.find('=');
    pavo::ModifyProfileParams params;
    params.setApnName(change.substr(equals + 1));
    require(manager.modifyProfile(params, findOne(change.substr(0, equals))), "not modified");
  }

  void remove(const std::string& apn) {
    require(manager.deleteProfile(findOne(apn)), "not deleted");
  }

  void listen(const std::string& apn) {
    keys.push_back(findOne(apn));
    keys.back()->registerExpirationListener([this] { hasExpired = true; });
  }

  void awaitExpired(const std::string&) {
    require(pavo::test::waitUntil([this] { return hasExpired.load(); }), "not expired");
  }

  void await(const std::string& apn) {
    require(pavo::test::waitUntil([&] { return !find(apn).empty(); }), "did not appear");
  }

  void churn(const std::string& apn) {
    for (int i = 0; i < churnRounds; ++i) {
      const Key key = add(apn);
      manager.getProfile(key);
      manager.filter(FilterProfileParams());
    }
  }

  Manager& manager = Manager::getInstance();
  std::atomic<bool> hasExpired = false;
  std::list<Key> keys;
};

}  // namespace

int main(int argc, char** argv) {
  try {
    Peer peer;
    peer.start();
    for (int i = 1; i < argc; i += 2) {
      const std::string command = argv[i];
      while (command == "hold") {
        pause();
      }
      peer.run(command, argv[i + 1]);
    }
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::cerr << error.what() << std::endl;
    return EXIT_FAILURE;
  }
}
