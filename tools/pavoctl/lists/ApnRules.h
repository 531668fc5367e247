// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The elements, attributes and values that an APN list may hold.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pavoctl {

// Returns the fault of a value, or nothing when the value is possible.
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
  ValueRule text = nullptr;  // null: the element holds no text
};

using FormatRules = std::vector<ElementRule>;

const FormatRules& androidRules();
const FormatRules& gnomeRules();

// Returns ", did you mean 'protocol'?" when one of the known names is close to name, else "".
std::string suggestion(std::string_view name, const std::vector<std::string_view>& known);

}  // namespace pavoctl
