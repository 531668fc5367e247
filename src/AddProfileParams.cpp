#include <pavo/AddProfileParams.h>

#include "DumpText.h"

namespace pavo {

AddProfileParams::AddProfileParams(bool persistent, bool isIA)
    : AddProfileParams(ProfileParams(), persistent, isIA) {}

AddProfileParams::AddProfileParams(const ProfileParams& params, bool persistent, bool isIA)
    : ProfileParams(params), isPersistent(persistent) {
  isIAProfile = isIA;
}

AddProfileParams::AddProfileParams(const AddProfileParams&) = default;
AddProfileParams& AddProfileParams::operator=(const AddProfileParams&) = default;
AddProfileParams::AddProfileParams(AddProfileParams&&) noexcept = default;
AddProfileParams& AddProfileParams::operator=(AddProfileParams&&) noexcept = default;
AddProfileParams::~AddProfileParams() = default;

bool AddProfileParams::getIsPersistent() const { return isPersistent; }

std::string AddProfileParams::dump() const {
  std::string text = " persist=";
  appendValue(text, isPersistent);
  text += ": ";
  appendTo(text);
  return text;
}

}  // namespace pavo
