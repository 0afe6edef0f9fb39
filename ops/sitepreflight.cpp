// SPDX-License-Identifier: MIT
#include "ops/sitepreflight.h"

#include "ops/ipv4.h"
#include "ops/preflightrules.h"

#include <algorithm>
#include <map>

namespace ops {

namespace {

// One stream of one server, or one channel.
struct Seen {
    QByteArray place; // "lon-1 2/video tx.dst"
    QByteArray server;
};

struct Site {
    std::multimap<quint64, Seen> senders, receivers; // by group and port
    std::map<quint64, QByteArray> texts;             // of groups and ports
    std::map<quint32, std::vector<Seen>> domains;    // of channels that follow PTP
};

void addServer(const ServerSettings &server, Site &site)
{
    const NetPicture nowhere;
    const PreflightData data = preflightData(server.values, nowhere, Preflight::Used);
    for (const CheckedStream &stream : data.streams) {
        if (!stream.runs() || !isMulticast(*stream.destination))
            continue;
        auto &streams = stream.side == Side::Send ? site.senders : site.receivers;
        streams.emplace(stream.target(), Seen{server.server + ' ' + stream.name("dst"), server.server});
        site.texts[stream.target()] = stream.targetText();
    }
    for (const CheckedChannel &channel : data.channels) {
        if (channel.clock == ClockSource::SoftwarePtp || channel.clock == ClockSource::HardwarePtp)
            site.domains[channel.domain].push_back(
                {server.server + ' ' + channel.name("domain"), server.server});
    }
}

// Twice on one server is that server's own preflight's.
void sentTwice(const Site &site, Findings &findings)
{
    const std::pair<const quint64, Seen> *first = nullptr;
    for (const auto &sender : site.senders) {
        if (!first || first->first != sender.first)
            first = &sender;
        else if (first->second.server != sender.second.server)
            findings.push_back(
                {Severity::Error, "group-sent-twice", sender.second.place,
                 site.texts.at(sender.first) + " is sent by " + first->second.place + " as well",
                 "give one of them another group", ""});
    }
}

void nobodySends(const Site &site, Findings &findings)
{
    for (const auto &receiver : site.receivers) {
        if (site.senders.count(receiver.first) == 0)
            findings.push_back({Severity::Note, "group-nobody-sends", receiver.second.place,
                                "no server sends " + site.texts.at(receiver.first),
                                "right when other equipment does", ""});
    }
}

// Against the domain that most channels are in.
void domainsDiffer(const Site &site, Findings &findings)
{
    const auto fewer = [](const auto &left, const auto &right) {
        return left.second.size() < right.second.size();
    };
    const auto usual = std::max_element(site.domains.begin(), site.domains.end(), fewer);
    for (const auto &domain : site.domains) {
        for (const Seen &channel : domain.first == usual->first ? std::vector<Seen>() : domain.second)
            findings.push_back({Severity::Warning, "ptp-domains-differ", channel.place,
                                "PTP domain " + QByteArray::number(domain.first) + ", most channels are in " +
                                    QByteArray::number(usual->first),
                                "streams of two clocks cannot be mixed", ""});
    }
}

} // namespace

Findings runSitePreflight(const std::vector<ServerSettings> &servers)
{
    Site site;
    for (const ServerSettings &server : servers)
        addServer(server, site);
    Findings findings;
    sentTwice(site, findings);
    nobodySends(site, findings);
    domainsDiffer(site, findings);
    return findings;
}

} // namespace ops
