// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "shell/Words.h"

#include "Errors.h"

#include <utility>

namespace pavoctl {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

class Splitter {
 public:
  void read(std::string_view line) {
    for (std::size_t i = 0; i < line.size(); ++i) {
      const char c = line[i];
      if (quote != '\'' && c == '\\' && i + 1 < line.size()) {
        append(line[++i]);
      } else if (quote != '\0') {
        inQuotes(c);
      } else if (isBlank(c)) {
        finishWord();
      } else if (c == '#' && !isInWord) {
        return;
      } else if (c == '\'' || c == '"') {
        quote = c;
        // An empty pair of quotes is a word too.
        isInWord = true;
      } else {
        append(c);
      }
    }
  }

  void finishWord() {
    if (isInWord) {
      words.push_back(std::exchange(word, ""));
      isInWord = false;
    }
  }

  std::vector<std::string> words;
  std::string word;
  char quote = '\0';

 private:
  void inQuotes(char c) {
    if (c == quote) {
      quote = '\0';
    } else {
      append(c);
    }
  }

  void append(char c) {
    isInWord = true;
    word += c;
  }

  bool isInWord = false;
};

}  // namespace

std::vector<std::string> wordsOf(std::string_view line) {
  Splitter splitter;
  splitter.read(line);
  if (splitter.quote != '\0') {
    throw UsageError(std::string("a ") + splitter.quote + " without its end");
  }
  splitter.finishWord();
  return std::move(splitter.words);
}

std::vector<std::string> wordsSoFar(std::string_view line) {
  Splitter splitter;
  splitter.read(line);
  splitter.words.push_back(splitter.word);
  return std::move(splitter.words);
}

}  // namespace pavoctl
