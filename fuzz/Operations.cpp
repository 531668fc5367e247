// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This target runs any sequence of public operations with any parameters, while the modem refuses,
// stays silent, and is edited by other clients. Nothing may crash or hang, and the library must
// keep the platform's rules.
#include <pavo/Manager.h>
#include <pavo/Util.h>

#include "FakePlatform.h"
#include "Params.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <memory>
#include <string>
#include <vector>

namespace {

using pavo::fuzz::Input;
using pavo::fuzz::paramsFrom;
using pavo::test::FakePlatform;
using Key = std::shared_ptr<pavo::IProfileKey>;

constexpr int operationsMax = 64;
constexpr unsigned int messages[] = {
    OVIX_WDS_CREATE_PROFILE_REQ_V01,       OVIX_WDS_MODIFY_PROFILE_SETTINGS_REQ_V01,
    OVIX_WDS_DELETE_PROFILE_REQ_V01,       OVIX_WDS_GET_PROFILE_LIST_REQ_V01,
    OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01,
};

class Caller {
 public:
  explicit Caller(Input& bytes) : input(bytes) {}

  void runAll() {
    for (int i = 0; i < operationsMax && !input.isOver(); ++i) {
      switch (input.byte() % 4) {
        case 0:
          runManager();
          break;
        case 1:
          runUtil();
          break;
        case 2:
          disturb();
          break;
        default:
          runKey();
          break;
      }
    }
  }

 private:
  Key anyKey() {
    const std::size_t number = input.byte();
    return keys.empty() ? nullptr : keys[number % keys.size()];
  }

  void keep(Key key) { keys.push_back(std::move(key)); }

  void runManager() {
    switch (input.byte() % 8) {
      case 0: {
        const bool isPersistent = input.flag();
        const bool isIAProfile = input.flag();
        keep(manager.addProfile(pavo::AddProfileParams(paramsFrom<pavo::ProfileParams>(input),
                                                       isPersistent, isIAProfile)));
        break;
      }
      case 1:
        manager.modifyProfile(paramsFrom<pavo::ModifyProfileParams>(input), anyKey());
        break;
      case 2:
        manager.deleteProfile(anyKey());
        break;
      case 3:
        for (Key& key : manager.filter(paramsFrom<pavo::FilterProfileParams>(input))) {
          keep(std::move(key));
        }
        break;
      case 4:
        manager.getProfile(anyKey());
        break;
      case 5:
        manager.match(paramsFrom<pavo::FilterProfileParams>(input), anyKey());
        break;
      case 6:
        manager.refresh(static_cast<pavo::PDCRefreshStatus>(input.byte()));
        break;
      default:
        manager.dump();
        break;
    }
  }

  void runUtil() {
    const auto params = paramsFrom<pavo::ProfileParams>(input);
    switch (input.byte() % 7) {
      case 0:
        util.setProfileUpdateAllowed(input.flag());
        break;
      case 1:
        keep(util.findOrCreateProfileForSetupDataCall(params));
        break;
      case 2:
        keep(util.findOrCreateProfileForEmergencyDataCall(params));
        break;
      case 3:
        util.matchLteAttachProfileId(input.byte(), params);
        break;
      case 4:
        keep(util.findOrCreateProfileForLteAttach(params));
        break;
      case 5:
        util.updateModemProfileByApnClass({params, paramsFrom<pavo::ProfileParams>(input)});
        break;
      default:
        util.updateAPNTypeBitmaskOnModemProfile({params, paramsFrom<pavo::ProfileParams>(input)});
        break;
    }
  }

  void runKey() {
    const Key key = anyKey();
    if (input.flag() && key != nullptr) {
      key->registerExpirationListener([text = input.text()] {
        // The call is refused, because it runs on the worker.
        pavo::Manager::getInstance().filter(pavo::FilterProfileParams());
      });
    } else if (!keys.empty()) {
      keys.erase(keys.begin() + input.byte() % static_cast<std::ptrdiff_t>(keys.size()));
    }
  }

  void disturb() {
    FakePlatform& platform = FakePlatform::instance();
    const unsigned int message = messages[input.byte() % std::size(messages)];
    switch (input.byte() % 6) {
      case 0:
        platform.rejectNext(message, input.byte());
        break;
      case 1:
        platform.failNext(message);
        break;
      case 2:
        platform.indicateProfileChanged(input.byte(), pavo::fuzz::numberFrom(input));
        break;
      case 3:
        platform.eraseProfile(input.byte());
        break;
      case 4: {
        wds_get_profile_settings_resp_msg_v01 settings{};
        input.scribbleOn(settings);
        platform.setProfile(input.byte(), settings);
        break;
      }
      default:
        platform.setEmitsIndications(input.flag());
        break;
    }
  }

  Input& input;
  pavo::Manager& manager = pavo::Manager::getInstance();
  pavo::Util util;
  std::vector<Key> keys;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FakePlatform& platform = FakePlatform::instance();
  platform.reset();
  pavo::Manager::getInstance().init(/*subscription=*/0, /*useAndroidLog=*/true);
  if (!platform.waitForRegistration()) {
    std::abort();
  }
  Input input(data, size);
  Caller(input).runAll();
  for (const std::string& misuse : platform.misuses()) {
    std::fprintf(stderr, "%s\n", misuse.c_str());
    std::abort();
  }
  return 0;
}
