// SPDX-License-Identifier: MIT
#include "fleet/service/alive.h"

#include "fleet/documentjson.h"
#include "ops/ipv4.h"

namespace fleet {

namespace {

constexpr int kFormat = 1;
constexpr std::size_t kMaxBytes = 64 * 1024;
constexpr int kMaxDepth = 4;

ops::Json interfaceJson(const AliveInterface &interface)
{
    ops::Json addresses = ops::Json::array();
    for (const quint32 address : interface.addresses)
        addresses.push_back(ops::ipv4Text(address).toStdString());
    return {{"name", ops::jsonText(interface.name)}, {"addresses", addresses}};
}

AliveInterface interfaceOf(const ops::Json &json)
{
    AliveInterface interface;
    interface.name = textMember(json, "name");
    const auto addresses = json.find("addresses");
    for (const ops::Json &text :
         addresses != json.end() && addresses->is_array() ? *addresses : ops::Json::array()) {
        const auto address = ops::parseIpv4(ops::textOfJson(text).value_or(QByteArray()));
        if (address)
            interface.addresses.push_back(*address);
    }
    return interface;
}

template<class Number>
Number number(const ops::Json &json, const char *name)
{
    const auto found = json.find(name);
    return found != json.end() && found->is_number_integer() ? found->get<Number>() : Number();
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
    alive.version = textMember(json, "version");
    alive.configuration = textMember(json, "configuration");
    alive.startedMs = timeOfText(textMember(json, "started"));
    const auto inStep = json.find("inStep");
    alive.inStep = inStep != json.end() && inStep->is_boolean() && inStep->get<bool>();
    alive.revision = number<std::int64_t>(json, "revision");
    alive.waiting = number<int>(json, "waiting");
    alive.refused = number<int>(json, "refused");
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
            interfaces.push_back({one.name, one.addresses});
    }
    return interfaces;
}

} // namespace fleet
