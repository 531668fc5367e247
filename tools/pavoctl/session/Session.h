// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The tool's use of the library. It joins the results of pavo::Manager with their reasons, because
// the library reports the reasons in its log only.
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

// Starts the library and waits until it has read the modem's profiles. It is for the main thread
// only. Every failure is a Failure whose text is ready for the user. A wait for longer than the
// timeout ends the process (see Patience).
//
// The modem may have the library read everything again at any time, for instance after it has
// powered up. The library then no longer knows the earlier keys. Operations therefore take a fresh
// key, and take another one when that key expires before they are done.
class Session {
 public:
  struct Options {
    int subscription = 1;
    std::chrono::milliseconds timeout{5000};
    bool useAndroidLog = false;
  };

  struct Listing {
    std::vector<Profile> profiles;  // by id
    std::size_t unreadable = 0;     // profiles of the modem that the library could not read
  };

  struct Added {
    Profile profile;
    Key key;  // The profile is deleted with its last key unless it is persistent.
  };

  struct Modified {
    Profile profile;
    bool isChanged = false;
  };

  explicit Session(const Options& sessionOptions);

  // Prepares the session for another verb in the same process. It takes the verb's timeout, and has
  // the profiles read again when the modem was lost. Throws UsageError for options that only count
  // at the start.
  void resume(const Options& wanted);

  // Repeats a refresh until the library has read all profiles from the modem.
  void readAll() const;
  // Does the same for any instance of the library. Throws NoAnswer with lateText when the time is
  // over.
  static void readAll(pavo::Manager& manager, std::chrono::milliseconds timeout,
                      const std::string& lateText);
  // Makes the library do the same as when a modem configuration refresh starts and completes.
  void refresh() const;

  Listing list(const pavo::FilterProfileParams& filter) const;
  Snapshot snapshot() const;
  Profile get(int id) const;
  Added add(const pavo::AddProfileParams& params) const;
  Modified modify(int id, const pavo::ModifyProfileParams& params) const;
  void remove(int id) const;
  // The effect that dropping a key had on the modem's profile.
  enum class Release {
    deleted,  // It was the last key of a profile that the library had made.
    kept,
    failed,  // It should have been deleted, but the modem refused or did not answer.
  };
  static Release release(Key key);
  // Returns a key of the profile.
  Key keyOf(int id) const;

  static Dump dump();

  // The modem's part in a failed call. silenceAfter() takes the duration of the call.
  enum class Silence {
    none,  // The modem refused.
    unanswered,
    lost,  // The connection to the modem was lost.
  };
  static Silence silenceAfter(std::chrono::steady_clock::duration time);
  // Limits a call that changes nothing on the modem.
  Patience waiting() const;
  static constexpr const char* signalText = "a signal came before the modem answered";
  // Returns "no modem answered within 5 s (OVIX_MODEM=...)".
  static std::string noAnswerText(std::chrono::milliseconds timeout);

 private:
  // Runs the operation on a key of the profile. When the key expires before the operation is done,
  // it runs again with a fresh key. entry is the beginning of the operation's first line in the
  // log.
  void onProfile(int id, const std::string& entry,
                 const std::function<void(const Key&)>& operation) const;
  // Returns the profile as it is after a change. what names the change in the message of a failure.
  Profile getAfter(const std::string& what, int id) const;

  Options options;
};

}  // namespace pavoctl
