// One walk through a policy's stages: asks for each step, tells it, and keeps the profiles as the
// steps leave them.
#pragma once

#include <functional>

#include "policies/PolicyStages.h"

namespace pavoctl {

class PolicyWalk {
 public:
  PolicyWalk(Profiles cached, Answers& asked, Secrets secrets)
      : profiles(std::move(cached)), answers(asked), story(secrets) {}

  // All that match.
  std::vector<Token> searchAll(const std::string& why, const pavo::FilterProfileParams& filter);
  // The first that matches.
  std::optional<Token> search(const std::string& why, const pavo::FilterProfileParams& filter);
  // The profile's contents; null when the library had none. Tells nothing.
  const CachedProfile* read(Token token);
  bool compare(const std::string& why, const pavo::FilterProfileParams& filter, Token token);
  void change(const std::string& why, const pavo::ModifyProfileParams& wanted, Token token);
  void create(const std::string& why, const pavo::AddProfileParams& wanted);

  Story& tell() { return story; }
  // Names the profile that is the policy's result.
  void take(Token token) { outcome.result = token; }
  void answer(bool isMatching) { outcome.isMatching = isMatching; }

  PolicyOutcome finish();

 private:
  std::vector<Token> ask(const std::string& why, const pavo::FilterProfileParams& filter,
                         bool isForOne);
  CachedProfile* find(Token token);

  Profiles profiles;
  Answers& answers;
  Story story;
  PolicyOutcome outcome;
};

}  // namespace pavoctl
