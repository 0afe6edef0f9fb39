// SPDX-License-Identifier: MIT
#include "corvelctl/findingsout.h"

namespace {

Json findingItem(const ops::Finding &finding)
{
    Json item;
    item["severity"] = ops::severityName(finding.severity);
    item["rule"] = finding.rule;
    item["place"] = ops::jsonText(finding.place);
    item["reason"] = ops::jsonText(finding.reason);
    item["remedy"] = ops::jsonText(finding.remedy);
    item["clause"] = finding.clause;
    return item;
}

} // namespace

int showFindings(Context &context, const ops::Findings &findings)
{
    for (const ops::Finding &finding : findings) {
        context.out.item([&] { return findingItem(finding); });
        context.out.line(ops::findingsText({finding}).chopped(1));
    }
    return ops::hasTrouble(findings) ? Found : Done;
}

int showJunit(Context &context, const ops::Findings &findings, const char *suite,
              const std::vector<const char *> &rules)
{
    const int code = context.writeFile("-", ops::findingsJunit(findings, suite, rules));
    return code == Done && ops::hasTrouble(findings) ? Found : code;
}
