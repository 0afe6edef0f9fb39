// SPDX-License-Identifier: MIT
#include "ops/ipv4.h"

#include <arpa/inet.h>

namespace ops {

namespace {

constexpr quint32 kMulticast = 0xe0000000; // 224.0.0.0
constexpr quint32 kReserved = 0xf0000000;  // 240.0.0.0

} // namespace

std::optional<quint32> parseIpv4(const QByteArray &text)
{
    in_addr address;
    if (text.size() != static_cast<int>(qstrlen(text.constData())) ||
        inet_pton(AF_INET, text.constData(), &address) != 1)
        return std::nullopt;
    return ntohl(address.s_addr);
}

QByteArray ipv4Text(quint32 address)
{
    char text[INET_ADDRSTRLEN];
    in_addr raw;
    raw.s_addr = htonl(address);
    return inet_ntop(AF_INET, &raw, text, sizeof text);
}

bool isMulticast(quint32 address)
{
    return address >= kMulticast && address < kReserved;
}

bool isControlBlock(quint32 address)
{
    return address >> 8 == kMulticast >> 8 || address >> 8 == (kMulticast >> 8) + 1;
}

bool isSourceSpecific(quint32 address)
{
    return address >> 24 == 232;
}

bool isUsableSource(quint32 address)
{
    return address >> 24 != 0 && address < kMulticast;
}

quint32 ethernetBits(quint32 group)
{
    return group & 0x7fffff;
}

} // namespace ops
