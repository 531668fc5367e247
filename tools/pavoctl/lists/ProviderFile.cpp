// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "lists/ProviderFile.h"

#include "Text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace pavoctl {
namespace {

struct Word {
  std::string_view theirs;
  std::string_view ours;
};

// An access point without a usage carries data, and the file does not say for which other uses.
constexpr const char* typesOfNoUsage = "default";
constexpr std::array usages{
    Word{"internet", "default,supl"},
    Word{"mms", "mms"},
    Word{"ia", "ia"},
    Word{"mms-internet-hipri", "default,mms,supl,hipri"},
    Word{"mms-internet-hipri-fota", "default,mms,supl,hipri,fota"},
};
constexpr std::array methods{Word{"pap", "1"}, Word{"chap", "2"}};

template <typename Table>
const Word* find(const Table& table, std::string_view theirs) {
  const auto found = std::find_if(table.begin(), table.end(),
                                  [&](const Word& word) { return word.theirs == theirs; });
  return found == table.end() ? nullptr : &*found;
}

std::string valueOf(const XmlElement& element, const std::string& attribute) {
  const std::string* value = element.attribute(attribute);
  return value == nullptr ? std::string() : *value;
}

// Returns the element's text, or the value of its first attribute when it has no text.
std::string contentOf(const XmlElement& element) {
  std::string text(trimmed(element.text));
  return text.empty() && !element.attributes.empty() ? element.attributes.front().second : text;
}

class Providers {
 public:
  ApnFile run(const XmlElement& root) {
    remarkText(root);
    for (const XmlElement& country : root.children) {
      if (country.name == "country") {
        readCountry(country);
      } else {
        remark(country);
      }
    }
    return std::move(file);
  }

 private:
  void remark(const XmlElement& element) {
    file.remarks.push_back({element.line,
                            "a profile has no place for element <" + printable(element.name) + ">",
                            networks});
  }

  void remarkText(const XmlElement& element) {
    if (element.textLine != 0) {
      file.remarks.push_back(
          {element.textLine, "text between the elements has no meaning here", networks});
    }
  }

  void readCountry(const XmlElement& country) {
    remarkText(country);
    for (const XmlElement& element : country.children) {
      if (element.name == "provider") {
        readProvider(element);
      } else if (element.name != "name") {
        remark(element);
      }
    }
    networks.reset();
  }

  void readProvider(const XmlElement& element) {
    provider = nameOf(element);
    networks.emplace();
    for (const XmlElement& part : element.children) {
      if (part.name == "gsm") {
        collectNetworks(part);
      }
    }
    remarkText(element);
    for (const XmlElement& part : element.children) {
      if (part.name == "gsm") {
        readGsm(part);
      } else if (part.name != "name") {
        remark(part);
      }
    }
  }

  void collectNetworks(const XmlElement& gsm) {
    for (const XmlElement& element : gsm.children) {
      if (element.name != "network-id") {
        continue;
      }
      const std::string plmn = plmnOf(valueOf(element, "mcc"), valueOf(element, "mnc"));
      if (plmn.empty()) {
        file.remarks.push_back({element.line, "<network-id> without a proper mcc and mnc"});
      } else if (std::find(networks->begin(), networks->end(), plmn) == networks->end()) {
        networks->push_back(plmn);
      }
    }
  }

  void readGsm(const XmlElement& gsm) {
    remarkText(gsm);
    for (const XmlElement& element : gsm.children) {
      if (element.name == "apn") {
        readApn(element);
      } else if (element.name != "network-id") {
        remark(element);
      }
    }
  }

  void readApn(const XmlElement& apn) {
    remarkText(apn);
    ApnEntry& entry = file.entries.emplace_back();
    entry.line = apn.line;
    entry.networks = *networks;
    entry.provider = provider;
    const std::string name = nameOf(apn);
    entry.attributes = {{"carrier", name.empty() ? provider : name},
                        {"apn", valueOf(apn, "value")}};
    for (const auto& attribute : apn.attributes) {
      if (attribute.first != "value") {
        entry.notes.push_back("attribute " + quoted(attribute.first) + " has no meaning here");
      }
    }
    const XmlElement* usage = apn.child("usage");
    entry.attributes.emplace_back(
        "type", usage == nullptr ? typesOfNoUsage : typesOf(valueOf(*usage, "type"), entry));
    for (const XmlElement& element : apn.children) {
      readSetting(element, entry);
    }
  }

  static void readSetting(const XmlElement& element, ApnEntry& entry) {
    if (element.name == "username") {
      set(entry, "user", textOf(element, entry));
    } else if (element.name == "password") {
      set(entry, "password", textOf(element, entry));
    } else if (element.name == "authentication") {
      const std::string method = valueOf(element, "method");
      if (const Word* known = find(methods, lowerCase(method))) {
        set(entry, "authtype", std::string(known->ours));
      } else {
        entry.notes.push_back("authentication " + quoted(method) + " has no counterpart");
      }
    } else if (element.name != "name" && element.name != "usage") {
      // Android has no attribute with angle brackets in its name, so the mapping notes that the
      // profile has no place for it.
      entry.attributes.emplace_back("<" + element.name + ">", contentOf(element));
    }
  }

  // Blanks around the text of an element are layout.
  static std::string textOf(const XmlElement& element, ApnEntry& entry) {
    const std::string_view text = trimmed(element.text);
    if (text != element.text) {
      entry.notes.push_back("the blanks around <" + element.name + "> are left out");
    }
    return std::string(text);
  }

  static std::string typesOf(const std::string& usage, ApnEntry& entry) {
    if (const Word* known = find(usages, usage)) {
      return std::string(known->ours);
    }
    if (usage.empty() || usage == "wap") {
      entry.notes.push_back("usage " + quoted(usage) + " has no type of its own: taken as default");
      return typesOfNoUsage;
    }
    // The mapping notes that there is no such type, and refuses the entry when it is the only one.
    return usage;
  }

  static void set(ApnEntry& entry, const std::string& name, const std::string& value) {
    if (entry.has(name)) {
      entry.notes.push_back("a second " + name + " is left out");
    } else {
      entry.attributes.emplace_back(name, value);
    }
  }

  // Returns the name that is in no particular language, or else the first name.
  static std::string nameOf(const XmlElement& element) {
    const XmlElement* name = element.child("name");
    for (const XmlElement& candidate : element.children) {
      if (candidate.name == "name" && candidate.attributes.empty()) {
        name = &candidate;
        break;
      }
    }
    return name == nullptr ? std::string() : std::string(trimmed(name->text));
  }

  ApnFile file;
  // The provider that is being read, and its networks.
  std::string provider;
  std::optional<std::vector<std::string>> networks;
};

}  // namespace

ApnFile readProviders(const XmlElement& root) { return Providers().run(root); }

}  // namespace pavoctl
