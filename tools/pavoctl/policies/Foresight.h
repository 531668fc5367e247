// What the library will find and do: for a dry run. Nothing is asked, the modem's answer to a
// change is taken to be yes.
#pragma once

#include "policies/Answers.h"

namespace pavoctl {

class Foresight : public Answers {
 public:
  std::vector<Entry> filter(const pavo::FilterProfileParams& filter,
                            const Profiles& profiles) override;
  bool get(const CachedProfile& profile) override;
  bool match(const pavo::FilterProfileParams& filter, const CachedProfile& profile) override;
  ChangeOutcome modify(const pavo::ModifyProfileParams& params,
                       const CachedProfile& profile) override;
  std::optional<Entry> add(const pavo::AddProfileParams& params) override;

 private:
  // Downwards from the end: the cache counts upwards.
  Token nextToken = ~Token{0};
};

}  // namespace pavoctl
