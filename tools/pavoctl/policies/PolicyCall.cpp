#include "policies/PolicyCall.h"

namespace pavoctl {

const char* nameOf(Policy policy) {
  switch (policy) {
    case Policy::setupDataCall:
      return "setup-data-call";
    case Policy::emergency:
      return "emergency";
    case Policy::lteAttach:
      return "lte-attach";
    case Policy::matchAttach:
      return "match-attach";
    case Policy::apnClass:
      return "apn-class";
    case Policy::apnTypes:
      break;
  }
  return "apn-types";
}

bool isForList(Policy policy) { return policy == Policy::apnClass || policy == Policy::apnTypes; }

}  // namespace pavoctl
