// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pavo/ProfileParams.h>

namespace pavo {

/// A query: which profiles match. An attribute that is absent here is not compared. A profile that
/// lacks an attribute that is present here does not match.
///
/// IP types are compared with the profile's effective types. Home: the profile's override type
/// unless it is absent or UNKNOWN, else its common type. Roaming: its LTE and UMTS types if either
/// is set (they must be equal, else nothing matches), else its common type.
///
/// @code
/// pavo::FilterProfileParams filter;
/// filter.setApnName("internet");
/// filter.setHomeIPType(pavo::IPType::V4);
/// filter.addFilterMatchCriteria(pavo::HomeIPSubset);  // V4 and V4V6
/// @endcode
class PAVO_API FilterProfileParams : public ProfileParams {
 public:
  /// Matches every profile.
  FilterProfileParams();
  /// Matches profiles that have every attribute of params, its two flags included. There are no
  /// criteria and no profile id. The conversion is implicit, so that a description of a profile can
  /// be passed where a query is wanted.
  FilterProfileParams(const ProfileParams& params);
  FilterProfileParams(const FilterProfileParams&);
  FilterProfileParams& operator=(const FilterProfileParams&);
  FilterProfileParams(FilterProfileParams&&) noexcept;
  FilterProfileParams& operator=(FilterProfileParams&&) noexcept;
  ~FilterProfileParams() override;

  /// The modem's profile index to match, 0 when there is none.
  int getFilterByProfileId() const;
  void setFilterByProfileId(int profileId);
  bool hasFilterByProfileId() const;

  /// Whether the library has created the profile. The value is read with getIsPavoProfile(). It is
  /// not compared when there is a filter by initial-attach profile, too.
  void setFilterByIsPavoProfile(bool isPavo);
  bool hasFilterByIsPavoProfile() const;

  /// Whether it is the library's initial-attach profile. The value is read with getIsIAProfile().
  void setFilterByIsIAProfile(bool isIA);
  bool hasFilterByIsIAProfile() const;

  /// FilterMatchType bits, 0 at construction.
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
