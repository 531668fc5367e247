// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The interface through which a running policy reports.
#pragma once

#include <string>

namespace pavo::policy {

// The purpose of the operations that follow.
enum class Stage {
  // Stages of a data call.
  SearchByName,
  SearchByNameAndHomeIPType,
  SearchByNameAndLikeHomeIPType,
  CreateForDataCall,
  ChangeForDataCall,
  // Stages of an emergency call.
  SearchEmergencyByName,
  SearchEmergency,
  CreateForEmergency,
  // Stages of LTE attach.
  SearchById,
  MatchExactly,
  MatchLikeIPTypes,
  SearchExactly,
  SearchByNameForAttach,
  SearchModemsOwn,
  SearchInitialAttachByName,
  SearchInitialAttach,
  ChangeForAttach,
  CreateForAttach,
  // Stages of a list by APN class.
  SearchByClass,
  ChangeByClass,
  CreateForClass,
  // Stages of a list's APN types by name.
  SearchForAllTypes,
  SearchForTypes,
  ChangeTypes,
  ShareTypes,  // There is no V4V6 profile for its types.
};

// Masks of ApnTypes.
struct TypesByIPType {
  unsigned int v4 = 0;
  unsigned int v6 = 0;
  unsigned int v4v6 = 0;
};

enum class LineLevel { Debug, High, Error };

class PolicyObserver {
 public:
  // Reports a line of the library's log.
  virtual void log(LineLevel level, const char* line) = 0;

  // Reports the stage that begins, for explanations. In stages that concern types, apnTypes is what
  // is to be written.
  virtual void enter(Stage /*stage*/, unsigned int /*apnTypes*/) {}
  // Reports the types that a list wants for an APN name.
  virtual void collect(const std::string& /*apnName*/, const TypesByIPType& /*types*/) {}

 protected:
  ~PolicyObserver() = default;
};

}  // namespace pavo::policy
