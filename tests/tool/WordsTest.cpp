// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "CommandLine.h"
#include "Errors.h"
#include "shell/Completion.h"
#include "shell/Words.h"

#include <gmock/gmock.h>

namespace pavoctl {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

TEST(Words, Line_QuotesAndBackslashes_AsInAUnixShell) {
  EXPECT_THAT(wordsOf(""), IsEmpty());
  EXPECT_THAT(wordsOf("  \t # all a comment"), IsEmpty());
  EXPECT_THAT(wordsOf(" list  --json# x "), ElementsAre("list", "--json#", "x"));
  EXPECT_THAT(wordsOf("a 'b  c' \"d e\"f g\\ h"), ElementsAre("a", "b  c", "d ef", "g h"));
  EXPECT_THAT(wordsOf("'a\\b' \"q\\\"\" '' \"\""), ElementsAre("a\\b", "q\"", "", ""));
  EXPECT_THAT(wordsOf("a \\"), ElementsAre("a", "\\"));
  EXPECT_THROW(wordsOf("a 'b"), UsageError);
  EXPECT_THROW(wordsOf("\""), UsageError);
}

TEST(Words, SoFar_LastWord_IsTheOneBeingTyped) {
  EXPECT_THAT(wordsSoFar(""), ElementsAre(""));
  EXPECT_THAT(wordsSoFar("list"), ElementsAre("list"));
  EXPECT_THAT(wordsSoFar("list "), ElementsAre("list", ""));
  EXPECT_THAT(wordsSoFar("list 'a b"), ElementsAre("list", "a b"));
}

TEST(Completion, ShellsLine_CommandsOptionsAndValues) {
  const Description shell = CommandLine::describe().shell;
  const auto complete = [&](const std::string& line) {
    return completions(shell, wordsSoFar(line));
  };
  EXPECT_THAT(complete("rel"), ElementsAre("release"));
  EXPECT_THAT(complete("--json re"), ElementsAre("refresh", "release"));
  EXPECT_THAT(complete("modify 3 --roam"), ElementsAre("--roam-ip"));
  EXPECT_THAT(complete("list --roam"),
              ElementsAre("--roam-ip", "--roam-ip-subset", "--roam-ip-superset"));
  EXPECT_THAT(complete("add --auth P"), ElementsAre("PAP", "PAP_CHAP"));
  EXPECT_THAT(complete("add --apn --auth P"), IsEmpty());
  EXPECT_THAT(complete("list --pavo "), ElementsAre("yes", "no"));
  EXPECT_THAT(complete("--timeout 3 lis"), UnorderedElementsAre("list", "listen"));
  EXPECT_THAT(complete("shel"), IsEmpty());
  EXPECT_EQ(commonBeginning({"list", "listen"}), "list");
  EXPECT_EQ(commonBeginning({}), "");
}

}  // namespace
}  // namespace pavoctl
