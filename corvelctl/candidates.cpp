// SPDX-License-Identifier: MIT
#include "corvelctl/candidates.h"

#include "channel/channelstore.h"
#include "channel/valuenames.h"
#include "ops/assignment.h"
#include "ops/ipv4.h"

#include <algorithm>
#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>

namespace {

constexpr char kFullHd[] = "1920x";

} // namespace

QByteArrayList interfaceAddresses()
{
    QByteArrayList addresses;
    ifaddrs *all = nullptr;
    if (getifaddrs(&all) != 0)
        return addresses;
    for (const ifaddrs *one = all; one; one = one->ifa_next) {
        if (!one->ifa_addr || one->ifa_addr->sa_family != AF_INET)
            continue;
        const auto *address = reinterpret_cast<const sockaddr_in *>(one->ifa_addr);
        addresses.append(ops::ipv4Text(ntohl(address->sin_addr.s_addr)));
    }
    freeifaddrs(all);
    return addresses;
}

QByteArrayList channelNumbers(const Context &context)
{
    const auto store = context.open();
    const auto values = store ? store->read(StorePath::Config) : ops::Outcome<ops::Snapshot>(store.failure());
    const int channels = values ? ops::channelCount(*values) : 0;
    QByteArrayList numbers;
    for (int channel = 0; channel < channels; ++channel)
        numbers.append(QByteArray::number(channel));
    return numbers;
}

// The rows are in the order of their paths, so equal ones follow each other.
QByteArrayList paths(const Context &context)
{
    const auto store = context.open();
    const auto values = store ? store->read() : ops::Outcome<ops::Snapshot>(store.failure());
    QByteArrayList found;
    for (const ops::Row &row : values ? values->rows() : std::vector<ops::Row>()) {
        if (found.isEmpty() || found.last() != row.path)
            found.append(row.path);
    }
    return found;
}

QByteArrayList places(const Context &context, const QByteArray &current)
{
    QByteArrayList found;
    if (!current.isEmpty() && !QByteArray("0123456789*").contains(current[0]))
        return paths(context) << "server";
    const int slash = current.indexOf('/');
    if (slash < 0) {
        found = channelNumbers(context);
        return found << "server";
    }
    const QByteArray channel = current.left(slash + 1);
    found << channel + "video" << channel + "audio" << channel + "anc";
    for (int flow = 0; flow < kFlowCount && current.startsWith(channel + "audio/"); ++flow)
        found << channel + "audio/" + QByteArray::number(flow);
    return found;
}

QByteArrayList wordsAndNames(const ops::Place &place, const QByteArray &current)
{
    const QByteArrayList names = current.isEmpty() ? QByteArrayList() : ops::valueNamesAt(place);
    return ops::wordsAt(place) + names;
}

QByteArrayList placesAndWords(const Context &context, const QByteArray &current)
{
    QByteArrayList found = places(context, current);
    const QByteArray before = current.left(current.lastIndexOf('/') + 1);
    const auto place = ops::parsePlace(before.chopped(before.isEmpty() ? 0 : 1));
    if (!place)
        return found;
    for (const QByteArray &word : wordsAndNames(*place, current.mid(before.size())))
        found.append(before + word);
    return found;
}

QByteArrayList fieldWords(const QByteArray &current, bool steps)
{
    const QByteArray before = current.left(current.lastIndexOf(',') + 1);
    QByteArrayList found = steps ? QByteArrayList() : QByteArrayList{"rx", "tx", "video", "audio", "anc"};
    for (const QByteArray &word : ops::wordsAt({0, Element::Video, ops::kNoFlow, {}})) {
        const bool stepped = word.endsWith("src") || word.endsWith("dst") || word.endsWith("port");
        if (stepped || !steps)
            found << word.mid(3) << word;
    }
    for (QByteArray &word : found)
        word = steps ? word + '=' : before + word;
    return found;
}

QByteArrayList valuesOf(const ops::Place &place, const QByteArray &current)
{
    const int equals = current.indexOf('=');
    const ops::KnownName *known = ops::knownByWord(place, current.left(equals));
    if (!known)
        return {};
    const int comma = known->kind == ops::Kind::Use ? current.lastIndexOf(',') : -1;
    const QByteArray before = current.left(std::max(equals, comma) + 1);
    QByteArrayList found;
    for (const QByteArray &word :
         known->kind == ops::Kind::Interface ? interfaceAddresses() : ops::wordsOf(known->kind)) {
        found.append(before + word);
        if (known->kind == ops::Kind::Format && word.startsWith(kFullHd) && current.size() > before.size())
            found.append(before + word.mid(qstrlen(kFullHd))); // "1080p50", for those who begin like this
    }
    return found;
}
