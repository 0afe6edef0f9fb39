// SPDX-License-Identifier: MIT
//
// What the tables of rules have in common: where a rule puts what it found, and the names of all of them.
// Private to ops/.
#ifndef CORVEL_OPS_RULEREPORT_H
#define CORVEL_OPS_RULEREPORT_H

#include "ops/findings.h"

namespace ops {

// Adds the rule's name, severity and clause to what the rule says.
class RuleReport {
public:
    explicit RuleReport(Findings &findings) : m_findings(findings) {}

    template<class Rule>
    void startRule(const Rule &rule)
    {
        m_severity = rule.severity;
        m_rule = rule.name;
        m_clause = rule.clause;
    }

    void add(const QByteArray &place, const QByteArray &reason, const QByteArray &remedy)
    {
        m_findings.push_back({m_severity, m_rule, place, reason, remedy, m_clause});
    }

private:
    Findings &m_findings;
    Severity m_severity = Severity::Error;
    const char *m_rule = "";
    const char *m_clause = "";
};

// In the order of the tables.
template<class Table, std::size_t N>
std::vector<const char *> ruleNames(Table (*const (&tables)[N])())
{
    std::vector<const char *> names;
    for (const auto &table : tables) {
        for (const auto &rule : table())
            names.push_back(rule.name);
    }
    return names;
}

} // namespace ops

#endif
