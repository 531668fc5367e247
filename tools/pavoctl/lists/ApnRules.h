// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What may stand in an APN list.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pavoctl {

// What is wrong with a value; nothing when it is possible.
using ValueRule = std::optional<std::string> (*)(std::string_view value);

struct AttributeRule {
  std::string_view name;
  ValueRule rule;
  bool isRequired = false;
};

struct ChildRule {
  std::string_view name;
  bool isSingle = false;
};

struct ElementRule {
  std::string_view name;
  std::vector<AttributeRule> attributes;
  std::vector<ChildRule> children;
  ValueRule text = nullptr;  // None: no text belongs there.
};

using FormatRules = std::vector<ElementRule>;

const FormatRules& androidRules();
const FormatRules& gnomeRules();

// ", did you mean 'protocol'?" when one of the known names is close to that; else empty.
std::string suggestion(std::string_view name, const std::vector<std::string_view>& known);

}  // namespace pavoctl
