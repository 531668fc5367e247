// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "shell/Completion.h"

#include <algorithm>

namespace pavoctl {
namespace {

using Options = std::vector<OptionDescription>;

const OptionDescription* findOption(const Options& options, const std::string& name) {
  const auto found = std::find_if(options.begin(), options.end(), [&](const auto& option) {
    return std::find(option.names.begin(), option.names.end(), name) != option.names.end();
  });
  return found == options.end() ? nullptr : &*found;
}

class Finder {
 public:
  Finder(const Description& whatThereIs, const std::vector<std::string>& line)
      : description(whatThereIs), words(line) {}

  std::vector<std::string> find() {
    const OptionDescription* open = readWords();
    if (open != nullptr) {
      offer(open->values);
    } else if (words.back().rfind('-', 0) == 0) {
      offerNames(description.options);
      if (command != nullptr) {
        offerNames(command->options);
      }
    } else if (command == nullptr) {
      for (const auto& known : description.commands) {
        offer({known.name});
      }
    }
    return found;
  }

 private:
  // Reads all words but the last. Returns the option that waits for its value, or null.
  const OptionDescription* readWords() {
    const OptionDescription* open = nullptr;
    for (auto word = words.begin(); word + 1 != words.end(); ++word) {
      if (open != nullptr) {
        open = nullptr;
      } else if (const auto* option = optionOf(*word)) {
        open = option->kind.empty() ? nullptr : option;
      } else if (command == nullptr) {
        const auto known =
            std::find_if(description.commands.begin(), description.commands.end(),
                         [&](const CommandDescription& each) { return each.name == *word; });
        command = known == description.commands.end() ? nullptr : &*known;
      }
    }
    return open;
  }

  const OptionDescription* optionOf(const std::string& word) const {
    const auto* option = findOption(description.options, word);
    return option == nullptr && command != nullptr ? findOption(command->options, word) : option;
  }

  void offerNames(const Options& options) {
    for (const auto& option : options) {
      offer(option.names);
    }
  }

  void offer(const std::vector<std::string>& candidates) {
    for (const auto& candidate : candidates) {
      const bool isLonger = candidate.compare(0, words.back().size(), words.back()) == 0;
      if (isLonger && std::find(found.begin(), found.end(), candidate) == found.end()) {
        found.push_back(candidate);
      }
    }
  }

  const Description& description;
  const std::vector<std::string>& words;
  const CommandDescription* command = nullptr;
  std::vector<std::string> found;
};

}  // namespace

std::vector<std::string> completions(const Description& description,
                                     const std::vector<std::string>& words) {
  return Finder(description, words).find();
}

std::string commonBeginning(const std::vector<std::string>& words) {
  std::string common = words.empty() ? "" : words.front();
  for (const auto& word : words) {
    const auto [end, other] = std::mismatch(common.begin(), common.end(), word.begin(), word.end());
    common.erase(end, common.end());
  }
  return common;
}

}  // namespace pavoctl
