// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "DumpText.h"

#include "NamedValue.h"

#include <array>
#include <charconv>

namespace pavo {

namespace {

struct BitName {
  unsigned int bit;
  const char* name;
};

constexpr BitName apnTypeNames[] = {
    {DEFAULT, "DEFAULT|"}, {MMS, "MMS|"},
    {SUPL, "SUPL|"},       {DUN, "DUN|"},
    {HIPRI, "HIPRI|"},     {FOTA, "FOTA|"},
    {IMS, "IMS|"},         {CBS, "CBS|"},
    {IA, "IA|"},           {EMERGENCY, "EMERGENCY|"},
    {MCX, "MCX|"},         {XCAP, "XCAP|"},
    {RCS, "RCS|"},
};

constexpr BitName filterMatchNames[] = {
    {HomeIPSubset, "HomeIPSubset|"},     {RoamIPSubset, "RoamIPSubset|"},
    {ApnNameSubset, "ApnNameSubset|"},   {ApnTypeBitmaskSubset, "ApnTypeBitmaskSubset|"},
    {HomeIPSuperset, "HomeIPSuperset|"}, {RoamIPSuperset, "RoamIPSuperset|"},
};

const char* nameOf(unsigned int bit) {
  for (const BitName& entry : apnTypeNames) {
    if (entry.bit == bit) {
      return entry.name;
    }
  }
  return nullptr;
}

template <typename Number>
void appendNumber(std::string& text, Number value) {
  std::array<char, 24> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  text.append(digits.data(), end);
}

}  // namespace

void appendValue(std::string& text, const std::string& value) { text += value; }
void appendValue(std::string& text, bool value) { text += value ? '1' : '0'; }
void appendValue(std::string& text, int value) { appendNumber(text, value); }
void appendValue(std::string& text, unsigned int value) { appendNumber(text, value); }
void appendValue(std::string& text, unsigned long long value) { appendNumber(text, value); }

void appendValue(std::string& text, AuthType value) {
  static constexpr const char* names[] = {"NONE", "PAP", "CHAP", "PAP_CHAP"};
  appendNamed(text, value, names);
}

void appendValue(std::string& text, IPType value) {
  static constexpr const char* names[] = {"UNKNOWN", "V4", "V6", "V4V6"};
  appendNamed(text, value, names);
}

void appendValue(std::string& text, ApnClass value) {
  static constexpr const char* names[] = {nullptr, "IMS", "ADMN", "INET", "APP"};
  appendNamed(text, value, names);
}

void appendValue(std::string& text, ApnTypes value) {
  constexpr unsigned int highestBit = RCS;
  const auto mask = static_cast<unsigned int>(value);
  if (mask == 0) {
    text += "NONE";
    return;
  }
  for (unsigned int bit = 1; bit <= highestBit; bit <<= 1) {
    if ((mask & bit) == 0) {
      continue;
    }
    if (const char* name = nameOf(bit)) {
      text += name;
    } else {
      // Log readers expect the number of the whole mask, once for each unnamed bit.
      appendNumber(text, mask);
    }
  }
}

void appendValue(std::string& text, FilterMatchType value) {
  const auto criteria = static_cast<unsigned int>(value);
  if (criteria == 0) {
    text += "None";
  }
  for (const BitName& entry : filterMatchNames) {
    if ((criteria & entry.bit) != 0) {
      text += entry.name;
    }
  }
}

}  // namespace pavo
