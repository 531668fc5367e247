// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The client's bit and the modem's bit of each APN type, and the conversion of masks.
#pragma once

#include <pavo/ProfileTypes.h>

#include <cstdint>

namespace pavo {

struct ApnTypeBit {
  ApnTypes client;
  std::uint64_t modem;
};

// Conversions.cpp checks the modem's bits against the platform's constants.
inline constexpr ApnTypeBit apnTypeBits[] = {
    {DEFAULT, 0x1}, {MMS, 0x4},    {SUPL, 0x10},  {DUN, 0x8},  {HIPRI, 0x20},
    {FOTA, 0x40},   {IMS, 0x2},    {CBS, 0x80},   {IA, 0x100}, {EMERGENCY, 0x200},
    {MCX, 0x800},   {XCAP, 0x400}, {RCS, 0x1000},
};

// Both functions convert every named bit and drop bits without a counterpart.
constexpr std::uint64_t convertToOvixApnTypeMask(unsigned int mask) {
  std::uint64_t converted = 0;
  for (const ApnTypeBit& type : apnTypeBits) {
    if ((mask & type.client) != 0) {
      converted |= type.modem;
    }
  }
  return converted;
}

constexpr unsigned int convertToCommonApnTypeMask(unsigned long long mask) {
  unsigned int converted = 0;
  for (const ApnTypeBit& type : apnTypeBits) {
    if ((mask & type.modem) != 0) {
      converted |= type.client;
    }
  }
  return converted;
}

}  // namespace pavo
