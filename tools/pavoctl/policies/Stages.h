// The stages of each policy, in the order in which the library goes through them.
#pragma once

#include <list>

#include "policies/PolicyWalk.h"
#include "profiles/Attributes.h"

namespace pavoctl {

void setupDataCall(PolicyWalk& walk, const pavo::ProfileParams& wanted, bool isUpdateAllowed);
void emergency(PolicyWalk& walk, const pavo::ProfileParams& wanted);
void lteAttach(PolicyWalk& walk, const pavo::ProfileParams& wanted, bool isUpdateAllowed);
void matchAttach(PolicyWalk& walk, const pavo::ProfileParams& wanted, int id, bool isUpdateAllowed);
void apnClass(PolicyWalk& walk, const pavo::ProfileParams& wanted);
void apnTypes(PolicyWalk& walk, std::list<pavo::ProfileParams> wanted, bool isUpdateAllowed);

inline constexpr unsigned anyHomeIP = pavo::HomeIPSubset | pavo::HomeIPSuperset;
inline constexpr unsigned anyRoamIP = pavo::RoamIPSubset | pavo::RoamIPSuperset;

// A record with those of the attributes that are present.
template <typename Record>
Record only(const pavo::ProfileParams& params, std::initializer_list<std::string_view> keys) {
  Record record{pavo::ProfileParams()};
  copyPresent(params, record, keys);
  return record;
}

}  // namespace pavoctl
