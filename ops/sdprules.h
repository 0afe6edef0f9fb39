// SPDX-License-Identifier: MIT
//
// The rows that sdpcheck walks. Private to ops/: one table per subject, each in a file of its own.
#ifndef CORVEL_OPS_SDPRULES_H
#define CORVEL_OPS_SDPRULES_H

#include "channel/channelkeys.h"
#include "ops/rulereport.h"
#include "ops/sdpcheck.h"
#include "ops/sdpstream.h"

namespace ops {

class SdpReport : public RuleReport {
public:
    SdpReport(Findings &findings, const SdpFacts &facts) : RuleReport(findings), m_facts(facts) {}

    const SdpFacts &facts() const { return m_facts; }
    // At a line of a text.
    void add(const SdpText &text, int line, const QByteArray &reason, const QByteArray &remedy);

private:
    const SdpFacts &m_facts;
};

// A rule looks at a whole text, or at each of its streams.
struct SdpRule {
    const char *name;
    Severity severity;
    const char *clause; // only where its number is certain
    void (*text)(const SdpText &, SdpReport &);
    void (*stream)(const SdpStream &, SdpReport &);
};

TableView<SdpRule> sdpLineRules();    // the form of the text
TableView<SdpRule> sdpNetworkRules(); // ports, addresses, filters
TableView<SdpRule> sdpVideoRules();
TableView<SdpRule> sdpAudioRules(); // audio and ancillary data
TableView<SdpRule> sdpClockRules();
TableView<SdpRule> sdpPairRules(); // two legs of one stream

// The one rule that needs all texts: a group and port in more than one of them.
extern const SdpRule kSdpTwiceRule;
void findStreamsTwice(const std::vector<SdpText> &texts, SdpReport &report);

// "a=ts-refclk:ptp=IEEE1588-2008:AC-DE-48-FF-FE-23-45-67:127", as its parts. Used by check and fix.
struct SdpClock {
    QByteArray kind;     // "ptp", "localmac", …
    QByteArray version;  // of ptp: "IEEE1588-2008"
    QByteArray identity; // of ptp the grandmaster or "traceable"; of localmac the address
    QByteArray domain;
    bool hasDomain;
};
SdpClock parseClock(const QByteArray &value);
// Pairs of hexadecimal digits joined by "-": 6 of an Ethernet address, 8 of a clock.
bool isHexPairs(const QByteArray &text, int pairs);

// How long one packet of audio lasts, in milliseconds, and the values that AES67 names.
struct PacketTime {
    const char *text;
    double milliseconds;
};
TableView<PacketTime> packetTimes();
// The row of a packet time that was written in microseconds (125), or null.
const PacketTime *packetTimeInMicroseconds(const QByteArray &value);

// The frame rate of an interlaced signal whose field rate stands there (50 gives 25), or nothing.
std::optional<Rate> frameRateOfFields(const Rate &rate);

} // namespace ops

#endif
