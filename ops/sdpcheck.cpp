// SPDX-License-Identifier: MIT
#include "ops/sdpcheck.h"

#include "ops/sdprules.h"

#include <algorithm>

namespace ops {

namespace {

using Table = TableView<SdpRule> (*)();
const Table kTables[] = {sdpLineRules,  sdpNetworkRules, sdpVideoRules,
                         sdpAudioRules, sdpClockRules,   sdpPairRules};

void runRule(const SdpRule &rule, const SdpText &text, const std::vector<SdpStream> &streams,
             SdpReport &report)
{
    report.startRule(rule);
    if (rule.text)
        rule.text(text, report);
    if (!rule.stream)
        return;
    for (const SdpStream &stream : streams)
        rule.stream(stream, report);
}

int lineOf(const Finding &finding)
{
    return finding.place.mid(finding.place.lastIndexOf(':') + 1).toInt();
}

Findings checkText(const SdpText &text, const SdpFacts &facts)
{
    Findings findings;
    SdpReport report(findings, facts);
    const std::vector<SdpStream> streams = streamsOf(text);
    for (const Table &table : kTables) {
        for (const SdpRule &rule : table())
            runRule(rule, text, streams, report);
    }
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding &a, const Finding &b) { return lineOf(a) < lineOf(b); });
    return findings;
}

} // namespace

void SdpReport::add(const SdpText &text, int line, const QByteArray &reason, const QByteArray &remedy)
{
    RuleReport::add(text.file + ':' + QByteArray::number(line), reason, remedy);
}

Findings checkSdp(const std::vector<SdpText> &texts, const SdpFacts &facts)
{
    Findings all;
    for (const SdpText &text : texts) {
        const Findings found = checkText(text, facts);
        all.insert(all.end(), found.begin(), found.end());
    }
    SdpReport report(all, facts);
    report.startRule(kSdpTwiceRule);
    findStreamsTwice(texts, report);
    return all;
}

std::vector<const char *> sdpRuleNames()
{
    std::vector<const char *> names = ruleNames(kTables);
    names.push_back(kSdpTwiceRule.name);
    return names;
}

} // namespace ops
