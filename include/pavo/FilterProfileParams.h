#pragma once

#include <pavo/ProfileParams.h>

namespace pavo {

/// A query: which profiles match. An attribute that is absent is not compared; a profile that lacks
/// an attribute that is present here does not match. For the IP types a profile has something in
/// their place: at home its override type, else its common type; roaming its LTE and UMTS types,
/// which have to be alike to match anything, else its common type.
class PAVO_API FilterProfileParams : public ProfileParams {
 public:
  /// Matches every profile.
  FilterProfileParams();
  /// Every attribute of params has to match, its two flags included; no criteria, no profile id.
  FilterProfileParams(const ProfileParams& params);
  FilterProfileParams(const FilterProfileParams&);
  FilterProfileParams& operator=(const FilterProfileParams&);
  FilterProfileParams(FilterProfileParams&&) noexcept;
  FilterProfileParams& operator=(FilterProfileParams&&) noexcept;
  ~FilterProfileParams() override;

  /// The modem's profile index to match.
  int getFilterByProfileId() const;
  void setFilterByProfileId(int profileId);
  bool hasFilterByProfileId() const;

  /// Whether the library has created the profile; read the value with getIsPavoProfile(). It is not
  /// looked at when there is also a filter by initial-attach profile.
  void setFilterByIsPavoProfile(bool isPavo);
  bool hasFilterByIsPavoProfile() const;

  /// Whether it is the library's initial-attach profile; read the value with getIsIAProfile().
  void setFilterByIsIAProfile(bool isIA);
  bool hasFilterByIsIAProfile() const;

  /// FilterMatchType bits, 0 at first.
  unsigned int getFilterMatchCriteria() const;
  void addFilterMatchCriteria(unsigned int bits);
  void removeFilterMatchCriteria(unsigned int bits);

  /// The criteria, ": ", "id=" and the profile id when there is one, then the attributes.
  std::string dump() const override;

 private:
  unsigned int filterMatchCriteria = 0;
  std::optional<int> filterByProfileId;
};

}  // namespace pavo
