// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "policies/StepText.h"

#include "Table.h"
#include "Text.h"

#include <algorithm>
#include <array>
#include <vector>

namespace pavoctl {
namespace {

struct Criterion {
  const char* name;
  const char* key;
  const char* text;
};

constexpr std::array criteria{
    Criterion{"HomeIPSubset", "homeIPType", " or wider"},
    Criterion{"HomeIPSuperset", "homeIPType", " or narrower"},
    Criterion{"RoamIPSubset", "roamIPType", " or wider"},
    Criterion{"RoamIPSuperset", "roamIPType", " or narrower"},
    Criterion{"ApnNameSubset", "apnName", " or longer"},
    Criterion{"ApnTypeBitmaskSubset", "apnTypesMask", " or more"},
};

// Returns how the filter's criteria loosen the comparison of the attribute.
std::string loosening(const Json& filter, const std::string& key) {
  const Json names = filter.value("criteria", Json::array());
  std::string text;
  for (const auto& criterion : criteria) {
    if (criterion.key == key &&
        std::find(names.begin(), names.end(), criterion.name) != names.end()) {
      text += criterion.text;
    }
  }
  return text;
}

std::string mismatchText(const Json& rejected) {
  const std::string key = rejected["attribute"];
  if (rejected["actual"].is_null()) {
    return key + " is absent";
  }
  if (rejected["actual"] == rejected["wanted"]) {
    // The two values differ, but both are masked.
    return key + " is another";
  }
  return key + " is " + valueText(rejected["actual"]) + ", not " + valueText(rejected["wanted"]);
}

std::string line(const std::string& text) { return "   " + text + "\n"; }

std::string searchText(const Json& step) {
  std::string text = "Look for " + step["why"].get<std::string>() + ".\n";
  text += line("Filter: " + filterText(step["filter"]));
  std::vector<std::string> found;
  for (const auto& profile : step["found"]) {
    found.push_back(nameText(profile));
  }
  text += line("Found:  " + (found.empty() ? "none" : join(found, ", ")));
  if (found.size() > 1 && step.contains("taken")) {
    text +=
        line("Taken:  profile " + valueText(step["taken"]) + ", which the library came upon first");
  }
  for (const auto& rejected : step["rejected"]) {
    text += line("Not " + nameText(rejected) + ": " + mismatchText(rejected));
  }
  for (const auto& unclear : step.value("unclear", Json::array())) {
    text += line("Somebody else has changed " + nameText(unclear) + " meanwhile");
  }
  return text;
}

std::string checkText(const Json& step) {
  return nameText(step) + ": " + step["question"].get<std::string>() + "\n" +
         line((step["answer"] ? "Yes: " : "No: ") + step["because"].get<std::string>());
}

std::string compareText(const Json& step) {
  return nameText(step) + ": " + step["why"].get<std::string>() + "\n" +
         line("Filter: " + filterText(step["filter"])) +
         line(step["isMatching"] ? "Yes" : "No: " + refusalText(step));
}

std::string changeText(const Json& step, Telling telling) {
  const std::string outcome = step["outcome"];
  const bool isForeseen = telling == Telling::foreseen;
  if (outcome == "refused") {
    return nameText(step) + ": the modem refused the change or did not answer";
  }
  if (outcome == "unchanged") {
    return nameText(step) + (isForeseen ? " would not be changed" : " not changed") +
           ": it is like that already";
  }
  return nameText(step) + (isForeseen ? " would be changed: " : " changed: ") +
         (step["changes"].empty() ? "only how the modem holds its IP types"
                                  : changesText(step["changes"]));
}

std::string createText(const Json& step, Telling telling) {
  const std::string attributes = filterText(step["wanted"]);
  const std::string kind = step["isPersistent"] ? ", persistent: " : ", not persistent: ";
  if (step["outcome"] == "refused") {
    return "new profile" + kind + "the modem refused it or did not answer";
  }
  return nameText(step["profile"]) +
         (telling == Telling::foreseen ? " would be created" : " created") + kind + attributes;
}

std::string stepText(const Json& step, Telling telling) {
  const std::string kind = step["step"];
  if (kind == "search") {
    return searchText(step);
  }
  if (kind == "check") {
    return checkText(step);
  }
  if (kind == "compare") {
    return compareText(step);
  }
  if (kind == "note") {
    return step["text"].get<std::string>() + "\n";
  }
  return step["why"].get<std::string>() + ".\n" + line(editText(step, telling));
}

}  // namespace

std::string nameText(const Json& profile) {
  const std::string name =
      profile["id"].is_null() ? "new profile" : "profile " + valueText(profile["id"]);
  return profile.contains("apnName") ? name + " (" + valueText(profile["apnName"]) + ")" : name;
}

std::string filterText(const Json& filter) {
  std::vector<std::string> parts;
  for (const auto& [key, value] : filter.items()) {
    if (key != "criteria") {
      parts.push_back(key + " = " + valueText(value) + loosening(filter, key));
    }
  }
  return parts.empty() ? "anything" : join(parts, ", ");
}

std::string refusalText(const Json& step) {
  const std::string kind = step["step"];
  if (kind == "search") {
    return "there is no such profile";
  }
  if (kind == "check") {
    return step["because"];
  }
  return step.contains("attribute") ? mismatchText(step) : "it is not as wanted";
}

std::string editText(const Json& step, Telling telling) {
  return step["step"] == "create" ? createText(step, telling) : changeText(step, telling);
}

std::string stepsText(const Json& steps, Telling telling) {
  std::string text;
  int number = 0;
  for (const auto& step : steps) {
    text += std::to_string(++number) + ". " + stepText(step, telling);
  }
  return text;
}

}  // namespace pavoctl
