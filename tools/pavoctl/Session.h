// The tool's use of the library: what pavo::Manager answers, together with why it did, which the
// library tells in its log only.
#pragma once

#include <pavo/Manager.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Dump.h"
#include "Profile.h"

namespace pavoctl {

using Key = std::shared_ptr<pavo::IProfileKey>;

// Starts the library and waits until it has read the modem's profiles. Main thread only. Every
// failure is a Failure whose text is ready for the user.
//
// The modem may have the library read everything again at any time (it has just powered up); keys
// are unknown from then on. Operations therefore take a fresh key and, when that has gone under
// their hands, another one.
class Session {
 public:
  struct Options {
    int subscription = 1;
    std::chrono::milliseconds timeout{5000};
    bool useAndroidLog = false;
  };

  struct Listing {
    std::vector<Profile> profiles;  // By id.
    std::size_t unreadable = 0;     // Profiles of the modem that the library could not read.
  };

  struct Added {
    Profile profile;
    Key key;  // Dropping it deletes a profile that is not persistent.
  };

  struct Modified {
    Profile profile;
    bool isChanged = false;
  };

  explicit Session(const Options& sessionOptions);

  // Has the library read all profiles from the modem, again and again until it could.
  void readAll();
  // The same as a modem configuration refresh that starts and completes.
  void refresh();

  Listing list(const pavo::FilterProfileParams& filter);
  Profile get(int id);
  Added add(const pavo::AddProfileParams& params);
  Modified modify(int id, const pavo::ModifyProfileParams& params);
  void remove(int id);
  // Drops the key; says whether the modem's profile went with it.
  static bool release(Key key);

  static Dump dump();

 private:
  // Runs the operation, whose entry line in the log begins with entry, on a key of the profile
  // until the key was good for it; returns what the library logged meanwhile.
  std::vector<std::string> onProfile(int id, const std::string& entry,
                                     const std::function<void(const Key&)>& operation);
  Key keyOf(int id);

  const Options options;
};

}  // namespace pavoctl
