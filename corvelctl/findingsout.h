// SPDX-License-Identifier: MIT
//
// The findings of a check as a command hands them out.
#ifndef CORVELCTL_FINDINGSOUT_H
#define CORVELCTL_FINDINGSOUT_H

#include "corvelctl/context.h"
#include "ops/findings.h"

// As text, JSON or, when wanted, JUnit. Returns Found when there is more than notes.
int showFindings(Context &context, const ops::Findings &findings);
int showJunit(Context &context, const ops::Findings &findings, const char *suite,
              const std::vector<const char *> &rules);

#endif
