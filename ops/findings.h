// SPDX-License-Identifier: MIT
//
// What a check found, one finding per trouble, and the forms in which they are handed out: lines for people
// and JUnit for build machines. Pure; any thread.
#ifndef CORVEL_OPS_FINDINGS_H
#define CORVEL_OPS_FINDINGS_H

#include <QByteArray>

#include <vector>

namespace ops {

// Error: does not work. Warning: works by luck, or not with everybody. Note: worth knowing, nothing to mend.
enum class Severity { Error, Warning, Note };

struct Finding {
    Severity severity;
    const char *rule;   // short name, stable, for scripts
    QByteArray place;   // "studio.sdp:9", "2/video/rx"
    QByteArray reason;  // one line, UTF-8, without a full stop
    QByteArray remedy;  // what to do, likewise; may be empty
    const char *clause; // the standard and its clause; empty where good practice is the reason
};

using Findings = std::vector<Finding>;

const char *severityName(Severity severity); // "error", "warning", "note"

// True when there is more than notes: what the exit code of a check says.
bool hasTrouble(const Findings &findings);

// "PLACE: error: REASON [RULE, CLAUSE]" and the remedy below it, each printable; empty for no findings.
QByteArray findingsText(const Findings &findings);

// One test case per rule that was looked at, failed when it found more than notes.
QByteArray findingsJunit(const Findings &findings, const char *suite, const std::vector<const char *> &rules);

} // namespace ops

#endif
