// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The report on a policy, or on its simulation, in JSON and in text.
#pragma once

#include "CommandLine.h"
#include "policies/PolicyRecorder.h"
#include "policies/StepText.h"

namespace pavoctl {

class PolicyReport {
 public:
  // The report refers to its arguments, so all three have to outlive it.
  PolicyReport(const CommandLine& commandLine, const PolicyCall& policyCall,
               const PolicyOutcome& told);

  Json json() const;
  std::string text() const;
  // Returns one line on the edits that the modem refused, or "" when it refused none.
  std::string refusals() const;

 private:
  std::string headingText() const;
  std::string resultText() const;
  std::string fateText() const;
  std::string answerText() const;
  std::string editsText() const;

  const CommandLine& line;
  const PolicyCall& call;
  const PolicyOutcome& outcome;
  const Telling telling;
  Json profile;  // the result's profile; null when there is none
  Json edits = Json::array();
};

}  // namespace pavoctl
