// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "profiles/Names.h"

#include "Text.h"

#include <array>
#include <cstdio>

namespace pavoctl {
namespace {

template <typename Value>
struct Named {
  std::string_view name;
  Value value;
};

constexpr std::array authTypes{
    Named<pavo::AuthType>{"NONE", pavo::AuthType::NONE},
    Named<pavo::AuthType>{"PAP", pavo::AuthType::PAP},
    Named<pavo::AuthType>{"CHAP", pavo::AuthType::CHAP},
    Named<pavo::AuthType>{"PAP_CHAP", pavo::AuthType::PAP_CHAP},
};

constexpr std::array ipTypes{
    Named<pavo::IPType>{"UNKNOWN", pavo::IPType::UNKNOWN},
    Named<pavo::IPType>{"V4", pavo::IPType::V4},
    Named<pavo::IPType>{"V6", pavo::IPType::V6},
    Named<pavo::IPType>{"V4V6", pavo::IPType::V4V6},
};

constexpr std::array apnClasses{
    Named<pavo::ApnClass>{"UNCLASSIFIED", pavo::ApnClass::UNCLASSIFIED},
    Named<pavo::ApnClass>{"IMS", pavo::ApnClass::IMS},
    Named<pavo::ApnClass>{"ADMN", pavo::ApnClass::ADMN},
    Named<pavo::ApnClass>{"INET", pavo::ApnClass::INET},
    Named<pavo::ApnClass>{"APP", pavo::ApnClass::APP},
};

constexpr std::array apnTypes{
    Named<pavo::ApnTypes>{"DEFAULT", pavo::DEFAULT},
    Named<pavo::ApnTypes>{"MMS", pavo::MMS},
    Named<pavo::ApnTypes>{"SUPL", pavo::SUPL},
    Named<pavo::ApnTypes>{"DUN", pavo::DUN},
    Named<pavo::ApnTypes>{"HIPRI", pavo::HIPRI},
    Named<pavo::ApnTypes>{"FOTA", pavo::FOTA},
    Named<pavo::ApnTypes>{"IMS", pavo::IMS},
    Named<pavo::ApnTypes>{"CBS", pavo::CBS},
    Named<pavo::ApnTypes>{"IA", pavo::IA},
    Named<pavo::ApnTypes>{"EMERGENCY", pavo::EMERGENCY},
    Named<pavo::ApnTypes>{"MCX", pavo::MCX},
    Named<pavo::ApnTypes>{"XCAP", pavo::XCAP},
    Named<pavo::ApnTypes>{"RCS", pavo::RCS},
};

constexpr unsigned bitsOf(const decltype(apnTypes)& table) {
  unsigned bits = 0;
  for (const auto& entry : table) {
    bits |= entry.value;
  }
  return bits;
}
static_assert(bitsOf(apnTypes) == apnTypesNamed);

template <typename Table>
auto valueNamed(const Table& table, std::string_view name)
    -> std::optional<decltype(table[0].value)> {
  const std::string wanted = lowerCase(name);
  for (const auto& entry : table) {
    if (lowerCase(entry.name) == wanted) {
      return entry.value;
    }
  }
  return std::nullopt;
}

template <typename Table, typename Value>
std::optional<std::string> nameIn(const Table& table, Value value) {
  for (const auto& entry : table) {
    if (entry.value == value) {
      return std::string(entry.name);
    }
  }
  return std::nullopt;
}

template <typename Table>
std::string allNames(const Table& table) {
  std::vector<std::string> names;
  names.reserve(table.size());
  for (const auto& entry : table) {
    names.emplace_back(entry.name);
  }
  return join(names, ", ");
}

}  // namespace

std::optional<std::string> nameOf(pavo::AuthType type) { return nameIn(authTypes, type); }
std::optional<std::string> nameOf(pavo::IPType type) { return nameIn(ipTypes, type); }
std::optional<std::string> nameOf(pavo::ApnClass apnClass) { return nameIn(apnClasses, apnClass); }

std::vector<std::string> namesOfApnTypes(unsigned mask) {
  std::vector<std::string> names;
  for (const auto& entry : apnTypes) {
    if ((mask & entry.value) != 0) {
      names.emplace_back(entry.name);
    }
  }
  if (const unsigned unnamed = mask & ~apnTypesNamed; unnamed != 0) {
    char number[16];
    std::snprintf(number, sizeof number, "0x%X", unnamed);
    names.emplace_back(number);
  }
  return names;
}

std::optional<pavo::AuthType> authTypeNamed(std::string_view name) {
  return valueNamed(authTypes, name);
}
std::optional<pavo::IPType> ipTypeNamed(std::string_view name) { return valueNamed(ipTypes, name); }
std::optional<pavo::ApnClass> apnClassNamed(std::string_view name) {
  return valueNamed(apnClasses, name);
}
std::optional<pavo::ApnTypes> apnTypeNamed(std::string_view name) {
  return valueNamed(apnTypes, name);
}

std::string authTypeNames() { return allNames(authTypes); }
std::string ipTypeNames() { return allNames(ipTypes); }
std::string apnClassNames() { return allNames(apnClasses); }
std::string apnTypeNames() { return allNames(apnTypes); }

}  // namespace pavoctl
