// SPDX-License-Identifier: MIT
//
// Finds the IPv4 address in a text that was pasted or dropped.
#ifndef CORVEL_ADDRESSTEXT_H
#define CORVEL_ADDRESSTEXT_H

#include <QString>

// The address in dotted form when the text holds exactly one and around it nothing but blanks, line
// ends, quotes, a leading "udp://" or "rtp://", a port ":0" to ":65535" or a prefix length "/0" to
// "/32"; else an empty text. Octets are 0 to 255 without leading zeros, as they are typed.
QString addressInText(const QString &text);

#endif
