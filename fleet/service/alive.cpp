// SPDX-License-Identifier: MIT
#include "fleet/service/alive.h"

#include "fleet/documentjson.h"
#include "ops/ipv4.h"

#include <bitset>

#include <nlohmann/json.hpp>

namespace fleet {

namespace {

constexpr int kFormat = 1;
constexpr std::size_t kMaxBytes = 64 * 1024;
constexpr int kMaxDepth = 4;

QByteArray networkText(const ops::NetRoute &network)
{
    const int length = static_cast<int>(std::bitset<32>(network.mask).count());
    return ops::ipv4Text(network.network) + '/' + QByteArray::number(length);
}

std::optional<ops::NetRoute> networkOf(const QByteArray &text)
{
    const int slash = text.indexOf('/');
    const auto address = ops::parseIpv4(text.left(slash));
    bool number = false;
    const uint length = text.mid(slash + 1).toUInt(&number);
    if (slash < 0 || !address || !number || length > 32)
        return std::nullopt;
    const quint32 mask = length == 0 ? 0 : ~0U << (32 - length);
    return ops::NetRoute{*address & mask, mask};
}

ops::Json ptpJson(const PtpSeen &ptp)
{
    return {{"state", ops::jsonText(ptp.state)},
            {"domain", ptp.domain},
            {"grandmaster", ops::jsonText(ptp.grandmaster)}};
}

ops::Json interfaceJson(const AliveInterface &interface)
{
    ops::Json addresses = ops::Json::array();
    for (const quint32 address : interface.addresses)
        addresses.push_back(ops::ipv4Text(address).toStdString());
    ops::Json networks = ops::Json::array();
    for (const ops::NetRoute &network : interface.networks)
        networks.push_back(networkText(network).toStdString());
    return {{"name", ops::jsonText(interface.name)}, {"addresses", addresses}, {"networks", networks}};
}

// The entries of a list of texts that read(text) takes.
template<class Value, class Read>
std::vector<Value> listOf(const ops::Json &json, const char *name, const Read &read)
{
    std::vector<Value> values;
    const ops::Json *list = memberOf(json, name);
    for (const ops::Json &text : list && list->is_array() ? *list : ops::Json::array()) {
        const auto value = read(ops::textOfJson(text).value_or(QByteArray()));
        if (value)
            values.push_back(*value);
    }
    return values;
}

AliveInterface interfaceOf(const ops::Json &json)
{
    return {textMember(json, "name"), listOf<quint32>(json, "addresses", ops::parseIpv4),
            listOf<ops::NetRoute>(json, "networks", networkOf)};
}

template<class Number>
Number number(const ops::Json &json, const char *name)
{
    const auto found = json.find(name);
    return found != json.end() && found->is_number_integer() ? found->get<Number>() : Number();
}

// What is to be shown on a terminal: a short plain text, or nothing.
QByteArray wordMember(const ops::Json &json, const char *name)
{
    const QByteArray word = textMember(json, name);
    return plainText(word, kMaxWordBytes) ? word : QByteArray();
}

std::optional<PtpSeen> ptpOf(const ops::Json &json)
{
    const ops::Json *ptp = memberOf(json, "ptp");
    if (!ptp || wordMember(*ptp, "state").isEmpty())
        return std::nullopt;
    return PtpSeen{wordMember(*ptp, "state"), number<quint32>(*ptp, "domain"),
                   wordMember(*ptp, "grandmaster")};
}

} // namespace

std::string aliveText(const Alive &alive)
{
    ops::Json json = {{"format", kFormat},
                      {"version", ops::jsonText(alive.version)},
                      {"configuration", ops::jsonText(alive.configuration)},
                      {"started", timeText(alive.startedMs).toStdString()},
                      {"inStep", alive.inStep},
                      {"revision", alive.revision},
                      {"waiting", alive.waiting},
                      {"refused", alive.refused},
                      {"interfaces", ops::Json::array()}};
    if (alive.ptp)
        json["ptp"] = ptpJson(*alive.ptp);
    for (const AliveInterface &interface : alive.interfaces)
        json["interfaces"].push_back(interfaceJson(interface));
    return json.dump();
}

std::optional<Alive> readAlive(std::string_view text)
{
    ops::Json json;
    if (!parseForeign(text, kMaxBytes, kMaxDepth, &json).isEmpty() || !json.is_object())
        return std::nullopt;
    Alive alive;
    alive.version = wordMember(json, "version");
    alive.configuration = wordMember(json, "configuration");
    alive.startedMs = timeOfText(textMember(json, "started"));
    const auto inStep = json.find("inStep");
    alive.inStep = inStep != json.end() && inStep->is_boolean() && inStep->get<bool>();
    alive.revision = number<std::int64_t>(json, "revision");
    alive.waiting = number<int>(json, "waiting");
    alive.refused = number<int>(json, "refused");
    alive.ptp = ptpOf(json);
    const auto interfaces = json.find("interfaces");
    for (const ops::Json &one :
         interfaces != json.end() && interfaces->is_array() ? *interfaces : ops::Json::array()) {
        if (one.is_object())
            alive.interfaces.push_back(interfaceOf(one));
    }
    return alive;
}

std::vector<AliveInterface> aliveInterfaces(const ops::NetPicture &machine)
{
    std::vector<AliveInterface> interfaces;
    for (const ops::NetInterface &one : machine.interfaces) {
        if (!one.loopback && !one.addresses.empty())
            interfaces.push_back({one.name, one.addresses, one.networks});
    }
    return interfaces;
}

} // namespace fleet
