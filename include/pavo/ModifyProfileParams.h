#pragma once

#include <pavo/ProfileParams.h>

namespace pavo {

/// The attributes to change on an existing profile; absent ones stay as they are.
class PAVO_API ModifyProfileParams : public ProfileParams {
 public:
  /// Changes nothing.
  ModifyProfileParams();
  ModifyProfileParams(const ProfileParams& params);
  ModifyProfileParams(const ModifyProfileParams&);
  ModifyProfileParams& operator=(const ModifyProfileParams&);
  ModifyProfileParams(ModifyProfileParams&&) noexcept;
  ModifyProfileParams& operator=(ModifyProfileParams&&) noexcept;
  ~ModifyProfileParams() override;
};

}  // namespace pavo
