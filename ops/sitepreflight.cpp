// SPDX-License-Identifier: MIT
#include "ops/sitepreflight.h"

#include "channel/clockstate.h"
#include "ops/ipv4.h"
#include "ops/preflightrules.h"

#include <algorithm>
#include <bitset>
#include <map>
#include <set>

namespace ops {

namespace {

constexpr quint32 kUsualMask = 0xffffff00;

// One stream of one server, or one channel.
struct Seen {
    QByteArray place; // "lon-1 2/video tx.dst"
    QByteArray server;
    QByteArray network; // "10.1.0.0/24"; empty: any, since nobody has chosen an interface
};

using Streams = std::multimap<quint64, Seen>; // by group and port

struct Site {
    std::vector<NetRoute> networks;
    Streams senders, receivers;
    std::map<quint64, QByteArray> texts;          // of groups and ports
    std::map<quint32, std::vector<Seen>> domains; // of channels that follow PTP
};

QByteArray networkText(const NetRoute &network)
{
    const auto length = static_cast<int>(std::bitset<32>(network.mask).count());
    return ipv4Text(network.network) + '/' + QByteArray::number(length);
}

QByteArray networkOf(const Site &site, std::optional<quint32> interface)
{
    if (!interface || *interface == 0)
        return QByteArray();
    std::optional<NetRoute> smallest;
    for (const NetRoute &one : site.networks) {
        if ((*interface & one.mask) == one.network && (!smallest || one.mask > smallest->mask))
            smallest = one;
    }
    return networkText(smallest.value_or(NetRoute{*interface & kUsualMask, kUsualMask}));
}

bool mayMeet(const Seen &left, const Seen &right)
{
    return left.network.isEmpty() || right.network.isEmpty() || left.network == right.network;
}

bool followsPtp(const CheckedChannel &channel)
{
    return channel.clock == ClockSource::SoftwarePtp || channel.clock == ClockSource::HardwarePtp;
}

void addServer(const ServerSettings &server, Site &site)
{
    const NetPicture nowhere;
    const PreflightData data = preflightData(server.values, nowhere, Preflight::Used);
    for (const CheckedStream &stream : data.streams) {
        if (!stream.runs() || !isMulticast(*stream.destination))
            continue;
        Streams &streams = stream.side == Side::Send ? site.senders : site.receivers;
        streams.emplace(stream.target(), Seen{server.server + ' ' + stream.name("dst"), server.server,
                                              networkOf(site, stream.interface)});
        site.texts[stream.target()] = stream.targetText();
    }
    for (const CheckedChannel &channel : data.channels) {
        const Place video{channel.number, Element::Video, kNoFlow, {}};
        const auto interface = parseIpv4(legOf(server.values, video, Side::Receive).interface);
        if (followsPtp(channel))
            site.domains[channel.domain].push_back(
                {server.server + ' ' + channel.name("domain"), server.server, networkOf(site, interface)});
    }
}

Finding twice(const Site &site, quint64 group, const Seen &first, const Seen &second)
{
    const QByteArray text = site.texts.at(group) + " is sent by " + first.place + " as well";
    if (mayMeet(first, second))
        return {
            Severity::Error, "group-sent-twice", second.place, text, "give one of them another group", ""};
    return {Severity::Warning,
            "group-sent-in-two-networks",
            second.place,
            text + ", in " + first.network + "; here it is " + second.network,
            "right when nothing is routed between the two networks",
            ""};
}

// Twice on one server is that server's own preflight's. Of those that were there before, one in the same
// network is told first.
void sentTwice(const Site &site, Findings &findings)
{
    for (auto sender = site.senders.begin(); sender != site.senders.end(); ++sender) {
        const Seen *before = nullptr;
        for (auto other = site.senders.lower_bound(sender->first); other != sender; ++other) {
            const bool better =
                !before || (!mayMeet(*before, sender->second) && mayMeet(other->second, sender->second));
            if (other->second.server != sender->second.server && better)
                before = &other->second;
        }
        if (before)
            findings.push_back(twice(site, sender->first, *before, sender->second));
    }
}

void nobodySends(const Site &site, Findings &findings)
{
    for (const auto &[group, receiver] : site.receivers) {
        const auto [first, last] = site.senders.equal_range(group);
        const bool sent = std::any_of(first, last, [&receiver = receiver](const auto &sender) {
            return mayMeet(sender.second, receiver);
        });
        if (first == last)
            findings.push_back({Severity::Note, "group-nobody-sends", receiver.place,
                                "no server sends " + site.texts.at(group), "right when other equipment does",
                                ""});
        else if (!sent)
            findings.push_back({Severity::Note, "group-sent-elsewhere", receiver.place,
                                site.texts.at(group) + " is sent by " + first->second.place + " in " +
                                    first->second.network + " and received in " + receiver.network,
                                "right when it is routed", ""});
    }
}

// The networks all of whose channels are in this domain. One server alone is no network that agrees.
std::set<QByteArray> networksOfOwn(const Site &site, quint32 domain)
{
    std::map<QByteArray, std::set<QByteArray>> servers;
    std::set<QByteArray> own;
    for (const Seen &channel : site.domains.at(domain)) {
        if (!channel.network.isEmpty() && servers[channel.network].insert(channel.server).second &&
            servers[channel.network].size() > 1)
            own.insert(channel.network);
    }
    for (const auto &other : site.domains) {
        for (const Seen &channel : other.first == domain ? std::vector<Seen>() : other.second)
            own.erase(channel.network);
    }
    return own;
}

// Against the domain that most channels are in.
void domainsDiffer(const Site &site, Findings &findings)
{
    const auto fewer = [](const auto &left, const auto &right) {
        return left.second.size() < right.second.size();
    };
    const auto usual = std::max_element(site.domains.begin(), site.domains.end(), fewer);
    for (const auto &[domain, channels] : site.domains) {
        if (domain == usual->first)
            continue;
        const std::set<QByteArray> own = networksOfOwn(site, domain);
        const QByteArray text = "PTP domain " + QByteArray::number(domain) + ", most channels are in " +
                                QByteArray::number(usual->first);
        for (const Seen &channel : channels) {
            const bool alone = own.count(channel.network) > 0;
            findings.push_back({alone ? Severity::Note : Severity::Warning, "ptp-domains-differ",
                                channel.place, alone ? text + "; so is all of " + channel.network : text,
                                "streams of two clocks cannot be mixed", ""});
        }
    }
}

// Words of a machine that looked, and found something else than it is set up for.
bool isTrouble(const QByteArray &state)
{
    const ClockState troubles[] = {ClockState::OtherMaster, ClockState::NoMaster,   ClockState::Stale,
                                   ClockState::NoInterface, ClockState::NotAllowed, ClockState::Failed};
    return std::any_of(std::begin(troubles), std::end(troubles),
                       [&](ClockState trouble) { return state == clockStateWord(trouble); });
}

using Servers = std::vector<const ServerSettings *>;

// What they see now, not what they are set up for.
void clocksSeen(const Servers &servers, Findings &findings)
{
    std::map<quint32, const ServerSettings *> first; // of each domain
    for (const ServerSettings *server : servers) {
        if (isTrouble(server->ptpState))
            findings.push_back({Severity::Warning, "ptp-trouble", server->server,
                                "its PTP client says: " + server->ptpState,
                                "corvelctl ptp doctor on that server tells more", ""});
        if (server->ptpState != clockStateWord(ClockState::Locked) || server->grandmaster.isEmpty())
            continue;
        const ServerSettings *other = first.emplace(server->ptpDomain, server).first->second;
        if (other->grandmaster != server->grandmaster)
            findings.push_back({Severity::Warning, "ptp-masters-differ", server->server,
                                "follows " + server->grandmaster + ", and " + other->server + " follows " +
                                    other->grandmaster + ", both in domain " +
                                    QByteArray::number(server->ptpDomain),
                                "see why the one does not hear the other's master", ""});
    }
}

void checkSite(const Servers &servers, Findings &findings)
{
    Site site;
    for (const ServerSettings *server : servers)
        site.networks.insert(site.networks.end(), server->networks.begin(), server->networks.end());
    for (const ServerSettings *server : servers)
        addServer(*server, site);
    sentTwice(site, findings);
    nobodySends(site, findings);
    domainsDiffer(site, findings);
    clocksSeen(servers, findings);
}

} // namespace

Findings runSitePreflight(const std::vector<ServerSettings> &servers)
{
    std::map<QByteArray, Servers> sites;
    for (const ServerSettings &server : servers)
        sites[server.site].push_back(&server);
    Findings findings;
    for (const auto &site : sites)
        checkSite(site.second, findings);
    return findings;
}

} // namespace ops
