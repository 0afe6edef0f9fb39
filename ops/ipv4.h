// SPDX-License-Identifier: MIT
//
// IPv4 addresses as numbers (host order) and the blocks that matter to media streams.
#ifndef CORVEL_OPS_IPV4_H
#define CORVEL_OPS_IPV4_H

#include <QByteArray>

#include <optional>

namespace ops {

// Four decimal octets and nothing else; no leading zeros, no shortened forms.
std::optional<quint32> parseIpv4(const QByteArray &text);
QByteArray ipv4Text(quint32 address);

bool isMulticast(quint32 address);      // 224.0.0.0/4
bool isControlBlock(quint32 address);   // 224.0.0.0/24 and 224.0.1.0/24, RFC 5771
bool isSourceSpecific(quint32 address); // 232.0.0.0/8, RFC 4607
bool isUsableSource(quint32 address);   // a host's: not 0.0.0.0/8, no multicast, nothing above

// The low 23 bits that reach the Ethernet address of a group (RFC 1112 6.4): 32 groups share each.
quint32 ethernetBits(quint32 group);

} // namespace ops

#endif
