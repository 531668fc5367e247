// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "lists/ApnCheck.h"

#include "Text.h"
#include "lists/ApnRules.h"

#include <algorithm>
#include <map>

namespace pavoctl {
namespace {

// A long value is cut where a finding quotes it.
std::string shown(const std::string& value) {
  constexpr std::size_t shownMax = 60;
  return quoted(value.size() > shownMax ? value.substr(0, shownMax) + "..." : value);
}

template <typename Range>
std::size_t indexIn(const Range& range, typename Range::const_iterator at) {
  return static_cast<std::size_t>(std::distance(range.begin(), at));
}

// Checks the names and values of elements and attributes, each by itself.
class FormCheck {
 public:
  FormCheck(const FormatRules& formatRules, std::vector<Finding>& results)
      : rules(formatRules), findings(results) {}

  void check(const XmlElement& element) {
    const auto rule = std::find_if(rules.begin(), rules.end(),
                                   [&](const ElementRule& r) { return r.name == element.name; });
    if (rule == rules.end()) {
      return;
    }
    checkAttributes(element, *rule);
    checkText(element, *rule);
    checkChildren(element, *rule);
  }

 private:
  void find(unsigned long line, const char* kind, std::string text) {
    findings.push_back({line, kind, std::move(text)});
  }

  void checkAttributes(const XmlElement& element, const ElementRule& rule) {
    std::vector<std::string_view> known;
    for (const auto& attribute : rule.attributes) {
      known.push_back(attribute.name);
      if (attribute.isRequired && element.attribute(std::string(attribute.name)) == nullptr) {
        find(element.line, "missing",
             "<" + element.name + "> without " + std::string(attribute.name));
      }
    }
    for (const auto& [name, value] : element.attributes) {
      const auto attribute = std::find(known.begin(), known.end(), name);
      if (attribute == known.end()) {
        find(element.line, "unknown",
             "unknown attribute " + quoted(name) + suggestion(name, known));
      } else if (const auto wrong = rule.attributes[indexIn(known, attribute)].rule(value)) {
        // A password must not appear on the screen.
        find(element.line, "value",
             name + (name == "password" ? "" : " " + shown(value)) + " " + *wrong);
      }
    }
  }

  void checkText(const XmlElement& element, const ElementRule& rule) {
    if (rule.text == nullptr) {
      if (element.textLine != 0) {
        find(element.textLine, "text", "text has no meaning in <" + element.name + ">");
      }
    } else if (const auto wrong = rule.text(element.text)) {
      find(element.line, "value", "<" + element.name + "> " + *wrong);
    }
  }

  void checkChildren(const XmlElement& element, const ElementRule& rule) {
    std::vector<std::string_view> known;
    for (const auto& child : rule.children) {
      known.push_back(child.name);
    }
    std::map<std::string_view, int> counts;
    for (const XmlElement& child : element.children) {
      const auto name = std::find(known.begin(), known.end(), child.name);
      if (name == known.end()) {
        find(child.line, "unknown",
             "unknown element " + quoted(child.name) + " in <" + element.name + ">" +
                 suggestion(child.name, known));
        continue;
      }
      if (++counts[*name] == 2 && rule.children[indexIn(known, name)].isSingle) {
        find(child.line, "duplicate",
             "a second <" + child.name + "> in one <" + element.name + ">");
      }
      check(child);
    }
  }

  const FormatRules& rules;
  std::vector<Finding>& findings;
};

// Checks the entries, each by itself and against the earlier entries of the same networks.
class EntryCheck {
 public:
  explicit EntryCheck(std::vector<Finding>& results) : findings(results) {}

  void check(const ApnEntry& entry) {
    checkCredentials(entry);
    std::vector<std::string> networks = entry.networks;
    if (networks.empty()) {
      networks.emplace_back();
    }
    std::map<std::string, bool> said;
    const auto sayOnce = [&](const char* kind, const std::string& text) {
      if (!std::exchange(said[kind], true)) {
        findings.push_back({entry.line, kind, text});
      }
    };
    for (const auto& network : networks) {
      const auto [first, isNew] =
          lineOfEntry.emplace(network + '\n' + contentsOf(entry), entry.line);
      if (!isNew) {
        sayOnce("duplicate", "the same as line " + std::to_string(first->second));
        continue;
      }
      for (const char* name : {"apn", "carrier"}) {
        checkCase(entry, name, network, sayOnce);
      }
    }
  }

 private:
  struct Spelling {
    std::string text;
    unsigned long line;
  };

  void checkCredentials(const ApnEntry& entry) {
    const bool hasUser = !entry.valueOf("user").empty();
    const std::string authType(trimmed(entry.valueOf("authtype")));
    if (hasUser && (authType.empty() || authType == "-1" || authType == "0")) {
      findings.push_back({entry.line, "credentials",
                          "user " + shown(entry.valueOf("user")) + " without authentication"});
    }
    if (!hasUser && !entry.valueOf("password").empty()) {
      findings.push_back({entry.line, "credentials", "password without user"});
    }
  }

  // Every attribute counts but the carrier, because that is for people.
  static std::string contentsOf(const ApnEntry& entry) {
    std::vector<std::string> parts;
    for (const auto& [name, value] : entry.attributes) {
      if (name != "carrier" && !value.empty()) {
        parts.push_back(std::string(name).append(1, '\t').append(value));
      }
    }
    std::sort(parts.begin(), parts.end());
    return join(parts, "\n");
  }

  template <typename Say>
  void checkCase(const ApnEntry& entry, const std::string& name, const std::string& network,
                 const Say& sayOnce) {
    const std::string value = entry.valueOf(name);
    const auto [first, isNew] = spellings.emplace(name + '\n' + network + '\n' + lowerCase(value),
                                                  Spelling{value, entry.line});
    if (!isNew && first->second.text != value) {
      sayOnce("case", name + " " + shown(value) + " differs from " + shown(first->second.text) +
                          " in line " + std::to_string(first->second.line) +
                          " in letter case only");
    }
  }

  std::vector<Finding>& findings;
  std::map<std::string, unsigned long> lineOfEntry;
  std::map<std::string, Spelling> spellings;
};

}  // namespace

std::vector<Finding> checkApnList(const XmlElement& root, const std::vector<ApnEntry>& entries) {
  std::vector<Finding> findings;
  FormCheck(isAndroid(root) ? androidRules() : gnomeRules(), findings).check(root);
  EntryCheck entryCheck(findings);
  for (const auto& entry : entries) {
    entryCheck.check(entry);
  }
  std::stable_sort(findings.begin(), findings.end(),
                   [](const Finding& a, const Finding& b) { return a.line < b.line; });
  return findings;
}

}  // namespace pavoctl
