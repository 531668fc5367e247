// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The tool's use of the library: what pavo::Manager answers, together with why it did, which the
// library tells in its log only.
#pragma once

#include <pavo/Manager.h>

#include "profiles/Profile.h"
#include "session/Dump.h"
#include "session/Patience.h"
#include "session/Snapshot.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace pavoctl {

// Starts the library and waits until it has read the modem's profiles. Main thread only. Every
// failure is a Failure whose text is ready for the user; a wait for longer than the timeout ends
// the process (see Patience).
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

  // For another verb in the same process: takes its timeout, and has the profiles read again when
  // the modem was lost. Throws UsageError for options that only count at the start.
  void resume(const Options& wanted);

  // Has the library read all profiles from the modem, again and again until it could.
  void readAll() const;
  // The same for any instance of the library; throws NoAnswer with that text when time is over.
  static void readAll(pavo::Manager& manager, std::chrono::milliseconds timeout,
                      const std::string& lateText);
  // The same as a modem configuration refresh that starts and completes.
  void refresh() const;

  Listing list(const pavo::FilterProfileParams& filter) const;
  Snapshot snapshot() const;
  Profile get(int id) const;
  Added add(const pavo::AddProfileParams& params) const;
  Modified modify(int id, const pavo::ModifyProfileParams& params) const;
  void remove(int id) const;
  // What became of the modem's profile when a key was dropped.
  enum class Release {
    deleted,  // It was the last key of a profile that the library had made.
    kept,
    failed,  // It should have been deleted, but the modem refused or did not answer.
  };
  static Release release(Key key);
  // A key of the profile.
  Key keyOf(int id) const;

  static Dump dump();

  // Why something that the library was busy with for that long has failed.
  enum class Silence {
    none,  // The modem refused.
    unanswered,
    lost,  // It has gone.
  };
  static Silence silenceAfter(std::chrono::steady_clock::duration time);
  // For what only asks.
  Patience waiting() const;
  static constexpr const char* signalText = "a signal came before the modem answered";
  // "no modem answered within 5 s (OVIX_MODEM=...)"
  static std::string noAnswerText(std::chrono::milliseconds timeout);

 private:
  // Runs the operation, whose entry line in the log begins with entry, on a key of the profile
  // until the key was good for it.
  void onProfile(int id, const std::string& entry,
                 const std::function<void(const Key&)>& operation) const;
  // The profile as it is after what was done to it.
  Profile getAfter(const std::string& what, int id) const;

  Options options;
};

}  // namespace pavoctl
