// What a policy says while it runs.
#pragma once

#include <string>

namespace pavo::policy {

// What the operations are for that come next.
enum class Stage {
  // A data call's.
  SearchByName,
  SearchByNameAndHomeIPType,
  SearchByNameAndLikeHomeIPType,
  CreateForDataCall,
  ChangeForDataCall,
  // An emergency call's.
  SearchEmergencyByName,
  SearchEmergency,
  CreateForEmergency,
  // LTE attach's.
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
  // A list's, by APN class.
  SearchByClass,
  ChangeByClass,
  CreateForClass,
  // A list's, the APN types by name.
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
  // A line of the library's log.
  virtual void log(LineLevel level, const char* line) = 0;

  // For explanations. The types are what is to be written, in the stages that are about types.
  virtual void enter(Stage /*stage*/, unsigned int /*apnTypes*/) {}
  // A list wants these types for an APN name.
  virtual void collect(const std::string& /*apnName*/, const TypesByIPType& /*types*/) {}

 protected:
  ~PolicyObserver() = default;
};

}  // namespace pavo::policy
